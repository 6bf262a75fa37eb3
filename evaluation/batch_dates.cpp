// Dates of batches: moved and subtracted as instants, or as values where a date is null or leaves
// the calendar.
#include "evaluation/batch_dates.h"

#include <algorithm>
#include <cstring>

#include "dates/date_arithmetic.h"
#include "evaluation/batch.h"

namespace {

template <class Compute>
void EachValue(const BatchRun &run, Batch *left, Batch *right, Compute compute) {
  const bool single = left->single && right->single;
  MakeValues(run, left);
  MakeValues(run, right);
  const Value *a = ValuesOf(*left);
  const Value *b = ValuesOf(*right);
  Value *result = OwnElements<Value>(*left, BatchForm::Values);
  for (uint32_t row = single ? 1 : run.count; row-- > 0;) {
    Value value = a[left->single ? 0 : row];
    Value other = b[right->single ? 0 : row];
    compute(&value, &other);
    std::memcpy(static_cast<void *>(result + row), &value, sizeof value);
  }
  left->single = single;
}

// Microseconds of a unit; 0 for months and years, whose lengths differ.
int64_t LengthOfUnit(uint16_t unit) {
  switch (unit) {
    case kUnitNone:
    case kUnitDay:
      return kMicrosecondsOfDay;
    case kUnitHour:
      return INT64_C(3600000000);
    case kUnitMinute:
      return 60000000;
    case kUnitSecond:
      return 1000000;
    default:
      return 0;
  }
}

// Moves all by months; false where a date leaves the calendar. A day that a month lacks becomes its
// last one: first that of the old month in the new year, then that of the new month.
bool MoveMonths(int64_t *moved, const int64_t *instants, uint32_t rows, int64_t n) {
  constexpr int64_t kFirstMonth = int64_t{kFirstYear} * 12;
  constexpr int64_t kMonths = (int64_t{kLastYear} + 1) * 12 - kFirstMonth;
  bool inCalendar = true;
  for (uint32_t row = 0; row < rows; ++row) {
    const int64_t day = DayOfInstant(instants[row]);
    CalendarDay date = CalendarDayOf(day);
    const int64_t months = int64_t{date.year} * 12 + date.month - 1 + n - kFirstMonth;
    const bool fits = static_cast<uint64_t>(months) < kMonths;
    inCalendar = inCalendar && fits;
    const auto month = static_cast<uint32_t>((fits ? months : 0) + kFirstMonth);
    date.year = month / 12;
    const bool leap = IsLeap(date.year);
    date.day = std::min(date.day, LastDayOf(date.month, leap));
    date.month = month % 12 + 1;
    date.day = std::min(date.day, LastDayOf(date.month, leap));
    moved[row] = instants[row] + (EpochDayOf(date) - day) * kMicrosecondsOfDay;
  }
  return inCalendar;
}

// False, with the left batch unchanged, where the result of a row is not an instant.
bool MoveInstants(const BatchRun &run, const Instruction &instruction, Batch *left, Batch *right) {
  const uint16_t unit = instruction.detail;
  const int64_t length = LengthOfUnit(unit);
  if (left->form != BatchForm::Dates || !right->single || !IsLanes(*right) || right->someMissing ||
      (length == 0 && unit != kUnitMonth && unit != kUnitYear)) {
    return false;
  }
  const int64_t amount = DecimalToInt(LaneNumber(*right, 0));
  const int64_t n = instruction.operand == '+' ? amount : -amount;
  const int64_t *instants = NarrowLanes(*left);
  auto *moved = static_cast<int64_t *>(right->own);
  int64_t distance = 0;
  bool inCalendar = !__builtin_mul_overflow(n, length, &distance);
  const uint32_t rows = RowsOf(run, *left);
  if (length == 0) {
    inCalendar = MoveMonths(moved, instants, rows, unit == kUnitYear ? n * 12 : n);
  }
  for (uint32_t row = 0; length != 0 && inCalendar && row < rows; ++row) {
    inCalendar = !__builtin_add_overflow(instants[row], distance, &moved[row]) &&
                 IsCalendarInstant(moved[row]);
  }
  if (!inCalendar) {
    SetSingleNumber(right, {amount, 0});
    return false;
  }
  std::swap(left->own, right->own);
  left->data = left->own;
  return true;
}

}  // namespace

void BatchMoveDate(const BatchRun &run, const Instruction &instruction, Batch *left, Batch *right) {
  if (!MoveInstants(run, instruction, left, right)) {
    EachValue(run, left, right,
              [&](Value *value, const Value *other) { MoveDate(instruction, value, other); });
  }
}

void BatchSubtractDates(BatchRun &run, Batch *left, Batch *right) {
  if (left->form != BatchForm::Dates || right->form != BatchForm::Dates) {
    EachValue(run, left, right,
              [&](Value *value, Value *other) { SubtractDates(run.inner.texts, value, other); });
    return;
  }
  const bool single = left->single && right->single;
  const int64_t *a = NarrowLanes(*left);
  const int64_t *b = NarrowLanes(*right);
  auto *days = static_cast<int64_t *>(left->own);
  for (uint32_t row = single ? 1 : run.count; row-- > 0;) {
    days[row] = DayOfInstant(a[left->single ? 0 : row]) - DayOfInstant(b[right->single ? 0 : row]);
  }
  SetNarrowLanes(left, single ? 1 : run.count, 0);
  MergeMissing(left, *right);
  left->single = single;
}
