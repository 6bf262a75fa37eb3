// The routines of the built-in functions by name, and how the evaluator calls them.
#include "functions/built_in.h"
#include "functions/inner_routines.h"
#include "functions/registry.h"
#include "platform/text.h"

namespace {

#define ROUTINE(name, type, inner) \
  { #name, name, type, inner }

constexpr BuiltIn kBuiltIns[] = {
    ROUTINE(FUNDateAddDay, ORL_TYPE_DATE, nullptr),
    ROUTINE(FUNDateYear, ORL_TYPE_NUMBER, InnerDateYear),
    ROUTINE(FUNDateMonth, ORL_TYPE_NUMBER, InnerDateMonth),
    ROUTINE(FUNDateDay, ORL_TYPE_NUMBER, InnerDateDay),
    ROUTINE(FUNDateHour, ORL_TYPE_NUMBER, InnerDateHour),
    ROUTINE(FUNDateMinute, ORL_TYPE_NUMBER, InnerDateMinute),
    ROUTINE(FUNDateSecond, ORL_TYPE_NUMBER, InnerDateSecond),
    ROUTINE(FUNDateMonthBegin, ORL_TYPE_DATE, InnerDateMonthBegin),
    ROUTINE(FUNDateMonthEnd, ORL_TYPE_DATE, InnerDateMonthEnd),
    ROUTINE(FUNDateToStr, ORL_TYPE_STRING, nullptr),
    ROUTINE(FUNDateConstruct, ORL_TYPE_DATE, nullptr),
    ROUTINE(FUNStrMid, ORL_TYPE_STRING, InnerStrMid),
    ROUTINE(FUNStrRight, ORL_TYPE_STRING, InnerStrRight),
    ROUTINE(FUNStrLeft, ORL_TYPE_STRING, InnerStrLeft),
    ROUTINE(FUNStrLength, ORL_TYPE_NUMBER, InnerStrLength),
    ROUTINE(FUNStrRTrim, ORL_TYPE_STRING, InnerStrRTrim),
    ROUTINE(FUNStrLTrim, ORL_TYPE_STRING, InnerStrLTrim),
    ROUTINE(FUNStrRepeat, ORL_TYPE_STRING, nullptr),
    ROUTINE(FUNStrPad, ORL_TYPE_STRING, nullptr),
    ROUTINE(FUNStrCompare, ORL_TYPE_NUMBER, nullptr),
    ROUTINE(FUNStrIFF, ORL_TYPE_STRING, InnerStrIff),
    ROUTINE(FUNStrCase, ORL_TYPE_STRING, nullptr),
    ROUTINE(FUNStrProper, ORL_TYPE_STRING, nullptr),
    ROUTINE(FUNStrReplace, ORL_TYPE_STRING, InnerStrReplace),
    ROUTINE(FUNStrScan, ORL_TYPE_NUMBER, nullptr),
    ROUTINE(FUNStrSpaces, ORL_TYPE_STRING, nullptr),
    ROUTINE(FUNStrToDate, ORL_TYPE_DATE, nullptr),
    ROUTINE(FUNStrToNumber, ORL_TYPE_NUMBER, InnerStrToNumber),
    ROUTINE(FUNStrUpper, ORL_TYPE_STRING, InnerStrUpper),
    ROUTINE(FUNNumberAbsolute, ORL_TYPE_NUMBER, InnerNumberAbsolute),
    ROUTINE(FUNNumberMod, ORL_TYPE_NUMBER, InnerNumberMod),
    ROUTINE(FUNNumberToStr, ORL_TYPE_STRING, nullptr),
    ROUTINE(FUNNumberToCurrency, ORL_TYPE_STRING, nullptr),
    ROUTINE(FUNNumberCountryFmt, ORL_TYPE_STRING, nullptr),
    ROUTINE(FUNNumberRound, ORL_TYPE_NUMBER, InnerNumberRound),
    ROUTINE(FUNNumberTruncate, ORL_TYPE_NUMBER, InnerNumberTruncate),
    ROUTINE(FUNStrLower, ORL_TYPE_STRING, InnerStrLower),
    ROUTINE(FUNNumberIFF, ORL_TYPE_NUMBER, InnerNumberIff),
    ROUTINE(FUNDateIFF, ORL_TYPE_DATE, InnerNumberIff),
    ROUTINE(FUNDateToStrPicture, ORL_TYPE_STRING, nullptr),
    ROUTINE(FUNNumberToStrPicture, ORL_TYPE_STRING, nullptr),
    ROUTINE(FUNStrTrim, ORL_TYPE_STRING, InnerStrTrim),
    ROUTINE(FUNStrTranslate, ORL_TYPE_STRING, nullptr),
    ROUTINE(FUNPower, ORL_TYPE_NUMBER, nullptr),
    ROUTINE(FUNWeekDay, ORL_TYPE_NUMBER, InnerWeekDay),
    ROUTINE(FUNDateQuarter, ORL_TYPE_NUMBER, InnerDateQuarter),
};

#undef ROUTINE

}  // namespace

void *RoutineByName(const char *fullName) {
  for (const BuiltIn &row : kBuiltIns) {
    if (SameText(row.name, fullName)) {
      return reinterpret_cast<void *>(row.routine);
    }
  }
  return nullptr;
}

const BuiltIn *BuiltInOf(const void *routine) {
  for (const BuiltIn &row : kBuiltIns) {
    if (reinterpret_cast<const void *>(row.routine) == routine) {
      return &row;
    }
  }
  return nullptr;
}
