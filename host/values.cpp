#include "host/values.h"

#include <pavni11.h>

#include <array>
#include <cstring>

namespace {

constexpr int kMostDigits = 26;
constexpr size_t kFormatRoom = 100;

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
  const bool midnight = parts.hour == 0 && parts.minute == 0 && parts.second == 0;
  record.picture = midnight ? "yyyy-MM-dd" : "yyyy-MM-dd hh:mm:ss";
  record.picture2 = record.picture;
  const bool good = WRENFmtDate(&record) == 1;
  cell = good ? text.data() : "";
  return good;
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
  if (WRENFmtParseDate(&record) == 0) {
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
