// The parser's tables: an LR automaton made from grammar_rules.h by generator/parser_generator.cpp.
//
// A state whose one production is complete and cannot go on reduces at once, without a look at the
// next token. Every other state is a deciding state: it looks at the next token, shifts it where it
// can, and otherwise reduces by its default production if it has one, whatever the token is.
#ifndef ORLI11_LANGUAGE_PARSER_TABLES_H
#define ORLI11_LANGUAGE_PARSER_TABLES_H

#include <cstdint>

// What a deciding state does with the next token. kParserActions holds the state to shift to, or
// one of these less than 0: kReduceFirst less a production reduces by it.
constexpr int8_t kParserRefuse = 0;  // by the default production, else a syntax error
constexpr int8_t kParserAccept = -1;
constexpr int8_t kReduceFirst = -2;

#include "language/parser_tables.inc"

#endif
