#include "platform/strings.h"

#include <cstring>

#include "resources/string_table.h"

int32_t LoadStringA(const void * /*module*/, uint32_t id, char *buffer, int32_t size) {
  const char *text = StringText(id);
  if (text == nullptr || buffer == nullptr || size < 1) {
    return 0;
  }
  size_t length = std::strlen(text);
  const auto most = static_cast<size_t>(size) - 1;
  length = length < most ? length : most;  // rows are ASCII, so no cut falls into a character
  std::memcpy(buffer, text, length);
  buffer[length] = 0;
  return static_cast<int32_t>(length);
}
