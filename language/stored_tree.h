// Expression records with their trees: creation, storage, replacement, and the counts of their
// references.
#ifndef ORLI11_LANGUAGE_STORED_TREE_H
#define ORLI11_LANGUAGE_STORED_TREE_H

#include <cstdint>
#include <memory>

#include "engine/expressions.h"
#include "language/tree.h"
#include "platform/owned.h"

struct ParseState;

// A record that is in no table, with everything that it owns.
struct FreeExpression {
  void operator()(Expression *expression) const;
};
using OwnedExpression = std::unique_ptr<Expression, FreeExpression>;

// A record with the tree of all nodes of a parse and copies of its text and of the name, in one
// block; null when out of memory.
OwnedExpression MakeExpression(ParseState &state, const NameKey &key);

// Adds a record at the end of the context's table, which owns it from there on. False, with
// everything unchanged, when the table cannot grow or when out of memory.
bool StoreExpression(EC ec, OwnedExpression &expression);

// Replaces the tree, text and name of a stored expression by those of another record, whose
// references must have been counted already.
void ReplaceContent(EC ec, Expression *expression, OwnedExpression fresh);

// Replaces the text of an expression and nothing else.
void ReplaceText(Expression *expression, OwnedText text);

// Add or remove the references to the formulas that a record's tree names. AddReferences returns
// false, with nothing counted, when out of memory.
bool AddReferences(EC ec, const Expression *expression);
void RemoveReferences(EC ec, const Expression *expression);

// The class of an expression by the kind of its tree's root.
ExpressionClass ClassOfRoot(int32_t kind);

// The data type under which an expression with a root of that type is stored.
uint16_t StoredType(int16_t type);

#endif
