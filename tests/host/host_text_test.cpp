/* The texts that orli makes itself: underlined places, words for message ids. */
#include <gtest/gtest.h>
#include <orli11.h>

#include "host/display.h"
#include "host/messages.h"
#include "host/underline.h"

namespace {

struct UnderlineRow {
  const char *what;
  std::string text;
  int32_t offset, length;
  const char *expected;
};

TEST(HostUnderline, MarksTheBytesOfTheSpan) {
  DisplayStart();
  const UnderlineRow rows[] = {
      {"inside", "a + bcd", 4, 3, "  a + bcd\n      ^^^\n"},
      {"at the start", "abc", 0, 1, "  abc\n  ^\n"},
      {"past the end by one", "1 +", 3, 1, "  1 +\n     ^\n"},
      {"across the end", "1 + ", 3, 2, "  1 + \n     ^^\n"},
      {"far past the end", "key", 0, 1000, "  key\n  ^^^\n"},
      {"begins far past the end", "key", 90, 5, "  key\n     ^\n"},
      {"empty text", "", 0, 1, "  \n  ^\n"},
      {"no bytes, a place", "a b", 2, 0, "  a b\n    ^\n"},
      {"no place", "a b", 0, 0, "  a b\n"},
      {"the largest numbers", "a b", 2147483647, 2147483647, "  a b\n     ^\n"},
      {"negative numbers", "a b", -5, -5, "  a b\n"},
      {"behind tabs", "a\t\tb", 3, 1, "  a       b\n          ^\n"},
      {"a tab itself", "ab\tc", 2, 1, "  ab  c\n    ^^\n"},
      {"on the second line", "1 +\nx +\n2", 4, 1, "  1 +\n  x +\n  ^\n  2\n"},
      {"over two lines", "ab\ncd", 1, 3, "  ab\n   ^^\n  cd\n  ^\n"},
      {"a line break itself", "ab\ncd", 2, 1, "  ab\n    ^\n  cd\n"},
      {"past a last line break", "ab\n", 3, 1, "  ab\n  \n  ^\n"},
      {"two bytes, one column", "\xC3\xA4 + \xC3\xB6", 5, 2, "  \xC3\xA4 + \xC3\xB6\n      ^\n"},
      {"part of a character", "\xC3\xA4 + 1", 1, 1, "  \xC3\xA4 + 1\n  ^\n"},
      {"a wide character", "\xE6\x97\xA5+x", 0, 3, "  \xE6\x97\xA5+x\n  ^^\n"},
      {"behind a wide character", "\xE6\x97\xA5+x", 4, 1, "  \xE6\x97\xA5+x\n     ^\n"},
      {"an accent of its own", "e\xCC\x81+", 1, 2, "  e\xCC\x81+\n  ^\n"},
      {"bytes that are no UTF-8", "\xFF\xC3+", 2, 1, "  \xEF\xBF\xBD\xEF\xBF\xBD+\n    ^\n"},
      {"a carriage return", "a\rb", 1, 1,
       "  a\xE2\x90\x8D"
       "b\n   ^\n"},
      {"an escape", "\x1B[2J", 0, 1, "  \xE2\x90\x9B[2J\n  ^\n"},
      {"delete", "\x7F", 0, 1, "  \xE2\x90\xA1\n  ^\n"},
  };
  for (const UnderlineRow &row : rows) {
    SCOPED_TRACE(row.what);
    EXPECT_EQ(Underline(row.text, row.offset, row.length), row.expected);
  }
}

TEST(HostDisplay, CutsToAWidth) {
  struct Row {
    const char *text;
    size_t most;
    const char *line;
    size_t width;
  };
  const Row rows[] = {
      {"abcdef", 6, "abcdef", 6},
      {"abcdefg", 6, "abc...", 6},
      {"\xE6\x97\xA5\xE6\x97\xA5\xE6\x97\xA5", 6, "\xE6\x97\xA5\xE6\x97\xA5\xE6\x97\xA5", 6},
      {"\xE6\x97\xA5\xE6\x97\xA5\xE6\x97\xA5x", 6, "\xE6\x97\xA5...", 5},
      {"a\nb", 6,
       "a\xE2\x90\x8A"
       "b",
       3},
      {"", 6, "", 0},
  };
  DisplayStart();
  for (const Row &row : rows) {
    SCOPED_TRACE(row.text);
    size_t width = 99;
    EXPECT_EQ(DisplayLine(row.text, row.most, width), row.line);
    EXPECT_EQ(width, row.width);
  }
}

TEST(HostMessages, AreThoseOfTheEngine) {
  EXPECT_EQ(MessageText(ORL_ERR_FUNC), "ERR_FUNC: Unknown function.");
  EXPECT_EQ(MessageText(0), "The formula is not valid.");
}

}  // namespace
