// UTF-8 sequences and the code points that they encode.
#ifndef ORLI11_CLOSED_WREN_UTF8_H
#define ORLI11_CLOSED_WREN_UTF8_H

#include <cstddef>
#include <cstdint>

// Decodes the sequence at `text`, which is terminated. Returns its bytes, 1 to 4, with its code
// point; 0, with the code point unchanged, when there is no valid sequence. Overlong forms,
// surrogates and numbers above 10FFFF are not valid.
//
// The valid sequences are those of the Unicode standard's table of UTF-8 byte sequences: the first
// byte determines the length, and the bounds of the second one exclude overlong forms, surrogates
// and numbers that are too large.
inline size_t DecodeUtf8(const char *text, uint32_t *codePoint) {
  const auto byteAt = [text](size_t index) { return static_cast<uint8_t>(text[index]); };
  const uint8_t first = byteAt(0);
  if (first < 0x80) {
    *codePoint = first;
    return 1;
  }
  if (first < 0xC2 || first > 0xF4) {
    return 0;
  }
  const uint8_t second = byteAt(1);
  const uint8_t lowest = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
  const uint8_t highest = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
  if (second < lowest || second > highest) {
    return 0;
  }
  const size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  uint32_t point = (first & (0x7FU >> length)) << 6 | (second & 0x3FU);
  for (size_t index = 2; index < length; ++index) {
    const uint8_t next = byteAt(index);  // the byte before it is not the terminator
    if ((next & 0xC0) != 0x80) {
      return 0;
    }
    point = point << 6 | (next & 0x3FU);
  }
  *codePoint = point;
  return length;
}

// Writes the sequence of a code point up to 10FFFF that is not a surrogate; returns its bytes, 1
// to 4.
inline size_t EncodeUtf8(uint32_t codePoint, char *target) {
  constexpr uint8_t kMarks[5] = {0, 0x00, 0xC0, 0xE0, 0xF0};
  const size_t length = codePoint < 0x80 ? 1 : codePoint < 0x800 ? 2 : codePoint < 0x10000 ? 3 : 4;
  for (size_t index = length - 1; index > 0; --index) {
    target[index] = static_cast<char>(0x80 | (codePoint & 0x3F));
    codePoint >>= 6;
  }
  target[0] = static_cast<char>(kMarks[length] | codePoint);
  return length;
}

#endif
