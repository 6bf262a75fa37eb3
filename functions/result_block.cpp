#include "functions/result_block.h"

#include <algorithm>
#include <cstring>

#include "orli11.h"
#include "platform/text.h"
#include "wreni11.h"

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

int32_t FUNStrVarResult(void **result, int32_t resultSize, const char *text) {
  if (result == nullptr) {
    return 0;
  }
  const char *source = text != nullptr ? text : "";
  const size_t needed = strlen(source) + 1;
  if (needed > UINT32_MAX) {
    return 0;
  }
  const bool fits = resultSize > 0 && needed <= static_cast<size_t>(resultSize);
  if (*result == nullptr || (!fits && needed > WRENMemSize(*result))) {
    // A text that is longer than its block cannot lie in it, so the source outlives the resize.
    if (FUNResizeResult(result, static_cast<uint32_t>(needed)) == 0) {
      return 0;
    }
  }
  memmove(*result, source, needed);  // the text may lie in the block
  return 1;
}
