// Parses numbers and amounts of money: the output of the formats, and what people write like it.
#include <cstring>

#include "closed/wren/codepage.h"
#include "closed/wren/country.h"
#include "closed/wren/digit_run.h"
#include "closed/wren/number_format.h"
#include "closed/wren/number_layout.h"
#include "wreni11.h"

namespace {

// One attempt to read a text.
struct NumberReader {
  const char *at;
  NumberMarks marks;
  const char *currencySign;  // empty: none is taken
  bool hasSign;
  bool negative;
  bool inParentheses;
  bool hasCurrency;
};

// Bytes of the blank at the address, 0 when there is none. Some countries write no-break blanks
// between groups, and some programs write them before a currency sign.
size_t BlankBytes(const char *text) {
  if (*text == ' ') {
    return 1;
  }
  switch (CodePageNow()) {
    case CodePage::Western:
      return *text == '\xA0' ? 1 : 0;
    case CodePage::Utf8:
      if (std::strncmp(text, "\xC2\xA0", 2) == 0) {
        return 2;
      }
      return std::strncmp(text, "\xE2\x80\xAF", 3) == 0 ? 3 : 0;
    case CodePage::Japanese:
      break;
  }
  return 0;
}

// Bytes of `mark` at the address, 0 when it is not there.
size_t MarkBytes(const char *text, const char *mark) {
  const size_t length = std::strlen(mark);
  return std::strncmp(text, mark, length) == 0 ? length : 0;
}

// Bytes of a thousands separator with a digit after it. One kind of blank matches any other.
size_t SeparatorBytes(const NumberReader &reader, const char *text) {
  const char *mark = reader.marks.thousands;
  if (*mark == 0) {
    return 0;
  }
  const size_t length = BlankBytes(mark) != 0 ? BlankBytes(text) : MarkBytes(text, mark);
  return length != 0 && IsDigit(text[length]) ? length : 0;
}

// Reads signs, parentheses, the currency sign and blanks around the digits, each at most once.
void ReadAround(NumberReader *reader, char parenthesis) {
  for (;;) {
    const char *at = reader->at;
    const bool maySign = !reader->hasSign && !reader->inParentheses;
    size_t length = BlankBytes(at);
    if (length == 0 && (*at == '-' || *at == '+') && maySign) {
      reader->hasSign = true;
      reader->negative = *at == '-';
      length = 1;
    } else if (length == 0 && parenthesis == '(' && *at == '(' && maySign) {
      reader->inParentheses = true;
      length = 1;
    } else if (length == 0 && parenthesis == ')' && *at == ')' && reader->inParentheses) {
      reader->inParentheses = false;
      reader->hasSign = true;
      reader->negative = true;
      length = 1;
    } else if (length == 0 && !reader->hasCurrency) {
      length = MarkBytes(at, reader->currencySign);
      reader->hasCurrency = length != 0;
    }
    if (length == 0) {
      return;
    }
    reader->at += length;
  }
}

// Reads integer digits, without separators or with all separators in place; -1 for a misplaced one,
// else the count of digits.
int64_t ReadInteger(NumberReader *reader, DigitRun *run) {
  int64_t total = 0;
  bool grouped = false;
  const char *end = reader->at;
  while (IsDigit(*end) || (total > 0 && SeparatorBytes(*reader, end) != 0)) {
    const size_t separator = IsDigit(*end) ? 0 : SeparatorBytes(*reader, end);
    grouped = grouped || separator != 0;
    if (separator == 0) {
      ++total;
    }
    end += separator != 0 ? separator : 1;
  }
  for (int64_t left = total; reader->at != end;) {
    DigitRunAdd(run, *reader->at++, false);
    --left;
    const size_t separator = IsDigit(*reader->at) ? 0 : SeparatorBytes(*reader, reader->at);
    if (grouped && (separator != 0 && left > 0) != NumberGroupEnds(reader->marks, left)) {
      return -1;
    }
    if (left > 0) {
      reader->at += separator;
    }
  }
  return total;
}

// Reads the digits with their separators; false when they are misplaced or missing.
bool ReadDigits(NumberReader *reader, DigitRun *run) {
  int64_t count = ReadInteger(reader, run);
  if (count < 0) {
    return false;
  }
  const size_t point = MarkBytes(reader->at, reader->marks.decimal);
  if (point != 0) {
    reader->at += point;
    for (; IsDigit(*reader->at); ++count) {
      DigitRunAdd(run, *reader->at++, true);
    }
  }
  return count > 0;
}

// Reads the whole text; false, with `result` unchanged, when it is not a number or too large. With
// `moneyOnly` it must have a currency sign.
bool ReadNumber(NumberValue *result, const char *text, const NumberMarks &marks,
                const char *currencySign, bool moneyOnly) {
  NumberReader reader = {};
  reader.at = text;
  reader.marks = marks;
  reader.currencySign = currencySign;
  DigitRun run = {};
  ReadAround(&reader, '(');
  if (!ReadDigits(&reader, &run)) {
    return false;
  }
  ReadAround(&reader, ')');
  if (*reader.at != 0 || reader.inParentheses) {
    return false;
  }
  if (moneyOnly && !reader.hasCurrency) {
    return false;
  }
  NumberValue value = {};
  DigitRunFinish(&value, run, 0, reader.negative);
  if (WRENNumIsNull(&value) != 0) {
    return false;
  }
  *result = value;
  return true;
}

// Reads digits into `c`, as long as there are few in all; returns the address after them.
const char *ReadFewDigits(const char *at, int64_t *c, int32_t *digits) {
  constexpr int32_t kFewDigits = 18;  // fit 64 bits with their sign
  for (; IsDigit(*at) && *digits < kFewDigits; ++at, ++*digits) {
    *c = *c * 10 + (*at - '0');
  }
  return at;
}

// Reads a text of few digits with at most a minus sign and a decimal separator, as most texts are;
// false for all others.
bool ReadPlainNumber(NumberValue *result, const char *text, const Country &country) {
  const char point = country.decimalSeparator[0];
  const bool negative = *text == '-';
  int64_t c = 0;
  int32_t digits = 0;
  int32_t places = 0;
  const char *at = ReadFewDigits(negative ? text + 1 : text, &c, &digits);
  if (point != 0 && *at == point && country.decimalSeparator[1] == 0 &&
      country.thousandsSeparator[0] != point) {
    places = digits;
    at = ReadFewDigits(at + 1, &c, &digits);
    places -= digits;
  }
  if (*at != 0 || digits == 0) {
    return false;
  }
  DecimalStoreNarrow(result, {negative ? -c : c, places});
  return true;
}

}  // namespace

int32_t ParseNumberBy(FormatRecord *record, const Country &country) {
  if (record->input == nullptr) {
    return 0;
  }
  if (record->mode < WREN_FMT_NUMBER || record->mode > WREN_FMT_PICTURE) {
    return 0;
  }
  NumberValue *number = &record->number;
  const char *text = record->input;
  if (record->useCountry == 0) {
    return ReadNumber(number, text, NumberMarksOf(*record, country), "", false) ? 1 : 0;
  }
  if (record->mode == WREN_FMT_NUMBER && ReadPlainNumber(number, text, country)) {
    return 1;
  }
  // Amounts may have separators of their own. Both kinds are tried, the mode's own first; a plain
  // number accepts those of amounts only with a currency sign.
  const NumberMarks plain = NumberMarksOfCountry(country);
  const NumberMarks money = NumberMarksOfMoney(country);
  const bool amount = record->mode == WREN_FMT_CURRENCY;
  const bool read = ReadNumber(number, text, amount ? money : plain, country.currencySign, false) ||
                    ReadNumber(number, text, amount ? plain : money, country.currencySign, !amount);
  return read ? 1 : 0;
}

int32_t WRENFmtParseNumber(FormatRecord *record) {
  return record != nullptr ? ParseNumberBy(record, NumberCountryFor(*record)) : 0;
}
