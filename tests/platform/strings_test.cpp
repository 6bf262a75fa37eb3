// The string table and its loading.
#include "platform/strings.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "resources/string_table.h"
#include "support/pattern.h"

namespace {

TEST(StringsTest, EveryRowLoadsTruncatedToAnyBuffer) {
  const Pattern ascii("^[ -~]+$");
  const Pattern message("^(ERR_[A-Z]+) ?: [A-Z]");
  const Pattern function("^FUN[A-Za-z]+,[012],([0-9])((,[012])*)$");
  std::set<uint32_t> ids;
  std::set<std::string> errors;
  for (const auto &[id, row] : StringTable()) {
    const std::string text = row;
    ids.insert(id);
    EXPECT_FALSE(ascii.Find(text).empty()) << id;
    if (id >= 100 && id <= 137) {
      const auto parts = message.Find(text);
      EXPECT_EQ(id != 104, !parts.empty()) << text;
      EXPECT_TRUE(errors.emplace(parts.empty() ? "" : parts[1]).second) << text << " comes twice";
    } else if (id >= 20000) {
      const auto parts = function.Find(text);
      ASSERT_FALSE(parts.empty()) << text;
      EXPECT_EQ(std::stoul(std::string(parts[1])) * 2, parts[2].size()) << text;
      EXPECT_LT(text.size(), 128U) << text;
    }
    for (size_t size = 1; size <= text.size() + 2; ++size) {
      std::string buffer(text.size() + 3, '~');
      const std::string expected = text.substr(0, size - 1);
      EXPECT_EQ(expected.size(), static_cast<size_t>(LoadStringA(nullptr, id, buffer.data(),
                                                                 static_cast<int32_t>(size))));
      EXPECT_EQ(expected, buffer.c_str()) << size;
      EXPECT_EQ(std::string::npos, buffer.find_first_not_of('~', expected.size() + 1)) << text;
    }
  }
  const std::pair<uint32_t, uint32_t> ranges[] = {{100, 137}, {201, 246}, {20000, 20045}};
  for (const auto &[first, last] : ranges) {
    for (uint32_t id = first; id <= last; ++id) EXPECT_EQ(1U, ids.count(id)) << id;
  }
}

TEST(StringsTest, UnknownRowsAndEmptyBuffersAreUnchanged) {
  char buffer[] = "~";
  for (const uint32_t id : {0U, 99U, 138U, 19999U, 20046U, UINT32_MAX}) {
    EXPECT_EQ(0, LoadStringA(nullptr, id, buffer, sizeof(buffer))) << id;
  }
  EXPECT_EQ(0, LoadStringA(nullptr, 100, buffer, 0) + LoadStringA(nullptr, 100, buffer, -5) +
                   LoadStringA(nullptr, 100, nullptr, 10));
  EXPECT_STREQ("~", buffer);
}

}  // namespace
