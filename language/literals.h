// The values of literals in a formula's text. They need no terminator.
#ifndef ORLI11_LANGUAGE_LITERALS_H
#define ORLI11_LANGUAGE_LITERALS_H

#include <cstdint>
#include <string_view>

#include "wreni11.h"

// The value of a number literal; the same as that of WRENNumFromText.
void NumberFromLiteral(NumberValue *value, std::string_view literal);

// True when a date literal is a valid date.
bool IsDateLiteral(std::string_view literal);

// True when the text between the quotes of a string literal has an escaped quote.
bool HoldsEscape(std::string_view text);

#endif
