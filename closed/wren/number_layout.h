// What the ways to write and to read a number share: its digits by place, the separators, and the
// bounded text.
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

// A text that grows up to the capacity of `output`.
struct NumberText {
  char *text;
  int32_t length;
  bool tooLong;  // something was left out
};

// The digits of a number; false for null and for what is not a number.
bool NumberDigitsOf(const NumberValue *value, NumberDigits *digits);
// The digit at a place, '0' beyond both ends.
char NumberDigitAt(const NumberDigits &digits, int32_t place);
// How many digits are before the point and after it.
int32_t NumberIntegerPlaces(const NumberDigits &digits);
int32_t NumberFractionPlaces(const NumberDigits &digits);

NumberMarks NumberMarksOfCountry(const Country &country);
NumberMarks NumberMarksOfMoney(const Country &country);
// The separators of a record: its own, or those of `country` with `useCountry`.
NumberMarks NumberMarksOf(const FormatRecord &record, const Country &country);
// The settings for a record: those in force, or the built-in ones when it does not ask for any.
const Country &NumberCountryFor(const FormatRecord &record);

// Whether a separator is to the left of the last `digits` integer digits.
bool NumberGroupEnds(const NumberMarks &marks, int64_t digits);

void NumberPutByte(NumberText *target, char byte);
void NumberPutText(NumberText *target, const char *text);
// Writes the integer digit of a place, with the separator after it where a group ends.
void NumberPutInteger(NumberText *target, const NumberDigits &digits, int32_t place,
                      const NumberMarks &marks);
// Ends the text: 1, or 0 with the empty text when it is too long.
int32_t NumberTextEnd(NumberText *target);

#endif
