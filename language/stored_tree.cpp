#include "language/stored_tree.h"

#include <cassert>
#include <cstring>
#include <utility>

#include "engine/expression_order.h"
#include "engine/items.h"
#include "engine/references.h"
#include "language/parse_state.h"
#include "language/recursion.h"

namespace {

bool RootIs(HEXP exp, int32_t kind) {
  return exp != nullptr && exp->tree != nullptr && NodeKindOf(exp->tree) == kind;
}

// What follows the record once its content is in another block.
struct ContentLink {
  Expression *content;
};
static_assert(sizeof(ExprNode) >= sizeof(ContentLink));  // every tree is large enough for it

// The record whose block holds the expression's present tree, text and name, which the caller then
// owns; null when that is the expression's own block.
Expression *TakeContent(const Expression *expression) {
  ContentLink link = {};
  if (expression->hasContent) {
    std::memcpy(&link, expression + 1, sizeof link);
  }
  return link.content;
}

void SetContent(Expression *expression, Expression *content) {
  const ContentLink link = {content};
  std::memcpy(static_cast<void *>(expression + 1), &link, sizeof link);
  expression->hasContent = true;
}

// Keeps the expression's place in the order for its new tree. False when it had none.
bool KeepPlace(EC ec, Expression *expression, const Expression *fresh) {
  if (!expression->refersToFormulas) {
    return false;
  }
  if (fresh->refersToFormulas) {
    *PlaceOf(fresh) = *PlaceOf(expression);
    return true;
  }
  OrderRemove(ec, expression);
  return false;
}

// Whether the references of a record are counted, as far as the counts tell.
[[maybe_unused]] bool AreCounted(EC ec, const Expression *expression) {
  const ExprNode *tree = expression->tree;
  for (const ExprNode *node = tree; node != nullptr; node = ExprNodeNext(tree, node)) {
    if (NodeKindOf(node) == NODE_FORMULA && ReferenceCount(ec, NodeText(node)) == 0) {
      return false;
    }
  }
  return true;
}

}  // namespace

void FreeExpression::operator()(Expression *expression) const {
  const OwnedBlock program(expression->program);
  if (expression->ownsNames) {
    ReleaseNames(expression->tree);
  }
  const OwnedText text(expression->ownsText ? expression->text : nullptr);
  const Owned<Expression> content(TakeContent(expression));
  const Owned<Expression> record(expression);
}

OwnedExpression MakeExpression(ParseState &state, const NameKey &key) {
  const size_t textBytes = static_cast<size_t>(state.textLength) + 1;
  const uint32_t before = sizeof(Expression) + (state.builder.refers ? sizeof(OrderPlace) : 0);
  const FinishedTree finished =
      FinishTree(state.builder, state.text, before, textBytes + key.name.size() + 1);
  if (finished.block == nullptr) {
    return nullptr;
  }
  OwnedExpression expression(reinterpret_cast<Expression *>(finished.block));
  expression->tree = finished.root;
  expression->dataType = StoredType(NodeType(finished.root));
  expression->text = finished.after;
  expression->textLength = state.textLength;
  expression->refersToFormulas = state.builder.refers;
  std::memcpy(expression->text, state.text, textBytes);
  char *ownName = finished.after + textBytes;
  std::memcpy(ownName, key.name.data(), key.name.size());
  NameEntrySet(expression->entry, ownName, key);
  return expression;
}

bool StoreExpression(EC ec, OwnedExpression &expression) {
  if (!AddReferences(ec, expression.get())) {
    return false;
  }
  if (!HandleArrayAppendPointer(&ec->expressions, expression.get())) {
    RemoveReferences(ec, expression.get());
    return false;
  }
  Expression *stored = expression.release();
  const bool resolvesPending =
      ReferenceCount(ec, KeyOfEntry(stored->entry)) != 0 &&
      NameIndexFirst(ec->expressionNames, KeyOfEntry(stored->entry)) == nullptr;
  NameIndexAppend(ec->expressionNames, stored->entry);
  ++ec->revision;
  if (resolvesPending) {
    ++ec->generation;  // references that were unresolved now resolve to it
    ec->order.broken = true;
  } else {
    OrderAppend(ec, stored);
  }
  return true;
}

void ReplaceContent(EC ec, Expression *expression, OwnedExpression fresh) {
  assert(AreCounted(ec, fresh.get()));
  RemoveReferences(ec, expression);
  const bool inOrder = KeepPlace(ec, expression, fresh.get());
  if (expression->ownsNames) {
    ReleaseNames(expression->tree);
  }
  const OwnedBlock program(std::exchange(expression->program, nullptr));
  ReplaceText(expression, nullptr);
  const char *oldName = expression->entry.name;
  NameIndexRename(ec->expressionNames, expression->entry, fresh->entry.name);
  expression->dataType = fresh->dataType;
  expression->tree = fresh->tree;
  expression->text = fresh->text;
  expression->textLength = fresh->textLength;
  expression->refersToFormulas = fresh->refersToFormulas;
  expression->ownsNames = false;
  const Owned<Expression> old(TakeContent(expression));
  SetContent(expression, fresh.release());
  OrderAfterReplace(ec, expression, oldName, inOrder);
}

void ReplaceText(Expression *expression, OwnedText text) {
  const OwnedText old(expression->ownsText ? expression->text : nullptr);
  expression->ownsText = text != nullptr;
  expression->text = text.release();
  expression->textLength = expression->text == nullptr ? 0 : WRENStrLen(expression->text);
}

bool AddReferences(EC ec, const Expression *expression) {
  if (!expression->refersToFormulas) {
    return true;
  }
  const ExprNode *tree = expression->tree;
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

void RemoveReferences(EC ec, const Expression *expression) {
  if (!expression->refersToFormulas) {
    return;
  }
  const ExprNode *tree = expression->tree;
  for (const ExprNode *node = tree; node != nullptr; node = ExprNodeNext(tree, node)) {
    if (NodeKindOf(node) == NODE_FORMULA) {
      RemoveReference(ec, NodeText(node));
    }
  }
}

ExpressionClass ClassOfRoot(int32_t kind) {
  return kind == NODE_SET ? kClassSet : kind == NODE_RANGE ? kClassRange : kClassFormula;
}

// Sets and ranges of keywords have the keywords' type, a number that the host chooses. The two that
// are the token codes of literals are stored as the types of those literals.
uint16_t StoredType(int16_t type) {
  return type == TOK_STRING   ? uint16_t{ORL_TYPE_STRING}
         : type == TOK_NUMBER ? uint16_t{ORL_TYPE_NUMBER}
                              : static_cast<uint16_t>(type);
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
