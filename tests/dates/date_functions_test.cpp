// The result blocks of functions, and the conversions between a date and its text.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "closed/wren/memory.h"
#include "dates/date_text.h"
#include "functions/result_block.h"
#include "orli11.h"
#include "tests/dates/date_support.h"

namespace {

// A text of 49 characters fits into the block, one of 50 enlarges it, and when out of memory the
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
    EXPECT_FALSE(DateFromText(&target, text));
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

TEST(DateToText, InvalidDatesReturnZero) {
  const PlainSettings settings;
  char buffer[kDateTextSize] = "before";
  const NumberValue date = Stored("2012-01-31");
  const NumberValue null = {};
  const NumberValue noDate = Number(5);
  EXPECT_TRUE(DateToTextPicture(&null, "bad", buffer) && DateToTextDefault(&null, buffer));
  EXPECT_FALSE(DateToTextDefault(&noDate, buffer));
  EXPECT_FALSE(DateToTextPicture(&noDate, "d", buffer));
  EXPECT_FALSE(DateToTextPicture(&date, nullptr, buffer));
  EXPECT_FALSE(DateToTextPicture(&date, ("dd \'" + std::string(97, 'z') + "'").c_str(), buffer));
  EXPECT_STREQ(buffer, "");
  EXPECT_TRUE(DateToTextDefault(&date, buffer) && DateToTextPicture(&date, "d", buffer));
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
