#include "functions/registry.h"
#include "platform/text.h"

namespace {

struct RoutineRow {
  const char *name;
  OrlFunctionProc routine;
};

#define ROUTINE(name) \
  { #name, name }

constexpr RoutineRow kRoutines[] = {
    ROUTINE(FUNDateAddDay),
    ROUTINE(FUNDateYear),
    ROUTINE(FUNDateMonth),
    ROUTINE(FUNDateDay),
    ROUTINE(FUNDateHour),
    ROUTINE(FUNDateMinute),
    ROUTINE(FUNDateSecond),
    ROUTINE(FUNDateMonthBegin),
    ROUTINE(FUNDateMonthEnd),
    ROUTINE(FUNDateToStr),
    ROUTINE(FUNDateConstruct),
    ROUTINE(FUNStrMid),
    ROUTINE(FUNStrRight),
    ROUTINE(FUNStrLeft),
    ROUTINE(FUNStrLength),
    ROUTINE(FUNStrRTrim),
    ROUTINE(FUNStrLTrim),
    ROUTINE(FUNStrRepeat),
    ROUTINE(FUNStrPad),
    ROUTINE(FUNStrCompare),
    ROUTINE(FUNStrIFF),
    ROUTINE(FUNStrCase),
    ROUTINE(FUNStrProper),
    ROUTINE(FUNStrReplace),
    ROUTINE(FUNStrScan),
    ROUTINE(FUNStrSpaces),
    ROUTINE(FUNStrToDate),
    ROUTINE(FUNStrToNumber),
    ROUTINE(FUNStrUpper),
    ROUTINE(FUNNumberAbsolute),
    ROUTINE(FUNNumberMod),
    ROUTINE(FUNNumberToStr),
    ROUTINE(FUNNumberToCurrency),
    ROUTINE(FUNNumberCountryFmt),
    ROUTINE(FUNNumberRound),
    ROUTINE(FUNNumberTruncate),
    ROUTINE(FUNStrLower),
    ROUTINE(FUNNumberIFF),
    ROUTINE(FUNDateIFF),
    ROUTINE(FUNDateToStrPicture),
    ROUTINE(FUNNumberToStrPicture),
    ROUTINE(FUNStrTrim),
    ROUTINE(FUNStrTranslate),
    ROUTINE(FUNPower),
    ROUTINE(FUNWeekDay),
    ROUTINE(FUNDateQuarter),
};

#undef ROUTINE

}  // namespace

void *RoutineByName(const char *fullName) {
  for (const RoutineRow &row : kRoutines) {
    if (SameText(row.name, fullName)) {
      return reinterpret_cast<void *>(row.routine);
    }
  }
  return nullptr;
}
