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

bool NumberCell(const NumberValue &value, std::string &cell) {
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
  return type == ORL_TYPE_DATE ? DateCell(number, cell) : NumberCell(number, cell);
}
