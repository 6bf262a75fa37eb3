// What the scanner does with a match of each token rule.
#ifndef ORLI11_LANGUAGE_SCAN_ACTIONS_H
#define ORLI11_LANGUAGE_SCAN_ACTIONS_H

#include <cstdint>
#include <string_view>

#include "language/parse_state.h"
#include "language/token_rules.h"

// Results of an action that returns no token.
enum : int32_t {
  kRefused = -1,  // rejected: try the next candidate
  kSkipped = -2   // taken, but nothing for the parser
};

// Accepts or rejects the match: the `length` bytes from state.position on, at `text`. The result is
// a token code with the token's fields filled, or one of the two above.
using RuleAction = int32_t (*)(ParseState &state, const char *text, int32_t length);

// True unless the word, of ASCII letters, is certainly none of the reserved ones.
bool MayBeReserved(std::string_view word);

// The action of kRuleWord.
int32_t TakeWord(ParseState &state, const char *text, int32_t length);

extern const RuleAction kRuleActions[kTokenRuleCount];

#endif
