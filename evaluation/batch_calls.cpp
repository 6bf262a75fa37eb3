// Calls of built-in functions: batched where the function has a batch form, row by row otherwise.
#include <cstring>

#include "evaluation/batch.h"
#include "evaluation/batch_functions.h"

namespace {

// A row's value of an argument other than dates; strings are appended to the buffer.
void TakeArgument(BatchRun &run, const Batch &batch, uint32_t row, Value *value) {
  const uint32_t at = batch.single ? 0 : row;
  switch (batch.form) {
    case BatchForm::Texts: {
      const TextSlice &slice = SlicesOf(batch)[at];
      value->form = ValueForm::None;
      if (slice.bytes != nullptr) {
        CopyTextInto(run.inner.texts, value, slice.bytes, slice.length);
      }
      break;
    }
    case BatchForm::Values:
      std::memcpy(static_cast<void *>(value), ValuesOf(batch) + at, sizeof *value);
      break;
    default:
      if (batch.someMissing && HasBit(batch.missing, at)) {
        value->form = ValueForm::None;
      } else {
        SetNumber(value, LaneNumber(batch, at));
      }
  }
}

TextSlice KeepText(BatchRun &run, const Value &value) {
  if (value.form != ValueForm::Text) {
    return {nullptr, 0};
  }
  char *text = ArenaText(run.arena, value.text.length);
  if (text == nullptr) {
    run.outOfMemory = true;
    return {nullptr, 0};
  }
  std::memcpy(text, run.inner.texts.bytes + value.text.offset, value.text.length);
  return {text, value.text.length};
}

// Calls as the interpreter does, with the arguments of one row on its stack.
void CallForRow(BatchRun &run, Word *code, const Batch *args, uint32_t count, uint32_t row,
                Value *frame) {
  run.inner.texts.used = 0;
  BeginCall(run.inner, code, frame);
  for (uint32_t i = 0; i < count; ++i) {
    TakeArgument(run, args[i], row, frame + 1 + i);
  }
  InvokeCall(run.inner, frame, count);
  run.outOfMemory = run.outOfMemory || run.inner.texts.outOfMemory;
}

bool AllSingle(const Batch *args, uint32_t count) {
  for (uint32_t i = 0; i < count; ++i) {
    if (!args[i].single) {
      return false;
    }
  }
  return true;
}

// The results are stored over the arguments; each row reads its arguments before its result is
// written.
void CallEachRow(BatchRun &run, Word *code, Batch *frame, uint32_t count) {
  Batch *args = frame + 1;
  const bool texts = code->instruction.type == ORL_TYPE_STRING;
  const uint32_t rows = AllSingle(args, count) ? 1 : run.count;
  Value *stack = run.inner.values.items;
  for (uint32_t i = 0; i < count; ++i) {
    if (args[i].form == BatchForm::Dates) {
      MakeValues(run, &args[i]);
    }
  }
  auto *slices = texts ? OwnElements<TextSlice>(*frame, BatchForm::Texts) : nullptr;
  Value *values = texts ? nullptr : OwnElements<Value>(*frame, BatchForm::Values);
  for (uint32_t row = 0; row < rows && !run.outOfMemory && !ArenaIsFull(run); ++row) {
    CallForRow(run, code, args, count, row, stack);
    if (texts) {
      slices[row] = KeepText(run, stack[0]);
    } else {
      std::memcpy(static_cast<void *>(values + row), stack, sizeof *stack);
    }
  }
  frame->single = rows == 1 && AllSingle(args, count);
}

}  // namespace

void BatchCall(BatchRun &run, Word *code, Batch *frame, uint32_t count) {
  const BatchRoutine routine = BatchRoutineOf(code[kCallBuiltIn].builtIn);
  if (routine == nullptr || !routine(run, frame, count)) {
    CallEachRow(run, code, frame, count);
  }
}
