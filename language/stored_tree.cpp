#include "language/stored_tree.h"

#include <cassert>
#include <utility>

#include "engine/expression_order.h"
#include "engine/items.h"
#include "engine/references.h"
#include "language/parse_state.h"

namespace {

bool RootIs(HEXP exp, int32_t kind) {
  return exp != nullptr && exp->tree != nullptr && NodeKindOf(exp->tree) == kind;
}

}  // namespace

void FreeExpression::operator()(Expression *expression) const {
  WRENMemFree(expression->program);
  const OwnedTree tree(expression->tree);
  const OwnedText name(expression->name);
  const OwnedText text(expression->text);
  const Owned<Expression> record(expression);
}

bool StoreExpression(EC ec, OwnedExpression &expression) {
  assert(expression->tree != nullptr && expression->name != nullptr && expression->text != nullptr);
  if (!AddReferences(ec, expression->tree)) {
    return false;
  }
  if (!HandleArrayAppendPointer(&ec->expressions, expression.get())) {
    RemoveReferences(ec, expression->tree);
    return false;
  }
  Expression *stored = expression.release();
  const bool awaited =
      ORLHEXPFromName(ec, stored->name) == nullptr && ReferenceCount(ec, stored->name) != 0;
  NameIndexAppend(ec->expressionNames, stored->entry, stored->name, stored);
  ec->revision++;
  if (awaited) {
    ec->generation++;  // references that found nothing find it
    ec->order.broken = true;
  } else {
    OrderAppend(ec, stored);
  }
  return true;
}

void ReplaceTree(EC ec, Expression *expression, OwnedTree tree) {
  assert(tree != nullptr && expression->tree != nullptr);
  RemoveReferences(ec, expression->tree);
  expression->dataType = StoredType(tree.get());
  WRENMemFree(std::exchange(expression->program, nullptr));
  const OwnedTree old(std::exchange(expression->tree, tree.release()));
}

bool AddReferences(EC ec, const ExprNode *tree) {
  for (const ExprNode *node = tree; node != nullptr; node = ExprNodeNext(tree, node)) {
    if (NodeKindOf(node) != NODE_FORMULA || AddReference(ec, NodeText(node))) {
      continue;
    }
    for (const ExprNode *done = tree; done != node; done = ExprNodeNext(tree, done)) {
      if (NodeKindOf(done) == NODE_FORMULA) {
        RemoveReference(ec, NodeText(done));
      }
    }
    return false;
  }
  return true;
}

void RemoveReferences(EC ec, const ExprNode *tree) {
  for (const ExprNode *node = tree; node != nullptr; node = ExprNodeNext(tree, node)) {
    if (NodeKindOf(node) == NODE_FORMULA) {
      RemoveReference(ec, NodeText(node));
    }
  }
}

Expression *BoundFormula(EC ec, ExprNode *node) {
  assert(NodeKindOf(node) == NODE_FORMULA);
  NodeBinding binding = BindingOf(node);
  if (binding.at != ec->generation) {
    binding = {ORLHEXPFromName(ec, NodeText(node)), ec->generation};
    Bind(node, binding);
  }
  return static_cast<Expression *>(binding.row);
}

ExpressionClass ClassOfTree(const ExprNode *root) {
  return NodeKindOf(root) == NODE_SET     ? kClassSet
         : NodeKindOf(root) == NODE_RANGE ? kClassRange
                                          : kClassFormula;
}

uint16_t StoredType(const ExprNode *root) {
  const uint16_t type = static_cast<uint16_t>(NodeType(root));
  return type == NODE_STRING  ? uint16_t{ORL_TYPE_STRING}
         : type == TOK_NUMBER ? uint16_t{ORL_TYPE_NUMBER}
                              : type;
}

int32_t ORLIsExpRange(EC /*ec*/, HEXP exp, int16_t which) {
  return (which == 1 && RootIs(exp, NODE_SET)) || (which == 2 && RootIs(exp, NODE_RANGE)) ? 1 : 0;
}

int32_t ORLIsExpressionSimple(EC /*ec*/, HEXP exp) {
  return RootIs(exp, NODE_NUMBER) || RootIs(exp, NODE_STRING) || RootIs(exp, NODE_DATE) ? 1 : 0;
}

int32_t ORLIsExpressionSimpleInput(EC /*ec*/, HEXP exp) {
  return RootIs(exp, NODE_ITEM) ? 1 : 0;
}

int16_t ORLGetSimpleInputSubClass(EC ec, HEXP exp) {
  const ExprItem *item = ec != nullptr && RootIs(exp, NODE_ITEM)
                             ? ItemFind(&ec->inputs, NodeText(exp->tree))
                             : nullptr;
  return item == nullptr ? int16_t{-1} : static_cast<int16_t>(item->subClass);
}
