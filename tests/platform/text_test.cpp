// The platform's collation, case and characters.
#include "platform/text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "platform/name_character.h"
#include "tests/wren/text_model.h"
#include "wreni11.h"

namespace {

TEST(PlatformTextTest, ListsComeInTheOrderOfTheAlphabet) {
  // clang-format off
  const std::pair<int32_t, Chars> lists[] = {
      {1252, {"", " ", "-", "1", "10", "2", "a", "A", "\xE1", "\xC1", "\xE4", "\xAA", "ab", "aB",
              "Ab", "AB", "ae", "\xE6", "\xC6", "af", "cote", "Cote", "cot\xE9", "c\xF4te", "coter",
              "o", "\xF6", "\xF8", "oe", "\x9C", "p", "ss", "\xDF", "st", "Zebra", "zebras", "zebu",
              "\xB5"}},
      {932, {"", " ", "\x81\x40", "1", "a", "A", "b", "\x82\x81z", "\x82\x60z", "\x82\xA0",
             "\x83\x41", "\x83\xBF", "\x83\x9F", "\x88\x9F"}},
      {65001, {"", "\xE2\x80\x93", "3", "e", "E", "\xC3\xA9", "\xC3\x89", "e\xC3\xA9", "\xC3\xA9z",
               "i", "\xC4\xB0", "\xC4\xB1", "l", "\xC5\x82", "\xC5\x81", "s", "\xC5\xA1", "ss",
               "\xC3\x9F", "z", "\xC5\xBC", "\xCE\xB1", "\xCE\x91", "\xCF\x82", "\xD0\xB0",
               "\xD0\x90", "\xE3\x81\x82", "\xF0\x90\x90\xA8", "\xF0\x90\x90\x80"}},
  };
  // clang-format on
  for (const auto &[page, texts] : lists) {
    const CodePageScope scope(page);
    for (auto left = texts.begin(); left != texts.end(); ++left) {
      for (auto right = texts.begin(); right != texts.end(); ++right) {
        EXPECT_EQ((left > right) - (left < right), lstrcmpA(left->c_str(), right->c_str()))
            << page << ": " << Shown(*left) << " and " << Shown(*right);
      }
    }
  }
  EXPECT_EQ(0, lstrcmpA(nullptr, ""));
  EXPECT_EQ(-1, lstrcmpA(nullptr, "a"));
  EXPECT_EQ(1, lstrcmpiA("A", nullptr));
}

TEST(PlatformTextTest, BothOrdersAreOrders) {
  std::mt19937 random(4404);
  for (const int32_t page : kCodePages) {
    const CodePageScope scope(page);
    for (int round = 0; round < 20000 && !HasFailure(); ++round) {
      const std::string a = RandomText(random, page, 3);
      const std::string b = RandomText(random, page, 3);
      const std::string c = RandomText(random, page, 3);
      SCOPED_TRACE(std::to_string(page) + Shown(a) + Shown(b) + Shown(c));
      EXPECT_EQ(a == b, lstrcmpA(a.c_str(), b.c_str()) == 0);
      EXPECT_EQ(a == b, SameText(a.c_str(), b.c_str()));
      EXPECT_EQ(WRENStrEqualNoCase(a.c_str(), b.c_str()), lstrcmpiA(a.c_str(), b.c_str()) == 0);
      for (const auto compare : {lstrcmpA, lstrcmpiA}) {
        EXPECT_EQ(compare(a.c_str(), b.c_str()), -compare(b.c_str(), a.c_str()));
        if (compare(a.c_str(), b.c_str()) <= 0 && compare(b.c_str(), c.c_str()) <= 0) {
          EXPECT_LE(compare(a.c_str(), c.c_str()), 0);
        }
      }
    }
  }
}

// Without case two characters are equal exactly when the case operations say so, and never merely
// because they are at the same place of the alphabet.
TEST(PlatformTextTest, EveryPairOfLatinLettersIsDistinguished) {
  for (const int32_t page : {1252, 65001}) {
    const CodePageScope scope(page);
    std::vector<std::string> all = {"AE", "SS", "TH", "IJ", "OE"};
    for (uint32_t code = 1; code < (page == 1252 ? 0x100U : 0x250U); ++code) {
      all.push_back(page == 1252 ? std::string(1, static_cast<char>(code)) : Utf8Of(code));
    }
    for (const std::string &left : all) {
      for (const std::string &right : all) {
        ASSERT_EQ(WRENStrEqualNoCase(left.c_str(), right.c_str()),
                  lstrcmpiA(left.c_str(), right.c_str()) == 0)
            << page << Shown(left) << Shown(right);
      }
    }
  }
}

TEST(PlatformTextTest, CharactersAndCodePage) {
  for (const int32_t page : kCodePages) {
    const CodePageScope scope(page);
    EXPECT_EQ(page, ActiveCodePage());
    for (int byte = 0; byte < 256; ++byte) {
      const bool digit = byte >= '0' && byte <= '9';
      EXPECT_EQ(digit ? 0 : WRENIsDigit(byte), IsCharAlphaA(static_cast<char>(byte)))
          << page << ": " << byte;
    }
  }
  char target[8] = "";
  EXPECT_STREQ("abc", lstrcatA(lstrcpyA(target, "ab"), "c"));
  EXPECT_STREQ("", lstrcatA(lstrcpyA(target, nullptr), nullptr));
  EXPECT_EQ(target, CharNextA(target)) << "the terminator stays";
}

// Python knows the categories of the Unicode character data; it knows neither the properties Dash
// and Quotation_Mark, whose other members are listed here, nor the characters of later versions.
TEST(NameCharacter, EveryCharacterIsWhatPythonSays) {
  const std::vector<std::string> lines = LinesOf(R"(python3 -c '
from unicodedata import category
others = [0x85, 0x201A, 0x201E, 0x2053, 0x207B, 0x208B, 0x2212, 0x2E42, 0x300C, 0x300D, 0x300E,
          0x300F, 0x301D, 0x301E, 0x301F, 0xFE41, 0xFE42, 0xFE43, 0xFE44, 0xFF02, 0xFF07, 0xFF62,
          0xFF63]
for code in range(0x80, 0x110000):
    kind = category(chr(code))
    marks = kind in ("Zs", "Zl", "Zp", "Pd", "Pi", "Pf", "Cf") or code in others
    print("?" if kind == "Cn" else "no" if marks and code not in (0x200C, 0x200D) else "yes")
')");
  ASSERT_EQ(lines.size(), 0x110000U - 0x80);
  for (uint32_t code = 0x80; code < 0x110000; ++code) {
    const char first = lines[code - 0x80][0];
    EXPECT_TRUE(first == '?' || IsNameCharacter(code) == (first == 'y')) << std::hex << code;
  }
}

}  // namespace
