#include "persistence/pending_names.h"

#include "engine/context.h"
#include "engine/items.h"
#include "language/scanner.h"
#include "persistence/block_cursor.h"

namespace {

void ListNames(PendingNames &names) {
  BlockCursor cursor = {names.first, names.bytes, 0, true};
  for (int32_t i = 0; i < names.count; i++) {
    const char *text = nullptr;
    const char *name = nullptr;
    if (!TakeFormulaRow(cursor, &text, &name)) {
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

PendingRow *NextAwaitedRow(EC ec, PendingNames &names, const char *text, int32_t &offset) {
  ParseState state;
  ResetParseState(state, ec, text + offset, false);
  PendingRow *awaited = nullptr;
  while (awaited == nullptr) {
    const int32_t token = ScanToken(state);
    if (token == TOK_END || token == TOK_NOMEM) {
      break;
    }
    const char *name = static_cast<const char *>(state.tokenValue);
    if (token == TOK_CALLNAME && ItemFind(&ec->functions, name) == nullptr &&
        ORLHEXPFromName(ec, name) == nullptr) {
      awaited = PendingRowOf(names, name);
      offset += awaited != nullptr ? state.tokenOffset + state.tokenSpan : 0;
    }
    WRENMemFree(state.tokenValue);
  }
  return awaited;
}
