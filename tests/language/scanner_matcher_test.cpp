// The scanner against the plain matcher, on random texts.

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>
#include <string_view>

#include "plain_matcher.h"

namespace {

// What texts are made of: pieces of every rule and the bytes where rules part.
const char *const kPieces[] = {
    "1",
    "2",
    "12",
    "99",
    "1999",
    "0",
    ".",
    ".",
    ":",
    ":",
    "/",
    "/",
    "-",
    "-",
    "\\",
    "+",
    ",",
    ", ",
    "1.5E-3",
    "1.5E+",
    "E",
    "e+",
    "12/31/99",
    "1-2-3",
    "10:30",
    "12:30pm",
    "13/45/99",
    "1.2.3.4.",
    "Jan",
    "Ja",
    "12 Jan 99",
    "Jan 12, 1999",
    " 10:30 am",
    "am",
    "pm",
    "ab",
    "x",
    "y",
    "Q",
    "AND",
    "and",
    "DAY",
    "days",
    "Months",
    "SECONDSS",
    "all",
    "DISTINCT",
    "Net Sales",
    "net sales",
    "Gross Tax",
    "gross tax",
    "Net",
    "@NOW",
    "@pi",
    "@PIE",
    "@",
    "#",
    "$",
    "_",
    " ",
    " ",
    " ",
    "  ",
    "\t",
    "\n",
    "\r",
    "(",
    " (",
    ")",
    "*",
    "%",
    "<",
    "=",
    "{",
    "|",
    "||",
    ";",
    "'",
    "'",
    "''",
    "'a'",
    "\\'",
    "'\\'",
    "\"",
    "\"a b\"",
    "`",
    "`x`",
    "?",
    "\x7F",
    "\x01",
    "\x80",
    "\x81",
    "\x81\\",
    "\x81'",
    "\x81|",
    "\x83\x80",
    "\x9F",
    "\xA0",
    "\xB1",
    "\xDF",
    "\xC3\x80",
    "\xC3\xA9",
    "\xE3\x81\x82",
    "\xE2\x82\xAC",
    "\xE9",
    "\xE9|",
    "\xE9`",
    "\xFC\xFC",
    "\xFD",
    "\xFF",
};
// Alphabets of single bytes, each for the close quarters of some rules.
const std::string_view kAlphabets[] = {
    "11  .:/-,abJm+(\t", "1 abc, .:/-", "'''\\\\a\x81\x83 |", "aB1..\"\"``\xE9\x81\x9F||( @",
    "AaNnDd (.1\"",      "1.5eE+-. ",
};
constexpr size_t kLongestText = 62;

constexpr int32_t kCommonTokens[] = {'%', '(', '+', 257, 258, 259, 260,
                                     262, 263, 264, 265, 266, 267, 269};

std::string RandomText(std::mt19937 &random) {
  std::string text;
  if (random() % 2 == 0) {
    const std::string_view alphabet = kAlphabets[random() % std::size(kAlphabets)];
    for (size_t left = 1 + random() % 24; left > 0; left--) {
      text += alphabet[random() % alphabet.size()];
    }
    return text;
  }
  for (size_t left = 1 + random() % 14; left > 0; left--) {
    // One piece in sixteen is any byte at all.
    if (random() % 16 == 0) {
      text += static_cast<char>(1 + random() % 255);
    } else {
      text += kPieces[random() % std::size(kPieces)];
    }
  }
  return text.substr(0, kLongestText);
}

uint16_t RandomFlags(std::mt19937 &random) {
  constexpr uint16_t used =
      ORL_FLAG_MODIFIERS | ORL_FLAG_NO_DATE_UNITS | ORL_FLAG_PERCENT | ORL_FLAG_RANGES;
  return static_cast<uint16_t>(random()) & used;
}

std::string Shown(const ScannedToken &token) {
  return std::to_string(token.code) + "@" + std::to_string(token.offset) + "+" +
         std::to_string(token.span) + " read " + std::to_string(token.delivered) + " taken " +
         std::to_string(token.taken) + " unit " + std::to_string(token.dateUnit) + " modifier " +
         std::to_string(token.modifier) + " '" + Escaped(token.value) + "'";
}

void ExpectSame(const ScanResult &scanned, const ScanResult &plain) {
  ASSERT_EQ(scanned.error.id, 0);
  EXPECT_EQ(scanned.badDateSeen, plain.badDateSeen);
  EXPECT_EQ(scanned.badDateOffset, plain.badDateOffset);
  EXPECT_EQ(scanned.badDateLength, plain.badDateLength);
  for (size_t i = 0; i < scanned.tokens.size() && i < plain.tokens.size(); i++) {
    ASSERT_EQ(Shown(scanned.tokens[i]), Shown(plain.tokens[i])) << "token " << i;
  }
  EXPECT_EQ(scanned.tokens.size(), plain.tokens.size());
}

struct PageRow {
  int32_t codePage;
  PlainPage page;
  uint32_t seed;
};

class ScannerMatcher : public ::testing::TestWithParam<PageRow> {
 protected:
  void SetUp() override { ASSERT_EQ(WRENSetCodePage(GetParam().codePage), 1); }
  void TearDown() override { WRENSetCodePage(1252); }
};

TEST_P(ScannerMatcher, AgreesOnRandomTexts) {
  const std::unique_ptr<ExprContext, int32_t (*)(EC)> context(NewScanContext(), ORLDestroyEC);
  std::mt19937 random(GetParam().seed);
  std::map<int32_t, int> seen;
  int badDates = 0;
  for (int round = 0; round < 70000 && !HasFailure(); round++) {
    const std::string text = RandomText(random);
    const uint16_t flags = RandomFlags(random);
    const bool nameCheck = random() % 8 == 0;
    SCOPED_TRACE("text '" + Escaped(text) + "' flags " + std::to_string(flags) +
                 (nameCheck ? " as a name" : ""));
    const PlainResult plain = PlainScan({text, flags, nameCheck, GetParam().page});
    EXPECT_FALSE(plain.ambiguous) << "two readings of a date with different marks";
    const ScanResult scanned = ScanWhole(context.get(), flags, nameCheck, text);
    ExpectSame(scanned, plain.scan);
    for (const ScannedToken &token : scanned.tokens) seen[token.code]++;
    badDates += scanned.badDateSeen ? 1 : 0;
  }
  // The texts reach every kind of token.
  for (const int32_t code : kCommonTokens) {
    EXPECT_GT(seen[code], 300) << "token " << code;
  }
  EXPECT_GT(badDates, 300);
}

INSTANTIATE_TEST_SUITE_P(CodePages, ScannerMatcher,
                         ::testing::Values(PageRow{1252, PlainPage::kSingleByte, 1},
                                           PageRow{932, PlainPage::kDoubleByte, 2},
                                           PageRow{65001, PlainPage::kUtf8, 3}),
                         [](const auto &row) {
                           return "Page" + std::to_string(row.param.codePage);
                         });

}  // namespace
