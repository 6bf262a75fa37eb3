// Dates to text: pictures, the country's form, widths, and back again.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "support/cases.h"
#include "tests/dates/date_support.h"

namespace {

FormatRecord ByPicture(const char *picture, int32_t mode = WREN_FMT_DATETIME) {
  FormatRecord record = Record(mode, 0);
  record.picture = record.picture2 = picture;
  return record;
}

const DateTimeParts kMorning = Parts(2012, 1, 5, 9, 4, 7, 1200);  // a Thursday
const DateTimeParts kEvening = Parts(1999, 12, 31, 21, 30, 15, 987654);

TEST(DatePicture, Rows) {
  const PlainSettings settings;
  for (const Case &row : CasesOf("dates/date_cases.txt", "pictures")) {
    SCOPED_TRACE(row.where);
    WRENSetCodePage(row.Int(0));
    EXPECT_EQ(WRENFmtCheckDatePicture(row[1].c_str()), 1);
    EXPECT_EQ(Write(ByPicture(row[1].c_str()), kMorning), row[2]);
    EXPECT_EQ(Write(ByPicture(row[1].c_str()), kEvening), row[3]);
  }
}

TEST(DatePicture, BadPictures) {
  const PlainSettings settings;
  EXPECT_EQ(WRENFmtCheckDatePicture(nullptr), 0);
  EXPECT_EQ(Write(ByPicture(nullptr), kMorning), "no");
  for (const Case &row : CasesOf("dates/date_cases.txt", "bad")) {
    SCOPED_TRACE(row.where);
    const char *picture = row[0].c_str();
    EXPECT_EQ(WRENFmtCheckDatePicture(picture), 0);
    EXPECT_EQ(Write(ByPicture(picture), kMorning), "no");
  }
}

TEST(DateText, InvalidDatesAreRefused) {
  const PlainSettings settings;
  for (const DateTimeParts &parts :
       {Parts(0, 0, 0), Parts(2012, 13, 1), Parts(2011, 2, 29), Parts(10000, 1, 1),
        Parts(2012, 1, 1, 24), Parts(2012, 1, 1, 0, 0, 0, 1000000),
        Parts(2012, 1, 1, INT32_MIN, INT32_MAX)}) {
    EXPECT_EQ(Write(ByPicture("dddd MMMM yyyy hh:mm:ss"), parts), "no") << Iso(parts);
    EXPECT_EQ(Write(Record(WREN_FMT_DATETIME), parts), "no") << Iso(parts);
  }
  for (const int32_t mode : {-1, 0, 4, 7}) {
    EXPECT_EQ(Write(ByPicture("d", mode), kMorning), "no") << "mode " << mode;
  }
  // A time needs no date.
  EXPECT_EQ(Write(ByPicture("H:mm d MMM", WREN_FMT_TIME), Parts(0, 0, 0, 9, 4)), "9:04 1 Jan");
  EXPECT_EQ(WRENFmtDate(nullptr), 0);
  FormatRecord record = ByPicture("d");
  record.parts = kMorning;
  EXPECT_EQ(WRENFmtDate(&record), 0) << "without an output";
}

TEST(DateText, NamesOfTheRecord) {
  const PlainSettings settings;
  FormatRecord record = ByPicture("dddd ddd MMMM MMM am/pm");
  record.dayNames = ";S;M;T;W;T;F;S;1;2;3;4;five";
  record.monthNames = ";EINS";
  record.markers = ";VOR;NACH";
  EXPECT_EQ(Write(record, kMorning), "T five EINS  vor");
  record.markers = ";MV;MN";
  record.picture = "A/P";
  EXPECT_EQ(Write(record, kMorning), "A") << "markers with the same first letter";
  record.picture = record.picture2;
  record.dayNames = record.monthNames = record.markers = nullptr;
  EXPECT_EQ(Write(record, kMorning), "Thursday Thu January Jan am");
}

// The width is that of the widest of all texts: no date is wider, and some date is as wide. 99
// characters are the limit of a text.
TEST(DateText, WidthIsExact) {
  const PlainSettings settings;
  std::mt19937_64 random(3);
  const std::pair<std::string, int32_t> rows[] = {{"yyyy-MM-dd", 10},
                                                  {"dddd MMMM d h am/pm", 31},
                                                  {"'abc'd", 5},
                                                  {"h:m:s.f", 10},
                                                  {"M MMMM", 11},
                                                  {"MMM ddd A/P", 9},
                                                  {"'" + std::string(97, 'z') + "'dd", 99}};
  for (const auto &[picture, width] : rows) {
    FormatRecord record = ByPicture(picture.c_str());
    record.markers = ";VM;NACHM";
    EXPECT_EQ(WRENFmtWidth(&record, 0), width) << picture;
    EXPECT_EQ(WRENFmtWidth(&record, 7), std::max(width, 7)) << picture;
    size_t widest = 0;
    for (int i = 0; i < 20000; ++i) {
      widest = std::max(widest, Write(record, Parts(RandomMoment(random))).size());
    }
    EXPECT_EQ(widest, static_cast<size_t>(width)) << picture;
  }
  for (const size_t length : {size_t{98}, size_t{5000000}}) {
    const std::string picture = "dd'" + std::string(length, 'z') + "'";
    FormatRecord record = ByPicture(picture.c_str());
    EXPECT_EQ(Write(record, kMorning), "no") << length;
    EXPECT_EQ(WRENFmtWidth(&record, 0), 99) << length;
  }
  FormatRecord bad = ByPicture("bad");
  EXPECT_EQ(WRENFmtWidth(&bad, 7), 7);
  EXPECT_EQ(WRENFmtWidth(nullptr, 5), 5);
}

TEST(DateText, AsTheCountryWritesIt) {
  const PlainSettings settings;
  EXPECT_EQ(Write(Record(WREN_FMT_DATE), kEvening), "12/31/1999");
  EXPECT_EQ(Write(Record(WREN_FMT_TIME), kEvening), "09:30:15.987654 PM");
  EXPECT_EQ(Write(Record(WREN_FMT_TIME), Parts(2012, 1, 2)), "12:00:00 AM");
  const FormatRecord both = Record(WREN_FMT_DATETIME);
  EXPECT_EQ(Write(both, Parts(12, 1, 2)), "01/02/0012");
  EXPECT_EQ(Write(both, Parts(2012, 1, 2, 0, 0, 1)), "01/02/2012 12:00:01 AM");
  EXPECT_EQ(Write(both, Parts(2012, 1, 2, 12, 0, 0, 250000)), "01/02/2012 12:00:00.25 PM");
}

// Formatted dates read back as the same moment, by pictures in the three orders and as the country
// writes them.
TEST(DateText, ReadsBack) {
  const PlainSettings settings;
  const std::pair<const char *, int32_t> rows[] = {{"M/d/yyyy h:mm:ss.ffffff AM/PM", 0},
                                                   {"dd.MM.yyyy HH:mm:ss.ffffff", 1},
                                                   {"yyyy-MM-dd'T'HH:mm:ss.ffffff", 2},
                                                   {"d. MMMM yyyy h.mm.ss.ffffff AM/PM", 0},
                                                   {"d-MMM-yyyy hh:mm:ss:ffffff am/pm", 1},
                                                   {"MMM d, yyyy HH:mm:ss.ffffff", 2},
                                                   {nullptr, kOrderOfCountry}};
  std::mt19937_64 random(11);
  for (int i = 0; i < 140000; ++i) {
    const auto &[picture, order] = rows[i % 7];
    DateTimeParts parts = Parts(RandomMoment(random));
    parts.fraction = static_cast<int32_t>(random() % 2 * (random() % 1000000));
    const std::string text =
        Write(picture != nullptr ? ByPicture(picture) : Record(WREN_FMT_DATETIME), parts);
    ASSERT_EQ(Read(WREN_FMT_DATETIME, text, order), Iso(parts)) << text;
  }
}

}  // namespace
