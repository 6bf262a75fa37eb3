#include "text_model.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "wreni11.h"

CodePageScope::CodePageScope(int32_t page) {
  WRENSetCodePage(page);
}

CodePageScope::~CodePageScope() {
  WRENSetCodePage(1252);
}

std::string Utf8Of(uint32_t codePoint) {
  constexpr uint32_t kRoom[] = {0x80, 0x20, 0x10, 0x08};  // what the first byte can hold
  constexpr uint32_t kMark[] = {0, 0xC0, 0xE0, 0xF0};
  std::string tail;
  for (; codePoint >= kRoom[tail.size()]; codePoint /= 64) {
    tail.insert(tail.begin(), static_cast<char>(0x80 + codePoint % 64));
  }
  return static_cast<char>(kMark[tail.size()] + codePoint) + tail;
}

namespace {

// Length of the character at `at`: a longer form counts when re-encoding what its bits say gives
// the same bytes, and it is not a surrogate.
size_t Utf8Length(const std::string &text, size_t at) {
  for (size_t length = 4; length > 1; --length) {
    const std::string bytes = text.substr(at, length);
    uint32_t code = static_cast<uint8_t>(bytes[0]) & (0x7FU >> length);
    for (size_t index = 1; index < bytes.size(); ++index) {
      code = code * 64 + (static_cast<uint8_t>(bytes[index]) & 0x3FU);
    }
    if (code < 0x110000 && code / 0x800 != 0xD800 / 0x800 && Utf8Of(code) == bytes) {
      return length;
    }
  }
  return 1;
}

}  // namespace

Chars SplitChars(const std::string &text, int32_t page) {
  Chars chars;
  for (size_t at = 0; at < text.size(); at += chars.back().size()) {
    const auto byte = static_cast<uint8_t>(text[at]);
    size_t length = 1;
    if (page == 932) {
      length = (byte > 0x80 && byte < 0xA0) || (byte > 0xDF && byte < 0xFD) ? 2 : 1;
    } else if (page == 65001) {
      length = Utf8Length(text, at);
    }
    chars.push_back(text.substr(at, length));
  }
  return chars;
}

std::string JoinChars(const Chars &chars, int64_t first, int64_t count) {
  std::string text;
  for (int64_t index = 0; index < std::ssize(chars); ++index) {
    if (index >= first && index - first < count) {
      text += chars[static_cast<size_t>(index)];
    }
  }
  return text;
}

std::string RandomText(std::mt19937 &random, int32_t page, size_t most) {
  static const Chars kAny = {" ", " ", "a", "B", "z9", "'", "\"", "\"", ",", "|", "\t", "\\"};
  static const Chars kWestern = {"\xE9", "\xC9", "\xFF", "\x9F", "\x9A", "\xA0", "\x92", "\xDF"};
  static const Chars kJapanese = {"\x82\xA0", "\x82\x60", "\x82\x81", "\x83\x5C",
                                  "\x81 ",    "\x84\x40", "\x84\x80", "\xB1",
                                  "\xE0\"",   "\x81",     "\x81\x66"};
  static const Chars kUtf8 = {"\xC3\xA9",         "\xC3\x89", "\xE2\x80\x99", "\xE3\x81\x82",
                              "\xF0\x90\x90\xA8", "\xC3",     "\xE3\x81",     "\xA9",
                              "\xED\xA0\x80",     "\xC0\x80", "\xF4\x90\x80", "\xCF\x82"};
  const Chars &own = page == 1252 ? kWestern : page == 932 ? kJapanese : kUtf8;
  std::string text;
  for (size_t left = random() % (most + 1); left > 0; --left) {
    text += random() % 2 == 0 ? kAny[random() % kAny.size()] : own[random() % own.size()];
  }
  return text;
}

std::unique_ptr<char[]> ExactBuffer(size_t bytes) {
  auto buffer = std::make_unique<char[]>(bytes);
  std::memset(buffer.get(), 0x7E, bytes);
  return buffer;
}

std::string Shown(const std::string &text) {
  std::string shown = "\"";
  for (const char byte : text) {
    char part[8];
    const bool plain = byte >= 32 && byte < 127;
    std::snprintf(part, sizeof(part), plain ? "%c" : "\\x%02X", static_cast<uint8_t>(byte));
    shown += part;
  }
  return shown + "\"";
}

std::vector<std::string> LinesOf(const std::string &command) {
  std::vector<std::string> lines;
  char line[1000];
  FILE *pipe = popen(command.c_str(), "r");
  while (pipe != nullptr && std::fgets(line, sizeof(line), pipe) != nullptr) {
    lines.emplace_back(line);
  }
  EXPECT_TRUE(pipe != nullptr && pclose(pipe) == 0) << command;
  return lines;
}
