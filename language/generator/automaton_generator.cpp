// Writes the tables of language/automaton.h for the rules of language/token_rules.h:
//   automaton_generator FILE
// The rules become one nondeterministic automaton; sets of its states become the states of the
// deterministic one; states that no input distinguishes are merged (Moore's partition refinement).

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <tuple>

#include "language/automaton.h"
#include "language/generator/notation.h"
#include "language/token_rules.h"

namespace {

using Row = std::vector<int32_t>;  // a target per byte class

struct DfaState {
  std::vector<int32_t> rules;  // matched here, in order
  bool mark = false;
  Row next;

  bool operator==(const DfaState &) const = default;
};

struct Dfa {
  std::array<uint8_t, 256> classOf{};
  std::vector<uint8_t> sample;  // a byte of each class
  std::vector<DfaState> states;
};

Nfa NfaOfRules(int32_t *start) {
  Definitions definitions;
  for (const TokenDefinition &row : kTokenDefinitions) {
    definitions[row.name] = row.pattern;
  }
  Nfa nfa;
  nfa.states.emplace_back();
  *start = 0;
  for (const TokenRuleRow &row : kTokenRules) {
    const int32_t first = AddRule(nfa, definitions, row.rule, row.pattern);
    nfa.states[0].epsilonTargets.push_back(first);
  }
  return nfa;
}

// Bytes belong together when every set of the automaton holds all of them or none.
void FindByteClasses(const Nfa &nfa, Dfa &dfa) {
  std::map<std::vector<bool>, size_t> known;
  for (size_t byte = 0; byte < 256; ++byte) {
    std::vector<bool> membership;
    for (const NfaState &state : nfa.states) {
      membership.push_back(state.bytes[byte]);
    }
    const auto [place, isNew] = known.emplace(membership, known.size());
    dfa.classOf[byte] = static_cast<uint8_t>(place->second);
    if (isNew) {
      dfa.sample.push_back(static_cast<uint8_t>(byte));
    }
  }
  if (dfa.sample.size() > kMaxByteClasses) {
    throw std::runtime_error("too many byte classes");
  }
}

// The epsilon closure of the states, in ascending order.
Row Closure(const Nfa &nfa, Row states) {
  std::vector<bool> seen(nfa.states.size());
  Row result;
  while (!states.empty()) {
    const int32_t state = states.back();
    states.pop_back();
    if (seen[static_cast<size_t>(state)]) {
      continue;
    }
    seen[static_cast<size_t>(state)] = true;
    result.push_back(state);
    const Row &targets = nfa.states[static_cast<size_t>(state)].epsilonTargets;
    states.insert(states.end(), targets.begin(), targets.end());
  }
  std::sort(result.begin(), result.end());
  return result;
}

DfaState FactsOf(const Nfa &nfa, const Row &set) {
  DfaState result;
  for (const int32_t member : set) {
    const NfaState &state = nfa.states[static_cast<size_t>(member)];
    if (state.rule >= 0) {
      result.rules.push_back(state.rule);
    }
    result.mark = result.mark || state.mark;
  }
  std::sort(result.rules.begin(), result.rules.end());
  return result;
}

Row Step(const Nfa &nfa, const Row &set, uint8_t byte) {
  Row targets;
  for (const int32_t member : set) {
    const NfaState &state = nfa.states[static_cast<size_t>(member)];
    if (state.bytes[byte]) {
      targets.push_back(state.byteTarget);
    }
  }
  return Closure(nfa, targets);
}

// The subset construction. State 0 is the start; the empty set is a state like others here.
void BuildStates(const Nfa &nfa, int32_t start, Dfa &dfa) {
  std::map<Row, int32_t> known;
  std::vector<Row> sets;
  const auto numberOf = [&](const Row &set) {
    const auto [place, isNew] = known.emplace(set, static_cast<int32_t>(sets.size()));
    if (isNew) {
      sets.push_back(set);
    }
    return place->second;
  };
  numberOf(Closure(nfa, {start}));
  for (size_t at = 0; at < sets.size(); ++at) {
    DfaState state = FactsOf(nfa, sets[at]);
    for (const uint8_t byte : dfa.sample) {
      const Row target = Step(nfa, sets[at], byte);
      state.next.push_back(numberOf(target));
    }
    dfa.states.push_back(state);
  }
}

// Splits the states into groups until all members of a group lead to the same groups.
std::vector<int32_t> FindGroups(const std::vector<DfaState> &states) {
  std::vector<int32_t> groupOf(states.size(), 0);
  for (size_t count = 1;;) {
    std::map<std::tuple<std::vector<int32_t>, bool, Row>, int32_t> known;
    std::vector<int32_t> refined;
    for (const DfaState &state : states) {
      Row next;
      for (const int32_t target : state.next) {
        next.push_back(groupOf[static_cast<size_t>(target)]);
      }
      const auto number = static_cast<int32_t>(known.size());
      refined.push_back(
          known.emplace(std::tuple(state.rules, state.mark, next), number).first->second);
    }
    groupOf = refined;
    if (known.size() == count) {
      return groupOf;
    }
    count = known.size();
  }
}

// One state per group; the start is state 0, the dead state the last.
void MergeStates(Dfa &dfa) {
  std::vector<int32_t> groupOf = FindGroups(dfa.states);
  const auto isDead = [&](size_t state) {
    const DfaState &facts = dfa.states[state];
    return facts.rules.empty() &&
           std::all_of(facts.next.begin(), facts.next.end(), [&](int32_t to) {
             return groupOf[static_cast<size_t>(to)] == groupOf[state];
           });
  };
  const auto last = *std::max_element(groupOf.begin(), groupOf.end());
  for (size_t state = 0; state < dfa.states.size(); ++state) {
    if (!isDead(state)) {
      continue;
    }
    const int32_t dead = groupOf[state];
    for (int32_t &group : groupOf) {
      group = group == dead ? last : group == last ? dead : group;
    }
    break;
  }
  std::vector<DfaState> merged(static_cast<size_t>(last) + 1);
  for (size_t state = 0; state < dfa.states.size(); ++state) {
    DfaState facts = dfa.states[state];
    for (int32_t &target : facts.next) {
      target = groupOf[static_cast<size_t>(target)];
    }
    merged[static_cast<size_t>(groupOf[state])] = facts;
  }
  dfa.states = merged;
  if (dfa.states.size() > 256) {
    throw std::runtime_error("too many states for a byte");
  }
}

template <typename Values>
void WriteNumbers(std::ostream &out, const Values &values) {
  size_t column = 0;
  for (const auto value : values) {
    out << +value << (++column % 24 == 0 ? ",\n    " : ", ");
  }
}

void WriteClasses(std::ostream &out, const Dfa &dfa) {
  std::array<uint8_t, 256> utf8 = dfa.classOf;
  std::fill(utf8.begin() + 128, utf8.end(), dfa.classOf[kUtf8NameByte]);
  out << "const uint8_t kByteClass[256] = {\n    ";
  WriteNumbers(out, dfa.classOf);
  out << "};\nconst uint8_t kByteClassUtf8[256] = {\n    ";
  WriteNumbers(out, utf8);
  out << "};\n";
}

void WriteStates(std::ostream &out, const Dfa &dfa) {
  const auto dead = static_cast<int32_t>(dfa.states.size() - 1);
  std::vector<int32_t> accepted;
  out << "const AutomatonState kStates[] = {\n";
  for (const DfaState &state : dfa.states) {
    const bool ends = std::all_of(state.next.begin(), state.next.end(),
                                  [&](int32_t target) { return target == dead; });
    out << "    {" << accepted.size() << ", " << state.rules.size() << ", " << ends << ", "
        << state.mark << "},\n";
    accepted.insert(accepted.end(), state.rules.begin(), state.rules.end());
  }
  out << "};\nconst uint8_t kAcceptedRules[] = {\n    ";
  WriteNumbers(out, accepted);
  out << "};\nconst uint8_t kNextState[][kMaxByteClasses] = {\n";
  for (const DfaState &state : dfa.states) {
    out << "    {";
    WriteNumbers(out, state.next);
    out << "},\n";
  }
  out << "};\n";
}

void WriteTables(std::ostream &out, const Dfa &dfa, uint32_t markedRules) {
  out << "// Generated by automaton_generator from language/token_rules.h: " << dfa.states.size()
      << " states, " << dfa.sample.size() << " byte classes.\n"
      << "#include \"language/automaton.h\"\n\n"
      << "const uint8_t kStartState = 0;\n"
      << "const uint8_t kDeadState = " << dfa.states.size() - 1 << ";\n"
      << "const uint32_t kMarkedRules = " << markedRules << ";\n";
  WriteClasses(out, dfa);
  WriteStates(out, dfa);
}

void MakeAutomaton(const char *path) {
  int32_t start = 0;
  const Nfa nfa = NfaOfRules(&start);
  Dfa dfa;
  FindByteClasses(nfa, dfa);
  BuildStates(nfa, start, dfa);
  MergeStates(dfa);
  std::ofstream out(path);
  WriteTables(out, dfa, nfa.markedRules);
  if (!out.flush()) {
    throw std::runtime_error("cannot write the tables");
  }
}

}  // namespace

int main(int count, char **arguments) {
  if (count != 2) {
    std::fputs("usage: automaton_generator FILE\n", stderr);
    return 2;
  }
  try {
    MakeAutomaton(arguments[1]);
    return 0;
  } catch (const std::exception &failure) {
    std::fprintf(stderr, "automaton_generator: %s\n", failure.what());
    return 1;
  }
}
