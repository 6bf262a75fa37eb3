// The messages of the language, as the error box shows them.
#include <algorithm>
#include <cstring>

#include "orli11.h"
#include "resources/string_table.h"

namespace {

// The string table holds a caption of the error box among the messages.
constexpr int32_t kCaption = 104;

}  // namespace

int32_t ORLErrorText(int32_t id, int32_t size, char *buffer) {
  const bool isMessage = id >= ORL_ERR_TYPENUM && id <= ORL_ERR_SUBCLASS && id != kCaption;
  const char *text = isMessage ? StringText(static_cast<uint32_t>(id)) : nullptr;
  const size_t length = text == nullptr ? 0 : std::strlen(text);
  if (buffer != nullptr && size > 0) {
    const size_t copied = std::min(length, static_cast<size_t>(size) - 1);
    std::memcpy(buffer, text == nullptr ? "" : text, copied);
    buffer[copied] = '\0';
  }
  return static_cast<int32_t>(length);
}
