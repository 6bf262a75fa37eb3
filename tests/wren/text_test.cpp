// The text operations, compared with the model of separate characters.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "closed/wren/memory.h"
#include "support/cases.h"
#include "text_model.h"
#include "wreni11.h"

namespace {

// The output of a routine of the form (target, source, ...) in a target of `size` bytes.
template <typename Routine, typename... Numbers>
std::string Written(size_t size, Routine routine, const std::string &source, Numbers... numbers) {
  const auto target = ExactBuffer(size);
  routine(target.get(), source.c_str(), numbers...);
  return target.get();
}

void CheckCopies(const std::string &text, int32_t page, int32_t position, int32_t n) {
  const Chars chars = SplitChars(text, page);
  const auto size = static_cast<int64_t>(chars.size());
  const int64_t count = std::max<int64_t>(0, n);
  const int64_t first = std::max<int64_t>(0, position);
  const std::string left = JoinChars(chars, 0, n);
  const size_t bytes = text.size() + 1;
  EXPECT_EQ(size, WRENStrChars(text.c_str()));
  EXPECT_EQ(left, Written(bytes, WRENStrLeft, text, n));
  EXPECT_EQ(left, Written(bytes, WRENStrCopyChars, text, n));
  EXPECT_EQ(text.substr(left.size()), WRENStrAdvance(text.c_str(), n));
  EXPECT_EQ(JoinChars(chars, std::max<int64_t>(0, size - count), size),
            Written(bytes, WRENStrRight, text, n));
  EXPECT_EQ(position < 0 ? "" : JoinChars(chars, first, n),
            Written(bytes, WRENStrMid, text, position, n));
  const auto target = ExactBuffer(bytes + 4);
  WRENStrReplace(target.get(), text.c_str(), "\"xy\"", position, n);
  EXPECT_EQ(JoinChars(chars, 0, first) + "\"xy\"" + JoinChars(chars, first + count, size),
            target.get());
}

void CheckTrims(const std::string &text, int32_t page) {
  Chars chars = SplitChars(text, page);
  while (!chars.empty() && chars.back() == " ") chars.pop_back();
  const std::string right = JoinChars(chars, 0, INT32_MAX);
  const std::string left = text.substr(std::min(text.size(), text.find_first_not_of(' ')));
  const std::string both = right.substr(std::min(right.size(), text.size() - left.size()));
  EXPECT_EQ(left, WRENStrSkipBlanks(text.c_str()));
  EXPECT_EQ(right, Written(text.size() + 1, WRENStrRTrim, text));
  EXPECT_EQ(both, Written(text.size() + 1, WRENStrTrim, text));
  std::string inPlace = text;
  WRENStrFold(inPlace.data());
  EXPECT_EQ(both, inPlace.c_str());
}

void CheckSearches(const std::string &text, const std::string &pattern, int32_t page, int32_t n) {
  const Chars chars = SplitChars(text, page);
  const Chars wanted = SplitChars(pattern, page);
  const auto found = std::search(chars.begin(), chars.end(), wanted.begin(), wanted.end());
  EXPECT_EQ(found == chars.end() && !wanted.empty() ? -1 : found - chars.begin(),
            WRENStrScan(text.c_str(), pattern.c_str()));
  EXPECT_EQ(JoinChars(chars, 0, n) == JoinChars(wanted, 0, n) ? 1 : 0,
            WRENStrHasPrefix(text.c_str(), pattern.c_str(), n));
  for (const char byte : pattern) {
    const auto place = std::find(chars.begin(), chars.end(), std::string(1, byte)) - chars.begin();
    const char *expected = text.c_str() + JoinChars(chars, 0, place).size();
    EXPECT_EQ(*expected == 0 ? nullptr : expected, WRENStrChr(text.c_str(), byte)) << Shown({byte});
  }
}

void CheckTokens(const std::string &text, int32_t page, const std::string &leading,
                 const std::string &ending, char quote) {
  SCOPED_TRACE(leading + " and " + ending + " quote " + std::to_string(quote));
  const Chars chars = SplitChars(text, page);
  size_t at = 0;
  const auto isIn = [&](const std::string &set) {
    return chars[at].size() == 1 && set.find(chars[at]) != std::string::npos;
  };
  int32_t used = 1;
  for (const char *rest = text.c_str(); used > 0; rest += used) {
    std::string before, token;
    for (; at < chars.size() && isIn(leading); ++at) before += chars[at];
    for (bool quoted = false; at < chars.size() && (quoted || !isIn(ending)); ++at) {
      quoted = quoted != (quote != 0 && chars[at] == std::string(1, quote));
      token += chars[at];
    }
    // A byte that ends tokens but does not lead them still lets the walk go on.
    if ((before + token).empty() && at < chars.size()) before = chars[at++];
    const auto buffer = ExactBuffer(std::strlen(rest) + 1);
    used = WRENStrTokenize(buffer.get(), rest, leading.c_str(), ending.c_str(), 0, quote, 0);
    ASSERT_EQ(before + token, std::string(rest, static_cast<size_t>(used)));
    EXPECT_EQ(token, buffer.get());
  }
  EXPECT_EQ(chars.size(), at);
}

TEST(TextTest, AgreesWithTheModelOnRandomTexts) {
  std::mt19937 random(1101);
  for (const int32_t page : kCodePages) {
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
      CheckTokens(text, page, n % 2 != 0 ? " \t,|" : " ", position % 2 != 0 ? " \t,|" : ",",
                  n % 3 == 0 ? 0 : 34);
    }
  }
}

TEST(TextTest, ExtremeCountsAndNullsGiveTheWholeOrTheEmptyText) {
  for (const int32_t page : kCodePages) {
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
    EXPECT_EQ(3, WRENStrTokenize(target, "a b", nullptr, nullptr, 0, 34, 0));
    EXPECT_STREQ("a b", target);
  }
}

TEST(TextTest, ProperCapitalizesWords) {
  for (const Case &row : CasesOf("wren/text_cases.txt", "proper")) {
    const CodePageScope scope(row.Int(0));
    const std::string &source = row[1];
    EXPECT_EQ(Shown(row[2]), Shown(Written(source.size() + 1, WRENStrProper, source)));
    std::string inPlace = source;
    WRENStrProper(inPlace.data(), inPlace.c_str());
    EXPECT_EQ(row[2], inPlace) << row.where;
  }
}

// Equal bytes at every second place, none of them at the start of a character: a search that
// started over at each would take hours.
TEST(TextTest, ScanIsLinearAndNeedsNoMemory) {
  const CodePageScope scope(932);
  std::string text;
  std::string pattern;
  for (int count = 0; count < 400000; ++count) text += "\x81\x41";
  for (int count = 0; count < 100000; ++count) pattern += "A\x81";
  EXPECT_EQ(-1, WRENStrScan(text.c_str(), pattern.c_str()));
  const std::string tail = "B" + pattern;
  text += tail;
  EXPECT_EQ(400000, WRENStrScan(text.c_str(), tail.c_str()));
  TEST_FailAllocationsAfter(0);
  EXPECT_EQ(400000, WRENStrScan(text.c_str(), tail.c_str()));
  TEST_FailAllocationsAfter(-1);
}

}  // namespace
