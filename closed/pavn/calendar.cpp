// The calendar: proleptic Gregorian dates, their stored form and their day numbers.
//
// Stored form, 10 bytes, so that comparing bytes compares dates:
//
//   0      2       3     4      5        6        7             10
//   | year | month | day | hour | minute | second | microsecond |
//   big-endian throughout
#include <algorithm>
#include <cstdint>

#include "pavni11.h"

namespace {

constexpr int32_t kStoredLength = 10;
constexpr int32_t kFirstYear = 1;
constexpr int32_t kLastYear = 9999;

constexpr int64_t kDaysBefore[13] = {0, 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
constexpr int32_t kMonthDays[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
constexpr int64_t kDaysOf400Years = 146097;
// Julian day number of 1 January of year 0 of the Gregorian calendar.
constexpr int64_t kDayNumberOfYear0 = 1721060;

bool IsLeapYear(int64_t year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int32_t MonthDays(int32_t month, int64_t year) {
  return month == 2 && IsLeapYear(year) ? 29 : kMonthDays[month];
}

bool IsIn(int32_t value, int32_t low, int32_t high) {
  return value >= low && value <= high;
}

// True when a date can be made of the fields; the day may be one that the month does not have.
bool AreFieldsValid(const DateTimeParts &parts) {
  return IsIn(parts.year, kFirstYear, kLastYear) && IsIn(parts.month, 1, 12) &&
         IsIn(parts.day, 1, 31) && IsIn(parts.hour, 0, 23) && IsIn(parts.minute, 0, 59) &&
         IsIn(parts.second, 0, 59) && IsIn(parts.fraction, 0, 999999);
}

constexpr int64_t FloorDivide(int64_t value, int64_t divisor) {
  return value / divisor - (value % divisor < 0 ? 1 : 0);
}

// Days from 1 January of year 0 to 1 January of `year`, which is 0 or later. Year 0 is a leap year.
constexpr int64_t DaysBeforeYear(int64_t year) {
  return year * 365 + (year + 3) / 4 - (year + 99) / 100 + (year + 399) / 400;
}

int32_t Saturate(int64_t value) {
  return static_cast<int32_t>(std::clamp<int64_t>(value, INT32_MIN, INT32_MAX));
}

}  // namespace

int32_t PAVNDateToNumber(uint8_t *bytes, const DateTimeParts *parts) {
  if (bytes == nullptr || parts == nullptr || !AreFieldsValid(*parts)) {
    return 0;
  }
  const int32_t day = std::min(parts->day, MonthDays(parts->month, parts->year));
  const int32_t stored[kStoredLength] = {
      parts->year >> 8,     parts->year,    parts->month,  day,
      parts->hour,          parts->minute,  parts->second, parts->fraction >> 16,
      parts->fraction >> 8, parts->fraction};
  for (int32_t i = 0; i < kStoredLength; i++) {
    bytes[i] = static_cast<uint8_t>(stored[i] & 0xFF);
  }
  return kStoredLength;
}

void PAVNNumberToDate(const uint8_t *bytes, int32_t length, DateTimeParts *parts) {
  if (parts == nullptr) {
    return;
  }
  *parts = {};
  if (bytes == nullptr || length != kStoredLength) {
    return;
  }
  const DateTimeParts decoded = {.month = bytes[2],
                                 .day = bytes[3],
                                 .year = bytes[0] << 8 | bytes[1],
                                 .hour = bytes[4],
                                 .minute = bytes[5],
                                 .second = bytes[6],
                                 .fraction = bytes[7] << 16 | bytes[8] << 8 | bytes[9]};
  if (AreFieldsValid(decoded) && decoded.day <= MonthDays(decoded.month, decoded.year)) {
    *parts = decoded;
  }
}

// Months and days out of range carry over, so that any fields have a number; 64 bits hold every
// intermediate value of 32-bit fields.
int32_t PAVNDateToDays(const DateTimeParts *parts) {
  if (parts == nullptr) {
    return 0;
  }
  const int64_t months = int64_t{parts->month} - 1;
  const int64_t year = parts->year + FloorDivide(months, 12);
  const auto month = static_cast<int32_t>(months - FloorDivide(months, 12) * 12 + 1);
  const int64_t eras = FloorDivide(year, 400);
  const int64_t leapDay = month > 2 && IsLeapYear(year) ? 1 : 0;
  return Saturate(kDayNumberOfYear0 + eras * kDaysOf400Years + DaysBeforeYear(year - eras * 400) +
                  kDaysBefore[month] + leapDay + parts->day - 1);
}

void PAVNDaysToDate(int32_t days, DateTimeParts *parts) {
  if (parts == nullptr) {
    return;
  }
  const int64_t sinceYear0 = days - kDayNumberOfYear0;
  const int64_t eras = FloorDivide(sinceYear0, kDaysOf400Years);
  const int64_t dayOfEra = sinceYear0 - eras * kDaysOf400Years;
  // A year that is too late by at most one, from the mean length of a year.
  int64_t year = dayOfEra * 400 / kDaysOf400Years + 1;
  while (DaysBeforeYear(year) > dayOfEra) {
    year--;
  }
  auto day = static_cast<int32_t>(dayOfEra - DaysBeforeYear(year)) + 1;
  int32_t month = 1;
  while (day > MonthDays(month, year)) {
    day -= MonthDays(month, year);
    month++;
  }
  parts->month = month;
  parts->day = day;
  parts->year = static_cast<int32_t>(year + eras * 400);
}
