// The parser's tables: an LR automaton generated from grammar_rules.h by
// generator/parser_generator.cpp.
//
// A state whose one production is complete and cannot continue reduces at once, without a
// lookahead. Every other state is a deciding state: it looks at the next token, shifts it where it
// can, and otherwise reduces by its default production if it has one, whatever the token is.
#ifndef ORLI11_LANGUAGE_PARSER_TABLES_H
#define ORLI11_LANGUAGE_PARSER_TABLES_H

#include <cstdint>

// The action of a deciding state on the next token. kParserActions holds the state to shift to, or
// one of these negative values: kReduceFirst minus a production's number reduces by it.
constexpr int8_t kParserRefuse = 0;  // by the default production, else a syntax error
constexpr int8_t kParserAccept = -1;
constexpr int8_t kReduceFirst = -2;

#include "language/parser_tables.inc"

#endif
