#include "platform/text.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "platform/collation.h"
#include "wreni11.h"

namespace {

const char *TextOrEmpty(const char *text) {
  return text == nullptr ? "" : text;
}

// -1, 0 or 1 by the bytes.
int32_t CompareBytes(const char *left, const char *right) {
  const int order = std::strcmp(left, right);
  return order < 0 ? -1 : order > 0 ? 1 : 0;
}

}  // namespace

int32_t lstrcmpA(const char *left, const char *right) {
  left = TextOrEmpty(left);
  right = TextOrEmpty(right);
  const int32_t bytes = CompareBytes(left, right);
  if (bytes == 0) {
    return 0;
  }
  const int32_t order = CollateTexts(left, right, ActiveCodePage());
  return order != 0 ? order : bytes;
}

int32_t lstrcmpiA(const char *left, const char *right) {
  left = TextOrEmpty(left);
  right = TextOrEmpty(right);
  if (WRENStrEqualNoCase(left, right) != 0) {
    return 0;
  }
  // Case matters only between equal letters, and those were found equal above.
  return CollateTexts(left, right, ActiveCodePage());
}

char *lstrcpyA(char *target, const char *source) {
  if (target != nullptr) {
    source = TextOrEmpty(source);
    std::memcpy(target, source, std::strlen(source) + 1);
  }
  return target;
}

char *lstrcatA(char *target, const char *source) {
  if (target != nullptr) {
    lstrcpyA(target + std::strlen(target), source);
  }
  return target;
}

int32_t lstrlenA(const char *text) {
  return WRENStrLen(text);
}

char *CharNextA(const char *text) {
  return WRENStrAdvance(text, 1);
}

uint32_t CharUpperBuffA(char *text, uint32_t length) {
  if (text == nullptr) {
    return 0;
  }
  uint32_t at = 0;
  while (at < length) {
    // One character at a time: the buffer has no terminator, only a length. A character that the
    // end cuts through is treated as bytes without case.
    char character[kLongestChar + 1] = {};
    std::copy_n(text + at, std::min<size_t>(kLongestChar, length - at), character);
    const auto bytes = std::max<std::ptrdiff_t>(1, CharNextA(character) - character);
    character[bytes] = 0;
    WRENStrUpper(character);
    std::copy_n(character, bytes, text + at);
    at += static_cast<uint32_t>(bytes);
  }
  return length;
}

int32_t IsCharAlphaA(char byte) {
  const auto value = static_cast<uint8_t>(byte);
  if (value < 0x80) {
    return (value >= 'A' && value <= 'Z') || (value >= 'a' && value <= 'z') ? 1 : 0;
  }
  return WRENIsDigit(value);  // the name bytes from 128 up are letters
}

int32_t ActiveCodePage() {
  if (WRENIsDoubleByte() != 0) {
    return kCodePage932;
  }
  return WRENIsLeadByteAt("\xC3\xA9") != 0 ? kCodePageUtf8
                                           : 1252;  // two bytes are one character in UTF-8
}

int32_t CharacterBytes(uint8_t lead) {
  const int32_t page = ActiveCodePage();
  if (page == kCodePage932) {
    return WRENIsAlpha(lead) != 0 ? 2 : 1;
  }
  if (page != kCodePageUtf8 || lead < 0xC2 || lead > 0xF4) {
    return 1;
  }
  return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

bool SameText(const char *left, const char *right) {
  return std::strcmp(TextOrEmpty(left), TextOrEmpty(right)) == 0;
}
