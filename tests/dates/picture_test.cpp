// Dates to text: pictures, the country's form, widths, and back again.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>

#include "tests/dates/date_support.h"

namespace {

struct Output {
  int32_t result;
  std::string text;
};

Output Write(FormatRecord record, const DateTimeParts &parts) {
  char text[101];
  memset(text, 'x', sizeof text);
  record.output = text;
  record.parts = parts;
  const int32_t result = WRENFmtDate(&record);
  EXPECT_EQ(text[100], 'x') << "the output passed its 100 bytes";
  return {result, text};
}

FormatRecord PictureRecord(const char *picture, int32_t mode = WREN_FMT_DATETIME) {
  FormatRecord record;
  WRENFmtInit(&record);
  record.mode = mode;
  record.picture = picture;
  record.picture2 = picture;
  LocaleBlock locale;
  WRENFmtLoadLocale(&locale);
  record.dayNames = locale.dayNames;
  record.monthNames = locale.monthNames;
  record.markers = locale.markers;
  return record;
}

std::string ByPicture(const char *picture, const DateTimeParts &parts) {
  const Output output = Write(PictureRecord(picture), parts);
  EXPECT_EQ(output.result, WRENFmtCheckDatePicture(picture)) << picture;
  return output.result != 0 ? output.text : "no" + output.text;
}

const DateTimeParts kMorning = Parts(2012, 1, 5, 9, 4, 7, 1200);  // a Thursday
const DateTimeParts kEvening = Parts(1999, 12, 31, 21, 30, 15, 987654);

TEST(DatePicture, Fields) {
  const PlainSettings settings;
  const struct {
    const char *picture, *morning, *evening;
  } rows[] = {
      {"yyyy-MM-dd", "2012-01-05", "1999-12-31"},
      {"YYYY-MM-DD", "2012-01-05", "1999-12-31"},
      {"DD.MM.YYYY", "05.01.2012", "31.12.1999"},
      {"yy/M/d", "12/1/5", "99/12/31"},
      {"dddd, d. MMMM yyyy", "Thursday, 5. January 2012", "Friday, 31. December 1999"},
      {"ddd MMM", "Thu Jan", "Fri Dec"},
      {"HH:mm:ss", "09:04:07", "21:30:15"},
      {"H:m:s", "9:4:7", "21:30:15"},
      {"HH:mm:SS", "09:04:07", "21:30:15"},
      {"hh:mm", "09:04", "21:30"},
      {"h:mm", "9:04", "21:30"},
      {"hh:mm AM/PM", "09:04 AM", "09:30 PM"},
      {"h am/pm", "9 am", "9 pm"},
      {"hA/P", "9A", "9P"},
      {"a/p h", "a 9", "p 9"},
      {"HH AM/PM", "09 AM", "21 PM"},
      {"s.f s.fff s.ffffff", "7.0 7.001 7.001200", "15.9 15.987 15.987654"},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.picture);
    EXPECT_EQ(ByPicture(row.picture, kMorning), row.morning);
    EXPECT_EQ(ByPicture(row.picture, kEvening), row.evening);
  }
}

// A small m next to an hour or a second is the minute, elsewhere the month; M is the month.
TEST(DatePicture, MonthAndMinute) {
  const PlainSettings settings;
  const struct {
    const char *picture, *text;
  } rows[] = {
      {"dd.mm.yyyy HH:mm", "31.12.1999 21:30"},
      {"yyyy-mm-dd hh:mm:ss", "1999-12-31 21:30:15"},
      {"mm", "12"},
      {"mm:ss", "30:15"},
      {"h AM/PM mm", "9 PM 30"},
      {"HH 'mm' mm", "21 mm 30"},
      {"HH:MM", "21:12"},
      {"mmm mmmm", "Dec December"},
      {"h mmm", "21 Dec"},
      {"mm mm ss", "12 30 15"},
      {"HH:mm mm", "21:30 12"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(ByPicture(row.picture, kEvening), row.text) << row.picture;
  }
}

TEST(DatePicture, Literals) {
  const PlainSettings settings;
  const struct {
    const char *picture, *text;
  } rows[] = {
      {"yyyy'year'", "2012year"},
      {"\"d\"d", "d5"},
      {"h 'o''clock'", "9 o'clock"},
      {"''d''''", "5'"},
      {"\"'\"d'\"'", "'5\""},
      {"\\d\\d d", "dd 5"},
      {"\\\\d\\'", "\\5'"},
      {"yyyy-MM-dd'T'HH:mm", "2012-01-05T09:04"},
      {"{d}~1;2\xE9\n", "{5}~1;2\xE9\n"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(ByPicture(row.picture, kMorning), row.text) << row.picture;
  }
}

TEST(DatePicture, BadPictures) {
  const PlainSettings settings;
  const char *const pictures[] = {
      "",    "yyy",   "y",      "yyyyy",   "MMMMM", "mmmmm",   "ddddd",
      "HHH", "hhh",   "sss",    "fffffff", "x",     "ddx",     "yyyyT",
      "am",  "AM",    "A/M",    "'d",      "d'",    "d\"x",    "d\\",
      "-",   "'abc'", "d 'a''", "Am/Pm",   "tt",    "d 'x' Q", "yyyyyyyyyyyyyyyyyyyyyyyy",
  };
  for (const char *picture : pictures) {
    EXPECT_EQ(ByPicture(picture, kMorning), "no") << picture;
  }
  EXPECT_EQ(WRENFmtCheckDatePicture(nullptr), 0);
  EXPECT_EQ(Write(PictureRecord(nullptr), kMorning).result, 0);
}

// In a double-byte code page the second byte of a character is no quote, letter or backslash.
TEST(DatePicture, CharactersOfTheCodePage) {
  const PlainSettings settings;
  const struct {
    int32_t codePage;
    const char *picture, *text;
  } rows[] = {
      {932,
       "yyyy\x94\x4EM\x8C\x8E"
       "d\x93\xFA",
       "2012\x94\x4E"
       "1\x8C\x8E"
       "5\x93\xFA"},
      {932, "d\x95\x5C", "5\x95\x5C"},
      {932, "'\x95\x5C'd",
       "\x95\x5C"
       "5"},
      {932, "d\\\x83\x64", "5\x83\x64"},
      {932, "d\x81", "5\x81"},
      {1252, "d\x81\x64",
       "5\x81"
       "5"},
      {65001, "d\xE6\x97\xA5", "5\xE6\x97\xA5"},
  };
  for (const auto &row : rows) {
    WRENSetCodePage(row.codePage);
    EXPECT_EQ(ByPicture(row.picture, kMorning), row.text) << row.codePage << ": " << row.picture;
  }
}

TEST(DateText, FieldsThatNoCalendarHasAreRefused) {
  const PlainSettings settings;
  for (const int32_t useCountry : {0, 1}) {
    for (const DateTimeParts &parts :
         {Parts(0, 0, 0), Parts(2012, 13, 1), Parts(2011, 2, 29), Parts(10000, 1, 1),
          Parts(2012, 1, 1, 24), Parts(2012, 1, 1, 0, 0, 0, 1000000),
          Parts(2012, 1, 1, INT32_MIN, INT32_MAX)}) {
      FormatRecord record = PictureRecord("dddd MMMM yyyy hh:mm:ss");
      record.useCountry = useCountry;
      const Output output = Write(record, parts);
      EXPECT_EQ(output.result, 0) << Iso(parts);
      EXPECT_EQ(output.text, "") << Iso(parts);
    }
  }
  for (const int32_t mode : {-1, 0, 4, 7}) {
    EXPECT_EQ(Write(PictureRecord("d", mode), kMorning).result, 0) << "mode " << mode;
  }
  // A time needs no date.
  EXPECT_EQ(Write(PictureRecord("H:mm d MMM", WREN_FMT_TIME), Parts(0, 0, 0, 9, 4)).text,
            "9:04 1 Jan");
  EXPECT_EQ(WRENFmtDate(nullptr), 0);
  FormatRecord record = PictureRecord("d");
  record.parts = kMorning;
  EXPECT_EQ(WRENFmtDate(&record), 0) << "without an output";
}

TEST(DateText, NinetyNineCharactersAreTheLimit) {
  const PlainSettings settings;
  constexpr size_t kLengths[] = {98, 99, 100, 101, 5000000};
  for (const size_t length : kLengths) {
    const std::string picture = "dd'" + std::string(length - 2, 'z') + "'";
    const Output output = Write(PictureRecord(picture.c_str()), kMorning);
    EXPECT_EQ(output.result, length <= 99 ? 1 : 0) << length;
    EXPECT_EQ(output.text.size(), length <= 99 ? length : 0) << length;
    FormatRecord record = PictureRecord(picture.c_str());
    EXPECT_EQ(WRENFmtWidth(&record, 0), std::min<int32_t>(static_cast<int32_t>(length), 99));
  }
}

TEST(DateText, NamesOfTheRecord) {
  const PlainSettings settings;
  FormatRecord record = PictureRecord("dddd ddd MMMM MMM am/pm");
  record.dayNames = ";S;M;T;W;T;F;S;1;2;3;4;five";
  record.monthNames = ";EINS";
  record.markers = ";VOR;NACH";
  EXPECT_EQ(Write(record, kMorning).text, "T five EINS  vor");
  record.dayNames = record.monthNames = record.markers = nullptr;
  EXPECT_EQ(Write(record, kMorning).text, "Thursday Thu January Jan am");
}

TEST(DateText, AsTheCountryWritesIt) {
  const PlainSettings settings;
  const struct {
    int32_t mode;
    DateTimeParts parts;
    const char *text;
  } rows[] = {
      {WREN_FMT_DATE, kEvening, "12/31/1999"},
      {WREN_FMT_TIME, kEvening, "09:30:15.987654 PM"},
      {WREN_FMT_DATETIME, kEvening, "12/31/1999 09:30:15.987654 PM"},
      {WREN_FMT_DATETIME, Parts(12, 1, 2), "01/02/0012"},
      {WREN_FMT_DATETIME, Parts(2012, 1, 2, 0, 0, 1), "01/02/2012 12:00:01 AM"},
      {WREN_FMT_DATETIME, Parts(2012, 1, 2, 12, 0, 0, 250000), "01/02/2012 12:00:00.25 PM"},
      {WREN_FMT_TIME, Parts(2012, 1, 2), "12:00:00 AM"},
  };
  for (const auto &row : rows) {
    FormatRecord record = PictureRecord("ignored", row.mode);
    record.useCountry = 1;
    const Output output = Write(record, row.parts);
    EXPECT_EQ(output.result, 1) << row.text;
    EXPECT_EQ(output.text, row.text);
  }
}

// The width is that of the widest of all texts: no date is wider, and some date is as wide.
TEST(DateText, WidthIsExact) {
  const PlainSettings settings;
  const struct {
    const char *picture;
    int32_t width;
  } rows[] = {
      {"yyyy-MM-dd", 10}, {"d", 2},        {"dddd", 9},
      {"MMMM", 9},        {"M MMMM", 11},  {"dddd MMMM d h am/pm", 31},
      {"'abc'd", 5},      {"h:m:s.f", 10}, {"MMM ddd A/P", 9},
      {"bad", 0},
  };
  std::mt19937 random(3);
  for (const auto &row : rows) {
    FormatRecord record = PictureRecord(row.picture);
    record.markers = ";VM;NACHM";
    EXPECT_EQ(WRENFmtWidth(&record, 0), row.width) << row.picture;
    EXPECT_EQ(WRENFmtWidth(&record, 7), std::max(row.width, 7)) << row.picture;
    size_t widest = 0;
    for (int i = 0; i < 20000; i++) {
      DateTimeParts parts = {};
      PAVNDaysToDate(2451545 + static_cast<int32_t>(random() % 10000), &parts);
      parts.hour = static_cast<int32_t>(random() % 24);
      parts.minute = parts.second = static_cast<int32_t>(random() % 60);
      widest = std::max(widest, Write(record, parts).text.size());
    }
    EXPECT_EQ(widest, static_cast<size_t>(row.width)) << row.picture;
  }
  EXPECT_EQ(WRENFmtWidth(nullptr, 5), 5);
}

// What is written reads back as the same moment, by pictures in the three orders and as the country
// writes it.
TEST(DateText, ReadsBack) {
  const PlainSettings settings;
  const struct {
    const char *picture;
    int32_t order;
  } rows[] = {
      {"M/d/yyyy h:mm:ss.ffffff AM/PM", 0},
      {"dd.MM.yyyy HH:mm:ss.ffffff", 1},
      {"yyyy-MM-dd HH:mm:ss.ffffff", 2},
      {"d MMMM, yyyy H.mm.ss.ffffff", 0},
      {"d-MMM-yyyy-hh:mm:ss:ffffff am/pm", 1},
      {"MMM d, yyyy HH:mm:ss.ffffff", 2},
      {nullptr, 0},
  };
  std::mt19937 random(11);
  for (const auto &row : rows) {
    for (int i = 0; i < 20000; i++) {
      DateTimeParts parts = {};
      PAVNDaysToDate(1721426 + static_cast<int32_t>(random() % 3652059), &parts);
      parts.hour = static_cast<int32_t>(random() % 24);
      parts.minute = static_cast<int32_t>(random() % 60);
      parts.second = static_cast<int32_t>(random() % 60);
      parts.fraction = random() % 2 == 0 ? 0 : static_cast<int32_t>(random() % 1000000);
      FormatRecord record = PictureRecord(row.picture);
      record.useCountry = row.picture == nullptr ? 1 : 0;
      record.dateOrder = row.order;
      record.pivotYear = 1950;
      const Output output = Write(record, parts);
      ASSERT_EQ(output.result, 1) << Iso(parts);
      record.input = output.text.c_str();
      record.parts = {};
      ASSERT_EQ(WRENFmtParseDate(&record), 1) << output.text;
      ASSERT_EQ(Iso(record.parts), Iso(parts)) << output.text;
    }
  }
}

}  // namespace
