// The country settings: how dates, times and numbers are written.
#ifndef ORLI11_CLOSED_WREN_COUNTRY_H
#define ORLI11_CLOSED_WREN_COUNTRY_H

#include <cstdint>

enum class DateOrder : int32_t { MonthDayYear = 0, DayMonthYear = 1, YearMonthDay = 2 };

// One country's settings. Strings are padded with zero bytes, so equal settings are equal records.
struct Country {
  DateOrder dateOrder;
  char dateSeparator[8];  // one of - . /
  char timeSeparator[8];  // : or .
  bool clock24;
  int32_t pivotYear;  // two-digit years fall into pivotYear to pivotYear + 99
  char markers[2][24];
  char dayNames[14][48];    // Sunday to Saturday, Sun to Sat
  char monthNames[24][48];  // January to December, Jan to Dec
  char decimalSeparator[8];
  char thousandsSeparator[8];  // may be empty
  uint8_t grouping[4];         // digits of the groups from the point outward; the last one repeats,
                               // and a 0 ends the grouping
  char currencySign[24];
  char currencyCode[8];  // the currency's three letters, for code pages without its sign
  char currencyDecimalSeparator[8];
  char currencyThousandsSeparator[8];
  uint8_t currencyGrouping[4];
  int32_t currencyDecimals;
  bool currencySignFirst;      // before the digits
  bool currencySpace;          // a blank between sign and digits
  bool negativeInParentheses;  // -1.5 as (1.5), in amounts of money
  char nameTexts[3][1200];     // dayNames, monthNames, markers as the LocaleBlock has them

  bool operator==(const Country &) const = default;
};

// The conventions of the United States, in ASCII; these names are always accepted.
const Country &CountryBuiltIn();

// The settings in force, in the active code page. The record is never changed or freed.
const Country &CountryNow();

// A list of names as a LocaleBlock has them, in the active code page: the block may have been
// loaded under another one. Lists that are not of the settings are returned as they are.
const char *NamesInActiveCodePage(const char *names);

#endif
