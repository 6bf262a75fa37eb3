// The parser: from tokens to a typed tree.
#ifndef ORLI11_LANGUAGE_PARSER_H
#define ORLI11_LANGUAGE_PARSER_H

#include <cstdint>

#include "language/grammar_rules.h"
#include "language/parse_state.h"

// Parses the text that the state was reset for. True when it was accepted, with the nodes in
// state.builder, the root last; false when it failed, with the reason in state.error.
bool RunParser(ParseState &state);

// Runs the action of a production. `rhs` are the stack entries of its right side. The first of them
// becomes the entry of the left side: it keeps its span, and the action sets its value. False ends
// the parse, with the error set.
bool RunAction(ParseState &state, Production production, StackEntry *rhs);

#endif
