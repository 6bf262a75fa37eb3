#include "tests/dates/date_support.h"

#include <cstdio>
#include <cstring>

namespace {

void SetPlain() {
  WRENSetCountry("C");
  WRENSetCodePage(1252);
}

}  // namespace

PlainSettings::PlainSettings() {
  SetPlain();
}
PlainSettings::~PlainSettings() {
  SetPlain();
}

std::string Iso(const DateTimeParts &p) {
  char text[120];
  int length = snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", p.year, p.month, p.day,
                        p.hour, p.minute, p.second);
  if (p.fraction != 0) {
    length += snprintf(text + length, 40, ".%06d", p.fraction);
  }
  return std::string(text, static_cast<size_t>(length));
}

std::string Iso(const NumberValue &date) {
  if (date.length == 0) {
    return "null";
  }
  DateTimeParts parts = {};
  PAVNNumberToDate(date.payload, date.length, &parts);
  return Iso(parts);
}

DateTimeParts Parts(int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute,
                    int32_t second, int32_t fraction) {
  return {month, day, year, hour, minute, second, fraction};
}

NumberValue Stored(const std::string &iso) {
  DateTimeParts p = {};
  sscanf(iso.c_str(), "%d-%d-%d %d:%d:%d.%6d", &p.year, &p.month, &p.day, &p.hour, &p.minute,
         &p.second, &p.fraction);
  NumberValue value = {};
  value.length = static_cast<uint8_t>(PAVNDateToNumber(value.payload, &p));
  return value;
}

NumberValue Number(int32_t value) {
  NumberValue number;
  WRENNumFromInt(&number, value);
  return number;
}

std::string NumberText(const NumberValue &value) {
  return WRENNumIsNull(&value) != 0 ? "null" : std::to_string(WRENNumToInt(&value));
}
