// Generates the parser's tables from the grammar: an LR(0) automaton whose conflicts between
// operators the precedence table resolves, after D. E. Knuth, "On the translation of languages from
// left to right" (1965). Where a state has two complete rules, each takes the tokens that can
// follow it there:
//   parser_generator FILE
#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "language/grammar_rules.h"

namespace {

struct Rule {
  std::string left;
  std::vector<std::string> right;
  bool passes;
};

struct Grammar {
  std::vector<Rule> rules;  // by their numbers; the start rule is the last one
  std::set<std::string> nonterminals;
};

// A rule with the dot before the symbol at that index.
using Item = std::pair<size_t, size_t>;
using ItemSet = std::set<Item>;

struct State {
  ItemSet items;
  std::map<std::string, size_t> next;
};

using States = std::vector<State>;

const std::string kEnd = "END";

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

const std::string *SymbolAt(const Grammar &grammar, const Item &item) {
  const std::vector<std::string> &right = grammar.rules[item.first].right;
  return item.second < right.size() ? &right[item.second] : nullptr;
}

ItemSet Closure(const Grammar &grammar, ItemSet items) {
  std::vector<Item> open(items.begin(), items.end());
  while (!open.empty()) {
    const std::string *symbol = SymbolAt(grammar, open.back());
    open.pop_back();
    for (size_t i = 0; symbol != nullptr && i < grammar.rules.size(); ++i) {
      if (grammar.rules[i].left == *symbol && items.insert({i, 0}).second) {
        open.push_back({i, 0});
      }
    }
  }
  return items;
}

// The index of the state of the items, which is added when it is new.
size_t StateOf(States &states, const ItemSet &items) {
  for (size_t i = 0; i < states.size(); ++i) {
    if (states[i].items == items) {
      return i;
    }
  }
  states.push_back({items, {}});
  return states.size() - 1;
}

States StatesOf(const Grammar &grammar) {
  States states;
  StateOf(states, Closure(grammar, {{grammar.rules.size() - 1, 0}}));
  for (size_t i = 0; i < states.size(); ++i) {
    std::map<std::string, ItemSet> kernels;
    for (const Item &item : states[i].items) {
      if (const std::string *symbol = SymbolAt(grammar, item)) {
        kernels[*symbol].insert({item.first, item.second + 1});
      }
    }
    for (const auto &[symbol, kernel] : kernels) {
      const size_t target = StateOf(states, Closure(grammar, kernel));
      states[i].next[symbol] = target;
    }
  }
  return states;
}

std::vector<size_t> CompleteIn(const Grammar &grammar, const State &state) {
  std::vector<size_t> complete;
  for (const Item &item : state.items) {
    if (SymbolAt(grammar, item) == nullptr) {
      complete.push_back(item.first);
    }
  }
  return complete;
}

// All operators bind to the left, so an operator is shifted over a complete operation only when
// it binds tighter.
void ResolveOperators(const Grammar &grammar, States &states) {
  for (State &state : states) {
    for (const size_t complete : CompleteIn(grammar, state)) {
      const int level = LevelOf(grammar.rules[complete]);
      for (auto next = state.next.begin(); next != state.next.end();) {
        const int other = LevelOf(next->first);
        next = level != 0 && other != 0 && other <= level ? state.next.erase(next) : ++next;
      }
    }
  }
}

// The tokens that can follow a one-symbol production once it is reduced in `state`.
std::set<std::string> FollowIn(const Grammar &grammar, const States &states, size_t state,
                               const Rule &rule) {
  std::set<std::string> tokens;
  for (const State &below : states) {
    const auto here = below.next.find(rule.right[0]);
    const auto onward = below.next.find(rule.left);
    if (here == below.next.end() || here->second != state || onward == below.next.end()) {
      continue;
    }
    for (const auto &[symbol, target] : states[onward->second].next) {
      if (grammar.nonterminals.count(symbol) == 0) {
        tokens.insert(symbol);
      }
    }
  }
  return tokens;
}

std::string TokenCode(const std::string &terminal) {
  return terminal[0] == '\'' ? terminal : "TOK_" + terminal;
}

std::vector<std::string> TerminalsOf(const Grammar &grammar) {
  std::set<std::string> terminals;
  for (const Rule &rule : grammar.rules) {
    for (const std::string &symbol : rule.right) {
      if (grammar.nonterminals.count(symbol) == 0) {
        terminals.insert(symbol);
      }
    }
  }
  return {terminals.begin(), terminals.end()};
}

Grammar ReadGrammar() {
  Grammar grammar;
  for (const GrammarProduction &row : kGrammar) {
    if (row.production != static_cast<Production>(grammar.rules.size())) {
      throw std::runtime_error("a production is out of order");
    }
    const bool passes =
        std::find(std::begin(kPassing), std::end(kPassing), row.production) != std::end(kPassing);
    grammar.rules.push_back({row.left, Words(row.right), passes});
  }
  grammar.rules.push_back({"start", {"formula", kEnd}, false});
  for (const Rule &rule : grammar.rules) {
    grammar.nonterminals.insert(rule.left);
  }
  return grammar;
}

// The action of a state on a terminal, as parser_tables.h has it.
std::string ActionOn(const Grammar &grammar, const States &states, size_t at,
                     const std::string &terminal) {
  const State &state = states[at];
  const auto next = state.next.find(terminal);
  if (next != state.next.end()) {
    return terminal == kEnd ? "kParserAccept" : std::to_string(next->second);
  }
  const std::vector<size_t> complete = CompleteIn(grammar, state);
  if (complete.size() < 2) {
    return "kParserRefuse";
  }
  for (const size_t index : complete) {
    const Rule &rule = grammar.rules[index];
    if (rule.right.size() != 1) {
      throw std::runtime_error("two complete productions that are longer than one symbol");
    }
    if (FollowIn(grammar, states, at, rule).count(terminal) != 0) {
      return "kReduceFirst - " + std::to_string(index);
    }
  }
  return "kParserRefuse";
}

bool Decides(const Grammar &grammar, const State &state) {
  return !state.next.empty() || CompleteIn(grammar, state).size() != 1;
}

// The successor of a state on a symbol. A production that only passes its one symbol on, in a state
// that would reduce by it at once, is skipped.
size_t GotoOf(const Grammar &grammar, const States &states, size_t from,
              const std::string &symbol) {
  const auto next = states[from].next.find(symbol);
  if (next == states[from].next.end()) {
    return 0;
  }
  const State &target = states[next->second];
  const std::vector<size_t> complete = CompleteIn(grammar, target);
  if (Decides(grammar, target) || !grammar.rules[complete[0]].passes) {
    return next->second;
  }
  return GotoOf(grammar, states, from, grammar.rules[complete[0]].left);
}

void WriteActions(std::ostream &out, const Grammar &grammar, const States &states) {
  const std::vector<std::string> terminals = TerminalsOf(grammar);
  out << "constexpr int32_t kParserTokens[] = {";
  for (const std::string &terminal : terminals) {
    out << TokenCode(terminal) << ", ";
  }
  out << "};\nconstexpr int32_t kParserColumns = " << terminals.size() << ";\n\n"
      << "constexpr int8_t kParserActions[][kParserColumns] = {\n";
  for (size_t i = 0; i < states.size(); ++i) {
    out << "  {";
    for (const std::string &terminal : terminals) {
      out << ActionOn(grammar, states, i, terminal) << ", ";
    }
    out << "},\n";
  }
  out << "};\n\n";
}

void WriteStates(std::ostream &out, const Grammar &grammar, const States &states) {
  out << "constexpr uint8_t kParserNoProduction = 255;\n\n"
      << "struct ParserState {\n  bool decides;\n  uint8_t defaultProduction;\n};\n\n"
      << "constexpr ParserState kParserStates[] = {\n";
  for (const State &state : states) {
    const std::vector<size_t> complete = CompleteIn(grammar, state);
    out << "  {" << (Decides(grammar, state) ? "true" : "false") << ", "
        << (complete.size() == 1 ? std::to_string(complete[0]) : "kParserNoProduction") << "},\n";
  }
  out << "};\n\n";
}

void WriteGotos(std::ostream &out, const Grammar &grammar, const States &states) {
  const std::vector<std::string> inner(grammar.nonterminals.begin(), grammar.nonterminals.end());
  out << "struct ParserProduction {\n  uint8_t length;\n  uint8_t left;\n};\n\n"
      << "constexpr ParserProduction kParserProductions[] = {\n";
  for (const Rule &rule : grammar.rules) {
    const auto left = std::find(inner.begin(), inner.end(), rule.left);
    out << "  {" << rule.right.size() << ", " << left - inner.begin() << "},\n";
  }
  out << "};\n\nconstexpr uint8_t kParserGoto[][" << inner.size() << "] = {\n";
  for (size_t i = 0; i < states.size(); ++i) {
    out << "  {";
    for (const std::string &symbol : inner) {
      out << GotoOf(grammar, states, i, symbol) << ", ";
    }
    out << "},\n";
  }
  out << "};\n";
}

void MakeTables(const char *path) {
  const Grammar grammar = ReadGrammar();
  States states = StatesOf(grammar);
  ResolveOperators(grammar, states);
  if (states.size() > INT8_MAX - 1) {
    throw std::runtime_error("more states than an entry can hold");
  }
  std::ofstream out(path);
  out << "// Generated from grammar_rules.h by parser_generator.cpp.\n\n";
  WriteActions(out, grammar, states);
  WriteStates(out, grammar, states);
  WriteGotos(out, grammar, states);
  if (!out.flush()) {
    throw std::runtime_error("cannot write the tables");
  }
}

}  // namespace

int main(int count, char **arguments) {
  if (count != 2) {
    std::fputs("usage: parser_generator FILE\n", stderr);
    return 2;
  }
  try {
    MakeTables(arguments[1]);
    return 0;
  } catch (const std::exception &failure) {
    std::fprintf(stderr, "parser_generator: %s\n", failure.what());
    return 1;
  }
}
