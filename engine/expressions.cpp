#include "engine/expressions.h"

#include <cstdio>
#include <cstring>

#include "engine/delete_item.h"
#include "engine/expression_order.h"
#include "engine/host_call.h"
#include "engine/items.h"
#include "engine/module.h"
#include "language/tree.h"
#include "platform/text.h"

namespace {

// How many stored references name one formula.
struct Mention {
  NameEntry entry;
  uint32_t count;
  char name[1];  // as long as it needs
};

Mention *MentionOf(EC ec, const char *name) {
  NameEntry *entry = NameIndexFirst(ec->mentions, name);
  return entry == nullptr ? nullptr : static_cast<Mention *>(entry->row);
}

bool MentionsAddOne(EC ec, const char *name) {
  Mention *mention = MentionOf(ec, name);
  if (mention == nullptr) {
    const size_t length = std::strlen(name);
    mention = static_cast<Mention *>(WRENMemAlloc(static_cast<uint32_t>(sizeof(Mention) + length)));
    if (mention == nullptr) {
      return false;
    }
    std::memcpy(mention->name, name, length + 1);
    NameIndexAppend(ec->mentions, mention->entry, mention->name, mention);
  }
  mention->count++;
  return true;
}

void MentionsRemoveOne(EC ec, const char *name) {
  Mention *mention = MentionOf(ec, name);
  if (mention != nullptr && --mention->count == 0) {
    NameIndexRemove(ec->mentions, mention->entry);
    DeleteRunUnmentioned(ec->deleteRun, mention->name);
    WRENMemFree(mention);
  }
}

int32_t CopyToHost(const char *text, int32_t size, char *buffer) {
  const int32_t length = WRENStrLen(text);
  if (size < 1 || buffer == nullptr) {
    return 0;
  }
  const int32_t copied = length < size ? length : size - 1;
  std::memcpy(buffer, text, static_cast<size_t>(copied));
  buffer[copied] = '\0';
  return length < size ? length : size;
}

bool RootIs(HEXP exp, int32_t kind) {
  return exp != nullptr && exp->tree != nullptr && NodeKindOf(exp->tree) == kind;
}

}  // namespace

uint32_t MentionCount(EC ec, const char *name) {
  const Mention *mention = MentionOf(ec, name);
  return mention == nullptr ? 0 : mention->count;
}

bool MentionsAdd(EC ec, const ExprNode *tree) {
  for (const ExprNode *node = tree; node != nullptr; node = ExprNodeNext(tree, node)) {
    if (NodeKindOf(node) != NODE_FORMULA || MentionsAddOne(ec, NodeText(node))) {
      continue;
    }
    for (const ExprNode *done = tree; done != node; done = ExprNodeNext(tree, done)) {
      if (NodeKindOf(done) == NODE_FORMULA) {
        MentionsRemoveOne(ec, NodeText(done));
      }
    }
    return false;
  }
  return true;
}

void MentionsRemove(EC ec, const ExprNode *tree) {
  for (const ExprNode *node = tree; node != nullptr; node = ExprNodeNext(tree, node)) {
    if (NodeKindOf(node) == NODE_FORMULA) {
      MentionsRemoveOne(ec, NodeText(node));
    }
  }
}

bool GeneratedName(EC ec, ExpressionClass which, char (&buffer)[kGeneratedNameSize]) {
  uint16_t number = ec->nextNumber[which];
  for (uint32_t tried = 0; tried <= UINT16_MAX; tried++, number++) {
    std::snprintf(buffer, sizeof buffer, "%s%u", moduleTexts.baseNames[which],
                  static_cast<unsigned>(number));
    if (ORLIsExpNameUnique(ec, nullptr, buffer) != 0) {
      ec->nextNumber[which] = number;
      return true;
    }
  }
  buffer[0] = '\0';
  return false;
}

int32_t ExpressionTableAppend(EC ec, Expression *expression) {
  if (ec == nullptr || !MentionsAdd(ec, expression->tree)) {
    return 0;
  }
  if (!HandleArrayAppendPointer(&ec->expressions, expression)) {
    MentionsRemove(ec, expression->tree);
    return 0;
  }
  const bool awaited =
      ORLHEXPFromName(ec, expression->name) == nullptr && MentionCount(ec, expression->name) != 0;
  NameIndexAppend(ec->expressionNames, expression->entry, expression->name, expression);
  ec->revision++;
  if (awaited) {
    ec->generation++;  // references that found nothing find it
    ec->order.broken = true;
  } else {
    OrderAppend(ec, expression);
  }
  return 1;
}

int32_t ExpressionDataType(EC ec, const char *name) {
  HEXP exp = ORLHEXPFromName(ec, name);
  return exp == nullptr ? -1 : exp->dataType;
}

void ExpressionFree(Expression *expression) {
  if (expression != nullptr) {
    ExprNodeFree(expression->tree);
    WRENMemFree(expression->name);
    WRENMemFree(expression->text);
    WRENMemFree(expression);
  }
}

ExpressionRef RefTo(HEXP exp) {
  return {exp, exp == nullptr ? 0 : exp->entry.order};
}

bool IsStored(EC ec, const ExpressionRef &ref) {
  return ref.exp != nullptr && ORLGetExpressionOrdinal(ec, ref.exp) >= 0 &&
         ref.exp->entry.order == ref.serial;
}

int32_t ORLGetExpressionCount(EC ec) {
  return ec == nullptr ? 0 : static_cast<int32_t>(HandleArrayRows(ec->expressions));
}

int32_t ORLEnumExpressions(EC ec, OrlEnumExpressionProc proc) {
  if (ec == nullptr || proc == nullptr) {
    return 0;
  }
  int32_t result = 0;
  for (uint32_t i = 0; i < HandleArrayRows(ec->expressions); i++) {
    HEXP exp = static_cast<HEXP>(HandleArrayPointerAt(ec->expressions, i));
    result = CallHost([=] { return proc(ec, exp, static_cast<int32_t>(i)); });
    if (result == 0) {
      break;
    }
  }
  return result;
}

HEXP ORLHEXPFromName(EC ec, const char *name) {
  NameEntry *entry = ec == nullptr ? nullptr : NameIndexFirst(ec->expressionNames, name);
  return entry == nullptr ? nullptr : static_cast<HEXP>(entry->row);
}

HEXP ORLHEXPFromOrdinal(EC ec, int32_t ordinal) {
  if (ec == nullptr) {
    return nullptr;
  }
  return static_cast<HEXP>(HandleArrayPointerAt(ec->expressions, static_cast<uint16_t>(ordinal)));
}

int32_t ORLGetExpressionOrdinal(EC ec, HEXP exp) {
  return ec == nullptr || exp == nullptr ? -1 : HandleArrayFindPointer(ec->expressions, exp);
}

int32_t ORLGetExpressionTextLength(EC /*ec*/, HEXP exp) {
  return exp == nullptr ? 0 : WRENStrLen(exp->text);
}

int32_t ORLGetExpressionText(EC /*ec*/, HEXP exp, int32_t size, char *buffer) {
  return CopyToHost(exp == nullptr ? "" : exp->text, size, buffer);
}

int32_t ORLGetExpressionNameLength(EC /*ec*/, HEXP exp) {
  return exp == nullptr ? 0 : WRENStrLen(exp->name);
}

int32_t ORLGetExpressionName(EC /*ec*/, HEXP exp, int32_t size, char *buffer) {
  return CopyToHost(exp == nullptr ? "" : exp->name, size, buffer);
}

int32_t ORLIsExpNameGenerated(EC /*ec*/, HEXP exp) {
  const char *base = moduleTexts.baseNames[kClassFormula];
  const int32_t characters = WRENStrChars(base);
  if (exp == nullptr || WRENStrHasPrefix(exp->name, base, characters) == 0) {
    return 0;
  }
  for (const char *at = WRENStrAdvance(exp->name, characters); *at != '\0'; at = CharNextA(at)) {
    if (*at < '0' || *at > '9') {
      return 0;
    }
  }
  return 1;
}

int32_t ORLIsExpNameUnique(EC ec, HEXP exp, const char *name) {
  if (ec == nullptr || name == nullptr) {
    return 0;
  }
  for (const NameEntry *entry = NameIndexFirst(ec->expressionNames, name); entry != nullptr;
       entry = entry->nextSame) {
    if (entry->row != exp) {
      return 0;
    }
  }
  return ItemFind(&ec->functions, name) == nullptr ? 1 : 0;
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

uint16_t ORLGetExpressionDataType(EC /*ec*/, HEXP exp) {
  return exp == nullptr ? UINT16_MAX : exp->dataType;
}
