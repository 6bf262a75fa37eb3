// The messages of the language, as the error box shows them.
#include <cstring>

#include "closed/wren/cut_copy.h"
#include "orli11.h"
#include "resources/string_table.h"

namespace {

// One row among the messages in the string table is the error box's caption.
constexpr int32_t kCaption = 104;

}  // namespace

int32_t ORLErrorText(int32_t id, int32_t size, char *buffer) {
  const bool isMessage = id >= ORL_ERR_TYPENUM && id <= ORL_ERR_SUBCLASS && id != kCaption;
  const char *found = isMessage ? StringText(static_cast<uint32_t>(id)) : nullptr;
  const char *text = found == nullptr ? "" : found;
  return CutCopy(text, std::strlen(text), size, buffer);
}
