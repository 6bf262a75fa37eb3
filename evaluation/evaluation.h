// The state of one evaluation, and the steps that its program consists of.
#ifndef ORLI11_EVALUATION_EVALUATION_H
#define ORLI11_EVALUATION_EVALUATION_H

#include <cstdint>

#include "engine/context.h"
#include "engine/expressions.h"
#include "evaluation/growing_stack.h"
#include "evaluation/program.h"
#include "functions/value.h"

// A formula that is being computed for another one, and where the program of that one goes on.
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

// Computes the expression. Returns its value, which stays the run's, or null when there is none.
const Value *EvaluationRun(Evaluation &run);

// ---- Calls ----

// Begins a call: its frame takes the place of the value. False when there is no routine to call,
// with None in that place.
bool BeginCall(Evaluation &run, Word *code, Value *frame);
// True when the argument at a place is to be computed; otherwise its value is set: none for one
// that the function does not declare, the name for one by name.
bool WantsArgument(Evaluation &run, Value *frame, uint32_t place, const Word *code, Value *value);
// Calls the function of a frame with the values that follow it; the result takes its place.
void InvokeCall(Evaluation &run, Value *frame, uint32_t count);

// ---- Operators: the result takes the place of the left value ----

// Arithmetic where an operand is not a number, the result is too large or there are callbacks.
void ComputeSlowly(Evaluation &run, Operation operation, Value *left, Value *right);
void MoveDate(const Instruction &instruction, Value *left, const Value *right);
void SubtractDates(TextBuffer &texts, Value *left, Value *right);
void Concatenate(TextBuffer &texts, Value *left, Value *right);
void PushEscapedText(TextBuffer &texts, const char *text, Value *value);
void PushDate(const char *text, Value *value);

#endif
