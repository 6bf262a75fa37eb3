// The parse tree: the form in which a formula lives between parsing and evaluation.
//
// A tree names what it refers to by text. `bound` and `boundAt` remember what the name meant when
// it was last looked up; they are valid while the context's generation is `boundAt`.
#ifndef ORLI11_LANGUAGE_TREE_H
#define ORLI11_LANGUAGE_TREE_H

#include <cstdint>
#include <memory>

#include "engine/handle_array.h"
#include "orli11.h"

// A node's kind is the token or character that it grew from.
enum NodeKind : int32_t {
  NODE_NUMBER = 0,  // left: NumberValue block
  NODE_MOD = 37,    // operators: left and right operand, detail: date unit
  NODE_MUL = 42,
  NODE_ADD = 43,
  NODE_SUB = 45,
  NODE_DIV = 47,
  NODE_CONCAT = 124,
  NODE_ITEM = 258,     // left: name text
  NODE_CALL = 259,     // left: function name, right: argument list or null, detail: call form
  NODE_FORMULA = 261,  // left: name of a formula
  NODE_STRING = 262,   // left: text between the quotes, detail: bit 0 when it holds an escape
  NODE_DATE = 263,     // left: date text as written
  NODE_SET = 270,      // right: list of members
  NODE_RANGE = 271     // left and right: bounds
};

// Call forms, in `detail` of a call.
enum CallForm : uint16_t { kCallPlain = 0, kCallStar = 2, kCallModifier = 4 };

// `dataType` of a node that failed its type rules.
constexpr int16_t kNoType = -1;

struct ExprNode {
  int32_t kind;
  int16_t dataType;
  uint16_t detail;
  int32_t offset;  // span in the text; of an operator that of the token scanned last
  int32_t length;
  int32_t closeOffset;  // calls: the closing parenthesis, else 0
  uint32_t slot;        // place among the parent's children
  void *left;
  void *right;
  ExprNode *parent;  // null at the root
  void *bound;
  uint64_t boundAt;
};

inline bool IsOperator(int32_t kind) {
  return kind == NODE_ADD || kind == NODE_SUB || kind == NODE_MUL || kind == NODE_DIV ||
         kind == NODE_MOD || kind == NODE_CONCAT;
}
// Nodes with two operands, in `left` and `right`.
inline bool HasOperands(int32_t kind) {
  return IsOperator(kind) || kind == NODE_RANGE;
}
// Nodes with a list, in `right`, which may be null.
inline bool HasList(int32_t kind) {
  return kind == NODE_CALL || kind == NODE_SET;
}

// Nodes with a text in `left`.
inline bool HasText(int32_t kind) {
  return kind == NODE_ITEM || kind == NODE_CALL || kind == NODE_FORMULA || kind == NODE_STRING ||
         kind == NODE_DATE;
}

// ---- Reading a tree ----
//
// Everything outside language/ reads trees through these functions alone: how nodes are laid out in
// memory is the affair of tree.cpp and the parser.

inline int32_t NodeKindOf(const ExprNode *node) {
  return node->kind;
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
inline int32_t NodeCloseOffset(const ExprNode *node) {
  return node->closeOffset;
}

// The text of a node that HasText, terminated.
inline const char *NodeText(const ExprNode *node) {
  return static_cast<const char *>(node->left);
}
// The value of a NODE_NUMBER.
inline const NumberValue *NodeNumber(const ExprNode *node) {
  return static_cast<const NumberValue *>(node->left);
}

// The operands of a node that HasOperands.
inline ExprNode *LeftOperand(const ExprNode *node) {
  return static_cast<ExprNode *>(node->left);
}
inline ExprNode *RightOperand(const ExprNode *node) {
  return static_cast<ExprNode *>(node->right);
}

// Null at the root.
inline ExprNode *NodeParent(const ExprNode *node) {
  return node->parent;
}

// Operands, arguments or members, in written order: their number, the first of them and the one
// after a child; null when there is none. The child at an index costs a step for each one before
// it.
uint32_t ChildCount(const ExprNode *node);
ExprNode *FirstChild(const ExprNode *node);
ExprNode *NextSibling(const ExprNode *node);
ExprNode *ChildAt(const ExprNode *node, uint32_t index);
// True for the left operand, the first argument or the first member of its parent.
bool IsFirstChild(const ExprNode *node);

// What a node's name meant when it was last looked up; good while the context's generation is `at`.
struct NodeBinding {
  void *row;
  uint64_t at;
};
inline NodeBinding BindingOf(const ExprNode *node) {
  return {node->bound, node->boundAt};
}
inline void Bind(ExprNode *node, const NodeBinding &binding) {
  node->bound = binding.row;
  node->boundAt = binding.at;
}

// Gives a NODE_ITEM another name. False when there is no memory, with the old name as it was.
bool RenameNode(ExprNode *node, const char *name);

struct ParseState;

// Constructors. Each returns null only when there is no memory, with 121 in state.error; what they
// were given then still belongs to the caller. Otherwise the node owns it.
ExprNode *ExprNodeNew(ParseState &state);
ExprNode *ExprNodeLeaf(ParseState &state, int32_t kind, char *text);
ExprNode *ExprNodeNumber(ParseState &state, NumberValue *value, bool negate);
ExprNode *ExprNodeBuild(ParseState &state, int32_t kind, void *left, void *right, CallForm form);

// A range of two expressions, or null with the error in state.error.
ExprNode *ExprNodeRange(ParseState &state, ExprNode *left, ExprNode *right);

// A set of the listed members; of no type when they do not fit together, with the error in
// state.error. Null only when there is no memory.
ExprNode *ExprNodeSet(ParseState &state, HandleArray list);

// Appends a node to a list, or to a new one for null. The list to go on with, or null when it is
// full or there is no memory, with the old list as it was.
HandleArray ExprListAppend(HandleArray list, ExprNode *node);

// Free a node or list with all below it, in constant stack; null is accepted.
void ExprNodeFree(ExprNode *node);
void ExprListFree(HandleArray list);

struct FreeTree {
  void operator()(ExprNode *root) const { ExprNodeFree(root); }
};
using OwnedTree = std::unique_ptr<ExprNode, FreeTree>;

// The next node of a walk that visits every node below `root` in written order, each before its
// children; null at the end. Needs no memory: the way back stands in the nodes.
ExprNode *ExprNodeNext(const ExprNode *root, const ExprNode *node);
// The same without going below `node`.
ExprNode *ExprNodeNextBeside(const ExprNode *root, const ExprNode *node);

// The list of a node with arguments or members, and while one is built: number of nodes in a list
// (0 for null) and the node at an index.
inline HandleArray NodeList(const ExprNode *node) {
  return static_cast<HandleArray>(node->right);
}
uint32_t ExprListCount(HandleArray list);
ExprNode *ExprListAt(HandleArray list, uint32_t index);

#endif
