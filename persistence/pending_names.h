// The names of the formulas in a block, to be asked while their formulas are still being parsed.
#ifndef ORLI11_PERSISTENCE_PENDING_NAMES_H
#define ORLI11_PERSISTENCE_PENDING_NAMES_H

#include <cstdint>

#include "engine/name_index.h"
#include "orli11.h"

// One formula row of the block, by its number.
struct PendingRow {
  NameEntry entry;      // its name, once the names are listed
  HEXP parsed;          // what became of it
  const char *text;     // while it is put off: its text, the name behind the zero byte
  char *owned;          // the same text when it is a block of the editor's, to be freed
  PendingRow *waiting;  // rows that wait for this row's name, first of them
  PendingRow *next;     // the next row that waits for the same name
  int32_t behind;       // offset in the text behind the call that it waits for
};

struct PendingNames {
  const char *first;  // the first formula row: a text, then a name, each with its zero byte
  int64_t bytes;      // of the block from there on
  PendingRow *rows;
  int32_t count;
  bool listed;
  NameIndex index;
};

// The first row of that name, or null. Lists the names when it is first asked.
PendingRow *PendingRowOf(PendingNames &names, const char *name);

// The row that the next call in a text from `offset` on waits for, which is moved behind the call:
// one that names a row, but nothing in the context yet. Null when there is no such call.
PendingRow *NextAwaitedRow(EC ec, PendingNames &names, const char *text, int32_t &offset);

#endif
