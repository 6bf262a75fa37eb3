// Routines that examine strings, and routines that change them in place.
#include <cstring>

#include "closed/wren/casemap.h"
#include "closed/wren/codepage.h"
#include "closed/wren/text_walk.h"
#include "wreni11.h"

namespace {

enum class Case { Upper, Lower };

void ChangeCase(char *text, Case wanted) {
  if (text == nullptr) {
    return;
  }
  const CodePage page = CodePageNow();
  for (TextChar next = CharAt(text, page); next.bytes != 0; next = CharAt(text, page)) {
    const uint32_t code =
        wanted == Case::Upper ? UpperCode(next.code, page) : LowerCode(next.code, page);
    if (code != next.code) {
      WriteChar(text, code, page);
    }
    text += next.bytes;
  }
}

}  // namespace

extern "C" int32_t WRENStrLen(const char *text) {
  return text == nullptr ? 0 : CountResult(std::strlen(text));
}

extern "C" int32_t WRENStrChars(const char *text) {
  return text == nullptr ? 0 : CountResult(CharCount(text, CodePageNow()));
}

extern "C" char *WRENStrAdvance(const char *text, int32_t n) {
  if (text == nullptr) {
    return nullptr;
  }
  return const_cast<char *>(text + BytesOfChars(text, n, CodePageNow()));
}

extern "C" char *WRENStrChr(const char *text, int32_t byte) {
  if (text == nullptr || byte < -128 || byte > 255) {
    return nullptr;
  }
  const CodePage page = CodePageNow();
  const auto wanted = static_cast<char>(byte);
  for (size_t bytes = CharBytes(text, page); bytes != 0; bytes = CharBytes(text, page)) {
    if (bytes == 1 && *text == wanted) {
      return const_cast<char *>(text);
    }
    text += bytes;
  }
  return nullptr;
}

extern "C" char *WRENStrSkipBlanks(const char *text) {
  if (text == nullptr) {
    return nullptr;
  }
  return const_cast<char *>(text + LeadingBlanks(text));
}

extern "C" int32_t WRENStrHasPrefix(const char *text, const char *prefix, int32_t n) {
  text = TextOrEmpty(text);
  prefix = TextOrEmpty(prefix);
  const CodePage page = CodePageNow();
  const size_t bytes = BytesOfChars(prefix, n, page);
  // Both lengths are needed: a lead byte at the end of the prefix may be half a character of the
  // text.
  return BytesOfChars(text, n, page) == bytes && std::memcmp(text, prefix, bytes) == 0 ? 1 : 0;
}

extern "C" int32_t WRENStrEqualNoCase(const char *left, const char *right) {
  left = TextOrEmpty(left);
  right = TextOrEmpty(right);
  const CodePage page = CodePageNow();
  for (;;) {
    const TextChar one = CharAt(left, page);
    const TextChar other = CharAt(right, page);
    if (one.code != other.code && CaselessCode(one.code, page) != CaselessCode(other.code, page)) {
      return 0;
    }
    if (one.bytes == 0) {
      return 1;
    }
    left += one.bytes;
    right += other.bytes;
  }
}

extern "C" void WRENStrFold(char *text) {
  if (text != nullptr) {
    WRENStrTrim(text, text);
  }
}

extern "C" void WRENStrUpper(char *text) {
  ChangeCase(text, Case::Upper);
}

extern "C" void WRENStrLower(char *text) {
  ChangeCase(text, Case::Lower);
}
