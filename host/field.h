// The values of fields: numbers and dates as written in a file.
#ifndef ORLI11_HOST_FIELD_H
#define ORLI11_HOST_FIELD_H

#include <orli11.h>

#include <algorithm>
#include <string_view>

#include "host/data_options.h"

// Whether a field has no value: it is empty, or one of the words that count as empty.
inline bool FieldIsEmpty(const FieldRules &rules, const char *text) {
  return *text == '\0' || (!rules.nulls.empty() && std::find(rules.nulls.begin(), rules.nulls.end(),
                                                             text) != rules.nulls.end());
}

// The number in a field that is not empty; false when it is not a number. A number of more digits
// than a NumberValue holds counts as text, since it would be rounded.
bool NumberFromField(const FieldRules &rules, const char *text, NumberValue *value);

// The days since 1970-01-01 of a date that is written as "2024-01-31", which is the same in every
// order of dates; false for any other text.
bool DayOfPlainDate(const char *text, int32_t &day);

// "12", "-0.75": digits with at most one point and digits after it, 18 at most; its value without
// the point, and its decimal places. False for any other text.
bool PlainDecimal(const char *text, int64_t &value, uint8_t &decimals);
// Whether such a number has a zero in front of another digit.
inline bool HasLeadingZero(const char *decimal) {
  decimal += *decimal == '-' ? 1 : 0;
  return decimal[0] == '0' && decimal[1] >= '0' && decimal[1] <= '9';
}

// The date in a field that is not empty: ISO dates, and those in the order of the rules or the
// country settings. A time with "Z" or an offset is converted to UTC. A time alone is not a
// date.
bool DateFromField(const FieldRules &rules, const char *text, NumberValue *value);

// Whether an ISO date in a field ends with "Z" or an offset.
bool HasOffset(std::string_view text);

// Codes written in digits, which would lose information as numbers.
enum CodeShape {
  kCodeNone,
  kCodeZeros,    // 01234
  kCodeSign,     // +4917012
  kCodeExponent  // 12E3
};
CodeShape CodeShapeOf(std::string_view number);

// The orders in which three numbers can be read as a date, regardless of the rules.
constexpr unsigned kOrderMdy = 1;
constexpr unsigned kOrderDmy = 2;
constexpr unsigned kOrderYmd = 4;
constexpr unsigned kOrderAny = 7;
// ORDER_... bits of a field such as 31/12/2012; 0 for anything else, as for dates that begin with a
// year of four digits, which are the same in every order.
unsigned DateOrdersOf(std::string_view text);
// Whether three numbers begin with a year of four digits.
bool YearIsFirst(std::string_view text);

// How the country settings order dates: 0 month, day, year; 1 day, month, year; 2 year first.
int32_t CountryDateOrder();

#endif
