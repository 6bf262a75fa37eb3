// Routines that copy strings. None writes more than the source's bytes and the terminator;
// WRENStrReplace not more than both strings' bytes and the terminator.
#include <cstring>

#include "closed/wren/casemap.h"
#include "closed/wren/codepage.h"
#include "closed/wren/text_walk.h"
#include "wreni11.h"

namespace {

// Writes `bytes` bytes of `source` and the terminator; target and source may overlap.
void CopyBytes(char *target, const char *source, size_t bytes) {
  std::memmove(target, source, bytes);
  target[bytes] = 0;
}

// Bytes of the string without trailing blanks. Walks from the start, because a blank may be the
// second half of a character.
size_t BytesWithoutTail(const char *text, CodePage page) {
  size_t end = 0;
  size_t offset = 0;
  for (size_t bytes = CharBytes(text, page); bytes != 0; bytes = CharBytes(text + offset, page)) {
    const bool blank = bytes == 1 && text[offset] == ' ';
    offset += bytes;
    if (!blank) {
      end = offset;
    }
  }
  return end;
}

// A word is a run of letters and digits; an apostrophe or middle dot between two of them is part of
// it.
void CapitalizeWords(char *text, CodePage page) {
  bool inWord = false;
  for (TextChar next = CharAt(text, page); next.bytes != 0; next = CharAt(text, page)) {
    const bool wordChar = IsWordCode(next.code, page);
    if (wordChar) {
      const uint32_t code = inWord ? LowerCode(next.code, page) : TitleCode(next.code, page);
      if (code != next.code) {
        WriteChar(text, code, page);
      }
    }
    text += next.bytes;
    inWord = wordChar ||
             (inWord && JoinsLetters(next.code, page) && IsWordCode(CharAt(text, page).code, page));
  }
}

}  // namespace

extern "C" void WRENStrCopyChars(char *target, const char *source, int32_t n) {
  if (target != nullptr) {
    source = TextOrEmpty(source);
    CopyBytes(target, source, BytesOfChars(source, n, CodePageNow()));
  }
}

extern "C" void WRENStrLeft(char *target, const char *source, int32_t n) {
  WRENStrCopyChars(target, source, n);
}

extern "C" void WRENStrRight(char *target, const char *source, int32_t n) {
  if (target == nullptr) {
    return;
  }
  source = TextOrEmpty(source);
  const CodePage page = CodePageNow();
  const auto count = static_cast<int64_t>(CharCount(source, page));
  const char *start = source + BytesOfChars(source, count - (n < 0 ? 0 : n), page);
  CopyBytes(target, start, std::strlen(start));
}

extern "C" void WRENStrMid(char *target, const char *source, int32_t position, int32_t n) {
  if (target == nullptr) {
    return;
  }
  if (position < 0) {
    *target = 0;
    return;
  }
  source = TextOrEmpty(source);
  const CodePage page = CodePageNow();
  const char *start = source + BytesOfChars(source, position, page);
  CopyBytes(target, start, BytesOfChars(start, n, page));
}

extern "C" void WRENStrReplace(char *target, const char *source, const char *replacement,
                               int32_t position, int32_t n) {
  if (target == nullptr) {
    return;
  }
  source = TextOrEmpty(source);
  replacement = TextOrEmpty(replacement);
  const CodePage page = CodePageNow();
  const size_t head = BytesOfChars(source, position, page);
  const char *tail = source + head + BytesOfChars(source + head, n, page);
  const size_t middle = std::strlen(replacement);
  CopyBytes(target, source, head);
  CopyBytes(target + head, replacement, middle);
  CopyBytes(target + head + middle, tail, std::strlen(tail));
}

extern "C" void WRENStrTrim(char *target, const char *source) {
  source = TextOrEmpty(source);
  WRENStrRTrim(target, source + LeadingBlanks(source));
}

extern "C" void WRENStrRTrim(char *target, const char *source) {
  if (target != nullptr) {
    source = TextOrEmpty(source);
    CopyBytes(target, source, BytesWithoutTail(source, CodePageNow()));
  }
}

extern "C" void WRENStrProper(char *target, const char *source) {
  if (target != nullptr) {
    source = TextOrEmpty(source);
    CopyBytes(target, source, std::strlen(source));
    CapitalizeWords(target, CodePageNow());
  }
}
