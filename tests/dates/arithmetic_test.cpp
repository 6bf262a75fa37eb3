// Moving dates by units, and the days between them.
#include "dates/date_arithmetic.h"

#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <cstring>
#include <random>
#include <string>

#include "support/context.h"
#include "tests/dates/date_support.h"

namespace {

using namespace std::chrono;

std::string Move(const NumberValue &date, const NumberValue &amount, int32_t op, uint16_t unit) {
  NumberValue result;
  memset(&result, 0xEE, sizeof result);
  DateArithmetic(&result, &date, &amount, op, unit);
  return Iso(result);
}

year_month_day InMonth(year_month_day date) {
  return date.ok() ? date : date.year() / date.month() / last;
}

// The moment moved by the standard library's calendar; kEnd for one beyond ours. A move into
// another year first keeps the month and then changes it.
sys_seconds Moved(sys_seconds moment, int64_t amount, uint16_t unit) {
  const year_month_day date{floor<days>(moment)};
  if (unit == kUnitMonth || unit == kUnitYear) {
    amount *= unit == kUnitYear ? 12 : 1;
    const int64_t limit = 120000;
    if (amount < -limit || amount > limit) {
      return kEnd;
    }
    const year_month_day target = date + months{amount};
    const year_month_day inYear = InMonth(target.year() / date.month() / date.day());
    moment += sys_days{InMonth(target.year() / target.month() / inYear.day())} - sys_days{date};
  } else {
    const int64_t size = unit == kUnitSecond ? 1 : unit == kUnitMinute ? 60 : 3600;
    moment += seconds{amount * (unit <= kUnitDay ? 86400 : size)};
  }
  return moment >= kFirst ? moment : kEnd;
}

std::string Text(sys_seconds moment) {
  return moment < kEnd ? Iso(Parts(moment)) : "null";
}

TEST(DateArithmetic, AgreesWithTheStandardCalendar) {
  const uint16_t units[] = {kUnitNone, kUnitDay,    kUnitMonth, kUnitYear,
                            kUnitHour, kUnitMinute, kUnitSecond};
  std::mt19937_64 random(5);
  for (int i = 0; i < 50000; ++i) {
    const uint16_t unit = units[random() % std::size(units)];
    sys_seconds start = RandomMoment(random);
    if (i % 4 == 0) {  // many last days of months, and of February most of all
      const year_month_day date{floor<days>(start)};
      start = sys_days{date.year() / (i % 8 == 0 ? February : date.month()) / last};
    }
    const int32_t amounts[] = {INT32_MIN, INT32_MAX, static_cast<int32_t>(random())};
    const int32_t amount = amounts[std::min(i % 100, 2)] >> (i % 100 < 2 ? 0 : random() % 31);
    const bool add = random() % 2 == 0;
    std::string expected = Text(Moved(start, add ? int64_t{amount} : -int64_t{amount}, unit));
    const char *fraction = i % 2 == 0 ? ".000005" : "";  // unchanged
    ASSERT_EQ(Move(Stored(Text(start) + fraction), Number(amount), add ? '+' : '-', unit),
              expected == "null" ? expected : expected + fraction)
        << Text(start) << (add ? " + " : " - ") << amount << " unit " << unit;
    const sys_seconds other = Moved(start, amount, kUnitMinute);
    NumberValue difference;
    const NumberValue left = Stored(Text(start));
    const NumberValue right = Stored(Text(other));
    DateDifference(&difference, &left, &right);
    ASSERT_EQ(
        NumberText(difference),
        other < kEnd ? std::to_string((floor<days>(start) - floor<days>(other)).count()) : "null")
        << Text(start) << " - " << Text(other);
  }
}

TEST(DateArithmetic, OtherOperatorsUnitsAndValues) {
  const NumberValue date = Stored("2012-01-31 10:30:15");
  const NumberValue null = {};
  const NumberValue number = Number(1000000);
  const struct {
    NumberValue date, amount;
    uint16_t unit;
    int32_t op;
    const char *result;
  } rows[] = {
      {Stored("2000-02-29"), Number(13), kUnitMonth, '+', "2001-03-28 00:00:00"},
      {Stored("2000-02-29"), Number(1), kUnitMonth, '+', "2000-03-29 00:00:00"},
      {date, Number(1), kUnitDay, '*', "2012-01-30 10:30:15"},
      {date, Number(1), kUnitDay, 0, "2012-01-30 10:30:15"},
      {date, null, kUnitMonth, '+', "2012-01-31 10:30:15"},
      {date, Number(1), 3, '+', "null"},
      {date, Number(1), 64, '+', "null"},
      {date, Number(0), 65535, '+', "null"},
      {null, Number(1), kUnitDay, '+', "null"},
      {number, number, kUnitDay, '+', "null"},
      {number, number, kUnitMonth, '+', "null"},
      {number, number, kUnitYear, '+', "null"},
      {number, number, kUnitHour, '+', "null"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(Move(row.date, row.amount, row.op, row.unit), row.result)
        << Iso(row.date) << " by " << NumberText(row.amount) << " unit " << row.unit;
  }
  for (const NumberValue &left : {null, date}) {
    NumberValue difference = number;
    DateDifference(&difference, &left, &null);
    EXPECT_EQ(NumberText(difference), "null") << Iso(left);
  }
}

TEST(DaysInMonth, OfOtherMonths) {
  for (const int32_t month : {INT32_MIN, -1, 0, 13, INT32_MAX}) {
    EXPECT_EQ(DaysInMonth(month, 2000), 31) << month;
  }
}

}  // namespace
