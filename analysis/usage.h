// Usage queries: what an expression uses, through the formulas that it refers to.
#ifndef ORLI11_ANALYSIS_USAGE_H
#define ORLI11_ANALYSIS_USAGE_H

#include <cstdint>

#include "engine/expressions.h"

// A walk enters each formula once. Results are cached in the expressions and are valid for further
// queries of the same kind until the tables of the context change.
struct UsageWalk {
  EC ec;
  uint64_t revision;  // of the context when the walk began
  uint32_t number;
  bool circular;  // formulas refer to each other in a cycle: no result may be cached
};

UsageWalk UsageWalkBegin(EC ec);

// ORLIsItemUsed for one expression after another.
bool ItemUsedBy(UsageWalk &walk, HEXP exp, int32_t kind, const char *name);

#endif
