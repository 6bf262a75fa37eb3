#include "language/bound_formula.h"

#include <cassert>

#include "engine/context.h"

Expression *BoundFormula(EC ec, ExprNode *node) {
  assert(NodeKindOf(node) == NODE_FORMULA);
  NodeBinding binding = BindingOf(node);
  if (binding.at != ec->generation) {
    binding = {ORLHEXPFromName(ec, NodeText(node)), ec->generation};
    Bind(node, binding);
  }
  return static_cast<Expression *>(binding.row);
}
