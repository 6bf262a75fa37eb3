#include "host/odbc_functions.h"

#include <array>
#include <cstring>
#include <string_view>

namespace {

constexpr int32_t kAllDigits = 300;

NumberValue NumberOf(int32_t number) {
  NumberValue value;
  WRENNumFromInt(&value, number);
  return value;
}

// The number at the index, or the null number.
NumberValue NumberAt(void **args, size_t place) {
  NumberValue value = {};
  if (args[place] != nullptr) {
    std::memcpy(&value, args[place], sizeof value);
  }
  return value;
}

// SUBSTRING counts from 1. Positions before the first character count but select nothing, so that
// SUBSTRING(s, 0, 3) is the first two.
int32_t Substring(EC ec, HEXP exp, int32_t size, void **result, const char *name, void **args) {
  const NumberValue one = NumberOf(1);
  const NumberValue zero = NumberOf(0);
  NumberValue start = NumberAt(args, 1);
  NumberValue count = NumberAt(args, 2);
  if (WRENNumIsNull(&start) != 0) {
    start = zero;
  }
  WRENNumTruncate(&start, kAllDigits, 0);
  WRENNumSub(&start, &start, &one);
  if (WRENNumCompare(&start, &zero) < 0) {
    WRENNumAdd(&count, &count, &start);
    start = zero;
  }
  std::array<void *, 3> moved = {args[0], &start, &count};
  return FUNStrMid(ec, exp, size, result, name, moved.data());
}

// LOCATE has the pattern first, counts from 1, and returns 0 when there is none.
int32_t Locate(EC ec, HEXP exp, int32_t size, void **result, const char *name, void **args) {
  std::array<void *, 2> turned = {args[1], args[0]};
  if (FUNStrScan(ec, exp, size, result, name, turned.data()) == 0) {
    return 0;
  }
  const NumberValue one = NumberOf(1);
  NumberValue *place = static_cast<NumberValue *>(*result);
  WRENNumAdd(place, place, &one);
  return 1;
}

// DAYOFWEEK ends with Saturday, 7.
int32_t DayOfWeek(EC ec, HEXP exp, int32_t size, void **result, const char *name, void **args) {
  if (FUNWeekDay(ec, exp, size, result, name, args) == 0) {
    return 0;
  }
  NumberValue *day = static_cast<NumberValue *>(*result);
  if (WRENNumIsNull(day) == 0 && WRENNumIsZero(day) != 0) {
    *day = NumberOf(7);
  }
  return 1;
}

// The nearest integer in the direction of `step`, -1 or 1; null stays null.
int32_t WholeNumber(void **result, void **args, int32_t step) {
  const NumberValue value = NumberAt(args, 0);
  const NumberValue by = NumberOf(step);
  NumberValue whole = value;
  if (WRENNumIsNull(&value) == 0) {
    WRENNumTruncate(&whole, kAllDigits, 0);
    if (WRENNumCompare(&whole, &value) == -step) {
      WRENNumAdd(&whole, &whole, &by);
    }
  }
  std::memcpy(*result, &whole, sizeof whole);
  return 1;
}

int32_t Floor(EC /*ec*/, HEXP /*exp*/, int32_t /*size*/, void **result, const char * /*name*/,
              void **args) {
  return WholeNumber(result, args, -1);
}

int32_t Ceiling(EC /*ec*/, HEXP /*exp*/, int32_t /*size*/, void **result, const char * /*name*/,
                void **args) {
  return WholeNumber(result, args, 1);
}

struct OdbcFunction {
  const char *name;
  char type;               // of the result: N, D or S
  const char *parameters;  // a letter each
  OrlFunctionProc routine;
};

constexpr OdbcFunction kOdbcFunctions[] = {
    {"ABS", 'N', "N", FUNNumberAbsolute},
    {"CEILING", 'N', "N", Ceiling},
    {"CHAR_LENGTH", 'N', "S", FUNStrLength},
    {"DAYOFMONTH", 'N', "D", FUNDateDay},
    {"DAYOFWEEK", 'N', "D", DayOfWeek},
    {"FLOOR", 'N', "N", Floor},
    {"HOUR", 'N', "D", FUNDateHour},
    {"LCASE", 'S', "S", FUNStrLower},
    {"LEFT", 'S', "SN", FUNStrLeft},
    {"LENGTH", 'N', "S", FUNStrLength},
    {"LOCATE", 'N', "SS", Locate},
    {"LTRIM", 'S', "S", FUNStrLTrim},
    {"MINUTE", 'N', "D", FUNDateMinute},
    {"MOD", 'N', "NN", FUNNumberMod},
    {"MONTH", 'N', "D", FUNDateMonth},
    {"POWER", 'N', "NN", FUNPower},
    {"QUARTER", 'N', "D", FUNDateQuarter},
    {"REPEAT", 'S', "SN", FUNStrRepeat},
    {"RIGHT", 'S', "SN", FUNStrRight},
    {"ROUND", 'N', "NN", FUNNumberRound},
    {"RTRIM", 'S', "S", FUNStrRTrim},
    {"SECOND", 'N', "D", FUNDateSecond},
    {"SPACE", 'S', "N", FUNStrSpaces},
    {"SUBSTRING", 'S', "SNN", Substring},
    {"TRUNCATE", 'N', "NN", FUNNumberTruncate},
    {"UCASE", 'S', "S", FUNStrUpper},
    {"YEAR", 'N', "D", FUNDateYear},
};

int16_t TypeOf(char letter) {
  return letter == 'N' ? ORL_TYPE_NUMBER : letter == 'D' ? ORL_TYPE_DATE : ORL_TYPE_STRING;
}

}  // namespace

bool OdbcFunctionsDeclare(EC ec) {
  for (const OdbcFunction &function : kOdbcFunctions) {
    constexpr size_t kMost = 3;
    ORL_EXPR_ITEM_WITH(kMost) row = {};
    const std::string_view name = function.name;
    const std::string_view parameters = function.parameters;
    row.item.kind = ORL_FUNCTION;
    row.item.dataType = TypeOf(function.type);
    row.item.routine = reinterpret_cast<void *>(function.routine);
    row.item.itemFlags = ORL_FUNC_ESCAPE;
    row.item.paramCount = static_cast<int16_t>(parameters.size());
    std::memcpy(row.item.name, name.data(), name.size());
    for (size_t i = 0; i < parameters.size(); ++i) {
      row.parameters[i].dataType = static_cast<uint16_t>(TypeOf(parameters[i]));
    }
    if (ORLAddExpressionItem(ec, &row.item) == 0) {
      return false;
    }
  }
  return true;
}
