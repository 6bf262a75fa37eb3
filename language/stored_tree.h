// Where expression records and trees meet: records that own a tree, and what stored trees refer to.
#ifndef ORLI11_LANGUAGE_STORED_TREE_H
#define ORLI11_LANGUAGE_STORED_TREE_H

#include <cstdint>
#include <memory>

#include "engine/expressions.h"
#include "language/tree.h"

// A record that is in no table, with all it holds.
struct FreeExpression {
  void operator()(Expression *expression) const;
};
using OwnedExpression = std::unique_ptr<Expression, FreeExpression>;

// Adds a record, which must have tree, name and text, at the end of the context's table, which owns
// it from there on. False, with
// everything as it was, when the table cannot grow or there is no memory.
bool StoreExpression(EC ec, OwnedExpression &expression);

// Gives a stored expression another tree, whose references must have been counted already.
void ReplaceTree(EC ec, Expression *expression, OwnedTree tree);

// Count the formulas that a tree refers to as references, or no longer. AddReferences is false,
// with nothing counted, when there is no memory.
bool AddReferences(EC ec, const ExprNode *tree);
void RemoveReferences(EC ec, const ExprNode *tree);

// The formula that a NODE_FORMULA names at present, or null.
Expression *BoundFormula(EC ec, ExprNode *node);

// What a text is by the root of its tree.
ExpressionClass ClassOfTree(const ExprNode *root);

// The data type under which an expression with that root is stored.
uint16_t StoredType(const ExprNode *root);

#endif
