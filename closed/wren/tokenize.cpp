// Splits strings into tokens between delimiters.
#include <cstring>

#include "closed/wren/codepage.h"
#include "closed/wren/text_walk.h"
#include "wreni11.h"

namespace {

// A set of bytes, one bit each.
struct ByteSet {
  uint64_t words[4];
};

ByteSet SetOf(const char *bytes) {
  ByteSet set = {};
  for (; *bytes != 0; ++bytes) {
    const auto byte = static_cast<uint8_t>(*bytes);
    set.words[byte / 64] |= uint64_t{1} << (byte % 64);
  }
  return set;
}

bool IsIn(const ByteSet &set, char byte) {
  const auto value = static_cast<uint8_t>(byte);
  return (set.words[value / 64] >> (value % 64) & 1) != 0;
}

// The end of the characters from `text` on that are single bytes of the set.
const char *SkipBytes(const char *text, const ByteSet &set, CodePage page) {
  while (*text != 0 && IsIn(set, *text) && CharBytes(text, page) == 1) {
    ++text;
  }
  return text;
}

// The end of the run that the quote at `text` opens, the closing quote included; the terminator
// when nothing closes it.
const char *SkipQuoted(const char *text, CodePage page) {
  const char quote = *text++;
  while (*text != 0) {
    const size_t bytes = CharBytes(text, page);
    const bool closing = bytes == 1 && *text == quote;
    text += bytes;
    if (closing) {
      break;
    }
  }
  return text;
}

const char *SkipToken(const char *text, const ByteSet &ending, char quote, CodePage page) {
  while (*text != 0) {
    const size_t bytes = CharBytes(text, page);
    if (bytes == 1 && *text == quote) {
      text = SkipQuoted(text, page);
      continue;
    }
    if (bytes == 1 && IsIn(ending, *text)) {
      break;
    }
    text += bytes;
  }
  return text;
}

}  // namespace

extern "C" int32_t WRENStrTokenize(char *token, const char *text, const char *leading,
                                   const char *ending, int32_t /*zero*/, int32_t quote,
                                   int32_t /*zero2*/) {
  text = TextOrEmpty(text);
  const CodePage page = CodePageNow();
  const char *start = SkipBytes(text, SetOf(TextOrEmpty(leading)), page);
  const char *end = SkipToken(start, SetOf(TextOrEmpty(ending)), static_cast<char>(quote), page);
  if (token != nullptr) {
    std::memcpy(token, start, static_cast<size_t>(end - start));
    token[end - start] = 0;
  }
  if (end == text && *end != 0) {
    ++end;  // a byte that ends tokens but may not start one: the walk still advances
  }
  return CountResult(static_cast<size_t>(end - text));
}
