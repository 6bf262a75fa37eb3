#include "language/tree.h"

#include <cstring>

#include "dates/date_text.h"
#include "engine/context.h"
#include "engine/items.h"
#include "language/parse_state.h"
#include "language/types.h"
#include "platform/text.h"

namespace {

void Adopt(ExprNode *parent, ExprNode *child, uint32_t slot) {
  child->parent = parent;
  child->slot = slot;
}

void AdoptList(ExprNode *parent, HandleArray list) {
  const uint32_t count = ExprListCount(list);
  for (uint32_t i = 0; i < count; i++) {
    Adopt(parent, ExprListAt(list, i), i);
  }
}

ExprNode *DeepestFirst(ExprNode *node) {
  for (ExprNode *child = node; child != nullptr; child = ChildAt(node, 0)) {
    node = child;
  }
  return node;
}

// Frees the node and what it owns beside its children.
void FreeAlone(ExprNode *node) {
  if (!HasOperands(node->kind)) {
    WRENMemFree(node->left);
    HandleArrayFree(NodeList(node));
  }
  WRENMemFree(node);
}

bool HoldsEscape(const char *text) {
  for (; *text != '\0'; text = CharNextA(text)) {
    if ((*text == '\\' || *text == '\'') && text[1] == '\'') {
      return true;
    }
  }
  return false;
}

void TypeLeaf(ParseState &state, ExprNode *node) {
  const char *text = NodeText(node);
  int32_t type = kNoType;
  switch (node->kind) {
    case NODE_STRING:
      node->detail = HoldsEscape(text) ? 1 : 0;
      type = ORL_TYPE_STRING;
      break;
    case NODE_DATE: {
      NumberValue scratch;
      if (DateFromText(&scratch, text) != 0) {
        type = ORL_TYPE_DATE;
      } else {
        SetError(state, ORL_ERR_INVALIDDATE, 0, 0);
      }
      break;
    }
    default:
      type = InputDataType(state.context, text);
      if (type == kNoType) {
        type = KeywordDataType(state.context, text);
      }
      if (type == kNoType) {
        SetError(state, ORL_ERR_VAR, 0, 0);
      }
  }
  node->dataType = static_cast<int16_t>(type);
}

}  // namespace

uint32_t ChildCount(const ExprNode *node) {
  return HasOperands(node->kind) ? 2 : HasList(node->kind) ? ExprListCount(NodeList(node)) : 0;
}

ExprNode *ChildAt(const ExprNode *node, uint32_t index) {
  if (HasOperands(node->kind)) {
    return index == 0 ? LeftOperand(node) : index == 1 ? RightOperand(node) : nullptr;
  }
  // A named formula that was called with arguments holds them until it is freed.
  if (HasList(node->kind) || node->kind == NODE_FORMULA) {
    return ExprListAt(NodeList(node), index);
  }
  return nullptr;
}

ExprNode *FirstChild(const ExprNode *node) {
  return ChildAt(node, 0);
}

ExprNode *NextSibling(const ExprNode *node) {
  return node->parent == nullptr ? nullptr : ChildAt(node->parent, node->slot + 1);
}

bool IsFirstChild(const ExprNode *node) {
  return node->slot == 0;
}

bool RenameNode(ExprNode *node, const char *name) {
  char *text = CopyText(name).release();
  if (text == nullptr) {
    return false;
  }
  WRENMemFree(node->left);
  node->left = text;
  return true;
}

ExprNode *ExprNodeNew(ParseState &state) {
  ExprNode *node = static_cast<ExprNode *>(WRENMemAlloc(sizeof(ExprNode)));
  if (node == nullptr) {
    SetError(state, ORL_ERR_MEMORY, 0, 0);
  }
  return node;
}

ExprNode *ExprNodeLeaf(ParseState &state, int32_t kind, char *text) {
  ExprNode *node = ExprNodeNew(state);
  if (node != nullptr) {
    node->kind = kind;
    node->left = text;
    node->offset = state.tokenOffset;
    node->length = state.tokenSpan;
    TypeLeaf(state, node);
  }
  return node;
}

ExprNode *ExprNodeNumber(ParseState &state, NumberValue *value, bool negate) {
  ExprNode *node = ExprNodeNew(state);
  if (node != nullptr) {
    if (negate) {
      WRENNumNegate(value);
    }
    node->kind = NODE_NUMBER;
    node->dataType = ORL_TYPE_NUMBER;
    node->left = value;
    node->offset = state.tokenOffset;
    node->length = state.tokenSpan;
  }
  return node;
}

ExprNode *ExprNodeBuild(ParseState &state, int32_t kind, void *left, void *right, CallForm form) {
  ExprNode *node = ExprNodeNew(state);
  if (node == nullptr) {
    return nullptr;
  }
  node->kind = kind;
  node->left = left;
  node->right = right;
  if (kind == NODE_CALL) {
    AdoptList(node, NodeList(node));
    TypeCall(state, node, form);
  } else {
    Adopt(node, LeftOperand(node), 0);
    Adopt(node, RightOperand(node), 1);
    TypeOperator(state, node);
  }
  state.dateUnit = 0;  // taken by this node or by none
  return node;
}

ExprNode *ExprNodeRange(ParseState &state, ExprNode *left, ExprNode *right) {
  if ((state.context->flags & ORL_FLAG_RANGES) == 0) {
    SetError(state, ORL_ERR_SYNTAX, 0, 0);
    return nullptr;
  }
  if (left->dataType != right->dataType) {
    SetError(state, ORL_ERR_BETWEEN, right->offset, right->length);
    return nullptr;
  }
  ExprNode *node = ExprNodeNew(state);
  if (node != nullptr) {
    node->kind = NODE_RANGE;
    node->dataType = left->dataType;
    node->left = left;
    node->right = right;
    Adopt(node, left, 0);
    Adopt(node, right, 1);
  }
  return node;
}

ExprNode *ExprNodeSet(ParseState &state, HandleArray list) {
  ExprNode *node = ExprNodeNew(state);
  if (node != nullptr) {
    node->kind = NODE_SET;
    node->right = list;
    AdoptList(node, list);
    node->dataType = TypeOfSet(state, list);
  }
  return node;
}

HandleArray ExprListAppend(HandleArray list, ExprNode *node) {
  return HandleArrayAppendPointer(&list, node) ? list : nullptr;
}

void ExprNodeFree(ExprNode *node) {
  if (node == nullptr) {
    return;
  }
  const ExprNode *root = node;
  node = DeepestFirst(node);
  for (;;) {
    ExprNode *parent = node->parent;
    const uint32_t next = node->slot + 1;
    const bool last = node == root;
    FreeAlone(node);
    if (last) {
      return;
    }
    ExprNode *sibling = ChildAt(parent, next);
    node = sibling == nullptr ? parent : DeepestFirst(sibling);
  }
}

void ExprListFree(HandleArray list) {
  if (list == nullptr) {
    return;
  }
  const uint32_t count = ExprListCount(list);
  for (uint32_t i = 0; i < count; i++) {
    ExprNodeFree(ExprListAt(list, i));
  }
  HandleArrayFree(list);
}

ExprNode *ExprNodeNext(const ExprNode *root, const ExprNode *node) {
  ExprNode *child = ChildAt(node, 0);
  return child != nullptr ? child : ExprNodeNextBeside(root, node);
}

ExprNode *ExprNodeNextBeside(const ExprNode *root, const ExprNode *node) {
  while (node != root) {
    ExprNode *sibling = ChildAt(node->parent, node->slot + 1);
    if (sibling != nullptr) {
      return sibling;
    }
    node = node->parent;
  }
  return nullptr;
}

uint32_t ExprListCount(HandleArray list) {
  return HandleArrayRows(list);
}

ExprNode *ExprListAt(HandleArray list, uint32_t index) {
  return static_cast<ExprNode *>(HandleArrayPointerAt(list, index));
}
