// The order of a context's expressions by what refers to what: each is above all formulas that its
// tree refers to. So a formula can lead to another one only through formulas above that, and a
// search for circles need not look below.
//
// The order is a list with ascending ranks. It is broken where a name comes to mean something else
// for trees that are stored already, and then rebuilt by the next search.
#ifndef ORLI11_ENGINE_EXPRESSION_ORDER_H
#define ORLI11_ENGINE_EXPRESSION_ORDER_H

#include "engine/context.h"
#include "engine/expressions.h"

// Puts an expression that is in no order on top: nothing refers to it, or the order is broken.
void OrderAppend(EC ec, Expression *expression);

// Takes an expression out.
void OrderRemove(EC ec, Expression *expression);

// Moves an expression directly below another one. The order must not be broken.
void OrderMoveBelow(EC ec, Expression *expression, Expression *above);

// Empties the order; every expression is to be appended again, each above what it refers to.
void OrderRestart(EC ec);

#endif
