#include "platform/name_character.h"

#include <algorithm>
#include <cassert>
#include <iterator>

namespace {

struct CodePointRange {
  uint32_t first, last;
};

// The properties White_Space, Dash and Quotation_Mark and the general categories Pi, Pf and Cf, in
// ascending order.
constexpr CodePointRange kNotInNames[] = {
    {0x0085, 0x0085},  // next line
    {0x00A0, 0x00A0},  // no-break space
    {0x00AB, 0x00AB},  // «
    {0x00AD, 0x00AD},  // soft hyphen
    {0x00BB, 0x00BB},  // »
    {0x058A, 0x058A},  // Armenian hyphen
    {0x05BE, 0x05BE},  // Hebrew maqaf
    {0x0600, 0x0605},  // Arabic number signs
    {0x061C, 0x061C},  // Arabic letter mark
    {0x06DD, 0x06DD},  // Arabic end of ayah
    {0x070F, 0x070F},  // Syriac abbreviation mark
    {0x0890, 0x0891},  // Arabic currency marks
    {0x08E2, 0x08E2},  // Arabic disputed end of ayah
    {0x1400, 0x1400},  // Canadian syllabics hyphen
    {0x1680, 0x1680},  // Ogham space
    {0x1806, 0x1806},  // Mongolian soft hyphen
    {0x180E, 0x180E},  // Mongolian vowel separator
    {0x2000, 0x200B},  // spaces of all widths, the zero width included
    {0x200E, 0x2015},  // marks of direction, hyphens and dashes
    {0x2018, 0x201F},  // curly quotes
    {0x2028, 0x202F},  // separators, embeddings of direction, narrow no-break space
    {0x2039, 0x203A},  // ‹ ›
    {0x2053, 0x2053},  // swung dash
    {0x205F, 0x2064},  // mathematical space, word joiner, invisible operators
    {0x2066, 0x206F},  // isolates of direction and other format characters
    {0x207B, 0x207B},  // superscript minus
    {0x208B, 0x208B},  // subscript minus
    {0x2212, 0x2212},  // minus sign
    {0x2E02, 0x2E05},  // marks of editors that open and close, to U+2E21
    {0x2E09, 0x2E0A},   {0x2E0C, 0x2E0D},   {0x2E17, 0x2E17},  // double oblique hyphen
    {0x2E1A, 0x2E1A},                                          // hyphen with diaeresis
    {0x2E1C, 0x2E1D},   {0x2E20, 0x2E21},   {0x2E3A, 0x2E3B},  // long dashes
    {0x2E40, 0x2E40},                                          // double hyphen
    {0x2E42, 0x2E42},                                          // double low quotation mark
    {0x2E5D, 0x2E5D},                                          // oblique hyphen
    {0x3000, 0x3000},                                          // ideographic space
    {0x300C, 0x300F},                                          // corner brackets
    {0x301C, 0x301F},                        // wave dash, double prime quotation marks
    {0x3030, 0x3030},                        // wavy dash
    {0x30A0, 0x30A0},                        // double hyphen of kana
    {0xFE31, 0xFE32},                        // vertical dashes
    {0xFE41, 0xFE44},                        // vertical corner brackets
    {0xFE58, 0xFE58},                        // small dash
    {0xFE63, 0xFE63},                        // small hyphen-minus
    {0xFEFF, 0xFEFF},                        // byte-order mark
    {0xFF02, 0xFF02},                        // full-width quotation mark
    {0xFF07, 0xFF07},                        // full-width apostrophe
    {0xFF0D, 0xFF0D},                        // full-width hyphen-minus
    {0xFF62, 0xFF63},                        // half-width corner brackets
    {0xFFF9, 0xFFFB},                        // interlinear annotation
    {0x10EAD, 0x10EAD},                      // Yezidi hyphenation mark
    {0x110BD, 0x110BD},                      // Kaithi number signs
    {0x110CD, 0x110CD}, {0x13430, 0x1343F},  // joiners of hieroglyphs
    {0x1BCA0, 0x1BCA3},                      // shorthand format
    {0x1D173, 0x1D17A},                      // musical format
    {0xE0001, 0xE0001},                      // tags
    {0xE0020, 0xE007F},
};

}  // namespace

bool IsNameCharacter(uint32_t codePoint) {
  assert(codePoint >= 0x80);
  const auto *range =
      std::lower_bound(std::begin(kNotInNames), std::end(kNotInNames), codePoint,
                       [](const CodePointRange &row, uint32_t point) { return row.last < point; });
  return range == std::end(kNotInNames) || codePoint < range->first;
}
