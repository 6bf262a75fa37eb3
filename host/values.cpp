#include "host/values.h"

#include <pavni11.h>

#include <array>
#include <cstring>
#include <new>
#include <string_view>
#include <tuple>

namespace {

constexpr size_t kCellCapacity = 100;
constexpr size_t kMicrosecondDigits = 6;

// A negative `decimals` means the digits that the number has.
bool PlainNumber(const NumberValue &value, int decimals, std::string &cell) {
  std::array<char, kCellCapacity> text;
  if (decimals < 0) {
    const int32_t size = WRENNumToText(&value, kCellCapacity, text.data());
    const bool fits = size > 0 && size < static_cast<int32_t>(kCellCapacity);
    cell = fits ? text.data() : "";
    return fits;
  }
  FormatRecord record;
  WRENFmtInit(&record);
  record.mode = WREN_FMT_NUMBER;
  record.output = text.data();
  record.useCountry = 0;
  record.decimalSeparator = '.';
  record.fixedDecimals = decimals >= 0 ? 1 : 0;
  record.decimals = decimals;
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

// One digit before the point and an exponent, for a number with too many zeros to write out. Steps
// by ten are exact.
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
  const bool good = PlainNumber(value, -1, digits);
  cell = (negative ? "-" : "") + digits + "e" + std::to_string(exponent);
  return good;
}

// "." and the digits of the microseconds without trailing zeros; empty when there are none.
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
  std::array<char, kCellCapacity> text;
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

}  // namespace

bool CellFromValue(int32_t type, const void *value, std::string &cell, int decimals) {
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
  return type == ORL_TYPE_DATE
             ? DateCell(number, cell)
             : PlainNumber(number, decimals, cell) || NumberWithExponent(number, cell);
}

int CompareValues(int32_t type, const NumberValue &left, const NumberValue &right) {
  if (type == ORL_TYPE_NUMBER) {
    return WRENNumCompare(&left, &right);
  }
  std::array<DateTimeParts, 2> parts = {};
  PAVNNumberToDate(left.payload, left.length, &parts[0]);
  PAVNNumberToDate(right.payload, right.length, &parts[1]);
  const auto fields = [](const DateTimeParts &date) {
    return std::tie(date.year, date.month, date.day, date.hour, date.minute, date.second,
                    date.fraction);
  };
  return static_cast<int>(fields(parts[1]) < fields(parts[0])) -
         static_cast<int>(fields(parts[0]) < fields(parts[1]));
}

int CompareTexts(const char *left, const char *right) {
  thread_local const Block block = NewBlock(sizeof(NumberValue));
  void *result = block.get();
  std::array<void *, 2> arguments = {const_cast<char *>(left), const_cast<char *>(right)};
  FUNStrCompare(nullptr, nullptr, sizeof(NumberValue), &result, "StrCompare", arguments.data());
  return WRENNumToInt(static_cast<const NumberValue *>(result));
}

Block NewBlock(uint32_t size) {
  Block block(ORLMemAlloc(size));
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

bool Evaluate(EC ec, HEXP exp, Block &block) {
  int32_t length = 0;
  void *bytes = block.release();
  const bool good = ORLEvaluateExpressionExt(ec, exp, &length, &bytes) == 1;
  block.reset(bytes);
  return good;
}
