// The walk: depth first through the tree and the formulas that it refers to, with stacks of its own
// and the way up in the nodes, so that no depth of tree or chain of formulas costs C stack.
#include "evaluation/evaluator.h"

#include "engine/items.h"
#include "evaluation/evaluation.h"
#include "language/stored_tree.h"
#include "language/types.h"

namespace {

// Where the walk goes on: down into a node, or up from one whose value is on top of the stack.
struct Position {
  ExprNode *node;
  bool down;
};

Position Down(ExprNode *node) {
  return {node, true};
}
Position Up(ExprNode *node) {
  return {node, false};
}

Value *PushValue(Evaluation &run) {
  Value *value = StackPush(run.values);
  if (value == nullptr) {
    run.outOfMemory = true;
    return nullptr;
  }
  value->form = ValueForm::None;
  value->text = nullptr;
  return value;
}

// The node has no value; nothing below it is looked at.
Position GiveUp(Evaluation &run, ExprNode *node) {
  PushValue(run);
  return Up(node);
}

Position EnterFormula(Evaluation &run, ExprNode *node) {
  Expression *target = BoundFormula(run.ec, node);
  const bool usable = target != nullptr && target->tree != nullptr &&
                      NodeType(target->tree) == NodeType(node) &&
                      target->evaluation != &run;  // not in a circle
  FormulaFrame *frame = usable ? StackPush(run.formulas) : nullptr;
  if (frame == nullptr) {
    return GiveUp(run, node);
  }
  *frame = FormulaFrame{target, node, target->evaluation};
  target->evaluation = &run;
  run.expression = target;
  return Down(target->tree);
}

// Leaves the formula frame on top; its value stays where it is.
ExprNode *LeaveFormula(Evaluation &run) {
  const FormulaFrame frame = run.formulas.items[--run.formulas.count];
  frame.expression->evaluation = frame.before;
  run.expression =
      run.formulas.count == 0 ? nullptr : run.formulas.items[run.formulas.count - 1].expression;
  return frame.caller;
}

// An argument by name: a copy of the node's text. A node without text leaves the entry empty.
void PushName(Evaluation &run, const ExprNode *argument) {
  Value *value = PushValue(run);
  char *copy = value != nullptr && HasText(NodeKindOf(argument))
                   ? CopyText(NodeText(argument)).release()
                   : nullptr;
  if (copy != nullptr) {
    value->form = ValueForm::Opaque;
    value->text = copy;
  }
}

// Goes on with the next argument that is to be computed, or makes the call.
Position NextArgument(Evaluation &run) {
  CallFrame &call = run.calls.items[run.calls.count - 1];
  const ParamRecord *parameters = reinterpret_cast<const ParamRecord *>(call.row + 1);
  while (call.done < call.given && !run.outOfMemory) {
    ExprNode *argument = ChildAt(call.node, call.done);
    if (parameters[call.done].mode != 1) {
      return Down(argument);
    }
    PushName(run, argument);
    call.done++;
  }
  Value result;
  result.form = ValueForm::None;
  result.text = nullptr;
  Value *arguments = run.values.items + (run.values.count - call.done);
  if (!run.outOfMemory) {
    ComputeCall(run, call, arguments, &result);
  }
  for (uint32_t i = 0; i < call.done; i++) {
    ValueFree(arguments[i]);
  }
  run.values.count -= call.done;
  ExprNode *node = call.node;
  run.calls.count--;
  Value *value = PushValue(run);
  if (value == nullptr) {
    ValueFree(result);
  } else {
    *value = result;
  }
  return Up(node);
}

Position EnterCall(Evaluation &run, ExprNode *node) {
  const ExprItem *row =
      NodeType(node) >= 0 && NodeType(node) <= 3 ? BoundFunction(run.ec, node) : nullptr;
  CallFrame *call = row == nullptr ? nullptr : StackPush(run.calls);
  if (call == nullptr) {
    return GiveUp(run, node);
  }
  const uint32_t declared = row->paramCount < 0 ? 0 : static_cast<uint32_t>(row->paramCount);
  const uint32_t listed = ChildCount(node);
  *call = CallFrame{node, row, declared < listed ? declared : listed, 0};
  return NextArgument(run);
}

Position GoDown(Evaluation &run, ExprNode *node) {
  switch (NodeKindOf(node)) {
    case NODE_FORMULA:
      return EnterFormula(run, node);
    case NODE_CALL:
      return EnterCall(run, node);
    case NODE_NUMBER:
    case NODE_STRING:
    case NODE_DATE:
    case NODE_ITEM: {
      Value *value = PushValue(run);
      if (value != nullptr) {
        ComputeLeaf(run, node, value);
      }
      return Up(node);
    }
    default:
      return HasOperatorRule(node) ? Down(LeftOperand(node)) : GiveUp(run, node);
  }
}

// From a node whose value is there to its parent.
Position GoUp(Evaluation &run, ExprNode *node) {
  ExprNode *parent = NodeParent(node);
  if (NodeKindOf(parent) == NODE_CALL) {
    run.calls.items[run.calls.count - 1].done++;
    return NextArgument(run);
  }
  if (IsFirstChild(node)) {
    return Down(RightOperand(parent));
  }
  Value *right = &run.values.items[run.values.count - 1];
  ComputeOperator(run, parent, right - 1, right);
  ValueFree(*right);
  run.values.count--;
  return Up(parent);
}

void Walk(Evaluation &run, HEXP exp) {
  FormulaFrame *frame = StackPush(run.formulas);
  *frame = FormulaFrame{exp, nullptr, exp->evaluation};
  exp->evaluation = &run;
  Position at = Down(exp->tree);
  while (run.formulas.count > 0 && !run.outOfMemory) {
    if (at.down) {
      at = GoDown(run, at.node);
    } else if (at.node == run.expression->tree) {
      at = Up(LeaveFormula(run));
    } else {
      at = GoUp(run, at.node);
    }
  }
}

}  // namespace

const ExprItem *BoundFunction(EC ec, ExprNode *node) {
  const NodeBinding binding = BindingOf(node);
  if (binding.at == ec->generation) {
    return static_cast<const ExprItem *>(binding.row);
  }
  const ExprItem *row = ItemFind(&ec->functions, NodeText(node));
  // The tree keeps the types that it was parsed with; the row may have come back with others, and
  // its routine would then take one kind of block for another.
  const bool usable = row != nullptr && row->routine != nullptr &&
                      (row->dataType == NodeType(node) || row->dataType == ORL_TYPE_FOLLOWS) &&
                      TypeArgumentsFit(node, row);
  row = usable ? row : nullptr;
  Bind(node, {const_cast<ExprItem *>(row), ec->generation});
  return row;
}

const Value *EvaluationRun(Evaluation &run, EC ec, HEXP exp) {
  run.ec = ec;
  run.expression = exp;
  run.spare = nullptr;
  run.outOfMemory = false;
  StackBegin(run.values);
  StackBegin(run.formulas);
  StackBegin(run.calls);
  Walk(run, exp);
  const Value *value = run.values.items;
  return run.outOfMemory || value->form == ValueForm::None ? nullptr : value;
}

void EvaluationEnd(Evaluation &run) {
  while (run.formulas.count > 0) {
    LeaveFormula(run);
  }
  for (uint32_t i = 0; i < run.values.count; i++) {
    ValueFree(run.values.items[i]);
  }
  WRENMemFree(run.spare);
  StackEnd(run.values);
  StackEnd(run.formulas);
  StackEnd(run.calls);
}
