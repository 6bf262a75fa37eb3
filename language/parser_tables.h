// The parser's tables: an LR automaton made from grammar_rules.h by generator/parser_generator.cpp.
//
// A state whose one production is complete and cannot go on reduces at once, without a look at the
// next token. Every other state is a deciding state: it looks at the next token, shifts it where it
// can, and otherwise reduces by its default production if it has one, whatever the token is.
#ifndef ORLI11_LANGUAGE_PARSER_TABLES_H
#define ORLI11_LANGUAGE_PARSER_TABLES_H

#include <cstdint>

// What the value of a stack entry is: nothing, a token's block, a node or a list.
enum class ValueKind : uint8_t { None, Block, Node, List };

// Entries of kParserActions: above 0 the state to shift to, below 0 the production to reduce by,
// 0 the default production of the state.
constexpr int8_t kParserAccept = 127;

#include "language/parser_tables.inc"

#endif
