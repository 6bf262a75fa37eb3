// Exact decimal numbers: the form inside a NumberValue and how results are brought into it.
//
// A number is +-c * 10^e with a coefficient c of at most 26 digits and -128 <= e <= 127. Every
// value has one canonical form:
//
//   e = 0   whole numbers of at most 26 digits, zero among them (without a minus sign)
//   e < 0   numbers with a fraction; c does not end in the digit 0
//   e > 0   larger whole numbers; c has all 26 digits
//
// so equal values have equal bytes, and whole numbers and amounts of money mostly meet at the same
// exponent, where a sum is one addition. The twelve payload bytes, in the machine's byte order:
//
//   0..3    bits 0-7 e in two's complement; bits 8-30 the upper 23 bits of c; bit 31 the minus sign
//   4..11   the lower 64 bits of c
#ifndef ORLI11_CLOSED_WREN_DECIMAL_H
#define ORLI11_CLOSED_WREN_DECIMAL_H

#include <cstdint>
#include <cstring>

#include "wreni11.h"

__extension__ typedef unsigned __int128 Uint128;

// A canonical number taken apart.
struct Decimal {
  Uint128 coefficient;
  int32_t exponent;
  bool negative;
};

constexpr uint8_t kNumberLength = 12;  // the length byte of every number
constexpr int32_t kDigits = 26;        // of a coefficient
constexpr int32_t kMinExponent = -128;
constexpr int32_t kMaxExponent = 127;
constexpr int32_t kPowers = 39;  // powers of ten that 128 bits hold: 10^0 to 10^38

struct PowerTable {
  Uint128 of[kPowers];
};

constexpr PowerTable MakePowersOfTen() {
  PowerTable table{};
  Uint128 power = 1;
  for (Uint128 &entry : table.of) {
    entry = power;
    power *= 10;
  }
  return table;
}

inline constexpr PowerTable kPowersOfTen = MakePowersOfTen();
constexpr Uint128 kCoefficientEnd = kPowersOfTen.of[kDigits];       // above every coefficient
constexpr Uint128 kFullCoefficient = kPowersOfTen.of[kDigits - 1];  // the first of 26 digits

// Decimal digits of c, 0 for zero.
int32_t DecimalDigitCount(Uint128 c);
// c without its last `drop` digits, rounded half away from zero; `drop` is above 0.
Uint128 DecimalDropDigits(Uint128 c, int64_t drop);
// Writes the digits of c, at least one and at most 39, without a terminator; returns their count.
int32_t DecimalWriteDigits(Uint128 c, char *target);
// Stores the value nearest to +-c * 10^exponent; null when it is too large. `result` may be null.
void DecimalStoreNearest(NumberValue *result, Uint128 c, int32_t exponent, bool negative);

inline void DecimalStoreNull(NumberValue *result) {
  if (result != nullptr) std::memset(result, 0, sizeof *result);
}

// Stores a canonical number.
inline void DecimalStore(NumberValue *result, const Decimal &d) {
  if (result == nullptr) return;
  const uint64_t low = static_cast<uint64_t>(d.coefficient);
  const uint32_t head = static_cast<uint8_t>(d.exponent) |
                        static_cast<uint32_t>(d.coefficient >> 64) << 8 |
                        (d.negative ? UINT32_C(1) << 31 : 0);
  result->length = kNumberLength;
  std::memcpy(result->payload, &head, sizeof head);
  std::memcpy(result->payload + 4, &low, sizeof low);
}

// Whether c, below 2^87, ends in the digit 0. As 2^64 leaves 1 when divided by 5, the two halves
// may be added for the remainder, and a carry out of their sum counts 1.
inline bool DecimalEndsInZero(Uint128 c) {
  const uint64_t low = static_cast<uint64_t>(c);
  if ((low & 1) != 0) return false;
  const uint64_t high = static_cast<uint64_t>(c >> 64);
  const uint64_t sum = low + high;
  return (sum + (sum < low ? 1 : 0)) % 5 == 0;
}

// Whether d is the canonical form of its value.
inline bool DecimalIsCanonical(const Decimal &d) {
  if (d.coefficient >= kCoefficientEnd) return false;
  if (d.exponent == 0) return d.coefficient != 0 || !d.negative;
  if (d.exponent > 0) return d.coefficient >= kFullCoefficient;
  return !DecimalEndsInZero(d.coefficient);
}

// As DecimalStoreNearest, quick for a result that is canonical already.
inline void DecimalFinish(NumberValue *result, Uint128 c, int32_t exponent, bool negative) {
  const Decimal d = {c, exponent, negative};
  if (exponent <= 0 && exponent >= kMinExponent && DecimalIsCanonical(d)) {
    DecimalStore(result, d);
  } else {
    DecimalStoreNearest(result, c, exponent, negative);
  }
}

// Takes a number apart; false for null and for everything that is no canonical number.
inline bool DecimalLoad(const NumberValue *value, Decimal *d) {
  if (value == nullptr || value->length != kNumberLength) return false;
  uint32_t head = 0;
  uint64_t low = 0;
  std::memcpy(&head, value->payload, sizeof head);
  std::memcpy(&low, value->payload + 4, sizeof low);
  d->coefficient = static_cast<Uint128>(head << 1 >> 9) << 64 | low;
  d->exponent = static_cast<int32_t>(head << 24) >> 24;
  d->negative = head >> 31 != 0;
  return DecimalIsCanonical(*d);
}

#endif
