#include "persistence/pending_names.h"

#include "persistence/block_cursor.h"

namespace {

void ListNames(PendingNames &names) {
  BlockCursor cursor = {names.first, names.bytes, 0, true};
  for (int32_t i = 0; i < names.count; i++) {
    const char *text = TakeText(cursor, Behind::MayEnd);
    const char *name = text != nullptr ? TakeText(cursor, Behind::MayEnd) : nullptr;
    if (name == nullptr) {
      return;  // the rows from here on will not be read either
    }
    NameIndexAppend(names.index, names.rows[i].entry, name, &names.rows[i]);
  }
}

}  // namespace

PendingRow *PendingRowOf(PendingNames &names, const char *name) {
  if (!names.listed) {
    names.listed = true;
    ListNames(names);
  }
  NameEntry *entry = NameIndexFirst(names.index, name);
  return entry != nullptr ? static_cast<PendingRow *>(entry->row) : nullptr;
}
