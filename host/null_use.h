// The columns in which formulas count an empty field as zero.
#ifndef ORLI11_HOST_NULL_USE_H
#define ORLI11_HOST_NULL_USE_H

#include <string>
#include <vector>

#include "host/formulas.h"

// The names, as formulas write them, that a formula uses where null counts as zero: as operands, in
// conditions and counts, not where null stays null or becomes the empty string.
struct ZeroUses {
  HEXP exp = nullptr;
  std::vector<std::string> names;
};

// The uses of all these formulas, through one another as well.
std::vector<ZeroUses> ZeroUsesOf(const std::vector<Formula> &formulas);

#endif
