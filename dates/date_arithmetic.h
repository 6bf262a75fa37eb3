// Date arithmetic: moving a date by units, and the days between two dates.
#ifndef ORLI11_DATES_DATE_ARITHMETIC_H
#define ORLI11_DATES_DATE_ARITHMETIC_H

#include <cstdint>

#include "closed/wren/gregorian.h"
#include "wreni11.h"

// Date units, as nodes store the unit words of the language; 0 means days.
enum DateUnit : uint16_t {
  kUnitNone = 0,
  kUnitDay = 1,
  kUnitMonth = 2,
  kUnitYear = 4,
  kUnitHour = 8,
  kUnitMinute = 16,
  kUnitSecond = 32
};

// result = date moved by the amount: forward for the operator '+', back for any other. Null for a
// null date, an unknown unit, or a date beyond the calendar. `result` must not be an operand.
void DateArithmetic(NumberValue *result, const NumberValue *date, const NumberValue *amount,
                    int32_t op, uint16_t unit);

// Moves a date of the calendar by n units, backwards for a negative n. False for an unknown unit
// and for a date beyond the range of 32-bit day numbers.
bool MoveParts(DateTimeParts *parts, int64_t n, uint16_t unit);

// result = calendar days from `right` to `left`, a Number; null when either is null.
void DateDifference(NumberValue *result, const NumberValue *left, const NumberValue *right);

// The day number of a date of the calendar.
inline int32_t DayNumberOf(const DateTimeParts &date) {
  return static_cast<int32_t>(kDayNumberOfYear0 + DaysSinceYear0(date.month, date.day, date.year));
}

// The last day of a month, 28 to 31.
int32_t DaysInMonth(int32_t month, int32_t year);

#endif
