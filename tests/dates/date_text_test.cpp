// The conversions between a date and its text, as formulas use them.
#include "functions/date_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tests/dates/date_support.h"

namespace {

TEST(DateFromText, DatesThenTimes) {
  const PlainSettings settings;
  const struct {
    const char *text, *date;
  } rows[] = {
      {"1/31/2012", "2012-01-31 00:00:00"},
      {"1/31/2012 10:30", "2012-01-31 10:30:00"},
      {"10:30 pm", "1900-01-01 22:30:00"},
      {"10:30:15", "1900-01-01 10:30:15"},
      {"12", "unchanged"},
      {"12 Ja", "unchanged"},
      {"", "unchanged"},
      {nullptr, "unchanged"},
  };
  for (const auto &row : rows) {
    NumberValue target;
    memset(&target, 0xEE, sizeof target);
    const NumberValue before = target;
    const int32_t result = DateFromText(&target, row.text);
    const bool unchanged = memcmp(&target, &before, sizeof target) == 0;
    SCOPED_TRACE(row.text != nullptr ? row.text : "null");
    EXPECT_EQ(result, unchanged ? 0 : 1);
    EXPECT_EQ(unchanged ? "unchanged" : Iso(target), row.date);
  }
}

TEST(DateRewriteText, FormsAndTheirPictures) {
  const PlainSettings settings;
  const struct {
    const char *text;
    int32_t code;
    const char *rewritten;
  } rows[] = {
      {"Jan 5, 2012", kDateForm, "D 2012-01-05"},
      {"Jan 5, 2012 9:04 pm", kDateTimeForm, "DT 2012-01-05 21:04:00"},
      {"2012-01-05 0:00", kDateTimeForm, "DT 2012-01-05 00:00:00"},
      {"9:04 pm", kTimeForm, "T 21:04:00"},
      {"10:30:15", kTimeForm, "T 10:30:15"},
      {"hello", kNoDateForm, ""},
      {"", kNoDateForm, ""},
      {nullptr, kNoDateForm, ""},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.text != nullptr ? row.text : "null");
    char buffer[kDateTextSize] = "before";
    EXPECT_EQ(DateRewriteText(row.text, buffer, "'D' yyyy-MM-dd", "'DT' yyyy-MM-dd HH:mm:ss",
                              "'T' HH:mm:ss"),
              row.code);
    EXPECT_STREQ(buffer, row.rewritten);
    // Without a picture, or with a bad one, the form is still known.
    for (const char *picture : {static_cast<const char *>(nullptr), "bad"}) {
      strcpy(buffer, "before");
      EXPECT_EQ(DateRewriteText(row.text, buffer, picture, picture, picture), row.code);
      EXPECT_STREQ(buffer, "");
    }
  }
}

TEST(DateToText, ByPictureAndByDefault) {
  const PlainSettings settings;
  const std::string fill(97, 'z');
  const struct {
    const char *date;
    std::string picture;  // "" for the default text
    int32_t result;
    std::string text;
  } rows[] = {
      {"2012-01-31", "", 1, "01/31/2012"},
      {"2012-01-31 21:30", "", 1, "01/31/2012 09:30:00 PM"},
      {"null", "", 1, ""},
      {"2012-01-31", "d. MMM yy", 1, "31. Jan 12"},
      {"2012-01-31", "bad", 0, ""},
      {"null", "bad", 1, ""},
      {"2012-01-31", "dd'" + fill + "'", 1, "31" + fill},
      {"2012-01-31", "dd '" + fill + "'", 0, ""},
  };
  for (const auto &row : rows) {
    const NumberValue date = Stored(row.date);
    char buffer[kDateTextSize] = "before";
    SCOPED_TRACE(std::string(row.date) + " by " + row.picture);
    EXPECT_EQ(row.picture.empty() ? DateToTextDefault(&date, buffer)
                                  : DateToTextPicture(&date, row.picture.c_str(), buffer),
              row.result);
    EXPECT_STREQ(buffer, row.text.c_str());
  }
  const NumberValue noDate = Number(5);
  char buffer[kDateTextSize] = "before";
  EXPECT_EQ(DateToTextDefault(&noDate, buffer), 0);
  EXPECT_STREQ(buffer, "");
  EXPECT_EQ(DateToTextPicture(&noDate, nullptr, buffer), 0);
}

TEST(DatePictureWidth, WidestPictureAndTemplate) {
  const PlainSettings settings;
  const char *const none[3] = {};
  const char *const pictures[3] = {"yyyy-MM-dd", nullptr, "dddd"};
  const char *const longest[3] = {"d", "dddd MMMM", "bad"};
  const char *const templates[3] = {"{d '%s'}", nullptr, "TIME('%s')x"};
  EXPECT_EQ(DatePictureWidth(0, none, none), 0);
  EXPECT_EQ(DatePictureWidth(0, pictures, templates), 10);
  EXPECT_EQ(DatePictureWidth(2, pictures, none), 10);
  EXPECT_EQ(DatePictureWidth(2, pictures, templates), 21);
  EXPECT_EQ(DatePictureWidth(0xFFFD, longest, templates), 19);
  EXPECT_EQ(DatePictureWidth(2, none, templates), 11);
}

}  // namespace
