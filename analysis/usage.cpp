#include "analysis/usage.h"

#include <cassert>
#include <cstring>

#include "engine/items.h"
#include "language/bound_formula.h"
#include "language/formula_walk.h"
#include "language/stored_tree.h"
#include "platform/text.h"

namespace {

// A match inside an expression is a match of every expression on the path to it.
bool MarkPathUsed(Expression *expression) {
  for (; expression != nullptr; expression = expression->walkCaller) {
    expression->walkState = WalkState::Yes;
  }
  return true;
}

// Visits each node of an expression and of the formulas that it refers to, in written order, until
// `match` is true for one. The return path is kept in the expressions, so no depth needs memory.
template <class Match>
bool Walk(UsageWalk &walk, Expression *top, Match match) {
  assert(top->tree != nullptr);
  Expression *current = top;
  ExprNode *tree = top->tree;
  ExprNode *node = tree;
  EnterExpression(walk.number, top, nullptr, 0);
  for (;;) {
    while (node != nullptr) {
      if (match(node)) {
        return MarkPathUsed(current);
      }
      Expression *target = NodeKindOf(node) == NODE_FORMULA ? BoundFormula(walk.ec, node) : nullptr;
      if (target != nullptr && target->walkNumber != walk.number) {
        EnterExpression(walk.number, target, current, IndexOf(tree, node));
        current = target;
        node = tree = target->tree;
        continue;
      }
      if (target != nullptr && target->walkState == WalkState::Yes) {
        return MarkPathUsed(current);
      }
      if (target != nullptr && target->walkState == WalkState::Open) {
        walk.circular = true;
      }
      node = ExprNodeNext(tree, node);
    }
    current->walkState = WalkState::No;
    if (current == top) {
      return false;
    }
    const uint32_t from = current->walkReturn;
    current = current->walkCaller;
    tree = current->tree;
    node = ExprNodeNext(tree, tree + from);
  }
}

// A new number invalidates the results of all earlier walks.
void Renew(UsageWalk &walk) {
  walk.number = NextWalkNumber(walk.ec);
  walk.revision = walk.ec->revision;
  walk.circular = false;
}

// Begins a walk that finds whether an item is used, or continues the last one while its results are
// still valid: hosts query one expression after another.
UsageWalk BeginCachedWalk(EC ec, int32_t kind, const char *name) {
  if (ec->lastUsageWalk != 0 && ec->lastUsageRevision == ec->revision &&
      ec->lastUsageKind == kind && SameText(ec->lastUsageName, name)) {
    return {ec, ec->revision, ec->lastUsageWalk, false};
  }
  UsageWalk walk = UsageWalkBegin(ec);
  const size_t length = std::strlen(name);
  const bool kept = length < sizeof ec->lastUsageName;
  if (kept) {
    std::memcpy(ec->lastUsageName, name, length + 1);
  }
  ec->lastUsageKind = kind;
  ec->lastUsageWalk = kept ? walk.number : 0;
  ec->lastUsageRevision = ec->revision;
  return walk;
}

template <class Match>
int32_t RunWalk(EC ec, HEXP exp, Match match) {
  if (ec == nullptr || exp == nullptr) {
    return 0;
  }
  UsageWalk walk = UsageWalkBegin(ec);
  return Walk(walk, exp, match) ? 1 : 0;
}

bool NodeUsesItem(const ExprNode *node, int32_t kind, const char *name) {
  switch (NodeKindOf(node)) {
    case NODE_ITEM:
      return kind == ORL_INPUT && SameText(NodeText(node), name);
    case NODE_CALL:
      return kind == ORL_FUNCTION && SameText(NodeText(node), name);
    case NODE_FORMULA:
      return kind == ORL_FORMULA && SameText(NodeText(node), name);
    default:
      return false;
  }
}

bool IsCallWithItem(const ExprNode *node, const char *functionName, const char *itemName) {
  if (NodeKindOf(node) != NODE_CALL || !SameText(NodeText(node), functionName)) {
    return false;
  }
  for (const ExprNode *argument = FirstChild(node); argument != nullptr;
       argument = NextSibling(argument)) {
    if (NodeKindOf(argument) == NODE_ITEM && SameText(NodeText(argument), itemName)) {
      return true;
    }
  }
  return false;
}

}  // namespace

UsageWalk UsageWalkBegin(EC ec) {
  UsageWalk walk = {ec, 0, 0, false};
  Renew(walk);
  return walk;
}

bool ItemUsedBy(UsageWalk &walk, HEXP exp, int32_t kind, const char *name) {
  if (walk.circular || walk.revision != walk.ec->revision) {
    Renew(walk);
  }
  if (exp->walkNumber == walk.number) {
    return exp->walkState == WalkState::Yes;
  }
  return Walk(walk, exp, [=](const ExprNode *node) { return NodeUsesItem(node, kind, name); });
}

int32_t ORLIsItemUsed(EC ec, HEXP exp, int32_t kind, const char *name) {
  if (name == nullptr) {
    return 0;
  }
  if (ec == nullptr || exp == nullptr) {
    return 0;
  }
  UsageWalk walk = BeginCachedWalk(ec, kind, name);
  const bool used = ItemUsedBy(walk, exp, kind, name);
  if (walk.circular) {
    ec->lastUsageWalk = 0;
  }
  return used ? 1 : 0;
}

int32_t ORLIsItemUsedInComplex(EC ec, const char *name) {
  if (ec == nullptr || name == nullptr) {
    return 0;
  }
  // One walk for all: what it has visited without a match has none for the next expression either.
  UsageWalk walk = UsageWalkBegin(ec);
  const uint32_t count = HandleArrayRows(ec->expressions);
  for (uint32_t i = 0; i < count; ++i) {
    HEXP exp = static_cast<HEXP>(HandleArrayPointerAt(ec->expressions, i));
    if (ORLIsExpressionSimple(ec, exp) == 0 && ORLIsExpressionSimpleInput(ec, exp) == 0 &&
        ItemUsedBy(walk, exp, ORL_INPUT, name)) {
      return 1;
    }
  }
  return 0;
}

int32_t ORLIsFunctionVariableUsed(EC ec, HEXP exp, const char *functionName, const char *itemName) {
  if (functionName == nullptr || itemName == nullptr) {
    return 0;
  }
  return RunWalk(
      ec, exp, [=](const ExprNode *node) { return IsCallWithItem(node, functionName, itemName); });
}

int32_t ORLIsItemAggregate(EC ec, int32_t kind, const char *name) {
  const ItemTable *table = ec == nullptr ? nullptr : ItemTableOf(ec, kind);
  return table != nullptr && ItemHasAggregateParam(table, name) ? 1 : 0;
}

int32_t ORLIsAggregateUsed(EC ec, HEXP exp) {
  return RunWalk(ec, exp, [=](const ExprNode *node) {
    return NodeKindOf(node) == NODE_CALL && ItemHasAggregateParam(&ec->functions, NodeText(node));
  });
}
