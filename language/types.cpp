#include "language/types.h"

#include <cassert>

#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/items.h"

namespace {

// The condition under which an operator exists for a type of the left operand.
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
  if (type < 0 || type > kLastValueType) {
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

// The fast path, without the tables: one of the four operations on two numbers.
bool IsPlainArithmetic(const ParseState &state, int32_t kind, const DraftNode &left,
                       const DraftNode &right) {
  return left.dataType == ORL_TYPE_NUMBER && right.dataType == ORL_TYPE_NUMBER &&
         state.dateUnit == 0 && kind != NODE_MOD && kind != NODE_CONCAT;
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

bool Fail(ParseState &state, int32_t id) {
  SetError(state, id, 0, 0);
  return false;
}
bool FailAt(ParseState &state, int32_t id, const DraftNode &place) {
  SetError(state, id, place.offset, place.length);
  return false;
}

// The node of an argument or member.
const DraftNode &Listed(const ParseState &state, uint32_t index) {
  return state.builder.nodes[state.builder.arguments[index]];
}

// The parameter record and the type that an argument is checked against.
struct Expectation {
  int32_t row;
  uint16_t type;
};

// The record of a row. An argument without a record accepts any type.
ParamRecord ParameterAt(const ExprItem *function, int32_t row) {
  return row < function->paramCount ? ItemParameters(function)[row]
                                    : ParamRecord{0, ORL_TYPE_ANY, 0};
}

// Parameters from index firstOptional up may form a group that repeats: in selector, value, result,
// value, result, ..., default each value has the type of the selector, each result that of the
// first result, and a last argument at the start of a group is taken as a result. `typeOf(i)`
// returns the type of argument i, which precedes this one.
template <class TypeOf>
Expectation ExpectedOf(const ExprItem *function, int32_t index, int32_t count, TypeOf typeOf) {
  const int32_t declared = function->paramCount;
  const int32_t first = function->firstOptional;
  const int32_t group = declared - first;
  if (first == 0 || index < first) {
    return {index, ParameterAt(function, index).dataType};
  }
  if (index == first) {
    return {index, group <= 1 ? ParameterAt(function, index).dataType : typeOf(first - 1)};
  }
  if (group <= 1) {
    const uint16_t type = ParameterAt(function, first).dataType;
    return {first, type == ORL_TYPE_FOLLOWS ? typeOf(first) : type};
  }
  int32_t member = (index - first) % group;
  if (member == 0 && index == count - 1) {
    member = 1;
  }
  const int32_t row = first + member;
  uint16_t type = ParameterAt(function, row).dataType;
  if (type == ORL_TYPE_FOLLOWS && member == 0) {
    type = typeOf(first - 1);
  } else if (type == ORL_TYPE_FOLLOWS && index >= declared) {
    type = typeOf(row);
  }
  return {row, type};
}

bool TypeFits(uint16_t expected, int16_t type) {
  return expected == ORL_TYPE_FOLLOWS || expected == ORL_TYPE_ANY ||
         expected == static_cast<uint16_t>(type);
}

bool CheckByName(ParseState &state, const ExprItem *function, const ParamRecord &parameter,
                 const DraftNode &argument) {
  if (argument.kind != NODE_ITEM) {
    const bool passes = (function->itemFlags & ORL_FUNC_EXPRESSION) != 0 ||
                        ((function->itemFlags & ORL_FUNC_EXPRESSION_UNLESS_DISTINCT) != 0 &&
                         (state.modifier & kModifierDistinct) == 0);
    return passes || FailAt(state, ORL_ERR_PARM, argument);
  }
  if (parameter.subClass != 0) {
    const ExprItem *item = ItemFind(&state.context->inputs, TokenText(state, argument));
    if (item != nullptr && item->subClass != parameter.subClass) {
      return FailAt(state, ORL_ERR_SUBCLASS, argument);
    }
  }
  return true;
}

bool CheckModifier(ParseState &state, const ExprItem *function, CallForm form) {
  constexpr uint16_t kModifierToo = 2;  // the same as ORL_FUNC_MODIFIER
  constexpr uint16_t kTakesModifier = ORL_FUNC_MODIFIER | kModifierToo | ORL_FUNC_NEEDS_DISTINCT;
  const bool needsDistinct = (function->itemFlags & ORL_FUNC_NEEDS_DISTINCT) != 0;
  if (form == kCallModifier) {
    if ((function->itemFlags & kTakesModifier) == 0) {
      return Fail(state, ORL_ERR_KEYWORD);
    }
    if (needsDistinct && state.modifier == kModifierAll) {
      return Fail(state, ORL_ERR_MISKEYWORD);
    }
  }
  return form != kCallPlain || !needsDistinct || Fail(state, ORL_ERR_MISKEYWORD);
}

bool CheckNoList(ParseState &state, const ExprItem *function, CallForm form) {
  if (form == kCallStar) {
    const bool takesStar =
        function->paramCount > 0 && ParameterAt(function, 0).dataType == ORL_TYPE_ANY;
    return takesStar || Fail(state, ORL_ERR_SYNTAX);
  }
  const bool fits =
      function->paramCount <= 0 || (function->firstOptional == 0 && function->optionalCount != 0);
  return fits || Fail(state, ORL_ERR_NUMPARMSLO);
}

enum class CountFit : uint8_t { Fits, TooFew, TooMany };

// Compares an argument count with a function's parameters.
CountFit FitOf(int32_t count, const ExprItem *function) {
  const int32_t declared = function->paramCount;
  const int32_t first = function->firstOptional;
  const int32_t optional = function->optionalCount;
  if (count == declared) {
    return CountFit::Fits;
  }
  if (count < declared) {
    if (first == 0 || first > count || optional == 0) {
      return CountFit::TooFew;
    }
  } else if (first == 0) {
    return CountFit::TooMany;
  } else if (optional == 0) {
    return CountFit::Fits;
  }
  return first + optional < count ? CountFit::TooMany : CountFit::Fits;
}

// Checks the arguments and the pending modifier word.
bool CheckCall(ParseState &state, const ExprItem *function, const CallDraft &call) {
  if (!CheckModifier(state, function, call.form)) {
    return false;
  }
  if (call.count == 0) {
    return CheckNoList(state, function, call.form);
  }
  const auto count = static_cast<int32_t>(call.count);
  const CountFit fit = FitOf(count, function);
  if (fit != CountFit::Fits) {
    return Fail(state, fit == CountFit::TooFew ? ORL_ERR_NUMPARMSLO : ORL_ERR_NUMPARMSHI);
  }
  const auto typeOf = [&](int32_t index) {
    return static_cast<uint16_t>(Listed(state, call.first + static_cast<uint32_t>(index)).dataType);
  };
  for (int32_t i = 0; i < count; ++i) {
    const DraftNode &argument = Listed(state, call.first + static_cast<uint32_t>(i));
    const Expectation expected = ExpectedOf(function, i, count, typeOf);
    if (!TypeFits(expected.type, argument.dataType)) {
      return FailAt(state, MismatchOf(expected.type), argument);
    }
    const ParamRecord parameter = ParameterAt(function, expected.row);
    if (IsByName(parameter) && !CheckByName(state, function, parameter, argument)) {
      return false;
    }
  }
  return true;
}

// The result type of a function declared ORL_TYPE_FOLLOWS; kNoType for a call without arguments.
int16_t ResultOfCall(const ParseState &state, const CallDraft &call) {
  if (call.count == 0) {
    return kNoType;
  }
  const DraftNode &first = Listed(state, call.first);
  return first.dataType <= kLastValueType
             ? Listed(state, call.first + call.count - 1).dataType
             : static_cast<int16_t>(KeywordResultType(state.context, TokenText(state, first)));
}

void TypeFormula(ParseState &state, DraftNode &node, const CallDraft &call) {
  NameEntry *entry = NameIndexFirst(state.context->expressionNames, call.name);
  if (entry == nullptr) {
    SetError(state, ORL_ERR_FUNC, 0, 0);
    return;
  }
  const auto *formula = RowOfEntry<Expression>(entry);
  const int32_t kind = NodeKindOf(formula->tree);
  if (kind == NODE_SET || kind == NODE_RANGE) {
    SetError(state, ORL_ERR_IMBEDDEDRANGE, 0, 0);
  } else if (call.count != 0 || call.form != kCallPlain) {
    SetError(state, ORL_ERR_EXPPARMS, 0, 0);
  } else {
    node.kind = NODE_FORMULA;
    node.dataType = static_cast<int16_t>(formula->dataType);
  }
}

}  // namespace

int16_t TypeOfName(EC ec, const NameKey &key) {
  const int32_t type = InputDataType(ec, key);
  return static_cast<int16_t>(type != kNoType ? type : KeywordDataType(ec, key.name));
}

int16_t TypeOfItem(const ParseState &state) {
  return TypeOfName(state.context, KeyOfName(TextAt(state, state.tokenOffset, state.tokenSpan)));
}

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

void TypeOperator(ParseState &state, DraftNode &node, const DraftNode &left,
                  const DraftNode &right) {
  EC ec = state.context;
  if (IsPlainArithmetic(state, node.kind, left, right)) {
    node.dataType = ORL_TYPE_NUMBER;
    return;
  }
  node.detail = static_cast<uint8_t>(state.dateUnit);
  node.dataType = kNoType;
  if (!TypeOperatorAllowed(ec, node.kind, left.dataType)) {
    SetError(state, RefusalOf(left.dataType), 0, 0);
    return;
  }
  int32_t id = 0;
  node.dataType = OperatorResult(ec, node.kind, left.dataType, right.dataType, &id);
  if (node.dataType == kNoType) {
    SetError(state, id, right.offset, right.length);
    return;
  }
  if (node.detail != 0 && !TakesDateUnit(node.kind, left.dataType, right.dataType)) {
    node.dataType = kNoType;
    SetError(state, ORL_ERR_KEYWORD, 0, 0);
  }
}

void TypeCall(ParseState &state, DraftNode &node, const CallDraft &call) {
  node.detail = static_cast<uint8_t>(call.form);
  node.dataType = kNoType;
  const ExprItem *function = ItemFind(&state.context->functions, call.name);
  if (function == nullptr || function->dataType == kNoType) {
    TypeFormula(state, node, call);
  } else if (CheckCall(state, function, call)) {
    node.dataType =
        function->dataType == ORL_TYPE_FOLLOWS ? ResultOfCall(state, call) : function->dataType;
    if (node.dataType == kNoType) {
      SetError(state, ORL_ERR_NUMPARMSLO, 0, 0);  // without arguments the type cannot be derived
    }
  }
}

int16_t TypeOfSet(ParseState &state, uint32_t first, uint32_t count) {
  assert(count > 0);
  if ((state.context->flags & ORL_FLAG_RANGES) == 0) {
    SetError(state, ORL_ERR_SYNTAX, 0, 0);
    return kNoType;
  }
  const int16_t common = Listed(state, first).dataType;
  for (uint32_t i = 1; i < count; ++i) {
    const DraftNode &member = Listed(state, first + i);
    if (member.dataType != common) {
      // Type 255 itself is a value's, but the message for it is that for keywords.
      const bool isValue = member.dataType < kLastValueType;
      FailAt(state, isValue ? ORL_ERR_RANGETYPE : ORL_ERR_KEYWORD, member);
      return kNoType;
    }
  }
  return common;
}

bool TypeArgumentsFit(const ExprNode *call, const ExprItem *function) {
  // Of the preceding arguments only the first of the repeating group and the one before that
  // matter.
  const uint32_t first = function->firstOptional;
  const ExprNode *selector = first == 0 ? nullptr : ChildAt(call, first - 1);
  const ExprNode *groupStart = selector == nullptr ? nullptr : NextSibling(selector);
  const auto typeOf = [=](int32_t index) {
    const bool isStart = static_cast<uint32_t>(index) == first;
    return static_cast<uint16_t>(NodeType(isStart ? groupStart : selector));
  };
  const auto count = static_cast<int32_t>(ChildCount(call));
  const ExprNode *argument = FirstChild(call);
  for (int32_t i = 0; i < count && i < function->paramCount; ++i) {
    const Expectation expected = ExpectedOf(function, i, count, typeOf);
    if (!IsByName(ItemParameters(function)[i]) && !TypeFits(expected.type, NodeType(argument))) {
      return false;
    }
    argument = NextSibling(argument);
  }
  return true;
}
