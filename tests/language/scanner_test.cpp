// The scanner: the tokens of each kind of text and its limits, and the comparison with the plain
// matcher on random texts.

#include "language/scanner.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string_view>
#include <utility>

#include "engine/context.h"
#include "language/literals.h"
#include "plain_matcher.h"
#include "support/cases.h"
#include "support/context.h"

namespace {

// A token code in readable form.
const char *TokenName(int32_t token) {
  static const char *const names[] = {"NUMBER",   "IDENT", "CALLNAME", "SYSNAME", "(formula)",
                                      "STRING",   "DATE",  "CONCAT",   "BAD",     "DATEUNIT",
                                      "MODIFIER", "",      "AND"};
  static_assert(std::size(names) == TOK_AND - TOK_NUMBER + 1);
  static const char characters[] = "%\0(\0)\0*\0+\0,\0-\0/\0<\0=\0>\0{\0}";
  if (token == TOK_END) {
    return "END";
  }
  if (token >= TOK_NUMBER && token <= TOK_AND) {
    return names[token - TOK_NUMBER];
  }
  for (const char *at = characters; *at != '\0'; at += 2) {
    if (*at == token) {
      return at;
    }
  }
  return "?";
}

// The value of the token that the state is at.
std::string ValueOf(const ParseState &state, int32_t code) {
  const std::string_view text = TextAt(state, state.tokenOffset, state.tokenSpan);
  switch (code) {
    case TOK_NUMBER: {
      NumberValue value;
      NumberFromLiteral(&value, text);
      return std::string(reinterpret_cast<const char *>(&value), sizeof value);
    }
    case TOK_STRING:
      return std::string(text.substr(1, text.size() - 2));
    case TOK_CALLNAME:
      return std::string(CallName(text));
    case TOK_IDENT:
    case TOK_SYSNAME:
    case TOK_DATE:
      return std::string(text);
    default:
      return {};
  }
}

ScannedToken ScanOne(ParseState &state) {
  ScannedToken token = {ScanToken(state)};
  token.value = ValueOf(state, token.code);
  token.offset = state.tokenOffset;
  token.span = state.tokenSpan;
  token.delivered = state.delivered;
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

// Scans the text, and once more after its end, which must return the same.
ScanResult ScanWhole(EC ec, const ScanInput &input) {
  EXPECT_EQ(WRENSetCodePage(input.codePage), 1);
  ParseState state;
  ec->flags = input.flags;
  ResetParseState(state, ec, input.text.c_str(), input.nameCheck);
  ScanResult result;
  do {
    result.tokens.push_back(ScanOne(state));
  } while (result.tokens.back().code != TOK_END && result.tokens.size() <= input.text.size() + 1);
  EXPECT_EQ(PrintAll(ScanOne(state)), PrintAll(result.tokens.back())) << "after the end";
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

void ExpectTokens(EC ec, const ScanInput &input, const std::string &tokens) {
  EXPECT_EQ(Print(ScanWhole(ec, input)), tokens)
      << "code page " << input.codePage << " flags " << input.flags << " text "
      << testing::PrintToString(input.text.substr(0, 60));
}

TEST(Scanner, ReadsTexts) {
  const OwnedContext context = ScanContext();
  for (const Case &row : CasesOf("language/scanner_cases.txt", "tokens")) {
    const bool name = row[2] == "N";
    const uint16_t flags = name ? uint16_t{0} : row.Flags(2);
    ExpectTokens(context.get(), {row.Int(0), row[1], flags, name}, row[3]);
  }
}

TEST(Scanner, EndsTheTextWhereAMatchFillsTheBuffer) {
  const std::string word(2046, 'w'), name = ":" + word;
  const std::pair<std::string, std::string> rows[] = {
      {word, "IDENT@0+2046" + name},                        // space for the last blank
      {word + "w", " error 112@2049+1"},                    // the last blank could continue
      {word + "w)", "IDENT@0+2047" + name + "w )@2047+1"},  // full, and nothing can continue
      {"1+" + word + word, "NUMBER@0+1 +@1+1 error 112@2050+2"},
      {"ab   " + word + word, "IDENT@0+2:ab error 112@2051+4"},
      {"'" + word.substr(1) + "'", "STRING@0+2047" + name.substr(0, 2046)},
      {"'" + word + "'", " error 112@2049+1"},
      {std::string(100000, '7'), " error 112@2049+1"},
  };
  const OwnedContext context = ScanContext();
  for (const auto &[text, tokens] : rows) ExpectTokens(context.get(), {1252, text}, tokens);
}

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
// Alphabets of single bytes, each for rules that are close to each other.
const std::string_view kAlphabets[] = {
    "11  .:/-,abJm+(\t", "1 abc, .:/-", "'''\\\\a\x81\x83 |", "aB1..\"\"``\xE9\x81\x9F||( @",
    "AaNnDd (.1\"",      "1.5eE+-. "};
// clang-format on

std::string RandomText(std::mt19937 &random) {
  std::string text;
  if (random() % 2 == 0) {
    const std::string_view alphabet = kAlphabets[random() % std::size(kAlphabets)];
    for (size_t left = 1 + random() % 24; left > 0; --left) {
      text += alphabet[random() % alphabet.size()];
    }
    return text;
  }
  for (size_t left = 1 + random() % 14; left > 0; --left) {
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
    for (int round = 0; round < 70000 && !HasFailure(); ++round) {
      const auto flags = static_cast<uint16_t>(random() & kFlags);
      const ScanInput input = {codePage, RandomText(random), flags, random() % 8 == 0};
      const ScanResult scanned = ScanWhole(context.get(), input);
      EXPECT_EQ(PrintAll(scanned), PrintAll(PlainScan(input)))
          << "text " << testing::PrintToString(input.text) << " code page " << codePage << " flags "
          << flags << (input.nameCheck ? " as a name" : "");
      for (const ScannedToken &token : scanned.tokens) ++seen[token.code];
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
