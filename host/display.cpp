#include "host/display.h"

#include <algorithm>
#include <clocale>
#include <cstring>
#include <cwchar>

namespace {

constexpr std::string_view kDots = "...";
constexpr size_t kNameWidth = 200;

// The picture of a control character: U+2400 and up, U+2421 for DEL.
std::string ControlPicture(wchar_t code) {
  const unsigned place = code == 0x7F ? 0x21U : static_cast<unsigned>(code);
  return {'\xE2', '\x90', static_cast<char>(0x80U + place)};
}

}  // namespace

void DisplayStart() {
  // The widths of characters come from this locale, which the C library always provides.
  static_cast<void>(std::setlocale(LC_CTYPE, "C.UTF-8"));
}

bool IsUtf8(std::string_view text) {
  constexpr uint64_t kHighBits = UINT64_C(0x8080808080808080);
  while (!text.empty()) {
    // Most bytes are ASCII.
    uint64_t word = kHighBits;
    if (text.size() >= sizeof word) {
      std::memcpy(&word, text.data(), sizeof word);
    }
    const bool ascii = static_cast<unsigned char>(text.front()) < 0x80;
    const size_t bytes = (word & kHighBits) == 0 ? sizeof word
                         : ascii                 ? 1
                                                 : DisplayCharacterBytes(text);
    if (bytes == 0) {
      return false;
    }
    text.remove_prefix(bytes);
  }
  return true;
}

DisplayCharacter DisplayNext(std::string_view text) {
  DisplayCharacter result;
  wchar_t code = 0;
  std::mbstate_t state = {};
  const size_t bytes = std::mbrtowc(&code, text.data(), text.size(), &state);
  if (bytes > text.size()) {  // incomplete or wrong
    result.bytes = 1;
    result.width = 1;
    result.shown = kReplacement;
    return result;
  }
  result.bytes = bytes == 0 ? 1 : bytes;
  const int width = wcwidth(code);
  if (code < 0x20 || code == 0x7F) {
    result.shown = ControlPicture(code);
    result.width = 1;
  } else if (width < 0) {
    result.shown = kReplacement;
    result.width = 1;
  } else {
    result.shown = text.substr(0, bytes);
    result.width = static_cast<size_t>(width);
  }
  return result;
}

size_t DisplayCharacterBytes(std::string_view text) {
  const auto byteAt = [text](size_t place) -> unsigned {
    return place < text.size() ? static_cast<unsigned char>(text[place]) : 0;
  };
  const unsigned first = byteAt(0);
  if (first < 0x80) {
    return 1;
  }
  if (first < 0xC2 || first > 0xF4) {
    return 0;
  }
  // The check of the second byte also excludes overlong forms, surrogates, and code points beyond
  // U+10FFFF.
  const unsigned least = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
  const unsigned most = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
  const size_t bytes = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  bool good = byteAt(1) >= least && byteAt(1) <= most;
  for (size_t i = 2; i < bytes; ++i) {
    good = good && (byteAt(i) & 0xC0U) == 0x80;
  }
  return good ? bytes : 0;
}

std::string DisplayLine(std::string_view text, size_t most, size_t &width) {
  std::string line;
  std::string cut;  // the prefix that can be shown with dots after it
  size_t cutWidth = 0;
  width = 0;
  while (!text.empty()) {
    const DisplayCharacter next = DisplayNext(text);
    if (width + next.width > most) {
      width = cutWidth + kDots.size();
      return cut.append(kDots);
    }
    line += next.shown;
    width += next.width;
    if (width + kDots.size() <= most) {
      cut = line;
      cutWidth = width;
    }
    text.remove_prefix(next.bytes);
  }
  return line;
}

std::string DisplayName(std::string_view text) {
  size_t width = 0;
  return DisplayLine(text, kNameWidth, width);
}
