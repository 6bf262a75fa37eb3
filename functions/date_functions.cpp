// The built-in functions on dates. Each is an OrlFunctionProc.
#include <functional>

#include "dates/date_arithmetic.h"
#include "dates/date_text.h"
#include "dates/stored_date.h"
#include "functions/arguments.h"
#include "functions/date_parts.h"
#include "functions/result_block.h"
#include "orli11.h"

namespace {

DateTimeParts PartsOf(const NumberValue &date) {
  DateTimeParts parts;
  DecodeDate(date, &parts);
  return parts;
}

// The part of a date that `number` is, or what it computes from the parts; null for a null date.
template <auto number>
bool ReturnNumberOfDate(int32_t resultSize, void **result, void *const *args) {
  NumberValue *target = NumberResult(result, resultSize);
  if (target == nullptr) {
    return false;
  }
  const NumberValue &date = NumberArgument(args, 0);
  if (date.length == 0) {
    WRENNumSetNull(target);
  } else {
    WRENNumFromInt(target, std::invoke(number, PartsOf(date)));
  }
  return true;
}

// The month's first or last day at midnight; null for a null date.
bool ReturnDayOfMonth(int32_t resultSize, void **result, void *const *args, MonthDay day) {
  NumberValue *target = NumberResult(result, resultSize);
  if (target == nullptr) {
    return false;
  }
  const NumberValue &date = NumberArgument(args, 0);
  if (date.length == 0) {
    *target = kNullNumber;
  } else {
    EncodeDate(target, AtMonthDay(PartsOf(date), day));
  }
  return true;
}

}  // namespace

int32_t FUNDateYear(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                    const char * /*name*/, void **args) {
  return ReturnNumberOfDate<&DateTimeParts::year>(resultSize, result, args) ? 1 : 0;
}

int32_t FUNDateMonth(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                     const char * /*name*/, void **args) {
  return ReturnNumberOfDate<&DateTimeParts::month>(resultSize, result, args) ? 1 : 0;
}

int32_t FUNDateDay(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                   const char * /*name*/, void **args) {
  return ReturnNumberOfDate<&DateTimeParts::day>(resultSize, result, args) ? 1 : 0;
}

int32_t FUNDateHour(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                    const char * /*name*/, void **args) {
  return ReturnNumberOfDate<&DateTimeParts::hour>(resultSize, result, args) ? 1 : 0;
}

int32_t FUNDateMinute(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                      const char * /*name*/, void **args) {
  return ReturnNumberOfDate<&DateTimeParts::minute>(resultSize, result, args) ? 1 : 0;
}

int32_t FUNDateSecond(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                      const char * /*name*/, void **args) {
  return ReturnNumberOfDate<&DateTimeParts::second>(resultSize, result, args) ? 1 : 0;
}

int32_t FUNDateQuarter(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                       const char * /*name*/, void **args) {
  return ReturnNumberOfDate<QuarterOf>(resultSize, result, args) ? 1 : 0;
}

int32_t FUNWeekDay(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                   const char * /*name*/, void **args) {
  return ReturnNumberOfDate<WeekDayOf>(resultSize, result, args) ? 1 : 0;
}

int32_t FUNDateMonthBegin(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                          const char * /*name*/, void **args) {
  return ReturnDayOfMonth(resultSize, result, args, MonthDay::First) ? 1 : 0;
}

int32_t FUNDateMonthEnd(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                        const char * /*name*/, void **args) {
  return ReturnDayOfMonth(resultSize, result, args, MonthDay::Last) ? 1 : 0;
}

int32_t FUNDateAddDay(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                      const char * /*name*/, void **args) {
  NumberValue *target = NumberResult(result, resultSize);
  if (target == nullptr) {
    return 0;
  }
  DateArithmetic(target, &NumberArgument(args, 0), &NumberArgument(args, 1), '+', kUnitDay);
  return 1;
}

// The arguments are year, month, day, hour, minute, second; parts that are not in the calendar
// yield a null date.
int32_t FUNDateConstruct(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                         const char * /*name*/, void **args) {
  NumberValue *target = NumberResult(result, resultSize);
  if (target == nullptr) {
    return 0;
  }
  int32_t fields[6];
  for (int32_t i = 0; i < 6; ++i) {
    fields[i] = CountArgument(args, i);
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
  return SelectNumber(resultSize, result, args) ? 1 : 0;
}

// A date that cannot be formatted, as under a bad picture, yields the empty string.
int32_t FUNDateToStr(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                     const char * /*name*/, void **args) {
  char text[kDateTextSize];
  DateToTextDefault(&NumberArgument(args, 0), text);
  return FUNStrVarResult(result, resultSize, text);
}

int32_t FUNDateToStrPicture(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                            const char * /*name*/, void **args) {
  char text[kDateTextSize];
  DateToTextPicture(&NumberArgument(args, 0), TextArgument(args, 1), text);
  return FUNStrVarResult(result, resultSize, text);
}

// Null for a string that is not a date.
int32_t FUNStrToDate(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                     const char * /*name*/, void **args) {
  NumberValue *target = NumberResult(result, resultSize);
  if (target == nullptr) {
    return 0;
  }
  if (!DateFromText(target, TextArgument(args, 0))) {
    *target = kNullNumber;
  }
  return 1;
}
