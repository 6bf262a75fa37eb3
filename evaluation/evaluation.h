// The state of one evaluation, and the steps that its program consists of.
#ifndef ORLI11_EVALUATION_EVALUATION_H
#define ORLI11_EVALUATION_EVALUATION_H

#include <cassert>
#include <cstdint>

#include "engine/context.h"
#include "engine/expressions.h"
#include "evaluation/growing_stack.h"
#include "evaluation/program.h"
#include "functions/value.h"

// A formula that is being computed for another one, and the return address in the program of that
// one.
struct FormulaFrame {
  Expression *expression;
  const Evaluation *before;  // the evaluation that was inside the expression
  Expression *caller;
  Program *program;  // of the caller
  Word *next;
};

struct Evaluation {
  EC ec;
  Expression *expression;  // whose program runs
  TextBuffer texts;
  GrowingStack<Value, 12> values;
  GrowingStack<FormulaFrame, 4> formulas;

  Evaluation(EC context, HEXP exp) : ec(context), expression(exp) {
    values.items[0].form = ValueForm::None;
  }
  ~Evaluation() { FreeBlockOf(values.items[0]); }
  Evaluation(const Evaluation &) = delete;
  Evaluation &operator=(const Evaluation &) = delete;
};

// The program of an expression that has a tree, with its names bound; null when out of memory.
inline Program *BoundProgram(EC ec, Expression *expression) {
  Program *program = expression->program;
  if (program == nullptr || program->generation != ec->generation || program->context != ec)
      [[unlikely]] {
    return BindProgram(ec, expression);
  }
  return program;
}

// Grows the stack for the values of a program on top of `values` others; false when out of memory.
inline bool ReserveValues(Evaluation &run, uint32_t values, const Program *program) {
  const uint64_t wanted = uint64_t{values} + program->depth;
  run.values.count = values;
  return wanted <= run.values.capacity || StackGrow(run.values, wanted);
}

// Runs the program of the root; its value becomes the first one on the stack.
void RunProgram(Evaluation &run, Program *program);

// Computes the expression. Returns its value, which the run owns, or null when there is none.
inline const Value *EvaluationRun(Evaluation &run) {
  HEXP exp = run.expression;
  Program *program = BoundProgram(run.ec, exp);
  if (program == nullptr || !ReserveValues(run, 0, program)) {
    run.texts.outOfMemory = true;
    return nullptr;
  }
  const Evaluation *before = exp->evaluation;
  exp->evaluation = &run;
  RunProgram(run, program);
  exp->evaluation = before;
  const Value *value = run.values.items;
  return value->form == ValueForm::None ? nullptr : value;
}

// ---- Calls ----

// True while the context has not changed since the row of the frame was found.
inline bool IsUnchanged(const Evaluation &run, const Value *frame) {
  return frame->generation == static_cast<uint32_t>(run.ec->generation);
}

inline void PushFrame(const Evaluation &run, Word *code, Value *frame) {
  assert(code->instruction.operation == Operation::Call);
  frame->frame = {code, code[kCallRow].row};
  frame->generation = static_cast<uint32_t>(run.ec->generation);
  frame->textsUsed = run.texts.used;
  frame->form = ValueForm::Frame;
}

// Moves the string of a result down to where the strings of the arguments began, which are no
// longer needed.
inline void PlaceResult(TextBuffer &texts, Value *result, uint32_t textsUsed) {
  if (result->form != ValueForm::Text) {
    texts.used = textsUsed;
    return;
  }
  const TextSpan span = SpanOf(*result);
  assert(span.offset >= textsUsed);
  if (span.offset != textsUsed) {
    MoveTextDown(texts.bytes + textsUsed, span.offset - textsUsed, span.length);
    SetText(texts, result, textsUsed, span.length);
  }
}

// The inner routine for the call of a frame; null when InvokeCall has to make the call.
inline InnerRoutine InnerRoutineOf(const Evaluation &run, const Value *frame) {
  return IsUnchanged(run, frame) ? frame->frame.call[kCallInner].inner : nullptr;
}

// Begins a call: its frame replaces the value. False when there is no routine to call; the value is
// then None.
bool BeginCall(Evaluation &run, Word *code, Value *frame);
// True when argument `place` must be evaluated. Otherwise sets its value: None if undeclared, the
// item's name if passed by name.
bool WantsArgument(Evaluation &run, Value *frame, uint32_t place, const Word *code, Value *value);
// Calls the function of a frame with the values that follow it; the result replaces the frame.
void InvokeCall(Evaluation &run, Value *frame, uint32_t count);

// ---- Operators: the result replaces the left value ----

// Arithmetic where an operand is not a number, the result is too large or there are callbacks.
void ComputeSlowly(Evaluation &run, Operation operation, Value *left, Value *right);
void MoveDate(const Instruction &instruction, Value *left, const Value *right);
void SubtractDates(TextBuffer &texts, Value *left, Value *right);
void PushEscapedText(TextBuffer &texts, const char *text, Value *value);
void PushDate(const char *text, Value *value);

// Either value is None, or of a form that the operator is not defined for.
void DropOperands(TextBuffer &texts, Value *left, Value *right);

// The right string directly follows the left one.
inline void Concatenate(TextBuffer &texts, Value *left, Value *right) {
  assert(left->form != ValueForm::Text || right->form != ValueForm::Text ||
         right->text.offset == left->text.offset + left->text.length);
  const uint64_t length = uint64_t{left->text.length} + right->text.length;
  if (left->form == ValueForm::Text && right->form == ValueForm::Text && length < INT32_MAX)
      [[likely]] {
    left->text.length = static_cast<uint32_t>(length);
  } else {
    DropOperands(texts, left, right);
  }
}

#endif
