// String functions on batches; results are slices of the arguments where possible. ASCII strings
// are the same in every code page; a batch with any other string is left to the functions that
// handle multi-byte characters.
#include <algorithm>
#include <cstring>

#include "evaluation/batch_functions.h"

namespace {

// A missing string counts as empty.
TextSlice TextAt(const Batch &batch, uint32_t row) {
  const TextSlice &text = SlicesOf(batch)[batch.single ? 0 : row];
  return text.bytes == nullptr ? TextSlice{"", 0} : text;
}

bool IsAsciiBatch(const BatchRun &run, const Batch &batch) {
  if (batch.form != BatchForm::Texts) {
    return false;
  }
  if (batch.ascii) {
    return true;
  }
  for (uint32_t row = 0; row < RowsOf(run, batch); ++row) {
    const TextSlice text = TextAt(batch, row);
    if (!IsAscii(text.bytes, text.length)) {
      return false;
    }
  }
  return true;
}

// The count that all rows share; false where rows differ or it is not a number.
bool SingleCount(const Batch &batch, int64_t *count) {
  if (!batch.single || !IsLanes(batch) || batch.someMissing) {
    return false;
  }
  *count = DecimalToInt(LaneNumber(batch, 0));
  return true;
}

template <class Part>
void EachText(const BatchRun &run, Batch *frame, Part part) {
  const Batch &texts = frame[1];
  auto *result = OwnElements<TextSlice>(*frame, BatchForm::Texts);
  for (uint32_t row = 0; row < RowsOf(run, texts); ++row) {
    result[row] = part(TextAt(texts, row));
  }
  frame->single = texts.single;
  frame->ascii = true;
}

TextSlice PartOf(const TextSlice &text, int64_t from, int64_t length) {
  const int64_t begin = std::min<int64_t>(from, text.length);
  const int64_t most = text.length - begin;
  return {text.bytes + begin, static_cast<uint32_t>(std::clamp<int64_t>(length, 0, most))};
}

TextSlice WithoutLeading(TextSlice text) {
  while (text.length > 0 && *text.bytes == ' ') {
    ++text.bytes;
    --text.length;
  }
  return text;
}

TextSlice WithoutTrailing(TextSlice text) {
  while (text.length > 0 && text.bytes[text.length - 1] == ' ') {
    --text.length;
  }
  return text;
}

// Whether the call has these arguments, the first of them ASCII.
bool TakesTexts(const BatchRun &run, const Batch *frame, uint32_t count, uint32_t wanted) {
  return count == wanted && IsAsciiBatch(run, frame[1]);
}

bool ChangeCase(BatchRun &run, Batch *frame, uint32_t count, char first) {
  if (!TakesTexts(run, frame, count, 1)) {
    return false;
  }
  uint64_t total = 0;
  for (uint32_t row = 0; row < RowsOf(run, frame[1]); ++row) {
    total += TextAt(frame[1], row).length;
  }
  char *target = ArenaTexts(run, total);
  if (target == nullptr) {
    return false;
  }
  EachText(run, frame, [&](const TextSlice &text) {
    const TextSlice changed = {target, text.length};
    for (uint32_t i = 0; i < text.length; ++i) {
      const bool letter = static_cast<uint8_t>(text.bytes[i] - first) < 26;
      *target++ = static_cast<char>(text.bytes[i] ^ (letter ? 'a' - 'A' : 0));
    }
    return changed;
  });
  return true;
}

}  // namespace

bool BatchStrUpper(BatchRun &run, Batch *frame, uint32_t count) {
  return ChangeCase(run, frame, count, 'a');
}

bool BatchStrLower(BatchRun &run, Batch *frame, uint32_t count) {
  return ChangeCase(run, frame, count, 'A');
}

bool BatchStrLeft(BatchRun &run, Batch *frame, uint32_t count) {
  int64_t n = 0;
  if (!TakesTexts(run, frame, count, 2) || !SingleCount(frame[2], &n)) {
    return false;
  }
  EachText(run, frame, [=](const TextSlice &text) { return PartOf(text, 0, n); });
  return true;
}

bool BatchStrRight(BatchRun &run, Batch *frame, uint32_t count) {
  int64_t n = 0;
  if (!TakesTexts(run, frame, count, 2) || !SingleCount(frame[2], &n)) {
    return false;
  }
  EachText(run, frame, [=](const TextSlice &text) {
    const int64_t from = std::max<int64_t>(int64_t{text.length} - std::max<int64_t>(n, 0), 0);
    return PartOf(text, from, text.length);
  });
  return true;
}

bool BatchStrMid(BatchRun &run, Batch *frame, uint32_t count) {
  int64_t position = 0;
  int64_t n = 0;
  if (!TakesTexts(run, frame, count, 3) || !SingleCount(frame[2], &position) ||
      !SingleCount(frame[3], &n)) {
    return false;
  }
  EachText(run, frame, [=](const TextSlice &text) {
    return position < 0 ? PartOf(text, 0, 0) : PartOf(text, position, n);
  });
  return true;
}

bool BatchStrTrim(BatchRun &run, Batch *frame, uint32_t count) {
  if (!TakesTexts(run, frame, count, 1)) {
    return false;
  }
  EachText(run, frame, [](const TextSlice &text) { return WithoutTrailing(WithoutLeading(text)); });
  return true;
}

bool BatchStrLTrim(BatchRun &run, Batch *frame, uint32_t count) {
  if (!TakesTexts(run, frame, count, 1)) {
    return false;
  }
  EachText(run, frame, [](const TextSlice &text) { return WithoutLeading(text); });
  return true;
}

bool BatchStrRTrim(BatchRun &run, Batch *frame, uint32_t count) {
  if (!TakesTexts(run, frame, count, 1)) {
    return false;
  }
  EachText(run, frame, [](const TextSlice &text) { return WithoutTrailing(text); });
  return true;
}

bool BatchStrLength(BatchRun &run, Batch *frame, uint32_t count) {
  if (!TakesTexts(run, frame, count, 1)) {
    return false;
  }
  const Batch &texts = frame[1];
  const uint32_t rows = RowsOf(run, texts);
  auto *lengths = static_cast<int64_t *>(frame->own);
  for (uint32_t row = 0; row < rows; ++row) {
    lengths[row] = TextAt(texts, row).length;
  }
  SetNarrowLanes(frame, rows, 0);
  frame->someMissing = false;
  frame->single = texts.single;
  return true;
}
