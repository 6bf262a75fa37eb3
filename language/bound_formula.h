// What the names of formulas in a tree mean.
#ifndef ORLI11_LANGUAGE_BOUND_FORMULA_H
#define ORLI11_LANGUAGE_BOUND_FORMULA_H

#include "engine/expressions.h"
#include "language/tree.h"

// The formula that a NODE_FORMULA names at present, or null. The node caches it until the context's
// generation changes.
Expression *BoundFormula(EC ec, ExprNode *node);

#endif
