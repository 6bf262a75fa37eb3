// Usage queries: what an expression uses, through the formulas that it refers to.
#ifndef ORLI11_ANALYSIS_USAGE_H
#define ORLI11_ANALYSIS_USAGE_H

#include <cstdint>

#include "engine/expressions.h"

// A walk enters each formula once. Results are kept in the expressions and hold for further
// questions of the same kind while the tables of the context stay as they are.
struct UsageWalk {
  EC ec;
  uint64_t revision;  // of the context when the walk began
  uint64_t number;
  bool circular;  // formulas refer to each other in a circle: no answer may be kept
};

UsageWalk UsageWalkBegin(EC ec);

// ORLIsItemUsed for one expression after the other.
bool ItemUsedBy(UsageWalk &walk, HEXP exp, int32_t kind, const char *name);

#endif
