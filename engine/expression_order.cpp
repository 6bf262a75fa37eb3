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
  for (Expression *at = order.lowest; at != nullptr; at = PlaceOf(at)->above) {
    rank += kTopGap;
    PlaceOf(at)->rank = rank;
  }
}

int64_t RankOf(const Expression *expression) {
  return expression == nullptr ? 0 : PlaceOf(expression)->rank;
}

// Makes two expressions neighbours; null stands for the end of the list on that side.
void Link(ExpressionOrder &order, Expression *below, Expression *above) {
  Expression *&next = below == nullptr ? order.lowest : PlaceOf(below)->above;
  Expression *&previous = above == nullptr ? order.highest : PlaceOf(above)->below;
  next = above;
  previous = below;
}

}  // namespace

void OrderAppend(EC ec, Expression *expression) {
  ExpressionOrder &order = ec->order;
  if (order.broken || !expression->refersToFormulas) {
    return;
  }
  if (RankOf(order.highest) > kHighestRank) {
    SpreadRanks(order);
  }
  PlaceOf(expression)->rank = RankOf(order.highest) + kTopGap;
  Link(order, order.highest, expression);
  Link(order, expression, nullptr);
}

void OrderRemove(EC ec, Expression *expression) {
  if (!ec->order.broken && expression->refersToFormulas) {
    Link(ec->order, PlaceOf(expression)->below, PlaceOf(expression)->above);
  }
}

void OrderMoveBelow(EC ec, Expression *expression, Expression *above) {
  assert(!ec->order.broken && expression != above);
  OrderRemove(ec, expression);
  if (RankOf(above) - RankOf(PlaceOf(above)->below) < 2) {
    SpreadRanks(ec->order);
  }
  Expression *below = PlaceOf(above)->below;
  const int64_t half = (RankOf(above) - RankOf(below)) / 2;
  PlaceOf(expression)->rank = RankOf(below) + (half < kInnerGap ? half : kInnerGap);
  Link(ec->order, below, expression);
  Link(ec->order, expression, above);
}

void OrderRestart(EC ec) {
  ec->order = ExpressionOrder{};
}
