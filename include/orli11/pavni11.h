/* pavni11.h - number library: the calendar.
 *
 * Dates are proleptic Gregorian, years 1 to 9999. The day number is the Julian day number of the
 * day's noon, so the remainder of the day number plus 2 by 7 is 0 for Saturday to 6 for Friday. */
#ifndef PAVNI11_H
#define PAVNI11_H

#include "wreni11.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Encodes `parts` into up to 12 bytes at `bytes` and returns the length. A day past the end of its
 * month becomes the month's last day; fields out of range (month 0, day 0 or 32, hour 25, year 0 or
 * above 9999) return 0, the null date, and nothing is written. */
WREN_API int32_t PAVNDateToNumber(uint8_t *bytes, const DateTimeParts *parts);
/* Decodes `length` bytes of a payload into all seven fields; anything that PAVNDateToNumber did not
 * write yields seven zeros. */
WREN_API void PAVNNumberToDate(const uint8_t *bytes, int32_t length, DateTimeParts *parts);
/* The day number of the date fields; saturates for fields that are not in the calendar. */
WREN_API int32_t PAVNDateToDays(const DateTimeParts *parts);
/* The inverse: sets month, day and year, and leaves the rest unchanged. */
WREN_API void PAVNDaysToDate(int32_t days, DateTimeParts *parts);

#ifdef __cplusplus
}
#endif

#endif
