// The grammar of the language, as a person writes it. The build makes the parser's tables from it.
//
// Quoted characters are tokens of that character, names in capitals the tokens of parse_state.h
// without their "TOK_". The number of a production is the number of its action.
#ifndef ORLI11_LANGUAGE_GRAMMAR_RULES_H
#define ORLI11_LANGUAGE_GRAMMAR_RULES_H

struct GrammarProduction {
  int number;
  const char *left;
  const char *right;
};

constexpr GrammarProduction kGrammar[] = {
    {3, "formula", "expr"},
    {4, "formula", "list"},
    {5, "formula", "expr AND expr"},
    {6, "single", "expr"},
    {7, "list", "single ',' expr"},
    {8, "list", "list ',' expr"},
    {9, "params", "single"},
    {10, "params", "list"},
    {11, "expr", "expr '+' expr"},
    {12, "expr", "expr '-' expr"},
    {13, "expr", "expr '*' expr"},
    {14, "expr", "expr '/' expr"},
    {15, "expr", "expr '%' expr"},
    {16, "expr", "'(' expr ')'"},
    {17, "expr", "expr CONCAT expr"},
    {18, "expr", "expr '-' expr DATEUNIT"},
    {19, "expr", "expr '+' expr DATEUNIT"},
    {20, "expr", "NOMEM"},
    {21, "expr", "BAD"},
    {22, "expr", "call"},
    {23, "expr", "IDENT"},
    {24, "expr", "constant"},
    {25, "constant", "'-' NUMBER"},
    {26, "constant", "DATE"},
    {27, "constant", "STRING"},
    {28, "constant", "NUMBER"},
    {29, "call", "SYSNAME"},
    {30, "call", "CALLNAME '*' ')'"},
    {31, "call", "CALLNAME MODIFIER ')'"},
    {32, "call", "CALLNAME ')'"},
    {33, "call", "CALLNAME MODIFIER params ')'"},
    {34, "call", "CALLNAME params ')'"},
};

// Operators, lowest binding first; all are left-associative.
constexpr const char *kOperatorLadder[] = {
    "'+' '-'",
    "'*' '/'",
    "'%'",
    "CONCAT",
};

// What the value of a symbol is, for a parse that ends with values on its stack.
struct GrammarValue {
  const char *symbol;
  const char *kind;
};

constexpr GrammarValue kValueKinds[] = {
    {"NUMBER", "Block"}, {"IDENT", "Block"},   {"CALLNAME", "Block"}, {"SYSNAME", "Block"},
    {"STRING", "Block"}, {"DATE", "Block"},    {"formula", "Node"},   {"expr", "Node"},
    {"call", "Node"},    {"constant", "Node"}, {"single", "List"},    {"list", "List"},
    {"params", "List"},
};

#endif
