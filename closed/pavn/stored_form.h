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

// Writes the stored form and two zero bytes. Returns the length, or 0 with nothing written for
// fields that no calendar has; a day that the month does not have becomes the month's last day.
inline int32_t EncodeStoredDate(uint8_t (&bytes)[12], const DateTimeParts &parts) {
  if (!IsIn(parts.year, kFirstYear, kLastYear) || !IsIn(parts.month, 1, 12) ||
      !IsIn(parts.day, 1, 31) || !IsTimeReal(parts)) {
    return 0;
  }
  const auto field = [](int32_t value, int32_t place) {
    return static_cast<uint64_t>(static_cast<uint32_t>(value)) << (place * 8);
  };
  const int32_t day = std::min(parts.day, DaysOfMonth(parts.month, parts.year));
  // In two pieces, the ones in which numbers are loaded.
  const auto date = static_cast<uint32_t>(field(parts.year >> 8, 0) | field(parts.year & 0xFF, 1) |
                                          field(parts.month, 2) | field(day, 3));
  const uint64_t time = field(parts.hour, 0) | field(parts.minute, 1) | field(parts.second, 2) |
                        field(parts.fraction >> 16, 3) | field(parts.fraction >> 8 & 0xFF, 4) |
                        field(parts.fraction & 0xFF, 5);
  std::memcpy(bytes, &date, sizeof date);
  std::memcpy(bytes + sizeof date, &time, sizeof time);
  return kStoredLength;
}

// Reads the stored form; false, with all parts zero, for bytes that are not a date.
inline bool DecodeStoredDate(const uint8_t *bytes, DateTimeParts *parts) {
  *parts = {.month = bytes[2],
            .day = bytes[3],
            .year = bytes[0] << 8 | bytes[1],
            .hour = bytes[4],
            .minute = bytes[5],
            .second = bytes[6],
            .fraction = bytes[7] << 16 | bytes[8] << 8 | bytes[9]};
  if (IsDateReal(*parts) && IsTimeReal(*parts)) {
    return true;
  }
  *parts = {};
  return false;
}

#endif
