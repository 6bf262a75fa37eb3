// The scanner's automaton: the token rules as tables.
//
// A state stands for all that a run of bytes can still become under the fifteen rules. From
// kStartState each byte leads to the next state, kDeadState when no rule goes on that way. Bytes
// that no rule tells apart share a class, so the tables hold a column per class and not per byte.
//
// A state lists the rules that have a whole match in the bytes so far, the first of them first.
// To find a token the scanner runs until the dead state, then walks back over the states it
// recorded: the longest match is tried first, at one length the earlier rule.
//
// For «12 ab+» the run goes 12 (numbers and the date rule end here), blank, a, b (the mark of a
// time's "am"), + (the byte that must follow). It stands at a match of the date rule, which is cut
// behind the b. When the scanner's action refuses that, the next match on the way back is the
// number 12.
//
// The tables are written by automaton_generator from token_rules.h when the system is built.
#ifndef ORLI11_LANGUAGE_AUTOMATON_H
#define ORLI11_LANGUAGE_AUTOMATON_H

#include <cstdint>

constexpr int32_t kMaxByteClasses = 64;

struct AutomatonState {
  uint16_t firstAccepted;  // place of its first rule in kAcceptedRules
  uint8_t acceptedCount;
  bool ends;  // every byte leads to the dead state
  bool mark;  // stands at a mark of a rule
};

extern const uint8_t kStartState;
extern const uint8_t kDeadState;

// The class of a byte: in single- and double-byte code pages, and in UTF-8.
extern const uint8_t kByteClass[256];
extern const uint8_t kByteClassUtf8[256];

extern const AutomatonState kStates[];
extern const uint8_t kNextState[][kMaxByteClasses];  // by state and class
extern const uint8_t kAcceptedRules[];               // values of TokenRule

// Bit r is set when matches of rule r are cut at the last mark passed.
extern const uint32_t kMarkedRules;

#endif
