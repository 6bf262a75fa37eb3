// Generates the parser's tables from the grammar: an LR(0) automaton whose conflicts between
// operators are resolved by the precedence table, after D. E. Knuth, "On the translation of
// languages from left to right" (1965). Where a state has two complete productions, each takes the
// tokens that can follow it there. Run by the build with the file to write.
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

struct Rule {
  int number;
  std::string left;
  std::vector<std::string> right;
};

// A rule with the dot before its symbol of that index.
using Item = std::pair<size_t, size_t>;
using ItemSet = std::set<Item>;

struct State {
  ItemSet items;
  std::string symbol;  // the symbol that leads here
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

// 0 for a symbol that is no operator.
int LevelOf(const std::string &symbol) {
  int level = 0;
  for (const char *operators : kPrecedence) {
    level++;
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
    for (size_t i = 0; symbol != nullptr && i < rules.size(); i++) {
      if (rules[i].left == *symbol && items.insert({i, 0}).second) {
        open.push_back({i, 0});
      }
    }
  }
  return items;
}

size_t StateOf(const ItemSet &items, const std::string &symbol) {
  for (size_t i = 0; i < states.size(); i++) {
    if (states[i].items == items) {
      return i;
    }
  }
  states.push_back({items, symbol, {}});
  return states.size() - 1;
}

void MakeStates() {
  StateOf(Closure({{0, 0}}), "");
  for (size_t i = 0; i < states.size(); i++) {
    std::map<std::string, ItemSet> kernels;
    for (const Item &item : states[i].items) {
      if (const std::string *symbol = SymbolAt(item)) {
        kernels[*symbol].insert({item.first, item.second + 1});
      }
    }
    for (const auto &[symbol, kernel] : kernels) {
      const size_t target = StateOf(Closure(kernel), symbol);
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

const char *ValueKindOf(const std::string &symbol) {
  for (const GrammarValue &value : kValueKinds) {
    if (symbol == value.symbol) {
      return value.kind;
    }
  }
  return "None";
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
  rules.push_back({0, "start", {"formula", kEnd}});
  for (const GrammarProduction &row : kGrammar) {
    if (row.production != static_cast<Production>(rules.size())) {
      GiveUp("a production is out of order");
    }
    rules.push_back({static_cast<int>(row.production), row.left, Words(row.right)});
  }
  for (const Rule &rule : rules) {
    nonterminals.insert(rule.left);
  }
}

// The action of a state on a terminal, as parser_tables.h has it.
int ActionOn(size_t at, const std::string &terminal) {
  const State &state = states[at];
  const auto next = state.next.find(terminal);
  if (next != state.next.end()) {
    return terminal == kEnd ? 127 : static_cast<int>(next->second);
  }
  const std::vector<size_t> complete = CompleteIn(state);
  if (complete.size() < 2) {
    return 0;
  }
  for (const size_t index : complete) {
    if (rules[index].right.size() != 1) {
      GiveUp("two complete productions that are longer than one symbol");
    }
    if (FollowIn(at, rules[index]).count(terminal) != 0) {
      return -rules[index].number;
    }
  }
  return 0;
}

void PrintTables() {
  const std::vector<std::string> terminals = Terminals();
  std::vector<std::string> inner(nonterminals.begin(), nonterminals.end());
  if (states.size() >= 127) {
    GiveUp("more states than an entry can hold");
  }
  std::printf("// Generated from grammar_rules.h by parser_generator.cpp.\n\n");
  std::printf("constexpr int32_t kParserStates = %zu;\n", states.size());
  std::printf("constexpr int32_t kParserTokens[] = {");
  for (const std::string &terminal : terminals) {
    std::printf("%s, ", TokenCode(terminal).c_str());
  }
  std::printf("};\nconstexpr int32_t kParserColumns = %zu;\n\n", terminals.size());
  std::printf("constexpr int8_t kParserActions[kParserStates][kParserColumns] = {\n");
  for (size_t i = 0; i < states.size(); i++) {
    std::printf("  {");
    for (const std::string &terminal : terminals) {
      std::printf("%d, ", ActionOn(i, terminal));
    }
    std::printf("},\n");
  }
  std::printf("};\n\nstruct ParserState {\n  bool decides;\n  uint8_t defaultProduction;\n");
  std::printf("  ValueKind value;\n};\n\nconstexpr ParserState kParserStateRows[] = {\n");
  for (const State &state : states) {
    const std::vector<size_t> complete = CompleteIn(state);
    const bool decides = !state.next.empty() || complete.size() != 1;
    std::printf("  {%s, %d, ValueKind::%s},\n", decides ? "true" : "false",
                complete.size() == 1 ? rules[complete[0]].number : 0, ValueKindOf(state.symbol));
  }
  std::printf("};\n\nstruct ParserProduction {\n  uint8_t length;\n  uint8_t left;\n};\n\n");
  std::printf("constexpr ParserProduction kParserProductions[] = {\n  {0, 0},\n");
  for (size_t i = 1; i < rules.size(); i++) {
    const auto left = std::find(inner.begin(), inner.end(), rules[i].left);
    std::printf("  {%zu, %td},\n", rules[i].right.size(), left - inner.begin());
  }
  std::printf("};\n\nconstexpr uint8_t kParserGoto[kParserStates][%zu] = {\n", inner.size());
  for (const State &state : states) {
    std::printf("  {");
    for (const std::string &symbol : inner) {
      const auto next = state.next.find(symbol);
      std::printf("%zu, ", next == state.next.end() ? size_t{0} : next->second);
    }
    std::printf("},\n");
  }
  std::printf("};\n");
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
