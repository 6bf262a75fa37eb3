// Type rules: which operator works on which types, and how arguments are held against parameters.
//
// A rule that fails puts its message into state.error; a length of 0 there means that it does not
// know the place, which the parser then fills in.
#ifndef ORLI11_LANGUAGE_TYPES_H
#define ORLI11_LANGUAGE_TYPES_H

#include <cstdint>

#include "language/parse_state.h"
#include "language/tree.h"

// True when the operator exists for the type of its left operand.
bool TypeOperatorAllowed(EC ec, int32_t kind, int16_t leftType);

// The group of operator callbacks of an operator, or -1.
int32_t OperatorGroupOf(int32_t kind);

// Give a node that has its children its type (kNoType with the error set) and its detail. TypeCall
// turns a call of a named formula into a NODE_FORMULA.
void TypeOperator(ParseState &state, ExprNode *node);
void TypeCall(ParseState &state, ExprNode *node, CallForm form);

// The common type of a set's members, or kNoType with the error set.
int16_t TypeOfSet(ParseState &state, HandleArray list);

// How an argument count fits a function: 0 fits, below 0 too few, above 0 too many.
int32_t TypeCountArgs(int32_t count, const ExprItem *function);

// 1 when a call fits the function of that name, else 0 with *error set. `modifier` is the pending
// modifier word.
int32_t TypeCheckCall(EC ec, HandleArray list, const char *name, FormulaError *error, uint16_t form,
                      uint16_t modifier);

// True when the arguments of a call that its routine is given by value have the types that its row
// declares.
bool TypeArgumentsFit(const ExprNode *call, const ExprItem *function);

// The type of a call of a function that declares type 4; kNoType without a list.
int16_t TypeCallResult(EC ec, HandleArray list);

#endif
