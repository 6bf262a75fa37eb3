// The rules of the Gregorian calendar, for dates of any year.
#ifndef ORLI11_CLOSED_WREN_GREGORIAN_H
#define ORLI11_CLOSED_WREN_GREGORIAN_H

#include <cstdint>

#include "wreni11.h"

constexpr int32_t kFirstYear = 1;
constexpr int32_t kLastYear = 9999;
constexpr int64_t kDaysOf400Years = 146097;
// The Julian day number of 1 January of year 0.
constexpr int64_t kDayNumberOfYear0 = 1721060;

// The day of a time without a date, since only dates have a stored form.
constexpr DateTimeParts kDayOfTimes = {
    .month = 1, .day = 1, .year = 1900, .hour = 0, .minute = 0, .second = 0, .fraction = 0};

constexpr bool IsLeapYear(int64_t year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

// By month 1 to 12 of a common year. Local tables would be copied at every call.
inline constexpr int32_t kDaysOfMonth[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
inline constexpr int64_t kDaysBefore[13] = {0,   0,   31,  59,  90,  120, 151,
                                            181, 212, 243, 273, 304, 334};

// The length of month 1 to 12.
constexpr int32_t DaysOfMonth(int32_t month, int64_t year) {
  return month == 2 && IsLeapYear(year) ? 29 : kDaysOfMonth[month];
}

// Days from 1 January of year 0, a leap year, to 1 January of `year`, which is 0 or later.
constexpr int64_t DaysBeforeYear(int64_t year) {
  return year * 365 + (year + 3) / 4 - (year + 99) / 100 + (year + 399) / 400;
}

// Days from 1 January of year 0 to a day of month 1 to 12 of `year`, which is 0 or later.
constexpr int64_t DaysSinceYear0(int32_t month, int64_t day, int64_t year) {
  const int64_t leapDay = month > 2 && IsLeapYear(year) ? 1 : 0;
  return DaysBeforeYear(year) + kDaysBefore[month] + leapDay + day - 1;
}

// The inverse. The year is counted from March here, so that the leap day is its last one and the
// months before it have 153 days in every five.
constexpr DateTimeParts DayOfCalendar(int64_t sinceYear0) {
  constexpr int64_t kDaysToMarch = 60;  // of year 0
  const int64_t days = sinceYear0 - kDaysToMarch;
  const int64_t eras = (days >= 0 ? days : days - (kDaysOf400Years - 1)) / kDaysOf400Years;
  const auto dayOfEra = static_cast<uint32_t>(days - eras * kDaysOf400Years);
  const uint32_t year = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const uint32_t dayOfYear = dayOfEra - (year * 365 + year / 4 - year / 100);
  const uint32_t month = (dayOfYear * 5 + 2) / 153;  // 0 is March
  const auto monthOfYear = static_cast<int32_t>(month < 10 ? month + 3 : month - 9);
  DateTimeParts parts = {};
  parts.month = monthOfYear;
  parts.day = static_cast<int32_t>(dayOfYear - (month * 153 + 2) / 5) + 1;
  parts.year = static_cast<int32_t>(year + eras * 400) + (monthOfYear <= 2 ? 1 : 0);
  return parts;
}

constexpr bool IsIn(int32_t value, int32_t low, int32_t high) {
  return value >= low && value <= high;
}

// True for a day that its month has, in the years of the calendar.
constexpr bool IsDateReal(const DateTimeParts &parts) {
  return IsIn(parts.year, kFirstYear, kLastYear) && IsIn(parts.month, 1, 12) &&
         IsIn(parts.day, 1, DaysOfMonth(parts.month, parts.year));
}

constexpr bool IsTimeReal(const DateTimeParts &parts) {
  return IsIn(parts.hour, 0, 23) && IsIn(parts.minute, 0, 59) && IsIn(parts.second, 0, 59) &&
         IsIn(parts.fraction, 0, 999999);
}

#endif
