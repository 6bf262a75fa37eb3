// The date functions as the evaluator and hosts call them, their result blocks, and the conversions
// between a date and its text.
#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "closed/wren/memory.h"
#include "functions/date_text.h"
#include "functions/result_block.h"
#include "orli11.h"
#include "tests/dates/date_support.h"

namespace {

constexpr int32_t kValue = 13;
constexpr int32_t kText = 50;

// Calls a routine as the evaluator does; the result as text. An argument is a Number ("5"), a date
// ("2012-01-31"), "null", a text ("'text"), or "" for an entry that is missing.
std::string Call(OrlFunctionProc routine, int32_t size, const std::vector<std::string> &texts) {
  std::vector<NumberValue> values(texts.size());
  std::vector<void *> args(texts.size());
  for (size_t i = 0; i < texts.size(); i++) {
    const std::string &text = texts[i];
    args[i] = text.empty() ? nullptr : &values[i];
    if (text.starts_with("'")) {
      args[i] = const_cast<char *>(text.c_str() + 1);  // routines only read
    } else if (text.find('-', 1) != std::string::npos) {
      values[i] = Stored(text);
    } else if (text != "null") {
      WRENNumFromText(&values[i], text.c_str());
    }
  }
  void *block = WRENMemAlloc(static_cast<uint32_t>(size));
  // What was in the block must not show through.
  memset(block, 0xEE, static_cast<size_t>(size));
  EXPECT_EQ(routine(nullptr, nullptr, size, &block, "name", args.empty() ? nullptr : args.data()),
            1);
  std::string result = static_cast<char *>(block);
  if (size == kValue) {
    NumberValue value;
    memcpy(&value, block, sizeof value);
    result = value.length == 10 ? Iso(value) : NumberText(value);
  }
  WRENMemFree(block);
  return result;
}

TEST(DateFunctions, OfOneDate) {
  using namespace std::chrono;
  std::mt19937_64 random(1);
  for (int i = 0; i < 2000; i++) {
    const sys_seconds moment = RandomMoment(random);
    const DateTimeParts p = Parts(moment);
    const weekday day{floor<days>(moment)};
    const year_month_day_last end = year{p.year} / p.month / last;
    const std::pair<OrlFunctionProc, std::string> rows[] = {
        {FUNDateYear, std::to_string(p.year)},
        {FUNDateMonth, std::to_string(p.month)},
        {FUNDateDay, std::to_string(p.day)},
        {FUNDateHour, std::to_string(p.hour)},
        {FUNDateMinute, std::to_string(p.minute)},
        {FUNDateSecond, std::to_string(p.second)},
        {FUNDateQuarter, std::string(1, "111222333444"[p.month - 1])},
        {FUNWeekDay, std::to_string((day - Saturday).count())},
        {FUNDateMonthBegin, Iso(Parts(p.year, p.month, 1))},
        {FUNDateMonthEnd, Iso(Parts(sys_days{end}))},
    };
    for (const auto &[routine, result] : rows) {
      ASSERT_EQ(Call(routine, kValue, {Iso(p) + ".5"}), result) << Iso(p) << " row " << &result;
      for (const char *none : {"null", ""}) {
        ASSERT_EQ(Call(routine, kValue, {none}), "null");
      }
      ASSERT_EQ(Call(routine, kValue, {}), "null");
    }
  }
}

TEST(DateFunctions, Rows) {
  const PlainSettings settings;
  const struct {
    OrlFunctionProc routine;
    int32_t size;
    std::vector<std::string> args;
    const char *result;
  } rows[] = {
      // clang-format off
      {FUNDateAddDay, kValue, {"2012-02-28 10:30:15", "2"}, "2012-03-01 10:30:15"},
      {FUNDateAddDay, kValue, {"2012-02-28", "null"}, "2012-02-28 00:00:00"},
      {FUNDateAddDay, kValue, {"2012-02-28", ""}, "2012-02-28 00:00:00"},
      {FUNDateAddDay, kValue, {"null", "2"}, "null"},
      {FUNDateAddDay, kValue, {}, "null"},
      {FUNDateConstruct, kValue, {"2012", "1", "31", "10", "30", "15"}, "2012-01-31 10:30:15"},
      {FUNDateConstruct, kValue, {"2012", "2", "31", "0", "0", "0"}, "2012-02-29 00:00:00"},
      {FUNDateConstruct, kValue, {"2012", "13", "1", "0", "0", "0"}, "null"},
      {FUNDateConstruct, kValue, {"2012", "1", "1", "null", "", "null"}, "2012-01-01 00:00:00"},
      {FUNDateConstruct, kValue, {"", "", "", "", "", ""}, "null"},
      {FUNDateConstruct, kValue, {}, "null"},
      {FUNDateIFF, kValue, {"-5", "2001-01-01", "2002-02-02", "2003-03-03"}, "2001-01-01 00:00:00"},
      {FUNDateIFF, kValue, {"0", "2001-01-01", "2002-02-02", "2003-03-03"}, "2002-02-02 00:00:00"},
      {FUNDateIFF, kValue, {"null", "2001-01-01", "2002-02-02", "2003-03-03"}, "2002-02-02 00:00:00"},
      {FUNDateIFF, kValue, {"7", "2001-01-01", "2002-02-02", "2003-03-03"}, "2003-03-03 00:00:00"},
      {FUNDateIFF, kValue, {"-5", "null", "2002-02-02", "2003-03-03"}, "null"},
      {FUNDateIFF, kValue, {"0", "2001-01-01", "", "2003-03-03"}, "null"},
      {FUNDateIFF, kValue, {}, "null"},
      {FUNDateToStr, kText, {"1999-12-31 21:30:15"}, "12/31/1999 09:30:15 PM"},
      {FUNDateToStr, kText, {"null"}, ""},
      {FUNDateToStr, kText, {}, ""},
      {FUNDateToStrPicture, kText, {"2012-01-31", "'d. MMMM yyyy"}, "31. January 2012"},
      {FUNDateToStrPicture, kText, {"2012-01-31", "'x"}, ""},
      {FUNDateToStrPicture, kText, {"2012-01-31", ""}, ""},
      {FUNDateToStrPicture, kText, {}, ""},
      {FUNStrToDate, kValue, {"'Jan 31, 2012 9:30 pm"}, "2012-01-31 21:30:00"},
      {FUNStrToDate, kValue, {"'10:30:15"}, "1900-01-01 10:30:15"},
      {FUNStrToDate, kValue, {"'12 Ja"}, "null"},
      {FUNStrToDate, kValue, {}, "null"},
      // clang-format on
  };
  for (const auto &row : rows) {
    EXPECT_EQ(Call(row.routine, row.size, row.args), row.result)
        << "row " << &row - rows << testing::PrintToString(row.args);
  }
}

TEST(DateFunctions, WithoutAResultBlockTheyFail) {
  NumberValue date = Stored("2012-01-31");
  void *args[] = {&date, &date, &date, &date, &date, &date};
  for (const OrlFunctionProc routine :
       {FUNDateYear, FUNDateMonthEnd, FUNDateAddDay, FUNDateConstruct, FUNDateIFF, FUNStrToDate}) {
    void *block = nullptr;
    EXPECT_EQ(routine(nullptr, nullptr, kValue, &block, "", args), 0);
    EXPECT_EQ(routine(nullptr, nullptr, kValue, nullptr, "", args), 0);
    NumberValue small = {};
    block = &small;
    EXPECT_EQ(routine(nullptr, nullptr, 12, &block, "", args), 0);
  }
}

// A text of 49 characters fits into the block, one of 50 enlarges it, and without memory the
// routine fails and leaves the block valid.
TEST(ResultBlock, GrowsWithTheText) {
  for (const size_t length : {size_t{49}, size_t{50}, size_t{99}}) {
    const std::string text(length, 'z');
    void *block = nullptr;
    TEST_FailAllocationsAfter(0);
    EXPECT_EQ(FUNStrVarResult(&block, 0, "text"), 0);
    EXPECT_EQ(FUNResizeResult(&block, 50), 0);
    TEST_FailAllocationsAfter(-1);
    EXPECT_EQ(FUNResizeResult(&block, 50), 1);
    void *const before = block;
    TEST_FailAllocationsAfter(0);
    EXPECT_EQ(FUNStrVarResult(&block, 50, text.c_str()), length < 50 ? 1 : 0) << length;
    TEST_FailAllocationsAfter(-1);
    EXPECT_EQ(block, before) << length;
    EXPECT_EQ(FUNStrVarResult(&block, 50, text.c_str()), 1);
    EXPECT_STREQ(static_cast<char *>(block), text.c_str());
    EXPECT_EQ(WRENMemSize(block), length < 50 ? 50U : length + 1) << length;
    EXPECT_EQ(FUNStrVarResult(&block, 50, nullptr), 1);
    EXPECT_STREQ(static_cast<char *>(block), "");
    WRENMemFree(block);
  }
  EXPECT_EQ(FUNStrVarResult(nullptr, 50, "x"), 0);
}

TEST(ResultBlock, BytesOfCharacters) {
  const PlainSettings settings;
  const int32_t rows[][3] = {{1252, 5, 5},
                             {932, 5, 10},
                             {65001, 5, 20},
                             {932, -3, -6},
                             {65001, 0, 0},
                             {932, INT32_MAX, INT32_MAX},
                             {65001, INT32_MIN, INT32_MIN},
                             {1252, INT32_MAX, INT32_MAX}};
  for (const auto &[codePage, n, bytes] : rows) {
    WRENSetCodePage(codePage);
    EXPECT_EQ(FUNCharBytes(n), bytes) << codePage << ": " << n;
  }
}

TEST(DateFromText, LeavesTheTargetWhenItFails) {
  for (const char *text : {"12 Ja", "", static_cast<const char *>(nullptr)}) {
    NumberValue target = Stored("2012-01-31");
    EXPECT_EQ(DateFromText(&target, text), 0);
    EXPECT_EQ(Iso(target), "2012-01-31 00:00:00") << testing::PrintToString(text);
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
      {"10:30:15", kTimeForm, "T 10:30:15"},
      {"hello", kNoDateForm, ""},
      {nullptr, kNoDateForm, ""},
  };
  for (const auto &[text, code, rewritten] : rows) {
    SCOPED_TRACE(testing::PrintToString(text));
    char buffer[kDateTextSize] = "before";
    const char *pictures[] = {"'D' yyyy-MM-dd", "'DT' yyyy-MM-dd HH:mm:ss", "'T' HH:mm:ss"};
    EXPECT_EQ(DateRewriteText(text, buffer, pictures[0], pictures[1], pictures[2]), code);
    EXPECT_STREQ(buffer, rewritten);
    // Without a picture, or with a bad one, the form is still known.
    for (const char *picture : {static_cast<const char *>(nullptr), "bad"}) {
      strcpy(buffer, "before");
      EXPECT_EQ(DateRewriteText(text, buffer, picture, picture, picture), code);
      EXPECT_STREQ(buffer, "");
    }
  }
}

TEST(DateToText, WhatHasNoTextGivesZero) {
  const PlainSettings settings;
  char buffer[kDateTextSize] = "before";
  const NumberValue date = Stored("2012-01-31");
  const NumberValue null = {};
  const NumberValue noDate = Number(5);
  EXPECT_EQ(DateToTextPicture(&null, "bad", buffer) + DateToTextDefault(&null, buffer), 2);
  EXPECT_EQ(DateToTextDefault(&noDate, buffer), 0);
  EXPECT_EQ(DateToTextPicture(&noDate, "d", buffer), 0);
  EXPECT_EQ(DateToTextPicture(&date, nullptr, buffer), 0);
  EXPECT_EQ(DateToTextPicture(&date, ("dd '" + std::string(97, 'z') + "'").c_str(), buffer), 0);
  EXPECT_STREQ(buffer, "");
  EXPECT_EQ(DateToTextDefault(&date, buffer) + DateToTextPicture(&date, "d", buffer), 2);
}

TEST(DatePictureWidth, WidestPictureAndTemplate) {
  const PlainSettings settings;
  const char *const none[3] = {};
  const char *const pictures[3] = {"yyyy-MM-dd", nullptr, "dddd"};
  const char *const longest[3] = {"d", "dddd MMMM", "bad"};
  const char *const templates[3] = {"{d '%s'}", nullptr, "TIME('%s')x"};
  EXPECT_EQ(DatePictureWidth(0, pictures, templates), 10);
  EXPECT_EQ(DatePictureWidth(2, pictures, templates), 21);
  EXPECT_EQ(DatePictureWidth(0xFFFD, longest, templates), 19);
  EXPECT_EQ(DatePictureWidth(2, none, templates), 11);
}

}  // namespace
