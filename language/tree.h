// The parse tree: the form of a formula between parsing and evaluation.
//
// A tree is one memory block: the nodes in preorder, each before its children, and after them their
// names, dates and strings. The formula's text follows; numbers are read from it:
//
//   Amount * 2 + Tax
//
//   | + | * | Amount | 2 | Tax | "Amount" "Tax" |
//
// Each step of a preorder walk moves to the next node, and a tree is freed by one call. Nodes refer
// to each other and to their names by relative offsets, so a block holds no pointers into itself.
//
// A tree refers to items and formulas by name. A binding caches what the name of a formula resolved
// to at the last lookup.
#ifndef ORLI11_LANGUAGE_TREE_H
#define ORLI11_LANGUAGE_TREE_H

#include <cassert>
#include <cstdint>
#include <cstring>

#include "orli11.h"

// A node's kind is the token or character that it was built from.
enum NodeKind : int32_t {
  NODE_NUMBER = 0,  // a NumberValue
  NODE_MOD = 37,    // operators: left and right operand, detail: date unit
  NODE_MUL = 42,
  NODE_ADD = 43,
  NODE_SUB = 45,
  NODE_DIV = 47,
  NODE_CONCAT = 124,
  NODE_ITEM = 258,     // text: the name
  NODE_CALL = 259,     // text: the function's name; arguments, if any; detail: call form
  NODE_FORMULA = 261,  // text: the name of a formula
  NODE_STRING = 262,   // text: what is between the quotes; detail: bit 0 when it holds an escape
  NODE_DATE = 263,     // text: the date as written
  NODE_SET = 270,      // members
  NODE_RANGE = 271     // left and right: bounds
};

// Call forms, in `detail` of a call.
enum CallForm : uint16_t { kCallPlain = 0, kCallStar = 2, kCallModifier = 4 };

// `dataType` of a node that failed its type rules.
constexpr int16_t kNoType = -1;

// Most arguments of a call or members of a set.
constexpr uint32_t kMaxListed = 65535;

// The fields are private to language/; everything else reads trees through the functions below.
struct [[gnu::packed, gnu::aligned(2)]] ExprNode {
  uint8_t code;  // of the kind
  uint8_t detail;
  int16_t dataType;
  uint16_t length;   // span in the text; of an operator that of the token scanned last
  int32_t offset;    // where the span begins
  uint32_t parent;   // distance in nodes from the parent to this one; 0 at the root
  uint32_t content;  // bytes from this node to its text; without text: nodes in the subtree
};
static_assert(sizeof(ExprNode) == 18);

constexpr uint8_t kItemOwnsName = 1;    // detail of an item: its name is in a block of its own
constexpr uint8_t kNumberNegative = 1;  // of a number

// Kinds are below 128, or above 256 by less than that.
constexpr uint8_t CodeOfKind(int32_t kind) {
  return static_cast<uint8_t>(kind < 128 ? kind : kind - 128);
}

inline bool IsOperator(int32_t kind) {
  return kind == NODE_ADD || kind == NODE_SUB || kind == NODE_MUL || kind == NODE_DIV ||
         kind == NODE_MOD || kind == NODE_CONCAT;
}
// Nodes with two operands.
inline bool HasOperands(int32_t kind) {
  return IsOperator(kind) || kind == NODE_RANGE;
}
// Nodes with a text.
inline bool HasText(int32_t kind) {
  return kind >= NODE_ITEM && kind <= NODE_DATE;
}

// ---- Reading a tree ----

inline int32_t NodeKindOf(const ExprNode *node) {
  return node->code < 128 ? node->code : node->code + 128;
}
inline int16_t NodeType(const ExprNode *node) {
  return node->dataType;
}
inline uint16_t NodeDetail(const ExprNode *node) {
  return node->detail;
}
inline int32_t NodeOffset(const ExprNode *node) {
  return node->offset;
}
inline int32_t NodeLength(const ExprNode *node) {
  return node->length;
}

// The place of a call's closing parenthesis, 0 without; 0 for other nodes.
int32_t NodeCloseOffset(const ExprNode *node);

// The text of a node that HasText, terminated.
const char *NodeText(const ExprNode *node);

// The value of a NODE_NUMBER.
NumberValue NodeNumber(const ExprNode *node);

// Fields before a node's name, as byte offsets back from it. They are unaligned: use memcpy.
constexpr uint32_t kCallSizeAt = 4;  // calls and formulas: nodes in the subtree
constexpr uint32_t kCloseOffsetAt = 8;
constexpr uint32_t kBindingAt = 24;      // formulas: NodeBinding
constexpr uint32_t kLeastNameBytes = 8;  // of an item: fits the address of another name

inline char *NodeContent(const ExprNode *node) {
  return const_cast<char *>(reinterpret_cast<const char *>(node)) + node->content;
}

// The number of nodes of a subtree.
inline uint32_t SubtreeSize(const ExprNode *node) {
  if (node->code == CodeOfKind(NODE_CALL)) {
    uint32_t size = 0;
    std::memcpy(&size, NodeContent(node) - kCallSizeAt, sizeof size);
    return size;
  }
  const int32_t kind = NodeKindOf(node);
  return HasText(kind) || kind == NODE_NUMBER ? 1 : node->content;
}

// The operands of a node that HasOperands.
inline ExprNode *LeftOperand(const ExprNode *node) {
  assert(HasOperands(NodeKindOf(node)));
  return const_cast<ExprNode *>(node + 1);
}
inline ExprNode *RightOperand(const ExprNode *node) {
  assert(HasOperands(NodeKindOf(node)));
  return const_cast<ExprNode *>(node + 1 + SubtreeSize(node + 1));
}

// Null at the root.
inline ExprNode *NodeParent(const ExprNode *node) {
  return node->parent == 0 ? nullptr : const_cast<ExprNode *>(node - node->parent);
}

// Operands, arguments or members, in source order: the first of them and the one after a child;
// null when there is none. Their count, and the child at an index, take a step for each child.
ExprNode *FirstChild(const ExprNode *node);
ExprNode *NextSibling(const ExprNode *node);
uint32_t ChildCount(const ExprNode *node);
ExprNode *ChildAt(const ExprNode *node, uint32_t index);
// True for the left operand, the first argument or the first member of its parent.
inline bool IsFirstChild(const ExprNode *node) {
  return node->parent == 1;
}

// The next node of a preorder walk of the subtree of `root`; null at the end.
inline ExprNode *ExprNodeNext(const ExprNode *root, const ExprNode *node) {
  return node + 1 == root + SubtreeSize(root) ? nullptr : const_cast<ExprNode *>(node + 1);
}

// What the name of a NODE_FORMULA resolved to at the last lookup; valid while the context's
// generation is `at`.
struct NodeBinding {
  void *row;
  uint64_t at;
};
NodeBinding BindingOf(const ExprNode *node);
void Bind(ExprNode *node, const NodeBinding &binding);

// ---- Changing and freeing ----

// Renames a NODE_ITEM; the name may need a block of its own. False when out of memory, with the old
// name unchanged.
bool RenameNode(ExprNode *node, const char *name);

// Frees the blocks of such names in a tree.
void ReleaseNames(ExprNode *root);

#endif
