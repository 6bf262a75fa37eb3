// Small steps that the text routines share.
#ifndef ORLI11_CLOSED_WREN_TEXT_WALK_H
#define ORLI11_CLOSED_WREN_TEXT_WALK_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "closed/wren/codepage.h"

// A null string counts as the empty one.
inline const char *TextOrEmpty(const char *text) {
  return text == nullptr ? "" : text;
}

// A length as the interface returns it; it saturates for strings above 2 GB.
inline int32_t CountResult(size_t count) {
  return count > INT32_MAX ? INT32_MAX : static_cast<int32_t>(count);
}

// Bytes of the first n characters, of all when there are fewer; 0 for a negative n.
inline size_t BytesOfChars(const char *text, int64_t n, CodePage page) {
  if (n <= 0) {
    return 0;
  }
  if (page == CodePage::Western) {
    return strnlen(text, static_cast<size_t>(n));
  }
  size_t offset = 0;
  for (; n > 0 && text[offset] != 0; --n) {
    offset += CharBytes(text + offset, page);
  }
  return offset;
}

inline size_t CharCount(const char *text, CodePage page) {
  if (page == CodePage::Western) {
    return std::strlen(text);
  }
  size_t count = 0;
  for (; *text != 0; ++count) {
    text += CharBytes(text, page);
  }
  return count;
}

inline size_t LeadingBlanks(const char *text) {
  return std::strspn(text, " ");
}

#endif
