#include "functions/result_block.h"

#include <algorithm>
#include <cstring>

#include "orli11.h"
#include "platform/text.h"

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

char *TextResult(void **result, int32_t resultSize, int64_t needed) {
  if (result == nullptr || needed > INT32_MAX) {
    return nullptr;
  }
  needed = std::max<int64_t>(needed, 1);  // the terminator of an empty text
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
  if (resultSize > 0 && needed <= static_cast<size_t>(resultSize) && result != nullptr &&
      *result != nullptr) [[likely]] {
    std::memmove(*result, source, needed);  // the text may lie in the block
    return 1;
  }
  // A text that is longer than its block cannot lie in it, so the source outlives the resize.
  char *target =
      needed <= INT32_MAX ? TextResult(result, resultSize, static_cast<int64_t>(needed)) : nullptr;
  if (target == nullptr) {
    return 0;
  }
  std::memmove(target, source, needed);
  return 1;
}
