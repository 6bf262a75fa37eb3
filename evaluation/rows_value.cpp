// Conversions between elements of columns and values.
#include <algorithm>
#include <cstring>

#include "dates/stored_date.h"
#include "evaluation/rows.h"
#include "evaluation/scaled_integer.h"
#include "pavni11.h"

namespace {

template <class T>
T ElementAt(const void *values, int64_t row) {
  T element;
  std::memcpy(&element, static_cast<const char *>(values) + row * int64_t{sizeof(T)}, sizeof(T));
  return element;
}

bool StoreDate(void *element, int32_t form, const NumberValue &value) {
  DateTimeParts parts;
  if (!DecodeDate(value, &parts)) {
    return false;
  }
  if (form == ORL_COLUMN_DATE32) {
    const auto days = static_cast<int32_t>(DaysSinceEpoch(parts));
    std::memcpy(element, &days, sizeof days);
  } else {
    const int64_t instant = DaysSinceEpoch(parts) * kMicrosecondsOfDay + MicrosecondsOfDay(parts);
    std::memcpy(element, &instant, sizeof instant);
  }
  return true;
}

}  // namespace

NumberValue DateOfDays(int64_t daysSinceEpoch, int64_t microseconds) {
  NumberValue date = {};
  const int64_t number = daysSinceEpoch + kEpochDayNumber;
  if (number == static_cast<int32_t>(number)) {
    DateTimeParts parts = {};
    PAVNDaysToDate(static_cast<int32_t>(number), &parts);
    const auto seconds = static_cast<int32_t>(microseconds / 1000000);
    parts.hour = seconds / 3600;
    parts.minute = seconds / 60 % 60;
    parts.second = seconds % 60;
    parts.fraction = static_cast<int32_t>(microseconds % 1000000);
    EncodeDate(&date, parts);
  }
  return date;
}

int64_t DaysSinceEpoch(const DateTimeParts &parts) {
  return PAVNDateToDays(&parts) - kEpochDayNumber;
}

int64_t MicrosecondsOfDay(const DateTimeParts &parts) {
  return (parts.hour * INT64_C(3600) + parts.minute * INT64_C(60) + parts.second) * 1000000 +
         parts.fraction;
}

NumberValue ColumnNumber(const OrlColumn &column, int64_t row) {
  NumberValue number = {};
  switch (column.form) {
    case ORL_COLUMN_NUMBER:
      return ElementAt<NumberValue>(column.values, row);
    case ORL_COLUMN_INT64:
      DecimalStore(&number, {ElementAt<int64_t>(column.values, row), -column.scale});
      return number;
    case ORL_COLUMN_DECIMAL128: {
      const Decimal exact = {ElementAt<Int128>(column.values, row), -column.scale};
      Decimal d = {};
      if (DecimalRounded(&d, DecimalMagnitude(exact), exact.exponent, exact.coefficient < 0)) {
        DecimalStore(&number, d);
      }
      return number;
    }
    case ORL_COLUMN_DOUBLE:
      WRENNumFromDouble(&number, ElementAt<double>(column.values, row));
      return number;
    case ORL_COLUMN_DATE32:
      return DateOfDays(ElementAt<int32_t>(column.values, row), 0);
    default: {
      const auto instant = ElementAt<int64_t>(column.values, row);
      const int64_t rest = instant % kMicrosecondsOfDay;
      const int64_t days = instant / kMicrosecondsOfDay;
      return rest < 0 ? DateOfDays(days - 1, rest + kMicrosecondsOfDay) : DateOfDays(days, rest);
    }
  }
}

TextSlice ColumnText(const OrlColumn &column, int64_t row) {
  const int32_t *offsets = column.offsets + row;
  const auto length = static_cast<uint32_t>(offsets[1] - offsets[0]);
  if (length == 0) {
    return {"", 0};
  }
  const char *bytes = static_cast<const char *>(column.values) + offsets[0];
  const void *end = std::memchr(bytes, 0, length);
  return {bytes,
          end == nullptr ? length : static_cast<uint32_t>(static_cast<const char *>(end) - bytes)};
}

uint32_t ElementSize(int32_t form) {
  constexpr uint32_t kSizes[] = {sizeof(NumberValue), 8, 16, 8, 4, 8, 4};
  return kSizes[form];
}

bool StoreInteger(void *element, int32_t form, int32_t scale, const Decimal &d) {
  Int128 integer = 0;
  if (!ScaledInteger(&integer, d, scale)) {
    return false;
  }
  if (form == ORL_COLUMN_DECIMAL128) {
    std::memcpy(element, &integer, sizeof integer);
    return true;
  }
  const auto narrow = static_cast<int64_t>(integer);
  if (narrow != integer) {
    return false;
  }
  std::memcpy(element, &narrow, sizeof narrow);
  return true;
}

bool StoreNumber(void *element, int32_t form, int32_t scale, const Decimal &number) {
  NumberValue packed;
  double nearest = 0;
  switch (form) {
    case ORL_COLUMN_NUMBER:
      DecimalStore(&packed, number);
      std::memcpy(element, &packed, sizeof packed);
      return true;
    case ORL_COLUMN_INT64:
    case ORL_COLUMN_DECIMAL128:
      return StoreInteger(element, form, scale, number);
    case ORL_COLUMN_DOUBLE:
      if (!NearestDouble(&nearest, number)) {
        DecimalStore(&packed, number);
        WRENNumToDouble(&packed, &nearest);
      }
      std::memcpy(element, &nearest, sizeof nearest);
      return true;
    default:
      return false;
  }
}

bool StoreElement(void *element, int32_t form, int32_t scale, const NumberValue &value) {
  Decimal d;
  switch (form) {
    case ORL_COLUMN_NUMBER:
      std::memcpy(element, &value, sizeof value);
      return true;
    case ORL_COLUMN_INT64:
    case ORL_COLUMN_DECIMAL128:
    case ORL_COLUMN_DOUBLE:
      return DecimalLoad(&value, &d) && StoreNumber(element, form, scale, d);
    default:
      return StoreDate(element, form, value);
  }
}

const OrlColumn *ColumnOf(const RowsCall &call, const ExprItem *item) {
  const BoundColumn *columns = call.columns;
  const BoundColumn *end = columns + call.columnCount;
  const BoundColumn *found = std::lower_bound(
      columns, end, item,
      [](const BoundColumn &a, const ExprItem *wanted) { return a.item < wanted; });
  return found != end && found->item == item ? found->column : nullptr;
}
