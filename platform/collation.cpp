#include "platform/collation.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <iterator>

#include "closed/wren/utf8.h"
#include "platform/text.h"
#include "wreni11.h"

namespace {

// In the order in which letters with these accents follow each other.
enum Accent : uint8_t {
  kPlain,
  kAcute,
  kGrave,
  kBreve,
  kCircumflex,
  kCaron,
  kRing,
  kDiaeresis,
  kDoubleAcute,
  kTilde,
  kDot,
  kOgonek,
  kCedilla,
  kComma,
  kMacron,
  kStroke,
  kOther,
  kLigature
};

struct LatinLetter {
  uint16_t codePoint;  // of the capital, or of the letter itself when it has none of its length
  char base[3];        // its place in the alphabet
  Accent accent;       // with the base unique
};

// clang-format off
constexpr LatinLetter kLatin[] = {
    {0x00AA, "A", kOther}, {0x00BA, "O", kOther}, {0x00C0, "A", kGrave},             // ª º À
    {0x00C1, "A", kAcute}, {0x00C2, "A", kCircumflex}, {0x00C3, "A", kTilde},        // Á Â Ã
    {0x00C4, "A", kDiaeresis}, {0x00C5, "A", kRing}, {0x00C6, "AE", kLigature},      // Ä Å Æ
    {0x00C7, "C", kCedilla}, {0x00C8, "E", kGrave}, {0x00C9, "E", kAcute},           // Ç È É
    {0x00CA, "E", kCircumflex}, {0x00CB, "E", kDiaeresis}, {0x00CC, "I", kGrave},    // Ê Ë Ì
    {0x00CD, "I", kAcute}, {0x00CE, "I", kCircumflex}, {0x00CF, "I", kDiaeresis},    // Í Î Ï
    {0x00D0, "D", kOther}, {0x00D1, "N", kTilde}, {0x00D2, "O", kGrave},             // Ð Ñ Ò
    {0x00D3, "O", kAcute}, {0x00D4, "O", kCircumflex}, {0x00D5, "O", kTilde},        // Ó Ô Õ
    {0x00D6, "O", kDiaeresis}, {0x00D8, "O", kStroke}, {0x00D9, "U", kGrave},        // Ö Ø Ù
    {0x00DA, "U", kAcute}, {0x00DB, "U", kCircumflex}, {0x00DC, "U", kDiaeresis},    // Ú Û Ü
    {0x00DD, "Y", kAcute}, {0x00DE, "TH", kLigature}, {0x00DF, "SS", kLigature},     // Ý Þ ß
    {0x0100, "A", kMacron}, {0x0102, "A", kBreve}, {0x0104, "A", kOgonek},           // Ā Ă Ą
    {0x0106, "C", kAcute}, {0x0108, "C", kCircumflex}, {0x010A, "C", kDot},          // Ć Ĉ Ċ
    {0x010C, "C", kCaron}, {0x010E, "D", kCaron}, {0x0110, "D", kStroke},            // Č Ď Đ
    {0x0112, "E", kMacron}, {0x0114, "E", kBreve}, {0x0116, "E", kDot},              // Ē Ĕ Ė
    {0x0118, "E", kOgonek}, {0x011A, "E", kCaron}, {0x011C, "G", kCircumflex},       // Ę Ě Ĝ
    {0x011E, "G", kBreve}, {0x0120, "G", kDot}, {0x0122, "G", kCedilla},             // Ğ Ġ Ģ
    {0x0124, "H", kCircumflex}, {0x0126, "H", kStroke}, {0x0128, "I", kTilde},       // Ĥ Ħ Ĩ
    {0x012A, "I", kMacron}, {0x012C, "I", kBreve}, {0x012E, "I", kOgonek},           // Ī Ĭ Į
    {0x0130, "I", kDot}, {0x0131, "I", kOther}, {0x0132, "IJ", kLigature},           // İ ı Ĳ
    {0x0134, "J", kCircumflex}, {0x0136, "K", kCedilla}, {0x0138, "K", kOther},      // Ĵ Ķ ĸ
    {0x0139, "L", kAcute}, {0x013B, "L", kCedilla}, {0x013D, "L", kCaron},           // Ĺ Ļ Ľ
    {0x013F, "L", kDot}, {0x0141, "L", kStroke}, {0x0143, "N", kAcute},              // Ŀ Ł Ń
    {0x0145, "N", kCedilla}, {0x0147, "N", kCaron}, {0x0149, "N", kOther},           // Ņ Ň ŉ
    {0x014A, "N", kStroke}, {0x014C, "O", kMacron}, {0x014E, "O", kBreve},           // Ŋ Ō Ŏ
    {0x0150, "O", kDoubleAcute}, {0x0152, "OE", kLigature}, {0x0154, "R", kAcute},  // Ő Œ Ŕ
    {0x0156, "R", kCedilla}, {0x0158, "R", kCaron}, {0x015A, "S", kAcute},           // Ŗ Ř Ś
    {0x015C, "S", kCircumflex}, {0x015E, "S", kCedilla}, {0x0160, "S", kCaron},      // Ŝ Ş Š
    {0x0162, "T", kCedilla}, {0x0164, "T", kCaron}, {0x0166, "T", kStroke},          // Ţ Ť Ŧ
    {0x0168, "U", kTilde}, {0x016A, "U", kMacron}, {0x016C, "U", kBreve},            // Ũ Ū Ŭ
    {0x016E, "U", kRing}, {0x0170, "U", kDoubleAcute}, {0x0172, "U", kOgonek},      // Ů Ű Ų
    {0x0174, "W", kCircumflex}, {0x0176, "Y", kCircumflex}, {0x0178, "Y", kDiaeresis},  // Ŵ Ŷ Ÿ
    {0x0179, "Z", kAcute}, {0x017B, "Z", kDot}, {0x017D, "Z", kCaron},               // Ź Ż Ž
    {0x017F, "S", kOther}, {0x0218, "S", kComma}, {0x021A, "T", kComma},             // ſ Ș Ț
    {0x1E9E, "SS", kOther},                                                        // ẞ
};

// Bytes of 1252 that are Latin letters with code points elsewhere, capitals alone.
struct ByteLetter {
  uint8_t byte;
  uint16_t codePoint;
};
constexpr ByteLetter kLetters1252[] = {
    {0x83, 0x0192}, {0x8A, 0x0160}, {0x8C, 0x0152}, {0x8E, 0x017D}, {0x9F, 0x0178},
};

// Characters that sort as signs, by code point; in 932 the first row of the double-byte characters.
struct CodeRange {
  uint32_t first, last;
};
constexpr CodeRange kSigns[] = {
    {0x0000, 0x00B4}, {0x00B6, 0x00BF}, {0x00D7, 0x00D7}, {0x00F7, 0x00F7},  // all but µ
    {0x2000, 0x2BFF}, {0x3000, 0x3004},
};
constexpr CodeRange kSigns932[] = {
    {0x00A0, 0x00A5}, {0x8140, 0x81FC},
};
// clang-format on

// Keys are a class and a value in it; 0 is the end of the text.
enum KeyClass : uint32_t {
  kKeySign = 1U << 24,
  kKeyDigit = 2U << 24,
  kKeyLatin = 3U << 24,
  kKeyOther = 4U << 24
};

// A character of one key, or the part of a ligature.
struct CollationUnit {
  uint32_t key;
  Accent accent;
  bool capital;
};

struct CollationWalk {
  const char *text;
  int32_t page;
  CollationUnit second;  // of a ligature, returned next; key 0 when there is none
};

template <size_t Count>
bool IsIn(const CodeRange (&ranges)[Count], uint32_t code) {
  for (const CodeRange &range : ranges) {
    if (code >= range.first && code <= range.last) {
      return true;
    }
  }
  return false;
}

CollationUnit AsciiUnit(uint8_t byte) {
  if (byte >= 'A' && byte <= 'Z') {
    return {kKeyLatin + byte, kPlain, true};
  }
  if (byte >= 'a' && byte <= 'z') {
    return {kKeyLatin + byte - ('a' - 'A'), kPlain, false};
  }
  if (byte >= '0' && byte <= '9') {
    return {kKeyDigit + byte, kPlain, false};
  }
  return {kKeySign + byte, kPlain, false};
}

// The number of the character in `bytes`: the code point in UTF-8, the byte or both bytes of a pair
// elsewhere. A byte that is not a character has its own value.
uint32_t CharCode(const char *bytes, size_t count, int32_t page) {
  const auto first = static_cast<uint8_t>(bytes[0]);
  if (count == 1) {
    return first;
  }
  if (page == kCodePage932) {
    return uint32_t{first} << 8 | static_cast<uint8_t>(bytes[1]);
  }
  uint32_t code = 0;
  DecodeUtf8(bytes, &code);
  return code;
}

// The row of a letter, or null. Letters of 932 have none.
const LatinLetter *FindLatin(uint32_t code, size_t count, int32_t page) {
  if (page == kCodePage932 || (page == kCodePageUtf8 && count == 1)) {
    return nullptr;
  }
  for (const ByteLetter &letter : kLetters1252) {
    if (page == 1252 && letter.byte == code) {
      code = letter.codePoint;
    }
  }
  const LatinLetter *row = std::lower_bound(
      std::begin(kLatin), std::end(kLatin), code,
      [](const LatinLetter &left, uint32_t wanted) { return left.codePoint < wanted; });
  return row != std::end(kLatin) && row->codePoint == code ? row : nullptr;
}

bool IsSign(uint32_t code, size_t count, int32_t page) {
  if (page == kCodePage932) {
    return IsIn(kSigns932, code);
  }
  return !(page == kCodePageUtf8 && count == 1) && IsIn(kSigns, code);
}

// The unit of a character from 128 up, and the second one of a ligature.
CollationUnit LongUnit(const char *text, size_t count, int32_t page, CollationUnit *second) {
  // The character as a string, for the case operations.
  char bytes[kLongestChar + 1] = {};
  char small[kLongestChar + 1] = {};
  std::copy_n(text, count, bytes);
  std::copy_n(text, count, small);
  WRENStrLower(small);
  const bool capital = !std::equal(bytes, bytes + count, small);
  WRENStrUpper(small);
  const uint32_t code = CharCode(small, count, page);
  const LatinLetter *latin = FindLatin(code, count, page);
  if (latin == nullptr) {
    return {(IsSign(code, count, page) ? kKeySign : kKeyOther) + code, kPlain, capital};
  }
  if (latin->base[1] != 0) {
    *second = {kKeyLatin + static_cast<uint32_t>(latin->base[1]), latin->accent, capital};
  }
  return {kKeyLatin + static_cast<uint32_t>(latin->base[0]), latin->accent, capital};
}

CollationUnit NextUnit(CollationWalk *walk) {
  if (walk->second.key != 0) {
    const CollationUnit second = walk->second;
    walk->second.key = 0;
    return second;
  }
  const auto byte = static_cast<uint8_t>(*walk->text);
  if (byte == 0) {
    return {0, kPlain, false};
  }
  if (byte < 0x80) {
    ++walk->text;
    return AsciiUnit(byte);
  }
  const char *next = WRENStrAdvance(walk->text, 1);
  const auto count = static_cast<size_t>(next - walk->text);
  const CollationUnit unit = LongUnit(walk->text, count, walk->page, &walk->second);
  walk->text = next;
  return unit;
}

int32_t Sign(uint32_t left, uint32_t right) {
  return left < right ? -1 : left > right ? 1 : 0;
}

}  // namespace

int32_t CollateTexts(const char *left, const char *right, int32_t page) {
  assert(left != nullptr && right != nullptr && page == ActiveCodePage());
  CollationWalk leftWalk = {left, page, {}};
  CollationWalk rightWalk = {right, page, {}};
  int32_t accents = 0;
  int32_t cases = 0;
  for (;;) {
    const CollationUnit one = NextUnit(&leftWalk);
    const CollationUnit other = NextUnit(&rightWalk);
    if (one.key != other.key) {
      return Sign(one.key, other.key);
    }
    if (one.key == 0) {
      break;
    }
    accents = accents != 0 ? accents : Sign(one.accent, other.accent);
    cases = cases != 0 ? cases : Sign(one.capital ? 1 : 0, other.capital ? 1 : 0);
  }
  return accents != 0 ? accents : cases;
}
