#include "platform/collation.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "closed/wren/utf8.h"
#include "platform/text.h"
#include "wreni11.h"

namespace {

// In the order in which letters with these accents follow each other.
enum Accent : uint8_t {
  PLAIN,
  ACUTE,
  GRAVE,
  BREVE,
  CIRCUMFLEX,
  CARON,
  RING,
  DIAERESIS,
  DOUBLE_ACUTE,
  TILDE,
  DOT,
  OGONEK,
  CEDILLA,
  COMMA,
  MACRON,
  STROKE,
  OTHER,
  LIGATURE
};

struct LatinLetter {
  uint16_t codePoint;  // of the capital, or of the letter itself when it has none of its length
  char base[3];        // where it stands in the alphabet
  Accent accent;       // with the base unique
};

// clang-format off
constexpr LatinLetter kLatin[] = {
    {0x00AA, "A", OTHER}, {0x00BA, "O", OTHER}, {0x00C0, "A", GRAVE},             // ª º À
    {0x00C1, "A", ACUTE}, {0x00C2, "A", CIRCUMFLEX}, {0x00C3, "A", TILDE},        // Á Â Ã
    {0x00C4, "A", DIAERESIS}, {0x00C5, "A", RING}, {0x00C6, "AE", LIGATURE},      // Ä Å Æ
    {0x00C7, "C", CEDILLA}, {0x00C8, "E", GRAVE}, {0x00C9, "E", ACUTE},           // Ç È É
    {0x00CA, "E", CIRCUMFLEX}, {0x00CB, "E", DIAERESIS}, {0x00CC, "I", GRAVE},    // Ê Ë Ì
    {0x00CD, "I", ACUTE}, {0x00CE, "I", CIRCUMFLEX}, {0x00CF, "I", DIAERESIS},    // Í Î Ï
    {0x00D0, "D", OTHER}, {0x00D1, "N", TILDE}, {0x00D2, "O", GRAVE},             // Ð Ñ Ò
    {0x00D3, "O", ACUTE}, {0x00D4, "O", CIRCUMFLEX}, {0x00D5, "O", TILDE},        // Ó Ô Õ
    {0x00D6, "O", DIAERESIS}, {0x00D8, "O", STROKE}, {0x00D9, "U", GRAVE},        // Ö Ø Ù
    {0x00DA, "U", ACUTE}, {0x00DB, "U", CIRCUMFLEX}, {0x00DC, "U", DIAERESIS},    // Ú Û Ü
    {0x00DD, "Y", ACUTE}, {0x00DE, "TH", LIGATURE}, {0x00DF, "SS", LIGATURE},     // Ý Þ ß
    {0x0100, "A", MACRON}, {0x0102, "A", BREVE}, {0x0104, "A", OGONEK},           // Ā Ă Ą
    {0x0106, "C", ACUTE}, {0x0108, "C", CIRCUMFLEX}, {0x010A, "C", DOT},          // Ć Ĉ Ċ
    {0x010C, "C", CARON}, {0x010E, "D", CARON}, {0x0110, "D", STROKE},            // Č Ď Đ
    {0x0112, "E", MACRON}, {0x0114, "E", BREVE}, {0x0116, "E", DOT},              // Ē Ĕ Ė
    {0x0118, "E", OGONEK}, {0x011A, "E", CARON}, {0x011C, "G", CIRCUMFLEX},       // Ę Ě Ĝ
    {0x011E, "G", BREVE}, {0x0120, "G", DOT}, {0x0122, "G", CEDILLA},             // Ğ Ġ Ģ
    {0x0124, "H", CIRCUMFLEX}, {0x0126, "H", STROKE}, {0x0128, "I", TILDE},       // Ĥ Ħ Ĩ
    {0x012A, "I", MACRON}, {0x012C, "I", BREVE}, {0x012E, "I", OGONEK},           // Ī Ĭ Į
    {0x0130, "I", DOT}, {0x0131, "I", OTHER}, {0x0132, "IJ", LIGATURE},           // İ ı Ĳ
    {0x0134, "J", CIRCUMFLEX}, {0x0136, "K", CEDILLA}, {0x0138, "K", OTHER},      // Ĵ Ķ ĸ
    {0x0139, "L", ACUTE}, {0x013B, "L", CEDILLA}, {0x013D, "L", CARON},           // Ĺ Ļ Ľ
    {0x013F, "L", DOT}, {0x0141, "L", STROKE}, {0x0143, "N", ACUTE},              // Ŀ Ł Ń
    {0x0145, "N", CEDILLA}, {0x0147, "N", CARON}, {0x0149, "N", OTHER},           // Ņ Ň ŉ
    {0x014A, "N", STROKE}, {0x014C, "O", MACRON}, {0x014E, "O", BREVE},           // Ŋ Ō Ŏ
    {0x0150, "O", DOUBLE_ACUTE}, {0x0152, "OE", LIGATURE}, {0x0154, "R", ACUTE},  // Ő Œ Ŕ
    {0x0156, "R", CEDILLA}, {0x0158, "R", CARON}, {0x015A, "S", ACUTE},           // Ŗ Ř Ś
    {0x015C, "S", CIRCUMFLEX}, {0x015E, "S", CEDILLA}, {0x0160, "S", CARON},      // Ŝ Ş Š
    {0x0162, "T", CEDILLA}, {0x0164, "T", CARON}, {0x0166, "T", STROKE},          // Ţ Ť Ŧ
    {0x0168, "U", TILDE}, {0x016A, "U", MACRON}, {0x016C, "U", BREVE},            // Ũ Ū Ŭ
    {0x016E, "U", RING}, {0x0170, "U", DOUBLE_ACUTE}, {0x0172, "U", OGONEK},      // Ů Ű Ų
    {0x0174, "W", CIRCUMFLEX}, {0x0176, "Y", CIRCUMFLEX}, {0x0178, "Y", DIAERESIS},  // Ŵ Ŷ Ÿ
    {0x0179, "Z", ACUTE}, {0x017B, "Z", DOT}, {0x017D, "Z", CARON},               // Ź Ż Ž
    {0x017F, "S", OTHER}, {0x0218, "S", COMMA}, {0x021A, "T", COMMA},             // ſ Ș Ț
    {0x1E9E, "SS", OTHER},                                                        // ẞ
};

// Bytes of 1252 that are Latin letters with code points elsewhere, capitals alone.
struct ByteLetter {
  uint8_t byte;
  uint16_t codePoint;
};
constexpr ByteLetter kLetters1252[] = {
    {0x83, 0x0192}, {0x8A, 0x0160}, {0x8C, 0x0152}, {0x8E, 0x017D}, {0x9F, 0x0178},
};

// Characters that are signs, by code point; in 932 the first row of the double-byte characters.
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
  KEY_SIGN = 1U << 24,
  KEY_DIGIT = 2U << 24,
  KEY_LATIN = 3U << 24,
  KEY_OTHER = 4U << 24
};

constexpr size_t kLongestChar = 4;

// A character of one key, or the part of a ligature.
struct CollationUnit {
  uint32_t key;
  Accent accent;
  bool capital;
};

struct CollationWalk {
  const char *text;
  int32_t page;
  CollationUnit second;  // of a ligature, to come next; key 0 when there is none
};

template <size_t COUNT>
bool IsIn(const CodeRange (&ranges)[COUNT], uint32_t code) {
  for (const CodeRange &range : ranges) {
    if (code >= range.first && code <= range.last) {
      return true;
    }
  }
  return false;
}

CollationUnit AsciiUnit(uint8_t byte) {
  if (byte >= 'A' && byte <= 'Z') {
    return {KEY_LATIN + byte, PLAIN, true};
  }
  if (byte >= 'a' && byte <= 'z') {
    return {KEY_LATIN + byte - ('a' - 'A'), PLAIN, false};
  }
  if (byte >= '0' && byte <= '9') {
    return {KEY_DIGIT + byte, PLAIN, false};
  }
  return {KEY_SIGN + byte, PLAIN, false};
}

// The number of the character in `bytes`: the code point in UTF-8, the byte or both bytes of a pair
// elsewhere. Bytes that are no character keep their own number.
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
  // The character alone, as the case operations work on texts.
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
    return {(IsSign(code, count, page) ? KEY_SIGN : KEY_OTHER) + code, PLAIN, capital};
  }
  if (latin->base[1] != 0) {
    *second = {KEY_LATIN + static_cast<uint32_t>(latin->base[1]), latin->accent, capital};
  }
  return {KEY_LATIN + static_cast<uint32_t>(latin->base[0]), latin->accent, capital};
}

CollationUnit NextUnit(CollationWalk *walk) {
  if (walk->second.key != 0) {
    const CollationUnit second = walk->second;
    walk->second.key = 0;
    return second;
  }
  const auto byte = static_cast<uint8_t>(*walk->text);
  if (byte == 0) {
    return {0, PLAIN, false};
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
