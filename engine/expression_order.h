// The dependency order of a context's expressions: each is above all formulas that its tree refers
// to. So a formula can reach another one only through formulas above that one, and a search for
// cycles need not look below it.
//
// The order is a list with ascending ranks. It becomes invalid ("broken") when a name resolves
// differently for trees that are already stored; the next search then rebuilds it.
#ifndef ORLI11_ENGINE_EXPRESSION_ORDER_H
#define ORLI11_ENGINE_EXPRESSION_ORDER_H

#include "engine/context.h"
#include "engine/expressions.h"

// Adds an expression that is not in the order on top: nothing refers to it, or the order is broken.
void OrderAppend(EC ec, Expression *expression);

// Removes an expression.
void OrderRemove(EC ec, Expression *expression);

// Moves an expression directly below another one. The order must not be broken.
void OrderMoveBelow(EC ec, Expression *expression, Expression *above);

// Empties the order; every expression is to be appended again, each above what it refers to.
void OrderRestart(EC ec);

#endif
