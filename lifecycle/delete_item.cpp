// The guarded delete of an item: the host destroys the expressions that use it, starting with those
// that nothing refers to.
//
// A first pass in table order asks the host to destroy the users that nothing refers to and defers
// the others. Rounds over the deferred ones, in table order, then ask for those that nothing refers
// to any more. An expression becomes free when the last reference to its name is removed, so a
// round need not visit all of them: two queues hold the positions of the free ones, for this round
// and for the next.
//
// The host may destroy other expressions than it is asked to. So no pointers are kept that could
// dangle: positions are numbers that are never reused, and are looked up when needed.
#include <algorithm>
#include <cassert>
#include <functional>

#include "analysis/usage.h"
#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/host_call.h"
#include "engine/items.h"
#include "engine/references.h"

namespace {

// Positions of expressions, the lowest on top.
struct PositionQueue {
  Owned<uint64_t> positions;
  uint32_t count;
  uint32_t capacity;
};

bool QueuePush(PositionQueue &queue, uint64_t position) {
  if (queue.count == queue.capacity) {
    const uint32_t capacity = queue.capacity == 0 ? 64 : queue.capacity * 2;
    const uint32_t size = capacity * static_cast<uint32_t>(sizeof(uint64_t));
    void *grown = WRENMemRealloc(queue.positions.get(), size);
    if (grown == nullptr) {
      return false;
    }
    static_cast<void>(queue.positions.release());
    queue.positions.reset(static_cast<uint64_t *>(grown));
    queue.capacity = capacity;
  }
  uint64_t *const positions = queue.positions.get();
  positions[queue.count++] = position;
  std::push_heap(positions, positions + queue.count, std::greater<>());
  return true;
}

uint64_t QueuePop(PositionQueue &queue) {
  assert(queue.count > 0);
  uint64_t *const positions = queue.positions.get();
  std::pop_heap(positions, positions + queue.count, std::greater<>());
  return positions[--queue.count];
}

struct DeleteRun : ReferenceListener {
  EC ec;
  ItemTable *table;
  const char *name;
  OrlDeleteProc proc;
  uint32_t number;    // marks what this run has deferred
  uint64_t position;  // of the expression that the host was last asked to destroy
  PositionQueue thisRound;
  PositionQueue nextRound;
  bool rounds;  // the first pass is over
  bool lost;    // a position could not be queued: the next round visits all
  bool ok;
};

// The index of the first expression at or after a position. Tables are sorted by position.
uint32_t IndexFrom(EC ec, uint64_t position) {
  uint32_t low = 0;
  uint32_t high = HandleArrayRows(ec->expressions);
  while (low < high) {
    const uint32_t middle = low + (high - low) / 2;
    HEXP exp = static_cast<HEXP>(HandleArrayPointerAt(ec->expressions, middle));
    if (exp->entry.order < position) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

HEXP ExpressionFrom(EC ec, uint64_t position) {
  return static_cast<HEXP>(HandleArrayPointerAt(ec->expressions, IndexFrom(ec, position)));
}

bool IsDeferred(const DeleteRun &run, HEXP exp) {
  return exp->deleteRun == run.number;
}

bool IsFree(const DeleteRun &run, HEXP exp) {
  return IsDeferred(run, exp) && ReferenceCount(run.ec, exp->entry.name) == 0;
}

// Asks the host to destroy an expression. When the item's row is gone the host is not asked, and
// the expression is kept.
void AskToDestroy(DeleteRun &run, HEXP exp) {
  ExprItem *row = ItemFind(run.table, run.name);
  run.position = exp->entry.order;
  exp->deleteRun = 0;
  if (row != nullptr) {
    run.ok = run.proc != nullptr && CallHost([&] { return run.proc(run.ec, exp, row); }) != 0;
  }
}

void FirstPass(DeleteRun &run, int32_t kind) {
  UsageWalk walk = UsageWalkBegin(run.ec);
  HEXP exp = ExpressionFrom(run.ec, 0);
  while (run.ok && exp != nullptr) {
    run.position = exp->entry.order;
    if (ItemUsedBy(walk, exp, kind, run.name)) {
      if (ReferenceCount(run.ec, exp->entry.name) != 0) {
        exp->deleteRun = run.number;
      } else {
        const uint64_t revision = run.ec->revision;
        const uint32_t rows = HandleArrayRows(run.ec->expressions);
        AskToDestroy(run, exp);
        // When just one expression was destroyed, which nothing referred to, the results for the
        // others are still valid.
        if (run.ec->revision == revision + 1 && HandleArrayRows(run.ec->expressions) + 1 == rows) {
          walk.revision = run.ec->revision;
        }
      }
    }
    exp = ExpressionFrom(run.ec, run.position + 1);
  }
}

// Fills the queue of the next round by visiting all, for the first round and when a position was
// lost.
void QueueAllFree(DeleteRun &run) {
  run.lost = false;
  run.nextRound.count = 0;
  for (uint32_t i = 0; i < HandleArrayRows(run.ec->expressions); ++i) {
    HEXP exp = static_cast<HEXP>(HandleArrayPointerAt(run.ec->expressions, i));
    if (IsFree(run, exp) && !QueuePush(run.nextRound, exp->entry.order)) {
      run.lost = true;  // the rest is queued in the next round
      return;
    }
  }
}

void Round(DeleteRun &run) {
  std::swap(run.thisRound, run.nextRound);
  run.position = 0;
  while (run.ok && run.thisRound.count > 0) {
    const uint64_t position = QueuePop(run.thisRound);
    HEXP exp = ExpressionFrom(run.ec, position);
    if (exp != nullptr && exp->entry.order == position && IsFree(run, exp)) {
      AskToDestroy(run, exp);
    }
  }
}

// Fallback when not even one position can be queued: asks for the first free expression directly.
void AskForFirstFree(DeleteRun &run) {
  for (uint32_t i = 0; i < HandleArrayRows(run.ec->expressions); ++i) {
    HEXP exp = static_cast<HEXP>(HandleArrayPointerAt(run.ec->expressions, i));
    if (IsFree(run, exp)) {
      AskToDestroy(run, exp);
      return;
    }
  }
}

// Takes back the marks of the run. True when there was one.
bool ClearDeferred(const DeleteRun &run) {
  bool any = false;
  for (uint32_t i = 0; i < HandleArrayRows(run.ec->expressions); ++i) {
    HEXP exp = static_cast<HEXP>(HandleArrayPointerAt(run.ec->expressions, i));
    if (IsDeferred(run, exp)) {
      exp->deleteRun = 0;
      any = true;
    }
  }
  return any;
}

void Rounds(DeleteRun &run) {
  run.rounds = true;
  QueueAllFree(run);
  while (run.ok && (run.nextRound.count > 0 || run.lost)) {
    const bool lost = run.lost;
    if (run.nextRound.count == 0) {
      AskForFirstFree(run);
    }
    Round(run);
    if (lost || run.lost) {
      QueueAllFree(run);
    }
  }
}

// Queues the expressions of a name that nothing refers to any more. The run is also notified while
// a nested run, begun by its host routine, is active.
void QueueFreed(ReferenceListener *listener, const char *name) {
  DeleteRun &run = *static_cast<DeleteRun *>(listener);
  NameEntry *entry = run.rounds ? NameIndexFirst(run.ec->expressionNames, name) : nullptr;
  for (; entry != nullptr; entry = entry->nextSame) {
    if (IsDeferred(run, RowOfEntry<Expression>(entry))) {
      PositionQueue &queue = entry->order > run.position ? run.thisRound : run.nextRound;
      run.lost = !QueuePush(queue, entry->order) || run.lost;
    }
  }
}

}  // namespace

int32_t ORLDeleteExpItem(EC ec, int32_t kind, const char *name, OrlDeleteProc proc) {
  if (ec == nullptr || name == nullptr) {
    return 1;
  }
  DeleteRun run = {};
  run.ec = ec;
  run.table = kind == ORL_INPUT ? &ec->inputs : &ec->functions;
  run.name = name;
  run.proc = proc;
  run.ok = true;
  if (ItemFind(run.table, name) == nullptr) {
    return 1;
  }
  run.number = ++ec->deleteRuns;
  run.lastRemoved = &QueueFreed;
  run.outer = ec->listener;
  ec->listener = &run;
  FirstPass(run, kind);
  Rounds(run);
  // A deferred expression is left only if the host kept what it was asked to destroy; the delete
  // then fails.
  run.ok = !ClearDeferred(run) && run.ok;
  ec->listener = run.outer;
  --ec->deleteRuns;
  if (run.ok) {
    ItemRemove(ec, run.table, name);
  }
  return run.ok ? 1 : 0;
}
