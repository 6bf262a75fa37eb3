/* Prints the day number of a date, which the calendar knows without the engine. */
#include <orli11/pavni11.h>
#include <stdio.h>

int main(void) {
  const DateTimeParts day = {.month = 1, .day = 1, .year = 2000};
  NumberValue number;
  char text[16];
  WRENNumFromInt(&number, PAVNDateToDays(&day));
  WRENNumToText(&number, sizeof text, text);
  puts(text);
  return 0;
}
