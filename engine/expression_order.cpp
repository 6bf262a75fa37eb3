#include "engine/expression_order.h"

#include <cassert>

namespace {

// The distance of a new top expression from the previous one. Many fit between the two.
constexpr int64_t kTopGap = int64_t{1} << 40;
// The largest distance of an expression inserted in between from the one below it.
constexpr int64_t kInnerGap = int64_t{1} << 16;
constexpr int64_t kHighestRank = INT64_MAX - kTopGap;

// Assigns all ranks again, as far apart as they can be.
void SpreadRanks(ExpressionOrder &order) {
  int64_t rank = 0;
  for (Expression *at = order.lowest; at != nullptr; at = at->nextInOrder) {
    at->rank = rank += kTopGap;
  }
}

int64_t RankBelow(const Expression *above) {
  return above->previousInOrder == nullptr ? 0 : above->previousInOrder->rank;
}

}  // namespace

void OrderAppend(EC ec, Expression *expression) {
  ExpressionOrder &order = ec->order;
  if (order.broken) {
    return;
  }
  if (order.highest != nullptr && order.highest->rank > kHighestRank) {
    SpreadRanks(order);
  }
  expression->previousInOrder = order.highest;
  expression->nextInOrder = nullptr;
  expression->rank = (order.highest == nullptr ? 0 : order.highest->rank) + kTopGap;
  (order.highest == nullptr ? order.lowest : order.highest->nextInOrder) = expression;
  order.highest = expression;
}

void OrderRemove(EC ec, Expression *expression) {
  ExpressionOrder &order = ec->order;
  if (order.broken) {
    return;
  }
  Expression *below = expression->previousInOrder;
  Expression *above = expression->nextInOrder;
  (below == nullptr ? order.lowest : below->nextInOrder) = above;
  (above == nullptr ? order.highest : above->previousInOrder) = below;
}

void OrderMoveBelow(EC ec, Expression *expression, Expression *above) {
  assert(!ec->order.broken && expression != above);
  OrderRemove(ec, expression);
  if (above->rank - RankBelow(above) < 2) {
    SpreadRanks(ec->order);
  }
  const int64_t below = RankBelow(above);
  const int64_t half = (above->rank - below) / 2;
  expression->rank = below + (half < kInnerGap ? half : kInnerGap);
  expression->previousInOrder = above->previousInOrder;
  expression->nextInOrder = above;
  (above->previousInOrder == nullptr ? ec->order.lowest : above->previousInOrder->nextInOrder) =
      expression;
  above->previousInOrder = expression;
}

void OrderRestart(EC ec) {
  ec->order = ExpressionOrder{};
}
