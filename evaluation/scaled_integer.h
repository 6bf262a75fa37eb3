// Numbers as integers of a fixed scale and as doubles: divisions of 128 bits by powers of ten.
#ifndef ORLI11_EVALUATION_SCALED_INTEGER_H
#define ORLI11_EVALUATION_SCALED_INTEGER_H

#include <bit>
#include <cassert>
#include <cmath>
#include <cstdint>

#include "closed/wren/decimal.h"

constexpr int32_t kMostFives = 27;  // 5^27 is the largest power of five in 64 bits

// A division by a power of ten that rounds half away from zero.
struct PowerDivision {
  int32_t digits;
  Uint128 half;    // of the power
  uint64_t fives;  // 5^digits; 0 where 64 bits do not hold it
};

// By 10^digits, from 10 to 10^38.
inline PowerDivision DivisionBy(int32_t digits) {
  assert(digits > 0 && digits < kPowers);
  const Uint128 power = kPowersOfTen.of[digits];
  return {digits, power / 2,
          digits <= kMostFives ? static_cast<uint64_t>(power >> digits) : UINT64_C(0)};
}

// dividend / divisor, where the divisor is below 2^63 and the dividend below 2^127.
inline Uint128 QuotientOf(Uint128 dividend, uint64_t divisor) {
  assert(divisor != 0 && divisor >> 63 == 0 && dividend >> 127 == 0);
  const auto high = static_cast<int64_t>(dividend >> 64);
  const double estimate =
      (static_cast<double>(high) * 0x1p64 + static_cast<double>(static_cast<uint64_t>(dividend))) /
      static_cast<double>(divisor);
  if (estimate >= 0x1p50) {
    return dividend / divisor;
  }
  // The estimate is off by one at most.
  const auto near = static_cast<uint64_t>(estimate);
  const auto left = static_cast<Int128>(dividend - static_cast<Uint128>(near) * divisor);
  return near + (left >= static_cast<Int128>(divisor) ? 1 : 0) - (left < 0 ? 1 : 0);
}

// c is below 2^126 in magnitude.
inline Int128 RoundedQuotient(const PowerDivision &by, Int128 c) {
  const Uint128 sum = DecimalMagnitude({c, 0}) + by.half;
  Uint128 quotient = 0;
  const Uint128 rest = sum >> by.digits;
  const auto high = static_cast<uint64_t>(rest >> 64);
  if (by.fives == 0) {
    quotient = sum / kPowersOfTen.of[by.digits];
  } else if (high == 0) {
    quotient = static_cast<uint64_t>(rest) / by.fives;
  } else {
    quotient = QuotientOf(rest, by.fives);
  }
  return DecimalOfMagnitude(quotient, 0, c < 0).coefficient;
}

// coefficient * 10^exponent, rounded half away from zero to `scale` decimals, as an integer of
// 10^-scale; false when 128 bits do not hold it.
inline bool ScaledInteger(Int128 *result, const Decimal &d, int32_t scale) {
  const int32_t shift = scale + d.exponent;
  if (shift >= 0) {
    *result = d.coefficient;
    return d.coefficient == 0 ||
           (shift < kPowers &&
            !__builtin_mul_overflow(d.coefficient, static_cast<Int128>(kPowersOfTen.of[shift]),
                                    result));
  }
  *result = -shift < kPowers ? RoundedQuotient(DivisionBy(-shift), d.coefficient) : 0;
  return true;
}

// The double nearest to a number; false for exponents that it does not handle.
inline bool NearestDouble(double *result, const Decimal &d) {
  if (d.exponent > 0 || d.exponent < -kMostFives) {
    return false;
  }
  const Uint128 magnitude = DecimalMagnitude(d);
  if (magnitude == 0) {
    *result = 0;
    return true;
  }
  const auto high = static_cast<uint64_t>(magnitude >> 64);
  const int32_t shift =
      high != 0 ? std::countl_zero(high) : 64 + std::countl_zero(static_cast<uint64_t>(magnitude));
  const auto fives = static_cast<uint64_t>(kPowersOfTen.of[-d.exponent] >> -d.exponent);
  const Uint128 shifted = magnitude << shift;
  // At least 64 bits; the lowest one also represents the bits below it.
  const Uint128 quotient = shifted / fives;
  const Uint128 rest = shifted - quotient * fives;
  const auto nearest = static_cast<double>(quotient | (rest != 0 ? 1 : 0));
  *result = std::ldexp(d.coefficient < 0 ? -nearest : nearest, d.exponent - shift);
  return true;
}

#endif
