#include "language/scan_checks.h"

#include "closed/wren/utf8.h"
#include "platform/name_character.h"
#include "platform/text.h"
#include "wreni11.h"

namespace {

uint8_t ByteAt(const char *text, int32_t index) {
  return static_cast<uint8_t>(text[index]);
}

bool IsTrailByte(uint8_t byte) {
  return (byte >= 0x40 && byte <= 0x7E) || (byte >= 0x80 && byte <= 0xFC);
}

bool IsAsciiNameByte(uint8_t byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9') || byte == '@' || byte == '#' || byte == '$' || byte == '_' ||
         byte == '.';
}

// The result for a name whose bytes are valid up to `stop`.
int32_t ResultAtStop(const char *text, int32_t length, int32_t stop, bool call, bool doubleByte) {
  if (call && (text[stop] == ' ' || text[stop] == '(')) {
    int32_t open = stop;
    while (open < length && text[open] == ' ') {
      ++open;
    }
    return open == length - 1 && text[open] == '(' ? kNameGood : stop;
  }
  // The automaton reads a letter and a bar as a pair where "||" follows the letter.
  const bool strayBar = !doubleByte && stop == length - 1 && text[stop] == '|';
  return strayBar ? kNameRefused : stop;
}

}  // namespace

int32_t CheckName(const char *text, int32_t length, bool call) {
  const bool doubleByte = WRENIsDoubleByte() != 0;
  const bool utf8 = ActiveCodePage() == kCodePageUtf8;
  bool quoted = false;
  int32_t at = 0;
  while (at < length) {
    const uint8_t byte = ByteAt(text, at);
    if (byte == '"' || byte == '`') {
      quoted = !quoted;
    } else if (IsAsciiNameByte(byte)) {
      // Valid in every code page.
    } else if (doubleByte && WRENIsAlpha(byte) != 0) {
      if (at == length - 1) {
        return at;
      }
      ++at;
      if (!IsTrailByte(ByteAt(text, at))) {
        return at;
      }
    } else if (utf8 && byte >= 0x80) {
      // Bytes that are not a valid sequence are taken one by one, as characters without a meaning.
      uint32_t codePoint = 0;
      const size_t bytes = DecodeUtf8(text + at, &codePoint);
      if (bytes != 0 && !quoted && !IsNameCharacter(codePoint)) {
        return at;
      }
      at += bytes != 0 ? static_cast<int32_t>(bytes) - 1 : 0;
    } else {
      const bool known = (doubleByte ? WRENIsDigit(byte) : IsCharAlphaA(text[at])) != 0;
      if (!known && !quoted) {
        return ResultAtStop(text, length, at, call, doubleByte);
      }
    }
    ++at;
  }
  return kNameGood;
}

bool IsWholeLiteral(const char *text, int32_t length) {
  if (WRENIsDoubleByte() == 0) {
    return true;
  }
  const int32_t last = length - 1;
  int32_t at = 1;
  while (at < length) {
    const uint8_t byte = ByteAt(text, at);
    const bool escaped = at < last && (byte == '\'' || byte == '\\') && text[at + 1] == '\'';
    if (escaped || WRENIsAlpha(byte) != 0) {
      at += 2;
    } else if (byte == '\'') {
      return at == last;
    } else {
      ++at;
    }
  }
  return false;
}
