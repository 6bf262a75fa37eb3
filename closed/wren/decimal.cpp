// The general routines for exact decimal numbers.
//
// Sums and products are computed exactly, in up to 192 bits, quotients to at least one digit more
// than is kept; then they are rounded once.
#include "closed/wren/decimal.h"

#include <charconv>
#include <climits>
#include <utility>

namespace {

// Intermediate results that exceed 128 bits: 192 bits, the lowest limb first.
struct Wide {
  uint64_t limb[3];
};

// Adds value * 2^(64 * place); the sum must fit.
void WideAdd(Wide *w, Uint128 value, int32_t place) {
  for (; place < 3 && value != 0; ++place) {
    value += w->limb[place];
    w->limb[place] = static_cast<uint64_t>(value);
    value >>= 64;
  }
}

// Subtracts a smaller value.
void WideSubtract(Wide *w, Uint128 value) {
  uint64_t borrow = 0;
  for (int32_t i = 0; i < 3; ++i) {
    const Uint128 take = static_cast<Uint128>(static_cast<uint64_t>(value)) + borrow;
    borrow = take > w->limb[i] ? 1 : 0;
    w->limb[i] -= static_cast<uint64_t>(take);
    value >>= 64;
  }
}

// The product of two numbers below 2^96.
Wide WideMultiply(Uint128 a, Uint128 b) {
  const Uint128 a0 = static_cast<uint64_t>(a);
  const Uint128 b0 = static_cast<uint64_t>(b);
  const Uint128 a1 = a >> 64;
  const Uint128 b1 = b >> 64;
  const Uint128 low = a0 * b0;
  Wide w = {{static_cast<uint64_t>(low), static_cast<uint64_t>(low >> 64), 0}};
  WideAdd(&w, a0 * b1, 1);
  WideAdd(&w, a1 * b0, 1);
  WideAdd(&w, a1 * b1, 2);
  return w;
}

struct QuotientRest {
  uint64_t quotient, rest;
};

// (high * 2^64 + low) / divisor for a divisor above `high`, so that the quotient fits. The
// processor divides 128 bits by 64 in one instruction; C++ has no expression for it, and the
// general division is several times slower.
inline QuotientRest DivideNarrow(uint64_t high, uint64_t low, uint64_t divisor) {
#if defined(__x86_64__)
  uint64_t quotient = 0;
  uint64_t rest = 0;
  __asm__("divq %4" : "=a"(quotient), "=d"(rest) : "0"(low), "1"(high), "r"(divisor) : "cc");
  return {quotient, rest};
#else
  const Uint128 dividend = static_cast<Uint128>(high) << 64 | low;
  return {static_cast<uint64_t>(dividend / divisor), static_cast<uint64_t>(dividend % divisor)};
#endif
}

// c / divisor for any c.
Uint128 DivideByNarrow(Uint128 c, uint64_t divisor) {
  const uint64_t high = static_cast<uint64_t>(c >> 64);
  const uint64_t low = static_cast<uint64_t>(c);
  if (high == 0) {
    return low / divisor;
  }
  const QuotientRest lower = DivideNarrow(high % divisor, low, divisor);
  return static_cast<Uint128>(high / divisor) << 64 | lower.quotient;
}

Uint128 DivideByPower(Uint128 c, int64_t power) {
  constexpr int64_t kMost = kPowers64 - 1;
  if (power > kMost) {
    c = DivideByNarrow(c, kPowersOfTen64.of[kMost]);
    power -= kMost;
  }
  return DivideByNarrow(c, kPowersOfTen64.of[power]);
}

void WideDivide(Wide *w, uint64_t divisor) {
  uint64_t rest = 0;
  for (int32_t i = 2; i >= 0; --i) {
    const QuotientRest step = DivideNarrow(rest, w->limb[i], divisor);
    w->limb[i] = step.quotient;
    rest = step.rest;
  }
}

// +-w * 10^exponent, rounded.
bool WideRounded(Decimal *result, Wide w, int32_t exponent, bool negative) {
  // Above 128 bits there are 39 digits or more. Twelve of them may be dropped: 27 remain, one more
  // than is kept, and that one decides the rounding.
  constexpr int32_t kCut = 12;
  for (; w.limb[2] != 0; exponent += kCut) {
    WideDivide(&w, kPowersOfTen64.of[kCut]);
  }
  const Uint128 c = static_cast<Uint128>(w.limb[1]) << 64 | w.limb[0];
  return DecimalRounded(result, c, exponent, negative);
}

// Removes trailing zeros from a coefficient. A number is divisible by 5^n exactly when its product
// with the inverse of 5^n modulo 2^128 is at most (2^128 - 1) / 5^n, and that product is then the
// quotient (Granlund and Montgomery, "Division by Invariant Integers using Multiplication", section
// 9).
struct ZeroStep {
  int32_t zeros;
  Uint128 inverse;
  Uint128 bound;
};

constexpr ZeroStep MakeZeroStep(int32_t zeros) {
  Uint128 divisor = 1;
  for (int32_t i = 0; i < zeros; ++i) {
    divisor *= 5;
  }
  Uint128 inverse = divisor;  // correct in the last three bits; each step doubles them
  for (int32_t bits = 3; bits < 128; bits *= 2) {
    inverse *= 2 - divisor * inverse;
  }
  return {zeros, inverse, ~static_cast<Uint128>(0) / divisor};
}

// Halving steps: together they reach every count from 0 to 31.
constexpr ZeroStep kZeroSteps[] = {MakeZeroStep(16), MakeZeroStep(8), MakeZeroStep(4),
                                   MakeZeroStep(2), MakeZeroStep(1)};

// One zero at a time: 64-bit results end in few.
void StripNarrow(uint64_t *c, int32_t *exponent) {
  while (*exponent < 0) {
    const uint64_t quotient = std::rotr(*c * UINT64_C(0xCCCCCCCCCCCCCCCD), 1);
    if (quotient > UINT64_MAX / 10) {
      return;
    }
    *c = quotient;
    ++*exponent;
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

// a + b where a, brought to the exponent of b, has 39 digits or more; so it is above b.
bool AddFarApart(Decimal *result, const Decimal &a, const Decimal &b) {
  const Uint128 magnitude = DecimalMagnitude(a);
  const int32_t gap = a.exponent - b.exponent;
  const int32_t spare = kDigits - DecimalDigitCount(magnitude);
  // With all 26 digits written out the last digit of a is two places before the first of b.
  // So b is below a hundredth of the last digit, and below a tenth of a unit where the difference
  // falls below a power of ten and has a digit more.
  if (gap - spare >= kDigits + 2) {
    *result = a;
    return true;
  }
  const int32_t first = spare < gap ? spare : gap;
  Wide w = WideMultiply(magnitude * kPowersOfTen.of[first], kPowersOfTen.of[gap - first]);
  if ((a.coefficient < 0) == (b.coefficient < 0)) {
    WideAdd(&w, DecimalMagnitude(b), 0);
  } else {
    WideSubtract(&w, DecimalMagnitude(b));
  }
  return WideRounded(result, w, b.exponent, a.coefficient < 0);
}

// Compares the magnitudes of two nonzero numbers: -1, 0 or 1.
int32_t CompareMagnitude(const Decimal &a, const Decimal &b) {
  Uint128 ca = DecimalMagnitude(a);
  Uint128 cb = DecimalMagnitude(b);
  const int32_t leadA = DecimalDigitCount(ca) + a.exponent;
  const int32_t leadB = DecimalDigitCount(cb) + b.exponent;
  if (leadA != leadB) {
    return leadA < leadB ? -1 : 1;
  }
  // Equal leading places: the number with the higher exponent has fewer digits, so scaling it up
  // fits.
  if (a.exponent > b.exponent) {
    ca *= kPowersOfTen.of[a.exponent - b.exponent];
  }
  if (b.exponent > a.exponent) {
    cb *= kPowersOfTen.of[b.exponent - a.exponent];
  }
  return ca < cb ? -1 : (ca > cb ? 1 : 0);
}

// Long division with 18 or 12 digits a step, until there is no remainder or a digit more than is
// kept. Digits that are dropped after it cannot change the rounding.
bool DivideWide(Decimal *result, const Decimal &a, const Decimal &b) {
  constexpr Uint128 kShort = kPowersOfTen.of[20];
  const Uint128 divisor = DecimalMagnitude(b);
  const bool narrow = divisor >> 64 == 0;
  const Uint128 dividend = DecimalMagnitude(a);
  Uint128 quotient = dividend / divisor;
  int32_t exponent = a.exponent - b.exponent;
  Uint128 rest = dividend - quotient * divisor;
  while (rest != 0 && quotient < kCoefficientEnd) {
    const int32_t step = narrow && quotient < kShort ? 18 : 12;
    const Uint128 scaled = rest * kPowersOfTen.of[step];
    const Uint128 digits = scaled / divisor;
    rest = scaled - digits * divisor;
    quotient = quotient * kPowersOfTen.of[step] + digits;
    exponent -= step;
  }
  return DecimalRounded(result, quotient, exponent, (a.coefficient < 0) != (b.coefficient < 0));
}

// The quotient of 64-bit coefficients, with exactly the digits that are kept; the rest decides the
// rounding. False where the general division has to do it.
bool DivideNarrowNumbers(Decimal *result, const Decimal &a, const Decimal &b) {
  const uint64_t dividend = static_cast<uint64_t>(DecimalMagnitude(a));
  const uint64_t divisor = static_cast<uint64_t>(DecimalMagnitude(b));
  uint64_t rest = dividend % divisor;
  Uint128 quotient = dividend / divisor;
  int32_t exponent = a.exponent - b.exponent;
  int32_t missing = kDigits - DecimalDigitCount(quotient);
  if (quotient == 0) {
    // After the point the quotient begins with zeros: as many as the divisor has digits more.
    const int32_t gap = DecimalDigitCount(divisor) - DecimalDigitCount(rest);
    const bool next = rest * kPowersOfTen.of[gap] < divisor;
    missing = kDigits - 1 + gap + (next ? 1 : 0);
  }
  while (missing > 0 && rest != 0) {
    constexpr int32_t kMostPlaces = kPowers64 - 1;
    const int32_t step = missing < kMostPlaces ? missing : kMostPlaces;
    const Uint128 scaled = static_cast<Uint128>(rest) * kPowersOfTen64.of[step];
    const QuotientRest next =
        DivideNarrow(static_cast<uint64_t>(scaled >> 64), static_cast<uint64_t>(scaled), divisor);
    quotient = quotient * kPowersOfTen64.of[step] + next.quotient;
    rest = next.rest;
    exponent -= step;
    missing -= step;
  }
  if (rest >= divisor - rest) {
    ++quotient;
  }
  if (exponent > 0 || exponent < kMinExponent || quotient >= kCoefficientEnd) {
    return false;
  }
  *result = DecimalOfMagnitude(quotient, exponent, (a.coefficient < 0) != (b.coefficient < 0));
  return true;
}

// A divisor whose quotients terminate: dividing is multiplying by `factor` and moving the point.
struct EvenDivisor {
  uint64_t factor;  // 10^places / divisor; 0 for a divisor whose quotients may not terminate
  int32_t places;
};

EvenDivisor EvenDivisorOf(uint64_t divisor) {
  constexpr uint64_t kFives[] = {1, 5, 25, 125, 625};
  const int32_t twos = std::countr_zero(divisor);
  const uint64_t odd = divisor >> twos;
  for (int32_t fives = 0; fives < 5 && twos <= 10; ++fives) {
    if (odd == kFives[fives]) {
      const int32_t places = twos > fives ? twos : fives;
      return {kPowersOfTen64.of[places] / divisor, places};
    }
  }
  return {0, 0};
}

// Drops the digits below 10^place; false when there are none.
bool CutBelow(Decimal *d, int64_t place) {
  const int64_t drop = place - d->exponent;
  if (drop <= 0) {
    return false;
  }
  if (drop < kPowers) {
    const Uint128 cut = DivideByPower(DecimalMagnitude(*d), drop);
    *d = DecimalOfMagnitude(cut, d->exponent + static_cast<int32_t>(drop), d->coefficient < 0);
  } else {
    *d = {};
  }
  return true;
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
  if (drop >= kPowers) {
    return 0;  // 2^128 is less than half of 10^39
  }
  // All but one of the digits are truncated, not rounded: that does not change the later rounding.
  return DivideByNarrow(DivideByPower(c, drop - 1) + 5, 10);
}

int32_t DecimalWriteDigits(Uint128 c, char *target) {
  constexpr int32_t kChunk = 19;  // digits that 64 bits hold
  const auto low = static_cast<uint64_t>(c);
  if (low == c) {
    return static_cast<int32_t>(std::to_chars(target, target + kChunk + 1, low).ptr - target);
  }
  int32_t left = DecimalDigitCount(c);
  const int32_t count = left;
  while (left > 0) {
    const Uint128 rest = DivideByPower(c, kChunk);
    uint64_t chunk = static_cast<uint64_t>(c - rest * kPowersOfTen.of[kChunk]);
    c = rest;
    for (int32_t i = 0; i < kChunk && left > 0; ++i, chunk /= 10) {
      target[--left] = static_cast<char>('0' + chunk % 10);
    }
  }
  return count;
}

bool DecimalRounded(Decimal *result, Uint128 c, int32_t exponent, bool negative) {
  if (c >= kCoefficientEnd || exponent < kMinExponent) {
    RoundToForm(&c, &exponent);
  }
  if (c == 0) {
    exponent = 0;
  } else {
    for (; exponent > 0 && c < kFullCoefficient; --exponent) {
      c *= 10;
    }
  }
  *result = DecimalOfMagnitude(c, exponent, negative);
  return exponent <= kMaxExponent;
}

bool DecimalAddAny(Decimal *result, const Decimal &a, const Decimal &b) {
  constexpr int32_t kSpareDigits = kPowers - 1;  // digits for which a sum stays within 127 bits
  const bool swapped = a.exponent < b.exponent;
  const Decimal &high = swapped ? b : a;
  const Decimal &low = swapped ? a : b;
  const int32_t gap = high.exponent - low.exponent;
  if (high.coefficient == 0) {
    *result = low;
    return true;
  }
  if (low.coefficient == 0) {
    *result = high;
    return true;
  }
  if (gap > kSpareDigits || DecimalMagnitude(high) >= kPowersOfTen.of[kSpareDigits - gap]) {
    return AddFarApart(result, high, low);
  }
  const Int128 sum = high.coefficient * static_cast<Int128>(kPowersOfTen.of[gap]) + low.coefficient;
  const Decimal exact = {sum, low.exponent};
  if (DecimalFits(sum) && exact.exponent <= 0) {
    *result = exact;
    return true;
  }
  return DecimalRounded(result, DecimalMagnitude(exact), exact.exponent, sum < 0);
}

bool DecimalMultiplyAny(Decimal *result, const Decimal &a, const Decimal &b) {
  const int32_t exponent = a.exponent + b.exponent;
  if (DecimalIsNarrow(a) && DecimalIsNarrow(b) && exponent <= 0 && exponent >= kMinExponent) {
    const Int128 product = static_cast<Int128>(static_cast<int64_t>(a.coefficient)) *
                           static_cast<int64_t>(b.coefficient);
    if (DecimalFits(product)) {
      *result = {product, exponent};
      return true;
    }
  }
  const Wide product = WideMultiply(DecimalMagnitude(a), DecimalMagnitude(b));
  return WideRounded(result, product, exponent, (a.coefficient < 0) != (b.coefficient < 0));
}

bool DecimalDivide(Decimal *result, const Decimal &a, const Decimal &b) {
  if (a.coefficient == 0) {
    *result = {};
    return true;
  }
  if (!DecimalIsNarrow(a) || !DecimalIsNarrow(b)) {
    return DivideWide(result, a, b);
  }
  const EvenDivisor even = EvenDivisorOf(static_cast<uint64_t>(DecimalMagnitude(b)));
  if (even.factor != 0) {
    const Int128 scaled = static_cast<Int128>(static_cast<int64_t>(a.coefficient)) *
                          static_cast<int64_t>(even.factor);
    const int32_t exponent = a.exponent - b.exponent - even.places;
    if (DecimalFits(scaled) && exponent <= 0 && exponent >= kMinExponent) {
      *result = {b.coefficient < 0 ? -scaled : scaled, exponent};
      return true;
    }
  }
  return DivideNarrowNumbers(result, a, b) || DivideWide(result, a, b);
}

void DecimalStripZeros(Decimal *d) {
  Uint128 c = DecimalMagnitude(*d);
  const bool negative = d->coefficient < 0;
  int32_t exponent = d->exponent;
  if (c == 0) {
    *d = {};
    return;
  }
  if (c >> 64 == 0) {
    uint64_t narrow = static_cast<uint64_t>(c);
    StripNarrow(&narrow, &exponent);
    *d = DecimalOfMagnitude(narrow, exponent, negative);
    return;
  }
  for (const ZeroStep &step : kZeroSteps) {
    const Uint128 mask = (static_cast<Uint128>(1) << step.zeros) - 1;
    if (-exponent < step.zeros || (c & mask) != 0) {
      continue;
    }
    const Uint128 quotient = (c >> step.zeros) * step.inverse;
    if (quotient > step.bound) {
      continue;
    }
    c = quotient;
    exponent += step.zeros;
  }
  *d = DecimalOfMagnitude(c, exponent, negative);
}

void DecimalStoreAny(NumberValue *result, const Decimal &number) {
  const Uint128 c = DecimalMagnitude(number);
  if (number.exponent < 0 && DecimalEndsInZero(c)) {
    Decimal d = number;
    DecimalStripZeros(&d);
    DecimalPack(result, d.exponent, d.coefficient < 0, DecimalMagnitude(d));
  } else {
    DecimalPack(result, number.exponent, number.coefficient < 0, c);
  }
}

bool DecimalRoundTo(Decimal *result, const Decimal &d, int32_t decimals) {
  const int64_t drop = -static_cast<int64_t>(decimals) - d.exponent;
  if (drop <= 0) {
    *result = d;
    return true;
  }
  if (drop >= kPowers) {
    *result = {};
    return true;
  }
  return DecimalRounded(result, DecimalDropDigits(DecimalMagnitude(d), drop),
                        d.exponent + static_cast<int32_t>(drop), d.coefficient < 0);
}

bool DecimalTruncateTo(Decimal *result, const Decimal &d, int32_t precision, int32_t decimals) {
  Decimal cut = d;
  const int64_t lead = int64_t{DecimalDigitCount(DecimalMagnitude(d))} + d.exponent;
  const int64_t byPrecision = lead - precision;
  const int64_t byDecimals = -static_cast<int64_t>(decimals);
  if (!CutBelow(&cut, byPrecision > byDecimals ? byPrecision : byDecimals)) {
    *result = d;
    return true;
  }
  return DecimalRounded(result, DecimalMagnitude(cut), cut.exponent, cut.coefficient < 0);
}

int32_t DecimalCompare(const Decimal &a, const Decimal &b) {
  NarrowDecimal difference;
  if (DecimalIsNarrow(a) && DecimalIsNarrow(b) &&
      NarrowSubtract(&difference, DecimalNarrow(a), DecimalNarrow(b))) [[likely]] {
    return (difference.coefficient > 0 ? 1 : 0) - (difference.coefficient < 0 ? 1 : 0);
  }
  if (a.exponent == b.exponent) {
    return a.coefficient < b.coefficient ? -1 : (a.coefficient > b.coefficient ? 1 : 0);
  }
  const int32_t signA = a.coefficient == 0 ? 0 : (a.coefficient < 0 ? -1 : 1);
  const int32_t signB = b.coefficient == 0 ? 0 : (b.coefficient < 0 ? -1 : 1);
  if (signA != signB) {
    return signA < signB ? -1 : 1;
  }
  return signA == 0 ? 0 : signA * CompareMagnitude(a, b);
}

int32_t DecimalToInt(const Decimal &d) {
  Decimal whole = d;
  CutBelow(&whole, 0);
  // Above exponent 0 all 26 digits are used, far beyond 32 bits.
  if (whole.coefficient < INT32_MIN) {
    return INT32_MIN;
  }
  return whole.coefficient > INT32_MAX ? INT32_MAX : static_cast<int32_t>(whole.coefficient);
}
