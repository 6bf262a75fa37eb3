// What the functions on dates compute from the parts of a date, whether they are called on values
// or as routines.
#ifndef ORLI11_FUNCTIONS_DATE_PARTS_H
#define ORLI11_FUNCTIONS_DATE_PARTS_H

#include "dates/date_arithmetic.h"
#include "pavni11.h"

// 1 to 4; 4 for parts that are all zero, which bytes that are not a date decode to.
inline int32_t QuarterOf(const DateTimeParts &date) {
  return date.month <= 0 ? 4 : (date.month + 2) / 3;
}

// 0 for Saturday to 6 for Friday.
inline int32_t WeekDayOf(const DateTimeParts &date) {
  const int32_t number = date.month == 0 ? PAVNDateToDays(&date) : DayNumberOf(date);
  return static_cast<int32_t>((int64_t{number} + 2) % 7);
}

// The first or last day of a date's month, at midnight.
enum class MonthDay : uint8_t { First, Last };
inline DateTimeParts AtMonthDay(const DateTimeParts &date, MonthDay day) {
  DateTimeParts result = {};
  result.year = date.year;
  result.month = date.month;
  result.day = day == MonthDay::Last ? DaysInMonth(date.month, date.year) : 1;
  return result;
}

#endif
