// Texts of batches, and dates that move: steps that a value of each row takes by itself.
#include <cstring>

#include "evaluation/batch.h"

namespace {

// The rows that both operands have together, as rows of their own.
uint32_t BeginRows(const BatchRun &run, const Batch &left, const Batch &right) {
  return left.single && right.single ? 1 : run.count;
}

template <class Compute>
void EachValue(BatchRun &run, Batch *left, Batch *right, Compute compute) {
  const uint32_t count = BeginRows(run, *left, *right);
  MakeValues(run, left);
  MakeValues(run, right);
  const Value *a = ValuesOf(*left);
  const Value *b = ValuesOf(*right);
  Value *result = OwnElements<Value>(*left, BatchForm::Values);
  for (uint32_t row = count; row-- > 0;) {
    Value value = a[left->single ? 0 : row];
    Value other = b[right->single ? 0 : row];
    compute(&value, &other);
    result[row] = value;
  }
  left->single = left->single && right->single;
}

TextSlice SliceAt(const Batch &batch, uint32_t row) {
  return batch.form == BatchForm::Texts ? SlicesOf(batch)[batch.single ? 0 : row]
                                        : TextSlice{nullptr, 0};
}

TextSlice Joined(BatchRun &run, const TextSlice &left, const TextSlice &right) {
  const uint64_t length = uint64_t{left.length} + right.length;
  if (left.bytes == nullptr || right.bytes == nullptr || length >= INT32_MAX) {
    return {nullptr, 0};
  }
  char *text = ArenaText(run.arena, static_cast<uint32_t>(length));
  if (text == nullptr) {
    run.outOfMemory = true;
    return {nullptr, 0};
  }
  std::memcpy(text, left.bytes, left.length);
  std::memcpy(text + left.length, right.bytes, right.length);
  return {text, static_cast<uint32_t>(length)};
}

}  // namespace

void BatchMoveDate(BatchRun &run, const Instruction &instruction, Batch *left, Batch *right) {
  EachValue(run, left, right,
            [&](Value *value, const Value *other) { MoveDate(instruction, value, other); });
}

void BatchSubtractDates(BatchRun &run, Batch *left, Batch *right) {
  EachValue(run, left, right,
            [&](Value *value, Value *other) { SubtractDates(run.inner.texts, value, other); });
}

void BatchConcatenate(BatchRun &run, Batch *left, Batch *right) {
  const uint32_t count = BeginRows(run, *left, *right);
  const Batch operand = *left;
  auto *result = OwnElements<TextSlice>(*left, BatchForm::Texts);
  for (uint32_t row = count; row-- > 0 && !run.outOfMemory && !ArenaIsFull(run);) {
    result[row] = Joined(run, SliceAt(operand, row), SliceAt(*right, row));
  }
  left->single = operand.single && right->single;
}
