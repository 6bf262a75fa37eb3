// The active code page and what a character is in it.
//
//   1252    every byte is a character
//   932     a lead byte (81-9F, E0-FC) and any byte after it are one character, every other byte
//           is one of its own
//   65001   UTF-8: a valid sequence is one character; a byte that starts none is one of its own
//
// A lead byte before the terminator is a character of one byte, so no walk by characters steps over
// the terminator.
#ifndef ORLI11_CLOSED_WREN_CODEPAGE_H
#define ORLI11_CLOSED_WREN_CODEPAGE_H

#include <cstddef>
#include <cstdint>

enum class CodePage : int32_t { Western = 1252, Japanese = 932, Utf8 = 65001 };

// The active code page of the process.
CodePage CodePageNow();

// True for the lead bytes of code page 932.
constexpr bool IsLeadByte932(uint8_t byte) {
  return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}

// The code point of a byte of code page 1252; a byte without a character is its own code.
uint32_t CodePointOf1252(uint8_t byte);

// Bytes of the character at the address; 0 at the terminator.
size_t LongCharBytes(const char *text, CodePage page);
inline size_t CharBytes(const char *text, CodePage page) {
  const auto byte = static_cast<uint8_t>(*text);
  if (byte < 0x80) {
    return byte != 0 ? 1 : 0;
  }
  return page == CodePage::Western ? 1 : LongCharBytes(text, page);
}

// True when names may contain the byte as a character of its own: a letter or digit, in 932 a
// half-width katakana, in UTF-8 every byte from 128 up.
bool IsNameByte(uint8_t byte, CodePage page);

#endif
