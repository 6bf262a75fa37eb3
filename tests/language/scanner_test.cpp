// The scanner: what each kind of text reads as, its limits and its failures.

#include "language/scanner.h"

#include <gtest/gtest.h>

#include <memory>

#include "closed/wren/memory.h"
#include "scan_run.h"

namespace {

class Scanner : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(WRENSetCountry("C"), 1); }
  void TearDown() override { WRENSetCodePage(1252); }

  ScanResult Scan(const std::string &text, uint16_t flags = 0, bool nameCheck = false) {
    return ScanWhole(context_.get(), flags, nameCheck, text);
  }

  std::unique_ptr<ExprContext, int32_t (*)(EC)> context_{NewScanContext(), ORLDestroyEC};
};

struct TextRow {
  const char *text;
  const char *tokens;
  uint16_t flags = 0;
};

const TextRow kTextRows[] = {
    // Words, names and calls.
    {"", ""},
    {"x AND y", "IDENT@0+1:x AND IDENT@6+1:y"},
    {"x and y", "IDENT@0+1:x AND IDENT@6+1:y"},
    {"x AND (y)", "IDENT@0+1:x CALLNAME@2+5:AND IDENT@7+1:y )@8+1"},
    {"DAYS (", "CALLNAME@0+6:DAYS"},
    {"abs  (1)", "CALLNAME@0+6:abs NUMBER@6+1:1 )@7+1"},
    {"abs\t(1)", "IDENT@0+3:abs (@4+1 NUMBER@5+1:1 )@6+1"},
    {"a.b.c.d", "IDENT@0+5:a.b.c BAD@5+1 IDENT@6+1:d"},
    {"x.", "IDENT@0+1:x BAD@1+1"},
    {".x", "BAD@0+1 IDENT@1+1:x"},
    {"`x`.y.z", "IDENT@0+7:`x`.y.z"},
    {"\"a b\".c+1", "IDENT@0+7:\"a b\".c +@7+1 NUMBER@8+1:1"},
    {"\"\"", "BAD@0+1 BAD@1+1"},
    {"\"abc", "BAD@0+1 IDENT@1+3:abc"},
    {"\"f\"(1)", "IDENT@0+3:\"f\" (@3+1 NUMBER@4+1:1 )@5+1"},
    {"@PIE @pi @NOW (", "IDENT@0+4:@PIE SYSNAME@5+3:@pi CALLNAME@9+6:@NOW"},
    {"Net Sales", "IDENT@0+9:Net Sales"},
    {"NET sales", "IDENT@0+9:NET sales"},
    {"Net  Sales", "IDENT@0+3:Net IDENT@5+5:Sales"},
    {"Net Salesman", "IDENT@0+9:Net Sales IDENT@9+3:man"},
    {"Gross Tax", "IDENT@0+9:Gross Tax"},
    {"gross Tax", "IDENT@0+5:gross IDENT@6+3:Tax"},
    {"days Day DAYSS", "DATEUNIT@0+4:1 DATEUNIT@5+3:1 IDENT@9+5:DAYSS"},
    {"days", "IDENT@0+4:days", ORL_FLAG_NO_DATE_UNITS},
    {"distinct ALL", "IDENT@0+8:distinct IDENT@9+3:ALL"},
    {"distinct ALL", "MODIFIER@0+8:1 MODIFIER@9+3:2", ORL_FLAG_MODIFIERS},
    // Numbers and strings.
    {".5 1.", "NUMBER@0+2:.5 NUMBER@3+2:1."},
    {"1.5E-3", "NUMBER@0+6:1.5E-3"},
    {"1.5E3", "NUMBER@0+3:1.5 IDENT@3+2:E3"},
    {"12.5E+3", "NUMBER@0+4:12.5 IDENT@4+1:E +@5+1 NUMBER@6+1:3"},
    {"''", "STRING@0+2:"},
    {"'it''s'", "STRING@0+7:it''s"},
    {"'a\\'", "STRING@0+4:a\\"},
    {"'a\\'b'", "STRING@0+6:a\\'b"},
    {"'a\r\nb'", "STRING@0+6:a\r\nb"},
    {"'abc", "BAD@0+1 IDENT@1+3:abc"},
    // Operators and other bytes.
    {"a||b|c", "IDENT@0+1:a CONCAT@1+2 IDENT@3+1:b BAD@4+1 IDENT@5+1:c"},
    {"a%b", "IDENT@0+1:a BAD@1+1 IDENT@2+1:b"},
    {"a%b", "IDENT@0+1:a %@1+1 IDENT@2+1:b", ORL_FLAG_PERCENT},
    {"<=>{}", "<@0+1 =@1+1 >@2+1 {@3+1 }@4+1"},
    {"a\r\nb", "IDENT@0+1:a BAD@1+1 IDENT@3+1:b"},
    // Dates as they stand.
    {"12:30pm", "DATE@0+7:12:30pm"},
    {"12:30pm;", "DATE@0+5:12:30 IDENT@5+2:pm BAD@7+1"},
    {"12ab", "DATE@0+4:12ab"},
    {"12 ab 99", "DATE@0+5:12 ab NUMBER@6+2:99"},
    {"Ja 12 99", "IDENT@0+2:Ja NUMBER@3+2:12 NUMBER@6+2:99"},
    {"12 Jan 99", "DATE@0+9:12 Jan 99"},
    {"12 Jan 99 10:30", "DATE@0+5:12 Ja IDENT@5+1:n NUMBER@7+2:99 DATE@10+5:10:30"},
    {"Jan 12, 1999 10:30 am", "DATE@0+21:Jan 12, 1999 10:30 am"},
    {"10/5/2", "DATE@0+6:10/5/2"},
    {"1-2", "NUMBER@0+1:1 -@1+1 NUMBER@2+1:2"},
    {"10 / 5 / 2", "NUMBER@0+2:10 /@3+1 NUMBER@5+1:5 /@7+1 NUMBER@9+1:2"},
    {"1.2.3.4.5.6.7.8", "DATE@0+13:1.2.3.4.5.6.7 NUMBER@13+2:.8"},
};

TEST_F(Scanner, ReadsTexts) {
  for (const TextRow &row : kTextRows) {
    SCOPED_TRACE(row.text);
    const ScanResult result = Scan(row.text, row.flags);
    EXPECT_EQ(Print(result, row.text), row.tokens);
    EXPECT_FALSE(result.badDateSeen);
    EXPECT_EQ(result.error.id, 0);
  }
}

struct CheckedDateRow {
  const char *text;
  const char *tokens;
  int32_t badOffset, badLength;  // 0, 0: no bad date
};

const CheckedDateRow kCheckedDateRows[] = {
    {"x-12/31/99", "IDENT@0+1:x -@1+1 DATE@2+8:12/31/99", 0, 0},
    {"13/45/99", "NUMBER@0+2:13 /@2+1 NUMBER@3+2:45 /@5+1 NUMBER@6+2:99", 0, 8},
    {"13/45/99+14/45/99",
     "NUMBER@0+2:13 /@2+1 NUMBER@3+2:45 /@5+1 NUMBER@6+2:99 +@8+1 "
     "NUMBER@9+2:14 /@11+1 NUMBER@12+2:45 /@14+1 NUMBER@15+2:99",
     0, 8},
    {"12ab", "NUMBER@0+2:12 IDENT@2+2:ab", 0, 4},
    {"x 12 ab 99", "IDENT@0+1:x NUMBER@2+2:12 IDENT@5+2:ab NUMBER@8+2:99", 2, 5},
    {"12 Jan 99 10:30", "DATE@0+9:12 Jan 99 DATE@10+5:10:30", 0, 5},
};

TEST_F(Scanner, ReadsBadDatesByOtherRules) {
  for (const CheckedDateRow &row : kCheckedDateRows) {
    SCOPED_TRACE(row.text);
    const ScanResult result = Scan(row.text, ORL_FLAG_RANGES);
    EXPECT_EQ(Print(result, row.text), row.tokens);
    EXPECT_EQ(result.badDateSeen, row.badLength > 0);
    EXPECT_EQ(result.badDateOffset, row.badOffset);
    EXPECT_EQ(result.badDateLength, row.badLength);
  }
}

struct CodePageRow {
  int32_t codePage;
  const char *text;
  const char *tokens;
};

const CodePageRow kCodePageRows[] = {
    {1252, "\xE9t\xE9||x", "IDENT@0+3:\xE9t\xE9 CONCAT@3+2 IDENT@5+1:x"},
    {1252, "\xE9|", "IDENT@0+1:\xE9 BAD@1+1"},
    {1252, "a\x80", "IDENT@0+1:a BAD@1+1"},
    {1252, "\xE9\x80", "BAD@1+1"},  // taken for a pair, and no letter here
    {1252, "x\xD7y+1", "BAD@1+1 +@3+1 NUMBER@4+1:1"},
    {1252, "'\x81\\'||'b'", "STRING@0+7:\x81\\'|| IDENT@7+1:b BAD@8+1"},
    {932, "\x81||x", "IDENT@0+2:\x81| BAD@2+1 IDENT@3+1:x"},
    {932, "\x83\x80\xB1(1)", "CALLNAME@0+4:\x83\x80\xB1 NUMBER@4+1:1 )@5+1"},
    {932, "a\xA0z", "BAD@1+1"},
    {932, "x\x81", "BAD@1+1"},
    {932, "\"\x81\"", "BAD@2+1"},
    {932, "'\x81\\'||'b'", "STRING@0+4:\x81\\ CONCAT@4+2 STRING@6+3:b"},
    {932, "'a\\'", "BAD@0+1 IDENT@1+1:a BAD@2+1 BAD@3+1"},
    {932, "''", "STRING@0+2:"},
    {65001, "\xC3\x80x||\xE3\x80\x85", "IDENT@0+3:\xC3\x80x CONCAT@3+2 IDENT@5+3:\xE3\x80\x85"},
    {65001, "\xE3\x81\x82||\xE2\x82\xAC",
     "IDENT@0+3:\xE3\x81\x82 CONCAT@3+2 IDENT@5+3:\xE2\x82\xAC"},
    {65001, "\xE3\x81\x82;", "IDENT@0+3:\xE3\x81\x82 BAD@3+1"},
};

TEST_F(Scanner, KnowsTheCodePagesLetters) {
  for (const CodePageRow &row : kCodePageRows) {
    SCOPED_TRACE(std::to_string(row.codePage) + " " + Escaped(row.text));
    ASSERT_EQ(WRENSetCodePage(row.codePage), 1);
    EXPECT_EQ(Escaped(Print(Scan(row.text), row.text)), Escaped(row.tokens));
  }
}

TEST_F(Scanner, FindsNoPhrasesInANameUnderTest) {
  EXPECT_EQ(Print(Scan("Net Sales", 0, true), "Net Sales"), "IDENT@0+3:Net IDENT@4+5:Sales");
}

struct ReadRow {
  const char *text;
  std::vector<int32_t> delivered;  // behind each token
  int32_t lastTaken;               // the last match, at the end of the text
};

// What is read ahead counts in the places of syntax errors.
TEST_F(Scanner, ReadsNoFurtherThanItMust) {
  const ReadRow rows[] = {
      {"", {1}, 1},
      {"(a)", {1, 3, 3, 4}, 1},  // no byte can follow a parenthesis
      {"a||b", {2, 3, 5, 5}, 1},
      {"1 2 3", {3, 5, 6, 6}, 1},
      {"1 +", {3, 3, 4}, 1},
      {"1 + ", {3, 3, 5}, 2},
      {"'a'+1", {4, 4, 6, 6}, 1},
  };
  for (const ReadRow &row : rows) {
    SCOPED_TRACE(row.text);
    const ScanResult result = Scan(row.text);
    std::vector<int32_t> delivered;
    for (const ScannedToken &token : result.tokens) delivered.push_back(token.delivered);
    EXPECT_EQ(delivered, row.delivered);
    EXPECT_EQ(result.tokens.back().taken, row.lastTaken);
  }
}

struct OverflowRow {
  const char *what;
  std::string text;
  size_t tokens;           // the end included
  int32_t offset, length;  // of the error; 0, 0: none
};

TEST_F(Scanner, EndsTheTextWhereAMatchFillsTheBuffer) {
  const auto word = [](size_t size) { return std::string(size, 'w'); };
  const OverflowRow rows[] = {
      {"room for the last blank", word(2046), 2, 0, 0},
      {"the last blank could go on", word(2047), 1, 2049, 1},
      {"full, and no way on", word(2047) + ")", 3, 0, 0},
      {"a byte too many", word(2048), 1, 2049, 1},
      {"behind an operator", "1+" + word(3000), 3, 2050, 2},
      {"behind white space", "ab   " + word(3000), 2, 2051, 4},
      {"a literal with room", "'" + word(2045) + "'", 2, 0, 0},
      {"a literal that fills", "'" + word(2046) + "'", 1, 2049, 1},
      {"no end of a literal", "'" + word(5000), 1, 2049, 1},
      {"white space", std::string(2048, ' '), 1, 2049, 1},
      {"digits", std::string(100000, '7'), 1, 2049, 1},
  };
  for (const OverflowRow &row : rows) {
    SCOPED_TRACE(row.what);
    const ScanResult result = Scan(row.text);
    EXPECT_EQ(result.tokens.size(), row.tokens);
    EXPECT_EQ(result.error.id, row.length > 0 ? ORL_ERR_MAXTOKEN : 0);
    EXPECT_EQ(result.error.offset, row.offset);
    EXPECT_EQ(result.error.length, row.length);
  }
}

TEST_F(Scanner, SaysWhenThereIsNoMemory) {
  for (const char *text : {"x", "x1", "@pi", "1", "1.5", "1:30", "'s'", "f(", "Net Sales"}) {
    SCOPED_TRACE(text);
    ParseState &state = CurrentParseState();
    ResetParseState(state, context_.get(), text, false);
    const int64_t before = TEST_LiveBlocks();
    TEST_FailAllocationsAfter(0);
    const int32_t token = ScanToken(state);
    TEST_FailAllocationsAfter(-1);
    EXPECT_EQ(token, TOK_NOMEM);
    EXPECT_EQ(state.tokenValue, nullptr);
    EXPECT_EQ(TEST_LiveBlocks(), before);
  }
}

TEST_F(Scanner, KeepsNoBlocks) {
  Scan("Net Sales + f(1, 'x') - 1/2/99 + @now");
  const int64_t before = TEST_LiveBlocks();
  for (const TextRow &row : kTextRows) Scan(row.text, ORL_FLAG_RANGES);
  EXPECT_EQ(TEST_LiveBlocks(), before);
}

TEST(DateUnitOfWord, TakesSixWordsWithOneS) {
  const struct {
    const char *word;
    uint16_t code;
  } rows[] = {{"DAY", 1},
              {"month", 2},
              {"Years", 4},
              {"HOURS", 8},
              {"minuteS", 16},
              {"SECONDS", 32},
              {"DAYSS", 0},
              {"DA", 0},
              {"S", 0},
              {"", 0},
              {"DAY S", 0},
              {"WEEK", 0},
              {"\xC4"
               "AY",
               0}};
  for (const auto &row : rows) EXPECT_EQ(DateUnitOfWord(row.word), row.code) << row.word;
}

}  // namespace
