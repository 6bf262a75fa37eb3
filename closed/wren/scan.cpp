// Substring search in linear time.
#include <cstring>

#include "closed/wren/codepage.h"
#include "closed/wren/owned.h"
#include "closed/wren/text_walk.h"
#include "wreni11.h"

namespace {

// A forward walk by characters that counts those it has passed.
struct CharWalk {
  const char *text;
  size_t offset;
  size_t chars;
};

// Moves the walk to `offset` or, when that falls into a character, after that character. True when
// a character begins there or the text ends.
bool ReachesCharAt(CharWalk *walk, size_t offset, CodePage page) {
  while (walk->offset < offset) {
    walk->offset += CharBytes(walk->text + walk->offset, page);
    ++walk->chars;
  }
  return walk->offset == offset;
}

// The table of Knuth, Morris and Pratt: for each place of the pattern the length of the longest
// proper prefix that also ends there.
void FillBorders(uint32_t *borders, const char *pattern, size_t length) {
  uint32_t border = 0;
  borders[0] = 0;
  for (size_t at = 1; at < length; ++at) {
    while (border > 0 && pattern[at] != pattern[border]) {
      border = borders[border - 1];
    }
    border += pattern[at] == pattern[border] ? 1U : 0U;
    borders[at] = border;
  }
}

// The position of the pattern by characters, or -1. Bytes that are equal but begin or end inside a
// character of the text do not match, however many there are; the table keeps the search linear.
int32_t ScanChars(const char *text, const char *pattern, size_t length, const uint32_t *borders,
                  CodePage page) {
  CharWalk start = {text, 0, 0};
  CharWalk end = {text, 0, 0};
  size_t matched = 0;
  for (size_t at = 0; text[at] != 0; ++at) {
    while (matched > 0 && (matched == length || text[at] != pattern[matched])) {
      matched = borders[matched - 1];
    }
    matched += text[at] == pattern[matched] ? 1 : 0;
    if (matched == length && ReachesCharAt(&start, at + 1 - length, page) &&
        ReachesCharAt(&end, at + 1, page)) {
      return CountResult(start.chars);
    }
  }
  return -1;
}

// The same when out of memory for the table: tries every character of the text.
int32_t ScanCharsSlowly(const char *text, const char *pattern, size_t length, CodePage page) {
  for (size_t position = 0; *text != 0; ++position) {
    CharWalk end = {text, 0, 0};
    if (std::strncmp(text, pattern, length) == 0 && ReachesCharAt(&end, length, page)) {
      return CountResult(position);
    }
    text += CharBytes(text, page);
  }
  return -1;
}

}  // namespace

extern "C" int32_t WRENStrScan(const char *text, const char *pattern) {
  text = TextOrEmpty(text);
  pattern = TextOrEmpty(pattern);
  const CodePage page = CodePageNow();
  if (page == CodePage::Western || *pattern == 0) {
    const char *found = std::strstr(text, pattern);
    return found == nullptr ? -1 : CountResult(static_cast<size_t>(found - text));
  }
  constexpr size_t kShortPattern = 64;
  uint32_t shortBorders[kShortPattern] = {};
  const size_t length = std::strlen(pattern);
  if (length <= kShortPattern) {
    FillBorders(shortBorders, pattern, length);
    return ScanChars(text, pattern, length, shortBorders, page);
  }
  if (strnlen(text, length) < length) {
    return -1;
  }
  const Owned<uint32_t> borders = Allocate<uint32_t>(length);
  if (borders == nullptr) {
    return ScanCharsSlowly(text, pattern, length, page);
  }
  FillBorders(borders.get(), pattern, length);
  return ScanChars(text, pattern, length, borders.get(), page);
}
