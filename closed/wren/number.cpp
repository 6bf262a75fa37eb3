// Arithmetic, comparison and rounding of numbers in their packed form.
#include "closed/wren/decimal.h"
#include "wreni11.h"

namespace {

// Stores the result of the operation; null where an operand or the result is not a number.
template <class Apply>
void StoreResult(NumberValue *result, const NumberValue *left, const NumberValue *right,
                 Apply apply) {
  Decimal a;
  Decimal b;
  if (DecimalLoad(left, &a) && DecimalLoad(right, &b) && apply(&a, a, b)) {
    DecimalStore(result, a);
  } else {
    DecimalStoreNull(result);
  }
}

template <class Apply>
void StoreChanged(NumberValue *result, const NumberValue *value, Apply apply) {
  Decimal d;
  if (DecimalLoad(value, &d) && apply(&d)) {
    DecimalStore(result, d);
  } else {
    DecimalStoreNull(result);
  }
}

}  // namespace

void WRENNumAdd(NumberValue *result, const NumberValue *left, const NumberValue *right) {
  StoreResult(result, left, right, DecimalAdd);
}

void WRENNumSub(NumberValue *result, const NumberValue *left, const NumberValue *right) {
  StoreResult(result, left, right, DecimalSubtract);
}

void WRENNumMul(NumberValue *result, const NumberValue *left, const NumberValue *right) {
  StoreResult(result, left, right, DecimalMultiply);
}

void WRENNumDiv(NumberValue *result, const NumberValue *left, const NumberValue *right) {
  StoreResult(result, left, right, [](Decimal *quotient, const Decimal &a, const Decimal &b) {
    return b.coefficient != 0 && DecimalDivide(quotient, a, b);
  });
}

void WRENNumNegate(NumberValue *value) {
  StoreChanged(value, value, [](Decimal *d) {
    d->coefficient = -d->coefficient;
    return true;
  });
}

void WRENNumSetNull(NumberValue *value) {
  DecimalStoreNull(value);
}

void WRENNumSetZero(NumberValue *value) {
  DecimalStore(value, {});
}

int32_t WRENNumCompare(const NumberValue *left, const NumberValue *right) {
  NarrowDecimal narrowA;
  NarrowDecimal narrowB;
  NarrowDecimal difference;
  if (DecimalLoadNarrow(left, &narrowA) && DecimalLoadNarrow(right, &narrowB) &&
      NarrowSubtract(&difference, narrowA, narrowB)) [[likely]] {
    return (difference.coefficient > 0 ? 1 : 0) - (difference.coefficient < 0 ? 1 : 0);
  }
  Decimal a = {};
  Decimal b = {};
  const bool haveA = DecimalLoad(left, &a);
  const bool haveB = DecimalLoad(right, &b);
  if (!haveA || !haveB) {
    return (haveA ? 1 : 0) - (haveB ? 1 : 0);
  }
  return DecimalCompare(a, b);
}

int32_t WRENNumIsNull(const NumberValue *value) {
  return value == nullptr || value->length == 0 ? 1 : 0;
}

int32_t WRENNumIsZero(const NumberValue *value) {
  Decimal d = {};
  return DecimalLoad(value, &d) && d.coefficient == 0 ? 1 : 0;
}

void WRENNumRound(NumberValue *result, const NumberValue *value, int32_t decimals) {
  StoreChanged(result, value, [=](Decimal *d) { return DecimalRoundTo(d, *d, decimals); });
}

void WRENNumTruncate(NumberValue *value, int32_t precision, int32_t decimals) {
  StoreChanged(value, value,
               [=](Decimal *d) { return DecimalTruncateTo(d, *d, precision, decimals); });
}

int32_t WRENNumToInt(const NumberValue *value) {
  Decimal d = {};
  return DecimalLoad(value, &d) ? DecimalToInt(d) : 0;
}
