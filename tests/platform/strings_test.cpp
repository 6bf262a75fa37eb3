// The string table and its loading.
#include "platform/strings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <regex>
#include <string>

#include "resources/string_table.h"

namespace {

TEST(StringsTest, EveryRowOfTheTableIsFoundByItsId) {
  for (const StringRow &row : StringTable()) {
    char buffer[200];
    EXPECT_EQ(std::strlen(row.text),
              static_cast<size_t>(LoadStringA(nullptr, row.id, buffer, 200)));
    EXPECT_STREQ(row.text, buffer) << row.id;
    EXPECT_TRUE(std::all_of(row.text, row.text + std::strlen(row.text),
                            [](char byte) { return byte >= 32 && byte < 127; }))
        << row.id << " is not ASCII";
  }
  const std::pair<uint32_t, uint32_t> ranges[] = {
      {100, 137}, {207, 208}, {212, 215}, {227, 231}, {20000, 20045}};
  for (const auto &[first, last] : ranges) {
    for (uint32_t id = first; id <= last; ++id) {
      EXPECT_NE(nullptr, StringText(id)) << id;
    }
  }
}

TEST(StringsTest, MessagesNameTheirErrorAndNoTextComesTwice) {
  const std::regex message("ERR_[A-Z]+ ?: [A-Z].*");
  std::vector<std::string> seen;
  for (const StringRow &row : StringTable()) {
    if (row.id >= 100 && row.id <= 137) {
      EXPECT_EQ(row.id != 104, std::regex_match(row.text, message)) << row.text;
      seen.push_back(std::string(row.text).substr(0, std::string(row.text).find(':')));
    }
  }
  std::sort(seen.begin(), seen.end());
  EXPECT_EQ(seen.end(), std::adjacent_find(seen.begin(), seen.end()));
}

TEST(StringsTest, FunctionRowsTellTheirParameters) {
  const std::regex format("FUN[A-Za-z]+,[012],([0-9])((,[012])*)");
  for (uint32_t id = 20000; id <= 20045; ++id) {
    const std::string row = StringText(id);
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(row, parts, format)) << row;
    EXPECT_EQ(std::stoul(parts[1]) * 2, static_cast<size_t>(parts[2].length())) << row;
    EXPECT_LT(row.size(), 128U) << row;
  }
}

TEST(StringsTest, LoadingCutsAtTheBufferAndLeavesItForUnknownRows) {
  const std::string text = StringText(100);
  for (int32_t size = 1; size <= static_cast<int32_t>(text.size()) + 2; ++size) {
    std::string buffer(text.size() + 3, '~');
    const size_t expected = std::min(text.size(), static_cast<size_t>(size) - 1);
    EXPECT_EQ(expected, static_cast<size_t>(LoadStringA(nullptr, 100, buffer.data(), size)));
    EXPECT_EQ(text.substr(0, expected), buffer.c_str()) << size;
    EXPECT_EQ(std::string::npos, buffer.substr(expected + 1).find_first_not_of('~')) << size;
  }
  for (const uint32_t id : {0U, 99U, 138U, 19999U, 20046U, UINT32_MAX}) {
    char buffer[] = "~";
    EXPECT_EQ(0, LoadStringA(nullptr, id, buffer, sizeof(buffer))) << id;
    EXPECT_STREQ("~", buffer) << id;
  }
  char buffer[] = "~";
  EXPECT_EQ(0, LoadStringA(nullptr, 100, buffer, 0) + LoadStringA(nullptr, 100, buffer, -5) +
                   LoadStringA(nullptr, 100, nullptr, 10));
  EXPECT_STREQ("~", buffer);
}

}  // namespace
