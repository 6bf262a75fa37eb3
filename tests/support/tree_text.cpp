#include "support/tree_text.h"

#include "support/context.h"

namespace {

std::string Children(const ExprNode *node) {
  std::string text = "(";
  for (uint32_t i = 0; i < ExprListCount(NodeList(node)); ++i) {
    if (i != 0) text += " ";
    text += TreeText(ExprListAt(NodeList(node), i));
  }
  return text + ")";
}

std::string Label(const ExprNode *node) {
  const std::string text =
      HasOperands(node->kind) || node->kind == NODE_NUMBER || node->left == nullptr
          ? ""
          : NodeText(node);
  // clang-format off
  switch (node->kind) {
    case NODE_NUMBER: return NumberText(*static_cast<const NumberValue *>(node->left));
    case NODE_STRING: return (node->detail != 0 ? "~'" : "'") + text + "'";
    case NODE_DATE: return "#" + text + "#";
    case NODE_FORMULA: return text + "!";
    case NODE_SET: return "SET";
    case NODE_RANGE: return "RANGE";
    case NODE_CONCAT: return "||";
    default: return IsOperator(node->kind) ? std::string(1, static_cast<char>(node->kind)) : text;
  }
  // clang-format on
}

}  // namespace

std::string TreeText(const ExprNode *node) {
  if (node == nullptr) return "(null)";
  std::string text = Label(node);
  if (IsOperator(node->kind) && node->detail != 0) text += ":" + std::to_string(node->detail);
  text += "[" + std::to_string(node->dataType) + " " + std::to_string(node->offset) + "+" +
          std::to_string(node->length);
  if (node->kind == NODE_CALL && node->detail != 0) text += " form" + std::to_string(node->detail);
  if (node->closeOffset != 0) text += "^" + std::to_string(node->closeOffset);
  text += "]";
  if (HasOperands(node->kind)) {
    return text + "(" + TreeText(LeftOperand(node)) + " " + TreeText(RightOperand(node)) + ")";
  }
  return HasList(node->kind) ? text + Children(node) : text;
}
