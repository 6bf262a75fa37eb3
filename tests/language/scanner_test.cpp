// The scanner: what each kind of text reads as and its limits, and the comparison with the plain
// matcher on random texts.

#include "language/scanner.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <random>
#include <string_view>

#include "closed/wren/memory.h"
#include "engine/context.h"
#include "plain_matcher.h"
#include "support/context.h"

namespace {

ScannedToken ScanOne(ParseState &state) {
  ScannedToken token = {ScanToken(state)};
  if (state.tokenValue != nullptr) {
    const bool number = token.code == TOK_NUMBER;
    const auto *bytes = static_cast<const char *>(state.tokenValue);
    token.value.assign(bytes, number ? sizeof(NumberValue) : std::strlen(bytes));
    EXPECT_EQ(WRENMemSize(bytes), token.value.size() + (number ? 0 : 1));
  }
  WRENMemFree(state.tokenValue);
  token.offset = state.tokenOffset;
  token.span = state.tokenSpan;
  token.delivered = BytesDelivered(state);
  token.taken = state.tokenLength;
  token.dateUnit = state.dateUnit;
  token.modifier = state.modifier;
  return token;
}

std::string Place(int32_t offset, int32_t length) {
  return std::to_string(offset) + "+" + std::to_string(length);
}

std::string PrintAll(const ScannedToken &token) {
  return std::string(TokenName(token.code)) + "@" + Place(token.offset, token.span) + " read " +
         std::to_string(token.delivered) + " taken " + std::to_string(token.taken) + " unit " +
         std::to_string(token.dateUnit) + " modifier " + std::to_string(token.modifier) + " '" +
         token.value + "'\n";
}

// A context with the two keywords.
OwnedContext ScanContext() {
  OwnedContext context = StandardContext(0);
  EXPECT_EQ(AddKeyword(context.get(), kExactKeyword, 300, 0, 1), 1);
  return context;
}

// Scans the text, and once more behind its end, which must say the same.
ScanResult ScanWhole(EC ec, const ScanInput &input) {
  EXPECT_EQ(WRENSetCodePage(input.codePage), 1);
  ParseState state;
  const int64_t blocks = TEST_LiveBlocks();
  ec->flags = input.flags;
  ResetParseState(state, ec, input.text.c_str(), input.nameCheck);
  state.tokenOffset = state.tokenSpan = 0;
  ScanResult result;
  do {
    result.tokens.push_back(ScanOne(state));
  } while (result.tokens.back().code != TOK_END && result.tokens.size() <= input.text.size() + 1);
  EXPECT_EQ(PrintAll(ScanOne(state)), PrintAll(result.tokens.back())) << "behind the end";
  EXPECT_EQ(TEST_LiveBlocks(), blocks);
  if (state.badDateSeen) {
    result.failures = " bad date " + Place(state.badDateOffset, state.badDateLength);
  }
  if (state.error.id != 0) {
    const Parsed failure = {nullptr, state.error, 0};
    result.failures += " error " + Outcome(failure);
  }
  return result;
}

// "IDENT@0+1:x AND NUMBER@6+1", and the failures.
std::string Print(const ScanResult &result) {
  std::string all;
  for (const ScannedToken &token : result.tokens) {
    if (token.code == TOK_END) break;
    if (!all.empty()) all += " ";
    all += TokenName(token.code);
    if (token.code != TOK_AND) all += "@" + Place(token.offset, token.span);
    if (token.code != TOK_NUMBER && !token.value.empty()) all += ":" + token.value;
  }
  return all + result.failures;
}

// Everything, a token a line.
std::string PrintAll(const ScanResult &result) {
  std::string all;
  for (const ScannedToken &token : result.tokens) all += PrintAll(token);
  return all + result.failures;
}

struct TextRow {
  ScanInput input;
  std::string tokens;
};

void ExpectTokens(const std::vector<TextRow> &rows) {
  const OwnedContext context = ScanContext();
  for (const auto &[input, tokens] : rows) {
    EXPECT_EQ(Print(ScanWhole(context.get(), input)), tokens)
        << "code page " << input.codePage << " flags " << input.flags << " text "
        << testing::PrintToString(input.text.substr(0, 60));
  }
}

// clang-format off
TEST(Scanner, ReadsTexts) {
  ExpectTokens({
      {{1252, ""}, ""},
      {{1252, "a.b.c.d"}, "IDENT@0+5:a.b.c BAD@5+1 IDENT@6+1:d"},
      {{1252, "\"f\"(\"\""}, "IDENT@0+3:\"f\" (@3+1 BAD@4+1 BAD@5+1"},
      {{1252, "@PIE @pi @NOW ("}, "IDENT@0+4:@PIE SYSNAME@5+3:@pi CALLNAME@9+6:@NOW"},
      {{1252, "Net Salesman"}, "IDENT@0+9:Net Sales IDENT@9+3:man"},
      {{1252, "Net Sales", 0, true}, "IDENT@0+3:Net IDENT@4+5:Sales"},
      {{1252, "days ALL", ORL_FLAG_NO_DATE_UNITS | ORL_FLAG_MODIFIERS}, "IDENT@0+4:days MODIFIER@5+3"},
      {{1252, "a\r\nb"}, "IDENT@0+1:a BAD@1+1 IDENT@3+1:b"},
      {{1252, "Jan 12, 1999 10:30 am"}, "DATE@0+21:Jan 12, 1999 10:30 am"},
      {{1252, "1.2.3.4.5.6.7.8"}, "DATE@0+13:1.2.3.4.5.6.7 NUMBER@13+2"},
      // With ranges a bad date reads by other rules, and the first is kept.
      {{1252, "x 12 ab 13ab", ORL_FLAG_RANGES}, "IDENT@0+1:x NUMBER@2+2 IDENT@5+2:ab NUMBER@8+2 IDENT@10+2:ab bad date 2+5"},
      {{1252, "12 Jan 99 10:30", ORL_FLAG_RANGES}, "DATE@0+9:12 Jan 99 DATE@10+5:10:30 bad date 0+5"},
  });
}

TEST(Scanner, KnowsTheCodePagesLetters) {
  ExpectTokens({
      {{1252, "\xE9t\xE9||x"}, "IDENT@0+3:\xE9t\xE9 CONCAT@3+2 IDENT@5+1:x"},
      {{1252, "\xE9\x80"}, "BAD@1+1"},  // taken for a pair, and no letter here
      {{1252, "'\x81\\'||'b'"}, "STRING@0+7:\x81\\'|| IDENT@7+1:b BAD@8+1"},
      {{932, "\x83\x80\xB1(1)"}, "CALLNAME@0+4:\x83\x80\xB1 NUMBER@4+1 )@5+1"},
      {{932, "\"\x81\""}, "BAD@2+1"},
      {{932, "'\x81\\'||''"}, "STRING@0+4:\x81\\ CONCAT@4+2 STRING@6+2"},
      {{932, "'a\\'"}, "BAD@0+1 IDENT@1+1:a BAD@2+1 BAD@3+1"},
      {{65001, "\xC3\x80x||\xE3\x80\x85;"}, "IDENT@0+3:\xC3\x80x CONCAT@3+2 IDENT@5+3:\xE3\x80\x85 BAD@8+1"},
      // What looks like a blank, a sign or a quote, or like nothing, is in no name but a quoted one.
      {{65001, "a\xC2\xA0+1"}, "BAD@1+1 +@3+1 NUMBER@4+1"},
      {{65001, "a1\xE2\x88\x92(1)"}, "BAD@2+1 NUMBER@6+1 )@7+1"},
      {{65001, "\xEF\xBB\xBFx"}, "BAD@0+1"},
      {{65001, "\"\xC2\xA0\" \xE0\xA4\x95\xE2\x80\x8D"}, "IDENT@0+4:\"\xC2\xA0\" IDENT@5+6:\xE0\xA4\x95\xE2\x80\x8D"},
  });
}

TEST(Scanner, EndsTheTextWhereAMatchFillsTheBuffer) {
  const std::string word(2046, 'w'), name = ":" + word;
  ExpectTokens({
      {{1252, word}, "IDENT@0+2046" + name},  // room for the last blank
      {{1252, word + "w"}, " error 112@2049+1"},        // the last blank could go on
      {{1252, word + "w)"}, "IDENT@0+2047" + name + "w )@2047+1"},  // full, and no way on
      {{1252, "1+" + word + word}, "NUMBER@0+1 +@1+1 error 112@2050+2"},
      {{1252, "ab   " + word + word}, "IDENT@0+2:ab error 112@2051+4"},
      {{1252, "'" + word.substr(1) + "'"}, "STRING@0+2047" + name.substr(0, 2046)},
      {{1252, "'" + word + "'"}, " error 112@2049+1"},
      {{1252, std::string(100000, '7')}, " error 112@2049+1"},
  });
}
// clang-format on

// What texts are made of: pieces of every rule and the bytes where rules part.
// clang-format off
const char *const kPieces[] = {
    "1", "2", "12", "99", "1999", "0", ".", ".", ":", ":", "/", "/", "-", "-", "\\", "+", ",", ", ",
    "1.5E-3", "1.5E+", "E", "e+", "12/31/99", "1-2-3", "10:30", "12:30pm", "13/45/99", "1.2.3.4.",
    "Jan", "Ja", "12 Jan 99", "Jan 12, 1999", " 10:30 am", "am", "pm", "ab", "x", "y", "Q", "AND",
    "and", "DAY", "days", "Months", "SECONDSS", "all", "DISTINCT", "Net Sales", "net sales",
    "Gross Tax", "gross tax", "Net", "@NOW", "@pi", "@PIE", "@", "#", "$", "_", " ", " ", " ", "  ",
    "\t", "\n", "\r", "(", " (", ")", "*", "%", "<", "=", "{", "|", "||", ";", "'", "'", "''",
    "'a'", "\\'", "'\\'", "\"", "\"a b\"", "`", "`x`", "?", "\x7F", "\x01", "\x80", "\x81",
    "\x81\\", "\x81'", "\x81|", "\x83\x80", "\x9F", "\xA0", "\xB1", "\xDF", "\xC3\x80", "\xC3\xA9",
    "\xE3\x81\x82", "\xE2\x82\xAC", "\xC2\xA0", "\xE2\x80\x93", "\xE2\x80\x99", "\xEF\xBB\xBF", "\xE9", "\xE9|", "\xE9`", "\xFC\xFC", "\xFD", "\xFF"};
// Alphabets of single bytes, each for the close quarters of some rules.
const std::string_view kAlphabets[] = {
    "11  .:/-,abJm+(\t", "1 abc, .:/-", "'''\\\\a\x81\x83 |", "aB1..\"\"``\xE9\x81\x9F||( @",
    "AaNnDd (.1\"",      "1.5eE+-. "};
// clang-format on

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
    const bool any = random() % 16 == 0;
    text += any ? std::string(1, static_cast<char>(1 + random() % 255))
                : kPieces[random() % std::size(kPieces)];
  }
  return text.substr(0, 62);
}

TEST(ScannerMatcher, AgreesOnRandomTexts) {
  constexpr uint16_t kFlags =
      ORL_FLAG_MODIFIERS | ORL_FLAG_NO_DATE_UNITS | ORL_FLAG_PERCENT | ORL_FLAG_RANGES;
  const OwnedContext context = ScanContext();
  for (const int32_t codePage : {1252, 932, 65001}) {
    std::mt19937 random(static_cast<uint32_t>(codePage));
    std::map<int32_t, int> seen;
    int badDates = 0;
    for (int round = 0; round < 70000 && !HasFailure(); round++) {
      const auto flags = static_cast<uint16_t>(random() & kFlags);
      const ScanInput input = {codePage, RandomText(random), flags, random() % 8 == 0};
      const ScanResult scanned = ScanWhole(context.get(), input);
      EXPECT_EQ(PrintAll(scanned), PrintAll(PlainScan(input)))
          << "text " << testing::PrintToString(input.text) << " code page " << codePage << " flags "
          << flags << (input.nameCheck ? " as a name" : "");
      for (const ScannedToken &token : scanned.tokens) seen[token.code]++;
      badDates += scanned.failures.empty() ? 0 : 1;
    }
    // The texts reach every kind of token.
    for (const int code : {37, 40, 43, 257, 258, 259, 260, 262, 263, 264, 265, 266, 267, 269}) {
      EXPECT_GT(seen[code], 300) << "token " << code;
    }
    EXPECT_GT(badDates, 300);
  }
}

}  // namespace
