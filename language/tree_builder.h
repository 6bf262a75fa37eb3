// Trees under construction.
//
// While a formula is parsed its nodes are stored in the order in which they were built, each after
// its children. Names and literals are only positions in the formula's text. FinishTree makes the
// block of tree.h from them, with one allocation.
#ifndef ORLI11_LANGUAGE_TREE_BUILDER_H
#define ORLI11_LANGUAGE_TREE_BUILDER_H

#include <cstdint>

#include "language/tree.h"
#include "platform/owned.h"

// The number of nodes and arguments that the builder holds without further memory.
constexpr uint32_t kFirstNodes = 512;
constexpr uint32_t kFirstArguments = 64;

// A node that is not yet in a tree.
struct DraftNode {
  uint16_t kind;
  int16_t dataType;
  uint16_t length;
  uint16_t textLength;  // of the text that the node will hold
  uint8_t detail;
  int32_t offset;
  int32_t closeOffset;
  uint32_t size;    // nodes in the subtree
  uint32_t parent;  // while the tree is finished: the index of the parent
};

struct TreeBuilder {
  DraftNode *nodes;
  uint32_t count;
  uint32_t capacity;
  uint32_t *arguments;  // roots of the arguments and members of lists that are not complete
  uint32_t argumentCount;
  uint32_t argumentCapacity;
  uint64_t textBytes;  // what the texts of the nodes will need
  bool refers;         // there is a NODE_FORMULA
  DraftNode firstNodes[kFirstNodes];
  uint32_t firstArguments[kFirstArguments];

  TreeBuilder();
  ~TreeBuilder();
  TreeBuilder(const TreeBuilder &) = delete;
  TreeBuilder &operator=(const TreeBuilder &) = delete;
};

// A new node, the last of a subtree of `size` nodes, with zeros in its other fields; null when out
// of memory. The address is valid until the next node is added.
DraftNode *BuilderAdd(TreeBuilder &builder, int32_t kind, uint32_t size);

// Adds a built node as an argument. False when out of memory.
bool BuilderAddArgument(TreeBuilder &builder, uint32_t node);

// Counts the bytes that the text of a node that HasText will need, once its kind and span are
// settled. The text has `length` bytes, after the quote of a string.
void BuilderAddText(TreeBuilder &builder, DraftNode &node, size_t length);

// The node that was built last.
inline const DraftNode &BuiltRoot(const TreeBuilder &builder) {
  assert(builder.count > 0);
  return builder.nodes[builder.count - 1];
}

// One block: `before` zeroed bytes, the tree, then `after` bytes; the caller copies the formula's
// text to their start.
struct FinishedTree {
  char *block;
  ExprNode *root;
  char *after;
};

// Makes the tree of all nodes, the last of which is the root. `text` is the formula's. The block is
// null when out of memory; otherwise the caller owns it.
FinishedTree FinishTree(TreeBuilder &builder, const char *text, uint32_t before, uint64_t after);

// ---- Inline ----

inline TreeBuilder::TreeBuilder()
    : nodes(firstNodes),
      count(0),
      capacity(kFirstNodes),
      arguments(firstArguments),
      argumentCount(0),
      argumentCapacity(kFirstArguments),
      textBytes(0),
      refers(false) {}

inline TreeBuilder::~TreeBuilder() {
  if (nodes != firstNodes) {
    const Owned<DraftNode> grown(nodes);
  }
  if (arguments != firstArguments) {
    const Owned<uint32_t> grown(arguments);
  }
}

bool BuilderGrow(TreeBuilder &builder);

inline DraftNode *BuilderAdd(TreeBuilder &builder, int32_t kind, uint32_t size) {
  assert(size > 0 && size <= builder.count + 1);
  if (builder.count == builder.capacity && !BuilderGrow(builder)) {
    return nullptr;
  }
  DraftNode *node = &builder.nodes[builder.count++];
  *node = DraftNode{};
  node->kind = static_cast<uint16_t>(kind);
  node->size = size;
  return node;
}

#endif
