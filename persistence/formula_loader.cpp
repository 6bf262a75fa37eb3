// The formulas of a block may be stored in any order. Formulas that refer to one that is not parsed
// yet are deferred and parsed again, pass after pass in stored order, until all are parsed.
//
// A deferred formula waits for the row whose name it calls, and is scheduled for a pass only once a
// formula of that name exists: before, it would fail again. So the result is the same as if each
// pass tried every formula. A formula that calls very many others would still be parsed again for
// each of them. So after kMostRetriedBytes bytes have been parsed again, texts are only scanned,
// from the call just resolved on, and a formula is scheduled when every formula that it calls
// exists, or when nothing else is left to try.
#include "persistence/formula_loader.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>

#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/host_call.h"
#include "language/recursion.h"

namespace {

constexpr int32_t kRowsPerWord = 64;

// The bytes that a load parses again before texts are only scanned.
constexpr int64_t kMostRetriedBytes = int64_t{1} << 20;

struct FormulaLoad {
  EC ec;
  OrlErrorProc errorProc;
  const LoadDialogs *dialogs;
  PendingNames names;
  Owned<uint64_t> thisPass;  // a bit for each row that the current pass still tries
  Owned<uint64_t> nextPass;  // the same for the next pass
  int32_t words;             // of each
  Owned<HEXP> sorted;        // capacity for all rows' expressions
  int32_t current;           // the row that is being parsed
  int32_t deferred;          // rows that are deferred
  int64_t retried;           // bytes that were parsed again
  int64_t steps;             // left to searches for cycles
  bool passedOver;           // the scan alone, without a parse, made a row wait again
  bool reordered;            // a row was parsed out of stored order
  bool repaired;             // a user may have changed the expressions
  bool cycle;                // nothing is left but formulas that wait for each other
  bool ok;
};

void Schedule(const Owned<uint64_t> &pass, int32_t row) {
  pass.get()[row / kRowsPerWord] |= uint64_t{1} << (row % kRowsPerWord);
}

void WaitFor(PendingRow &dependency, PendingRow &row) {
  assert(row.text != nullptr);
  row.next = dependency.waiting;
  dependency.waiting = &row;
}

// For a row whose call was resolved: the row that it waits for next, or null when it should be
// parsed.
PendingRow *NextDependency(FormulaLoad &load, PendingRow &row) {
  if (load.retried < kMostRetriedBytes) {
    return nullptr;
  }
  PendingRow *another = NextForwardReference(load.ec, load.names, row.text, row.resume);
  load.passedOver = load.passedOver || another != nullptr;
  return another;
}

// Schedules the rows that wait for this one, for the current pass where it still reaches them.
// `all` also schedules those that are known to call a formula that does not exist yet.
void Reschedule(FormulaLoad &load, PendingRow &dependency, bool all) {
  PendingRow *row = dependency.waiting;
  dependency.waiting = nullptr;
  while (row != nullptr) {
    PendingRow *next = row->next;
    PendingRow *another = all ? nullptr : NextDependency(load, *row);
    if (another != nullptr) {
      WaitFor(*another, *row);
    } else {
      const auto index = static_cast<int32_t>(row - load.names.rows.get());
      Schedule(index > load.current ? load.thisPass : load.nextPass, index);
    }
    row = next;
  }
}

void RescheduleAll(FormulaLoad &load) {
  for (int32_t i = 0; load.deferred != 0 && i < load.names.count; ++i) {
    Reschedule(load, load.names.rows.get()[i], true);
  }
}

// The first row of a name, which is that of the row itself unless a user changed it.
PendingRow *FirstOfName(FormulaLoad &load, PendingRow &row, const char *name) {
  const bool itself = NameIsAlone(row.entry) && std::strcmp(row.entry.name, name) == 0;
  return itself ? &row : PendingRowOf(load.names, name);
}

void Report(FormulaLoad &load, const char *text, const FormulaError &error) {
  if (load.errorProc != nullptr) {
    CallHost([&] { load.errorProc(load.ec, text, &error); });
  } else {
    load.dialogs->showError(load.ec, text, error, load.dialogs->data);
  }
  load.ok = false;
}

// Keeps a text of the block for another pass.
void Defer(FormulaLoad &load, PendingRow &row, const char *text) {
  load.deferred += row.text == nullptr ? 1 : 0;
  row.text = text;
}

// The same for a text from the editor, in a block of its own.
void DeferOwned(FormulaLoad &load, PendingRow &row, OwnedText text) {
  Defer(load, row, text.get());
  ReplaceBlock(row.owned, std::move(text));
}

void Settle(FormulaLoad &load, PendingRow &row, HEXP exp) {
  if (row.text != nullptr) {
    --load.deferred;
    load.reordered = true;
  }
  row.text = nullptr;
  ReplaceBlock(row.owned);
  row.parsed = exp;
  PendingRow *dependency = load.deferred != 0 ? FirstOfName(load, row, exp->entry.name) : nullptr;
  if (dependency != nullptr) {
    Reschedule(load, *dependency, false);
  }
}

// Lets the user repair a formula. Since the user may have changed anything, every formula may parse
// afterwards.
void Repair(FormulaLoad &load, PendingRow &row, const char *text, const FormulaError &error) {
  FormulaRepair repair = {text, text + std::strlen(text) + 1, error, &load.names, nullptr};
  load.repaired = true;
  HEXP repaired = load.dialogs->repair(load.ec, repair, load.dialogs->data);
  RescheduleAll(load);
  if (repaired != nullptr) {
    Settle(load, row, repaired);
  } else if (repair.deferred != nullptr) {
    DeferOwned(load, row, std::move(repair.deferred));
    Schedule(load.nextPass, load.current);
  } else {
    load.ok = false;
  }
}

// Parses a row's text, which its name follows.
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
  PendingRow *dependency =
      error.id == ORL_ERR_FUNC ? ForwardReference(load.names, text, error) : nullptr;
  if (dependency == nullptr) {
    Repair(load, row, text, error);
    return;
  }
  Defer(load, row, text);
  row.resume = error.offset + error.length;
  WaitFor(*dependency, row);
}

void FirstPass(FormulaLoad &load, BlockCursor &cursor, int32_t count) {
  for (int32_t i = 0; i < count && load.ok; ++i) {
    const char *text = nullptr;
    const char *name = nullptr;
    if (!TakeFormulaRow(cursor, &text, &name)) {
      load.ok = false;
      return;
    }
    load.current = i;
    ParseRow(load, load.names.rows.get()[i], text);
  }
}

// Ends when all rows are parsed, or when none can be: formulas refer to each other in a cycle.
void RetryPasses(FormulaLoad &load) {
  while (load.ok && load.deferred != 0) {
    std::swap(load.thisPass, load.nextPass);
    int32_t tried = 0;
    for (int32_t word = 0; word < load.words && load.ok;) {
      uint64_t &scheduled = load.thisPass.get()[word];
      if (scheduled == 0) {
        ++word;
        continue;
      }
      load.current = word * kRowsPerWord + std::countr_zero(scheduled);
      scheduled &= scheduled - 1;
      PendingRow &row = load.names.rows.get()[load.current];
      ParseRow(load, row, row.text);
      ++tried;
    }
    if (tried == 0) {
      // Rows that were only scanned may contain other errors: parse all once more before reporting
      // a cycle.
      load.ok = load.passedOver;
      load.cycle = !load.passedOver;
      load.passedOver = false;
      load.current = load.names.count;
      RescheduleAll(load);
    }
  }
}

// True when the rows' expressions are those of the table, each once: a user may have deleted one
// while the editor was open.
bool RowsMatchTable(const FormulaLoad &load) {
  const auto rows = static_cast<int32_t>(HandleArrayRows(load.ec->expressions));
  if (rows != load.names.count || !load.repaired) {
    return rows == load.names.count;
  }
  HEXP *sorted = load.sorted.get();
  for (int32_t i = 0; i < rows; ++i) {
    sorted[i] = load.names.rows.get()[i].parsed;
  }
  std::sort(sorted, sorted + rows);
  bool same = std::adjacent_find(sorted, sorted + rows) == sorted + rows;
  for (int32_t i = 0; i < rows && same; ++i) {
    const auto row = static_cast<uint32_t>(i);
    same = std::binary_search(sorted, sorted + rows,
                              static_cast<HEXP>(HandleArrayPointerAt(load.ec->expressions, row)));
  }
  return same;
}

// Sorts the expressions into stored order.
void RestoreOrder(FormulaLoad &load) {
  EC ec = load.ec;
  for (int32_t i = 0; i < load.names.count; ++i) {
    HEXP exp = load.names.rows.get()[i].parsed;
    *static_cast<HEXP *>(HandleArrayLock(ec->expressions, i)) = exp;
    HandleArrayUnlock(ec->expressions);
    NameIndexMoveToEnd(ec->expressionNames, exp->entry);
  }
  ec->order.broken = true;
  ContextChanged(ec);
}

// Allocates the rows, the bits of two passes, and what is needed to sort the rows.
bool PrepareRows(FormulaLoad &load, int32_t count, const BlockCursor &cursor) {
  // A row has at least two bytes, so a count beyond the block allocates nothing.
  const int64_t left = cursor.size - cursor.position;
  const auto rows = static_cast<uint32_t>(std::min<int64_t>(count, left / 2 + 1));
  const uint32_t words = rows / kRowsPerWord + 1;
  load.words = static_cast<int32_t>(words);
  load.names.first = cursor.bytes + cursor.position;
  load.names.bytes = left;
  load.names.count = static_cast<int32_t>(rows);
  load.names.rows = Allocate<PendingRow>(rows);
  load.thisPass = Allocate<uint64_t>(words);
  load.nextPass = Allocate<uint64_t>(words);
  load.sorted = Allocate<HEXP>(rows);
  return load.names.rows != nullptr && load.thisPass != nullptr && load.nextPass != nullptr &&
         load.sorted != nullptr;
}

}  // namespace

LoadEnd LoadFormulas(EC ec, BlockCursor &cursor, int32_t count, LoadOrder order,
                     OrlErrorProc errorProc, const LoadDialogs &dialogs) {
  if (count == 0) {
    return LoadEnd::Complete;
  }
  FormulaLoad load = {};
  load.ec = ec;
  load.steps = kMostSearchSteps;
  load.errorProc = errorProc;
  load.dialogs = &dialogs;
  load.ok = PrepareRows(load, count, cursor);
  FirstPass(load, cursor, load.ok ? count : 0);
  RetryPasses(load);
  const bool restore = order == LoadOrder::Stored && load.ok && load.reordered;
  if (restore && RowsMatchTable(load)) {
    RestoreOrder(load);
  }
  if (load.ok) {
    return LoadEnd::Complete;
  }
  return load.cycle ? LoadEnd::Cycle : LoadEnd::Failed;
}
