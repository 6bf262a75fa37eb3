// Digits read from a text, of any length.
#ifndef ORLI11_CLOSED_WREN_DIGIT_RUN_H
#define ORLI11_CLOSED_WREN_DIGIT_RUN_H

#include "closed/wren/decimal.h"

inline bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Collects significant digits: the first 38 are kept, and the places of all are counted. Later
// digits cannot change how these are rounded to 26.
struct DigitRun {
  Uint128 coefficient;
  int64_t exponent;  // the value so far is coefficient * 10^exponent, without the dropped digits
};

// Adds the next digit, '0' to '9'; `fraction` is true for one after the point.
inline void DigitRunAdd(DigitRun *run, char digit, bool fraction) {
  if (run->coefficient < kPowersOfTen.of[kPowers - 2]) {
    run->coefficient = run->coefficient * 10 + static_cast<Uint128>(digit - '0');
    if (fraction) {
      run->exponent -= 1;
    }
  } else if (!fraction) {
    run->exponent += 1;
  }
}

// Stores the digits with their sign * 10^exponent, rounded; null when that is too large.
inline void DigitRunFinish(NumberValue *result, const DigitRun &run, int64_t exponent,
                           bool negative) {
  constexpr int64_t kBeyond = 1000;  // far out of range in either direction
  int64_t place = run.exponent + exponent;
  if (place > kBeyond) {
    place = kBeyond;
  }
  if (place < -kBeyond) {
    place = -kBeyond;
  }
  Decimal d = {};
  if (DecimalRounded(&d, run.coefficient, static_cast<int32_t>(place), negative)) {
    DecimalStore(result, d);
  } else {
    DecimalStoreNull(result);
  }
}

#endif
