// Strings of batches.
#include <cstring>

#include "evaluation/batch.h"

namespace {

TextSlice SliceAt(const Batch &batch, uint32_t row) {
  return batch.form == BatchForm::Texts ? SlicesOf(batch)[batch.single ? 0 : row]
                                        : TextSlice{nullptr, 0};
}

// Whether two strings can be concatenated.
bool CanJoin(const TextSlice &left, const TextSlice &right) {
  return left.bytes != nullptr && right.bytes != nullptr &&
         uint64_t{left.length} + right.length < INT32_MAX;
}

}  // namespace

void BatchConcatenate(BatchRun &run, Batch *left, Batch *right) {
  const bool single = left->single && right->single;
  const uint32_t count = single ? 1 : run.count;
  const Batch operand = *left;
  uint64_t total = 0;
  for (uint32_t row = 0; row < count; ++row) {
    total += uint64_t{SliceAt(operand, row).length} + SliceAt(*right, row).length;
  }
  char *end = ArenaTexts(run, total);
  auto *result = OwnElements<TextSlice>(*left, BatchForm::Texts);
  left->ascii = operand.ascii && right->ascii;
  for (uint32_t row = count; row-- > 0 && end != nullptr;) {
    const TextSlice a = SliceAt(operand, row);
    const TextSlice b = SliceAt(*right, row);
    result[row] = {nullptr, 0};
    if (CanJoin(a, b)) {
      result[row] = {end, a.length + b.length};
      end = AppendText(AppendText(end, a), b);
    }
  }
  left->single = single;
}
