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

// A day of the calendar, in registers. Both conversions count from 1 March of year 0, so that the
// leap day is the last one of a year, and divide by multiplications (Neri and Schneider, "Euclidean
// affine functions and their application to calendar algorithms", 2022).
struct CalendarDay {
  uint32_t year, month, day;
};
constexpr int64_t kFirstOfMarch = -719468;  // of year 0

inline CalendarDay CalendarDayOf(int64_t day) {
  const uint32_t quarters = 4 * static_cast<uint32_t>(day - kFirstOfMarch) + 3;
  const uint32_t century = quarters / 146097;
  const uint32_t inCentury = quarters % 146097 | 3;
  const uint64_t scaled = UINT64_C(2939745) * inCentury;  // 2^32 / 1461
  const auto yearOfCentury = static_cast<uint32_t>(scaled >> 32);
  const uint32_t dayOfYear = static_cast<uint32_t>(scaled) / 2939745 / 4;
  const uint32_t months = 2141 * dayOfYear + 197913;  // 2^16 / 30.6, from March as the third on
  const uint32_t late = dayOfYear >= 306 ? 1 : 0;     // January and February
  return {100 * century + yearOfCentury + late, (months >> 16) - 12 * late,
          (months & 0xFFFF) / 2141 + 1};
}

// The inverse, for a day that exists.
inline int64_t EpochDayOf(const CalendarDay &date) {
  const uint32_t late = date.month <= 2 ? 1 : 0;
  const uint32_t year = date.year - late;
  const uint32_t month = date.month + 12 * late;
  const uint32_t century = year / 100;
  const uint32_t days = 1461 * year / 4 - century + century / 4 + (979 * month - 2919) / 32;
  return int64_t{days} + date.day - 1 + kFirstOfMarch;
}

inline bool IsLeap(uint32_t year) {
  return (year & (year % 25 == 0 ? 15 : 3)) == 0;
}
inline uint32_t LastDayOf(uint32_t month, bool leap) {
  return month == 2 ? 28 + (leap ? 1 : 0) : 30 | (month ^ month >> 3);
}

// All seven parts.
inline DateTimeParts PartsOfInstant(int64_t instant) {
  const int64_t day = DayOfInstant(instant);
  const int64_t rest = instant - day * kMicrosecondsOfDay;
  const auto seconds = static_cast<int32_t>(rest / 1000000);
  const CalendarDay date = CalendarDayOf(day);
  return {static_cast<int32_t>(date.month),
          static_cast<int32_t>(date.day),
          static_cast<int32_t>(date.year),
          seconds / 3600,
          seconds / 60 % 60,
          seconds % 60,
          static_cast<int32_t>(rest % 1000000)};
}

inline int64_t InstantOfParts(const DateTimeParts &parts) {
  const CalendarDay date = {static_cast<uint32_t>(parts.year), static_cast<uint32_t>(parts.month),
                            static_cast<uint32_t>(parts.day)};
  return EpochDayOf(date) * kMicrosecondsOfDay + MicrosecondsOfDay(parts);
}

#endif
