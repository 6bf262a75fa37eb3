#include "platform/owned.h"

#include <cstring>

OwnedText CopyText(const char *text) {
  const size_t length = std::strlen(text);
  OwnedText copy = Allocate<char>(length, 1);
  if (copy != nullptr) {
    std::memcpy(copy.get(), text, length + 1);
  }
  return copy;
}
