// The lifecycle of contexts and expressions: copy, clone and destroy.
#include "engine/context.h"
#include "engine/expression_order.h"
#include "engine/expressions.h"
#include "engine/items.h"
#include "engine/references.h"
#include "language/stored_tree.h"

namespace {

void FreeExpressions(EC ec) {
  const uint32_t count = HandleArrayRows(ec->expressions);
  for (uint32_t i = 0; i < count; ++i) {
    const OwnedExpression expression(
        static_cast<Expression *>(HandleArrayPointerAt(ec->expressions, i)));
  }
  HandleArrayFree(ec->expressions);
  NameIndexFree(ec->expressionNames);
  FreeReferences(ec);
}

void FreeTexts(EC ec) {
  for (int32_t i = 0; i < kDateForms; ++i) {
    ReplaceBlock(ec->pictures[i]);
    ReplaceBlock(ec->dateConvert[i]);
  }
  for (OperatorSlots &slots : ec->operators) {
    for (char *&name : slots.names) {
      ReplaceBlock(name);
    }
  }
}

void CopyDateSettings(EC copy, EC ec) {
  if (ec->dateConvert[0] != nullptr || ec->dateConvert[1] != nullptr ||
      ec->dateConvert[2] != nullptr) {
    ORLSetDateConvert(copy, ec->dateConvert[0], ec->dateConvert[1], ec->dateConvert[2],
                      ec->dateConvertFlags);
  }
  if (ec->pictures[0] != nullptr) {
    ORLSetDatePicture(copy, ec->pictures[0], ec->pictures[1], ec->pictures[2]);
  }
}

void CopyItems(EC copy, ItemTable &target, const ItemTable &table) {
  const uint32_t count = HandleArrayRows(table.rows);
  for (uint32_t i = 0; i < count; ++i) {
    const ExprItem *item = static_cast<ExprItem *>(HandleArrayPointerAt(table.rows, i));
    if (item != nullptr) {
      ItemAdd(copy, &target, item);
    }
  }
}

void CopyExpressions(EC copy, EC ec) {
  const uint32_t count = HandleArrayRows(ec->expressions);
  for (uint32_t i = 0; i < count; ++i) {
    const Expression *expression =
        static_cast<Expression *>(HandleArrayPointerAt(ec->expressions, i));
    if (expression != nullptr && expression->text != nullptr) {
      uint16_t dataType = 0;
      ORLParseString(copy, expression->text,
                     expression->entry.name == nullptr ? "" : expression->entry.name, nullptr,
                     &dataType);
    }
  }
}

}  // namespace

int32_t ORLDestroyEC(EC ec) {
  if (ec != nullptr) {
    FreeExpressions(ec);
    ItemTableFree(&ec->inputs);
    ItemTableFree(&ec->functions);
    ItemTableFree(&ec->keywords);
    FreeTexts(ec);
    const OwnedBlock numberBlock(ec->numberBlock), textBlock(ec->textBlock);
    const Owned<ExprContext> ended(ec);
  }
  return 1;
}

EC ORLCopyEC(EC ec) {
  EC copy =
      ec == nullptr ? nullptr : ORLCreateEC(ec->owner, ec->lookupProc, ec->renameProc, ec->flags);
  if (copy == nullptr) {
    return nullptr;
  }
  copy->userLong = ec->userLong;
  copy->delPermissionProc = ec->delPermissionProc;
  copy->listValuesProc = ec->listValuesProc;
  CopyDateSettings(copy, ec);
  CopyItems(copy, copy->functions, ec->functions);
  CopyItems(copy, copy->inputs, ec->inputs);
  CopyItems(copy, copy->keywords, ec->keywords);
  CopyExpressions(copy, ec);
  return copy;
}

HEXP ORLCloneExpression(EC ec, HEXP exp, const char *newName, uint16_t *dataType) {
  if (ec == nullptr || exp == nullptr || exp->text == nullptr || dataType == nullptr) {
    return nullptr;
  }
  const bool usable =
      newName != nullptr && newName[0] != '\0' && ORLIsExpNameUnique(ec, nullptr, newName) != 0;
  return ORLParseString(ec, exp->text, usable ? newName : nullptr, nullptr, dataType);
}

int32_t ORLDestroyEXP(EC ec, HEXP exp) {
  if (exp == nullptr) {
    return 1;
  }
  const int32_t ordinal = ORLGetExpressionOrdinal(ec, exp);
  if (ordinal < 0 || ReferenceCount(ec, exp->entry.name) > 0) {
    return 0;
  }
  ec->expressions = HandleArrayRemove(ec->expressions, ordinal);
  NameIndexRemove(ec->expressionNames, exp->entry);
  OrderRemove(ec, exp);
  const OwnedExpression ended(exp);
  RemoveReferences(ec, exp);
  ContextChanged(ec);
  return 1;
}
