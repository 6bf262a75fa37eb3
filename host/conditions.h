// The rows that a command selects: values of formulas in ranges and sets.
#ifndef ORLI11_HOST_CONDITIONS_H
#define ORLI11_HOST_CONDITIONS_H

#include <cstdint>
#include <string>
#include <vector>

#include "host/formulas.h"
#include "host/values.h"

// TEXT=BOUNDS: a formula whose value must lie in a range, be a member of a set or equal a value.
struct Condition {
  size_t tested = 0, bounds = 0;  // formulas by their index among those to be defined
  size_t first = 0, count = 0;    // the members of the bounds
  bool range = false;
  int32_t type = ORL_TYPE_NUMBER;
  HEXP test = nullptr;
  std::vector<HEXP> members;
  // Rows for which both ends of the range were known, and those of them with the low end above the
  // high one.
  int64_t rows = 0, reversed = 0;
};

// Parses a condition and adds its formulas to those that will be defined. BOUNDS is the name of a
// range or set among these, or a text of its own. False with a message.
bool ConditionParse(const std::string &argument, std::vector<Formula> &formulas,
                    Condition &condition, std::string &error);

// Completes a condition when its formulas are defined. False with a message for incompatible
// types.
bool ConditionFinish(EC ec, const std::vector<Formula> &formulas, Condition &condition,
                     std::string &error);

// Whether the present values of the input items meet the condition. Null numbers and dates, and
// missing values, are in no range and no set. Counts reversed ranges.
bool ConditionMet(EC ec, Condition &condition);

#endif
