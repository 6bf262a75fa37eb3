// Number pictures, see docs/pictures.md.
//
// A picture is read twice, item by item: once to check it and to count the places of each section,
// and then to write the section for the number.
#include "closed/wren/number_picture.h"

#include <cstddef>
#include <cstring>

#include "closed/wren/codepage.h"
#include "closed/wren/number_layout.h"

namespace {

enum class Item : uint8_t {
  End,
  NextSection,  // ;
  Zero,         // 0
  Optional,     // #
  Group,        // ,
  Point,        // .
  Percent,      // %
  Literal,
  Bad
};

struct PictureItem {
  Item kind;
  const char *text;  // of a literal
  size_t bytes;
};

struct PictureSection {
  const char *start;
  int32_t integerPlaces;
  int32_t integerZeros;  // integer digits that are always written
  int32_t fractionPlaces;
  int32_t fractionZeros;
  bool hasPoint;
  bool grouped;
  bool percent;
};

constexpr int32_t kSections = 3;  // positive, negative, zero

struct Picture {
  PictureSection section[kSections];
  int32_t count;
};

// Reads a quoted literal from its first quote on; Bad without the closing one. No byte of a
// double-byte character is taken for a quote.
PictureItem ReadQuoted(const char **cursor, CodePage page) {
  const char quote = **cursor;
  const char *start = ++*cursor;
  while (**cursor != 0 && **cursor != quote) {
    *cursor += CharBytes(*cursor, page);
  }
  if (**cursor == 0) {
    return {Item::Bad, nullptr, 0};
  }
  return {Item::Literal, start, static_cast<size_t>((*cursor)++ - start)};
}

// Characters that may be written without quotes: no letters, which are reserved and are mostly from
// a date picture, no digits and no control bytes.
bool StandsForItself(char byte) {
  const bool letter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
  const bool digit = byte >= '1' && byte <= '9';
  const bool control = (byte >= 0 && byte < ' ') || byte == 127;
  return !letter && !digit && !control;
}

PictureItem ReadItem(const char **cursor, CodePage page) {
  const char *start = *cursor;
  if (*start == '"' || *start == '\'') {
    return ReadQuoted(cursor, page);
  }
  if (*start == 0) {
    return {Item::End, start, 0};
  }
  if (*start == '\\') {
    const size_t escaped = CharBytes(++start, page);
    *cursor = start + escaped;
    return {escaped != 0 ? Item::Literal : Item::Bad, start, escaped};
  }
  const size_t bytes = CharBytes(start, page);
  *cursor = start + bytes;
  switch (*start) {
    case ';':
      return {Item::NextSection, start, bytes};
    case '0':
      return {Item::Zero, start, bytes};
    case '#':
      return {Item::Optional, start, bytes};
    case ',':
      return {Item::Group, start, bytes};
    case '.':
      return {Item::Point, start, bytes};
    case '%':
      return {Item::Percent, start, bytes};
    default:
      return {StandsForItself(*start) ? Item::Literal : Item::Bad, start, bytes};
  }
}

// Counts a place. A # between a 0 and the point counts as 0.
void CountPlace(PictureSection *section, bool zero) {
  if (section->hasPoint) {
    section->fractionPlaces += 1;
    if (zero) {
      section->fractionZeros = section->fractionPlaces;
    }
  } else {
    section->integerPlaces += 1;
    if (zero || section->integerZeros > 0) {
      section->integerZeros += 1;
    }
  }
}

// Reads one section and returns what ended it: End, NextSection or Bad.
Item ReadSection(const char **cursor, CodePage page, PictureSection *section) {
  section->start = *cursor;
  bool groupOpen = false;  // a comma is pending until the next place
  for (;;) {
    const Item kind = ReadItem(cursor, page).kind;
    switch (kind) {
      case Item::Zero:
      case Item::Optional:
        CountPlace(section, kind == Item::Zero);
        groupOpen = false;
        // Limited: the output cannot show more places, and the counts cannot overflow.
        if (section->integerPlaces + section->fractionPlaces >= kNumberTextCapacity) {
          return Item::Bad;
        }
        break;
      case Item::Group:
        if (section->hasPoint || section->integerPlaces == 0) {
          return Item::Bad;
        }
        groupOpen = true;
        section->grouped = true;
        break;
      case Item::Point:
        if (section->hasPoint || groupOpen) {
          return Item::Bad;
        }
        section->hasPoint = true;
        break;
      case Item::Percent:
        if (section->percent) {
          return Item::Bad;
        }
        section->percent = true;
        break;
      case Item::Literal:
        break;
      case Item::Bad:
        return Item::Bad;
      case Item::End:
      case Item::NextSection:
        return groupOpen || (section->hasPoint && section->fractionPlaces == 0) ? Item::Bad : kind;
    }
  }
}

bool HasPlaces(const PictureSection &section) {
  return section.integerPlaces + section.fractionPlaces > 0;
}

bool ReadPicture(const char *text, CodePage page, Picture *picture) {
  *picture = {};
  if (text == nullptr) {
    return false;
  }
  Item ending = Item::NextSection;
  while (ending == Item::NextSection && picture->count < kSections) {
    ending = ReadSection(&text, page, &picture->section[picture->count++]);
  }
  return ending == Item::End && HasPlaces(picture->section[0]);
}

// The integer digits for a place of the picture. Places count from the point, 0 being the ones;
// `shown` digits fill them, leading zeros included. A place beyond these has no digit, and the
// picture's leftmost place has all digits from `first` down to its own.
void PutIntegerPlace(NumberText *target, const PictureSection &section, const NumberDigits &digits,
                     const NumberMarks &marks, int32_t place) {
  const int32_t present = NumberIntegerPlaces(digits);
  const int32_t shown = present > section.integerZeros ? present : section.integerZeros;
  int32_t first = place;
  if (place == section.integerPlaces - 1 && shown > section.integerPlaces) {
    first = shown - 1;
  }
  if (place >= shown) {
    return;
  }
  for (; first >= place; --first) {
    NumberPutInteger(target, digits, first, marks);
  }
}

// The position in the number while a section is written.
struct PictureCursor {
  int32_t integerPlace;   // the next one, counted down
  int32_t fractionPlace;  // the last one, counted up
};

void PutItem(NumberText *target, const PictureSection &section, const NumberDigits &digits,
             const NumberMarks &marks, const PictureItem &item, PictureCursor *cursor) {
  const int32_t present = NumberFractionPlaces(digits);
  const int32_t fraction = present > section.fractionZeros ? present : section.fractionZeros;
  switch (item.kind) {
    case Item::Zero:
    case Item::Optional:
      if (cursor->integerPlace > 0) {
        PutIntegerPlace(target, section, digits, marks, --cursor->integerPlace);
      } else if (++cursor->fractionPlace <= fraction) {
        NumberPutByte(target, NumberDigitAt(digits, -cursor->fractionPlace));
      }
      break;
    case Item::Point:
      if (section.integerPlaces == 0) {
        for (int32_t place = NumberIntegerPlaces(digits); place-- > 0;) {
          NumberPutInteger(target, digits, place, marks);
        }
      }
      if (fraction > 0) {
        NumberPutText(target, marks.decimal);
      }
      break;
    case Item::Percent:
      NumberPutByte(target, '%');
      break;
    case Item::Literal:
      for (size_t i = 0; i < item.bytes && !target->tooLong; ++i) {
        NumberPutByte(target, item.text[i]);
      }
      break;
    case Item::Group:
    case Item::NextSection:
    case Item::End:
    case Item::Bad:
      break;
  }
}

void PutSection(NumberText *target, const PictureSection &section, const NumberDigits &digits,
                const NumberMarks &marks, CodePage page) {
  NumberMarks used = marks;
  if (!section.grouped) {
    used.thousands[0] = 0;
  }
  PictureCursor cursor = {section.integerPlaces, 0};
  const char *at = section.start;
  while (!target->tooLong) {
    const PictureItem item = ReadItem(&at, page);
    if (item.kind == Item::End || item.kind == Item::NextSection) {
      return;
    }
    PutItem(target, section, digits, used, item, &cursor);
  }
}

// The digits of a number that a section shows: multiplied by 100 for a percentage, and rounded.
bool DigitsFor(const PictureSection &section, const NumberValue &number, NumberDigits *digits) {
  const int32_t scale = section.percent ? 2 : 0;
  NumberValue rounded = number;
  if (HasPlaces(section)) {
    WRENNumRound(&rounded, &number, section.fractionPlaces + scale);
  }
  if (!NumberDigitsOf(&rounded, digits)) {
    return false;
  }
  if (digits->count > 0) {
    digits->exponent += scale;
  }
  return true;
}

}  // namespace

int32_t WRENFmtCheckNumberPicture(FormatRecord *record) {
  Picture picture;
  return record != nullptr && ReadPicture(record->numberPicture, CodePageNow(), &picture) ? 1 : 0;
}

int32_t WriteByNumberPicture(const FormatRecord &record, const Country &country) {
  const CodePage page = CodePageNow();
  Picture picture;
  if (!ReadPicture(record.numberPicture, page, &picture)) {
    return 0;
  }
  NumberDigits digits = {};
  if (!NumberDigitsOf(&record.number, &digits)) {
    return 1;  // null is the empty text
  }

  const PictureSection *section = &picture.section[digits.negative && picture.count > 1 ? 1 : 0];
  if (!DigitsFor(*section, record.number, &digits)) {
    return 0;
  }
  if (digits.count == 0) {  // zero, possibly after rounding
    section = &picture.section[picture.count == kSections ? 2 : 0];
  }
  NumberText text = {record.output, 0, false};
  if (digits.negative && section == picture.section) {
    NumberPutByte(&text, '-');
  }
  PutSection(&text, *section, digits, NumberMarksOf(record, country), page);
  return NumberTextEnd(&text);
}
