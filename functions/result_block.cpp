#include "functions/result_block.h"

#include <algorithm>
#include <cstring>

#include "functions/arguments.h"
#include "orli11.h"
#include "platform/text.h"

namespace {

// Whether a text of `length` bytes begins before the end of a block and ends after its start.
bool Overlap(const void *block, size_t size, const void *text, size_t length) {
  const auto end = reinterpret_cast<uintptr_t>(text) + length - 1;
  return end - reinterpret_cast<uintptr_t>(block) < size + length - 1;
}

template <class Word>
Word Load(const char *bytes) {
  Word word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

// A word of 1 to 7 bytes and zeros after them.
uint64_t ShortWord(const char *bytes, size_t length) {
  if (length >= 4) {
    return Load<uint32_t>(bytes) | uint64_t{Load<uint32_t>(bytes + length - 4)} << (length - 4) * 8;
  }
  const size_t middle = length / 2;
  return Load<uint8_t>(bytes) | uint64_t{Load<uint8_t>(bytes + middle)} << middle * 8 |
         uint64_t{Load<uint8_t>(bytes + length - 1)} << (length - 1) * 8;
}

// Copies 1 or more bytes, with zeros after them up to a whole word. The evaluator reads the block
// right away and in words; words that were stored in other pieces would stall it.
void CopyInWords(char *target, const char *source, size_t length) {
  size_t at = 0;
  for (; at + 8 <= length; at += 8) {
    const auto word = Load<uint64_t>(source + at);
    std::memcpy(target + at, &word, sizeof word);
  }
  const size_t rest = length - at;
  if (rest != 0) {
    const uint64_t word =
        at != 0 ? Load<uint64_t>(source + length - 8) >> (8 - rest) * 8 : ShortWord(source, length);
    std::memcpy(target + at, &word, sizeof word);
  }
}

// Copies a terminated text that is long or in the block itself. One that is longer than the block
// cannot be in it, so it outlives the resize.
[[gnu::noinline]] int32_t MoveToResult(void **result, int32_t resultSize, const char *text,
                                       size_t needed) {
  char *target =
      needed <= INT32_MAX ? TextResult(result, resultSize, static_cast<int64_t>(needed)) : nullptr;
  if (target == nullptr) {
    return 0;
  }
  std::memmove(target, text, needed);
  return 1;
}

}  // namespace

int32_t FUNResizeResult(void **result, uint32_t newSize) {
  void *block = *result == nullptr ? WRENMemAlloc(newSize) : WRENMemRealloc(*result, newSize);
  if (block == nullptr) {
    return 0;
  }
  *result = block;
  return 1;
}

int32_t FUNCharBytes(int32_t n) {
  const int64_t most = WRENIsDoubleByte() != 0 ? 2 : ActiveCodePage() == kCodePageUtf8 ? 4 : 1;
  return static_cast<int32_t>(std::clamp<int64_t>(n * most, INT32_MIN, INT32_MAX));
}

NumberValue *NumberResult(void **result, int32_t resultSize) {
  return result != nullptr && resultSize >= static_cast<int32_t>(sizeof(NumberValue))
             ? static_cast<NumberValue *>(*result)
             : nullptr;
}

bool SelectNumber(int32_t resultSize, void **result, void *const *args) {
  NumberValue *target = NumberResult(result, resultSize);
  if (target == nullptr) {
    return false;
  }
  *target = NumberArgument(args, SelectedArgument(args));
  return true;
}

char *TextResult(void **result, int32_t resultSize, int64_t needed) {
  if (result == nullptr || needed > INT32_MAX) {
    return nullptr;
  }
  needed = std::max<int64_t>(needed, 1);  // the terminator of an empty string
  // A routine that resized the block before left `resultSize` as it was: a block never shrinks.
  if (*result == nullptr || (needed > resultSize && needed > WRENMemSize(*result))) {
    if (FUNResizeResult(result, static_cast<uint32_t>(needed)) == 0) {
      return nullptr;
    }
  }
  return static_cast<char *>(*result);
}

int32_t FUNStrVarResult(void **result, int32_t resultSize, const char *text) {
  const char *source = text != nullptr ? text : "";
  const size_t needed = std::strlen(source) + 1;
  if (result != nullptr && *result != nullptr && resultSize > 0 &&
      needed + 7 <= static_cast<size_t>(resultSize) &&
      !Overlap(*result, static_cast<size_t>(resultSize), source, needed)) [[likely]] {
    CopyInWords(static_cast<char *>(*result), source, needed);
    return 1;
  }
  return MoveToResult(result, resultSize, source, needed);
}
