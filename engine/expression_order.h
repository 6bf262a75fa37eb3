// The dependency order of the expressions that refer to formulas: each is above all of these that
// its tree refers to. So a formula can reach another one only through formulas above that one, and
// a search for cycles need not look below it. Expressions that refer to none are in no cycle and
// not in the order: routines called for them do nothing.
//
// The order is a list with ascending ranks. It becomes invalid ("broken") when a name resolves
// differently for trees that are already stored; the next search then rebuilds it.
#ifndef ORLI11_ENGINE_EXPRESSION_ORDER_H
#define ORLI11_ENGINE_EXPRESSION_ORDER_H

#include "engine/context.h"
#include "engine/expressions.h"

// What precedes the tree of an expression that is in the order.
struct OrderPlace {
  Expression *below, *above;
  int64_t rank;
};

inline OrderPlace *PlaceOf(const Expression *expression) {
  return reinterpret_cast<OrderPlace *>(expression->tree) - 1;
}

// Adds an expression that is not in the order on top: nothing refers to it, or the order is broken.
void OrderAppend(EC ec, Expression *expression);

// Removes an expression.
void OrderRemove(EC ec, Expression *expression);

// Moves an expression directly below another one. The order must not be broken.
void OrderMoveBelow(EC ec, Expression *expression, Expression *above);

// Empties the order; every expression is to be appended again, each above what it refers to.
void OrderRestart(EC ec);

#endif
