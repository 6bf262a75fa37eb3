// The date functions as the evaluator and hosts call them, and their result blocks.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "closed/wren/memory.h"
#include "functions/result_block.h"
#include "orli11.h"
#include "tests/dates/date_support.h"

namespace {

// Calls a routine with entries for its arguments and a result block of `size` bytes, as the
// evaluator does; the result as text.
struct Call {
  OrlFunctionProc routine;
  int32_t size;
};

std::string ResultText(int32_t size, const void *block) {
  if (size == 50) {
    return static_cast<const char *>(block);
  }
  NumberValue value;
  memcpy(&value, block, sizeof value);
  return value.length == 10 && Iso(value) != "0000-00-00 00:00:00" ? Iso(value) : NumberText(value);
}

std::string Result(const Call &call, void **args) {
  void *result = WRENMemAlloc(static_cast<uint32_t>(call.size));
  // What was in the block must not show through.
  memset(result, 0xEE, static_cast<size_t>(call.size));
  EXPECT_EQ(call.routine(nullptr, nullptr, call.size, &result, "name", args), 1);
  std::string text = ResultText(call.size, result);
  WRENMemFree(result);
  return text;
}

constexpr int32_t kValue = 13;
constexpr int32_t kText = 50;

TEST(DateFunctions, OfOneDate) {
  const PlainSettings settings;
  const struct {
    const char *name;
    Call call;
    const char *ofWinter;   // 2000-02-10 12:30:45.5, a Thursday
    const char *ofEvening;  // 1999-12-31 21:30:15, a Friday
    const char *ofNull;
  } rows[] = {
      {"Year", {FUNDateYear, kValue}, "2000", "1999", "null"},
      {"Month", {FUNDateMonth, kValue}, "2", "12", "null"},
      {"Day", {FUNDateDay, kValue}, "10", "31", "null"},
      {"Hour", {FUNDateHour, kValue}, "12", "21", "null"},
      {"Minute", {FUNDateMinute, kValue}, "30", "30", "null"},
      {"Second", {FUNDateSecond, kValue}, "45", "15", "null"},
      {"Quarter", {FUNDateQuarter, kValue}, "1", "4", "null"},
      {"WeekDay", {FUNWeekDay, kValue}, "5", "6", "null"},
      {"MonthBegin",
       {FUNDateMonthBegin, kValue},
       "2000-02-01 00:00:00",
       "1999-12-01 00:00:00",
       "null"},
      {"MonthEnd", {FUNDateMonthEnd, kValue}, "2000-02-29 00:00:00", "1999-12-31 00:00:00", "null"},
      {"ToStr", {FUNDateToStr, kText}, "02/10/2000 12:30:45.5 PM", "12/31/1999 09:30:15 PM", ""},
  };
  NumberValue winter = Stored("2000-02-10 12:30:45.500000");
  NumberValue evening = Stored("1999-12-31 21:30:15");
  NumberValue null = {};
  void *missing[] = {nullptr};
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    void *args[] = {&winter};
    EXPECT_EQ(Result(row.call, args), row.ofWinter);
    args[0] = &evening;
    EXPECT_EQ(Result(row.call, args), row.ofEvening);
    args[0] = &null;
    EXPECT_EQ(Result(row.call, args), row.ofNull);
    EXPECT_EQ(Result(row.call, missing), row.ofNull);
    EXPECT_EQ(Result(row.call, nullptr), row.ofNull);
  }
}

TEST(DateFunctions, QuartersAndWeekdays) {
  const char *const quarters = "111222333444";
  for (int32_t month = 1; month <= 12; month++) {
    NumberValue date = Stored("2012-" + std::to_string(month) + "-15");
    void *args[] = {&date};
    EXPECT_EQ(Result({FUNDateQuarter, kValue}, args), std::string(1, quarters[month - 1])) << month;
  }
  // 7 January 2012 is a Saturday.
  for (int32_t day = 0; day < 7; day++) {
    NumberValue date = Stored("2012-01-" + std::to_string(7 + day));
    void *args[] = {&date};
    EXPECT_EQ(Result({FUNWeekDay, kValue}, args), std::to_string(day)) << Iso(date);
  }
  NumberValue february = Stored("1900-02-10");
  void *args[] = {&february};
  EXPECT_EQ(Result({FUNDateMonthEnd, kValue}, args), "1900-02-28 00:00:00");
}

TEST(DateFunctions, AddDay) {
  NumberValue date = Stored("2012-02-28 10:30:15");
  NumberValue null = {};
  const struct {
    NumberValue days;
    const char *result;
  } rows[] = {
      {Number(2), "2012-03-01 10:30:15"}, {Number(-59), "2011-12-31 10:30:15"},
      {null, "2012-02-28 10:30:15"},      {Number(INT32_MAX), "null"},
      {Number(INT32_MIN), "null"},
  };
  for (const auto &row : rows) {
    NumberValue days = row.days;
    void *args[] = {&date, &days};
    EXPECT_EQ(Result({FUNDateAddDay, kValue}, args), row.result) << NumberText(row.days);
    args[0] = &null;
    EXPECT_EQ(Result({FUNDateAddDay, kValue}, args), "null");
  }
  void *noDays[] = {&date, nullptr};
  EXPECT_EQ(Result({FUNDateAddDay, kValue}, noDays), "2012-02-28 10:30:15");
  EXPECT_EQ(Result({FUNDateAddDay, kValue}, nullptr), "null");
}

TEST(DateFunctions, Construct) {
  const struct {
    std::vector<int32_t> fields;
    const char *result;
  } rows[] = {
      {{2012, 1, 31, 10, 30, 15}, "2012-01-31 10:30:15"},
      {{2012, 2, 31, 0, 0, 0}, "2012-02-29 00:00:00"},
      {{2012, 13, 1, 0, 0, 0}, "null"},
      {{2012, 1, 32, 0, 0, 0}, "null"},
      {{0, 1, 1, 0, 0, 0}, "null"},
      {{10000, 1, 1, 0, 0, 0}, "null"},
      {{2012, 1, 1, 24, 0, 0}, "null"},
      {{2012, 1, 1, 0, -1, 0}, "null"},
      {{12, 1, 1, 0, 0, 59}, "0012-01-01 00:00:59"},
  };
  for (const auto &row : rows) {
    NumberValue values[6];
    void *args[6];
    for (size_t i = 0; i < 6; i++) {
      values[i] = Number(row.fields[i]);
      args[i] = &values[i];
    }
    EXPECT_EQ(Result({FUNDateConstruct, kValue}, args), row.result) << "year " << row.fields[0];
  }
  // Null and missing fields count as 0.
  NumberValue year = Number(2012);
  NumberValue one = Number(1);
  NumberValue null = {};
  void *partly[] = {&year, &one, &one, &null, nullptr, &null};
  EXPECT_EQ(Result({FUNDateConstruct, kValue}, partly), "2012-01-01 00:00:00");
  void *nothing[6] = {};
  EXPECT_EQ(Result({FUNDateConstruct, kValue}, nothing), "null");
  EXPECT_EQ(Result({FUNDateConstruct, kValue}, nullptr), "null");
}

TEST(DateFunctions, Iff) {
  NumberValue below = Stored("2001-01-01");
  NumberValue equal = Stored("2002-02-02");
  NumberValue above = Stored("2003-03-03");
  NumberValue null = {};
  const struct {
    NumberValue selector;
    const char *result;
  } rows[] = {{Number(-5), "2001-01-01 00:00:00"},
              {Number(0), "2002-02-02 00:00:00"},
              {null, "2002-02-02 00:00:00"},
              {Number(7), "2003-03-03 00:00:00"}};
  for (const auto &row : rows) {
    NumberValue selector = row.selector;
    void *args[] = {&selector, &below, &equal, &above};
    EXPECT_EQ(Result({FUNDateIFF, kValue}, args), row.result) << NumberText(selector);
    void *nulls[] = {&selector, &null, nullptr, &null};
    EXPECT_EQ(Result({FUNDateIFF, kValue}, nulls), "null") << NumberText(selector);
  }
  EXPECT_EQ(Result({FUNDateIFF, kValue}, nullptr), "null");
}

TEST(DateFunctions, TextAndPicture) {
  const PlainSettings settings;
  NumberValue date = Stored("2012-01-31 21:30:15");
  NumberValue null = {};
  char picture[] = "d. MMMM yyyy";
  char bad[] = "x";
  void *args[] = {&date, picture};
  EXPECT_EQ(Result({FUNDateToStrPicture, kText}, args), "31. January 2012");
  void *badArgs[] = {&date, bad};
  EXPECT_EQ(Result({FUNDateToStrPicture, kText}, badArgs), "");
  void *nullDate[] = {&null, bad};
  EXPECT_EQ(Result({FUNDateToStrPicture, kText}, nullDate), "");
  void *noPicture[] = {&date, nullptr};
  EXPECT_EQ(Result({FUNDateToStrPicture, kText}, noPicture), "");
  EXPECT_EQ(Result({FUNDateToStrPicture, kText}, nullptr), "");

  char text[] = "Jan 31, 2012 9:30 pm";
  char noDate[] = "no date";
  void *textArgs[] = {text};
  EXPECT_EQ(Result({FUNStrToDate, kValue}, textArgs), "2012-01-31 21:30:00");
  void *noDateArgs[] = {noDate};
  EXPECT_EQ(Result({FUNStrToDate, kValue}, noDateArgs), "null");
  EXPECT_EQ(Result({FUNStrToDate, kValue}, nullptr), "null");
}

// A text of 49 characters fits into the block, one of 50 enlarges it, and without memory the
// routine fails and leaves the block valid.
TEST(ResultBlock, GrowsWithTheText) {
  const PlainSettings settings;
  NumberValue date = Stored("2012-01-31");
  for (const size_t length : {size_t{49}, size_t{50}, size_t{99}}) {
    const std::string picture = "dd'" + std::string(length - 2, 'z') + "'";
    std::vector<char> pictureText(picture.c_str(), picture.c_str() + picture.size() + 1);
    void *args[] = {&date, pictureText.data()};
    void *result = WRENMemAlloc(50);
    void *const before = result;
    TEST_FailAllocationsAfter(0);
    const int32_t withoutMemory = FUNDateToStrPicture(nullptr, nullptr, 50, &result, "", args);
    TEST_FailAllocationsAfter(-1);
    EXPECT_EQ(withoutMemory, length < 50 ? 1 : 0) << length;
    EXPECT_EQ(result, before) << length;
    EXPECT_EQ(FUNDateToStrPicture(nullptr, nullptr, 50, &result, "", args), 1);
    EXPECT_EQ(std::string(static_cast<char *>(result)), "31" + std::string(length - 2, 'z'));
    EXPECT_EQ(WRENMemSize(result), length < 50 ? 50U : length + 1) << length;
    WRENMemFree(result);
  }
}

TEST(ResultBlock, Routines) {
  void *block = nullptr;
  TEST_FailAllocationsAfter(0);
  EXPECT_EQ(FUNResizeResult(&block, 10), 0);
  EXPECT_EQ(FUNStrVarResult(&block, 0, "text"), 0);
  TEST_FailAllocationsAfter(-1);
  EXPECT_EQ(block, nullptr);
  EXPECT_EQ(FUNResizeResult(&block, 10), 1);
  EXPECT_EQ(WRENMemSize(block), 10U);
  EXPECT_EQ(FUNStrVarResult(&block, 10, "123456789"), 1);
  EXPECT_EQ(WRENMemSize(block), 10U);
  EXPECT_EQ(FUNStrVarResult(&block, 10, "1234567890"), 1);
  EXPECT_STREQ(static_cast<char *>(block), "1234567890");
  EXPECT_EQ(WRENMemSize(block), 11U);
  EXPECT_EQ(FUNStrVarResult(&block, 11, nullptr), 1);
  EXPECT_STREQ(static_cast<char *>(block), "");
  WRENMemFree(block);
  block = nullptr;
  EXPECT_EQ(FUNStrVarResult(&block, 50, "new"), 1);
  EXPECT_STREQ(static_cast<char *>(block), "new");
  WRENMemFree(block);
  EXPECT_EQ(FUNStrVarResult(nullptr, 50, "x"), 0);
}

TEST(ResultBlock, BytesOfCharacters) {
  const PlainSettings settings;
  const struct {
    int32_t codePage, n, bytes;
  } rows[] = {
      {1252, 5, 5},
      {932, 5, 10},
      {65001, 5, 20},
      {932, -3, -6},
      {932, INT32_MAX, INT32_MAX},
      {65001, INT32_MIN, INT32_MIN},
      {65001, 0, 0},
      {1252, INT32_MAX, INT32_MAX},
  };
  for (const auto &row : rows) {
    WRENSetCodePage(row.codePage);
    EXPECT_EQ(FUNCharBytes(row.n), row.bytes) << row.codePage << ": " << row.n;
  }
}

TEST(DateFunctions, WithoutAResultBlockTheyFail) {
  NumberValue date = Stored("2012-01-31");
  void *args[] = {&date, &date, &date, &date, &date, &date};
  void *none = nullptr;
  for (const OrlFunctionProc routine :
       {FUNDateYear, FUNDateMonthEnd, FUNDateAddDay, FUNDateConstruct, FUNDateIFF, FUNStrToDate}) {
    EXPECT_EQ(routine(nullptr, nullptr, kValue, &none, "", args), 0);
    EXPECT_EQ(routine(nullptr, nullptr, kValue, nullptr, "", args), 0);
    NumberValue small = {};
    void *block = &small;
    EXPECT_EQ(routine(nullptr, nullptr, 12, &block, "", args), 0);
  }
}

}  // namespace
