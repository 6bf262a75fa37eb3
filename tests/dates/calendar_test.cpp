// The calendar against Python's, and the stored form of a date.
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "pavni11.h"

namespace {

std::string Text(const DateTimeParts &p) {
  char text[120];
  snprintf(text, sizeof text, "%d-%d-%d %d:%d:%d.%d", p.year, p.month, p.day, p.hour, p.minute,
           p.second, p.fraction);
  return text;
}

DateTimeParts Date(int32_t year, int32_t month, int32_t day) {
  return {month, day, year, 0, 0, 0, 0};
}

using Payload = std::array<uint8_t, 12>;

// Encodes into a payload whose bytes tell what was written.
int32_t Encode(const DateTimeParts &parts, Payload *payload) {
  payload->fill(0xEE);
  return PAVNDateToNumber(payload->data(), &parts);
}

DateTimeParts RoundTrip(const DateTimeParts &parts) {
  Payload payload;
  const int32_t length = Encode(parts, &payload);
  DateTimeParts result = {9, 9, 9, 9, 9, 9, 9};
  PAVNNumberToDate(payload.data(), length, &result);
  return result;
}

TEST(Calendar, AgreesWithPython) {
  FILE *oracle = popen("python3 tests/dates/calendar_oracle.py", "r");
  ASSERT_NE(oracle, nullptr);
  int rows = 0;
  int year = 0;
  int month = 0;
  int day = 0;
  int ordinal = 0;
  int weekday = 0;
  while (fscanf(oracle, "%d %d %d %d %d", &year, &month, &day, &ordinal, &weekday) == 5) {
    rows++;
    const DateTimeParts parts = Date(year, month, day);
    const int32_t days = PAVNDateToDays(&parts);
    // The Julian day of 1 January of year 1 is 1721426.
    ASSERT_EQ(days, ordinal + 1721425) << Text(parts);
    ASSERT_EQ((days + 2) % 7, (weekday + 2) % 7) << Text(parts);
    DateTimeParts back = {0, 0, 0, 1, 2, 3, 4};
    PAVNDaysToDate(days, &back);
    ASSERT_EQ(Text(back), Text({month, day, year, 1, 2, 3, 4}));
    ASSERT_EQ(Text(RoundTrip(parts)), Text(parts));
  }
  EXPECT_EQ(pclose(oracle), 0);
  EXPECT_EQ(rows, 2 * 12 * 9999 + 50000) << "rows of calendar_oracle.py";
}

TEST(Calendar, DayNumbersOfKnownDays) {
  const struct {
    DateTimeParts parts;
    int32_t days;
  } rows[] = {
      {Date(2000, 1, 1), 2451545},   {Date(1970, 1, 1), 2440588},  {Date(1, 1, 1), 1721426},
      {Date(9999, 12, 31), 5373484}, {Date(0, 1, 1), 1721060},     {Date(-4713, 11, 24), 0},
      {Date(-4713, 11, 23), -1},     {Date(2001, 2, 29), 2451970}, {Date(2000, 13, 1), 2451911},
      {Date(2000, 0, 0), 2451513},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(PAVNDateToDays(&row.parts), row.days) << Text(row.parts);
  }
}

TEST(Calendar, EveryDayNumberHasADate) {
  int32_t days = INT32_MIN;
  for (;;) {
    DateTimeParts parts = {};
    PAVNDaysToDate(days, &parts);
    ASSERT_EQ(PAVNDateToDays(&parts), days) << Text(parts);
    const bool inCalendar = days >= 1721426 && days <= 5373484;
    Payload payload;
    ASSERT_EQ(Encode(parts, &payload), inCalendar ? 10 : 0) << Text(parts);
    if (days > INT32_MAX - 99991) {
      break;
    }
    days += 99991;
  }
  // The day numbers just inside and outside the calendar.
  for (const int32_t edge : {1721425, 1721426, 5373484, 5373485, INT32_MAX}) {
    DateTimeParts parts = {};
    PAVNDaysToDate(edge, &parts);
    EXPECT_EQ(PAVNDateToDays(&parts), edge) << Text(parts);
  }
}

TEST(Calendar, DayNumbersSaturate) {
  EXPECT_EQ(PAVNDateToDays(nullptr), 0);
  for (const int32_t extreme : {INT32_MIN, INT32_MAX}) {
    const DateTimeParts all = {extreme, extreme, extreme, extreme, extreme, extreme, extreme};
    EXPECT_EQ(PAVNDateToDays(&all), extreme);
    const DateTimeParts year = Date(extreme, 1, 1);
    EXPECT_EQ(PAVNDateToDays(&year), extreme);
  }
}

TEST(StoredDate, FieldsOutOfAnyCalendarAreNull) {
  const DateTimeParts good = {6, 15, 2012, 10, 30, 15, 250000};
  const struct {
    int32_t DateTimeParts::*field;
    int32_t low, high;  // the range that is taken
  } rows[] = {
      {&DateTimeParts::year, 1, 9999},       {&DateTimeParts::month, 1, 12},
      {&DateTimeParts::day, 1, 31},          {&DateTimeParts::hour, 0, 23},
      {&DateTimeParts::minute, 0, 59},       {&DateTimeParts::second, 0, 59},
      {&DateTimeParts::fraction, 0, 999999},
  };
  for (const auto &row : rows) {
    for (const int32_t value :
         {row.low - 1, row.low, row.high, row.high + 1, INT32_MIN, INT32_MAX}) {
      DateTimeParts parts = good;
      parts.*row.field = value;
      SCOPED_TRACE(Text(parts));
      const bool taken = value >= row.low && value <= row.high;
      Payload payload;
      EXPECT_EQ(Encode(parts, &payload), taken ? 10 : 0);
      EXPECT_EQ(payload[0] != 0xEE, taken);
      EXPECT_EQ(payload[10], 0xEE);
    }
  }
}

TEST(StoredDate, MissingDayBecomesTheLastOfItsMonth) {
  const struct {
    DateTimeParts parts, stored;
  } rows[] = {
      {Date(2001, 2, 29), Date(2001, 2, 28)},   {Date(2000, 2, 31), Date(2000, 2, 29)},
      {Date(1900, 2, 29), Date(1900, 2, 28)},   {Date(2012, 4, 31), Date(2012, 4, 30)},
      {Date(2012, 12, 31), Date(2012, 12, 31)},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(Text(RoundTrip(row.parts)), Text(row.stored)) << Text(row.parts);
  }
}

TEST(StoredDate, BytesCompareAsTimesDo) {
  std::mt19937 random(7);
  const auto upTo = [&](int32_t low, int32_t high) {
    return std::uniform_int_distribution<int32_t>(low, high)(random);
  };
  const auto fields = [](const DateTimeParts &p) {
    return std::array<int32_t, 7>{p.year, p.month, p.day, p.hour, p.minute, p.second, p.fraction};
  };
  DateTimeParts last = {1, 1, 1, 0, 0, 0, 0};
  for (int i = 0; i < 20000; i++) {
    DateTimeParts next = {upTo(1, 12), upTo(1, 28), upTo(1, 9999),  upTo(0, 23),
                          upTo(0, 59), upTo(0, 59), upTo(0, 999999)};
    // Most pairs share their leading fields, so that every field decides sometimes.
    const int shared = upTo(0, 6);
    int32_t DateTimeParts::*const order[] = {&DateTimeParts::year,   &DateTimeParts::month,
                                             &DateTimeParts::day,    &DateTimeParts::hour,
                                             &DateTimeParts::minute, &DateTimeParts::second};
    for (int k = 0; k < shared; k++) {
      next.*order[k] = last.*order[k];
    }
    Payload a;
    Payload b;
    ASSERT_EQ(Encode(last, &a), 10);
    ASSERT_EQ(Encode(next, &b), 10);
    const int bytes = memcmp(a.data(), b.data(), 10);
    ASSERT_EQ(bytes < 0, fields(last) < fields(next)) << Text(last) << " and " << Text(next);
    ASSERT_EQ(Text(RoundTrip(next)), Text(next));
    last = next;
  }
}

TEST(StoredDate, OtherBytesGiveZeros) {
  const std::string zeros = "0-0-0 0:0:0.0";
  Payload good;
  ASSERT_EQ(Encode({2, 29, 2000, 23, 59, 59, 999999}, &good), 10);
  const struct {
    int32_t index;
    uint8_t byte;
  } changes[] = {{0, 0xFF}, {2, 0},  {2, 13},   {3, 0},    {3, 30},
                 {4, 24},   {5, 60}, {6, 0xFF}, {7, 0x10}, {7, 0xFF}};
  for (const auto &change : changes) {
    Payload bad = good;
    bad[static_cast<size_t>(change.index)] = change.byte;
    DateTimeParts parts = {1, 1, 1, 1, 1, 1, 1};
    PAVNNumberToDate(bad.data(), 10, &parts);
    EXPECT_EQ(Text(parts), zeros) << "byte " << change.index << " is " << int{change.byte};
  }
  for (const int32_t length : {INT32_MIN, -1, 0, 1, 9, 11, 12, INT32_MAX}) {
    DateTimeParts parts = {1, 1, 1, 1, 1, 1, 1};
    PAVNNumberToDate(good.data(), length, &parts);
    EXPECT_EQ(Text(parts), zeros) << "length " << length;
  }
  // Random payloads never give fields that no date has.
  std::mt19937 random(8);
  for (int i = 0; i < 100000; i++) {
    Payload bytes;
    for (uint8_t &byte : bytes) {
      byte = static_cast<uint8_t>(random() % 64);
    }
    DateTimeParts parts = {};
    PAVNNumberToDate(bytes.data(), 10, &parts);
    if (Text(parts) != zeros) {
      ASSERT_EQ(Text(RoundTrip(parts)), Text(parts));
    }
  }
}

TEST(StoredDate, NullPointersAreHarmless) {
  Payload payload;
  payload.fill(0);
  DateTimeParts parts = Date(2000, 1, 1);
  EXPECT_EQ(PAVNDateToNumber(nullptr, &parts), 0);
  EXPECT_EQ(PAVNDateToNumber(payload.data(), nullptr), 0);
  PAVNNumberToDate(payload.data(), 10, nullptr);
  PAVNNumberToDate(nullptr, 10, &parts);
  EXPECT_EQ(parts.year, 0);
  PAVNDaysToDate(2451545, nullptr);
}

}  // namespace
