#include "closed/wren/codepage.h"

#include <atomic>

#include "closed/wren/utf8.h"
#include "wreni11.h"

namespace {

constinit std::atomic<CodePage> activePage{CodePage::Western};

// Code points of the bytes 80 to 9F of code page 1252; 0 where there is no character.
constexpr uint16_t kHigh1252[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  // 80: € ‚ƒ„…†‡
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,       // 88: ˆ‰Š‹Œ Ž
    0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  // 90:  ‘’“”•–—
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178,  // 98: ˜™š›œ žŸ
};

// The letters of code page 1252 from 80 up, as ranges.
struct ByteRange {
  uint8_t first, last;
};
constexpr ByteRange kLetters1252[] = {
    {0x83, 0x83}, {0x8A, 0x8A}, {0x8C, 0x8C}, {0x8E, 0x8E}, {0x9A, 0x9A},  // ƒ Š Œ Ž š
    {0x9C, 0x9C}, {0x9E, 0x9F}, {0xAA, 0xAA}, {0xB5, 0xB5}, {0xBA, 0xBA},  // œ žŸ ª µ º
    {0xC0, 0xD6}, {0xD8, 0xF6}, {0xF8, 0xFF},                              // all but × and ÷
};

bool IsAsciiNameByte(uint8_t byte) {
  return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= 'a' && byte <= 'z');
}

bool IsHighLetter1252(uint8_t byte) {
  for (const ByteRange range : kLetters1252) {
    if (byte >= range.first && byte <= range.last) {
      return true;
    }
  }
  return false;
}

uint8_t ByteAt(const char *text, size_t index) {
  return static_cast<uint8_t>(text[index]);
}

// A byte as a caller passes it, from 0 to 255 or as a signed char; -1 for any other number.
int32_t ByteValue(int32_t byte) {
  if (byte < -128 || byte > 255) {
    return -1;
  }
  return byte & 0xFF;
}

}  // namespace

CodePage CodePageNow() {
  return activePage.load(std::memory_order_relaxed);
}

uint32_t CodePointOf1252(uint8_t byte) {
  if (byte >= 0x80 && byte <= 0x9F && kHigh1252[byte - 0x80] != 0) {
    return kHigh1252[byte - 0x80];
  }
  return byte;
}

size_t LongCharBytes(const char *text, CodePage page) {
  if (page == CodePage::Japanese) {
    return IsLeadByte932(ByteAt(text, 0)) && text[1] != 0 ? 2 : 1;
  }
  uint32_t codePoint = 0;
  const size_t length = DecodeUtf8(text, &codePoint);
  return length == 0 ? 1 : length;
}

bool IsNameByte(uint8_t byte, CodePage page) {
  if (byte < 0x80) {
    return IsAsciiNameByte(byte);
  }
  switch (page) {
    case CodePage::Western:
      return IsHighLetter1252(byte);
    case CodePage::Japanese:
      return byte >= 0xA6 && byte <= 0xDF;
    case CodePage::Utf8:
      return true;
  }
  return false;
}

extern "C" int32_t WRENSetCodePage(int32_t codePage) {
  const auto page = static_cast<CodePage>(codePage);
  if (page != CodePage::Western && page != CodePage::Japanese && page != CodePage::Utf8) {
    return 0;
  }
  activePage.store(page, std::memory_order_relaxed);
  return 1;
}

extern "C" int32_t WRENIsDoubleByte(void) {
  return CodePageNow() == CodePage::Japanese ? 1 : 0;
}

extern "C" int32_t WRENIsLeadByteAt(const char *text) {
  return text != nullptr && CharBytes(text, CodePageNow()) > 1 ? 1 : 0;
}

extern "C" int32_t WRENIsAlpha(int32_t byte) {
  const int32_t value = ByteValue(byte);
  return value >= 0 && CodePageNow() == CodePage::Japanese &&
                 IsLeadByte932(static_cast<uint8_t>(value))
             ? 1
             : 0;
}

extern "C" int32_t WRENIsDigit(int32_t byte) {
  const int32_t value = ByteValue(byte);
  return value >= 0 && IsNameByte(static_cast<uint8_t>(value), CodePageNow()) ? 1 : 0;
}
