#include "language/types.h"

#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/items.h"

namespace {

// What decides whether an operator exists for a type of the left operand.
enum class Rule : uint8_t {
  No,
  Yes,
  Callback,           // the host has set a routine for the operator and type
  PercentFlag,        // with ORL_FLAG_PERCENT
  UnlessNoDateUnits,  // unless ORL_FLAG_NO_DATE_UNITS
  CallbackOrFlag,     // a callback, or ORL_FLAG_STRING_PLUS
  UnlessNoConcat,     // unless ORL_FLAG_NO_CONCAT
};

enum OperatorColumn : int32_t { kPlus, kMinus, kTimes, kDivide, kPercent, kBars, kColumnCount };
enum TypeRow : int32_t { kRowNumber, kRowDate, kRowString, kRowOther, kRowKeyword, kRowCount };

// clang-format off
constexpr Rule kOperatorRules[kRowCount][kColumnCount] = {
  //           +                        -                        *               /               %                  ||
  /*Number */ {Rule::Yes,               Rule::Yes,               Rule::Yes,      Rule::Yes,      Rule::PercentFlag, Rule::Callback},
  /*Date   */ {Rule::UnlessNoDateUnits, Rule::UnlessNoDateUnits, Rule::No,       Rule::No,       Rule::No,          Rule::No},
  /*String */ {Rule::CallbackOrFlag,    Rule::Callback,          Rule::Callback, Rule::Callback, Rule::No,          Rule::UnlessNoConcat},
  /*3..255 */ {Rule::Callback,          Rule::Callback,          Rule::Callback, Rule::Callback, Rule::No,          Rule::Callback},
  /*Keyword*/ {Rule::No,                Rule::No,                Rule::No,       Rule::No,       Rule::No,          Rule::No},
};
// clang-format on

OperatorColumn ColumnOf(int32_t kind) {
  switch (kind) {
    case NODE_ADD:
      return kPlus;
    case NODE_SUB:
      return kMinus;
    case NODE_MUL:
      return kTimes;
    case NODE_DIV:
      return kDivide;
    case NODE_MOD:
      return kPercent;
    default:
      return kBars;
  }
}

TypeRow RowOf(int16_t type) {
  if (type < 0 || type > 255) {
    return kRowKeyword;
  }
  return type <= ORL_TYPE_STRING ? static_cast<TypeRow>(type) : kRowOther;
}

bool HasCallback(EC ec, int32_t kind, int16_t type) {
  const int32_t group = OperatorGroupOf(kind);
  return group >= 0 && type >= 0 && type < kOperatorTypes &&
         ec->operators[group].procs[type] != nullptr;
}

int32_t RefusalOf(int16_t leftType) {
  switch (leftType) {
    case ORL_TYPE_NUMBER:
      return ORL_ERR_OPERATORNUM;
    case ORL_TYPE_DATE:
      return ORL_ERR_OPERATORDATE;
    case ORL_TYPE_STRING:
      return ORL_ERR_OPERATORSTR;
    default:
      return ORL_ERR_OPERATORKEYWORD;
  }
}

// The type of an allowed operator on a Date, or kNoType with *id set.
int16_t DateResult(EC ec, int32_t kind, int16_t rightType, int32_t *id) {
  if (kind == NODE_ADD) {
    *id = ORL_ERR_TYPENUM;
    return rightType == ORL_TYPE_NUMBER ? int16_t{ORL_TYPE_DATE} : kNoType;
  }
  *id = ORL_ERR_TYPENUMDATE;
  const bool stringAllowed = (ec->flags & ORL_FLAG_DATE_MINUS_STRING) != 0;
  if (rightType == ORL_TYPE_NUMBER) {
    return ORL_TYPE_DATE;
  }
  return rightType == ORL_TYPE_DATE || (rightType == ORL_TYPE_STRING && stringAllowed)
             ? int16_t{ORL_TYPE_NUMBER}
             : kNoType;
}

// The type of an allowed operator, or kNoType with *id set for the right operand.
int16_t OperatorResult(EC ec, int32_t kind, int16_t leftType, int16_t rightType, int32_t *id) {
  if (leftType == ORL_TYPE_DATE) {
    return DateResult(ec, kind, rightType, id);
  }
  *id = leftType == ORL_TYPE_NUMBER   ? ORL_ERR_TYPENUM
        : leftType == ORL_TYPE_STRING ? ORL_ERR_TYPESTR
                                      : ORL_ERR_BETWEEN;  // "Data types must match."
  return leftType == rightType ? leftType : kNoType;
}

bool TakesDateUnit(int32_t kind, int16_t leftType, int16_t rightType) {
  return (kind == NODE_ADD || kind == NODE_SUB) && leftType == ORL_TYPE_DATE &&
         rightType == ORL_TYPE_NUMBER;
}

int32_t MismatchOf(uint16_t expected) {
  switch (expected) {
    case ORL_TYPE_NUMBER:
      return ORL_ERR_PARMNUM;
    case ORL_TYPE_DATE:
      return ORL_ERR_PARMDATE;
    case ORL_TYPE_STRING:
      return ORL_ERR_PARMSTR;
    default:
      return ORL_ERR_PARMKEYWORD;
  }
}

int32_t Fail(FormulaError *error, int32_t id, const ExprNode *place) {
  *error =
      place == nullptr ? FormulaError{id, 0, 0} : FormulaError{id, place->offset, place->length};
  return 0;
}

// The parameter record and the type that an argument is held against.
struct Expectation {
  int32_t row;
  uint16_t type;
};

// The record of a row. An argument that no record declares takes any type.
ParamRecord ParameterAt(const ExprItem *function, int32_t row) {
  return row < function->paramCount ? ItemParameters(function)[row]
                                    : ParamRecord{0, ORL_TYPE_ANY, 0};
}

uint16_t TypeOfArgument(HandleArray list, int32_t index) {
  const ExprNode *node = ExprListAt(list, static_cast<uint32_t>(index));
  return node == nullptr ? uint16_t{ORL_TYPE_FOLLOWS} : static_cast<uint16_t>(node->dataType);
}

// Parameters from index firstOptional up may form a group that repeats: in selector, value, result,
// value, result, ..., default each value has the type of the selector, each result that of the
// first result, and a last argument at the start of a group is taken as a result.
Expectation ExpectedOf(const ExprItem *function, HandleArray list, int32_t index, int32_t count) {
  const int32_t declared = function->paramCount;
  const int32_t first = function->firstOptional;
  const int32_t group = declared - first;
  if (first == 0 || index < first) {
    return {index, ParameterAt(function, index).dataType};
  }
  if (index == first) {
    return {index,
            group <= 1 ? ParameterAt(function, index).dataType : TypeOfArgument(list, first - 1)};
  }
  if (group <= 1) {
    const uint16_t type = ParameterAt(function, first).dataType;
    return {first, type == ORL_TYPE_FOLLOWS ? TypeOfArgument(list, first) : type};
  }
  int32_t member = (index - first) % group;
  if (member == 0 && index == count - 1) {
    member = 1;
  }
  const int32_t row = first + member;
  uint16_t type = ParameterAt(function, row).dataType;
  if (type == ORL_TYPE_FOLLOWS && member == 0) {
    type = TypeOfArgument(list, first - 1);
  } else if (type == ORL_TYPE_FOLLOWS && index >= declared) {
    type = TypeOfArgument(list, row);
  }
  return {row, type};
}

bool TypeFits(uint16_t expected, const ExprNode *argument) {
  return expected == ORL_TYPE_FOLLOWS || expected == ORL_TYPE_ANY ||
         expected == static_cast<uint16_t>(argument->dataType);
}

int32_t CheckByName(EC ec, const ExprItem *function, const ParamRecord &parameter,
                    const ExprNode *argument, uint16_t modifier, FormulaError *error) {
  if (argument->kind != NODE_ITEM) {
    const bool passes = (function->itemFlags & ORL_FUNC_EXPRESSION) != 0 ||
                        ((function->itemFlags & ORL_FUNC_EXPRESSION_UNLESS_DISTINCT) != 0 &&
                         (modifier & kModifierDistinct) == 0);
    return passes ? 1 : Fail(error, ORL_ERR_PARM, argument);
  }
  if (parameter.subClass != 0) {
    const ExprItem *item = ItemFind(&ec->inputs, NodeText(argument));
    if (item != nullptr && item->subClass != parameter.subClass) {
      return Fail(error, ORL_ERR_SUBCLASS, argument);
    }
  }
  return 1;
}

int32_t CheckModifier(const ExprItem *function, uint16_t form, uint16_t modifier,
                      FormulaError *error) {
  constexpr uint16_t kTakesModifier = ORL_FUNC_MODIFIER | 2 | ORL_FUNC_NEEDS_DISTINCT;
  const bool needsDistinct = (function->itemFlags & ORL_FUNC_NEEDS_DISTINCT) != 0;
  if (form == kCallModifier) {
    if ((function->itemFlags & kTakesModifier) == 0) {
      return Fail(error, ORL_ERR_KEYWORD, nullptr);
    }
    if (needsDistinct && modifier == kModifierAll) {
      return Fail(error, ORL_ERR_MISKEYWORD, nullptr);
    }
  }
  if (form == kCallPlain && needsDistinct) {
    return Fail(error, ORL_ERR_MISKEYWORD, nullptr);
  }
  return 1;
}

int32_t CheckNoList(const ExprItem *function, uint16_t form, FormulaError *error) {
  if (form == kCallStar) {
    const bool takesStar =
        function->paramCount > 0 && ParameterAt(function, 0).dataType == ORL_TYPE_ANY;
    return takesStar ? 1 : Fail(error, ORL_ERR_SYNTAX, nullptr);
  }
  const bool fits =
      function->paramCount <= 0 || (function->firstOptional == 0 && function->optionalCount != 0);
  return fits ? 1 : Fail(error, ORL_ERR_NUMPARMSLO, nullptr);
}

}  // namespace

int32_t OperatorGroupOf(int32_t kind) {
  switch (kind) {
    case NODE_ADD:
      return kGroupAdd;
    case NODE_SUB:
      return kGroupSub;
    case NODE_MUL:
      return kGroupMul;
    case NODE_DIV:
      return kGroupDiv;
    case NODE_CONCAT:
      return kGroupConcat;
    default:
      return -1;
  }
}

bool TypeOperatorAllowed(EC ec, int32_t kind, int16_t leftType) {
  switch (kOperatorRules[RowOf(leftType)][ColumnOf(kind)]) {
    case Rule::Yes:
      return true;
    case Rule::Callback:
      return HasCallback(ec, kind, leftType);
    case Rule::PercentFlag:
      return (ec->flags & ORL_FLAG_PERCENT) != 0;
    case Rule::UnlessNoDateUnits:
      return (ec->flags & ORL_FLAG_NO_DATE_UNITS) == 0;
    case Rule::CallbackOrFlag:
      return (ec->flags & ORL_FLAG_STRING_PLUS) != 0 || HasCallback(ec, kind, leftType);
    case Rule::UnlessNoConcat:
      return (ec->flags & ORL_FLAG_NO_CONCAT) == 0;
    default:
      return false;
  }
}

void TypeOperator(ParseState &state, ExprNode *node) {
  EC ec = state.context;
  const int16_t leftType = LeftOperand(node)->dataType;
  const ExprNode *right = RightOperand(node);
  node->detail = state.dateUnit;
  node->dataType = kNoType;
  if (!TypeOperatorAllowed(ec, node->kind, leftType)) {
    SetError(state, RefusalOf(leftType), 0, 0);
    return;
  }
  int32_t id = 0;
  node->dataType = OperatorResult(ec, node->kind, leftType, right->dataType, &id);
  if (node->dataType == kNoType) {
    SetError(state, id, right->offset, right->length);
    return;
  }
  if (node->detail != 0 && !TakesDateUnit(node->kind, leftType, right->dataType)) {
    node->dataType = kNoType;
    SetError(state, ORL_ERR_KEYWORD, 0, 0);
  }
}

void TypeCall(ParseState &state, ExprNode *node, CallForm form) {
  EC ec = state.context;
  const char *name = NodeText(node);
  node->detail = form;
  node->dataType = static_cast<int16_t>(FunctionDataType(ec, name));
  if (node->dataType != kNoType) {
    if (TypeCheckCall(ec, NodeList(node), name, &state.error, form, state.modifier) == 0) {
      node->dataType = kNoType;
    } else if (node->dataType == ORL_TYPE_FOLLOWS) {
      node->dataType = TypeCallResult(ec, NodeList(node));
      if (node->dataType == kNoType) {
        SetError(state, ORL_ERR_NUMPARMSLO, 0, 0);  // the type cannot follow from no argument
      }
    }
    return;
  }
  const int32_t type = ExpressionDataType(ec, name);
  if (type == -1) {
    SetError(state, ORL_ERR_FUNC, 0, 0);
    return;
  }
  const ExprNode *root = ORLHEXPFromName(ec, name)->tree;
  if (root->kind == NODE_SET || root->kind == NODE_RANGE) {
    SetError(state, ORL_ERR_IMBEDDEDRANGE, 0, 0);
  } else {
    node->kind = NODE_FORMULA;
    node->detail = kCallPlain;
    node->dataType = static_cast<int16_t>(type);
    if (node->right != nullptr || form != kCallPlain) {
      node->dataType = kNoType;
      SetError(state, ORL_ERR_EXPPARMS, 0, 0);
    }
  }
}

int16_t TypeOfSet(ParseState &state, HandleArray list) {
  if ((state.context->flags & ORL_FLAG_RANGES) == 0) {
    SetError(state, ORL_ERR_SYNTAX, 0, 0);
    return kNoType;
  }
  const uint32_t count = ExprListCount(list);
  const int16_t common = ExprListAt(list, 0)->dataType;
  for (uint32_t i = 1; i < count; i++) {
    const ExprNode *member = ExprListAt(list, i);
    if (member->dataType != common) {
      const int32_t id = member->dataType < 255 ? ORL_ERR_RANGETYPE : ORL_ERR_KEYWORD;
      SetError(state, id, member->offset, member->length);
      return kNoType;
    }
  }
  return common;
}

int32_t TypeCountArgs(int32_t count, const ExprItem *function) {
  const int32_t declared = function->paramCount;
  const int32_t first = function->firstOptional;
  const int32_t optional = function->optionalCount;
  if (count == declared) {
    return 0;
  }
  if (count < declared) {
    if (first == 0 || first > count || optional == 0) {
      return -1;
    }
  } else if (first == 0) {
    return 1;
  } else if (optional == 0) {
    return 0;
  }
  return first + optional < count ? 1 : 0;
}

int32_t TypeCheckCall(EC ec, HandleArray list, const char *name, FormulaError *error, uint16_t form,
                      uint16_t modifier) {
  const ExprItem *function = ItemFind(&ec->functions, name);
  if (function == nullptr) {
    return Fail(error, ORL_ERR_FUNC, nullptr);
  }
  if (CheckModifier(function, form, modifier, error) == 0) {
    return 0;
  }
  if (list == nullptr) {
    return CheckNoList(function, form, error);
  }
  const int32_t count = static_cast<int32_t>(ExprListCount(list));
  const int32_t fit = TypeCountArgs(count, function);
  if (fit != 0) {
    return Fail(error, fit < 0 ? ORL_ERR_NUMPARMSLO : ORL_ERR_NUMPARMSHI, nullptr);
  }
  for (int32_t i = 0; i < count; i++) {
    const ExprNode *argument = ExprListAt(list, static_cast<uint32_t>(i));
    const Expectation expected = ExpectedOf(function, list, i, count);
    if (!TypeFits(expected.type, argument)) {
      return Fail(error, MismatchOf(expected.type), argument);
    }
    const ParamRecord parameter = ParameterAt(function, expected.row);
    if (parameter.mode == 1 &&
        CheckByName(ec, function, parameter, argument, modifier, error) == 0) {
      return 0;
    }
  }
  return 1;
}

bool TypeArgumentsFit(const ExprNode *call, const ExprItem *function) {
  const HandleArray list = NodeList(call);
  const int32_t listed = static_cast<int32_t>(ExprListCount(list));
  for (int32_t i = 0; i < listed && i < function->paramCount; i++) {
    const Expectation expected = ExpectedOf(function, list, i, listed);
    const ExprNode *argument = ExprListAt(list, static_cast<uint32_t>(i));
    if (ItemParameters(function)[i].mode != 1 && !TypeFits(expected.type, argument)) {
      return false;
    }
  }
  return true;
}

int16_t TypeCallResult(EC ec, HandleArray list) {
  const uint32_t count = ExprListCount(list);
  if (count == 0) {
    return kNoType;
  }
  const ExprNode *first = ExprListAt(list, 0);
  return first->dataType <= 255 ? ExprListAt(list, count - 1)->dataType
                                : static_cast<int16_t>(KeywordResultType(ec, NodeText(first)));
}
