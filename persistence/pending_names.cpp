#include "persistence/pending_names.h"

#include <cassert>

#include "engine/context.h"
#include "engine/items.h"
#include "language/scanner.h"
#include "persistence/block_cursor.h"

namespace {

void ListNames(PendingNames &names) {
  BlockCursor cursor = {names.first, names.bytes, 0, true};
  for (int32_t i = 0; i < names.count; ++i) {
    const char *text = nullptr;
    const char *name = nullptr;
    if (!TakeFormulaRow(cursor, &text, &name)) {
      return;  // rows from here on will not be read either
    }
    PendingRow &row = names.rows.get()[i];
    NameIndexAppend(names.index, row.entry, name);
  }
}

}  // namespace

PendingNames::~PendingNames() {
  for (int32_t i = 0; rows != nullptr && i < count; ++i) {
    ReplaceBlock(rows.get()[i].owned);
  }
  NameIndexFree(index);
}

PendingRow *PendingRowOf(PendingNames &names, std::string_view name) {
  if (!names.listed) {
    names.listed = true;
    ListNames(names);
  }
  NameEntry *entry = NameIndexFirst(names.index, name);
  return RowOfEntry<PendingRow>(entry);
}

PendingRow *NextForwardReference(EC ec, PendingNames &names, const char *text, int32_t &offset) {
  assert(text != nullptr && offset >= 0 && offset <= WRENStrLen(text));
  ParseState state;
  ResetParseState(state, ec, text + offset, false);
  PendingRow *dependency = nullptr;
  while (dependency == nullptr) {
    const int32_t token = ScanToken(state);
    if (token == TOK_END) {
      break;
    }
    if (token != TOK_CALLNAME) {
      continue;
    }
    const std::string_view name = CallName(TextAt(state, state.tokenOffset, state.tokenSpan));
    if (ItemFind(&ec->functions, name) == nullptr &&
        NameIndexFirst(ec->expressionNames, name) == nullptr) {
      dependency = PendingRowOf(names, name);
      offset += dependency != nullptr ? state.tokenOffset + state.tokenSpan : 0;
    }
  }
  return dependency;
}
