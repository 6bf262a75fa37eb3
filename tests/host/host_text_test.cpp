// Texts that orli produces itself: underlined spans, messages for ids.
#include <gtest/gtest.h>
#include <orli11.h>

#include "host/display.h"
#include "host/messages.h"
#include "host/underline.h"
#include "support/cases.h"

namespace {

TEST(HostUnderline, MarksTheBytesOfTheSpan) {
  DisplayStart();
  for (const Case &row : CasesOf("host/text_cases.txt", "underline")) {
    EXPECT_EQ(Underline(row[0], row.Int(1), row.Int(2)), row[3]) << row.where;
  }
}

TEST(HostDisplay, CutsToAWidth) {
  DisplayStart();
  for (const Case &row : CasesOf("host/text_cases.txt", "cut")) {
    size_t width = 99;
    EXPECT_EQ(DisplayLine(row[0], static_cast<size_t>(row.Int(1)), width), row[2]) << row.where;
    EXPECT_EQ(static_cast<int32_t>(width), row.Int(3)) << row.where;
  }
}

TEST(HostMessages, AreThoseOfTheEngine) {
  EXPECT_EQ(MessageText(ORL_ERR_FUNC), "ERR_FUNC: Unknown function.");
  EXPECT_EQ(MessageText(0), "The formula is not valid.");
}

}  // namespace
