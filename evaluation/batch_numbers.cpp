// Arithmetic on batches: in lanes while the bounds of both operands show that the results fit,
// otherwise on values, row by row. Both compute the same numbers, since each operation rounds its
// exact result once to 26 digits.
#include <algorithm>
#include <cstring>

#include "evaluation/arithmetic.h"
#include "evaluation/batch.h"

namespace {

// The smallest exponent of lanes: below it results may be too small for a number.
constexpr int32_t kLeastExponent = -100;
constexpr uint32_t kNarrowBound = 62;
constexpr uint32_t kWideBound = 126;
constexpr uint32_t kDigitsBound = 86;  // 2^86 is below 10^26

// An upper bound of log2(10^n).
constexpr uint32_t BoundOfPower(int32_t n) {
  return static_cast<uint32_t>(n * 3322 + 999) / 1000;
}

template <class T>
T LoadLane(const void *lanes, uint32_t row) {
  T lane;
  std::memcpy(&lane, static_cast<const char *>(lanes) + row * sizeof(T), sizeof(T));
  return lane;
}

// Computes rows from the last to the first: a lane of the result may be wider than the lane of the
// left operand that it overwrites.
template <class Result, class Left, class Right, class Compute>
void EachWideRow(void *result, const Batch &left, const Batch &right, uint32_t count,
                 Compute compute) {
  auto *bytes = static_cast<char *>(result);
  for (uint32_t row = count; row-- > 0;) {
    const Result lane = compute(Result{LoadLane<Left>(left.data, left.single ? 0 : row)},
                                Result{LoadLane<Right>(right.data, right.single ? 0 : row)});
    std::memcpy(bytes + row * sizeof lane, &lane, sizeof lane);
  }
}

template <class Compute>
void EachWide(void *result, const Batch &left, const Batch &right, uint32_t count,
              Compute compute) {
  const bool leftNarrow = left.form == BatchForm::Narrow;
  const bool rightNarrow = right.form == BatchForm::Narrow;
  if (leftNarrow && rightNarrow) {
    EachWideRow<Int128, int64_t, int64_t>(result, left, right, count, compute);
  } else if (leftNarrow) {
    EachWideRow<Int128, int64_t, Int128>(result, left, right, count, compute);
  } else if (rightNarrow) {
    EachWideRow<Int128, Int128, int64_t>(result, left, right, count, compute);
  } else {
    EachWideRow<Int128, Int128, Int128>(result, left, right, count, compute);
  }
}

template <class Compute>
void EachNarrow(int64_t *result, const Batch &left, const Batch &right, uint32_t count,
                Compute compute) {
  const int64_t *a = NarrowLanes(left);
  const int64_t *b = NarrowLanes(right);
  if (right.single) {
    const int64_t same = *b;
    for (uint32_t row = 0; row < count; ++row) {
      result[row] = compute(a[row], same);
    }
  } else if (left.single) {
    const int64_t same = *a;
    for (uint32_t row = 0; row < count; ++row) {
      result[row] = compute(same, b[row]);
    }
  } else {
    for (uint32_t row = 0; row < count; ++row) {
      result[row] = compute(a[row], b[row]);
    }
  }
}

// Rounds lanes of more than 26 digits; these then end in zeros.
void RoundLanes(Int128 *lanes, uint32_t count) {
  for (uint32_t row = 0; row < count; ++row) {
    if (!DecimalFits(lanes[row])) [[unlikely]] {
      const bool negative = lanes[row] < 0;
      const Uint128 magnitude = DecimalMagnitude({lanes[row], 0});
      const int32_t drop = DecimalDigitCount(magnitude) - kDigits;
      lanes[row] = DecimalOfMagnitude(DecimalDropDigits(magnitude, drop) * kPowersOfTen.of[drop], 0,
                                      negative)
                       .coefficient;
    }
  }
}

// The number of rows of an operation's result.
uint32_t ResultRows(const BatchRun &run, const Batch &left, const Batch &right) {
  return left.single && right.single ? 1 : run.count;
}

// Stores the result as wide lanes, rounded; rounding may take them just above the bound.
void FinishWide(Batch *result, uint32_t bound, uint32_t count) {
  result->form = BatchForm::Wide;
  result->data = result->own;
  result->bound = bound;
  if (bound > kDigitsBound) {
    RoundLanes(static_cast<Int128 *>(result->own), count);
    result->bound = bound + 1;
  }
}

void FinishNarrow(Batch *result, uint32_t bound) {
  result->form = BatchForm::Narrow;
  result->data = result->own;
  result->bound = bound;
}

// left * leftPower + right * rightPower.
bool AddLanes(const BatchRun &run, Batch *left, const Batch &right, bool negate) {
  const int32_t exponent = std::min(left->exponent, right.exponent);
  const int32_t leftShift = left->exponent - exponent;
  const int32_t rightShift = right.exponent - exponent;
  const uint32_t bound =
      1 + std::max(left->bound + BoundOfPower(leftShift), right.bound + BoundOfPower(rightShift));
  const uint32_t count = ResultRows(run, *left, right);
  if (bound > kWideBound) {
    return false;
  }
  if (bound <= kNarrowBound && left->form == BatchForm::Narrow && right.form == BatchForm::Narrow) {
    auto *lanes = static_cast<int64_t *>(left->own);
    const auto a = static_cast<int64_t>(kPowersOfTen64.of[leftShift]);
    const auto b = static_cast<int64_t>(kPowersOfTen64.of[rightShift]) * (negate ? -1 : 1);
    if (a == 1 && b == 1) {
      EachNarrow(lanes, *left, right, count, [](int64_t x, int64_t y) { return x + y; });
    } else if (a == 1 && b == -1) {
      EachNarrow(lanes, *left, right, count, [](int64_t x, int64_t y) { return x - y; });
    } else {
      EachNarrow(lanes, *left, right, count, [=](int64_t x, int64_t y) { return x * a + y * b; });
    }
    FinishNarrow(left, bound);
  } else {
    const auto a = static_cast<Int128>(kPowersOfTen.of[leftShift]);
    const auto b = static_cast<Int128>(kPowersOfTen.of[rightShift]) * (negate ? -1 : 1);
    // One operand already has the common exponent, so one power is 1.
    if (a == 1) {
      EachWide(left->own, *left, right, count, [=](Int128 x, Int128 y) { return x + y * b; });
    } else {
      EachWide(left->own, *left, right, count,
               [=](Int128 x, Int128 y) { return negate ? x * a - y : x * a + y; });
    }
    FinishWide(left, bound, count);
  }
  left->exponent = exponent;
  return true;
}

bool MultiplyLanes(const BatchRun &run, Batch *left, const Batch &right) {
  const int32_t exponent = left->exponent + right.exponent;
  const uint32_t bound = left->bound + right.bound;
  const uint32_t count = ResultRows(run, *left, right);
  if (bound > kWideBound || exponent < kLeastExponent) {
    return false;
  }
  if (bound <= kNarrowBound && left->form == BatchForm::Narrow && right.form == BatchForm::Narrow) {
    auto *lanes = static_cast<int64_t *>(left->own);
    EachNarrow(lanes, *left, right, count, [](int64_t x, int64_t y) { return x * y; });
    FinishNarrow(left, bound);
  } else {
    EachWide(left->own, *left, right, count, [](Int128 x, Int128 y) { return x * y; });
    FinishWide(left, bound, count);
  }
  left->exponent = exponent;
  return true;
}

// Sets `inverse` to 1 / divisor where that has few digits: for divisors of factors 2 and 5.
bool InverseOf(const Batch &divisor, int64_t *inverse, int32_t *exponent) {
  constexpr int32_t kMostDigits = 18;
  if (!divisor.single || divisor.someMissing || divisor.form != BatchForm::Narrow) {
    return false;
  }
  const int64_t c = *NarrowLanes(divisor);
  for (int32_t n = 0; c != 0 && n <= kMostDigits; ++n) {
    const auto power = static_cast<int64_t>(kPowersOfTen64.of[n]);
    if (power % c == 0) {
      *inverse = power / c;
      *exponent = -n - divisor.exponent;
      return true;
    }
  }
  return false;
}

bool DivideLanes(const BatchRun &run, Batch *left, const Batch &right) {
  int64_t inverse = 0;
  int32_t exponent = 0;
  if (!InverseOf(right, &inverse, &exponent)) {
    return false;
  }
  // The exponent of the result must not be above 0: the excess goes into the factor.
  const int32_t above = std::max(left->exponent + exponent, 0);
  if (above >= kPowers64 ||
      __builtin_mul_overflow(inverse, static_cast<int64_t>(kPowersOfTen64.of[above]), &inverse)) {
    return false;
  }
  Batch factor;
  factor.form = BatchForm::Narrow;
  factor.single = true;
  factor.someMissing = false;
  factor.exponent = exponent - above;
  factor.data = &inverse;
  factor.bound = BoundOf(&inverse, 1);
  return MultiplyLanes(run, left, factor);
}

bool ComputeLanes(const BatchRun &run, Operation operation, Batch *left, const Batch &right) {
  switch (operation) {
    case Operation::Add:
      return AddLanes(run, left, right, false);
    case Operation::Subtract:
      return AddLanes(run, left, right, true);
    case Operation::Multiply:
      return MultiplyLanes(run, left, right);
    default:
      return DivideLanes(run, left, right);
  }
}

void TightenBound(const BatchRun &run, Batch *batch) {
  const uint32_t count = RowsOf(run, *batch);
  batch->bound = batch->form == BatchForm::Narrow ? BoundOf(NarrowLanes(*batch), count)
                                                  : BoundOf(WideLanes(*batch), count);
}

void ComputeValues(BatchRun &run, Operation operation, Batch *left, Batch *right) {
  const uint32_t count = ResultRows(run, *left, *right);
  MakeValues(run, left);
  MakeValues(run, right);
  const Value *a = ValuesOf(*left);
  const Value *b = ValuesOf(*right);
  Value *result = OwnElements<Value>(*left, BatchForm::Values);
  for (uint32_t row = count; row-- > 0;) {
    Value value = a[left->single ? 0 : row];
    Value other = b[right->single ? 0 : row];
    Decimal d;
    if (IsNumber(value) && IsNumber(other) &&
        Compute(operation, &d, NumberOf(value), NumberOf(other))) [[likely]] {
      SetNumber(&value, d);
    } else {
      ComputeSlowly(run.inner, operation, &value, &other);
    }
    result[row] = value;
  }
}

}  // namespace

void BatchArithmetic(BatchRun &run, Operation operation, Batch *left, Batch *right) {
  const bool single = left->single && right->single;
  if (IsLanes(*left) && IsLanes(*right)) {
    bool done = ComputeLanes(run, operation, left, *right);
    if (!done) {
      TightenBound(run, left);
      TightenBound(run, right);
      done = ComputeLanes(run, operation, left, *right);
    }
    if (done) {
      MergeMissing(left, *right);
      left->single = single;
      return;
    }
  }
  ComputeValues(run, operation, left, right);
  left->single = single;
}
