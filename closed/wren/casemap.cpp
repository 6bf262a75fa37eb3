#include "closed/wren/casemap.h"

#include <algorithm>
#include <span>

#include "closed/wren/casemap_table.h"
#include "closed/wren/utf8.h"

namespace {

// clang-format off
constexpr CaseRun kUpper1252[] = {
    {0x9A, 0x9E, 2, -0x10},      // š œ ž
    {0xE0, 0xF6, 1, -0x20},      // à to ö
    {0xF8, 0xFE, 1, -0x20},      // ø to þ
    {0xFF, 0xFF, 1, -0x60},      // ÿ
};
constexpr CaseRun kLower1252[] = {
    {0x8A, 0x8E, 2, 0x10},
    {0x9F, 0x9F, 1, 0x60},
    {0xC0, 0xD6, 1, 0x20},
    {0xD8, 0xDE, 1, 0x20},
};

constexpr CaseRun kUpper932[] = {
    {0x8281, 0x829A, 1, -0x21},  // full-width Latin
    {0x83BF, 0x83D6, 1, -0x20},  // Greek
    {0x8470, 0x847E, 1, -0x30},  // Cyrillic up to n; 7F is not a trail byte
    {0x8480, 0x8491, 1, -0x31},  // Cyrillic from o
};
constexpr CaseRun kLower932[] = {
    {0x8260, 0x8279, 1, 0x21},
    {0x839F, 0x83B6, 1, 0x20},
    {0x8440, 0x844E, 1, 0x30},
    {0x844F, 0x8460, 1, 0x31},
};

struct CodeRange {
  uint32_t first, last;
};

// Code points that separate words (1252 and UTF-8).
constexpr CodeRange kSeparators[] = {
    {0x0000, 0x002F}, {0x003A, 0x0040}, {0x005B, 0x0060}, {0x007B, 0x00A9},
    {0x00AB, 0x00B1}, {0x00B4, 0x00B4}, {0x00B6, 0x00B8}, {0x00BB, 0x00BF},  // all but ª ² ³ µ ¹ º
    {0x00D7, 0x00D7}, {0x00F7, 0x00F7},  // × ÷
    {0x2000, 0x206F}, {0x207A, 0x207E}, {0x208A, 0x208E}, {0x20A0, 0x20CF},  // punctuation and
                                         // currency signs, but not raised and lowered digits
    {0x2190, 0x245F}, {0x2500, 0x2BFF},  // arrows, mathematics, boxes, symbols
    {0x2E00, 0x2E7F},                    // more punctuation
    {0x3000, 0x3004}, {0x3008, 0x3020},  // East Asian punctuation
    {0xFF01, 0xFF0F}, {0xFF1A, 0xFF20}, {0xFF3B, 0xFF40}, {0xFF5B, 0xFF65},  // full-width
    {0xFFFC, 0xFFFD},
    {0x1F000, 0x1FAFF},                  // pictures
    {kStrayByte, UINT32_MAX},
};

// Characters of 932 that separate words. 8152 to 815B are marks inside words.
constexpr CodeRange kSeparators932[] = {
    {0x0000, 0x002F}, {0x003A, 0x0040}, {0x005B, 0x0060}, {0x007B, 0x00A5}, {0x00E0, 0x00FF},
    {0x8100, 0x8151}, {0x815C, 0x81FF},
};
// clang-format on

// `otherwise` for a code that is in no run.
uint32_t Mapped(std::span<const CaseRun> runs, uint32_t code, uint32_t otherwise) {
  const auto run =
      std::lower_bound(runs.begin(), runs.end(), code,
                       [](const CaseRun &left, uint32_t wanted) { return left.last < wanted; });
  if (run == runs.end() || code < run->first || (code - run->first) % run->step != 0) {
    return otherwise;
  }
  return code + static_cast<uint32_t>(run->delta);
}

bool IsIn(std::span<const CodeRange> ranges, uint32_t code) {
  const auto range =
      std::lower_bound(ranges.begin(), ranges.end(), code,
                       [](const CodeRange &left, uint32_t wanted) { return left.last < wanted; });
  return range != ranges.end() && code >= range->first;
}

}  // namespace

TextChar CharAt(const char *text, CodePage page) {
  const size_t bytes = CharBytes(text, page);
  const auto first = static_cast<uint8_t>(text[0]);
  if (first < 0x80 || page == CodePage::Western) {
    return {first, bytes};
  }
  if (page == CodePage::Japanese) {
    return {bytes == 2 ? uint32_t{first} << 8 | static_cast<uint8_t>(text[1]) : first, bytes};
  }
  uint32_t code = 0;
  if (DecodeUtf8(text, &code) == 0) {
    code = kStrayByte + first;
  }
  return {code, bytes};
}

uint32_t UpperCode(uint32_t code, CodePage page) {
  if (code < 0x80) {
    return code >= 'a' && code <= 'z' ? code - ('a' - 'A') : code;
  }
  switch (page) {
    case CodePage::Western:
      return Mapped(kUpper1252, code, code);
    case CodePage::Japanese:
      return Mapped(kUpper932, code, code);
    case CodePage::Utf8:
      return Mapped(kUpperUtf8, code, code);
  }
  return code;
}

uint32_t LowerCode(uint32_t code, CodePage page) {
  if (code < 0x80) {
    return code >= 'A' && code <= 'Z' ? code + ('a' - 'A') : code;
  }
  switch (page) {
    case CodePage::Western:
      return Mapped(kLower1252, code, code);
    case CodePage::Japanese:
      return Mapped(kLower932, code, code);
    case CodePage::Utf8:
      return Mapped(kLowerUtf8, code, code);
  }
  return code;
}

uint32_t TitleCode(uint32_t code, CodePage page) {
  const uint32_t upper = UpperCode(code, page);
  return page == CodePage::Utf8 && code >= 0x80 ? Mapped(kTitleUtf8, code, upper) : upper;
}

uint32_t CaselessCode(uint32_t code, CodePage page) {
  return code < 0x80 ? UpperCode(code, page) : UpperCode(LowerCode(code, page), page);
}

void WriteChar(char *target, uint32_t code, CodePage page) {
  if (code >= 0x80 && page == CodePage::Utf8 && code < kStrayByte) {
    EncodeUtf8(code, target);
    return;
  }
  if (code > 0xFF && page == CodePage::Japanese) {
    *target++ = static_cast<char>(code >> 8);
  }
  *target = static_cast<char>(code & 0xFF);
}

bool IsWordCode(uint32_t code, CodePage page) {
  switch (page) {
    case CodePage::Western:
      return !IsIn(kSeparators, CodePointOf1252(static_cast<uint8_t>(code)));
    case CodePage::Japanese:
      return !IsIn(kSeparators932, code);
    case CodePage::Utf8:
      return !IsIn(kSeparators, code);
  }
  return false;
}

bool JoinsLetters(uint32_t code, CodePage page) {
  switch (page) {
    case CodePage::Western:
      return code == '\'' || code == 0x92 || code == 0xB7;
    case CodePage::Japanese:
      return code == '\'' || code == 0x8166;
    case CodePage::Utf8:
      return code == '\'' || code == 0x2019 || code == 0xB7;
  }
  return false;
}
