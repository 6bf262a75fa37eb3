// The semantic actions: what the parser does with each production when it is reduced. An action
// builds the production's node, checks its types and sets the error when it fails.
#include <cassert>
#include <cstring>

#include "engine/context.h"
#include "language/literals.h"
#include "language/parse_state.h"
#include "language/parser.h"
#include "language/types.h"

namespace {

// The span length for a formula that is a single keyword, whatever the length of the text.
constexpr int32_t kWholeText = 1000;

struct Reduction {
  ParseState &state;
  StackEntry *rhs;  // the first one becomes the result
};

DraftNode &NodeOf(const Reduction &r, const StackEntry &entry) {
  return r.state.builder.nodes[entry.first];
}

bool Refuse(const Reduction &r, int32_t id, int32_t offset, int32_t length) {
  SetError(r.state, id, offset, length);
  return false;
}

bool RefuseMemory(const Reduction &r) {
  return Refuse(r, ORL_ERR_MEMORY, 0, 0);
}

// The rule that failed has no position: the entry's span is used.
bool FailAt(const Reduction &r, const StackEntry &entry) {
  FormulaError &error = r.state.error;
  if (error.length == 0) {
    error.offset = entry.offset;
    error.length = entry.length;
  }
  return false;
}

bool FailAtToken(const Reduction &r) {
  r.state.error.offset = r.state.tokenOffset;
  r.state.error.length = r.state.tokenSpan;
  return false;
}

// A new node, which becomes the result; null when out of memory, with the error set.
DraftNode *AddNode(const Reduction &r, int32_t kind, uint32_t size) {
  TreeBuilder &builder = r.state.builder;
  DraftNode *node = BuilderAdd(builder, kind, size);
  if (node == nullptr) {
    RefuseMemory(r);
    return nullptr;
  }
  r.rhs->first = builder.count - 1;
  return node;
}

void PlaceAtToken(const Reduction &r, DraftNode &node) {
  node.offset = r.state.tokenOffset;
  node.length = static_cast<uint16_t>(r.state.tokenSpan);
}

// The number of nodes of the arguments from `first` on, which are the last ones built.
uint32_t SizeOfListed(const TreeBuilder &builder, uint32_t first) {
  const uint32_t root = builder.arguments[first];
  return builder.count - (root + 1 - builder.nodes[root].size);
}

// ---- Whole texts and lists ----

bool FormulaOfExpr(const Reduction &r) {
  return NodeOf(r, r.rhs[0]).dataType <= kLastValueType ||
         Refuse(r, ORL_ERR_KEYWORD, 0, kWholeText);
}

bool FormulaOfList(const Reduction &r) {
  TreeBuilder &builder = r.state.builder;
  const StackEntry list = r.rhs[0];
  DraftNode *node = AddNode(r, NODE_SET, 1 + SizeOfListed(builder, list.first));
  if (node == nullptr) {
    return false;
  }
  node->dataType = TypeOfSet(r.state, list.first, list.count);
  return node->dataType != kNoType;
}

bool FormulaOfRange(const Reduction &r) {
  const DraftNode &left = NodeOf(r, r.rhs[0]);
  const DraftNode &right = NodeOf(r, r.rhs[2]);
  if ((r.state.context->flags & ORL_FLAG_RANGES) == 0) {
    return Refuse(r, ORL_ERR_SYNTAX, 0, 0);
  }
  if (left.dataType != right.dataType) {
    return Refuse(r, ORL_ERR_BETWEEN, right.offset, right.length);
  }
  const int16_t type = left.dataType;
  DraftNode *node = AddNode(r, NODE_RANGE, 1 + left.size + right.size);
  if (node == nullptr) {
    return false;
  }
  node->dataType = type;
  return true;
}

// Adds a member to the list, or to a new one when there is none.
bool Listed(const Reduction &r, const StackEntry *list, const StackEntry &member) {
  TreeBuilder &builder = r.state.builder;
  const uint32_t count = list == nullptr ? 0 : list->count;
  if (count == kMaxListed || !BuilderAddArgument(builder, member.first)) {
    return RefuseMemory(r);
  }
  r.rhs->count = count + 1;
  r.rhs->first = builder.argumentCount - r.rhs->count;
  return true;
}

// ---- Operators ----

// Null when out of memory, with the error set; the node has no type when the type rules reject it.
DraftNode *BuildOperator(const Reduction &r, int32_t kind) {
  const uint32_t left = r.rhs[0].first;
  const uint32_t right = r.rhs[2].first;
  TreeBuilder &builder = r.state.builder;
  DraftNode *node = AddNode(r, kind, 1 + builder.nodes[left].size + builder.nodes[right].size);
  if (node != nullptr) {
    PlaceAtToken(r, *node);
    TypeOperator(r.state, *node, builder.nodes[left], builder.nodes[right]);
    r.state.dateUnit = 0;  // used by this node or by none
  }
  return node;
}

bool Operator(const Reduction &r, int32_t kind) {
  const DraftNode *node = BuildOperator(r, kind);
  return node != nullptr && (node->dataType != kNoType || FailAt(r, r.rhs[1]));
}

// Discards a pending unit word: an operator without a unit must not take it.
bool AdditiveOperator(const Reduction &r, int32_t kind) {
  r.state.dateUnit = 0;
  return Operator(r, kind);
}

bool OperatorWithUnit(const Reduction &r, int32_t kind) {
  const DraftNode *node = BuildOperator(r, kind);
  if (node == nullptr || node->dataType != kNoType) {
    return node != nullptr;
  }
  const FormulaError &error = r.state.error;
  return error.length == 0 && error.id == ORL_ERR_KEYWORD ? FailAtToken(r) : FailAt(r, r.rhs[2]);
}

// ---- Leaves ----

// The leaf of the current token.
DraftNode *AddLeaf(const Reduction &r, int32_t kind, int16_t type) {
  DraftNode *node = AddNode(r, kind, 1);
  if (node != nullptr) {
    node->dataType = type;
    PlaceAtToken(r, *node);
    if (kind != NODE_NUMBER) {
      const uint32_t quotes = kind == NODE_STRING ? 2 : 0;
      BuilderAddText(r.state.builder, *node, node->length - quotes);
    }
  }
  return node;
}

bool Item(const Reduction &r) {
  const int16_t type = TypeOfItem(r.state);
  // A name that is only being tested need not exist.
  if (type == kNoType && !r.state.nameCheckMode) {
    SetError(r.state, ORL_ERR_VAR, 0, 0);
    return FailAtToken(r);
  }
  return AddLeaf(r, NODE_ITEM, type) != nullptr;
}

bool Date(const Reduction &r) {
  if (!IsDateLiteral(TextAt(r.state, r.state.tokenOffset, r.state.tokenSpan))) {
    SetError(r.state, ORL_ERR_INVALIDDATE, 0, 0);
    return FailAtToken(r);
  }
  return AddLeaf(r, NODE_DATE, ORL_TYPE_DATE) != nullptr;
}

bool String(const Reduction &r) {
  DraftNode *node = AddLeaf(r, NODE_STRING, ORL_TYPE_STRING);
  if (node == nullptr) {
    return false;
  }
  const std::string_view token = TokenText(r.state, *node);
  node->detail = HoldsEscape(token.substr(1, token.size() - 2)) ? 1 : 0;
  return true;
}

bool Number(const Reduction &r, bool negative) {
  DraftNode *node = AddLeaf(r, NODE_NUMBER, ORL_TYPE_NUMBER);
  if (node == nullptr) {
    return false;
  }
  node->detail = negative ? kNumberNegative : 0;
  return true;
}

// ---- Calls ----

// The parts of a call production besides the name, by index on its right side; 0 is the name
// itself.
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

bool Call(const Reduction &r, const CallShape &shape) {
  ParseState &state = r.state;
  TreeBuilder &builder = state.builder;
  const StackEntry &token = r.rhs[0];
  const StackEntry list = shape.params == 0 ? StackEntry{} : r.rhs[shape.params];
  DraftNode *node =
      AddNode(r, NODE_CALL, list.count == 0 ? 1 : 1 + SizeOfListed(builder, list.first));
  if (node == nullptr) {
    return false;
  }
  const std::string_view name = CallName(TextAt(state, token.offset, token.length));
  TypeCall(state, *node, {name, shape.form, list.first, list.count});
  builder.argumentCount -= list.count;
  state.dateUnit = 0;
  if (shape.form == kCallModifier) {
    state.modifier = 0;
  }
  if (node->dataType == kNoType) {
    return FailAt(r, r.rhs[PointsAtMarker(shape, state.error.id) ? shape.marker : 0]);
  }
  node->offset = token.offset;
  node->length = static_cast<uint16_t>(token.length);
  node->closeOffset = shape.parenthesis ? state.tokenOffset : 0;
  builder.refers = builder.refers || node->kind == NODE_FORMULA;
  BuilderAddText(builder, *node, name.size());
  return true;
}

}  // namespace

bool RunAction(ParseState &state, Production production, StackEntry *rhs) {
  assert(production < Production::Count && rhs != nullptr);
  const Reduction r = {state, rhs};
  switch (production) {
    case Production::FormulaOfExpr:
      return FormulaOfExpr(r);
    case Production::FormulaOfList:
      return FormulaOfList(r);
    case Production::FormulaOfRange:
      return FormulaOfRange(r);
    case Production::SingleOfExpr:
      return Listed(r, nullptr, rhs[0]);
    case Production::ListOfTwo:
    case Production::ListOfMore:
      return Listed(r, &rhs[0], rhs[2]);
    case Production::ParamsOfSingle:
    case Production::ParamsOfList:
    case Production::ExprOfCall:
    case Production::ExprOfConstant:
      return true;
    case Production::Add:
      return AdditiveOperator(r, NODE_ADD);
    case Production::Subtract:
      return AdditiveOperator(r, NODE_SUB);
    case Production::Multiply:
      return Operator(r, NODE_MUL);
    case Production::Divide:
      return Operator(r, NODE_DIV);
    case Production::Modulo:
      return Operator(r, NODE_MOD);
    case Production::Parentheses:
      rhs[0].first = rhs[1].first;
      return true;
    case Production::Concatenate:
      return Operator(r, NODE_CONCAT);
    case Production::SubtractUnits:
      return OperatorWithUnit(r, NODE_SUB);
    case Production::AddUnits:
      return OperatorWithUnit(r, NODE_ADD);
    case Production::UnknownCharacter:
      return Refuse(r, ORL_ERR_UNKNOWNCHAR, state.tokenOffset, state.tokenSpan);
    case Production::Item:
      return Item(r);
    case Production::NegativeNumber:
      return Number(r, true);
    case Production::Date:
      return Date(r);
    case Production::String:
      return String(r);
    case Production::Number:
      return Number(r, false);
    case Production::SystemCall:
      return Call(r, {kCallPlain, 0, 0, false});
    case Production::CallOfStar:
      return Call(r, {kCallStar, 0, 1, true});
    case Production::CallOfModifier:
      return Call(r, {kCallModifier, 0, 1, true});
    case Production::CallOfNothing:
      return Call(r, {kCallPlain, 0, 0, true});
    case Production::CallOfModifierAndParams:
      return Call(r, {kCallModifier, 2, 1, true});
    case Production::CallOfParams:
      return Call(r, {kCallPlain, 1, 0, true});
    case Production::Count:
      break;
  }
  return Refuse(r, ORL_ERR_GENERAL, 0, 0);
}
