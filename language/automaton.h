// The scanner's automaton: the token rules as tables.
//
// A state represents everything that the bytes read so far can still become under the fifteen
// rules. From kStartState each byte leads to the next state, and to kDeadState when no rule can
// continue. Bytes that no rule distinguishes share a class, so the tables have a column per class
// and not per byte.
//
// A state lists the rules that match the bytes so far, in order of precedence. To find a token the
// scanner runs until the dead state, then walks back over the states it recorded: the longest match
// is tried first, and at equal length the earlier rule.
//
// For «12 ab+» the run goes 12 (numbers and the date rule end here), blank, a, b (the mark of a
// time's "am"), + (the byte that must follow). The run ends at a match of the date rule, which is
// cut after the b. When the scanner's action rejects that, the next match on the way back is the
// number 12.
//
// The build generates the tables from token_rules.h with automaton_generator.
#ifndef ORLI11_LANGUAGE_AUTOMATON_H
#define ORLI11_LANGUAGE_AUTOMATON_H

#include <cstdint>

constexpr int32_t kMaxByteClasses = 64;

struct AutomatonState {
  uint16_t firstAccepted;  // index of its first rule in kAcceptedRules
  uint8_t acceptedCount;
  bool ends;  // every byte leads to the dead state
  bool mark;  // is at a mark of a rule
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
