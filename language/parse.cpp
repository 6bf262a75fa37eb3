// The parse entries: from formula texts to stored expressions, and the check of names.
#include "language/parse.h"

#include <cstring>
#include <utility>

#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/host_call.h"
#include "engine/module.h"
#include "engine/references.h"
#include "language/parse_state.h"
#include "language/parser.h"
#include "language/recursion.h"
#include "language/scanner.h"
#include "language/simple_tokens.h"
#include "language/stored_tree.h"
#include "language/types.h"

namespace {

// A name is one token that reads as a name and is the whole text: blanks at its ends or parentheses
// around it are not part of a name. A keyword whose type no value has is not a name. The name is
// terminated.
bool IsValidName(EC ec, const NameKey &key) {
  if (IsPlainName(key.name)) {
    return TypeOfName(ec, key) <= kLastValueType;
  }
  ParseState state;
  return ResetParseState(state, ec, key.name.data(), true) && ScanToken(state) == TOK_IDENT &&
         state.tokenOffset == 0 && state.tokenSpan == state.textLength &&
         TypeOfItem(state) <= kLastValueType;
}

// True when the text is a formula, with its nodes in the builder; else false with the error set. A
// date-shaped text that was read as something else and then failed is reported as a bad date.
bool ParseText(ParseState &state, EC ec, const char *text) {
  if (!ResetParseState(state, ec, text, false)) {
    SetError(state, ORL_ERR_MAXTOKEN, 0, 0);
    return false;
  }
  if (RunParser(state)) {
    return true;
  }
  if (state.badDateSeen) {
    SetError(state, ORL_ERR_INVALIDDATE, state.badDateOffset, state.badDateLength);
  }
  return false;
}

// True when the formula does not refer to itself, else false with the error set.
bool CheckRecursion(EC ec, const Expression *expression, FormulaError &error) {
  if (!expression->refersToFormulas) {
    return true;
  }
  const ExprNode *where = nullptr;
  switch (CheckReferences(ec, expression->entry.name, expression->tree, &where)) {
    case RecursionCheck::Recursive:
      error = FormulaError{ORL_ERR_RECURSIVE, NodeOffset(where), NodeLength(where)};
      return false;
    case RecursionCheck::OutOfSteps:
      error = FormulaError{ORL_ERR_MEMORY, 0, 0};
      return false;
    case RecursionCheck::Passed:
      break;
  }
  return true;
}

// Chooses the name of a parsed formula and creates its record; null with the error set.
OwnedExpression NamedExpression(ParseState &state, const char *name) {
  EC ec = state.context;
  char generated[kGeneratedNameSize];
  const bool given = name != nullptr && name[0] != '\0';
  const NameKey key =
      given ? KeyOfName(name)
            : GeneratedName(ec, ClassOfRoot(BuiltRoot(state.builder).kind), generated);
  if (key.name.empty()) {
    SetError(state, ORL_ERR_MEMORY, 0, 0);
    return nullptr;
  }
  if (!IsValidName(ec, key)) {
    SetError(state, ORL_ERR_NAME, 0, state.textLength);
    return nullptr;
  }
  OwnedExpression expression = MakeExpression(state, key);
  if (expression == nullptr) {
    SetError(state, ORL_ERR_MEMORY, 0, 0);
    return nullptr;
  }
  return CheckRecursion(ec, expression.get(), state.error) ? std::move(expression) : nullptr;
}

// A new expression that is in no table yet, or null with the error set.
OwnedExpression ExpressionFromText(EC ec, const char *text, const char *name, FormulaError &error,
                                   uint16_t *dataType) {
  ParseState state;
  OwnedExpression expression;
  if (ParseText(state, ec, text)) {
    *dataType = StoredType(BuiltRoot(state.builder).dataType);
    expression = NamedExpression(state, name);
  }
  if (expression == nullptr) {
    error = state.error;
  }
  return expression;
}

// The error that prevents storing a new record as `exp`, or as a new expression for null; id 0 when
// there is none.
FormulaError ConflictOf(EC ec, HEXP exp, const Expression *fresh) {
  const int32_t length = fresh->textLength;
  if (ORLIsExpNameUnique(ec, exp, fresh->entry.name) == 0) {
    return {ORL_ERR_DUPNAME, 0, length};
  }
  if (exp != nullptr && exp->dataType != fresh->dataType &&
      ReferenceCount(ec, fresh->entry.name) > 0) {
    return {ORL_ERR_EXPDATATYPE, 0, length};
  }
  return {};
}

// A record that ORLParseFormula can store as `exp`, or as a new expression for null; null with the
// error set when it cannot.
OwnedExpression CheckedFormula(EC ec, HEXP exp, const char *text, const char *name,
                               FormulaError &error, uint16_t *dataType) {
  OwnedExpression fresh = ExpressionFromText(ec, text, name, error, dataType);
  const FormulaError conflict =
      fresh == nullptr ? FormulaError{} : ConflictOf(ec, exp, fresh.get());
  if (conflict.id != 0) {
    error = conflict;
    return nullptr;
  }
  return fresh;
}

// Notifies the host of the new name of a stored expression, then repeats the checks, since the host
// may have changed the context.
FormulaError AnnounceName(EC ec, HEXP exp, const Expression *fresh) {
  const ExpressionRef stored = RefTo(exp);
  CallHost([=] { return ec->renameProc(ec, exp->entry.name, fresh->entry.name); });
  if (!IsStored(ec, stored)) {
    return {ORL_ERR_GENERAL, 0, 0};
  }
  FormulaError error = ConflictOf(ec, exp, fresh);
  if (error.id == 0) {
    CheckRecursion(ec, fresh, error);
  }
  return error;
}

// Replaces the content of a stored expression by that of the new record. Id 0, or the error, with
// everything unchanged.
FormulaError StoreContent(EC ec, HEXP exp, OwnedExpression fresh) {
  if (!AddReferences(ec, fresh.get())) {
    return {ORL_ERR_MEMORY, 0, 0};
  }
  const bool renamed = std::strcmp(exp->entry.name, fresh->entry.name) != 0;
  if (renamed && ec->renameProc != nullptr) {
    const FormulaError error = AnnounceName(ec, exp, fresh.get());
    if (error.id != 0) {
      RemoveReferences(ec, fresh.get());
      return error;
    }
  }
  ReplaceContent(ec, exp, std::move(fresh));
  if (renamed) {
    ContextChanged(ec);
  } else {
    ++ec->revision;  // every name still resolves as before
  }
  return {};
}

// The first reference to a formula in a tree, at `node` or after it; null when there is none.
const ExprNode *ReferenceFrom(const ExprNode *tree, const ExprNode *node) {
  while (node != nullptr && NodeKindOf(node) != NODE_FORMULA) {
    node = ExprNodeNext(tree, node);
  }
  return node;
}

// True when two trees refer to the same formulas: then one may replace the other without the walk
// through everything that these refer to.
bool RefersAlike(const ExprNode *left, const ExprNode *right) {
  const ExprNode *a = ReferenceFrom(left, left);
  const ExprNode *b = ReferenceFrom(right, right);
  while (a != nullptr && b != nullptr && std::strcmp(NodeText(a), NodeText(b)) == 0) {
    a = ReferenceFrom(left, ExprNodeNext(left, a));
    b = ReferenceFrom(right, ExprNodeNext(right, b));
  }
  return a == nullptr && b == nullptr;
}

// The result of a parse entry that failed.
HEXP Fail(const FormulaError &reason, FormulaError *error) {
  if (error != nullptr) {
    *error = reason;
  }
  return nullptr;
}

}  // namespace

bool ReparseExpression(EC ec, Expression *expression, const char *text) {
  ParseState state;
  OwnedExpression fresh;
  if (ParseText(state, ec, text)) {
    fresh = MakeExpression(state, KeyOfEntry(expression->entry));
  }
  if (fresh == nullptr) {
    return false;
  }
  const bool fits =
      fresh->dataType == expression->dataType || ReferenceCount(ec, expression->entry.name) == 0;
  const ExprNode *where = nullptr;
  const bool circular =
      !RefersAlike(expression->tree, fresh->tree) &&
      CheckReferences(ec, expression->entry.name, fresh->tree, &where) != RecursionCheck::Passed;
  if (!fits || circular || !AddReferences(ec, fresh.get())) {
    return false;
  }
  ReplaceContent(ec, expression, std::move(fresh));
  ContextChanged(ec);
  return true;
}

int32_t ORLValidName(EC ec, const char *name, FormulaError *error) {
  if (name == nullptr) {
    name = "";
  }
  if (ec == nullptr) {
    ec = defaultContext;
  }
  const bool valid = ec != nullptr && IsValidName(ec, KeyOfName(name));
  if (error != nullptr) {
    *error = FormulaError{ORL_ERR_INPUT, 0, WRENStrLen(name)};
  }
  return valid ? 1 : 0;
}

HEXP ORLParseString(EC ec, const char *text, const char *name, FormulaError *error,
                    uint16_t *dataType) {
  if (ec == nullptr || dataType == nullptr) {
    return Fail({ORL_ERR_GENERAL, 0, 0}, error);
  }
  FormulaError found = {};
  OwnedExpression fresh =
      ExpressionFromText(ec, text == nullptr ? "" : text, name, found, dataType);
  if (fresh == nullptr) {
    return Fail(found, error);
  }
  HEXP exp = fresh.get();
  return StoreExpression(ec, fresh) ? exp : Fail({ORL_ERR_MEMORY, 0, 0}, error);
}

HEXP ORLParseFormula(EC ec, HEXP exp, const char *text, const char *name, FormulaError *error,
                     uint16_t *dataType) {
  if (ec == nullptr || dataType == nullptr) {
    return Fail({ORL_ERR_GENERAL, 0, 0}, error);
  }
  FormulaError found = {};
  OwnedExpression fresh =
      CheckedFormula(ec, exp, text == nullptr ? "" : text, name, found, dataType);
  if (fresh == nullptr) {
    return Fail(found, error);
  }
  if (exp != nullptr) {
    found = StoreContent(ec, exp, std::move(fresh));
  } else {
    exp = fresh.get();
    found = StoreExpression(ec, fresh) ? FormulaError{} : FormulaError{ORL_ERR_MEMORY, 0, 0};
  }
  return found.id == 0 ? exp : Fail(found, error);
}

int32_t ClassifyText(EC ec, HEXP exp, const char *text, const char *name, FormulaError *error,
                     uint16_t *dataType) {
  FormulaError found = {};
  uint16_t type = 0;
  const OwnedExpression fresh = CheckedFormula(ec, exp, text, name, found, &type);
  if (error != nullptr) {
    *error = found;
  }
  if (dataType != nullptr) {
    *dataType = type;
  }
  return fresh == nullptr ? -1 : ClassOfRoot(NodeKindOf(fresh->tree));
}

int32_t ORLInputNameIsKeyword(char *target, const char *source) {
  const char *name = source != nullptr ? source : "";
  const bool isWord = DateUnitOfWord(name) != 0;
  if (target != nullptr) {
    std::memmove(target + (isWord ? 1 : 0), name, std::strlen(name) + 1);
    if (isWord) {
      target[0] = '_';
    }
  }
  return isWord ? 1 : 0;
}
