#include "host/null_use.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>

#include "host/tokens.h"

namespace {

// Functions whose result is null, or the empty text, for a null argument.
struct NullKeeper {
  std::string_view name;
  unsigned arguments;  // a bit for each of these, the first one lowest
  bool toText;         // the result is a string, in which nothing counts as zero
};

constexpr NullKeeper kNullKeepers[] = {
    {"NumberAbsolute", 1, false},
    {"NumberMod", 3, false},
    {"NumberRound", 1, false},
    {"NumberTruncate", 1, false},
    {"Power", 3, false},
    {"NumberIFF", 14, false},
    {"NumberToStr", 1, true},
    {"NumberToStrPicture", 1, true},
    {"NumberToCurrency", 1, true},
    {"NumberCountryFmt", 1, true},
    {"ABS", 1, false},
    {"CEILING", 1, false},
    {"FLOOR", 1, false},
    {"MOD", 3, false},
    {"POWER", 3, false},
    {"ROUND", 1, false},
    {"TRUNCATE", 1, false},
};

// A formula, used where null counts as zero or where it does not.
using Visit = std::pair<size_t, bool>;

struct Search {
  const std::vector<Formula> &formulas;
  std::map<std::string_view, size_t> places;
  std::vector<std::set<std::string>> found;  // for each formula
  std::set<Visit> visited;
  std::vector<Visit> waiting;
};

// A part of the tokens of one formula.
struct Part {
  const std::vector<Token> *tokens;
  size_t begin, end;
};

// The index after the parenthesis that closes the one at `open`.
size_t AfterClosing(const std::vector<Token> &tokens, size_t open, size_t end) {
  int depth = 0;
  for (size_t i = open; i < end; ++i) {
    depth += tokens[i].kind == kTokenOpen ? 1 : tokens[i].kind == kTokenClose ? -1 : 0;
    if (depth == 0) {
      return i + 1;
    }
  }
  return end;
}

// The parts between the commas outside parentheses.
std::vector<Part> Arguments(const Part &part) {
  std::vector<Part> arguments;
  size_t begin = part.begin;
  for (size_t i = part.begin; i < part.end;) {
    const TokenKind kind = (*part.tokens)[i].kind;
    if (kind == kTokenComma) {
      arguments.push_back({part.tokens, begin, i});
      begin = i + 1;
    }
    i = kind == kTokenOpen ? AfterClosing(*part.tokens, i, part.end) : i + 1;
  }
  arguments.push_back({part.tokens, begin, part.end});
  return arguments;
}

bool HasOperator(const Part &part) {
  for (size_t i = part.begin; i < part.end;) {
    const Token &token = (*part.tokens)[i];
    const bool sign = token.text == "-" && i == part.begin;
    if (token.kind == kTokenOperator && !sign) {
      return true;
    }
    i = token.kind == kTokenOpen ? AfterClosing(*part.tokens, i, part.end) : i + 1;
  }
  return false;
}

// A part of a formula that is still to be examined.
struct Task {
  Part part;
  bool zero;  // null counts as zero here
};

// The arguments of a call, each with the meaning of null there.
void AddArguments(std::string_view name, const Part &inside, bool zero, std::vector<Task> &tasks) {
  const auto keeper = std::find_if(std::begin(kNullKeepers), std::end(kNullKeepers),
                                   [name](const NullKeeper &entry) { return entry.name == name; });
  const std::vector<Part> arguments = Arguments(inside);
  for (size_t i = 0; i < arguments.size(); ++i) {
    const bool keeps =
        keeper != std::end(kNullKeepers) && i < 4 && (keeper->arguments >> i & 1U) != 0;
    tasks.push_back({arguments[i], !keeps || (zero && !keeper->toText)});
  }
}

// Examines one formula.
void Look(Search &search, const Visit &visit) {
  const std::vector<Token> tokens = Tokens(search.formulas[visit.first].text);
  std::vector<Task> tasks;
  for (const Part &member : Arguments({&tokens, 0, tokens.size()})) {
    tasks.push_back({member, visit.second});
  }
  while (!tasks.empty()) {
    const Task task = tasks.back();
    tasks.pop_back();
    const bool zero = task.zero || HasOperator(task.part);
    for (size_t i = task.part.begin; i < task.part.end;) {
      const Token &token = tokens[i];
      const bool name = token.kind == kTokenName || token.kind == kTokenQuoted;
      const size_t open = name ? i + 1 : i;
      const bool call = open < task.part.end && tokens[open].kind == kTokenOpen;
      const size_t next = call ? AfterClosing(tokens, open, task.part.end) : i + 1;
      const auto called = call && name ? search.places.find(token.text) : search.places.end();
      if (called != search.places.end()) {
        search.waiting.emplace_back(called->second, zero);
      } else if (call) {
        const Part inside{&tokens, open + 1, next - 1};
        if (name) {
          AddArguments(token.text, inside, zero, tasks);
        } else {
          tasks.push_back({inside, zero});
        }
      } else if (name && zero) {
        search.found[visit.first].emplace(token.text);
      }
      i = next;
    }
  }
}

}  // namespace

std::vector<ZeroUses> ZeroUsesOf(const std::vector<Formula> &formulas) {
  Search search{formulas, {}, std::vector<std::set<std::string>>(formulas.size()), {}, {}};
  for (size_t i = 0; i < formulas.size(); ++i) {
    search.places.emplace(formulas[i].name, i);
    search.waiting.emplace_back(i, false);
  }
  while (!search.waiting.empty()) {
    const Visit visit = search.waiting.back();
    search.waiting.pop_back();
    if (search.visited.insert(visit).second) {
      Look(search, visit);
    }
  }
  std::vector<ZeroUses> uses(formulas.size());
  for (size_t i = 0; i < formulas.size(); ++i) {
    uses[i] = {formulas[i].exp, {search.found[i].begin(), search.found[i].end()}};
  }
  return uses;
}
