// Generates the parser's tables from the grammar: an LR(0) automaton whose conflicts between
// operators the precedence table resolves, after D. E. Knuth, "On the translation of languages from
// left to right" (1965). Where a state has two complete rules, each takes the tokens that can
// follow it there. The build runs it with the path of the file to write.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "language/grammar_rules.h"

namespace {

// The grammar's rules, by their numbers; the start rule follows them.
struct Rule {
  std::string left;
  std::vector<std::string> right;
  bool passes;
};

// A rule with the dot before the symbol at that index.
using Item = std::pair<size_t, size_t>;
using ItemSet = std::set<Item>;

struct State {
  ItemSet items;
  std::map<std::string, size_t> next;
};

const std::string kEnd = "END";

std::vector<Rule> rules;
std::set<std::string> nonterminals;
std::vector<State> states;

std::vector<std::string> Words(const char *text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) {
    words.push_back(word);
  }
  return words;
}

// 0 for a symbol that is not an operator.
int LevelOf(const std::string &symbol) {
  int level = 0;
  for (const char *operators : kPrecedence) {
    ++level;
    const std::vector<std::string> words = Words(operators);
    if (std::find(words.begin(), words.end(), symbol) != words.end()) {
      return level;
    }
  }
  return 0;
}

int LevelOf(const Rule &rule) {
  int level = 0;
  for (const std::string &symbol : rule.right) {
    level = std::max(level, LevelOf(symbol));
  }
  return level;
}

const std::string *SymbolAt(const Item &item) {
  const std::vector<std::string> &right = rules[item.first].right;
  return item.second < right.size() ? &right[item.second] : nullptr;
}

ItemSet Closure(ItemSet items) {
  std::vector<Item> open(items.begin(), items.end());
  while (!open.empty()) {
    const std::string *symbol = SymbolAt(open.back());
    open.pop_back();
    for (size_t i = 0; symbol != nullptr && i < rules.size(); ++i) {
      if (rules[i].left == *symbol && items.insert({i, 0}).second) {
        open.push_back({i, 0});
      }
    }
  }
  return items;
}

size_t StateOf(const ItemSet &items) {
  for (size_t i = 0; i < states.size(); ++i) {
    if (states[i].items == items) {
      return i;
    }
  }
  states.push_back({items, {}});
  return states.size() - 1;
}

void MakeStates() {
  StateOf(Closure({{rules.size() - 1, 0}}));
  for (size_t i = 0; i < states.size(); ++i) {
    std::map<std::string, ItemSet> kernels;
    for (const Item &item : states[i].items) {
      if (const std::string *symbol = SymbolAt(item)) {
        kernels[*symbol].insert({item.first, item.second + 1});
      }
    }
    for (const auto &[symbol, kernel] : kernels) {
      const size_t target = StateOf(Closure(kernel));
      states[i].next[symbol] = target;
    }
  }
}

std::vector<size_t> CompleteIn(const State &state) {
  std::vector<size_t> complete;
  for (const Item &item : state.items) {
    if (SymbolAt(item) == nullptr) {
      complete.push_back(item.first);
    }
  }
  return complete;
}

// All operators bind to the left, so an operator is shifted over a complete operation only when
// it binds tighter.
void ResolveOperators() {
  for (State &state : states) {
    for (const size_t complete : CompleteIn(state)) {
      const int level = LevelOf(rules[complete]);
      for (auto next = state.next.begin(); next != state.next.end();) {
        const int other = LevelOf(next->first);
        next = level != 0 && other != 0 && other <= level ? state.next.erase(next) : ++next;
      }
    }
  }
}

// The tokens that can follow a one-symbol production once it is reduced in `state`.
std::set<std::string> FollowIn(size_t state, const Rule &rule) {
  std::set<std::string> tokens;
  for (const State &below : states) {
    const auto here = below.next.find(rule.right[0]);
    const auto onward = below.next.find(rule.left);
    if (here == below.next.end() || here->second != state || onward == below.next.end()) {
      continue;
    }
    for (const auto &[symbol, target] : states[onward->second].next) {
      if (nonterminals.count(symbol) == 0) {
        tokens.insert(symbol);
      }
    }
  }
  return tokens;
}

std::string TokenCode(const std::string &terminal) {
  return terminal[0] == '\'' ? terminal : "TOK_" + terminal;
}

[[noreturn]] void GiveUp(const char *why) {
  std::fprintf(stderr, "grammar: %s\n", why);
  std::exit(1);
}

std::vector<std::string> Terminals() {
  std::set<std::string> terminals;
  for (const Rule &rule : rules) {
    for (const std::string &symbol : rule.right) {
      if (nonterminals.count(symbol) == 0) {
        terminals.insert(symbol);
      }
    }
  }
  return {terminals.begin(), terminals.end()};
}

void ReadGrammar() {
  for (const GrammarProduction &row : kGrammar) {
    if (row.production != static_cast<Production>(rules.size())) {
      GiveUp("a production is out of order");
    }
    const bool passes =
        std::find(std::begin(kPassing), std::end(kPassing), row.production) != std::end(kPassing);
    rules.push_back({row.left, Words(row.right), passes});
  }
  rules.push_back({"start", {"formula", kEnd}, false});
  for (const Rule &rule : rules) {
    nonterminals.insert(rule.left);
  }
}

// The action of a state on a terminal, as parser_tables.h has it.
std::string ActionOn(size_t at, const std::string &terminal) {
  const State &state = states[at];
  const auto next = state.next.find(terminal);
  if (next != state.next.end()) {
    return terminal == kEnd ? "kParserAccept" : std::to_string(next->second);
  }
  const std::vector<size_t> complete = CompleteIn(state);
  if (complete.size() < 2) {
    return "kParserRefuse";
  }
  for (const size_t index : complete) {
    if (rules[index].right.size() != 1) {
      GiveUp("two complete productions that are longer than one symbol");
    }
    if (FollowIn(at, rules[index]).count(terminal) != 0) {
      return "kReduceFirst - " + std::to_string(index);
    }
  }
  return "kParserRefuse";
}

bool Decides(const State &state) {
  return !state.next.empty() || CompleteIn(state).size() != 1;
}

// The successor of a state on a symbol. A production that only passes its one symbol on, in a state
// that would reduce by it at once, is skipped.
size_t GotoOf(size_t from, const std::string &symbol) {
  const auto next = states[from].next.find(symbol);
  if (next == states[from].next.end()) {
    return 0;
  }
  const State &target = states[next->second];
  const std::vector<size_t> complete = CompleteIn(target);
  if (Decides(target) || !rules[complete[0]].passes) {
    return next->second;
  }
  return GotoOf(from, rules[complete[0]].left);
}

void PrintActions(const std::vector<std::string> &terminals) {
  std::printf("constexpr int32_t kParserTokens[] = {");
  for (const std::string &terminal : terminals) {
    std::printf("%s, ", TokenCode(terminal).c_str());
  }
  std::printf("};\nconstexpr int32_t kParserColumns = %zu;\n\n", terminals.size());
  std::printf("constexpr int8_t kParserActions[][kParserColumns] = {\n");
  for (size_t i = 0; i < states.size(); ++i) {
    std::printf("  {");
    for (const std::string &terminal : terminals) {
      std::printf("%s, ", ActionOn(i, terminal).c_str());
    }
    std::printf("},\n");
  }
  std::printf("};\n\n");
}

void PrintStates() {
  std::printf("constexpr uint8_t kParserNoProduction = 255;\n\n");
  std::printf("struct ParserState {\n  bool decides;\n  uint8_t defaultProduction;\n};\n\n");
  std::printf("constexpr ParserState kParserStates[] = {\n");
  for (const State &state : states) {
    const std::vector<size_t> complete = CompleteIn(state);
    const std::string production =
        complete.size() == 1 ? std::to_string(complete[0]) : "kParserNoProduction";
    std::printf("  {%s, %s},\n", Decides(state) ? "true" : "false", production.c_str());
  }
  std::printf("};\n\n");
}

void PrintGotos() {
  const std::vector<std::string> inner(nonterminals.begin(), nonterminals.end());
  std::printf("struct ParserProduction {\n  uint8_t length;\n  uint8_t left;\n};\n\n");
  std::printf("constexpr ParserProduction kParserProductions[] = {\n");
  for (const Rule &rule : rules) {
    const auto left = std::find(inner.begin(), inner.end(), rule.left);
    std::printf("  {%zu, %td},\n", rule.right.size(), left - inner.begin());
  }
  std::printf("};\n\nconstexpr uint8_t kParserGoto[][%zu] = {\n", inner.size());
  for (size_t i = 0; i < states.size(); ++i) {
    std::printf("  {");
    for (const std::string &symbol : inner) {
      std::printf("%zu, ", GotoOf(i, symbol));
    }
    std::printf("},\n");
  }
  std::printf("};\n");
}

void PrintTables() {
  if (states.size() >= 127) {
    GiveUp("more states than an entry can hold");
  }
  std::printf("// Generated from grammar_rules.h by parser_generator.cpp.\n\n");
  PrintActions(Terminals());
  PrintStates();
  PrintGotos();
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 2 || std::freopen(argv[1], "w", stdout) == nullptr) {
    GiveUp("cannot write the tables");
  }
  ReadGrammar();
  MakeStates();
  ResolveOperators();
  PrintTables();
  return 0;
}
