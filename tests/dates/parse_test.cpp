// Texts to dates and times.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "closed/wren/country.h"
#include "tests/dates/date_support.h"

namespace {

constexpr int32_t kMonthFirst = 0;
constexpr int32_t kDayFirst = 1;
constexpr int32_t kYearFirst = 2;

// What the text reads as in a mode: Iso() of the parts, "no" when it is refused.
std::string Read(int32_t mode, const std::string &text, int32_t order = kMonthFirst) {
  FormatRecord record;
  WRENFmtInit(&record);
  LocaleBlock locale;
  WRENFmtLoadLocale(&locale);
  record.mode = mode;
  record.input = text.c_str();
  record.dateOrder = order;
  record.pivotYear = locale.pivotYear;
  record.monthNames = locale.monthNames;
  record.markers = locale.markers;
  const DateTimeParts untouched = Parts(7, 7, 7);
  record.parts = untouched;
  if (WRENFmtParseDate(&record) == 0) {
    EXPECT_EQ(Iso(record.parts), Iso(untouched)) << "a refused text changed the parts: " << text;
    return "no";
  }
  return Iso(record.parts);
}

// The date of a text that is a date alone; "no" also when mode 3 sees it differently.
std::string ReadDate(const std::string &text, int32_t order = kMonthFirst) {
  std::string date = Read(WREN_FMT_DATE, text, order);
  EXPECT_EQ(Read(WREN_FMT_DATETIME, text, order), date) << text;
  const std::string midnight = " 00:00:00";
  if (date.ends_with(midnight)) {
    return date.substr(0, date.size() - midnight.size());
  }
  return date;
}

TEST(ParseDate, NumbersInTheOrderOfTheCountry) {
  const PlainSettings settings;
  const struct {
    const char *text, *monthFirst, *dayFirst, *yearFirst;
  } rows[] = {
      {"3/4/2012", "2012-03-04", "2012-04-03", "2012-03-04"},
      {"03-04-12", "2012-03-04", "2012-04-03", "2003-04-12"},
      {"1-2-3", "2003-01-02", "2003-02-01", "2001-02-03"},
      {"12/31/1999", "1999-12-31", "no", "1999-12-31"},
      {"31.12.1999", "no", "1999-12-31", "no"},
      {"99/12/31", "no", "no", "1999-12-31"},
      {"2012-01-31", "2012-01-31", "2012-01-31", "2012-01-31"},
      {"2012/1/31", "2012-01-31", "2012-01-31", "2012-01-31"},
      {"987.1.31", "0987-01-31", "0987-01-31", "0987-01-31"},
      {"2012-31-01", "no", "no", "no"},
      {"2/29/2000", "2000-02-29", "no", "2000-02-29"},
      {"29-2-2001", "no", "no", "no"},
      {"4/31/2012", "no", "no", "no"},
      {"31/4/2012", "no", "no", "no"},
      {"0/1/2012", "no", "no", "no"},
      {"1/0/2012", "no", "no", "no"},
      {"1/1/0", "2000-01-01", "2000-01-01", "no"},
      {"1/1/0000", "no", "no", "no"},
      {"1/1/0099", "0099-01-01", "0099-01-01", "0099-01-01"},
      {"1/1/10000", "no", "no", "no"},
      {"0001/001/0001", "0001-01-01", "0001-01-01", "0001-01-01"},
      {"1/1/49", "2049-01-01", "2049-01-01", "no"},
      {"1/1/50", "1950-01-01", "1950-01-01", "no"},
      {"1/1/99999999999999999999", "no", "no", "no"},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(ReadDate(row.text, kMonthFirst), row.monthFirst);
    EXPECT_EQ(ReadDate(row.text, kDayFirst), row.dayFirst);
    EXPECT_EQ(ReadDate(row.text, kYearFirst), row.yearFirst);
  }
}

TEST(ParseDate, EveryPairOfSeparators) {
  const PlainSettings settings;
  for (const char first : std::string("-./:\\")) {
    for (const char second : std::string("-./:\\")) {
      const std::string text = std::string("12") + first + "31" + second + "1999";
      EXPECT_EQ(ReadDate(text), "1999-12-31") << text;
      const std::string named = std::string("31") + first + "Dec" + second + "1999";
      EXPECT_EQ(ReadDate(named), "1999-12-31") << named;
    }
  }
}

TEST(ParseDate, MonthNames) {
  const PlainSettings settings;
  const struct {
    const char *text, *date;
  } rows[] = {
      {"12-Jan-1999", "1999-01-12"},
      {"12/January/99", "1999-01-12"},
      {"1999-jan-12", "1999-01-12"},
      {"12 Jan 1999", "1999-01-12"},
      {"12 January, 1999", "1999-01-12"},
      {"12\tJAN\n99", "1999-01-12"},
      {"12 Jan,1999", "1999-01-12"},
      {"1999 Jan 12", "1999-01-12"},
      {"Jan 12, 1999", "1999-01-12"},
      {"january 12 1999", "1999-01-12"},
      {"Jan \t\n 12,   1999", "1999-01-12"},
      {"sept 1, 2012", "2012-09-01"},
      {"Septe 1, 2012", "2012-09-01"},
      {"Feb 29, 2000", "2000-02-29"},
      {"  Jan 12, 1999 \n", "1999-01-12"},
      {"Feb 29, 1900", "no"},
      {"Ja 12 1999", "no"},
      {"12 Ja 1999", "no"},
      {"12-J-1999", "no"},
      {"Janx 12, 1999", "no"},
      {"Januaryy 12, 1999", "no"},
      {"Jan12, 1999", "no"},
      {"12 Jan", "no"},
      {"Jan 12", "no"},
      {"12Jan1999", "no"},
      {"12 Jan-1999", "no"},
      {"12-Jan 1999", "no"},
      {"Jan 12,, 1999", "no"},
      {"Jan 12 ,1999", "no"},
      {"Jan 32, 1999", "no"},
      {"12 Jan 1999 x", "no"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(ReadDate(row.text), row.date) << row.text;
  }
  const char *const names[] = {"January",   "February", "March",    "April",
                               "May",       "June",     "July",     "August",
                               "September", "October",  "November", "December"};
  for (int month = 1; month <= 12; month++) {
    const std::string name = names[month - 1];
    for (size_t letters = 3; letters <= name.size(); letters++) {
      const std::string text = "5 " + name.substr(0, letters) + " 2012";
      EXPECT_EQ(ReadDate(text), Iso(Parts(2012, month, 5)).substr(0, 10)) << text;
    }
  }
}

TEST(ParseTime, TimesAlone) {
  const PlainSettings settings;
  const struct {
    const char *text, *time;
  } rows[] = {
      {"10:30", "10:30:00"},
      {"10.30", "10:30:00"},
      {"0:00", "00:00:00"},
      {"23:59:59", "23:59:59"},
      {"10:30:15", "10:30:15"},
      {"10.30.15", "10:30:15"},
      {"10:30.15", "10:30:15"},
      {"10:30:15.25", "10:30:15.250000"},
      {"10:30:15.1234567", "10:30:15.123456"},
      {"10:30:15:000001", "10:30:15.000001"},
      {"12 am", "00:00:00"},
      {"12 pm", "12:00:00"},
      {"12pm", "12:00:00"},
      {"1AM", "01:00:00"},
      {"11:59:59 Pm", "23:59:59"},
      {"10:30pM", "22:30:00"},
      {"10:30 \t pm", "22:30:00"},
      {"0 am", "00:00:00"},
      {" 10:30 ", "10:30:00"},
      {"12", "no"},
      {"13 pm", "no"},
      {"13:00 am", "no"},
      {"12 xm", "no"},
      {"10:30 p", "no"},
      {"10:30 pmx", "no"},
      {"10:30 pm pm", "no"},
      {"24:00", "no"},
      {"25:00", "no"},
      {"10:60", "no"},
      {"10:30:60", "no"},
      {"10:", "no"},
      {"10:30:", "no"},
      {":30", "no"},
      {"10:30:15.", "no"},
      {"10 : 30", "no"},
      {"10-30", "no"},
      {"10:30:15.25.1", "no"},
      {"pm", "no"},
      {"", "no"},
      {"-10:30", "no"},
      {"4294967306:30", "no"},
  };
  for (const auto &row : rows) {
    const std::string expected =
        std::string(row.time) == "no" ? "no" : std::string("1900-01-01 ") + row.time;
    EXPECT_EQ(Read(WREN_FMT_TIME, row.text), expected) << row.text;
  }
}

TEST(ParseDate, DatesWithTimes) {
  const PlainSettings settings;
  const struct {
    const char *text, *date;
  } rows[] = {
      {"2012-01-31 10:30:15", "2012-01-31 10:30:15"},
      {"2012-01-31T10:30:15", "2012-01-31 10:30:15"},
      {"2012-01-31 10", "2012-01-31 10:00:00"},
      {"2012-01-31\t\n10:30:15.5", "2012-01-31 10:30:15.500000"},
      {"1/31/2012-10:30", "2012-01-31 10:30:00"},
      {"1/31/2012/10:30", "2012-01-31 10:30:00"},
      {"1/31/2012\\10", "2012-01-31 10:00:00"},
      {"1/31/2012:10:30", "2012-01-31 10:30:00"},
      {"1.2.3.4.5.6.7", "2003-01-02 04:05:06.700000"},
      {"Jan 12, 1999 10:30 am", "1999-01-12 10:30:00"},
      {"12 Jan 99 10:30pm", "1999-01-12 22:30:00"},
      {"12-Jan-99 12 PM", "1999-01-12 12:00:00"},
      {"1/31/2012 13 pm", "no"},
      {"1/31/2012 24:00", "no"},
      {"1/31/2012 10:30 x", "no"},
      {"1/31/2012 am", "no"},
      {"1/31/2012,10:30", "no"},
      {"1/31/2012 - 10:30", "no"},
      {"1/31/2012T 10:30", "no"},
      {"2/30/2012 10:30", "no"},
      {"1.2.3.4.5.6.7.8", "no"},
      {"10:30:15", "no"},
      {"10:30", "no"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(Read(WREN_FMT_DATETIME, row.text), row.date) << row.text;
    EXPECT_EQ(Read(WREN_FMT_DATE, row.text), "no") << row.text;
  }
}

// Three numbers with a ":" are a time where they can be one; with points they are a date first.
TEST(ParseDate, ColonsTellATime) {
  const PlainSettings settings;
  const struct {
    const char *text, *date, *time;
  } rows[] = {
      {"10:30:15", "no", "1900-01-01 10:30:15"},
      {"10:30.15", "no", "1900-01-01 10:30:15"},
      {"10.30:15", "no", "1900-01-01 10:30:15"},
      {"10.30:15 pm", "no", "1900-01-01 22:30:15"},
      {"10.30.15", "2015-10-30 00:00:00", "1900-01-01 10:30:15"},
      {"13.30.15", "no", "1900-01-01 13:30:15"},
      {"12:31:1999", "1999-12-31 00:00:00", "no"},
      {"10:30:15 14:00", "2015-10-30 14:00:00", "no"},
      {"10:30-15", "2015-10-30 00:00:00", "no"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(Read(WREN_FMT_DATETIME, row.text), row.date) << row.text;
    EXPECT_EQ(Read(WREN_FMT_TIME, row.text), row.time) << row.text;
  }
}

TEST(ParseDate, OtherTextsAreRefused) {
  const PlainSettings settings;
  const std::string texts[] = {
      "",
      " ",
      "abc",
      "12",
      "1/2",
      "1/2/",
      "/1/2/3",
      "1//2/3",
      "1 2 3",
      "1/ 2/3",
      "1/2/3/",
      "--",
      ",",
      "Jan",
      "Jan ,",
      "1/2/x",
      "1-x-3",
      "1/-2/3",
      "+1/2/3",
      "1/2/3 4 5",
      "\xFF/1/1",
      "1/2/3\x01",
      "12 \xE4\xE4\xE4 1999",
      "T",
      "1/2/3T",
      "31",
      "2012",
      "2012-01",
      "20120131",
  };
  for (const std::string &text : texts) {
    for (const int32_t mode : {WREN_FMT_DATE, WREN_FMT_TIME, WREN_FMT_DATETIME}) {
      EXPECT_EQ(Read(mode, text), "no") << "mode " << mode << ": " << text;
    }
  }
  for (const int32_t mode : {-1, 0, 4, 6, INT32_MAX}) {
    EXPECT_EQ(Read(mode, "1/2/2012"), "no") << "mode " << mode;
  }
  EXPECT_EQ(WRENFmtParseDate(nullptr), 0);
  FormatRecord record;
  WRENFmtInit(&record);
  record.mode = WREN_FMT_DATE;
  EXPECT_EQ(WRENFmtParseDate(&record), 0);
}

TEST(ParseDate, LongTexts) {
  const PlainSettings settings;
  const std::string blanks(3000000, ' ');
  const std::string zeros(3000000, '0');
  const std::string letters(3000000, 'a');
  EXPECT_EQ(ReadDate(blanks + "Jan" + blanks + "12," + blanks + "1999" + blanks), "1999-01-12");
  EXPECT_EQ(ReadDate("1/" + zeros + "2/1999"), "1999-01-02");
  EXPECT_EQ(ReadDate("1/2/" + zeros), "no");
  EXPECT_EQ(ReadDate("1/2/" + std::string(3000000, '9')), "no");
  EXPECT_EQ(ReadDate("1 " + letters + " 1999"), "no");
  EXPECT_EQ(Read(WREN_FMT_TIME, "10:30:15." + zeros), "1900-01-01 10:30:15");
  EXPECT_EQ(Read(WREN_FMT_TIME, "10:30" + blanks + letters), "no");
}

// Any bytes are read without harm in any code page, and what is taken is a date that exists.
TEST(ParseDate, RandomTexts) {
  const PlainSettings settings;
  std::mt19937 random(20120131);
  const std::string things[] = {"1",   "12", "31",   "1999",         "0",    "Jan",
                                "may", "am", "\x81", "\xE3\x81\x82", "\xFF", "x"};
  const std::string joints[] = {"/", "-", ".", ":", "\\", " ", "\t", ",", ", ", "T", ""};
  int taken = 0;
  for (int i = 0; i < 200000; i++) {
    WRENSetCodePage(i % 3 == 0 ? 1252 : i % 3 == 1 ? 932 : 65001);
    std::string text;
    for (auto n = random() % 6; n > 0; n--) {
      // Half of them are the first, so that many texts are dates.
      text += things[random() % 2 * (random() % std::size(things))];
      text += joints[random() % 2 * (random() % std::size(joints))];
    }
    text.resize(text.size() - std::min<size_t>(text.size(), random() % 2));
    const int32_t mode = 1 + static_cast<int32_t>(random() % 3);
    const std::string result = Read(mode, text, static_cast<int32_t>(random() % 3));
    if (result != "no") {
      taken++;
      ASSERT_EQ(Iso(Stored(result)), result) << text;
    }
  }
  EXPECT_GT(taken, 1000);
}

}  // namespace
