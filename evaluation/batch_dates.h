// Dates of a batch as instants: microseconds since 1970-01-01 00:00, all in the calendar's years.
#ifndef ORLI11_EVALUATION_BATCH_DATES_H
#define ORLI11_EVALUATION_BATCH_DATES_H

#include "closed/wren/gregorian.h"
#include "evaluation/rows.h"

constexpr int64_t kFirstDay = -719162;  // 0001-01-01
constexpr int64_t kLastDay = 2932896;   // 9999-12-31

inline bool IsCalendarDay(int64_t day) {
  return day >= kFirstDay && day <= kLastDay;
}
inline bool IsCalendarInstant(int64_t instant) {
  return instant >= kFirstDay * kMicrosecondsOfDay && instant < (kLastDay + 1) * kMicrosecondsOfDay;
}

// The day of an instant of the calendar.
inline int64_t DayOfInstant(int64_t instant) {
  return (instant - kFirstDay * kMicrosecondsOfDay) / kMicrosecondsOfDay + kFirstDay;
}

// Year, month and day. Counts from 1 March of year 0, so that the leap day is the last day of a
// year.
inline DateTimeParts PartsOfDay(int64_t day) {
  constexpr int64_t kFirstOfMarch = -719468;
  const auto days = static_cast<uint32_t>(day - kFirstOfMarch);
  const uint32_t era = days / 146097;
  const uint32_t dayOfEra = days % 146097;
  const uint32_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const uint32_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const uint32_t month = (5 * dayOfYear + 2) / 153;
  DateTimeParts parts = {};
  parts.day = static_cast<int32_t>(dayOfYear - (153 * month + 2) / 5) + 1;
  parts.month = static_cast<int32_t>(month < 10 ? month + 3 : month - 9);
  parts.year = static_cast<int32_t>(yearOfEra + era * 400 + (month >= 10 ? 1 : 0));
  return parts;
}

// The inverse, for a day that exists.
inline int64_t DayOfParts(const DateTimeParts &parts) {
  constexpr int64_t kFirstOfMarch = -719468;
  const bool early = parts.month <= 2;  // counts as a month of the previous year
  const auto year = static_cast<uint32_t>(parts.year - (early ? 1 : 0));
  const auto month = static_cast<uint32_t>(parts.month + (early ? 9 : -3));
  const uint32_t dayOfYear = (153 * month + 2) / 5 + static_cast<uint32_t>(parts.day) - 1;
  return int64_t{year} * 365 + year / 4 - year / 100 + year / 400 + dayOfYear + kFirstOfMarch;
}

// All seven parts.
inline DateTimeParts PartsOfInstant(int64_t instant) {
  const int64_t day = DayOfInstant(instant);
  const int64_t rest = instant - day * kMicrosecondsOfDay;
  const auto seconds = static_cast<int32_t>(rest / 1000000);
  DateTimeParts parts = PartsOfDay(day);
  parts.hour = seconds / 3600;
  parts.minute = seconds / 60 % 60;
  parts.second = seconds % 60;
  parts.fraction = static_cast<int32_t>(rest % 1000000);
  return parts;
}

inline int64_t InstantOfParts(const DateTimeParts &parts) {
  return DayOfParts(parts) * kMicrosecondsOfDay + MicrosecondsOfDay(parts);
}

#endif
