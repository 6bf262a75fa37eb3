// Rename: an input item or a function gets another name, and every formula that uses it is updated.
//
// The text of a formula is updated token by token, whatever the tokens mean in it. Its tree is
// rebuilt from the new text where that parses; elsewhere only the names of items are replaced in
// it.
#include <cstring>

#include "analysis/token_walk.h"
#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/items.h"
#include "language/parse.h"
#include "language/stored_tree.h"
#include "platform/text.h"

namespace {

struct Names {
  const char *before;
  const char *after;
};

// How often the old name is a token of the text, in any case of its letters.
int64_t CountTokens(const char *text, char *token, const Names &names) {
  int64_t count = 0;
  for (TokenSpan span; NextToken(&text, token, &span);) {
    count += WRENStrEqualNoCase(token, names.before) != 0 ? 1 : 0;
  }
  return count;
}

// Copies the text with every such token replaced; everything between them is kept.
void ReplaceTokens(const char *source, char *target, const Names &names, char *token) {
  for (TokenSpan span; NextToken(&source, token, &span);) {
    const bool found = WRENStrEqualNoCase(token, names.before) != 0;
    const size_t kept = static_cast<size_t>(found ? span.lead : span.length);
    std::memcpy(target, span.text, kept);
    target += kept;
    if (found) {
      lstrcpyA(target, names.after);
      target += std::strlen(names.after);
    }
  }
}

// Renames the items of that name in a tree; when out of memory an item keeps the old name.
void RenameInTree(ExprNode *tree, const Names &names) {
  for (ExprNode *node = tree; node != nullptr; node = ExprNodeNext(tree, node)) {
    if (NodeKindOf(node) == NODE_ITEM && SameText(NodeText(node), names.before)) {
      RenameNode(node, names.after);
    }
  }
}

bool TreeHasItem(const ExprNode *tree, const char *name) {
  for (const ExprNode *node = tree; node != nullptr; node = ExprNodeNext(tree, node)) {
    if (NodeKindOf(node) == NODE_ITEM && SameText(NodeText(node), name)) {
      return true;
    }
  }
  return false;
}

// A copy of the text with `count` tokens replaced, or null when out of memory.
OwnedText RenamedText(const char *text, int64_t count, char *token, const Names &names) {
  const int64_t growth = int64_t{WRENStrLen(names.after)} - WRENStrLen(names.before);
  const int64_t size = WRENStrLen(text) + (growth > 0 ? growth * count : 0) + 1;
  OwnedText renamed = size <= INT32_MAX ? Allocate<char>(static_cast<uint64_t>(size)) : nullptr;
  if (renamed != nullptr) {
    ReplaceTokens(text, renamed.get(), names, token);
  }
  return renamed;
}

// True while the host renames from a routine that an evaluation has called: values of that
// evaluation may point into any tree, so no tree may be replaced.
bool IsBeingEvaluated(EC ec) {
  for (uint32_t i = 0; i < HandleArrayRows(ec->expressions); ++i) {
    HEXP exp = static_cast<HEXP>(HandleArrayPointerAt(ec->expressions, i));
    if (exp != nullptr && exp->evaluation != nullptr) {
      return true;
    }
  }
  return false;
}

// When out of memory, the expression stays as it was.
void RenameInExpression(EC ec, HEXP exp, const Names &names, bool mayReparse) {
  if (exp == nullptr) {
    return;
  }
  const OwnedText token = Allocate<char>(std::strlen(exp->text), 1);
  if (token == nullptr) {
    return;
  }
  const int64_t count = CountTokens(exp->text, token.get(), names);
  if (count == 0 && !TreeHasItem(exp->tree, names.before)) {
    return;
  }
  OwnedText text = RenamedText(exp->text, count, token.get(), names);
  if (text == nullptr) {
    return;
  }
  if (!mayReparse || !ReparseExpression(ec, exp, text.get())) {
    RenameInTree(exp->tree, names);
    exp->ownsNames = true;
    ReplaceText(exp, std::move(text));
    ContextChanged(ec);
  }
}

}  // namespace

int32_t ORLRenameExpressionItem(EC ec, int32_t kind, const char *oldName, const char *newName) {
  if (ec == nullptr || oldName == nullptr || newName == nullptr) {
    return 0;
  }
  ItemTable *table = ItemTableOf(ec, kind == ORL_FUNCTION ? ORL_FUNCTION : ORL_INPUT);
  ExprItem *row = ItemFind(table, oldName);
  if (row == nullptr || std::strlen(newName) >= sizeof row->name) {
    return 0;
  }
  char before[sizeof row->name];
  char after[sizeof row->name];
  std::memcpy(before, row->name, sizeof before);
  lstrcpyA(after, newName);  // the host may pass a text that is freed here, such as the row's name
  ItemRename(ec, table, row, after);
  const bool mayReparse = !IsBeingEvaluated(ec);
  for (uint32_t i = 0; i < HandleArrayRows(ec->expressions); ++i) {
    RenameInExpression(ec, static_cast<HEXP>(HandleArrayPointerAt(ec->expressions, i)),
                       {before, after}, mayReparse);
  }
  return 0;
}
