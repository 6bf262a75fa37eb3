#include "platform/text.h"

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

char *CharNextA(const char *text) {
  return WRENStrAdvance(text, 1);
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
