// The tokens that most formulas consist of, read by plain loops.
#ifndef ORLI11_LANGUAGE_SIMPLE_TOKENS_H
#define ORLI11_LANGUAGE_SIMPLE_TOKENS_H

#include <cstdint>
#include <string_view>

#include "language/parse_state.h"

// The result of ScanSimpleToken besides token codes and kSkipped of scan_actions.h.
constexpr int32_t kNotSimple = -3;

// Reads the token at state.position as the automaton and its action would, when it is a word, a
// name or call opening, a number, a string literal, an operator or white space with an obvious end;
// kNotSimple, with the state unchanged, for all others.
int32_t ScanSimpleToken(ParseState &state);

// True for a text that every context scans as one name: an ASCII letter followed by letters, digits
// and the signs # $ _ @, unless possibly reserved.
bool IsPlainName(std::string_view text);

#endif
