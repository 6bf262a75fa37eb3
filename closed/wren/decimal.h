// Exact decimal numbers: the form inside a NumberValue, and the arithmetic on unpacked numbers.
//
// A number is c * 10^e with a coefficient c of at most 26 digits and -128 <= e <= 127. Every value
// has one canonical form:
//
//   e = 0   integers of at most 26 digits, zero among them (without a minus sign)
//   e < 0   numbers with a fraction; c does not end in the digit 0
//   e > 0   larger integers; c has all 26 digits
//
// so equal values have equal bytes. The twelve payload bytes, in the machine's byte order:
//
//   0..3    bits 0-7 e in two's complement; bits 8-30 the upper 23 bits of |c|; bit 31 the sign
//   4..11   the lower 64 bits of |c|
//
// Arithmetic works on the unpacked form, whose coefficient may end in zeros: only DecimalStore
// produces the canonical one. Sums and products of the usual operands (64-bit coefficients) and
// quotients by the usual divisors (products of 2 and 5, and 64-bit divisors) are computed inline or
// with 128/64-bit divisions; everything else takes the general routines in decimal.cpp. Both paths
// compute the same values, since each operation rounds its exact result once.
#ifndef ORLI11_CLOSED_WREN_DECIMAL_H
#define ORLI11_CLOSED_WREN_DECIMAL_H

#include <bit>
#include <cassert>
#include <cstdint>
#include <cstring>

#include "wreni11.h"

__extension__ typedef unsigned __int128 Uint128;
__extension__ typedef __int128 Int128;

// An unpacked number. Where the exponent is above 0 the coefficient has 26 digits.
struct Decimal {
  Int128 coefficient;  // below 10^26 in magnitude
  int32_t exponent;    // kMinExponent to kMaxExponent
};

// A number whose coefficient fits 64 bits with its sign, as most do; its exponent is 0 or below.
// The inline operations use it, in registers: copying 128 bits as a whole right after writing them
// in halves stalls the processor.
struct NarrowDecimal {
  int64_t coefficient;
  int32_t exponent;
};

constexpr uint8_t kNumberLength = 12;  // the length byte of every number
constexpr int32_t kDigits = 26;        // of a coefficient
constexpr int32_t kMinExponent = -128;
constexpr int32_t kMaxExponent = 127;
constexpr int32_t kPowers = 39;    // powers of ten that 128 bits hold: 10^0 to 10^38
constexpr int32_t kPowers64 = 20;  // powers of ten that 64 bits hold

template <class Number, int32_t Count>
struct PowerTable {
  Number of[Count];
};

template <class Number, int32_t Count>
constexpr PowerTable<Number, Count> MakePowersOf(Number base) {
  PowerTable<Number, Count> table{};
  Number power = 1;
  for (Number &entry : table.of) {
    entry = power;
    power *= base;
  }
  return table;
}

inline constexpr auto kPowersOfTen = MakePowersOf<Uint128, kPowers>(10);
inline constexpr auto kPowersOfTen64 = MakePowersOf<uint64_t, kPowers64>(10);
constexpr Uint128 kCoefficientEnd = kPowersOfTen.of[kDigits];       // above every coefficient
constexpr Uint128 kFullCoefficient = kPowersOfTen.of[kDigits - 1];  // the first of 26 digits

// ---- Out of line: any operands ----

// Decimal digits of c, 0 for zero.
int32_t DecimalDigitCount(Uint128 c);
// c without its last `drop` digits, rounded half away from zero; `drop` is above 0.
Uint128 DecimalDropDigits(Uint128 c, int64_t drop);
// Writes the digits of c, at least one and at most 39, without a terminator; returns their count.
int32_t DecimalWriteDigits(Uint128 c, char *target);

// Set `result` to the number nearest to +-c * 10^exponent, a sum, a product or a quotient by a
// number that is not zero. False, with the result unspecified, when the value is too large.
bool DecimalRounded(Decimal *result, Uint128 c, int32_t exponent, bool negative);
bool DecimalAddAny(Decimal *result, const Decimal &a, const Decimal &b);
bool DecimalMultiplyAny(Decimal *result, const Decimal &a, const Decimal &b);
bool DecimalDivide(Decimal *result, const Decimal &a, const Decimal &b);

// Removes trailing zeros from the coefficient until none is left or the exponent is 0.
void DecimalStripZeros(Decimal *d);
// DecimalStore, for numbers that are not narrow or end in several zeros.
void DecimalStoreAny(NumberValue *result, const Decimal &d);

// Set `result` to the value rounded half away from zero to `decimals` places after the point, or
// cut to `precision` digits and `decimals` places. False when the value is too large.
bool DecimalRoundTo(Decimal *result, const Decimal &d, int32_t decimals);
bool DecimalTruncateTo(Decimal *result, const Decimal &d, int32_t precision, int32_t decimals);

// -1, 0 or 1.
int32_t DecimalCompare(const Decimal &a, const Decimal &b);
// The integer part; saturates.
int32_t DecimalToInt(const Decimal &d);

// ---- Packing ----

inline Uint128 DecimalMagnitude(const Decimal &d) {
  const Uint128 sign = static_cast<Uint128>(d.coefficient >> 127);
  return (static_cast<Uint128>(d.coefficient) ^ sign) - sign;
}

inline Decimal DecimalOfMagnitude(Uint128 c, int32_t exponent, bool negative) {
  const Uint128 sign = static_cast<Uint128>(0) - static_cast<Uint128>(negative);
  return {static_cast<Int128>((c ^ sign) - sign), exponent};
}

// Whether the coefficient of a canonical form fits 64 bits with its sign, as most do.
inline bool DecimalIsNarrow(const Decimal &d) {
  return static_cast<int64_t>(d.coefficient) == d.coefficient;
}

inline NarrowDecimal DecimalNarrow(const Decimal &d) {
  return {static_cast<int64_t>(d.coefficient), d.exponent};
}

// c / 10 when c ends in the digit 0; otherwise a value above kTenthBound.
constexpr uint64_t kTenthBound = UINT64_MAX / 10;
inline uint64_t DecimalTenth(uint64_t c) {
  // Multiplying by the inverse of 5 divides exactly when 5 divides c. The rotation halves even
  // products and makes odd ones exceed the bound.
  return std::rotr(c * UINT64_C(0xCCCCCCCCCCCCCCCD), 1);
}

// Whether c, below 2^87, ends in the digit 0. It does when it is even and divisible by 5: since
// 2^64 = 1 (mod 5), c mod 5 is (high + low) mod 5, and a carry adds 1.
inline bool DecimalEndsInZero(Uint128 c) {
  assert(c >> 87 == 0);
  const uint64_t low = static_cast<uint64_t>(c);
  const uint64_t high = static_cast<uint64_t>(c >> 64);
  if (high == 0) {
    return DecimalTenth(low) <= kTenthBound;
  }
  const uint64_t sum = low + high;
  return (low & 1) == 0 && (sum + (sum < low ? 1 : 0)) % 5 == 0;
}

inline void DecimalStoreNull(NumberValue *result) {
  if (result != nullptr) {
    std::memset(result, 0, sizeof *result);
  }
}

// Writes the bytes of a number in its canonical form.
inline void DecimalPack(NumberValue *result, int32_t exponent, bool negative, Uint128 c) {
  const uint64_t low = static_cast<uint64_t>(c);
  const uint32_t head = static_cast<uint8_t>(exponent) | static_cast<uint32_t>(c >> 64) << 8 |
                        static_cast<uint32_t>(negative) << 31;
  if (result == nullptr) {
    return;
  }
  result->length = kNumberLength;
  std::memcpy(result->payload, &head, sizeof head);
  std::memcpy(result->payload + 4, &low, sizeof low);
}

// Copies a number in the pieces in which DecimalPack writes it.
inline void DecimalCopy(NumberValue *target, const NumberValue &source) {
  uint32_t head = 0;
  uint64_t low = 0;
  std::memcpy(&head, source.payload, sizeof head);
  std::memcpy(&low, source.payload + 4, sizeof low);
  target->length = source.length;
  std::memcpy(target->payload, &head, sizeof head);
  std::memcpy(target->payload + 4, &low, sizeof low);
}

inline void DecimalStoreNarrow(NumberValue *result, NarrowDecimal d) {
  // The trailing digits of results cannot be predicted, so one zero is removed without a branch.
  const bool negative = d.coefficient < 0;
  const uint64_t bits = static_cast<uint64_t>(d.coefficient);
  const uint64_t c = negative ? 0 - bits : bits;
  const uint64_t tenth = DecimalTenth(c);
  const bool zero = (d.exponent < 0) & (tenth <= kTenthBound);
  const uint64_t low = zero ? tenth : c;
  const int32_t exponent = d.exponent + static_cast<int32_t>(zero);
  if (exponent < 0 && DecimalTenth(low) <= kTenthBound) [[unlikely]] {
    DecimalStoreAny(result, {d.coefficient, d.exponent});
  } else {
    DecimalPack(result, exponent, negative, low);
  }
}

// Stores a number in its canonical form.
inline void DecimalStore(NumberValue *result, const Decimal &d) {
  if (DecimalIsNarrow(d)) [[likely]] {
    DecimalStoreNarrow(result, DecimalNarrow(d));
  } else {
    DecimalStoreAny(result, d);
  }
}

// Unpacks the payload of a narrow number; false for all other bytes.
inline bool DecimalUnpackNarrow(uint32_t head, uint64_t low, NarrowDecimal *d) {
  // Without branches: the trailing digits of a host's values cannot be predicted.
  const int32_t exponent = static_cast<int32_t>(head << 24) >> 24;
  const bool negative = head >> 31 != 0;
  const uint64_t mask = static_cast<uint64_t>(0) - static_cast<uint64_t>(negative);
  *d = {static_cast<int64_t>((low ^ mask) - mask), exponent};
  const bool zeros = (exponent < 0) & (DecimalTenth(low) <= kTenthBound);
  const bool wide = ((head << 1 >> 9) != 0) | (low >> 63 != 0);
  return !(wide | zeros | (exponent > 0) | (negative & (low == 0)));
}

// Unpacks a payload; false for bytes that are not a number in canonical form.
inline bool DecimalUnpack(uint32_t head, uint64_t low, Decimal *d) {
  NarrowDecimal narrow;
  if (DecimalUnpackNarrow(head, low, &narrow)) [[likely]] {
    *d = {narrow.coefficient, narrow.exponent};
    return true;
  }
  const int32_t exponent = static_cast<int32_t>(head << 24) >> 24;
  const bool negative = head >> 31 != 0;
  const Uint128 c = static_cast<Uint128>(head << 1 >> 9) << 64 | low;
  *d = DecimalOfMagnitude(c, exponent, negative);
  if (c >= kCoefficientEnd) {
    return false;
  }
  if (exponent > 0) {
    return c >= kFullCoefficient;
  }
  return !(negative && c == 0) && (exponent == 0 || !DecimalEndsInZero(c));
}

// Unpacks a number that is narrow; false for all others and for null.
inline bool DecimalLoadNarrow(const NumberValue *value, NarrowDecimal *d) {
  if (value == nullptr || value->length != kNumberLength) {
    return false;
  }
  uint32_t head = 0;
  uint64_t low = 0;
  std::memcpy(&head, value->payload, sizeof head);
  std::memcpy(&low, value->payload + 4, sizeof low);
  return DecimalUnpackNarrow(head, low, d);
}

// Unpacks a number; false for null and for everything that is not a canonical number.
inline bool DecimalLoad(const NumberValue *value, Decimal *d) {
  if (value == nullptr || value->length != kNumberLength) {
    return false;
  }
  uint32_t head = 0;
  uint64_t low = 0;
  std::memcpy(&head, value->payload, sizeof head);
  std::memcpy(&low, value->payload + 4, sizeof low);
  return DecimalUnpack(head, low, d);
}

// ---- Arithmetic ----

inline bool DecimalFits(Int128 coefficient) {
  const Uint128 shifted = static_cast<Uint128>(coefficient) + (kCoefficientEnd - 1);
  return shifted <= (kCoefficientEnd - 1) * 2;
}

// Set `result` to a sum, a difference or a product; false where that is not narrow.
inline bool NarrowAdd(NarrowDecimal *result, NarrowDecimal a, NarrowDecimal b) {
  constexpr int32_t kMostShift = 18;  // 10^18 is below 2^63
  const int32_t gap = a.exponent - b.exponent;
  if (gap > kMostShift || gap < -kMostShift) {
    return false;
  }
  const int32_t shiftA = gap > 0 ? gap : 0;
  const int32_t shiftB = gap < 0 ? -gap : 0;
  const int64_t powerA = static_cast<int64_t>(kPowersOfTen64.of[shiftA]);
  const int64_t powerB = static_cast<int64_t>(kPowersOfTen64.of[shiftB]);
  int64_t left = 0;
  int64_t right = 0;
  result->exponent = a.exponent - shiftA;
  return !__builtin_mul_overflow(a.coefficient, powerA, &left) &&
         !__builtin_mul_overflow(b.coefficient, powerB, &right) &&
         !__builtin_add_overflow(left, right, &result->coefficient);
}

inline bool NarrowSubtract(NarrowDecimal *result, NarrowDecimal a, NarrowDecimal b) {
  return b.coefficient != INT64_MIN && NarrowAdd(result, a, {-b.coefficient, b.exponent});
}

inline bool NarrowMultiply(NarrowDecimal *result, NarrowDecimal a, NarrowDecimal b) {
  result->exponent = a.exponent + b.exponent;
  return result->exponent >= kMinExponent &&
         !__builtin_mul_overflow(a.coefficient, b.coefficient, &result->coefficient);
}

// The same for any numbers; `result` may be an operand. False when the value is too large.
inline bool DecimalAdd(Decimal *result, const Decimal &a, const Decimal &b) {
  NarrowDecimal sum;
  if (DecimalIsNarrow(a) && DecimalIsNarrow(b) &&
      NarrowAdd(&sum, DecimalNarrow(a), DecimalNarrow(b))) [[likely]] {
    *result = {sum.coefficient, sum.exponent};
    return true;
  }
  return DecimalAddAny(result, a, b);
}

inline bool DecimalSubtract(Decimal *result, const Decimal &a, const Decimal &b) {
  return DecimalAdd(result, a, {-b.coefficient, b.exponent});
}

inline bool DecimalMultiply(Decimal *result, const Decimal &a, const Decimal &b) {
  NarrowDecimal product;
  if (DecimalIsNarrow(a) && DecimalIsNarrow(b) &&
      NarrowMultiply(&product, DecimalNarrow(a), DecimalNarrow(b))) [[likely]] {
    *result = {product.coefficient, product.exponent};
    return true;
  }
  return DecimalMultiplyAny(result, a, b);
}

#endif
