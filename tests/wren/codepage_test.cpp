// Characters and their case in the three code pages.
#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "text_model.h"
#include "wreni11.h"

namespace {

TEST(CodePageTest, OnlyThreeAreAccepted) {
  const CodePageScope scope(932);
  for (const int32_t page : {0, 437, 1251, 1253, 65000, 65002, -1}) {
    EXPECT_EQ(0, WRENSetCodePage(page)) << page;
    EXPECT_EQ(1, WRENIsDoubleByte()) << "changed by " << page;
  }
  for (const int32_t page : kCodePages) {
    EXPECT_EQ(1, WRENSetCodePage(page)) << page;
    EXPECT_EQ(page == 932 ? 1 : 0, WRENIsDoubleByte()) << page;
  }
}

TEST(CodePageTest, EveryByteHasItsKind) {
  const struct {
    int32_t page;
    const char *leadBytes, *nameBytes;  // as ranges, two bytes each
  } kinds[] = {
      {1252, "",
       "09AZaz\x83\x83\x8A\x8A\x8C\x8C\x8E\x8E\x9A\x9A\x9C\x9C\x9E\x9F\xAA\xAA\xB5\xB5"
       "\xBA\xBA\xC0\xD6\xD8\xF6\xF8\xFF"},
      {932, "\x81\x9F\xE0\xFC", "09AZaz\xA6\xDF"},
      {65001, "", "09AZaz\x80\xFF"},
  };
  const auto isIn = [](const char *ranges, int32_t byte) {
    for (; *ranges != 0; ranges += 2) {
      if (byte >= static_cast<uint8_t>(ranges[0]) && byte <= static_cast<uint8_t>(ranges[1])) {
        return 1;
      }
    }
    return 0;
  };
  for (const auto &kind : kinds) {
    const CodePageScope scope(kind.page);
    for (int32_t byte = 0; byte < 256; ++byte) {
      EXPECT_EQ(isIn(kind.leadBytes, byte), WRENIsAlpha(byte)) << kind.page << ": " << byte;
      EXPECT_EQ(isIn(kind.nameBytes, byte), WRENIsDigit(byte)) << kind.page << ": " << byte;
      EXPECT_EQ(WRENIsDigit(byte), WRENIsDigit(static_cast<signed char>(byte)));
    }
    EXPECT_EQ(0, WRENIsAlpha(0x181) + WRENIsDigit(0x141)) << kind.page;
  }
}

// Every first and second byte with a choice of bytes after them.
TEST(CodePageTest, CharactersAreWhatTheModelSaysForAllBytes) {
  const char following[] = {0, 'a', '\x7F', '\x80', '\xBF', '\xC0'};
  for (const int32_t page : kCodePages) {
    const CodePageScope scope(page);
    for (uint32_t code = 0x100; code < 0x10000 * std::size(following); ++code) {
      const char tail = following[code >> 16];
      const std::string bytes = {static_cast<char>(code >> 8), static_cast<char>(code), tail, tail};
      const std::string text = bytes.substr(0, bytes.find('\0'));
      const size_t expected = text.empty() ? 0 : SplitChars(text, page)[0].size();
      ASSERT_EQ(text.c_str() + expected, WRENStrAdvance(text.c_str(), 1)) << Shown(text) << page;
      ASSERT_EQ(expected > 1 ? 1 : 0, WRENIsLeadByteAt(text.c_str())) << Shown(text) << page;
    }
  }
}

std::string FromHex(const std::string &digits) {
  std::string bytes;
  for (size_t at = 0; at < digits.size(); at += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(at, 2), nullptr, 16));
  }
  return bytes;
}

// As a capital, as a small letter and at the start of a word.
Chars FormsOf(const std::string &character) {
  Chars forms(3, character);
  WRENStrUpper(forms[0].data());
  WRENStrLower(forms[1].data());
  WRENStrProper(forms[2].data(), forms[2].data());
  return forms;
}

// Every character above ASCII; Python knows those that have case.
TEST(CaseTest, EveryCharacterMapsAsPythonSays) {
  const struct {
    int32_t page;
    const char *encoding;
  } pages[] = {{1252, "cp1252"}, {932, "cp932"}, {65001, "utf-8"}};
  for (const auto &[page, encoding] : pages) {
    const CodePageScope scope(page);
    std::map<std::string, Chars> list;
    std::string version;  // of the character data
    for (const std::string &line :
         LinesOf(std::string("python3 scripts/make_case_table.py --list ") + encoding)) {
      std::istringstream fields(line);
      std::string character, upper, lower, title;
      if (fields >> character >> upper >> lower >> title) {
        list[FromHex(character)] = {FromHex(upper), FromHex(lower), FromHex(title)};
      } else {
        version = line;
      }
    }
    ASSERT_GT(list.size(), 60U) << encoding;
    const uint32_t end = page == 1252 ? 0x100 : page == 932 ? 0x10000 : 0x110000;
    for (uint32_t code = 0x80; code < end; ++code) {
      std::string character(1, static_cast<char>(code));
      if (page == 65001) {
        character = Utf8Of(code);
      } else if (code > 0xFF) {
        character.insert(0, 1, static_cast<char>(code >> 8));
      }
      if (page == 65001 ? code / 0x800 == 0x1B  // a surrogate
                        : character.back() == 0 || SplitChars(character, page).size() != 1) {
        continue;
      }
      const Chars forms = FormsOf(character);
      const bool unchanged = forms == Chars(3, character);
      // Roman numerals have several codes each in 932 and no case here.
      const auto entry = list.find(character);
      if (entry == list.end() || (page == 932 && (code < 0x8200 || code > 0x84FF))) {
        EXPECT_TRUE(unchanged) << encoding << " " << Shown(character) << ", Unicode " << version;
      } else if (!unchanged || version <= "14.0.0\n") {  // later data have more letters
        EXPECT_EQ(entry->second, forms) << encoding << Shown(character);
        EXPECT_EQ(1, WRENStrEqualNoCase(forms[0].c_str(), forms[1].c_str())) << Shown(character);
      }
    }
  }
}

TEST(CaseTest, EqualButForCase) {
  struct Row {
    int32_t page, equal;
    const char *left, *right;
  };
  const Row rows[] = {
      {1252, 1, "Net Sales", "nET sALES"},
      {1252, 0, "Net", "Net "},
      {1252, 0, "\xD7", "\xF7"},           // × ÷ are no letters
      {932, 1, "\x82\x60", "\x82\x81"},    // full-width A and a
      {932, 0, "\x83\x41", "\x83\x61"},    // a letter as the trail byte
      {65001, 1, "\xCF\x82", "\xCF\x83"},  // both small sigmas
      {65001, 1, "\xC7\x85", "\xC7\x86"},  // title case of a digraph
      {65001, 0, "i", "\xC4\xB1"},         // the dotless i has another length
      {65001, 0, "\xC3", "\xE3"},          // not letters but stray bytes
      {65001, 1, nullptr, ""},
  };
  for (const Row &row : rows) {
    const CodePageScope scope(row.page);
    EXPECT_EQ(row.equal, WRENStrEqualNoCase(row.left, row.right))
        << row.page << Shown(row.left == nullptr ? "(null)" : row.left) << Shown(row.right);
  }
}

}  // namespace
