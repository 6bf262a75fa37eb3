#include <utility>

#include "language/parse_state.h"
#include "language/parser.h"

namespace {

// A keyword as a whole formula is marked up to the end of any text.
constexpr int32_t kWholeText = 1000;

struct Reduction {
  ParseState &state;
  StackEntry *rhs;
  void **result;
};

ExprNode *NodeOf(const StackEntry &entry) {
  return static_cast<ExprNode *>(entry.value);
}
HandleArray ListOf(const StackEntry &entry) {
  return static_cast<HandleArray>(entry.value);
}

// The new node owns what stood in the entry.
void TakeOver(StackEntry &entry) {
  entry.value = nullptr;
}

bool Pass(Reduction p, StackEntry &entry) {
  *p.result = std::exchange(entry.value, nullptr);
  return true;
}

// The rule that failed knows no place: the entry's span is it.
void PlaceError(ParseState &state, const StackEntry &entry) {
  if (state.error.length == 0) {
    state.error.offset = entry.offset;
    state.error.length = entry.length;
  }
}

void PlaceErrorAtToken(ParseState &state) {
  state.error.offset = state.tokenOffset;
  state.error.length = state.tokenSpan;
}

bool FailWith(ExprNode *node) {
  ExprNodeFree(node);
  return false;
}

bool Refuse(Reduction p, int32_t id, int32_t offset, int32_t length) {
  SetError(p.state, id, offset, length);
  return false;
}

bool FormulaOfExpr(Reduction p) {
  ExprNode *root = NodeOf(p.rhs[0]);
  if (root->dataType > 255) {
    return Refuse(p, ORL_ERR_KEYWORD, 0, kWholeText);
  }
  p.state.root = root;
  return Pass(p, p.rhs[0]);
}

bool FormulaOfList(Reduction p) {
  ExprNode *node = ExprNodeSet(p.state, ListOf(p.rhs[0]));
  if (node == nullptr) {
    return false;
  }
  TakeOver(p.rhs[0]);
  if (node->dataType == kNoType) {
    return FailWith(node);
  }
  *p.result = p.state.root = node;
  return true;
}

bool FormulaOfRange(Reduction p) {
  ExprNode *node = ExprNodeRange(p.state, NodeOf(p.rhs[0]), NodeOf(p.rhs[2]));
  if (node == nullptr) {
    return false;
  }
  TakeOver(p.rhs[0]);
  TakeOver(p.rhs[2]);
  *p.result = p.state.root = node;
  return true;
}

// Appends the node of `member` to the list, or to a new one without a list entry.
bool Listed(Reduction p, StackEntry *list, StackEntry &member) {
  HandleArray longer = ExprListAppend(list == nullptr ? nullptr : ListOf(*list), NodeOf(member));
  if (longer == nullptr) {
    return Refuse(p, ORL_ERR_MEMORY, 0, 0);
  }
  TakeOver(member);
  if (list != nullptr) {
    TakeOver(*list);
  }
  *p.result = longer;
  return true;
}

ExprNode *BuildOperator(Reduction p, int32_t kind) {
  ExprNode *node = ExprNodeBuild(p.state, kind, p.rhs[0].value, p.rhs[2].value, kCallPlain);
  if (node != nullptr) {
    TakeOver(p.rhs[0]);
    TakeOver(p.rhs[2]);
    node->offset = p.state.tokenOffset;
    node->length = p.state.tokenSpan;
  }
  return node;
}

bool Operator(Reduction p, int32_t kind) {
  ExprNode *node = BuildOperator(p, kind);
  if (node != nullptr && node->dataType == kNoType) {
    PlaceError(p.state, p.rhs[1]);
    return FailWith(node);
  }
  *p.result = p.state.root = node;
  return node != nullptr;
}

// A unit word that is still pending belongs to no operation that ends here.
bool AdditiveOperator(Reduction p, int32_t kind) {
  p.state.dateUnit = 0;
  return Operator(p, kind);
}

bool OperatorWithUnit(Reduction p, int32_t kind) {
  ExprNode *node = BuildOperator(p, kind);
  if (node != nullptr && node->dataType == kNoType) {
    if (p.state.error.length == 0 && p.state.error.id == ORL_ERR_KEYWORD) {
      PlaceErrorAtToken(p.state);
    }
    PlaceError(p.state, p.rhs[2]);
    return FailWith(node);
  }
  *p.result = p.state.root = node;
  return node != nullptr;
}

bool Leaf(Reduction p, int32_t kind) {
  ExprNode *node = ExprNodeLeaf(p.state, kind, static_cast<char *>(p.rhs[0].value));
  if (node == nullptr) {
    return false;
  }
  TakeOver(p.rhs[0]);
  // A name under test need not exist.
  if (node->dataType == kNoType && !(kind == NODE_ITEM && p.state.nameCheckMode)) {
    PlaceErrorAtToken(p.state);
    return FailWith(node);
  }
  *p.result = p.state.root = node;
  return true;
}

bool Number(Reduction p, StackEntry &entry, bool negate) {
  ExprNode *node = ExprNodeNumber(p.state, static_cast<NumberValue *>(entry.value), negate);
  if (node == nullptr) {
    return false;
  }
  TakeOver(entry);
  *p.result = p.state.root = node;
  return true;
}

// What a call production has beside the name, by the place in its right side; 0 is the name itself.
struct CallShape {
  CallForm form;
  int32_t params;  // the arguments, 0 without
  int32_t marker;  // the star or the modifier word, 0 without
  bool parenthesis;
};

// Errors that are about the star or the modifier word point at it, all others at the name.
bool PointsAtMarker(const CallShape &shape, int32_t id) {
  if (shape.form == kCallStar) {
    return id == ORL_ERR_SYNTAX;
  }
  return shape.form == kCallModifier && (id == ORL_ERR_KEYWORD || id == ORL_ERR_MISKEYWORD);
}

bool Call(Reduction p, const CallShape &shape) {
  ParseState &state = p.state;
  void *list = shape.params == 0 ? nullptr : p.rhs[shape.params].value;
  ExprNode *node = ExprNodeBuild(state, NODE_CALL, p.rhs[0].value, list, shape.form);
  if (shape.form == kCallModifier) {
    state.modifier = 0;
  }
  if (node == nullptr) {
    return false;
  }
  TakeOver(p.rhs[0]);
  if (shape.params != 0) {
    TakeOver(p.rhs[shape.params]);
  }
  if (node->dataType == kNoType) {
    PlaceError(state, p.rhs[PointsAtMarker(shape, state.error.id) ? shape.marker : 0]);
    return FailWith(node);
  }
  node->offset = p.rhs[0].offset;
  node->length = p.rhs[0].length;
  node->closeOffset = shape.parenthesis ? state.tokenOffset : 0;
  *p.result = state.root = node;
  return true;
}

}  // namespace

bool RunAction(ParseState &state, Production production, StackEntry *rhs, void **result) {
  const Reduction p = {state, rhs, result};
  switch (production) {
    case Production::FormulaOfExpr:
      return FormulaOfExpr(p);
    case Production::FormulaOfList:
      return FormulaOfList(p);
    case Production::FormulaOfRange:
      return FormulaOfRange(p);
    case Production::SingleOfExpr:
      return Listed(p, nullptr, rhs[0]);
    case Production::ListOfTwo:
    case Production::ListOfMore:
      return Listed(p, &rhs[0], rhs[2]);
    case Production::ParamsOfSingle:
    case Production::ParamsOfList:
    case Production::ExprOfCall:
    case Production::ExprOfConstant:
      return Pass(p, rhs[0]);
    case Production::Add:
      return AdditiveOperator(p, NODE_ADD);
    case Production::Subtract:
      return AdditiveOperator(p, NODE_SUB);
    case Production::Multiply:
      return Operator(p, NODE_MUL);
    case Production::Divide:
      return Operator(p, NODE_DIV);
    case Production::Modulo:
      return Operator(p, NODE_MOD);
    case Production::Parentheses:
      return Pass(p, rhs[1]);
    case Production::Concatenate:
      return Operator(p, NODE_CONCAT);
    case Production::SubtractUnits:
      return OperatorWithUnit(p, NODE_SUB);
    case Production::AddUnits:
      return OperatorWithUnit(p, NODE_ADD);
    case Production::NoMemory:
      return Refuse(p, ORL_ERR_MEMORY, 0, 0);
    case Production::UnknownCharacter:
      return Refuse(p, ORL_ERR_UNKNOWNCHAR, state.tokenOffset, state.tokenSpan);
    case Production::Item:
      return Leaf(p, NODE_ITEM);
    case Production::NegativeNumber:
      return Number(p, rhs[1], true);
    case Production::Date:
      return Leaf(p, NODE_DATE);
    case Production::String:
      return Leaf(p, NODE_STRING);
    case Production::Number:
      return Number(p, rhs[0], false);
    case Production::SystemCall:
      return Call(p, {kCallPlain, 0, 0, false});
    case Production::CallOfStar:
      return Call(p, {kCallStar, 0, 1, true});
    case Production::CallOfModifier:
      return Call(p, {kCallModifier, 0, 1, true});
    case Production::CallOfNothing:
      return Call(p, {kCallPlain, 0, 0, true});
    case Production::CallOfModifierAndParams:
      return Call(p, {kCallModifier, 2, 1, true});
    case Production::CallOfParams:
      return Call(p, {kCallPlain, 1, 0, true});
    case Production::None:
    case Production::Count:
      break;
  }
  return Refuse(p, ORL_ERR_GENERAL, 0, 0);
}
