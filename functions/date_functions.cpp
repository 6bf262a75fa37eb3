// The built-in functions on dates. Each is an OrlFunctionProc. An argument without a value (a null
// entry, or no arguments at all) counts as a null value, and a result block that is missing makes
// the routine fail.
#include "evaluation/date_arithmetic.h"
#include "evaluation/stored_date.h"
#include "functions/date_text.h"
#include "orli11.h"
#include "pavni11.h"

namespace {

constexpr NumberValue kNull = {};

const NumberValue &ValueOf(void *const *args, int32_t index) {
  const void *entry = args != nullptr ? args[index] : nullptr;
  return entry != nullptr ? *static_cast<const NumberValue *>(entry) : kNull;
}

const char *TextOf(void *const *args, int32_t index) {
  const void *entry = args != nullptr ? args[index] : nullptr;
  return entry != nullptr ? static_cast<const char *>(entry) : "";
}

// The result block of a Number or Date, or null when it has no room for one.
NumberValue *ResultOf(void **result, int32_t resultSize) {
  return result != nullptr && resultSize >= static_cast<int32_t>(sizeof(NumberValue))
             ? static_cast<NumberValue *>(*result)
             : nullptr;
}

DateTimeParts PartsOf(const NumberValue &date) {
  DateTimeParts parts;
  DecodeDate(date, &parts);
  return parts;
}

// The Number that `number` makes of the date's parts; null for a null date.
int32_t NumberOfDate(int32_t resultSize, void **result, void *const *args,
                     int32_t (*number)(const DateTimeParts &)) {
  NumberValue *target = ResultOf(result, resultSize);
  if (target == nullptr) {
    return 0;
  }
  const NumberValue &date = ValueOf(args, 0);
  if (date.length == 0) {
    WRENNumSetNull(target);
  } else {
    WRENNumFromInt(target, number(PartsOf(date)));
  }
  return 1;
}

// The month's first or last day at midnight; null for a null date.
int32_t DayOfMonth(int32_t resultSize, void **result, void *const *args, bool last) {
  NumberValue *target = ResultOf(result, resultSize);
  if (target == nullptr) {
    return 0;
  }
  const NumberValue &date = ValueOf(args, 0);
  if (date.length == 0) {
    *target = kNull;
    return 1;
  }
  DateTimeParts parts = PartsOf(date);
  parts.day = last ? DaysInMonth(parts.month, parts.year) : 1;
  parts.hour = parts.minute = parts.second = parts.fraction = 0;
  EncodeDate(target, parts);
  return 1;
}

}  // namespace

int32_t FUNDateYear(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                    const char * /*name*/, void **args) {
  return NumberOfDate(resultSize, result, args,
                      [](const DateTimeParts &date) { return date.year; });
}

int32_t FUNDateMonth(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                     const char * /*name*/, void **args) {
  return NumberOfDate(resultSize, result, args,
                      [](const DateTimeParts &date) { return date.month; });
}

int32_t FUNDateDay(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                   const char * /*name*/, void **args) {
  return NumberOfDate(resultSize, result, args, [](const DateTimeParts &date) { return date.day; });
}

int32_t FUNDateHour(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                    const char * /*name*/, void **args) {
  return NumberOfDate(resultSize, result, args,
                      [](const DateTimeParts &date) { return date.hour; });
}

int32_t FUNDateMinute(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                      const char * /*name*/, void **args) {
  return NumberOfDate(resultSize, result, args,
                      [](const DateTimeParts &date) { return date.minute; });
}

int32_t FUNDateSecond(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                      const char * /*name*/, void **args) {
  return NumberOfDate(resultSize, result, args,
                      [](const DateTimeParts &date) { return date.second; });
}

// 1 to 4.
int32_t FUNDateQuarter(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                       const char * /*name*/, void **args) {
  return NumberOfDate(resultSize, result, args, [](const DateTimeParts &date) {
    return date.month <= 0 ? 4 : (date.month + 2) / 3;
  });
}

// 0 for Saturday to 6 for Friday.
int32_t FUNWeekDay(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                   const char * /*name*/, void **args) {
  return NumberOfDate(resultSize, result, args, [](const DateTimeParts &date) {
    return static_cast<int32_t>((int64_t{PAVNDateToDays(&date)} + 2) % 7);
  });
}

int32_t FUNDateMonthBegin(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                          const char * /*name*/, void **args) {
  return DayOfMonth(resultSize, result, args, false);
}

int32_t FUNDateMonthEnd(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                        const char * /*name*/, void **args) {
  return DayOfMonth(resultSize, result, args, true);
}

int32_t FUNDateAddDay(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                      const char * /*name*/, void **args) {
  NumberValue *target = ResultOf(result, resultSize);
  if (target == nullptr) {
    return 0;
  }
  DateArithmetic(target, &ValueOf(args, 0), &ValueOf(args, 1), '+', kUnitDay);
  return 1;
}

// The arguments are year, month, day, hour, minute, second; what no calendar has makes a null date.
int32_t FUNDateConstruct(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                         const char * /*name*/, void **args) {
  NumberValue *target = ResultOf(result, resultSize);
  if (target == nullptr) {
    return 0;
  }
  int32_t fields[6];
  for (int32_t i = 0; i < 6; i++) {
    fields[i] = WRENNumToInt(&ValueOf(args, i));
  }
  EncodeDate(target, {.month = fields[1],
                      .day = fields[2],
                      .year = fields[0],
                      .hour = fields[3],
                      .minute = fields[4],
                      .second = fields[5],
                      .fraction = 0});
  return 1;
}

// The first, second or third date for a number below, equal to or above zero; null counts as zero.
int32_t FUNDateIFF(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                   const char * /*name*/, void **args) {
  NumberValue *target = ResultOf(result, resultSize);
  if (target == nullptr) {
    return 0;
  }
  NumberValue zero;
  WRENNumFromLong(&zero, 0);
  const NumberValue &selector = ValueOf(args, 0);
  const int32_t sign = selector.length == 0 ? 0 : WRENNumCompare(&selector, &zero);
  *target = ValueOf(args, 2 + (sign > 0 ? 1 : sign < 0 ? -1 : 0));
  return 1;
}

// A date that has no text, as under a bad picture, gives the empty text.
int32_t FUNDateToStr(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                     const char * /*name*/, void **args) {
  char text[kDateTextSize];
  DateToTextDefault(&ValueOf(args, 0), text);
  return FUNStrVarResult(result, resultSize, text);
}

int32_t FUNDateToStrPicture(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                            const char * /*name*/, void **args) {
  char text[kDateTextSize];
  DateToTextPicture(&ValueOf(args, 0), TextOf(args, 1), text);
  return FUNStrVarResult(result, resultSize, text);
}

// Null for a text that is no date.
int32_t FUNStrToDate(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                     const char * /*name*/, void **args) {
  NumberValue *target = ResultOf(result, resultSize);
  if (target == nullptr) {
    return 0;
  }
  if (DateFromText(target, TextOf(args, 0)) == 0) {
    *target = kNull;
  }
  return 1;
}
