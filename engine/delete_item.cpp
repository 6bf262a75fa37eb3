// The guarded delete of an item: its users go first, and of them those that nobody refers to.
#include <cstring>

#include "analysis/usage.h"
#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/items.h"

namespace {

// Expressions that use the item and are in use themselves.
struct PendingList {
  HEXP *entries;
  uint32_t count;
};

struct DeleteRun {
  EC ec;
  ItemTable *table;
  const char *name;
  OrlDeleteProc proc;
  PendingList pending;
  bool ok;
};

// Hands one expression to the host. True when it is gone.
bool HandOver(DeleteRun &run, HEXP exp) {
  ExprItem *row = ItemFind(run.table, run.name);
  if (row == nullptr) {
    return false;
  }
  run.ok = run.proc != nullptr && run.proc(run.ec, exp, row) != 0;
  return run.ok;
}

// The host may have destroyed more than it was asked to: what is not in the table any more is
// dropped from the list.
void DropVanished(DeleteRun &run, uint32_t countBefore) {
  if (HandleArrayRows(run.ec->expressions) + 1 >= countBefore) {
    return;
  }
  uint32_t kept = 0;
  for (uint32_t i = 0; i < run.pending.count; i++) {
    if (ORLGetExpressionOrdinal(run.ec, run.pending.entries[i]) >= 0) {
      run.pending.entries[kept++] = run.pending.entries[i];
    } else {
      run.pending.entries[i] = nullptr;
    }
  }
  run.pending.count = kept;
}

// Without room for the list the expression is left alone.
void PutOff(DeleteRun &run, HEXP exp, uint32_t room) {
  if (run.pending.entries == nullptr) {
    run.pending.entries =
        static_cast<HEXP *>(WRENMemAlloc(static_cast<uint32_t>(room * sizeof(HEXP))));
  }
  if (run.pending.entries != nullptr) {
    run.pending.entries[run.pending.count++] = exp;
  }
}

void FirstPass(DeleteRun &run, int32_t kind) {
  const uint32_t room = HandleArrayRows(run.ec->expressions);
  UsageWalk walk = UsageWalkBegin(run.ec);
  uint32_t index = 0;
  for (uint32_t left = room; left > 0 && run.ok; left--) {
    HEXP exp = static_cast<HEXP>(HandleArrayPointerAt(run.ec->expressions, index));
    if (exp == nullptr) {
      return;
    }
    if (!ItemUsedBy(walk, exp, kind, run.name)) {
      index++;
    } else if (ORLIsNamedFormulaUsed(run.ec, exp->name) != 0) {
      PutOff(run, exp, room);
      index++;
    } else {
      const uint32_t count = HandleArrayRows(run.ec->expressions);
      if (HandOver(run, exp)) {
        DropVanished(run, count);
      } else {
        index++;
      }
    }
  }
}

// One round over the pending list. Entries that are still in use stay on it.
void Round(DeleteRun &run) {
  uint32_t kept = 0;
  for (uint32_t i = 0; i < run.pending.count && run.ok; i++) {
    HEXP exp = run.pending.entries[i];
    if (ORLIsNamedFormulaUsed(run.ec, exp->name) != 0) {
      run.pending.entries[kept++] = exp;
      continue;
    }
    const uint32_t count = HandleArrayRows(run.ec->expressions);
    HandOver(run, exp);
    if (HandleArrayRows(run.ec->expressions) + 1 < count) {
      // Close the gap behind what is kept, so that the list holds just what is still to be seen.
      const uint32_t behind = run.pending.count - (i + 1);
      std::memmove(run.pending.entries + kept, run.pending.entries + i + 1, behind * sizeof(HEXP));
      run.pending.count = kept + behind;
      DropVanished(run, count);
      return;
    }
  }
  run.pending.count = kept;
}

}  // namespace

int32_t ORLDeleteExpItem(EC ec, int32_t kind, const char *name, OrlDeleteProc proc) {
  if (ec == nullptr || name == nullptr) {
    return 1;
  }
  ItemTable *table = kind == ORL_INPUT ? &ec->inputs : &ec->functions;
  DeleteRun run = {ec, table, name, proc, {nullptr, 0}, true};
  FirstPass(run, kind);
  uint32_t before = run.pending.count + 1;
  while (run.ok && run.pending.count > 0) {
    if (run.pending.count == before) {
      run.ok = false;  // a round without progress: what the host keeps can never be let go
      break;
    }
    before = run.pending.count;
    Round(run);
  }
  WRENMemFree(run.pending.entries);
  if (run.ok) {
    ItemRemove(ec, table, name);
  }
  return run.ok ? 1 : 0;
}
