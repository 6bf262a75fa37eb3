// The formulas of a block may stand in any order. Those that refer to one not parsed yet are put
// off and tried again, pass after pass in stored order, until all are parsed.
//
// A formula that is put off is noted with the row whose name it waits for, and comes into a pass
// only once there is a formula of that name: before, it would fail as it did. So the passes do what
// they would do if each tried every formula. Formulas that call very many others which come up one
// by one would still be parsed again up to each; when so many bytes have been parsed again, texts
// are only looked through, from the call just answered on, and a formula comes into a pass when
// every formula that it calls is there, or when nothing else is left to try.
#include "persistence/formula_loader.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/host_call.h"
#include "language/recursion.h"

namespace {

constexpr int32_t kRowsPerWord = 64;

// How many bytes are parsed again in a load before texts are only looked through.
constexpr int64_t kMostRetriedBytes = int64_t{1} << 20;

struct FormulaLoad {
  EC ec;
  OrlErrorProc errorProc;
  const LoadDialogs *dialogs;
  PendingNames names;
  uint64_t *thisPass;  // a bit for each row that the running pass still tries
  uint64_t *nextPass;  // the same for the pass behind it
  int32_t words;       // of each
  HEXP *sorted;        // room for all rows' expressions
  int32_t current;     // the row that is being parsed
  int32_t putOff;      // rows that are put off
  int64_t retried;     // bytes that were parsed again
  int64_t steps;       // that searches for circles may still take
  bool passedOver;     // a row waits for another formula without having been parsed again
  bool reordered;      // a row was parsed out of stored order
  bool ok;
};

void Mark(uint64_t *pass, int32_t row) {
  pass[row / kRowsPerWord] |= uint64_t{1} << (row % kRowsPerWord);
}

void Await(PendingRow &awaited, PendingRow &row) {
  row.next = awaited.waiting;
  awaited.waiting = &row;
}

// What a row whose call was answered waits for without being tried, or null when it is to be tried.
PendingRow *WaitsOn(FormulaLoad &load, PendingRow &row) {
  if (load.retried < kMostRetriedBytes) {
    return nullptr;
  }
  PendingRow *another = NextAwaitedRow(load.ec, load.names, row.text, row.behind);
  load.passedOver = load.passedOver || another != nullptr;
  return another;
}

// Lets the rows that wait for this one be tried again: in this pass where it still comes by. `all`
// tries each, also those that are known to call a formula that is not there.
void WakeWaiting(FormulaLoad &load, PendingRow &awaited, bool all) {
  PendingRow *row = awaited.waiting;
  awaited.waiting = nullptr;
  while (row != nullptr) {
    PendingRow *next = row->next;
    PendingRow *another = all ? nullptr : WaitsOn(load, *row);
    if (another != nullptr) {
      Await(*another, *row);
    } else {
      const auto index = static_cast<int32_t>(row - load.names.rows);
      Mark(index > load.current ? load.thisPass : load.nextPass, index);
    }
    row = next;
  }
}

void WakeAll(FormulaLoad &load) {
  for (int32_t i = 0; load.putOff != 0 && i < load.names.count; i++) {
    WakeWaiting(load, load.names.rows[i], true);
  }
}

void WakeWaitingFor(FormulaLoad &load, const char *name) {
  PendingRow *awaited = load.putOff != 0 ? PendingRowOf(load.names, name) : nullptr;
  if (awaited != nullptr) {
    WakeWaiting(load, *awaited, false);
  }
}

void Report(FormulaLoad &load, const char *text, const FormulaError &error) {
  if (load.errorProc != nullptr) {
    CallHost([&] { load.errorProc(load.ec, text, &error); });
  } else {
    load.dialogs->showError(load.ec, text, error);
  }
  load.ok = false;
}

// Notes a text for another pass. `owned` is the text when the row has to free it.
void PutOff(FormulaLoad &load, PendingRow &row, const char *text, char *owned) {
  load.putOff += row.text == nullptr ? 1 : 0;
  row.text = text;
  if (row.owned != owned) {
    WRENMemFree(row.owned);
  }
  row.owned = owned;
}

void Settle(FormulaLoad &load, PendingRow &row, HEXP exp) {
  if (row.text != nullptr) {
    load.putOff--;
    load.reordered = true;
  }
  row.text = nullptr;
  WRENMemFree(row.owned);
  row.owned = nullptr;
  row.parsed = exp;
  WakeWaitingFor(load, exp->name);
}

// Lets the user repair a formula. Whatever was done meanwhile, every formula may parse now.
void Repair(FormulaLoad &load, PendingRow &row, const char *text, const FormulaError &error) {
  FormulaRepair repair = {text, text + std::strlen(text) + 1, error, &load.names, nullptr};
  HEXP repaired = load.dialogs->repair(load.ec, repair);
  WakeAll(load);
  if (repaired != nullptr) {
    Settle(load, row, repaired);
  } else if (repair.deferred != nullptr) {
    char *deferred = repair.deferred.release();
    PutOff(load, row, deferred, deferred);
    Mark(load.nextPass, load.current);
  } else {
    load.ok = false;
  }
}

// Parses a row's text, with its name behind it.
void ParseRow(FormulaLoad &load, PendingRow &row, const char *text) {
  const size_t length = std::strlen(text);
  load.retried += row.text != nullptr ? static_cast<int64_t>(length) : 0;
  FormulaError error = {};
  const SearchLimit limit(load.ec, &load.steps);
  uint16_t dataType = 0;
  HEXP exp = ORLParseString(load.ec, text, text + length + 1, &error, &dataType);
  if (exp != nullptr) {
    Settle(load, row, exp);
    return;
  }
  if (error.id == ORL_ERR_MEMORY) {
    Report(load, text, error);
    return;
  }
  PendingRow *awaited = error.id == ORL_ERR_FUNC ? AwaitedRow(load.names, text, error) : nullptr;
  if (awaited == nullptr) {
    Repair(load, row, text, error);
    return;
  }
  PutOff(load, row, text, row.owned);
  row.behind = error.offset + error.length;
  Await(*awaited, row);
}

void FirstPass(FormulaLoad &load, BlockCursor &cursor, int32_t count) {
  for (int32_t i = 0; i < count && load.ok; i++) {
    const char *text = nullptr;
    const char *name = nullptr;
    if (!TakeFormulaRow(cursor, &text, &name)) {
      load.ok = false;
      return;
    }
    load.current = i;
    ParseRow(load, load.names.rows[i], text);
  }
}

// Ends when all is parsed, and when nothing more can be: formulas refer to each other in a circle.
void RetryPasses(FormulaLoad &load) {
  while (load.ok && load.putOff != 0) {
    std::swap(load.thisPass, load.nextPass);
    int32_t tried = 0;
    for (int32_t word = 0; word < load.words && load.ok;) {
      if (load.thisPass[word] == 0) {
        word++;
        continue;
      }
      load.current = word * kRowsPerWord + std::countr_zero(load.thisPass[word]);
      load.thisPass[word] &= load.thisPass[word] - 1;
      PendingRow &row = load.names.rows[load.current];
      ParseRow(load, row, row.text);
      tried++;
    }
    if (tried == 0) {
      // Another fault may stand between two calls of a row that was passed over.
      load.ok = load.passedOver;
      load.passedOver = false;
      load.current = load.names.count;
      WakeAll(load);
    }
  }
}

// True when the rows' expressions are those of the table, each once: a user may have deleted one
// while the editor was open.
bool RowsAreTheTable(const FormulaLoad &load) {
  const auto rows = static_cast<int32_t>(HandleArrayRows(load.ec->expressions));
  if (rows != load.names.count) {
    return false;
  }
  HEXP *sorted = load.sorted;
  for (int32_t i = 0; i < rows; i++) {
    sorted[i] = load.names.rows[i].parsed;
  }
  std::sort(sorted, sorted + rows);
  bool same = std::adjacent_find(sorted, sorted + rows) == sorted + rows;
  for (int32_t i = 0; i < rows && same; i++) {
    const auto row = static_cast<uint32_t>(i);
    same = std::binary_search(sorted, sorted + rows,
                              static_cast<HEXP>(HandleArrayPointerAt(load.ec->expressions, row)));
  }
  return same;
}

// Puts the expressions into stored order.
void RestoreOrder(FormulaLoad &load) {
  EC ec = load.ec;
  for (int32_t i = 0; i < load.names.count; i++) {
    HEXP exp = load.names.rows[i].parsed;
    *static_cast<HEXP *>(HandleArrayLock(ec->expressions, i)) = exp;
    HandleArrayUnlock(ec->expressions);
    NameIndexRemove(ec->expressionNames, exp->entry);
    NameIndexAppend(ec->expressionNames, exp->entry, exp->name, exp);
  }
  ec->order.broken = true;
  ContextChanged(ec);
}

void *Room(int32_t count, size_t size) {
  return WRENMemAlloc(static_cast<uint32_t>(count) * static_cast<uint32_t>(size));
}

// Room for the rows, for the bits of two passes, and for what puts the rows into order.
bool PrepareRows(FormulaLoad &load, int32_t count, const BlockCursor &cursor) {
  // A row has two bytes at least, so a count beyond the block costs nothing.
  const int64_t left = cursor.size - cursor.position;
  const auto rows = static_cast<int32_t>(std::min<int64_t>(count, left / 2 + 1));
  load.words = rows / kRowsPerWord + 1;
  load.names.first = cursor.bytes + cursor.position;
  load.names.bytes = left;
  load.names.count = rows;
  load.names.rows = static_cast<PendingRow *>(Room(rows, sizeof(PendingRow)));
  load.thisPass = static_cast<uint64_t *>(Room(2 * load.words, sizeof(uint64_t)));
  load.nextPass = load.thisPass != nullptr ? load.thisPass + load.words : nullptr;
  load.sorted = static_cast<HEXP *>(Room(rows, sizeof(HEXP)));
  return load.names.rows != nullptr && load.thisPass != nullptr && load.sorted != nullptr;
}

void FreeRows(FormulaLoad &load, uint64_t *passes) {
  for (int32_t i = 0; load.names.rows != nullptr && i < load.names.count; i++) {
    WRENMemFree(load.names.rows[i].owned);
  }
  NameIndexFree(load.names.index);
  WRENMemFree(load.names.rows);
  WRENMemFree(load.sorted);
  WRENMemFree(passes);
}

}  // namespace

bool LoadFormulas(EC ec, BlockCursor &cursor, int32_t count, OrlErrorProc errorProc,
                  const LoadDialogs &dialogs) {
  if (count == 0) {
    return true;
  }
  FormulaLoad load = {};
  load.ec = ec;
  load.steps = kMostSearchSteps;
  load.errorProc = errorProc;
  load.dialogs = &dialogs;
  load.ok = PrepareRows(load, count, cursor);
  uint64_t *passes = load.thisPass;
  FirstPass(load, cursor, load.ok ? count : 0);
  RetryPasses(load);
  if (load.ok && load.reordered && RowsAreTheTable(load)) {
    RestoreOrder(load);
  }
  FreeRows(load, passes);
  return load.ok;
}
