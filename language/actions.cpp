#include <utility>

#include "language/parse_state.h"
#include "language/parser.h"

namespace {

// A keyword as a whole formula is marked up to the end of any text.
constexpr int32_t kWholeText = 1000;

struct Production {
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

bool Pass(Production p, StackEntry &entry) {
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

bool Refuse(Production p, int32_t id, int32_t offset, int32_t length) {
  SetError(p.state, id, offset, length);
  return false;
}

bool FormulaOfExpr(Production p) {
  ExprNode *root = NodeOf(p.rhs[0]);
  if (root->dataType > 255) {
    return Refuse(p, ORL_ERR_KEYWORD, 0, kWholeText);
  }
  p.state.root = root;
  return Pass(p, p.rhs[0]);
}

bool FormulaOfList(Production p) {
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

bool FormulaOfRange(Production p) {
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
bool Listed(Production p, StackEntry *list, StackEntry &member) {
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

ExprNode *BuildOperator(Production p, int32_t kind) {
  ExprNode *node = ExprNodeBuild(p.state, kind, p.rhs[0].value, p.rhs[2].value, kCallPlain);
  if (node != nullptr) {
    TakeOver(p.rhs[0]);
    TakeOver(p.rhs[2]);
    node->offset = p.state.tokenOffset;
    node->length = p.state.tokenSpan;
  }
  return node;
}

bool Operator(Production p, int32_t kind) {
  ExprNode *node = BuildOperator(p, kind);
  if (node != nullptr && node->dataType == kNoType) {
    PlaceError(p.state, p.rhs[1]);
    return FailWith(node);
  }
  *p.result = p.state.root = node;
  return node != nullptr;
}

// A unit word that is still pending belongs to no operation that ends here.
bool AdditiveOperator(Production p, int32_t kind) {
  p.state.dateUnit = 0;
  return Operator(p, kind);
}

bool OperatorWithUnit(Production p, int32_t kind) {
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

bool Leaf(Production p, int32_t kind) {
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

bool Number(Production p, StackEntry &entry, bool negate) {
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

bool Call(Production p, const CallShape &shape) {
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

bool RunAction(ParseState &state, int32_t production, StackEntry *rhs, void **result) {
  const Production p = {state, rhs, result};
  switch (production) {
    case 3:
      return FormulaOfExpr(p);
    case 4:
      return FormulaOfList(p);
    case 5:
      return FormulaOfRange(p);
    case 6:
      return Listed(p, nullptr, rhs[0]);
    case 7:
    case 8:
      return Listed(p, &rhs[0], rhs[2]);
    case 9:
    case 10:
    case 22:
    case 24:
      return Pass(p, rhs[0]);
    case 11:
      return AdditiveOperator(p, NODE_ADD);
    case 12:
      return AdditiveOperator(p, NODE_SUB);
    case 13:
      return Operator(p, NODE_MUL);
    case 14:
      return Operator(p, NODE_DIV);
    case 15:
      return Operator(p, NODE_MOD);
    case 16:
      return Pass(p, rhs[1]);
    case 17:
      return Operator(p, NODE_CONCAT);
    case 18:
      return OperatorWithUnit(p, NODE_SUB);
    case 19:
      return OperatorWithUnit(p, NODE_ADD);
    case 20:
      return Refuse(p, ORL_ERR_MEMORY, 0, 0);
    case 21:
      return Refuse(p, ORL_ERR_UNKNOWNCHAR, state.tokenOffset, state.tokenSpan);
    case 23:
      return Leaf(p, NODE_ITEM);
    case 25:
      return Number(p, rhs[1], true);
    case 26:
      return Leaf(p, NODE_DATE);
    case 27:
      return Leaf(p, NODE_STRING);
    case 28:
      return Number(p, rhs[0], false);
    case 29:
      return Call(p, {kCallPlain, 0, 0, false});
    case 30:
      return Call(p, {kCallStar, 0, 1, true});
    case 31:
      return Call(p, {kCallModifier, 0, 1, true});
    case 32:
      return Call(p, {kCallPlain, 0, 0, true});
    case 33:
      return Call(p, {kCallModifier, 2, 1, true});
    case 34:
      return Call(p, {kCallPlain, 1, 0, true});
    default:
      return Refuse(p, ORL_ERR_GENERAL, 0, 0);
  }
}
