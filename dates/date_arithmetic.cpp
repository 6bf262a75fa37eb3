// Every step carries into the next larger unit until days or years move. Amounts and carries are
// computed in 64 bits, so no 32-bit amount can overflow.
#include "dates/date_arithmetic.h"

#include <algorithm>
#include <cassert>
#include <iterator>

#include "closed/wren/gregorian.h"
#include "dates/stored_date.h"

namespace {

// A field that counts from 0 to size - 1.
struct TimeUnit {
  int32_t DateTimeParts::*field;
  int64_t size;
};
// From the smallest; each carries into the one after it and the last into days.
constexpr TimeUnit kTimeUnits[] = {
    {&DateTimeParts::second, 60}, {&DateTimeParts::minute, 60}, {&DateTimeParts::hour, 24}};

bool FitsInt32(int64_t value) {
  return value >= INT32_MIN && value <= INT32_MAX;
}

// Moves the date by days; the time of day is kept.
bool MoveDays(DateTimeParts &parts, int64_t days) {
  const int64_t sum = DayNumberOf(parts) + days;
  if (!FitsInt32(sum)) {
    return false;
  }
  const DateTimeParts moved = DayOfCalendar(sum - kDayNumberOfYear0);
  parts.month = moved.month;
  parts.day = moved.day;
  parts.year = moved.year;
  return true;
}

// Moves the date by years. The day is not changed here: 29 February of a common year reaches the
// encoder, which makes it the 28th.
bool MoveYears(DateTimeParts &parts, int64_t years) {
  const int64_t sum = parts.year + years;
  if (!FitsInt32(sum)) {
    return false;
  }
  parts.year = static_cast<int32_t>(sum);
  return true;
}

void ClampDay(DateTimeParts &parts) {
  parts.day = std::min(parts.day, DaysInMonth(parts.month, parts.year));
}

// Moves the date by months; a day that the month does not have becomes its last. A move into
// another year is a move by years first, to a day that exists, and by the months left then: 29
// February becomes 28 February of the other year before the month changes.
bool MoveMonths(DateTimeParts &parts, int64_t months) {
  const int64_t sum = parts.month + months;
  int64_t month = sum;
  int64_t years = 0;
  if (sum > 12) {
    years = (sum - 1) / 12;
    month = (sum - 1) % 12 + 1;
  } else if (sum < 1) {
    years = -(-sum / 12 + 1);
    month = sum % 12 + 12;
  }
  if (!MoveYears(parts, years)) {
    return false;
  }
  if (years != 0) {
    ClampDay(parts);
  }
  parts.month = static_cast<int32_t>(month);
  ClampDay(parts);
  return true;
}

// Moves the date by a time unit, the index in kTimeUnits.
bool MoveTime(DateTimeParts &parts, int64_t amount, size_t unit) {
  for (; unit < std::size(kTimeUnits); ++unit) {
    const TimeUnit &row = kTimeUnits[unit];
    const int64_t sum = parts.*row.field + amount;
    amount = sum >= 0 ? sum / row.size : -((-sum + row.size - 1) / row.size);
    parts.*row.field = static_cast<int32_t>(sum - amount * row.size);
  }
  return amount == 0 || MoveDays(parts, amount);
}

}  // namespace

int32_t DaysInMonth(int32_t month, int32_t year) {
  return IsIn(month, 1, 12) ? DaysOfMonth(month, year) : 31;
}

bool MoveParts(DateTimeParts *parts, int64_t n, uint16_t unit) {
  switch (unit) {
    case kUnitNone:
    case kUnitDay:
      return MoveDays(*parts, n);
    case kUnitMonth:
      return MoveMonths(*parts, n);
    case kUnitYear:
      return MoveYears(*parts, n);
    case kUnitHour:
      return MoveTime(*parts, n, 2);
    case kUnitMinute:
      return MoveTime(*parts, n, 1);
    case kUnitSecond:
      return MoveTime(*parts, n, 0);
    default:
      return false;
  }
}

void DateArithmetic(NumberValue *result, const NumberValue *date, const NumberValue *amount,
                    int32_t op, uint16_t unit) {
  assert(result != date && result != amount);
  *result = {};
  DateTimeParts parts;
  if (!DecodeDate(*date, &parts)) {
    return;
  }
  const int64_t n = WRENNumToInt(amount);
  if (MoveParts(&parts, op == '+' ? n : -n, unit)) {
    EncodeDate(result, parts);
  }
}

void DateDifference(NumberValue *result, const NumberValue *left, const NumberValue *right) {
  DateTimeParts leftParts;
  DateTimeParts rightParts;
  if (!DecodeDate(*left, &leftParts) || !DecodeDate(*right, &rightParts)) {
    WRENNumSetNull(result);
    return;
  }
  WRENNumFromInt(result, DayNumberOf(leftParts) - DayNumberOf(rightParts));
}
