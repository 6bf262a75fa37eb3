// Texts of the interface in widgets: every byte string is preserved, and positions match.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>

#include "tests/wren/text_model.h"
#include "windows/qt/text_map.h"
#include "wreni11.h"

namespace {

using namespace qt_windows;

constexpr TextKind kKinds[] = {TextKind::OneLine, TextKind::Lines};

bool IsEscape(QChar unit) {
  return unit.unicode() > 0xDC00 && unit.unicode() <= 0xDCFF;
}

// The bytes of a code, one or two.
std::string BytesOf(uint32_t code) {
  const char bytes[] = {static_cast<char>(code >> 8), static_cast<char>(code)};
  return code > 0xFF ? std::string(bytes, 2) : std::string(bytes + 1, 1);
}

// Parts of texts that are easily misinterpreted, in UTF-8 and as single bytes.
std::string HostileText(std::mt19937 &random, int32_t page) {
  static const Chars pieces = {
      "\r\n", "\n",   "\r",   "\xE2\x80\xA8", "\xE2\x80\xA9", "\xEF\xB7\x90",
      "\x01", "\x7F", "\x85", "\xEF\xB7\x91", "\xEF\xBF\xBC", "\xC2\xA0",
      "\x80", "\xED", "\xFF", "\xEF\xBF\xBE", "\xEF\xBB\xBF", "\xF0\x9F\x98\x80"};
  std::string text;
  for (auto left = random() % 6; left > 0; --left) {
    text += RandomText(random, page, 4) + pieces[random() % pieces.size()];
    text += static_cast<char>(1 + random() % 255);
  }
  return text;
}

void ExpectBack(const std::string &text, int32_t page) {
  for (const TextKind kind : kKinds) {
    const QString shown = ShownText(text.c_str(), kind);
    ASSERT_EQ(BytesOfText(shown, kind).toStdString(), text) << Shown(text) << page;
    for (const QChar unit : shown) {
      ASSERT_FALSE(QString("\r\n\uFDD0\uFDD1\uFFFC").contains(unit)) << Shown(text) << page;
      ASSERT_TRUE(kind == TextKind::Lines || !QString("\u2028\u2029").contains(unit))
          << Shown(text) << page;
    }
  }
}

TEST(QtTextMap, EveryTextIsMappedBack) {
  for (const int32_t page : kCodePages) {
    const CodePageScope scope(page);
    for (uint32_t code = 0; code < 0x10000; ++code) {
      const std::string bytes = BytesOf(code);
      ExpectBack(bytes.substr(0, bytes.find('\0')), page);
    }
    std::mt19937 random(7);
    for (int32_t round = 0; round < 20000; ++round) {
      ExpectBack(HostileText(random, page), page);
    }
  }
}

// Where a text can be cut, in units and in bytes: between the characters and the bytes that are
// none, a line break being one character.
struct Cut {
  qsizetype position;
  int32_t byte;
};
std::vector<Cut> CutsOf(const std::string &text, TextKind kind, int32_t page) {
  std::vector<Cut> cuts = {{0, 0}};
  const Chars characters = SplitChars(text, page);
  for (size_t index = 0; index < characters.size(); ++index) {
    const bool isBreak =
        kind == TextKind::Lines && JoinChars(characters, static_cast<int64_t>(index), 2) == "\r\n";
    const std::string character = isBreak ? "\r\n" : characters[index];
    index += isBreak ? 1 : 0;
    const QString alone = ShownText(character.c_str(), kind);
    const qsizetype steps = IsEscape(alone[0]) ? alone.size() : 1;
    const auto bytes = static_cast<int32_t>(character.size() / static_cast<size_t>(steps));
    for (qsizetype step = 0; step < steps; ++step) {
      cuts.push_back({cuts.back().position + alone.size() / steps, cuts.back().byte + bytes});
    }
  }
  return cuts;
}

TEST(QtTextMap, PlacesAreThoseOfTheCharacters) {
  for (const int32_t page : kCodePages) {
    const CodePageScope scope(page);
    std::mt19937 random(11);
    for (int32_t round = 0; round < 3000; ++round) {
      const TextKind kind = kKinds[round % 2];
      const std::string text = HostileText(random, page);
      const QString shown = ShownText(text.c_str(), kind);
      const std::vector<Cut> cuts = CutsOf(text, kind, page);
      ASSERT_EQ(shown.size(), cuts.back().position) << Shown(text) << page;
      const auto cutAt = [&](auto member, qsizetype place) {
        const auto after = [&](const Cut &cut) { return cut.*member > place; };
        const auto found = std::find_if(cuts.begin() + 1, cuts.end(), after);
        return *(found - 1);
      };
      for (int32_t place = -1; place <= shown.size() + 1; ++place) {
        EXPECT_EQ(ByteOfPosition(shown, place, kind), cutAt(&Cut::position, place).byte)
            << Shown(text) << page << " position " << place;
      }
      for (int32_t place = -1; place <= static_cast<int32_t>(text.size()) + 1; ++place) {
        EXPECT_EQ(PositionOfByte(shown, place, kind), cutAt(&Cut::byte, place).position)
            << Shown(text) << page << " byte " << place;
      }
    }
  }
}

// The characters of a code page by another implementation, by their bytes.
std::map<std::string, char16_t> KnownCharacters(int32_t page) {
  const std::string script = "codec = 'cp" + std::to_string(page) + R"('
for c in range(1, 65536):
  b = bytes([c]) if c < 256 else c.to_bytes(2, 'big')
  t = b.decode(codec, 'ignore')
  if len(t) == 1 and len(t.encode(codec)) == len(b): print(c, ord(t)))";
  std::map<std::string, char16_t> known;
  for (const std::string &line : LinesOf("python3 -c \"" + script + "\"")) {
    uint32_t code = 0, character = 0;
    std::istringstream(line) >> code >> character;
    known[BytesOf(code)] = static_cast<char16_t>(character);
  }
  return known;
}

// Each is shown, unless the code page has it twice and writes it in the other way, or it is one of
// the bytes that have none in the platform's own page.
TEST(QtTextMap, CharactersAreThoseOfTheCodePage) {
  for (const int32_t page : {1252, 932}) {
    const CodePageScope scope(page);
    auto known = KnownCharacters(page);
    int32_t twice = 0;
    for (uint32_t code = 1; code < 0x10000; ++code) {
      const std::string bytes = BytesOf(code);
      const QString shown = ShownText(bytes.c_str(), TextKind::OneLine);
      const auto found = known.find(bytes);
      const bool isOne = bytes.find('\0') == bytes.npos && SplitChars(bytes, page).size() == 1;
      if (isOne && !IsEscape(shown[0])) {
        ASSERT_TRUE(found != known.end()) << Shown(bytes) << page;
        EXPECT_EQ(shown, QString(QChar(found->second))) << Shown(bytes) << page;
      } else if (found != known.end() && code > 0xFF) {
        ++twice;
        const std::string written = TypedBytes(QString(QChar(found->second))).toStdString();
        EXPECT_EQ(known[written], found->second) << Shown(bytes) << page << Shown(written);
      } else if (found != known.end()) {
        EXPECT_NE(std::string("\n\r\x80\xA0\xFD\xFE\xFF").find(bytes), bytes.npos) << Shown(bytes);
      }
    }
    EXPECT_EQ(twice, page == 932 ? 398 : 0);
  }
}

TEST(QtTextMap, WhatCanBeEntered) {
  const struct {
    int32_t page;
    TextKind kind;
    QString entered;
    int32_t room;
    std::string bytes;
    bool whole;
  } rows[] = {
      {1252, kKinds[1], "a\u20AC\u3042\u00E9", -1, "a\x80\xE9", false},  // left out, not the rest
      {1252, kKinds[1], "a\nb\rc\r\nd\u2028\u2029\t", -1, "a\nb\nc\nd\n\n\t", true},
      {1252, kKinds[1], "a\r\nb", 2, "a\n", false},  // a break needs one byte
      {1252, kKinds[0], "a\nb", -1, "a", false},
      {932, kKinds[1], "\u3042x\u3042y", 4, "\x82\xA0x", false},  // no shorter one after it
      {932, kKinds[1], "\u3042\u3042", 4, "\x82\xA0\x82\xA0", true},
      {932, kKinds[0], "\u301C\u2212\u00A5", -1, "\x81\x60\x81\x7C\\", true},  // other names
      {65001, kKinds[0], "\U0001F600\u00A0", 5, "\xF0\x9F\x98\x80", false},
      {65001, kKinds[0], QString(QChar(0xDCE9)) + QChar(0xD800) + QChar(0) + "a", -1, "a", false},
      {65001, kKinds[1], "\uFDD0", -1, "\xEF\xB7\x90", true},
  };
  for (const auto &row : rows) {
    const CodePageScope scope(row.page);
    bool whole = true;
    const QString enterable = EnterableText(row.entered, row.kind, row.room, &whole);
    EXPECT_EQ(BytesOfText(enterable, row.kind).toStdString(), row.bytes) << Shown(row.bytes);
    EXPECT_EQ(enterable, ShownText(row.bytes.c_str(), row.kind)) << Shown(row.bytes);
    EXPECT_EQ(whole, row.whole) << Shown(row.bytes);
  }
}

TEST(QtTextMap, CopiedTextHasNoEscapes) {
  const CodePageScope scope(65001);
  EXPECT_EQ(CaptionText("\xF0\x9F\x98\x80\xFF\n"), QString("\U0001F600\uFFFD\uFFFD"));
  EXPECT_EQ(HarmlessText(ShownText("a\xFF\r\nb\n\xC2\xA0", TextKind::Lines)),
            QString("a\uFFFD\nb\n\u00A0"));
  EXPECT_EQ(TypedBytes(QString("\u00E9\n")), "\xC3\xA9\n");
  EXPECT_EQ(TypedBytes(QString("a") + QChar(0xDCE9)), "") << "a half of a pair has no bytes";
}

}  // namespace
