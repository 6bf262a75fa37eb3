#include "support/tree_text.h"

#include "support/context.h"

namespace {

std::string Children(const ExprNode *node) {
  std::string text = "(";
  for (const ExprNode *child = FirstChild(node); child != nullptr; child = NextSibling(child)) {
    if (!IsFirstChild(child)) text += " ";
    text += TreeText(child);
  }
  return text + ")";
}

std::string Label(const ExprNode *node) {
  const std::string text = HasText(NodeKindOf(node)) ? NodeText(node) : "";
  // clang-format off
  switch (NodeKindOf(node)) {
    case NODE_NUMBER: return NumberText(NodeNumber(node));
    case NODE_STRING: return (NodeDetail(node) != 0 ? "~'" : "'") + text + "'";
    case NODE_DATE: return "#" + text + "#";
    case NODE_FORMULA: return text + "!";
    case NODE_SET: return "SET";
    case NODE_RANGE: return "RANGE";
    case NODE_CONCAT: return "||";
    default: return IsOperator(NodeKindOf(node)) ? std::string(1, static_cast<char>(NodeKindOf(node))) : text;
  }
  // clang-format on
}

}  // namespace

std::string TreeText(const ExprNode *node) {
  if (node == nullptr) return "(null)";
  std::string text = Label(node);
  if (IsOperator(NodeKindOf(node)) && NodeDetail(node) != 0)
    text += ":" + std::to_string(NodeDetail(node));
  text += "[" + std::to_string(NodeType(node)) + " " + std::to_string(NodeOffset(node)) + "+" +
          std::to_string(NodeLength(node));
  if (NodeKindOf(node) == NODE_CALL && NodeDetail(node) != 0)
    text += " form" + std::to_string(NodeDetail(node));
  if (NodeCloseOffset(node) != 0) text += "^" + std::to_string(NodeCloseOffset(node));
  text += "]";
  if (HasOperands(NodeKindOf(node))) {
    return text + "(" + TreeText(LeftOperand(node)) + " " + TreeText(RightOperand(node)) + ")";
  }
  const bool hasList = NodeKindOf(node) == NODE_CALL || NodeKindOf(node) == NODE_SET;
  return hasList ? text + Children(node) : text;
}
