// The dependency order of the expressions that refer to formulas: each ranks above every expression
// that its tree refers to. References only lead downwards, so a search for X ignores everything
// below X. Expressions that refer to none are in no cycle and not in the order: routines called for
// them do nothing.
//
// The order is a list with ascending ranks. It becomes invalid ("broken") when a name resolves
// differently for trees that are already stored; the next search then rebuilds it.
#ifndef ORLI11_ENGINE_EXPRESSION_ORDER_H
#define ORLI11_ENGINE_EXPRESSION_ORDER_H

#include <cassert>

#include "engine/context.h"
#include "engine/expressions.h"

// List links and rank, stored directly before the tree of an expression in the order.
struct OrderPlace {
  Expression *below, *above;
  int64_t rank;
};

inline OrderPlace *PlaceOf(const Expression *expression) {
  assert(expression->refersToFormulas);
  return reinterpret_cast<OrderPlace *>(expression->tree) - 1;
}

// Adds an expression that is not in the order on top: nothing refers to it, or the order is broken.
void OrderAppend(EC ec, Expression *expression);

// Removes an expression.
void OrderRemove(EC ec, Expression *expression);

// Moves an expression directly below another one. The order must not be broken.
void OrderMoveBelow(EC ec, Expression *expression, Expression *above);

// Empties the order; the caller must append every expression again, after those it refers to.
void OrderRestart(EC ec);

#endif
