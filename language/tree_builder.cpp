#include "language/tree_builder.h"

#include <algorithm>

#include "platform/copy_bytes.h"

namespace {

// Doubles a list whose first elements are inside its owner. False when out of memory.
template <class T>
bool Grow(T *&items, const T *first, uint32_t &capacity) {
  const uint64_t bytes = uint64_t{capacity} * 2 * sizeof(T);
  if (bytes > UINT32_MAX) {
    return false;
  }
  const bool inside = items == first;
  void *grown = inside ? WRENMemAlloc(static_cast<uint32_t>(bytes))
                       : WRENMemRealloc(items, static_cast<uint32_t>(bytes));
  if (grown == nullptr) {
    return false;
  }
  if (inside) {
    std::memcpy(grown, first, capacity * sizeof(T));
  }
  items = static_cast<T *>(grown);
  capacity *= 2;
  return true;
}

// The bytes that a node's text takes, terminated.
uint32_t BytesOf(const DraftNode &node) {
  const uint32_t bytes = uint32_t{node.textLength} + 1;
  return node.kind == NODE_ITEM ? std::max(bytes, kLeastNameBytes) : bytes;
}

// Bytes before a node's text.
uint32_t BytesBefore(int32_t kind) {
  return kind == NODE_FORMULA ? kBindingAt : kind == NODE_CALL ? kCloseOffsetAt : 0;
}

// Writes the text of a node and returns its start. Texts are written from the end towards the
// nodes.
char *PutText(const DraftNode &node, const char *text, char *end) {
  char *target = end - BytesOf(node);
  const int32_t quote = node.kind == NODE_STRING ? 1 : 0;
  CopyBytes(target, text + node.offset + quote, node.textLength);
  if (node.kind == NODE_CALL || node.kind == NODE_FORMULA) {
    std::memcpy(target - kCallSizeAt, &node.size, sizeof node.size);
    std::memcpy(target - kCloseOffsetAt, &node.closeOffset, sizeof node.closeOffset);
  }
  return target;
}

uint32_t DistanceTo(const char *content, const ExprNode *node) {
  return static_cast<uint32_t>(content - reinterpret_cast<const char *>(node));
}

// Copies the nodes from postorder into the block's preorder: the position of a node is its index
// minus that of the first node in its subtree, plus one for each ancestor.
void PutNodes(TreeBuilder &builder, const char *text, ExprNode *root, char *end) {
  DraftNode *drafts = builder.nodes;
  uint32_t above = builder.count - 1;  // the nearest node that the next one can be below
  uint32_t depth = 0;
  const char *textAfter = end;
  ExprNode *aboveNode = nullptr;
  for (uint32_t i = builder.count; i-- > 0;) {
    const DraftNode &draft = drafts[i];
    while (depth > 0 && i + drafts[above].size <= above) {
      above = drafts[above].parent;
      --depth;
      aboveNode = root + (above + 1 - drafts[above].size + depth - 1);
    }
    ExprNode *node = root + (i + 1 - draft.size + depth);
    node->code = CodeOfKind(draft.kind);
    node->dataType = draft.dataType;
    node->length = draft.length;
    node->detail = draft.detail;
    node->offset = draft.offset;
    node->parent = aboveNode == nullptr ? 0 : static_cast<uint32_t>(node - aboveNode);
    if (HasText(draft.kind)) {
      char *content = PutText(draft, text, end);
      node->content = DistanceTo(content, node);
      end = content - BytesBefore(draft.kind);
    } else {
      node->content =
          draft.kind == NODE_NUMBER ? DistanceTo(textAfter + draft.offset, node) : draft.size;
    }
    if (draft.size > 1) {
      drafts[i].parent = above;
      above = i;
      aboveNode = node;
      ++depth;
    }
  }
}

}  // namespace

bool BuilderGrow(TreeBuilder &builder) {
  return Grow(builder.nodes, builder.firstNodes, builder.capacity);
}

bool BuilderAddArgument(TreeBuilder &builder, uint32_t node) {
  assert(node < builder.count);
  if (builder.argumentCount == builder.argumentCapacity &&
      !Grow(builder.arguments, builder.firstArguments, builder.argumentCapacity)) {
    return false;
  }
  builder.arguments[builder.argumentCount++] = node;
  return true;
}

void BuilderAddText(TreeBuilder &builder, DraftNode &node, size_t length) {
  assert(HasText(node.kind) && length <= UINT16_MAX);
  node.textLength = static_cast<uint16_t>(length);
  builder.textBytes += BytesBefore(node.kind) + BytesOf(node);
}

FinishedTree FinishTree(TreeBuilder &builder, const char *text, uint32_t before, uint64_t after) {
  assert(BuiltRoot(builder).size == builder.count);
  const uint64_t treeBytes = uint64_t{builder.count} * sizeof(ExprNode) + builder.textBytes;
  const uint64_t bytes = before + treeBytes + after;
  if (bytes > UINT32_MAX) {
    return {};
  }
  auto *block = static_cast<char *>(WRENMemAlloc(static_cast<uint32_t>(bytes)));
  if (block == nullptr) {
    return {};
  }
  auto *root = reinterpret_cast<ExprNode *>(block + before);
  char *end = block + before + treeBytes;
  PutNodes(builder, text, root, end);
  return {block, root, end};
}
