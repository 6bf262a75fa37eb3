// Translates the patterns of the token rules into a nondeterministic automaton.
#ifndef ORLI11_LANGUAGE_GENERATOR_NOTATION_H
#define ORLI11_LANGUAGE_GENERATOR_NOTATION_H

#include <bitset>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

using ByteSet = std::bitset<256>;

// A state has a transition on the bytes of a set, or epsilon transitions.
struct NfaState {
  ByteSet bytes;
  int32_t byteTarget = -1;
  std::vector<int32_t> epsilonTargets;
  int32_t rule = -1;  // the rule that has matched here
  bool mark = false;
};

struct Nfa {
  std::vector<NfaState> states;
  uint32_t markedRules = 0;  // bit r: the pattern of rule r holds a mark
};

using Definitions = std::map<std::string, std::string, std::less<>>;

// Adds the states of a rule's pattern and returns the first of them. Throws std::runtime_error with
// the place when the pattern is malformed.
int32_t AddRule(Nfa &nfa, const Definitions &definitions, int32_t rule, std::string_view pattern);

#endif
