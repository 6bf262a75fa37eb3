// Conversions between a Number and its text.
#ifndef ORLI11_FUNCTIONS_NUMBER_TEXT_H
#define ORLI11_FUNCTIONS_NUMBER_TEXT_H

#include <cstdint>

#include "wreni11.h"

// Number text is built in buffers of this size: 99 bytes and the terminator.
constexpr int32_t kNumberTextSize = 100;

// Reads a number by the country settings. False, with the Number zero in `value`, when it is none.
bool NumberFromText(NumberValue *value, const char *text);

// Write a Number into `buffer` of kNumberTextSize bytes; empty for a null Number. False, with the
// buffer empty, when the picture is invalid or the text too long.
bool NumberFormatPicture(const NumberValue *value, const char *picture, char *buffer);
// Independent of the country: a full stop as the decimal point, no grouping, `decimals` digits
// after the point.
bool NumberFormatFixed(const NumberValue *value, int32_t decimals, char *buffer);
bool NumberFormatCountry(const NumberValue *value, char *buffer);
bool NumberFormatCurrency(const NumberValue *value, char *buffer);

#endif
