// The calendar against the standard library's, and the stored form of a date.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <random>
#include <utility>

#include "tests/dates/date_support.h"

namespace {

using Payload = std::array<uint8_t, 12>;
using Fields = std::array<int32_t, 7>;  // from the year down

constexpr int32_t kFirstDay = 1721426;  // the Julian day of 1 January of year 1
constexpr int32_t kLastDay = 5373484;   // that of 31 December 9999

Fields Of(const DateTimeParts &p) {
  return {p.year, p.month, p.day, p.hour, p.minute, p.second, p.fraction};
}

// Encodes into a payload whose bytes show what was written.
int32_t Encode(const DateTimeParts &parts, Payload &payload) {
  payload.fill(0xEE);
  return PAVNDateToNumber(payload.data(), &parts);
}

Fields Decode(const Payload &payload, int32_t length) {
  DateTimeParts parts = Parts(9, 9, 9, 9, 9, 9, 9);
  PAVNNumberToDate(payload.data(), length, &parts);
  return Of(parts);
}

// Every day from long before the calendar to after it.
TEST(Calendar, AgreesWithTheStandardLibrary) {
  using namespace std::chrono;
  for (int32_t number = -100000; number <= kLastDay + 1000; ++number) {
    const sys_days day{days{number - 2440588}};
    DateTimeParts parts = Parts(day + seconds{(number + 100000) % 86400});
    parts.fraction = std::abs(number) * 7 % 1000000;
    const Fields fields = Of(parts);
    ASSERT_EQ(PAVNDateToDays(&parts), number) << Iso(parts);
    DateTimeParts back = Parts(0, 0, 0, parts.hour, parts.minute, parts.second, parts.fraction);
    PAVNDaysToDate(number, &back);
    ASSERT_EQ(Of(back), fields) << number;
    Payload payload;
    const bool stored = number >= kFirstDay && number <= kLastDay;
    ASSERT_EQ(Encode(parts, payload), stored ? 10 : 0) << Iso(parts);
    ASSERT_EQ(Decode(payload, 10), stored ? fields : Fields{}) << Iso(parts);
    // A day that the month does not have is stored as its last.
    parts.day = 31;
    if (stored && Parts(day + days{1}).day == 1) {
      ASSERT_EQ(Encode(parts, payload), 10) << Iso(parts);
      ASSERT_EQ(Decode(payload, 10), fields) << Iso(parts);
    }
  }
}

TEST(Calendar, TakesAnyFieldsAndAnyDayNumber) {
  for (int64_t days = INT32_MIN; days <= INT32_MAX; days += 99991) {
    DateTimeParts parts = {};
    PAVNDaysToDate(static_cast<int32_t>(days), &parts);
    ASSERT_EQ(PAVNDateToDays(&parts), days) << Iso(parts);
  }
  // clang-format off
  const std::pair<DateTimeParts, int32_t> rows[] = {
      {Parts(2001, 2, 29), 2451970}, {Parts(2000, 13, 1), 2451911}, {Parts(2000, 0, 0), 2451513},
      {Parts(5874898, 6, 3), INT32_MAX}, {Parts(5874898, 6, 4), INT32_MAX},
      {Parts(INT32_MIN, 1, 1), INT32_MIN}, {Parts(INT32_MIN, INT32_MIN, INT32_MIN), INT32_MIN},
      {Parts(INT32_MAX, 1, 1), INT32_MAX}, {Parts(INT32_MAX, INT32_MAX, INT32_MAX), INT32_MAX}};
  // clang-format on
  for (const auto &[parts, days] : rows) {
    EXPECT_EQ(PAVNDateToDays(&parts), days) << Iso(parts);
  }
}

TEST(StoredDate, InvalidFieldsAreNull) {
  // The ranges that are taken, from the year down.
  const Fields low = {1, 1, 1, 0, 0, 0, 0};
  const Fields high = {9999, 12, 31, 23, 59, 59, 999999};
  for (size_t i = 0; i < low.size(); ++i) {
    for (const int32_t value : {low[i] - 1, low[i], high[i], high[i] + 1, INT32_MIN, INT32_MAX}) {
      Fields f = {2012, 1, 15, 10, 30, 15, 250000};
      f[i] = value;
      const bool taken = value >= low[i] && value <= high[i];
      Payload payload;
      EXPECT_EQ(Encode(Parts(f[0], f[1], f[2], f[3], f[4], f[5], f[6]), payload), taken ? 10 : 0);
      EXPECT_EQ(payload[0] != 0xEE, taken) << "field " << i << " is " << value;
      EXPECT_EQ(payload[10], 0xEE);
    }
  }
}

TEST(StoredDate, BytesCompareAsTimesDo) {
  using namespace std::chrono;
  std::mt19937_64 random(7);
  for (int i = 0; i < 50000; ++i) {
    const sys_seconds early = RandomMoment(random);
    const sys_seconds late = std::min(early + seconds{random() >> (26 + random() % 38)}, kEnd - 1s);
    DateTimeParts parts[] = {Parts(early), Parts(late)};
    parts[0].fraction = static_cast<int32_t>(random() % 1000000);
    parts[1].fraction = static_cast<int32_t>(random() % 1000000);
    Payload bytes[2];
    ASSERT_EQ(Encode(parts[0], bytes[0]) + Encode(parts[1], bytes[1]), 20);
    ASSERT_EQ(memcmp(bytes[0].data(), bytes[1].data(), 10) < 0, Of(parts[0]) < Of(parts[1]))
        << Iso(parts[0]) << " and " << Iso(parts[1]);
  }
}

TEST(StoredDate, InvalidBytesReadAsZeros) {
  Payload good;
  ASSERT_EQ(Encode(Parts(2000, 2, 29, 23, 59, 59, 999999), good), 10);
  const std::pair<size_t, uint8_t> changes[] = {{0, 0xFF}, {2, 0},   {2, 13}, {3, 0},
                                                {3, 30},   {4, 24},  {5, 60}, {6, 0xFF},
                                                {7, 0x10}, {7, 0xFF}};
  for (const auto &[index, byte] : changes) {
    Payload bad = good;
    bad[index] = byte;
    EXPECT_EQ(Decode(bad, 10), Fields{}) << "byte " << index << " is " << int{byte};
  }
  for (const int32_t length : {INT32_MIN, -1, 0, 1, 9, 11, 12, INT32_MAX}) {
    EXPECT_EQ(Decode(good, length), Fields{}) << "length " << length;
  }
  // Null pointers are harmless.
  Payload payload = {};
  DateTimeParts parts = Parts(2000, 1, 1);
  EXPECT_EQ(PAVNDateToNumber(nullptr, &parts), 0);
  EXPECT_EQ(PAVNDateToNumber(payload.data(), nullptr), 0);
  PAVNNumberToDate(payload.data(), 10, nullptr);
  PAVNNumberToDate(nullptr, 10, &parts);
  EXPECT_EQ(parts.year, 0);
  PAVNDaysToDate(2451545, nullptr);
  EXPECT_EQ(PAVNDateToDays(nullptr), 0);
}

}  // namespace
