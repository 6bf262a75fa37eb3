#include "functions/registry.h"

#include <atomic>
#include <charconv>
#include <cstring>

#include "engine/items.h"
#include "engine/module.h"
#include "platform/owned.h"
#include "platform/strings.h"
#include "resources/string_ids.h"

namespace {

constexpr int32_t kRowTextSize = 129;
constexpr int16_t kMostParameters = 7;
// Every full name begins with the same three letters, which the display name leaves out.
constexpr size_t kPrefixLength = 3;

// Set by hosts when the settings of the system have changed, and kept for compatibility. Nothing
// reads it: only WRENSetCountry changes the settings.
std::atomic<int32_t> systemSettingsChanged{1};

using WorkingRow = ORL_EXPR_ITEM_WITH(kMostParameters);

struct WorkingTexts {
  char row[kRowTextSize];
  char fullName[kRowTextSize];
};

// Removes the next comma-separated field from `*at`; empty at the end.
const char *NextField(char **at) {
  char *field = *at;
  char *comma = std::strchr(field, ',');
  if (comma == nullptr) {
    *at = field + std::strlen(field);
  } else {
    *comma = '\0';
    *at = comma + 1;
  }
  return field;
}

int16_t NextNumber(char **at) {
  const char *field = NextField(at);
  int16_t number = 0;
  std::from_chars(field, field + std::strlen(field), number);
  return number;
}

// Fills the working row from its text: full name, result type, parameter count, parameter types.
// False for a row with too many parameters.
bool FillRow(WorkingRow *row, WorkingTexts *texts) {
  char *at = texts->row;
  const char *fullName = NextField(&at);
  const size_t length = std::strlen(fullName);
  std::memcpy(texts->fullName, fullName, length + 1);
  const char *display = texts->fullName + (length < kPrefixLength ? length : kPrefixLength);
  std::memset(row->item.name, 0, sizeof row->item.name);
  std::strncpy(row->item.name, display, sizeof row->item.name - 1);
  row->item.routineName = texts->fullName;
  row->item.routine = RoutineByName(texts->fullName);
  row->item.dataType = NextNumber(&at);
  row->item.paramCount = NextNumber(&at);
  for (int16_t i = 0; i < row->item.paramCount && i < kMostParameters; ++i) {
    row->parameters[i].dataType = static_cast<uint16_t>(NextNumber(&at));
  }
  return row->item.paramCount <= kMostParameters;
}

}  // namespace

int32_t FUNDefineFunctions(EC ec) {
  const Owned<WorkingRow> row = Allocate<WorkingRow>();
  const Owned<WorkingTexts> texts = Allocate<WorkingTexts>();
  bool ok = row != nullptr && texts != nullptr;
  for (uint32_t id = kStringFirstFunction; ok && id <= kStringLastFunction; ++id) {
    if (LoadStringA(moduleHandle, id, texts->row, kRowTextSize) == 0) {
      continue;
    }
    row->item.kind = ORL_FUNCTION;
    ok = FillRow(row.get(), texts.get()) && ORLAddExpressionItem(ec, &row->item) != 0;
  }
  return ok ? 1 : 0;
}

void FUNWinIniChange(void) {
  systemSettingsChanged.store(1, std::memory_order_relaxed);
}
