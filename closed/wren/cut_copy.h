// How exported routines return a string that may not fit the caller's buffer.
#ifndef ORLI11_CLOSED_WREN_CUT_COPY_H
#define ORLI11_CLOSED_WREN_CUT_COPY_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Copies `length` bytes to `buffer`, truncated to `size` bytes with the terminator; nothing is
// written where `buffer` is null or `size` is not above 0. Returns `length`.
inline int32_t CutCopy(const char *text, size_t length, int32_t size, char *buffer) {
  if (buffer != nullptr && size > 0) {
    const size_t copied = std::min(length, static_cast<size_t>(size) - 1);
    std::memcpy(buffer, text, copied);
    buffer[copied] = '\0';
  }
  return static_cast<int32_t>(length);
}

#endif
