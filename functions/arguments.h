// The arguments of a function routine. An argument without a value (a null entry, or no arguments
// at all) counts as a null value or as the empty string.
#ifndef ORLI11_FUNCTIONS_ARGUMENTS_H
#define ORLI11_FUNCTIONS_ARGUMENTS_H

#include <cstdint>

#include "wreni11.h"

constexpr NumberValue kNullNumber = {};

// The Number or Date at an index.
inline const NumberValue &NumberArgument(void *const *args, int32_t index) {
  const void *entry = args != nullptr ? args[index] : nullptr;
  return entry != nullptr ? *static_cast<const NumberValue *>(entry) : kNullNumber;
}

inline const char *TextArgument(void *const *args, int32_t index) {
  const void *entry = args != nullptr ? args[index] : nullptr;
  return entry != nullptr ? static_cast<const char *>(entry) : "";
}

// The precision of a truncation that keeps all digits.
constexpr int32_t kAllDigits = 300;

// A count or position: a null Number is 0, a fraction is truncated, values beyond 32 bits saturate.
inline int32_t CountArgument(void *const *args, int32_t index) {
  const NumberValue &number = NumberArgument(args, index);
  return WRENNumIsNull(&number) != 0 ? 0 : WRENNumToInt(&number);
}

// The index of the argument selected by the sign of the selector at index 0: 1 for a number below
// zero, 2 for zero and null, 3 for a number above zero.
inline int32_t SelectedArgument(void *const *args) {
  constexpr int32_t kZeroCase = 2;
  const NumberValue &selector = NumberArgument(args, 0);
  if (WRENNumIsNull(&selector) != 0) {
    return kZeroCase;
  }
  NumberValue zero;
  WRENNumFromLong(&zero, 0);
  const int32_t sign = WRENNumCompare(&selector, &zero);
  return kZeroCase + (sign > 0 ? 1 : 0) - (sign < 0 ? 1 : 0);
}

#endif
