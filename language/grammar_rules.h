// The grammar of the language. The build generates the parser's tables from it.
//
// Quoted characters are tokens of that character, names in capitals the tokens of parse_state.h
// without their "TOK_".
#ifndef ORLI11_LANGUAGE_GRAMMAR_RULES_H
#define ORLI11_LANGUAGE_GRAMMAR_RULES_H

#include <cstdint>
#include <iterator>

// ORDER PRODUCTION: kGrammar follows this list.
enum class Production : uint8_t {
  FormulaOfExpr,
  FormulaOfList,
  FormulaOfRange,
  SingleOfExpr,
  ListOfTwo,
  ListOfMore,
  ParamsOfSingle,
  ParamsOfList,
  Add,
  Subtract,
  Multiply,
  Divide,
  Modulo,
  Parentheses,
  Concatenate,
  SubtractUnits,
  AddUnits,
  UnknownCharacter,
  ExprOfCall,
  Item,
  ExprOfConstant,
  NegativeNumber,
  Date,
  String,
  Number,
  SystemCall,
  CallOfStar,
  CallOfModifier,
  CallOfNothing,
  CallOfModifierAndParams,
  CallOfParams,
  Count
};

struct GrammarProduction {
  Production production;
  const char *left;
  const char *right;
};

constexpr GrammarProduction kGrammar[] = {
    {Production::FormulaOfExpr, "formula", "expr"},
    {Production::FormulaOfList, "formula", "list"},
    {Production::FormulaOfRange, "formula", "expr AND expr"},
    {Production::SingleOfExpr, "single", "expr"},
    {Production::ListOfTwo, "list", "single ',' expr"},
    {Production::ListOfMore, "list", "list ',' expr"},
    {Production::ParamsOfSingle, "params", "single"},
    {Production::ParamsOfList, "params", "list"},
    {Production::Add, "expr", "expr '+' expr"},
    {Production::Subtract, "expr", "expr '-' expr"},
    {Production::Multiply, "expr", "expr '*' expr"},
    {Production::Divide, "expr", "expr '/' expr"},
    {Production::Modulo, "expr", "expr '%' expr"},
    {Production::Parentheses, "expr", "'(' expr ')'"},
    {Production::Concatenate, "expr", "expr CONCAT expr"},
    {Production::SubtractUnits, "expr", "expr '-' expr DATEUNIT"},
    {Production::AddUnits, "expr", "expr '+' expr DATEUNIT"},
    {Production::UnknownCharacter, "expr", "BAD"},
    {Production::ExprOfCall, "expr", "call"},
    {Production::Item, "expr", "IDENT"},
    {Production::ExprOfConstant, "expr", "constant"},
    {Production::NegativeNumber, "constant", "'-' NUMBER"},
    {Production::Date, "constant", "DATE"},
    {Production::String, "constant", "STRING"},
    {Production::Number, "constant", "NUMBER"},
    {Production::SystemCall, "call", "SYSNAME"},
    {Production::CallOfStar, "call", "CALLNAME '*' ')'"},
    {Production::CallOfModifier, "call", "CALLNAME MODIFIER ')'"},
    {Production::CallOfNothing, "call", "CALLNAME ')'"},
    {Production::CallOfModifierAndParams, "call", "CALLNAME MODIFIER params ')'"},
    {Production::CallOfParams, "call", "CALLNAME params ')'"},
};
static_assert(std::size(kGrammar) == static_cast<size_t>(Production::Count));

// Productions of one symbol whose action does nothing: the parser continues as if the left side had
// been there.
constexpr Production kPassing[] = {Production::ParamsOfSingle, Production::ParamsOfList,
                                   Production::ExprOfCall, Production::ExprOfConstant};

// The precedence table: operators, lowest binding first; all are left-associative.
constexpr const char *kPrecedence[] = {
    "'+' '-'",
    "'*' '/'",
    "'%'",
    "CONCAT",
};

#endif
