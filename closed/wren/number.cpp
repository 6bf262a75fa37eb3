// Arithmetic, comparison and rounding of exact decimal numbers.
//
// Sums and products are worked out exactly, in up to 192 bits, quotients to more digits than are
// kept; then they are rounded once. Most operands are whole numbers or amounts of a few digits, and
// their results never leave 128 bits.
#include <climits>

#include "closed/wren/decimal.h"
#include "wreni11.h"

namespace {

// Intermediate results that 128 bits do not hold: 192 bits, the lowest limb first.
struct Wide {
  uint64_t limb[3];
};

// Adds value * 2^(64 * place); the sum fits.
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

void WideDivide(Wide *w, uint64_t divisor) {
  Uint128 rest = 0;
  for (int32_t i = 2; i >= 0; --i) {
    rest = rest << 64 | w->limb[i];
    w->limb[i] = static_cast<uint64_t>(rest / divisor);
    rest %= divisor;
  }
}

// Stores +-w * 10^exponent, rounded.
void WideFinish(NumberValue *result, Wide w, int32_t exponent, bool negative) {
  // Above 128 bits there are 39 digits or more. Twelve of them may be cut: 27 stay, one more than
  // is kept, and that one decides the rounding.
  constexpr int32_t kCut = 12;
  for (; w.limb[2] != 0; exponent += kCut) {
    WideDivide(&w, static_cast<uint64_t>(kPowersOfTen.of[kCut]));
  }
  DecimalFinish(result, static_cast<Uint128>(w.limb[1]) << 64 | w.limb[0], exponent, negative);
}

// Stores (+-a +-b) * 10^exponent; the sum of a and b fits 128 bits.
void AddAligned(NumberValue *result, Uint128 a, bool negativeA, Uint128 b, bool negativeB,
                int32_t exponent) {
  if (negativeA == negativeB) {
    DecimalFinish(result, a + b, exponent, negativeA);
  } else if (a >= b) {
    DecimalFinish(result, a - b, exponent, negativeA);
  } else {
    DecimalFinish(result, b - a, exponent, negativeB);
  }
}

// a + b where a, brought to the exponent of b, has 39 digits or more; so it is above b.
void AddFarApart(NumberValue *result, const Decimal &a, const Decimal &b) {
  const int32_t gap = a.exponent - b.exponent;
  const int32_t room = kDigits - DecimalDigitCount(a.coefficient);
  // With all 26 digits written out the last digit of a stands two places ahead of the first of b.
  // So b is below a hundredth of the last digit, and below a tenth of a unit where the difference
  // falls below a power of ten and has a digit more.
  if (gap - room >= kDigits + 2) {
    DecimalStore(result, a);
    return;
  }
  const int32_t first = room < gap ? room : gap;
  Wide w = WideMultiply(a.coefficient * kPowersOfTen.of[first], kPowersOfTen.of[gap - first]);
  if (a.negative == b.negative) {
    WideAdd(&w, b.coefficient, 0);
  } else {
    WideSubtract(&w, b.coefficient);
  }
  WideFinish(result, w, b.exponent, a.negative);
}

// high + low where the exponent of `high` is the higher one.
void AddUneven(NumberValue *result, const Decimal &high, const Decimal &low) {
  constexpr int32_t kRoom = kPowers - 1;  // digits for which a sum stays within 128 bits
  const int32_t gap = high.exponent - low.exponent;
  if (high.coefficient == 0) {
    DecimalStore(result, low);
  } else if (low.coefficient == 0) {
    DecimalStore(result, high);
  } else if (gap <= kRoom - kDigits || gap + DecimalDigitCount(high.coefficient) <= kRoom) {
    AddAligned(result, high.coefficient * kPowersOfTen.of[gap], high.negative, low.coefficient,
               low.negative, low.exponent);
  } else {
    AddFarApart(result, high, low);
  }
}

// left + right, or left - right with `subtract`.
inline void Add(NumberValue *result, const NumberValue *left, const NumberValue *right,
                bool subtract) {
  Decimal a = {};
  Decimal b = {};
  if (!DecimalLoad(left, &a) || !DecimalLoad(right, &b)) {
    DecimalStoreNull(result);
    return;
  }
  b.negative = b.negative != (subtract && b.coefficient != 0);
  if (a.exponent == b.exponent) {
    AddAligned(result, a.coefficient, a.negative, b.coefficient, b.negative, a.exponent);
  } else if (a.exponent > b.exponent) {
    AddUneven(result, a, b);
  } else {
    AddUneven(result, b, a);
  }
}

// -1, 0 or 1 for the magnitudes of two numbers that are not zero.
int32_t CompareMagnitude(const Decimal &a, const Decimal &b) {
  const int32_t leadA = DecimalDigitCount(a.coefficient) + a.exponent;
  const int32_t leadB = DecimalDigitCount(b.coefficient) + b.exponent;
  if (leadA != leadB) return leadA < leadB ? -1 : 1;
  // The same leading place, so the one with the higher exponent has room for the difference.
  Uint128 ca = a.coefficient;
  Uint128 cb = b.coefficient;
  if (a.exponent > b.exponent) ca *= kPowersOfTen.of[a.exponent - b.exponent];
  if (b.exponent > a.exponent) cb *= kPowersOfTen.of[b.exponent - a.exponent];
  return ca < cb ? -1 : (ca > cb ? 1 : 0);
}

// The quotient of two numbers that are not zero: long division with 18 or 12 digits a step, until
// it comes out even or there is a digit more than is kept. Digits that are cut behind it cannot
// change the rounding.
void Divide(NumberValue *result, const Decimal &a, const Decimal &b) {
  constexpr Uint128 kShort = kPowersOfTen.of[20];
  const bool narrow = b.coefficient >> 64 == 0;
  Uint128 quotient = a.coefficient / b.coefficient;
  int32_t exponent = a.exponent - b.exponent;
  Uint128 rest = a.coefficient - quotient * b.coefficient;
  while (rest != 0 && quotient < kCoefficientEnd) {
    const int32_t step = narrow && quotient < kShort ? 18 : 12;
    const Uint128 dividend = rest * kPowersOfTen.of[step];
    const Uint128 digits = dividend / b.coefficient;
    rest = dividend - digits * b.coefficient;
    quotient = quotient * kPowersOfTen.of[step] + digits;
    exponent -= step;
  }
  DecimalFinish(result, quotient, exponent, a.negative != b.negative);
}

// Cuts the digits below 10^place; false when none stands there.
bool CutBelow(Decimal *d, int64_t place) {
  const int64_t drop = place - d->exponent;
  if (drop <= 0) return false;
  if (drop < kPowers) {
    d->coefficient /= kPowersOfTen.of[drop];
    d->exponent += static_cast<int32_t>(drop);
  } else {
    *d = {};
  }
  return true;
}

}  // namespace

void WRENNumAdd(NumberValue *result, const NumberValue *left, const NumberValue *right) {
  Add(result, left, right, false);
}

void WRENNumSub(NumberValue *result, const NumberValue *left, const NumberValue *right) {
  Add(result, left, right, true);
}

void WRENNumMul(NumberValue *result, const NumberValue *left, const NumberValue *right) {
  Decimal a = {};
  Decimal b = {};
  if (!DecimalLoad(left, &a) || !DecimalLoad(right, &b)) {
    DecimalStoreNull(result);
    return;
  }
  const int32_t exponent = a.exponent + b.exponent;
  const bool negative = a.negative != b.negative;
  if ((a.coefficient | b.coefficient) >> 64 == 0) {
    DecimalFinish(result, a.coefficient * b.coefficient, exponent, negative);
  } else {
    WideFinish(result, WideMultiply(a.coefficient, b.coefficient), exponent, negative);
  }
}

void WRENNumDiv(NumberValue *result, const NumberValue *left, const NumberValue *right) {
  Decimal a = {};
  Decimal b = {};
  if (!DecimalLoad(left, &a) || !DecimalLoad(right, &b) || b.coefficient == 0) {
    DecimalStoreNull(result);
  } else if (a.coefficient == 0) {
    DecimalStore(result, a);
  } else {
    Divide(result, a, b);
  }
}

void WRENNumNegate(NumberValue *value) {
  Decimal d = {};
  if (!DecimalLoad(value, &d)) {
    DecimalStoreNull(value);
  } else if (d.coefficient != 0) {
    d.negative = !d.negative;
    DecimalStore(value, d);
  }
}

void WRENNumSetNull(NumberValue *value) {
  DecimalStoreNull(value);
}

void WRENNumSetZero(NumberValue *value) {
  DecimalStore(value, {});
}

int32_t WRENNumCompare(const NumberValue *left, const NumberValue *right) {
  Decimal a = {};
  Decimal b = {};
  const bool haveA = DecimalLoad(left, &a);
  const bool haveB = DecimalLoad(right, &b);
  if (!haveA || !haveB) return (haveA ? 1 : 0) - (haveB ? 1 : 0);
  const int32_t signA = a.coefficient == 0 ? 0 : (a.negative ? -1 : 1);
  const int32_t signB = b.coefficient == 0 ? 0 : (b.negative ? -1 : 1);
  if (signA != signB) return signA < signB ? -1 : 1;
  if (signA == 0) return 0;
  return signA * CompareMagnitude(a, b);
}

int32_t WRENNumIsNull(const NumberValue *value) {
  return value == nullptr || value->length == 0 ? 1 : 0;
}

int32_t WRENNumIsZero(const NumberValue *value) {
  Decimal d = {};
  return DecimalLoad(value, &d) && d.coefficient == 0 ? 1 : 0;
}

void WRENNumRound(NumberValue *result, const NumberValue *value, int32_t decimals) {
  Decimal d = {};
  if (!DecimalLoad(value, &d)) {
    DecimalStoreNull(result);
    return;
  }
  const int64_t drop = -static_cast<int64_t>(decimals) - d.exponent;
  if (drop <= 0) {
    DecimalStore(result, d);
  } else if (drop >= kPowers) {
    DecimalStore(result, {});
  } else {
    DecimalFinish(result, DecimalDropDigits(d.coefficient, drop),
                  d.exponent + static_cast<int32_t>(drop), d.negative);
  }
}

void WRENNumTruncate(NumberValue *value, int32_t precision, int32_t decimals) {
  Decimal d = {};
  if (!DecimalLoad(value, &d)) {
    DecimalStoreNull(value);
    return;
  }
  const int64_t lead = static_cast<int64_t>(DecimalDigitCount(d.coefficient)) + d.exponent;
  const int64_t byPrecision = lead - precision;
  const int64_t byDecimals = -static_cast<int64_t>(decimals);
  if (CutBelow(&d, byPrecision > byDecimals ? byPrecision : byDecimals)) {
    DecimalFinish(value, d.coefficient, d.exponent, d.negative);
  }
}

int32_t WRENNumToInt(const NumberValue *value) {
  Decimal d = {};
  if (!DecimalLoad(value, &d)) return 0;
  CutBelow(&d, 0);
  // Above exponent 0 all 26 digits are there, far beyond 32 bits.
  if (d.negative) {
    constexpr Uint128 kLowest = static_cast<Uint128>(INT32_MAX) + 1;
    if (d.coefficient >= kLowest) return INT32_MIN;
    return -static_cast<int32_t>(d.coefficient);
  }
  return d.coefficient > INT32_MAX ? INT32_MAX : static_cast<int32_t>(d.coefficient);
}
