// The calendar: proleptic Gregorian dates, their stored form and their day numbers.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "closed/pavn/stored_form.h"
#include "closed/wren/gregorian.h"
#include "pavni11.h"

namespace {

constexpr int64_t FloorDivide(int64_t value, int64_t divisor) {
  return value / divisor - (value % divisor < 0 ? 1 : 0);
}

int32_t Saturate(int64_t value) {
  return static_cast<int32_t>(std::clamp<int64_t>(value, INT32_MIN, INT32_MAX));
}

}  // namespace

int32_t PAVNDateToNumber(uint8_t *bytes, const DateTimeParts *parts) {
  StoredDate stored = {};
  const int32_t length =
      bytes == nullptr || parts == nullptr ? 0 : EncodeStoredDate(&stored, *parts);
  if (length != 0) {
    std::memcpy(bytes, &stored.date, sizeof stored.date);
    std::memcpy(bytes + sizeof stored.date, &stored.time, kStoredLength - sizeof stored.date);
  }
  return length;
}

void PAVNNumberToDate(const uint8_t *bytes, int32_t length, DateTimeParts *parts) {
  if (parts == nullptr) {
    return;
  }
  if (bytes == nullptr || length != kStoredLength) {
    *parts = {};
    return;
  }
  StoredDate stored = {};
  std::memcpy(&stored.date, bytes, sizeof stored.date);
  std::memcpy(&stored.time, bytes + sizeof stored.date, kStoredLength - sizeof stored.date);
  DecodeStoredDate(stored, parts);
}

// Months and days out of range carry over, so that any fields have a day number; 64 bits hold every
// intermediate value of 32-bit fields.
int32_t PAVNDateToDays(const DateTimeParts *parts) {
  if (parts == nullptr) {
    return 0;
  }
  const int64_t months = int64_t{parts->month} - 1;
  const int64_t year = parts->year + FloorDivide(months, 12);
  const auto month = static_cast<int32_t>(months - FloorDivide(months, 12) * 12 + 1);
  const int64_t eras = FloorDivide(year, 400);
  return Saturate(kDayNumberOfYear0 + eras * kDaysOf400Years +
                  DaysSinceYear0(month, parts->day, year - eras * 400));
}

void PAVNDaysToDate(int32_t days, DateTimeParts *parts) {
  if (parts == nullptr) {
    return;
  }
  const DateTimeParts date = DayOfCalendar(days - kDayNumberOfYear0);
  parts->month = date.month;
  parts->day = date.day;
  parts->year = date.year;
}
