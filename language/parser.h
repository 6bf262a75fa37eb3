// The parser: tokens to a typed tree.
#ifndef ORLI11_LANGUAGE_PARSER_H
#define ORLI11_LANGUAGE_PARSER_H

#include <cstdint>

#include "language/grammar_rules.h"
#include "language/parse_state.h"

// Parses the text that the state was reset for. 0 when it was accepted, with the tree in
// state.root, which the caller then owns; 1 when it failed, with the reason in state.error and no
// root.
int32_t RunParser(ParseState &state);

// The action of a production. `rhs` are the stack entries of its right side; what the action takes
// over it replaces by null, and the new value goes to *result. False ends the parse, with the error
// set; the values left in `rhs` then still belong to the caller.
bool RunAction(ParseState &state, Production production, StackEntry *rhs, void **result);

#endif
