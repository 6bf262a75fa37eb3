#include "functions/text_list.h"

#include <cstring>

#include "platform/text.h"
#include "wreni11.h"

namespace {

// The end of the field that starts here: its comma, or the end of the list.
const char *FieldEnd(const char *start) {
  const char *comma = WRENStrChr(start, ',');
  return comma != nullptr ? comma : start + std::strlen(start);
}

}  // namespace

ListField ListFieldAt(const char *list, int64_t index) {
  const char *start = list;
  const char *end = FieldEnd(start);
  for (; index > 0 && *end != 0; --index) {
    start = CharNextA(end);
    end = FieldEnd(start);
  }
  const bool found = index == 0;
  return {found ? start : end, found ? end - start : 0};
}

int64_t ListIndexOf(const char *list, const char *text) {
  const size_t length = std::strlen(text);
  const char *start = list;
  for (int64_t index = 0;; ++index) {
    const char *end = FieldEnd(start);
    // Strings are equal when their bytes are, so the fields need not be copied to be compared.
    if (static_cast<size_t>(end - start) == length && std::memcmp(start, text, length) == 0) {
      return index;
    }
    if (*end == 0) {
      return -1;
    }
    start = CharNextA(end);
  }
}
