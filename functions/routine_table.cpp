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
    ROUTINE(FUNDateAddDay),       ROUTINE(FUNDateYear),       ROUTINE(FUNDateMonth),
    ROUTINE(FUNDateDay),          ROUTINE(FUNDateHour),       ROUTINE(FUNDateMinute),
    ROUTINE(FUNDateSecond),       ROUTINE(FUNDateMonthBegin), ROUTINE(FUNDateMonthEnd),
    ROUTINE(FUNDateToStr),        ROUTINE(FUNDateConstruct),  ROUTINE(FUNDateIFF),
    ROUTINE(FUNDateToStrPicture), ROUTINE(FUNWeekDay),        ROUTINE(FUNDateQuarter),
    ROUTINE(FUNStrToDate),
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
