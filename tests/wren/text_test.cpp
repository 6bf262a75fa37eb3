// The text operations, compared with the model of separate characters.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "closed/wren/memory.h"
#include "text_model.h"
#include "wreni11.h"

namespace {

const char DELIMITERS[] = " \t\r()*+-/|%,";

std::string RightChars(const Chars &chars, size_t count) {
  return JoinChars(chars, count > chars.size() ? 0 : chars.size() - count, chars.size());
}

// What a routine of the form (target, source, ...) writes into a target of `room` bytes.
template <typename Routine, typename... Numbers>
std::string Written(size_t room, Routine routine, const std::string &source, Numbers... numbers) {
  const auto target = ExactBuffer(room);
  routine(target.get(), source.c_str(), numbers...);
  return target.get();
}

void CheckCopies(const std::string &text, int32_t page, int32_t position, int32_t n) {
  const Chars chars = SplitChars(text, page);
  const auto count = static_cast<size_t>(std::max(0, n));
  const auto first = std::min(chars.size(), static_cast<size_t>(std::max(0, position)));
  const size_t room = text.size() + 1;
  EXPECT_EQ(chars.size(), static_cast<size_t>(WRENStrChars(text.c_str())));
  EXPECT_EQ(JoinChars(chars, 0, count), Written(room, WRENStrLeft, text, n));
  EXPECT_EQ(JoinChars(chars, 0, count), Written(room, WRENStrCopyChars, text, n));
  EXPECT_EQ(RightChars(chars, count), Written(room, WRENStrRight, text, n));
  EXPECT_EQ(position < 0 ? "" : JoinChars(chars, first, count),
            Written(room, WRENStrMid, text, position, n));
  EXPECT_EQ(text.substr(JoinChars(chars, 0, count).size()), WRENStrAdvance(text.c_str(), n));

  const std::string replacement = "\"xy\"";
  const auto target = ExactBuffer(room + replacement.size());
  WRENStrReplace(target.get(), text.c_str(), replacement.c_str(), position, n);
  const size_t behind = std::min(chars.size(), first + count);
  EXPECT_EQ(JoinChars(chars, 0, first) + replacement + JoinChars(chars, behind, chars.size()),
            std::string(target.get()));
}

void CheckTrims(const std::string &text, int32_t page) {
  const Chars chars = SplitChars(text, page);
  const auto isBlank = [](const std::string &character) { return character == " "; };
  const auto first = std::find_if_not(chars.begin(), chars.end(), isBlank) - chars.begin();
  const auto tail = std::find_if_not(chars.rbegin(), chars.rend(), isBlank) - chars.rbegin();
  const size_t kept = chars.size() - static_cast<size_t>(tail);
  const std::string right = JoinChars(chars, 0, kept);
  const std::string both = right.substr(std::min<size_t>(static_cast<size_t>(first), right.size()));
  const size_t room = text.size() + 1;
  EXPECT_EQ(right, Written(room, WRENStrRTrim, text));
  EXPECT_EQ(both, Written(room, WRENStrTrim, text));
  std::string inPlace = text;
  WRENStrFold(inPlace.data());
  EXPECT_EQ(both, inPlace.c_str());
  EXPECT_EQ(text.substr(static_cast<size_t>(first)), WRENStrSkipBlanks(text.c_str()));
}

void CheckSearches(const std::string &text, const std::string &pattern, int32_t page, int32_t n) {
  const Chars chars = SplitChars(text, page);
  const Chars wanted = SplitChars(pattern, page);
  const auto found = std::search(chars.begin(), chars.end(), wanted.begin(), wanted.end());
  const bool none = found == chars.end() && !wanted.empty();
  EXPECT_EQ(none ? -1 : found - chars.begin(), WRENStrScan(text.c_str(), pattern.c_str()));

  const auto count = static_cast<size_t>(std::max(0, n));
  const Chars head(chars.begin(),
                   chars.begin() + static_cast<ptrdiff_t>(std::min(count, chars.size())));
  const Chars wantedHead(wanted.begin(),
                         wanted.begin() + static_cast<ptrdiff_t>(std::min(count, wanted.size())));
  EXPECT_EQ(head == wantedHead ? 1 : 0, WRENStrHasPrefix(text.c_str(), pattern.c_str(), n));

  for (const char *byte = pattern.c_str(); *byte != 0; ++byte) {
    const auto place = std::find(chars.begin(), chars.end(), std::string(1, *byte));
    const std::string before = JoinChars(chars, 0, static_cast<size_t>(place - chars.begin()));
    EXPECT_EQ(place == chars.end() ? nullptr : text.c_str() + before.size(),
              WRENStrChr(text.c_str(), *byte))
        << Shown({*byte});
  }
}

// The next token by the model: its delimiters and itself.
std::pair<std::string, std::string> NextToken(const Chars &chars, size_t *at) {
  const auto isDelimiter = [](const std::string &character) {
    return character.size() == 1 && std::strchr(DELIMITERS, character[0]) != nullptr;
  };
  std::string before;
  std::string token;
  bool quoted = false;
  while (*at < chars.size() && isDelimiter(chars[*at])) {
    before += chars[(*at)++];
  }
  while (*at < chars.size() && (quoted || !isDelimiter(chars[*at]))) {
    quoted = quoted != (chars[*at] == "\"");
    token += chars[(*at)++];
  }
  return {before, token};
}

void CheckTokens(const std::string &text, int32_t page) {
  const Chars chars = SplitChars(text, page);
  size_t at = 0;
  const char *rest = text.c_str();
  while (*rest != 0) {
    const auto [before, token] = NextToken(chars, &at);
    const auto buffer = ExactBuffer(std::strlen(rest) + 1);
    const int32_t used = WRENStrTokenize(buffer.get(), rest, DELIMITERS, DELIMITERS, 0, 34, 0);
    ASSERT_GT(used, 0);
    EXPECT_EQ(token, buffer.get());
    EXPECT_EQ(before + token, std::string(rest, static_cast<size_t>(used)));
    rest += used;
  }
  char token[] = "?";
  EXPECT_EQ(0, WRENStrTokenize(token, rest, DELIMITERS, DELIMITERS, 0, 34, 0));
  EXPECT_STREQ("", token);
}

TEST(TextTest, AgreesWithTheModelOnRandomTexts) {
  std::mt19937 random(1101);
  for (const int32_t page : CODE_PAGES) {
    const CodePageScope scope(page);
    for (int round = 0; round < 4000 && !testing::Test::HasFailure(); ++round) {
      const std::string text = RandomText(random, page, 12);
      const std::string pattern = RandomText(random, page, 3);
      const auto n = static_cast<int32_t>(random() % 15) - 2;
      const auto position = static_cast<int32_t>(random() % 15) - 2;
      SCOPED_TRACE(std::to_string(page) + " " + Shown(text) + " " + Shown(pattern) + " at " +
                   std::to_string(position) + " for " + std::to_string(n));
      CheckCopies(text, page, position, n);
      CheckTrims(text, page);
      CheckSearches(text, pattern, page, n);
      CheckTokens(text, page);
    }
  }
}

TEST(TextTest, ExtremeCountsAndNullsGiveTheWholeOrTheEmptyText) {
  for (const int32_t page : CODE_PAGES) {
    const CodePageScope scope(page);
    CheckCopies("abc", page, 1, INT32_MAX);
    CheckCopies("abc", page, INT32_MAX, INT32_MAX);
    CheckCopies("abc", page, INT32_MIN, INT32_MIN);
    char target[] = "old";
    WRENStrReplace(target, nullptr, nullptr, 0, 5);
    EXPECT_STREQ("", target);
    WRENStrProper(target, nullptr);
    WRENStrTrim(target, nullptr);
    WRENStrRight(target, nullptr, 2);
    EXPECT_STREQ("", target);
    EXPECT_EQ(0, WRENStrLen(nullptr) + WRENStrChars(nullptr) + WRENIsLeadByteAt(nullptr));
    EXPECT_EQ(0, WRENStrScan(nullptr, nullptr));
    EXPECT_EQ(-1, WRENStrScan(nullptr, "a"));
    EXPECT_EQ(nullptr, WRENStrChr("abc", 0));
    EXPECT_EQ(0, WRENStrTokenize(target, nullptr, nullptr, nullptr, 0, 34, 0));
  }
}

TEST(TextTest, ProperCapitalizesWords) {
  struct Row {
    int32_t page;
    const char *source, *expected;
  };
  const Row rows[] = {
      {1252, "net SALES of the 3RD quarter", "Net Sales Of The 3rd Quarter"},
      {1252, "don't o'neil 'quoted' rock-n-roll a.b", "Don't O'neil 'Quoted' Rock-N-Roll A.B"},
      {1252, "rock 'n' roll''s end'", "Rock 'N' Roll''S End'"},
      {1252,
       "\xE9"
       "COLE L\x92\xC9T\xC9",
       "\xC9"
       "cole L\x92\xE9t\xE9"},
      {932, "\x82\x81\x82\x61 \x82\x81 a\x83\x5C\x82\x61",
       "\x82\x60\x82\x82 \x82\x60 A\x83\x5C\x82\x82"},
      {65001,
       "\xC3\xA9"
       "COLE \xE2\x80\x93"
       "a \xCE\xB1\xCE\x92",
       "\xC3\x89"
       "cole \xE2\x80\x93"
       "A \xCE\x91\xCE\xB2"},
      {65001,
       "stra\xC3\x9F"
       "E\xE2\x80\x99S a\xC3"
       "b",
       "Stra\xC3\x9F"
       "e\xE2\x80\x99s A\xC3"
       "B"},
  };
  for (const Row &row : rows) {
    const CodePageScope scope(row.page);
    const std::string source = row.source;
    EXPECT_EQ(Shown(row.expected), Shown(Written(source.size() + 1, WRENStrProper, source)));
    std::string inPlace = source;
    WRENStrProper(inPlace.data(), inPlace.c_str());
    EXPECT_EQ(row.expected, inPlace) << Shown(source);
  }
}

TEST(TextTest, TokensWithDelimitersOfTwoKinds) {
  char token[16];
  // A byte that ends tokens but does not lead them still lets the walk go on.
  EXPECT_EQ(1, WRENStrTokenize(token, ",b", " ", ",", 0, 34, 0));
  EXPECT_STREQ("", token);
  EXPECT_EQ(3, WRENStrTokenize(token, " ab,c", " ", ",", 0, 34, 0));
  EXPECT_STREQ("ab", token);
  // Without a quote character quotes are bytes like others; null delimiters are none.
  EXPECT_EQ(2, WRENStrTokenize(token, "\"a b\"", " ", " ", 0, 0, 0));
  EXPECT_STREQ("\"a", token);
  EXPECT_EQ(3, WRENStrTokenize(token, "a b", nullptr, nullptr, 0, 34, 0));
  EXPECT_STREQ("a b", token);
}

// Equal bytes at every second place, none of them at the start of a character: a search that began
// anew at each would take hours.
TEST(TextTest, ScanIsLinearAndNeedsNoMemory) {
  const CodePageScope scope(932);
  std::string text;
  std::string pattern;
  for (int count = 0; count < 400000; ++count) {
    text +=
        "\x81"
        "A";
  }
  for (int count = 0; count < 100000; ++count) {
    pattern += "A\x81";
  }
  EXPECT_EQ(-1, WRENStrScan(text.c_str(), pattern.c_str()));
  const std::string tail = "B" + pattern;
  text += tail;
  EXPECT_EQ(400000, WRENStrScan(text.c_str(), tail.c_str()));
  TEST_FailAllocationsAfter(0);
  EXPECT_EQ(400000, WRENStrScan(text.c_str(), tail.c_str()));
  TEST_FailAllocationsAfter(-1);
}

}  // namespace
