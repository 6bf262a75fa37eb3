// Steps that walks through named formulas share. The return path is kept in the expressions, so no
// depth of references needs memory.
#ifndef ORLI11_LANGUAGE_FORMULA_WALK_H
#define ORLI11_LANGUAGE_FORMULA_WALK_H

#include "engine/expressions.h"
#include "language/tree.h"

// The index of a node in the tree of that root.
inline uint32_t IndexOf(const ExprNode *root, const ExprNode *node) {
  return static_cast<uint32_t>(node - root);
}

// Enters an expression in the walk of that number, from a node of the caller's tree.
inline void EnterExpression(uint32_t walkNumber, Expression *expression, Expression *caller,
                            uint32_t from) {
  expression->walkNumber = walkNumber;
  expression->walkState = WalkState::Open;
  expression->walkCaller = caller;
  expression->walkReturn = from;
  expression->walkPlace = 0;
}

#endif
