#include "language/tree.h"

#include <cassert>

#include "language/literals.h"
#include "platform/owned.h"

namespace {

// An item has space for the address of another name.
static_assert(kLeastNameBytes >= sizeof(char *));

bool OwnsName(const ExprNode *node) {
  return node->code == CodeOfKind(NODE_ITEM) && node->detail == kItemOwnsName;
}

char *OwnName(const ExprNode *node) {
  char *name = nullptr;
  std::memcpy(&name, NodeContent(node), sizeof name);
  return name;
}

}  // namespace

int32_t NodeCloseOffset(const ExprNode *node) {
  int32_t offset = 0;
  const int32_t kind = NodeKindOf(node);
  if (kind == NODE_CALL || kind == NODE_FORMULA) {
    std::memcpy(&offset, NodeContent(node) - kCloseOffsetAt, sizeof offset);
  }
  return offset;
}

const char *NodeText(const ExprNode *node) {
  assert(HasText(NodeKindOf(node)));
  return OwnsName(node) ? OwnName(node) : NodeContent(node);
}

NumberValue NodeNumber(const ExprNode *node) {
  assert(NodeKindOf(node) == NODE_NUMBER);
  NumberValue value = {};
  NumberFromLiteral(&value, {NodeContent(node), node->length});
  if (node->detail == kNumberNegative) {
    WRENNumNegate(&value);
  }
  return value;
}

ExprNode *FirstChild(const ExprNode *node) {
  return SubtreeSize(node) == 1 ? nullptr : const_cast<ExprNode *>(node + 1);
}

ExprNode *NextSibling(const ExprNode *node) {
  const ExprNode *parent = node - node->parent;
  const ExprNode *next = node + SubtreeSize(node);
  return node->parent == 0 || next == parent + SubtreeSize(parent) ? nullptr
                                                                   : const_cast<ExprNode *>(next);
}

uint32_t ChildCount(const ExprNode *node) {
  uint32_t count = 0;
  for (const ExprNode *child = FirstChild(node); child != nullptr; child = NextSibling(child)) {
    ++count;
  }
  return count;
}

ExprNode *ChildAt(const ExprNode *node, uint32_t index) {
  ExprNode *child = FirstChild(node);
  for (; index > 0 && child != nullptr; --index) {
    child = NextSibling(child);
  }
  return child;
}

NodeBinding BindingOf(const ExprNode *node) {
  NodeBinding binding;
  std::memcpy(&binding, NodeContent(node) - kBindingAt, sizeof binding);
  return binding;
}

void Bind(ExprNode *node, const NodeBinding &binding) {
  static_assert(sizeof binding + kCloseOffsetAt == kBindingAt);
  std::memcpy(NodeContent(node) - kBindingAt, &binding, sizeof binding);
}

// A new name that fits overwrites the old one. A routine that still holds the old address, the
// host's for example, then reads the new name.
bool RenameNode(ExprNode *node, const char *name) {
  assert(NodeKindOf(node) == NODE_ITEM);
  const size_t bytes = std::strlen(name) + 1;
  const bool own = OwnsName(node);
  const size_t held = std::strlen(NodeText(node)) + 1;
  if (!own && bytes <= (held < kLeastNameBytes ? kLeastNameBytes : held)) {
    std::memcpy(NodeContent(node), name, bytes);
    return true;
  }
  OwnedText copy = CopyText(name);
  if (copy == nullptr) {
    return false;
  }
  const OwnedText old(own ? OwnName(node) : nullptr);
  const char *address = copy.release();
  std::memcpy(NodeContent(node), &address, sizeof address);
  node->detail = kItemOwnsName;
  return true;
}

void ReleaseNames(ExprNode *root) {
  for (const ExprNode *node = root; node != nullptr; node = ExprNodeNext(root, node)) {
    if (OwnsName(node)) {
      const OwnedText name(OwnName(node));
    }
  }
}
