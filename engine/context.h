// The expression context: the record that an EC points to.
#ifndef ORLI11_ENGINE_CONTEXT_H
#define ORLI11_ENGINE_CONTEXT_H

#include <cstddef>
#include <cstdint>

#include "dates/date_text.h"
#include "engine/handle_array.h"
#include "engine/name_index.h"
#include "orli11.h"
#include "platform/owned.h"

// One of the three tables of items: rows in insertion order, and the index of their names.
struct ItemTable {
  HandleArray rows;  // pointers to ExprItem; null until the first one
  NameIndex index;
};

// Groups of operator callbacks, in the order in which a context holds and stores them.
enum OperatorGroup : int32_t {
  kGroupAdd,
  kGroupSub,
  kGroupMul,
  kGroupDiv,
  kGroupConcat,
  kGroupCount
};
// The data type of values that only routines of the host compute with. Types above it have no
// values.
constexpr int32_t kHostType = 3;
constexpr int32_t kOperatorTypes = kHostType + 1;

struct OperatorSlots {
  char *names[kOperatorTypes];
  OrlOperatorProc procs[kOperatorTypes];
};

// Selects the base text and the counter from which a name is generated.
enum ExpressionClass : int32_t { kClassFormula, kClassRange, kClassSet, kClassCount };

constexpr int32_t kHelpPathSize = 520;

// Bytes of an item's or a formula's name, with the terminator.
constexpr size_t kItemNameSize = sizeof ExprItem::name;

struct ReferenceListener;
struct RowSource;
struct Expression;

// See expression_order.h.
struct ExpressionOrder {
  Expression *lowest, *highest;
  bool broken;
};

struct ExprContext {
  void *owner;              // a window handle of the host or null
  HandleArray expressions;  // pointers to Expression; null until the first one
  ItemTable functions;
  ItemTable inputs;
  ItemTable keywords;
  OrlLookupProc lookupProc;
  intptr_t userLong;
  uint16_t nextNumber[kClassCount];
  uint16_t flags;
  char *pictures[kDateForms];
  int32_t pictureWidth;
  OrlDelPermissionProc delPermissionProc;
  OrlListValuesProc listValuesProc;
  OrlRenameProc renameProc;
  char *dateConvert[kDateForms];
  uint16_t dateConvertFlags;
  bool hasNumberOperators;  // a callback replaces the arithmetic of some operator
  OperatorSlots operators[kGroupCount];
  void *numberBlock;  // owned blocks reserved for the next call of a host routine, or null
  void *textBlock;
  RowSource *
      rowSource;  // the columns that supply item values while rows are computed one by one, or null
  int32_t concatAllowed;
  int32_t helpContext;
  char helpPath[kHelpPathSize];

  NameIndex expressionNames;
  NameIndex references;         // names that stored trees refer to as formulas; see references.h
  ReferenceListener *listener;  // called when a name loses its last reference, or null
  uint64_t generation;  // incremented when a name may resolve differently: cached lookups are stale
  uint64_t revision;    // incremented by every change of a tree or table
  uint32_t walkNumber;  // of the last walk through named formulas

  ExpressionOrder order;
  int64_t *searchSteps;  // steps left to searches for cycles, while they are limited

  // The last item query. Hosts ask about one expression after another, so its walk is reused.
  char lastUsageName[kItemNameSize];
  int32_t lastUsageKind;
  uint32_t lastUsageWalk;  // the walk's number; 0 without a query
  // Nesting depth of guarded deletes: each runs inside a host routine called by the previous one.
  uint32_t deleteRuns;
  uint64_t lastUsageRevision;
};

// Sets the routine of an operator for a data type; null removes it.
void SetOperatorRoutine(EC ec, OperatorGroup group, int32_t dataType, OrlOperatorProc routine);

// A row was added, removed or renamed.
inline void ContextChanged(EC ec) {
  ++ec->generation;
  ++ec->revision;
}

#endif
