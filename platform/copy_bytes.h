// Copies of bytes that are usually few.
#ifndef ORLI11_PLATFORM_COPY_BYTES_H
#define ORLI11_PLATFORM_COPY_BYTES_H

#include <cstdint>
#include <cstring>

// Copies two words that cover the bytes, and may overlap.
template <class Word>
inline void CopyEnds(char *target, const char *source, uint32_t length) {
  Word first = 0;
  Word last = 0;
  std::memcpy(&first, source, sizeof first);
  std::memcpy(&last, source + length - sizeof last, sizeof last);
  std::memcpy(target, &first, sizeof first);
  std::memcpy(target + length - sizeof last, &last, sizeof last);
}

// memcpy for copies that are usually short.
inline void CopyBytes(char *target, const char *source, uint32_t length) {
  if (length > 16) {
    std::memcpy(target, source, length);
  } else if (length >= 8) {
    CopyEnds<uint64_t>(target, source, length);
  } else if (length >= 4) {
    CopyEnds<uint32_t>(target, source, length);
  } else {
    for (uint32_t i = 0; i < length; ++i) {
      target[i] = source[i];
    }
  }
}

#endif
