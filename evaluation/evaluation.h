// The inner state of one evaluation: its stacks and what the steps share.
#ifndef ORLI11_EVALUATION_EVALUATION_H
#define ORLI11_EVALUATION_EVALUATION_H

#include <cstdint>
#include <cstring>

#include "engine/context.h"
#include "engine/expressions.h"
#include "evaluation/evaluator.h"
#include "language/tree.h"

// A stack whose first N items need no memory.
template <class T, uint32_t N>
struct GrowingStack {
  T *items;
  uint32_t count;
  uint32_t room;
  T first[N];
};

template <class T, uint32_t N>
void StackBegin(GrowingStack<T, N> &stack) {
  stack.items = stack.first;
  stack.count = 0;
  stack.room = N;
}

// Adds an item, which holds nothing yet; null when there is no memory.
template <class T, uint32_t N>
T *StackPush(GrowingStack<T, N> &stack) {
  if (stack.count == stack.room) {
    const uint64_t size = uint64_t{stack.room} * 2 * sizeof(T);
    void *grown = size > UINT32_MAX ? nullptr : WRENMemAlloc(static_cast<uint32_t>(size));
    if (grown == nullptr) {
      return nullptr;
    }
    std::memcpy(grown, static_cast<const void *>(stack.items), stack.count * sizeof(T));
    if (stack.items != stack.first) {
      WRENMemFree(stack.items);
    }
    stack.items = static_cast<T *>(grown);
    stack.room *= 2;
  }
  return &stack.items[stack.count++];
}

template <class T, uint32_t N>
void StackEnd(GrowingStack<T, N> &stack) {
  if (stack.items != stack.first) {
    WRENMemFree(stack.items);
  }
}

// A named formula that is being computed: the node that called for it, in the caller's tree.
struct FormulaFrame {
  Expression *expression;
  ExprNode *caller;
  const Evaluation *before;  // the evaluation that was inside the expression
};

// A function call whose arguments are being computed.
struct CallFrame {
  ExprNode *node;
  const ExprItem *row;
  uint32_t given;  // arguments that the routine receives values for
  uint32_t done;   // of these, how many stand on the value stack
};

struct Evaluation {
  EC ec;
  Expression *expression;  // whose tree the walk is in
  void *spare;             // a 13-byte block for the next routine, or null
  bool outOfMemory;
  GrowingStack<Value, 12> values;
  GrowingStack<FormulaFrame, 4> formulas;
  GrowingStack<CallFrame, 4> calls;
};

// Computes an expression. Returns its value, which stays the run's, or null when there is none.
// EvaluationEnd must follow in either case.
const Value *EvaluationRun(Evaluation &run, EC ec, HEXP exp);
void EvaluationEnd(Evaluation &run);

// Copies a number in the pieces in which numbers are stored: reading a value in one piece that was
// just written in several makes the processor wait.
inline void CopyNumber(NumberValue *target, const void *source) {
  const uint8_t *bytes = static_cast<const uint8_t *>(source);
  uint32_t head = 0;
  uint64_t low = 0;
  std::memcpy(&head, bytes + 1, sizeof head);
  std::memcpy(&low, bytes + 5, sizeof low);
  target->length = bytes[0];
  std::memcpy(target->payload, &head, sizeof head);
  std::memcpy(target->payload + 4, &low, sizeof low);
}

inline void ValueFree(Value &value) {
  if (value.form == ValueForm::Text || value.form == ValueForm::Opaque) {
    WRENMemFree(value.text);
  }
  value.form = ValueForm::None;
}

// Bytes of a fresh result or value block.
constexpr uint32_t kNumberBlockSize = sizeof(NumberValue);
constexpr uint32_t kTextBlockSize = 50;

// Compute a leaf; the left and right values of an operator into the left one; a call whose
// arguments stand on top of the value stack. Each leaves form None when there is no value.
void ComputeLeaf(Evaluation &run, ExprNode *node, Value *value);
void ComputeOperator(Evaluation &run, const ExprNode *node, Value *left, Value *right);
void ComputeCall(Evaluation &run, const CallFrame &call, Value *arguments, Value *value);

// The row behind a call as it is now, or null when it is gone, has no routine, or came back with
// other types than the call was parsed with.
const ExprItem *BoundFunction(EC ec, ExprNode *node);

// True when the evaluator has a rule for the operator and its type.
bool HasOperatorRule(const ExprNode *node);

#endif
