// The record of a format operation: clearing it, its locale fields, and the widest date text.
#include <algorithm>
#include <cstring>

#include "closed/wren/country.h"
#include "closed/wren/date_format.h"
#include "wreni11.h"

void WRENFmtInit(FormatRecord *record) {
  if (record != nullptr) {
    *record = FormatRecord{};
  }
}

void WRENFmtLoadLocale(LocaleBlock *block) {
  if (block == nullptr) {
    return;
  }
  const Country &country = CountryNow();
  *block = {.dateOrder = static_cast<int32_t>(country.dateOrder),
            .clock24 = country.clock24 ? 1 : 0,
            .pivotYear = country.pivotYear,
            .dayNames = country.nameTexts[0],
            .monthNames = country.nameTexts[1],
            .markers = country.nameTexts[2]};
}

// The width of a date text depends on the month, the weekday and the half of the day only through
// the width of their names, and numbers are widest from the tenth day and hour on. So it is enough
// to format the dates that combine all of these with wide numbers.
int32_t WRENFmtWidth(FormatRecord *record, int32_t width) {
  if (record == nullptr) {
    return width;
  }
  FormatRecord sample = *record;
  char text[kDateTextCapacity];
  sample.output = text;
  int32_t widest = 0;
  for (int32_t month = 1; month <= 12; ++month) {
    for (int32_t day = 10; day < 17; ++day) {
      for (int32_t hour = 10; hour < 24; hour += 12) {
        sample.parts = {month, day, 2000, hour, 59, 59, 999999};
        const DateTextResult result = WriteDateText(sample);
        if (result == DateTextResult::Refused) {
          return width;
        }
        if (result == DateTextResult::TooLong) {
          return std::max(width, kDateTextCapacity - 1);
        }
        widest = std::max(widest, static_cast<int32_t>(strlen(text)));
      }
    }
  }
  return std::max(width, widest);
}

void WRENListBoxRefit(void * /*handle*/) {}
