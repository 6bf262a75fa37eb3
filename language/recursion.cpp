// The search for a cycle is a depth-first walk through the formulas that a tree reaches, each once,
// with the return path in the expressions. Only formulas that refer to others are entered, and
// while the order of expressions is valid, only those above the target. An expression that it
// leaves without having found the target is moved below the target, where the next search does not
// enter it again.
#include "language/recursion.h"

#include <cassert>

#include "engine/expression_order.h"
#include "engine/references.h"
#include "language/bound_formula.h"
#include "language/formula_walk.h"
#include "language/stored_tree.h"
#include "platform/text.h"

namespace {

struct Search {
  EC ec;
  const char *name;    // null: every expression is added to a new order
  Expression *target;  // the first expression of that name when it is in the order, else null
  uint32_t number;
  bool circular;  // formulas refer to each other in a cycle
};

Search BeginSearch(EC ec, const char *name, Expression *target) {
  return {ec, name, target, NextWalkNumber(ec), false};
}

// Counts a step of a search; false when the limit is reached.
bool CountStep(EC ec) {
  return ec->searchSteps == nullptr || --*ec->searchSteps >= 0;
}

// The formula at a node when the search has to enter it, or null.
Expression *ToEnter(Search &search, ExprNode *node) {
  Expression *formula = NodeKindOf(node) == NODE_FORMULA ? BoundFormula(search.ec, node) : nullptr;
  if (formula == nullptr || !formula->refersToFormulas) {
    return nullptr;
  }
  if (formula->walkNumber == search.number) {
    search.circular = search.circular || formula->walkState == WalkState::Open;
    return nullptr;
  }
  const bool below =
      search.target != nullptr && PlaceOf(formula)->rank < PlaceOf(search.target)->rank;
  return below ? nullptr : formula;
}

// The search has finished an expression and everything that it reaches.
void Leave(Search &search, Expression *expression) {
  expression->walkState = WalkState::No;
  if (search.name == nullptr) {
    OrderAppend(search.ec, expression);
  } else if (search.target != nullptr) {
    OrderMoveBelow(search.ec, expression, search.target);
  }
}

bool IsReference(const ExprNode *node, const char *name) {
  return name != nullptr && NodeKindOf(node) == NODE_FORMULA && SameText(NodeText(node), name);
}

// Searches a tree, which is that of `self` or not yet in an expression. Returns as CheckReferences.
RecursionCheck Run(Search &search, ExprNode *root, Expression *self, const ExprNode **where) {
  if (self != nullptr) {
    EnterExpression(search.number, self, nullptr, 0);
  }
  Expression *current = self;
  ExprNode *tree = root;
  ExprNode *node = root;
  for (;;) {
    while (node != nullptr) {
      if (current == self) {
        *where = node;
      }
      if (!CountStep(search.ec)) {
        return RecursionCheck::OutOfSteps;
      }
      if (IsReference(node, search.name)) {
        return RecursionCheck::Recursive;
      }
      Expression *formula = ToEnter(search, node);
      if (formula != nullptr) {
        EnterExpression(search.number, formula, current, IndexOf(tree, node));
        current = formula;
        tree = node = formula->tree;
      } else {
        node = ExprNodeNext(tree, node);
      }
    }
    if (current == nullptr) {
      return RecursionCheck::Passed;
    }
    Leave(search, current);
    if (current == self) {
      return RecursionCheck::Passed;
    }
    const uint32_t from = current->walkReturn;
    current = current->walkCaller;
    tree = current == nullptr ? root : current->tree;
    node = ExprNodeNext(tree, tree + from);
  }
}

// Rebuilds a broken order. It stays broken when formulas refer to each other in a cycle.
RecursionCheck RestoreOrder(EC ec) {
  OrderRestart(ec);
  Search search = BeginSearch(ec, nullptr, nullptr);
  RecursionCheck result = RecursionCheck::Passed;
  for (uint32_t i = 0; i < HandleArrayRows(ec->expressions) && result == RecursionCheck::Passed;
       ++i) {
    Expression *expression = static_cast<Expression *>(HandleArrayPointerAt(ec->expressions, i));
    const ExprNode *where = nullptr;
    if (expression->refersToFormulas && expression->walkNumber != search.number) {
      result = Run(search, expression->tree, expression, &where);
    }
  }
  ec->order.broken = search.circular || result != RecursionCheck::Passed;
  return result;
}

// No stored tree refers to `name`, so only `tree` itself can.
RecursionCheck OwnReference(const char *name, ExprNode *tree, const ExprNode **where) {
  for (ExprNode *node = tree; node != nullptr; node = ExprNodeNext(tree, node)) {
    if (IsReference(node, name)) {
      *where = node;
      return RecursionCheck::Recursive;
    }
  }
  return RecursionCheck::Passed;
}

}  // namespace

RecursionCheck CheckReferences(EC ec, const char *name, ExprNode *tree, const ExprNode **where) {
  assert(name != nullptr && tree != nullptr);
  if (ReferenceCount(ec, name) == 0) {
    return OwnReference(name, tree, where);
  }
  Expression *stored = ORLHEXPFromName(ec, name);
  if (stored != nullptr && ec->order.broken) {
    const RecursionCheck restored = RestoreOrder(ec);
    if (restored != RecursionCheck::Passed) {
      return restored;
    }
  }
  const bool ordered = stored != nullptr && stored->refersToFormulas && !ec->order.broken;
  Search search = BeginSearch(ec, name, ordered ? stored : nullptr);
  return Run(search, tree, nullptr, where);
}

void OrderAfterReplace(EC ec, Expression *expression, const char *oldName, bool wasInOrder) {
  const bool renamed = !SameText(oldName, expression->entry.name);
  const bool shared =
      renamed && ReferenceCount(ec, oldName) != 0 && ORLHEXPFromName(ec, oldName) != nullptr;
  const bool named = ReferenceCount(ec, expression->entry.name) != 0;
  const bool resolvesElsewhere = shared || (renamed && named);
  const bool unreferenced = !named || ORLHEXPFromName(ec, expression->entry.name) != expression;
  if (!resolvesElsewhere && unreferenced) {
    if (wasInOrder) {
      OrderRemove(ec, expression);
    }
    OrderAppend(ec, expression);
  } else if (resolvesElsewhere || (!wasInOrder && expression->refersToFormulas)) {
    // References resolve to another formula than before, or the formula belongs below those that
    // refer to it, wherever they are.
    ec->order.broken = true;
  }
}
