// Numbers and amounts of money as text, by the country settings or by the fields of the record.
#include "closed/wren/number_format.h"

#include "closed/wren/country.h"
#include "closed/wren/number_layout.h"
#include "closed/wren/number_picture.h"
#include "wreni11.h"

namespace {

// How one number is written.
struct NumberStyle {
  NumberMarks marks;
  bool fixed;  // use `decimals`; else as many digits as the number has
  int32_t decimals;
  const Country *money;  // has the currency sign and the place of the minus sign; null: no money
};

NumberStyle StyleOf(const FormatRecord &record, const Country &country) {
  NumberStyle style = {NumberMarksOf(record, country), record.fixedDecimals != 0, record.decimals,
                       nullptr};
  // The record has no currency field, so without the country an amount is a plain number.
  if (record.mode == WREN_FMT_CURRENCY && record.useCountry != 0) {
    style.money = &country;
    style.marks = NumberMarksOfMoney(country);
    if (!style.fixed) {
      style.decimals = country.currencyDecimals;
    }
    style.fixed = true;
  }
  return style;
}

void PutDigits(NumberText *target, const NumberDigits &digits, const NumberStyle &style) {
  int32_t place = NumberIntegerPlaces(digits);
  if (place == 0) {
    place = 1;
  }
  while (place-- > 0) {
    NumberPutInteger(target, digits, place, style.marks);
  }
  const int32_t decimals = style.fixed ? style.decimals : NumberFractionPlaces(digits);
  if (decimals > 0) {
    NumberPutText(target, style.marks.decimal);
  }
  for (place = 1; place <= decimals && !target->tooLong; ++place) {
    NumberPutByte(target, NumberDigitAt(digits, -place));
  }
}

void PutNumber(NumberText *target, const NumberDigits &digits, const NumberStyle &style) {
  const Country *money = style.money;
  const bool parentheses = digits.negative && money != nullptr && money->negativeInParentheses;
  if (digits.negative) {
    NumberPutByte(target, parentheses ? '(' : '-');
  }
  if (money != nullptr && money->currencySignFirst) {
    NumberPutText(target, money->currencySign);
    if (money->currencySpace) {
      NumberPutByte(target, ' ');
    }
  }
  PutDigits(target, digits, style);
  if (money != nullptr && !money->currencySignFirst) {
    if (money->currencySpace) {
      NumberPutByte(target, ' ');
    }
    NumberPutText(target, money->currencySign);
  }
  if (parentheses) {
    NumberPutByte(target, ')');
  }
}

}  // namespace

int32_t FormatNumberBy(FormatRecord *record, const Country &country) {
  if (record->output == nullptr) {
    return 0;
  }
  record->output[0] = 0;
  if (record->mode == WREN_FMT_PICTURE) {
    return WriteByNumberPicture(*record, country);
  }
  if (record->mode != WREN_FMT_NUMBER && record->mode != WREN_FMT_CURRENCY) {
    return 0;
  }

  NumberDigits digits = {};
  if (!NumberDigitsOf(&record->number, &digits)) {
    return 1;  // null is the empty string
  }
  const NumberStyle style = StyleOf(*record, country);
  if (style.fixed) {
    NumberValue rounded = {};
    WRENNumRound(&rounded, &record->number, style.decimals);
    if (!NumberDigitsOf(&rounded, &digits)) {
      return 0;  // rounded up beyond all numbers
    }
  }
  NumberText text = {record->output, 0, false};
  PutNumber(&text, digits, style);
  return NumberTextEnd(&text);
}

int32_t WRENFmtNumber(FormatRecord *record) {
  return record != nullptr ? FormatNumberBy(record, NumberCountryFor(*record)) : 0;
}
