// The names of the formulas in a block, for lookups while the formulas are still being parsed.
#ifndef ORLI11_PERSISTENCE_PENDING_NAMES_H
#define ORLI11_PERSISTENCE_PENDING_NAMES_H

#include <cstdint>
#include <string_view>

#include "engine/name_index.h"
#include "orli11.h"
#include "platform/owned.h"

// One formula row of the block, by its number.
struct PendingRow {
  NameEntry entry;      // its name, once the names are indexed
  HEXP parsed;          // the resulting expression
  const char *text;     // while it is deferred: its text, which the name follows
  char *owned;          // the same text when it is a block of the row's own
  PendingRow *waiting;  // rows that wait for this row's name, first of them
  PendingRow *next;     // the next row that waits for the same name
  int32_t resume;       // offset in the text after the call that it waits for
};

struct PendingNames {
  const char *first;  // the first formula row: a text, then a name, each with its zero byte
  int64_t bytes;      // of the block from there on
  Owned<PendingRow> rows;
  int32_t count;
  bool listed;
  NameIndex index;

  PendingNames() = default;
  ~PendingNames();
  PendingNames(const PendingNames &) = delete;
  PendingNames &operator=(const PendingNames &) = delete;
};

// The first row of that name, or null. The first lookup indexes the names.
PendingRow *PendingRowOf(PendingNames &names, std::string_view name);

// Finds the next call, from `offset` on, of a formula that the context does not have yet. Returns
// its row and moves `offset` after the call; otherwise null, `offset` unchanged.
PendingRow *NextForwardReference(EC ec, PendingNames &names, const char *text, int32_t &offset);

#endif
