#include "host/values.h"

#include <pavni11.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace {

constexpr int kMostDigits = 26;
constexpr size_t kFormatRoom = 100;
constexpr size_t kMicrosecondDigits = 6;
constexpr std::string_view kBlanks = " \t\r\n";

int CountDigits(const char *text) {
  int digits = 0;
  for (; *text != '\0' && *text != 'e' && *text != 'E'; ++text) {
    const bool isDigit = *text >= '0' && *text <= '9';
    digits += isDigit && (digits != 0 || *text != '0') ? 1 : 0;
  }
  return digits;
}

bool PlainNumber(const NumberValue &value, std::string &cell) {
  std::array<char, kFormatRoom> text;
  FormatRecord record;
  WRENFmtInit(&record);
  record.mode = WREN_FMT_NUMBER;
  record.output = text.data();
  record.useCountry = 0;
  record.decimalSeparator = '.';
  record.number = value;
  const bool good = WRENFmtNumber(&record) == 1;
  cell = good ? text.data() : "";
  return good;
}

NumberValue NumberOf(const char *text) {
  NumberValue value;
  WRENNumFromText(&value, text);
  return value;
}

/* One digit before the point and an exponent, for a number that has too many zeros to write out.
 * Steps by ten are exact. */
bool NumberWithExponent(NumberValue value, std::string &cell) {
  const NumberValue one = NumberOf("1");
  const NumberValue ten = NumberOf("10");
  const NumberValue tenth = NumberOf("0.1");
  NumberValue zero;
  WRENNumSetZero(&zero);
  const bool negative = WRENNumCompare(&value, &zero) < 0;
  if (negative) {
    WRENNumNegate(&value);
  }
  int exponent = 0;
  for (; WRENNumCompare(&value, &ten) >= 0; ++exponent) {
    WRENNumMul(&value, &value, &tenth);
  }
  for (; WRENNumCompare(&value, &one) < 0 && WRENNumIsZero(&value) == 0; --exponent) {
    WRENNumMul(&value, &value, &ten);
  }
  std::string digits;
  const bool good = PlainNumber(value, digits);
  cell = (negative ? "-" : "") + digits + "e" + std::to_string(exponent);
  return good;
}

/* "." and the digits of the microseconds without zeros at the end; nothing when there are none. */
std::string FractionDigits(int32_t microseconds) {
  if (microseconds == 0) {
    return {};
  }
  std::string digits = std::to_string(microseconds);
  digits.insert(0, kMicrosecondDigits - digits.size(), '0');
  digits.erase(digits.find_last_not_of('0') + 1);
  return "." + digits;
}

bool DateCell(const NumberValue &value, std::string &cell) {
  std::array<char, kFormatRoom> text;
  FormatRecord record;
  WRENFmtInit(&record);
  LocaleBlock locale;
  WRENFmtLoadLocale(&locale);
  record.mode = WREN_FMT_DATETIME;
  record.output = text.data();
  record.dateOrder = locale.dateOrder;
  record.clock24 = 1;
  record.dayNames = locale.dayNames;
  record.monthNames = locale.monthNames;
  record.markers = locale.markers;
  record.pivotYear = locale.pivotYear;
  record.useCountry = 0;
  PAVNNumberToDate(value.payload, value.length, &record.parts);
  const DateTimeParts &parts = record.parts;
  const bool midnight =
      parts.hour == 0 && parts.minute == 0 && parts.second == 0 && parts.fraction == 0;
  record.picture = midnight ? "yyyy-MM-dd" : "yyyy-MM-dd hh:mm:ss";
  record.picture2 = record.picture;
  const bool good = WRENFmtDate(&record) == 1;
  cell = good ? text.data() + FractionDigits(parts.fraction) : "";
  return good;
}

bool IsDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

/* How the country writes the numbers of a date. */
struct NumbersOfDate {
  char separator;
  bool yearFirst;
};

NumbersOfDate CountryNumbers() {
  std::array<char, kFormatRoom> text = {};
  FormatRecord record;
  WRENFmtInit(&record);
  record.mode = WREN_FMT_DATE;
  record.output = text.data();
  record.useCountry = 1;
  record.parts = {12, 31, 1999, 0, 0, 0, 0};
  WRENFmtDate(&record);
  const std::string_view shown(text.data());
  const size_t place = shown.find_first_not_of("0123456789");
  LocaleBlock locale;
  WRENFmtLoadLocale(&locale);
  return {place == std::string_view::npos ? '/' : shown[place], locale.dateOrder == 2};
}

/* The digits at the start of the text, which moves behind them. */
size_t SkipDigits(std::string_view &text) {
  size_t count = 0;
  while (count < text.size() && IsDigit(text[count])) {
    ++count;
  }
  text.remove_prefix(count);
  return count;
}

/* Whether three numbers at the start are written as a date and not as a version or an address: with
 * the country's separator, or as ISO has it; a year of two or four digits; a blank or a T in front
 * of the time. What begins otherwise is as good as the library says. */
bool LooksLikeDate(std::string_view text) {
  static const NumbersOfDate country = CountryNumbers();
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  const size_t first = SkipDigits(text);
  if (first == 0 || text.size() < 2 || !IsDigit(text[1])) {
    return true;
  }
  const char separator = text[0];
  text.remove_prefix(1);
  SkipDigits(text);
  const bool iso = separator == '-' && first == 4;
  if (text.empty() || text[0] != separator || !(iso || separator == country.separator)) {
    return false;
  }
  text.remove_prefix(1);
  const size_t last = SkipDigits(text);
  const size_t year = first > 2 || (country.yearFirst && last <= 2) ? first : last;
  return (year == 2 || year == 4) &&
         (text.empty() || text[0] == 'T' || kBlanks.find(text[0]) != std::string_view::npos);
}

}  // namespace

bool NumberFromField(const char *text, NumberValue *value) {
  WRENNumFromText(value, text);
  return WRENNumIsNull(value) == 0 && CountDigits(text) <= kMostDigits;
}

bool DateFromField(const char *text, NumberValue *value) {
  FormatRecord record;
  WRENFmtInit(&record);
  record.mode = WREN_FMT_DATETIME;
  record.input = text;
  record.useCountry = 1;
  if (WRENFmtParseDate(&record) == 0 || !LooksLikeDate(text)) {
    return false;
  }
  std::memset(value, 0, sizeof *value);
  value->length = static_cast<uint8_t>(PAVNDateToNumber(value->payload, &record.parts));
  return value->length != 0;
}

bool CellFromValue(int32_t type, const void *value, std::string &cell) {
  if (type == ORL_TYPE_STRING) {
    cell = static_cast<const char *>(value);
    return true;
  }
  NumberValue number;
  std::memcpy(&number, value, sizeof number);
  if (WRENNumIsNull(&number) != 0) {
    cell.clear();
    return true;
  }
  return type == ORL_TYPE_DATE ? DateCell(number, cell)
                               : PlainNumber(number, cell) || NumberWithExponent(number, cell);
}
