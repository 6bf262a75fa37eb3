#include "closed/wren/decimal.h"

#include <bit>

namespace {

// One way to take zeros off the end of a coefficient. A number is divisible by 5^n exactly when its
// product with the inverse of 5^n modulo 2^128 is at most (2^128 - 1) / 5^n, and that product is
// then the quotient (Granlund and Montgomery, "Division by Invariant Integers using
// Multiplication", section 9).
struct ZeroStep {
  int32_t zeros;
  Uint128 inverse;
  Uint128 bound;
};

constexpr ZeroStep MakeZeroStep(int32_t zeros) {
  Uint128 divisor = 1;
  for (int32_t i = 0; i < zeros; ++i) divisor *= 5;
  Uint128 inverse = divisor;  // right in the last three bits; each step doubles them
  for (int32_t bits = 3; bits < 128; bits *= 2) inverse *= 2 - divisor * inverse;
  return {zeros, inverse, ~static_cast<Uint128>(0) / divisor};
}

// Halving steps: together they reach every count from 0 to 31.
constexpr ZeroStep kZeroSteps[] = {MakeZeroStep(16), MakeZeroStep(8), MakeZeroStep(4),
                                   MakeZeroStep(2), MakeZeroStep(1)};

// Takes trailing zeros off until the exponent is 0.
void StripZeros(Uint128 *c, int32_t *exponent) {
  for (const ZeroStep &step : kZeroSteps) {
    const Uint128 mask = (static_cast<Uint128>(1) << step.zeros) - 1;
    if (-*exponent < step.zeros || (*c & mask) != 0) continue;
    const Uint128 quotient = (*c >> step.zeros) * step.inverse;
    if (quotient > step.bound) continue;
    *c = quotient;
    *exponent += step.zeros;
  }
}

// Rounds to what a coefficient holds and to the smallest exponent.
void RoundToForm(Uint128 *c, int32_t *exponent) {
  const int32_t excess = DecimalDigitCount(*c) - kDigits;
  const int32_t shift = kMinExponent - *exponent;
  const int32_t drop = excess > shift ? excess : shift;
  *c = DecimalDropDigits(*c, drop);
  *exponent += drop;
  if (*c == kCoefficientEnd) {  // 99..9 was rounded up
    *c = kFullCoefficient;
    *exponent += 1;
  }
}

}  // namespace

int32_t DecimalDigitCount(Uint128 c) {
  const uint64_t high = static_cast<uint64_t>(c >> 64);
  const int32_t bits = high != 0 ? 64 + static_cast<int32_t>(std::bit_width(high))
                                 : static_cast<int32_t>(std::bit_width(static_cast<uint64_t>(c)));
  const int32_t estimate = bits * 1233 >> 12;  // bits * log10(2), rounded down
  return estimate + (c >= kPowersOfTen.of[estimate] ? 1 : 0);
}

Uint128 DecimalDropDigits(Uint128 c, int64_t drop) {
  if (drop >= kPowers) return 0;  // 2^128 is less than half of 10^39
  // All but one of the digits are cut, not rounded: that changes nothing of which half it is.
  return (c / kPowersOfTen.of[drop - 1] + 5) / 10;
}

int32_t DecimalWriteDigits(Uint128 c, char *target) {
  constexpr int32_t kChunk = 19;  // digits that 64 bits hold
  int32_t left = DecimalDigitCount(c);
  if (left == 0) left = 1;
  const int32_t count = left;
  while (left > 0) {
    uint64_t chunk = static_cast<uint64_t>(c % kPowersOfTen.of[kChunk]);
    c /= kPowersOfTen.of[kChunk];
    for (int32_t i = 0; i < kChunk && left > 0; ++i, chunk /= 10) {
      target[--left] = static_cast<char>('0' + chunk % 10);
    }
  }
  return count;
}

void DecimalStoreNearest(NumberValue *result, Uint128 c, int32_t exponent, bool negative) {
  if (c >= kCoefficientEnd || exponent < kMinExponent) RoundToForm(&c, &exponent);
  if (c == 0) {
    exponent = 0;
    negative = false;
  } else if (exponent < 0) {
    if (DecimalEndsInZero(c)) StripZeros(&c, &exponent);
  } else {
    for (; exponent > 0 && c < kFullCoefficient; --exponent) c *= 10;
    if (exponent > kMaxExponent) {
      DecimalStoreNull(result);
      return;
    }
  }
  DecimalStore(result, {c, exponent, negative});
}
