// The stored form of a date, 10 bytes, so that comparing bytes compares dates:
//
//   0      2       3     4      5        6        7             10
//   | year | month | day | hour | minute | second | microsecond |
//   big-endian throughout
#ifndef ORLI11_CLOSED_PAVN_STORED_FORM_H
#define ORLI11_CLOSED_PAVN_STORED_FORM_H

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "closed/wren/gregorian.h"

constexpr int32_t kStoredLength = 10;

// The bytes in the two pieces in which the payload of a value is loaded; the second is padded with
// two zero bytes.
struct StoredDate {
  uint32_t date;
  uint64_t time;
};

// Encodes the stored form. Returns the length, or 0 with nothing written for fields that are not in
// the calendar; a day past the end of the month becomes the month's last day.
inline int32_t EncodeStoredDate(StoredDate *stored, const DateTimeParts &parts) {
  if (!IsIn(parts.year, kFirstYear, kLastYear) || !IsIn(parts.month, 1, 12) ||
      !IsIn(parts.day, 1, 31) || !IsTimeReal(parts)) {
    return 0;
  }
  const auto field = [](int32_t value, int32_t place) {
    return static_cast<uint64_t>(static_cast<uint32_t>(value)) << (place * 8);
  };
  const int32_t day = std::min(parts.day, DaysOfMonth(parts.month, parts.year));
  stored->date = static_cast<uint32_t>(field(parts.year >> 8, 0) | field(parts.year & 0xFF, 1) |
                                       field(parts.month, 2) | field(day, 3));
  stored->time = field(parts.hour, 0) | field(parts.minute, 1) | field(parts.second, 2) |
                 field(parts.fraction >> 16, 3) | field(parts.fraction >> 8 & 0xFF, 4) |
                 field(parts.fraction & 0xFF, 5);
  return kStoredLength;
}

// Decodes the stored form; false, with all parts zero, for bytes that are not a date. Bytes after
// the stored form are ignored.
[[gnu::always_inline]] inline bool DecodeStoredDate(const StoredDate &stored,
                                                    DateTimeParts *parts) {
  const auto date = [&](int32_t place) {
    return static_cast<int32_t>(stored.date >> (place * 8) & 0xFF);
  };
  const auto time = [&](int32_t place) {
    return static_cast<int32_t>(stored.time >> (place * 8) & 0xFF);
  };
  *parts = {.month = date(2),
            .day = date(3),
            .year = date(0) << 8 | date(1),
            .hour = time(0),
            .minute = time(1),
            .second = time(2),
            .fraction = time(3) << 16 | time(4) << 8 | time(5)};
  if (IsDateReal(*parts) && IsTimeReal(*parts)) {
    return true;
  }
  *parts = {};
  return false;
}

#endif
