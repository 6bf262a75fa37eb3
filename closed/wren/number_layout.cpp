#include "closed/wren/number_layout.h"

#include <cstring>

#include "closed/wren/decimal.h"

bool NumberDigitsOf(const NumberValue *value, NumberDigits *digits) {
  Decimal d = {};
  if (!DecimalLoad(value, &d)) {
    return false;
  }
  const int32_t count = DecimalWriteDigits(DecimalMagnitude(d), digits->digits);
  digits->count = d.coefficient == 0 ? 0 : count;
  digits->exponent = d.exponent;
  digits->negative = d.coefficient < 0;
  return true;
}

char NumberDigitAt(const NumberDigits &digits, int32_t place) {
  const int32_t fromLast = place - digits.exponent;
  if (fromLast < 0 || fromLast >= digits.count) {
    return '0';
  }
  return digits.digits[digits.count - 1 - fromLast];
}

int32_t NumberIntegerPlaces(const NumberDigits &digits) {
  const int32_t places = digits.count + digits.exponent;
  return digits.count > 0 && places > 0 ? places : 0;
}

int32_t NumberFractionPlaces(const NumberDigits &digits) {
  return digits.count > 0 && digits.exponent < 0 ? -digits.exponent : 0;
}

NumberMarks NumberMarksOfCountry(const Country &country) {
  NumberMarks marks = {};
  static_assert(sizeof marks.decimal == sizeof country.decimalSeparator);
  static_assert(sizeof marks.grouping == sizeof country.grouping);
  std::memcpy(marks.decimal, country.decimalSeparator, sizeof marks.decimal);
  std::memcpy(marks.thousands, country.thousandsSeparator, sizeof marks.thousands);
  std::memcpy(marks.grouping, country.grouping, sizeof marks.grouping);
  return marks;
}

NumberMarks NumberMarksOfMoney(const Country &country) {
  NumberMarks marks = {};
  static_assert(sizeof marks.decimal == sizeof country.currencyDecimalSeparator);
  std::memcpy(marks.decimal, country.currencyDecimalSeparator, sizeof marks.decimal);
  std::memcpy(marks.thousands, country.currencyThousandsSeparator, sizeof marks.thousands);
  std::memcpy(marks.grouping, country.currencyGrouping, sizeof marks.grouping);
  return marks;
}

const Country &NumberCountryFor(const FormatRecord &record) {
  return record.useCountry != 0 ? CountryNow() : CountryBuiltIn();
}

NumberMarks NumberMarksOf(const FormatRecord &record, const Country &country) {
  if (record.useCountry != 0) {
    return NumberMarksOfCountry(country);
  }
  const char decimal = record.decimalSeparator != 0 ? record.decimalSeparator : '.';
  return {{decimal}, {record.thousandsSeparator}, {3, 3, 3, 3}};
}

bool NumberGroupEnds(const NumberMarks &marks, int64_t digits) {
  if (marks.thousands[0] == 0 || digits <= 0) {
    return false;
  }
  for (const uint8_t size : marks.grouping) {
    if (size == 0 || digits < size) {
      return false;
    }
    if (digits == size) {
      return true;
    }
    digits -= size;
  }
  return digits % marks.grouping[3] == 0;
}

void NumberPutByte(NumberText *target, char byte) {
  if (target->length + 1 < kNumberTextCapacity) {
    target->text[target->length++] = byte;
  } else {
    target->tooLong = true;
  }
}

void NumberPutText(NumberText *target, const char *text) {
  for (; *text != 0; ++text) {
    NumberPutByte(target, *text);
  }
}

void NumberPutInteger(NumberText *target, const NumberDigits &digits, int32_t place,
                      const NumberMarks &marks) {
  NumberPutByte(target, NumberDigitAt(digits, place));
  if (NumberGroupEnds(marks, place)) {
    NumberPutText(target, marks.thousands);
  }
}

int32_t NumberTextEnd(NumberText *target) {
  target->text[target->tooLong ? 0 : target->length] = 0;
  return target->tooLong ? 0 : 1;
}
