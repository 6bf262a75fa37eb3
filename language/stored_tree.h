// Where expression records and trees meet: records with their trees, and what stored trees refer
// to.
#ifndef ORLI11_LANGUAGE_STORED_TREE_H
#define ORLI11_LANGUAGE_STORED_TREE_H

#include <cstdint>
#include <memory>
#include <string_view>

#include "engine/expressions.h"
#include "language/tree.h"
#include "platform/owned.h"

struct ParseState;

// A record that is in no table, with all it holds.
struct FreeExpression {
  void operator()(Expression *expression) const;
};
using OwnedExpression = std::unique_ptr<Expression, FreeExpression>;

// A record with the tree of all nodes of a parse and copies of its text and of the name, in one
// block; null when there is no memory.
OwnedExpression MakeExpression(ParseState &state, std::string_view name);

// Adds a record at the end of the context's table, which owns it from there on. False, with
// everything as it was, when the table cannot grow or there is no memory.
bool StoreExpression(EC ec, OwnedExpression &expression);

// Gives a stored expression the tree, text and name of another record, whose references must have
// been counted already.
void ReplaceContent(EC ec, Expression *expression, OwnedExpression fresh);

// Gives an expression another text alone.
void ReplaceText(Expression *expression, OwnedText text);

// Count the formulas that a record's tree refers to as references, or no longer. AddReferences is
// false, with nothing counted, when there is no memory.
bool AddReferences(EC ec, const Expression *expression);
void RemoveReferences(EC ec, const Expression *expression);

// What a text is by the kind of its tree's root.
ExpressionClass ClassOfRoot(int32_t kind);

// The data type under which an expression with a root of that type is stored.
uint16_t StoredType(int16_t type);

#endif
