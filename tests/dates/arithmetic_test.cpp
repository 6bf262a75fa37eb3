// Moving dates by units, and the days between them.
#include "evaluation/date_arithmetic.h"

#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <cstring>
#include <random>
#include <string>

#include "tests/dates/date_support.h"

namespace {

std::string Move(const std::string &date, int32_t amount, int32_t op, uint16_t unit) {
  const NumberValue start = Stored(date);
  const NumberValue n = Number(amount);
  NumberValue result;
  memset(&result, 0xEE, sizeof result);
  DateArithmetic(&result, &start, &n, op, unit);
  return Iso(result);
}

TEST(DateArithmetic, Moves) {
  const struct {
    const char *date;
    int32_t op, amount;
    uint16_t unit;
    const char *result;
  } rows[] = {
      {"2001-01-31", '+', 1, kUnitMonth, "2001-02-28 00:00:00"},
      {"2000-01-31", '+', 1, kUnitMonth, "2000-02-29 00:00:00"},
      {"2001-03-31", '-', 1, kUnitMonth, "2001-02-28 00:00:00"},
      {"2012-08-31", '+', 1, kUnitMonth, "2012-09-30 00:00:00"},
      {"2012-09-30", '+', 1, kUnitMonth, "2012-10-30 00:00:00"},
      {"2012-12-15", '+', 1, kUnitMonth, "2013-01-15 00:00:00"},
      {"2012-01-15", '-', 1, kUnitMonth, "2011-12-15 00:00:00"},
      {"2012-12-15", '+', 12, kUnitMonth, "2013-12-15 00:00:00"},
      {"2012-01-15", '-', 12, kUnitMonth, "2011-01-15 00:00:00"},
      {"2012-01-15", '-', 13, kUnitMonth, "2010-12-15 00:00:00"},
      {"2012-12-15", '-', 24, kUnitMonth, "2010-12-15 00:00:00"},
      {"2000-01-01", '+', 100, kUnitMonth, "2008-05-01 00:00:00"},
      {"2012-03-15", '+', -3, kUnitMonth, "2011-12-15 00:00:00"},
      {"2012-03-15", '-', -10, kUnitMonth, "2013-01-15 00:00:00"},
      {"2012-03-31 10:30:15", '+', 1, kUnitMonth, "2012-04-30 10:30:15"},
      // A move into another year comes to 28 February there before it comes to March.
      {"2000-02-29", '+', 13, kUnitMonth, "2001-03-28 00:00:00"},
      {"2000-02-29", '+', 1, kUnitMonth, "2000-03-29 00:00:00"},
      {"2000-02-29", '+', 1, kUnitYear, "2001-02-28 00:00:00"},
      {"2000-02-29", '+', 4, kUnitYear, "2004-02-29 00:00:00"},
      {"2000-02-29", '-', 100, kUnitYear, "1900-02-28 00:00:00"},
      {"2012-01-31 01:02:03", '-', 12, kUnitYear, "2000-01-31 01:02:03"},
      {"2012-02-28 23:59:59", '+', 2, kUnitDay, "2012-03-01 23:59:59"},
      {"2012-01-01 10:00:00.000001", '-', 1, kUnitNone, "2011-12-31 10:00:00.000001"},
      {"2012-01-31 23:30", '+', 1, kUnitHour, "2012-02-01 00:30:00"},
      {"2012-03-01 00:30", '-', 1, kUnitHour, "2012-02-29 23:30:00"},
      {"2012-01-02 10:00", '-', 24, kUnitHour, "2012-01-01 10:00:00"},
      {"2012-01-02 00:00", '-', 24, kUnitHour, "2012-01-01 00:00:00"},
      {"2012-01-02 00:00", '+', -1, kUnitHour, "2012-01-01 23:00:00"},
      {"2012-01-02 00:59:10", '+', 1, kUnitMinute, "2012-01-02 01:00:10"},
      {"2012-01-02 00:00:30", '-', 31, kUnitSecond, "2012-01-01 23:59:59"},
      {"2011-12-31 23:59:59.000005", '+', 1, kUnitSecond, "2012-01-01 00:00:00.000005"},
      {"2012-01-02", '*', 1, kUnitDay, "2012-01-01 00:00:00"},
      {"2012-01-02", 0, 1, kUnitDay, "2012-01-01 00:00:00"},
      {"2012-01-02", '+', 0, kUnitMonth, "2012-01-02 00:00:00"},
      {"0001-01-01", '-', 1, kUnitSecond, "null"},
      {"9999-12-31 23:59:59", '+', 1, kUnitSecond, "null"},
      {"0001-12-31", '-', 12, kUnitMonth, "null"},
      {"9999-01-31", '+', 12, kUnitMonth, "null"},
      {"null", '+', 1, kUnitDay, "null"},
      {"2012-01-02", '+', 1, 3, "null"},
      {"2012-01-02", '+', 1, 64, "null"},
      {"2012-01-02", '+', 0, 65535, "null"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(Move(row.date, row.amount, row.op, row.unit), row.result)
        << row.date << ' ' << static_cast<char>(row.op) << ' ' << row.amount << " unit "
        << row.unit;
  }
}

TEST(DateArithmetic, ExtremeAmounts) {
  for (const uint16_t unit : {kUnitNone, kUnitDay, kUnitMonth, kUnitYear}) {
    for (const int32_t amount : {INT32_MIN, INT32_MIN + 1, INT32_MAX}) {
      for (const char op : std::string("+-")) {
        EXPECT_EQ(Move("2012-06-15 10:30:15", amount, op, unit), "null")
            << amount << " unit " << unit;
      }
    }
  }
  EXPECT_EQ(Move("2012-01-01", INT32_MAX, '+', kUnitSecond), "2080-01-19 03:14:07");
  EXPECT_EQ(Move("2012-01-01", INT32_MIN, '-', kUnitSecond), "2080-01-19 03:14:08");
  EXPECT_EQ(Move("2012-01-01", INT32_MAX, '+', kUnitMinute), "6095-01-23 02:07:00");
  EXPECT_EQ(Move("2012-01-01", INT32_MAX, '+', kUnitHour), "null");
}

TEST(DateArithmetic, NullAmountsAndOtherBytes) {
  const NumberValue date = Stored("2012-01-31 10:30:15");
  const NumberValue null = {};
  NumberValue result;
  DateArithmetic(&result, &date, &null, '+', kUnitMonth);
  EXPECT_EQ(Iso(result), "2012-01-31 10:30:15");
  const NumberValue noDate = Number(1000000);
  const NumberValue amount = Number(1000000);
  for (const uint16_t unit : {kUnitDay, kUnitMonth, kUnitYear, kUnitHour}) {
    DateArithmetic(&result, &noDate, &amount, '+', unit);
    EXPECT_EQ(result.length, 0) << "unit " << unit;
  }
}

// Days and times against the standard library's calendar.
TEST(DateArithmetic, AgreesWithTheStandardCalendar) {
  using namespace std::chrono;
  const struct {
    uint16_t unit;
    int64_t seconds;
  } units[] = {{kUnitNone, 86400},
               {kUnitDay, 86400},
               {kUnitHour, 3600},
               {kUnitMinute, 60},
               {kUnitSecond, 1}};
  const sys_seconds first = sys_days{year{1} / 1 / 1};
  const sys_seconds end = sys_days{year{10000} / 1 / 1};
  const auto text = [&](sys_seconds moment) -> std::string {
    if (moment < first || moment >= end) {
      return "null";
    }
    const auto day = floor<days>(moment);
    const year_month_day date{day};
    const auto time = (moment - day).count();
    return Iso(Parts(int{date.year()}, static_cast<int32_t>(unsigned{date.month()}),
                     static_cast<int32_t>(unsigned{date.day()}), static_cast<int32_t>(time / 3600),
                     static_cast<int32_t>(time / 60 % 60), static_cast<int32_t>(time % 60)));
  };
  std::mt19937_64 random(5);
  for (int i = 0; i < 50000; i++) {
    const auto &unit = units[random() % std::size(units)];
    const sys_seconds start =
        first +
        seconds{static_cast<int64_t>(random() % static_cast<uint64_t>((end - first).count()))};
    const auto amount = static_cast<int32_t>(static_cast<int32_t>(random()) >> random() % 31);
    const bool add = random() % 2 == 0;
    const sys_seconds expected = start + seconds{amount * unit.seconds * (add ? 1 : -1)};
    ASSERT_EQ(Move(text(start), amount, add ? '+' : '-', unit.unit), text(expected))
        << text(start) << (add ? " + " : " - ") << amount << " unit " << unit.unit;
  }
}

TEST(DateDifference, CountsCalendarDays) {
  const struct {
    const char *left, *right, *days;
  } rows[] = {
      {"2011-03-01 10:00", "2011-02-28 23:00", "1"},
      {"2012-03-01", "2012-02-28", "2"},
      {"2012-01-01 23:59:59", "2012-01-01", "0"},
      {"2012-01-01", "2012-01-02", "-1"},
      {"9999-12-31", "0001-01-01", "3652058"},
      {"null", "2012-01-01", "null"},
      {"2012-01-01", "null", "null"},
      {"null", "null", "null"},
  };
  for (const auto &row : rows) {
    const NumberValue left = Stored(row.left);
    const NumberValue right = Stored(row.right);
    NumberValue result;
    memset(&result, 0xEE, sizeof result);
    DateDifference(&result, &left, &right);
    EXPECT_EQ(NumberText(result), row.days) << row.left << " - " << row.right;
  }
}

TEST(DaysInMonth, OfAllMonths) {
  const int32_t common[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  for (int32_t month = 1; month <= 12; month++) {
    EXPECT_EQ(DaysInMonth(month, 2011), common[month - 1]) << month;
  }
  const struct {
    int32_t year, days;
  } rows[] = {{2000, 29}, {1900, 28}, {2004, 29}, {2001, 28},
              {0, 29},    {-4, 29},   {-100, 28}, {-1, 28}};
  for (const auto &row : rows) {
    EXPECT_EQ(DaysInMonth(2, row.year), row.days) << row.year;
  }
  for (const int32_t month : {INT32_MIN, -1, 0, 13, INT32_MAX}) {
    EXPECT_EQ(DaysInMonth(month, 2000), 31) << month;
  }
}

}  // namespace
