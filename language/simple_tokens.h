// The tokens that most texts consist of, read by straight loops.
#ifndef ORLI11_LANGUAGE_SIMPLE_TOKENS_H
#define ORLI11_LANGUAGE_SIMPLE_TOKENS_H

#include <cstdint>

#include "language/parse_state.h"

// The answer of ScanSimpleToken beside token codes and kSkipped of scan_actions.h.
constexpr int32_t kNotSimple = -3;

// Takes the token at state.position as the automaton and its action would, when it is a word, a
// name or call opening, a number, a string literal, an operator or white space whose end is plain
// to see; kNotSimple, with the state as it was, for all others.
int32_t ScanSimpleToken(ParseState &state);

#endif
