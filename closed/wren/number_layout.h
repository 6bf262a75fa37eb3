// Shared by the routines that format and parse numbers: digits by place, separators, and bounded
// output.
#ifndef ORLI11_CLOSED_WREN_NUMBER_LAYOUT_H
#define ORLI11_CLOSED_WREN_NUMBER_LAYOUT_H

#include <cstdint>

#include "closed/wren/country.h"
#include "wreni11.h"

// Bytes that `output` of a FormatRecord can hold, the terminator included.
constexpr int32_t kNumberTextCapacity = 100;

// The digits of a magnitude. Place 0 is the digit before the point, place -1 the one after
// it.
struct NumberDigits {
  char digits[32];   // without leading zeros
  int32_t count;     // 0 for zero
  int32_t exponent;  // place of the last digit
  bool negative;
};

// Separators, each with its terminator, and the sizes of groups as Country has them.
struct NumberMarks {
  char decimal[8];
  char thousands[8];  // empty: no grouping
  uint8_t grouping[4];
};

// A string that grows up to the capacity of `output`.
struct NumberText {
  char *text;
  int32_t length;
  bool tooLong;  // something was truncated
};

// The digits of a number; false for null and for bytes that are not a number.
bool NumberDigitsOf(const NumberValue *value, NumberDigits *digits);
// The digit at a place, '0' beyond both ends.
char NumberDigitAt(const NumberDigits &digits, int32_t place);
// The number of digits before and after the point.
int32_t NumberIntegerPlaces(const NumberDigits &digits);
int32_t NumberFractionPlaces(const NumberDigits &digits);

NumberMarks NumberMarksOfCountry(const Country &country);
NumberMarks NumberMarksOfMoney(const Country &country);
// The separators of a record: its own, or those of `country` with `useCountry`.
NumberMarks NumberMarksOf(const FormatRecord &record, const Country &country);
// The settings for a record: the current ones, or the built-in ones when it does not use the
// country's.
const Country &NumberCountryFor(const FormatRecord &record);

// Whether a separator is to the left of the last `digits` integer digits.
bool NumberGroupEnds(const NumberMarks &marks, int64_t digits);

void NumberPutByte(NumberText *target, char byte);
void NumberPutText(NumberText *target, const char *text);
// Writes the integer digit of a place, with the separator after it where a group ends.
void NumberPutInteger(NumberText *target, const NumberDigits &digits, int32_t place,
                      const NumberMarks &marks);
// Terminates the output: 1, or 0 with the empty string when it is too long.
int32_t NumberTextEnd(NumberText *target);

#endif
