// The expression context: the record that an EC points to.
#ifndef ORLI11_ENGINE_CONTEXT_H
#define ORLI11_ENGINE_CONTEXT_H

#include <cstdint>

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
constexpr int32_t kOperatorTypes = 4;

struct OperatorSlots {
  char *names[kOperatorTypes];
  OrlOperatorProc procs[kOperatorTypes];
};

// The base text and counter of a generated name.
enum ExpressionClass : int32_t { kClassFormula, kClassRange, kClassSet, kClassCount };

constexpr int32_t kHelpPathSize = 520;

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
  char *pictures[3];
  int32_t pictureWidth;
  OrlDelPermissionProc delPermissionProc;
  OrlListValuesProc listValuesProc;
  OrlRenameProc renameProc;
  char *dateConvert[3];
  uint16_t dateConvertFlags;
  bool hasNumberOperators;  // a callback replaces the arithmetic of some operator
  OperatorSlots operators[kGroupCount];
  void *numberBlock;  // owned blocks reserved for the next call of a host routine, or null
  void *textBlock;
  RowSource *rowSource;  // of the rows that are being computed one by one, or null
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

  // The last usage query for an item: hosts query one expression after another.
  char askedName[65];
  int32_t askedKind;
  uint32_t askedNumber;  // of the walk; 0 without a query
  uint32_t deleteRuns;   // guarded deletes that are active, each inside a routine of the one before
  uint64_t askedRevision;
};

// Sets the routine of an operator for a data type; null removes it.
void SetOperatorRoutine(EC ec, OperatorGroup group, int32_t dataType, OrlOperatorProc routine);

// A row was added, removed or renamed.
inline void ContextChanged(EC ec) {
  ++ec->generation;
  ++ec->revision;
}

#endif
