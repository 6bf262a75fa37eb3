// The parse entries: texts to stored expressions, and the test of names.
#include <cstring>
#include <utility>

#include "analysis/recursion.h"
#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/host_call.h"
#include "engine/module.h"
#include "language/parse_state.h"
#include "language/parser.h"
#include "language/reparse.h"
#include "language/scanner.h"
#include "language/trial.h"

namespace {

enum class NameVerdict : uint8_t { Valid, Invalid, NoMemory };

// A name is one token that reads as a name and is the whole text: blanks at its ends or parentheses
// around it are no part of a name.
NameVerdict CheckName(EC ec, const char *name) {
  ParseState state;
  ResetParseState(state, ec, name, true);
  if (RunParser(state) != 0) {
    return state.error.id == ORL_ERR_MEMORY ? NameVerdict::NoMemory : NameVerdict::Invalid;
  }
  const ExprNode *root = state.root;
  const bool isName =
      root->kind == NODE_ITEM && root->offset == 0 && root->length == WRENStrLen(name);
  ExprNodeFree(state.root);
  state.root = nullptr;
  return isName ? NameVerdict::Valid : NameVerdict::Invalid;
}

ExpressionClass ClassOf(const ExprNode *root) {
  return root->kind == NODE_SET     ? kClassSet
         : root->kind == NODE_RANGE ? kClassRange
                                    : kClassFormula;
}

uint16_t StoredType(const ExprNode *root) {
  const uint16_t type = static_cast<uint16_t>(root->dataType);
  return type == NODE_STRING  ? uint16_t{ORL_TYPE_STRING}
         : type == TOK_NUMBER ? uint16_t{ORL_TYPE_NUMBER}
                              : type;
}

// The tree of a text, or null with the error set. A date-shaped text that read on as something else
// and then failed counts as a bad date.
ExprNode *ParseText(ParseState &state, EC ec, const char *text) {
  ResetParseState(state, ec, text, false);
  if (std::strlen(text) >= INT32_MAX) {
    SetError(state, ORL_ERR_MAXTOKEN, 0, 0);
    return nullptr;
  }
  if (RunParser(state) == 0 && state.root != nullptr) {
    ExprNode *tree = state.root;
    state.root = nullptr;
    return tree;
  }
  if (state.badDateSeen) {
    SetError(state, ORL_ERR_INVALIDDATE, state.badDateOffset, state.badDateLength);
  }
  return nullptr;
}

// True when the formula does not refer to itself, else false with the error set.
bool RefuseRecursion(EC ec, const Expression *expression, FormulaError &error) {
  const ExprNode *where = nullptr;
  switch (FormulaRefersTo(ec, expression->name, expression->tree, &where)) {
    case ORL_ERR_RECURSIVE:
      error = FormulaError{ORL_ERR_RECURSIVE, where->offset, where->length};
      return false;
    case ORL_ERR_MEMORY:
      error = FormulaError{ORL_ERR_MEMORY, 0, 0};
      return false;
    default:
      return true;
  }
}

// Gives the record its name and text and checks what goes beyond the text itself. False with the
// error set.
bool CompleteExpression(ParseState &state, EC ec, Expression *expression, const char *text,
                        const char *name) {
  char generated[kGeneratedNameSize];
  if (name == nullptr || name[0] == '\0') {
    name = GeneratedName(ec, ClassOf(expression->tree), generated) ? generated : nullptr;
  }
  expression->text = CopyText(text).release();
  expression->name = name == nullptr ? nullptr : CopyText(name).release();
  if (expression->text == nullptr || expression->name == nullptr) {
    SetError(state, ORL_ERR_MEMORY, 0, 0);
    return false;
  }
  const NameVerdict verdict = CheckName(ec, expression->name);
  if (verdict != NameVerdict::Valid) {
    if (verdict == NameVerdict::NoMemory) {
      SetError(state, ORL_ERR_MEMORY, 0, 0);
    } else {
      SetError(state, ORL_ERR_NAME, 0, WRENStrLen(text));
    }
    return false;
  }
  return RefuseRecursion(ec, expression, state.error);
}

// A new expression that is in no table yet, or null with the error in `error`, if given.
Expression *ExpressionFromText(EC ec, const char *text, const char *name, FormulaError *error,
                               uint16_t *dataType) {
  ParseState state;
  Expression *expression = static_cast<Expression *>(WRENMemAlloc(sizeof(Expression)));
  bool ok = false;
  if (expression == nullptr) {
    SetError(state, ORL_ERR_MEMORY, 0, 0);
  } else {
    expression->context = ec;
    expression->tree = ParseText(state, ec, text);
    if (expression->tree != nullptr) {
      expression->dataType = *dataType = StoredType(expression->tree);
      ok = CompleteExpression(state, ec, expression, text, name);
    }
  }
  if (ok) {
    return expression;
  }
  ExpressionFree(expression);
  if (error != nullptr) {
    *error = state.error;
  }
  return nullptr;
}

// Ends a parse entry after its text was good: the new record goes, the error is told.
HEXP RefuseRecord(Expression *expression, const FormulaError &reason, FormulaError *error) {
  ExpressionFree(expression);
  if (error != nullptr) {
    *error = reason;
  }
  return nullptr;
}

// Gives a stored expression another tree, whose references are counted.
void ReplaceTree(EC ec, Expression *expression, ExprNode *tree) {
  MentionsRemove(ec, expression->tree);
  ExprNodeFree(expression->tree);
  expression->tree = tree;
  expression->dataType = StoredType(tree);
}

// What forbids to store a new record as `exp`, or as a new expression for null; id 0 for nothing.
FormulaError ConflictOf(EC ec, HEXP exp, const Expression *fresh) {
  const int32_t length = WRENStrLen(fresh->text);
  if (ORLIsExpNameUnique(ec, exp, fresh->name) == 0) {
    return {ORL_ERR_DUPNAME, 0, length};
  }
  if (exp != nullptr && exp->dataType != fresh->dataType &&
      ORLIsNamedFormulaUsed(ec, fresh->name) != 0) {
    return {ORL_ERR_EXPDATATYPE, 0, length};
  }
  return {};
}

// A record that ORLParseFormula can store as `exp`, or as a new expression for null; null with the
// error told when it can not.
Expression *CheckedFormula(EC ec, HEXP exp, const char *text, const char *name, FormulaError *error,
                           uint16_t *dataType) {
  Expression *fresh = ExpressionFromText(ec, text, name, error, dataType);
  if (fresh == nullptr) {
    return nullptr;
  }
  const FormulaError conflict = ConflictOf(ec, exp, fresh);
  return conflict.id == 0 ? fresh : RefuseRecord(fresh, conflict, error);
}

// Lets the host hear of the new name of a stored expression, and checks again what the host may
// have changed meanwhile.
FormulaError AnnounceName(EC ec, HEXP exp, const Expression *fresh) {
  const ExpressionRef stored = RefTo(exp);
  CallHost([=] { return ec->renameProc(ec, exp->name, fresh->name); });
  if (!IsStored(ec, stored)) {
    return {ORL_ERR_GENERAL, 0, 0};
  }
  FormulaError error = ConflictOf(ec, exp, fresh);
  if (error.id == 0) {
    RefuseRecursion(ec, fresh, error);
  }
  return error;
}

// Moves the content of the new record, which is freed, into a stored one. Id 0, or the error that
// left everything as it was.
FormulaError ReplaceContent(EC ec, HEXP exp, Expression *fresh) {
  if (!MentionsAdd(ec, fresh->tree)) {
    return {ORL_ERR_MEMORY, 0, 0};
  }
  const bool renamed = std::strcmp(exp->name, fresh->name) != 0;
  if (renamed && ec->renameProc != nullptr) {
    const FormulaError error = AnnounceName(ec, exp, fresh);
    if (error.id != 0) {
      MentionsRemove(ec, fresh->tree);
      return error;
    }
  }
  ReplaceTree(ec, exp, fresh->tree);
  NameIndexRename(ec->expressionNames, exp->entry, fresh->name);
  std::swap(exp->name, fresh->name);
  std::swap(exp->text, fresh->text);
  OrderAfterReplace(ec, exp, fresh->name);
  fresh->tree = nullptr;
  ExpressionFree(fresh);
  if (renamed) {
    ContextChanged(ec);
  } else {
    ec->revision++;  // every name still finds what it found before
  }
  return {};
}

// The first reference to a formula in a tree, at `node` or behind it; null when there is none.
const ExprNode *ReferenceFrom(const ExprNode *tree, const ExprNode *node) {
  while (node != nullptr && node->kind != NODE_FORMULA) {
    node = ExprNodeNext(tree, node);
  }
  return node;
}

// True when two trees refer to the same formulas: then one may take the other's place without a
// look at what these refer to, which costs a walk through all of them.
bool RefersAlike(const ExprNode *left, const ExprNode *right) {
  const ExprNode *a = ReferenceFrom(left, left);
  const ExprNode *b = ReferenceFrom(right, right);
  while (a != nullptr && b != nullptr && std::strcmp(NodeText(a), NodeText(b)) == 0) {
    a = ReferenceFrom(left, ExprNodeNext(left, a));
    b = ReferenceFrom(right, ExprNodeNext(right, b));
  }
  return a == nullptr && b == nullptr;
}

}  // namespace

bool ReparseExpression(EC ec, Expression *expression, const char *text) {
  ParseState state;
  ExprNode *tree = ParseText(state, ec, text);
  if (tree == nullptr) {
    return false;
  }
  const bool fits =
      StoredType(tree) == expression->dataType || ORLIsNamedFormulaUsed(ec, expression->name) == 0;
  const ExprNode *where = nullptr;
  const bool circular = !RefersAlike(expression->tree, tree) &&
                        FormulaRefersTo(ec, expression->name, tree, &where) != 0;
  if (!fits || circular || !MentionsAdd(ec, tree)) {
    ExprNodeFree(tree);
    return false;
  }
  ReplaceTree(ec, expression, tree);
  OrderAfterReplace(ec, expression, expression->name);
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
  const bool valid = ec != nullptr && CheckName(ec, name) == NameVerdict::Valid;
  if (error != nullptr) {
    *error = FormulaError{ORL_ERR_INPUT, 0, WRENStrLen(name)};
  }
  return valid ? 1 : 0;
}

HEXP ORLParseString(EC ec, const char *text, const char *name, FormulaError *error,
                    uint16_t *dataType) {
  if (ec == nullptr || dataType == nullptr) {
    return RefuseRecord(nullptr, {ORL_ERR_GENERAL, 0, 0}, error);
  }
  Expression *fresh = ExpressionFromText(ec, text == nullptr ? "" : text, name, error, dataType);
  if (fresh == nullptr || ExpressionTableAppend(ec, fresh) != 0) {
    return fresh;
  }
  return RefuseRecord(fresh, {ORL_ERR_MEMORY, 0, 0}, error);
}

HEXP ORLParseFormula(EC ec, HEXP exp, const char *text, const char *name, FormulaError *error,
                     uint16_t *dataType) {
  if (ec == nullptr || dataType == nullptr) {
    return RefuseRecord(nullptr, {ORL_ERR_GENERAL, 0, 0}, error);
  }
  Expression *fresh = CheckedFormula(ec, exp, text == nullptr ? "" : text, name, error, dataType);
  if (fresh == nullptr) {
    return nullptr;
  }
  const FormulaError memory = {ORL_ERR_MEMORY, 0, 0};
  const FormulaError failure = exp != nullptr ? ReplaceContent(ec, exp, fresh)
                               : ExpressionTableAppend(ec, fresh) == 0 ? memory
                                                                       : FormulaError{};
  if (failure.id != 0) {
    return RefuseRecord(fresh, failure, error);
  }
  return exp == nullptr ? fresh : exp;
}

int32_t KindOfTree(const ExprNode *root) {
  return ClassOf(root);
}

int32_t TrialKind(EC ec, HEXP exp, const char *text, const char *name) {
  uint16_t dataType = 0;
  Expression *fresh = CheckedFormula(ec, exp, text, name, nullptr, &dataType);
  const int32_t kind = fresh == nullptr ? -1 : KindOfTree(fresh->tree);
  ExpressionFree(fresh);
  return kind;
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
