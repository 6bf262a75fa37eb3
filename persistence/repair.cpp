#include "persistence/repair.h"

#include <cstring>

PendingRow *ForwardReference(PendingNames &names, const char *text, const FormulaError &error) {
  char word[256];
  const int64_t length = error.length;
  if (error.offset < 0 || length < 1 || length > static_cast<int64_t>(sizeof word) ||
      error.offset + length > WRENStrLen(text)) {
    return nullptr;
  }
  std::memcpy(word, text + error.offset, static_cast<size_t>(length));
  word[length - 1] = '\0';  // over the parenthesis
  WRENStrRTrim(word, word);
  return PendingRowOf(names, word);
}
