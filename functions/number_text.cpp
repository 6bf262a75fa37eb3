#include "functions/number_text.h"

#include "closed/wren/decimal.h"

namespace {

// A cleared record for a number, by the country settings.
FormatRecord CountryRecord(int32_t mode) {
  FormatRecord record;
  WRENFmtInit(&record);
  record.mode = mode;
  record.useCountry = 1;
  record.flags |= WREN_FMT_FLAG_NUMBER;
  return record;
}

bool WriteNumber(FormatRecord &record, const NumberValue *value, char *buffer) {
  buffer[0] = 0;
  record.output = buffer;
  record.number = *value;
  return WRENFmtNumber(&record) != 0;
}

}  // namespace

bool NumberFromText(NumberValue *value, const char *text) {
  FormatRecord record = CountryRecord(WREN_FMT_NUMBER);
  record.input = text;
  if (WRENFmtParseNumber(&record) == 0) {
    WRENNumSetNull(value);
    WRENNumSetZero(value);
    return false;
  }
  DecimalCopy(value, record.number);
  return true;
}

bool NumberFormatPicture(const NumberValue *value, const char *picture, char *buffer) {
  buffer[0] = 0;
  FormatRecord record = CountryRecord(WREN_FMT_PICTURE);
  record.numberPicture = picture;
  return WRENFmtCheckNumberPicture(&record) != 0 && WriteNumber(record, value, buffer);
}

bool NumberFormatFixed(const NumberValue *value, int32_t decimals, char *buffer) {
  FormatRecord record = CountryRecord(WREN_FMT_NUMBER);
  record.useCountry = 0;
  record.thousandsSeparator = 0;
  record.decimalSeparator = '.';
  record.fixedDecimals = 1;
  record.decimals = decimals;
  return WriteNumber(record, value, buffer);
}

bool NumberFormatCountry(const NumberValue *value, char *buffer) {
  FormatRecord record = CountryRecord(WREN_FMT_NUMBER);
  return WriteNumber(record, value, buffer);
}

bool NumberFormatCurrency(const NumberValue *value, char *buffer) {
  FormatRecord record = CountryRecord(WREN_FMT_CURRENCY);
  return WriteNumber(record, value, buffer);
}
