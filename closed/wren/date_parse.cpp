// Parses dates and times.
//
//   date    N s N s N           12/31/1999, 31.12.1999, 1999-12-31; s is one of - . / : and
//                               backslash, twice the same
//           N s word s N        12-Jan-1999, 1999-Jan-12
//           N [.] blanks word [.] tail N   12 Jan 1999, 12. January, 1999
//           word [.] blanks N tail N       Jan 12, 1999; a tail is a comma, blanks, or both
//   time    N t N [t N [. N]] [marker]     10:30, 10:30:15.250; t is : or the country's separator,
//                                          with a marker also a point
//           N marker                       10 pm
//   date and time are joined by blanks or by a T
//
// These forms are strict because the scanner tries every run of digits, points and signs as a date:
// «2-1.5», «1.5-0.5» and «12/31/1999-1» are arithmetic.
//
// Each routine reads its part at the cursor, moves past it and returns true; on false the whole
// attempt has failed. Each attempt scans the text once, and the number of attempts is fixed.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "closed/wren/codepage.h"
#include "closed/wren/country.h"
#include "closed/wren/date_format.h"
#include "closed/wren/digit_run.h"
#include "closed/wren/gregorian.h"
#include "wreni11.h"

namespace {

// How the country writes dates, as far as reading needs it.
struct Conventions {
  DateOrder order;
  int32_t pivotYear;
  char timeSeparator;
  const char *monthNames;
  const char *markers;
  CodePage page;
};

struct Cursor {
  const char *at;
  const char *end;
};

struct Number {
  int32_t value;
  int32_t digits;
};

constexpr int32_t kMostDigits = 9;  // of a number in a date; more would exceed every year
constexpr size_t kWordSize = 48;

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}
bool IsSeparator(char c) {
  return c == '-' || c == '.' || c == '/' || c == ':' || c == '\\';
}
bool IsTimeSeparator(char c) {
  return c == '.' || c == ':';
}
// Letters outside ASCII are handled by the comparison with the names.
bool IsWordByte(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c < 0;
}

// The byte at the cursor, 0 at the end.
char Peek(const Cursor &cursor) {
  return cursor.at < cursor.end ? *cursor.at : '\0';
}

bool SkipBlanks(Cursor &cursor) {
  const char *start = cursor.at;
  while (IsBlank(Peek(cursor))) {
    ++cursor.at;
  }
  return cursor.at > start;
}

// A run of more digits than any part of a date has fails at once, even if they are zeros.
bool ReadNumber(Cursor &cursor, Number &number) {
  number = {0, 0};
  while (IsDigit(Peek(cursor))) {
    if (number.digits == kMostDigits) {
      return false;
    }
    number.value = number.value * 10 + (*cursor.at++ - '0');
    ++number.digits;
  }
  return number.digits > 0;
}

// The digits after a decimal point as microseconds; further digits are dropped.
bool ReadFraction(Cursor &cursor, int32_t &microseconds) {
  microseconds = 0;
  const char *start = cursor.at;
  int32_t scale = 100000;
  while (IsDigit(Peek(cursor))) {
    microseconds += (*cursor.at++ - '0') * scale;
    scale /= 10;
  }
  return cursor.at > start;
}

// ---- Names ----

bool CopyText(std::string_view text, char (&target)[kWordSize]) {
  if (text.empty() || text.size() >= kWordSize) {
    return false;
  }
  text.copy(target, text.size());
  target[text.size()] = 0;
  return true;
}

bool IsSameNoCase(std::string_view name, const char *word) {
  char copy[kWordSize];
  return CopyText(name, copy) && WRENStrEqualNoCase(copy, word) != 0;
}

constexpr int32_t kMonths = 12;
constexpr int32_t kMonthNames = 2 * kMonths;  // of a list: the whole ones, then abbreviations

// The month of a name of the list, whole or abbreviated as the list has it; 0 for none. Some
// languages end abbreviations with a point, which is not part of the word.
int32_t MonthOfName(const char *list, const char *word) {
  for (int32_t i = 0; i < kMonthNames; ++i) {
    std::string_view name = NameOfList(list, i);
    if (name.size() > 1 && name.back() == '.') {
      name.remove_suffix(1);
    }
    if (IsSameNoCase(name, word)) {
      return i % kMonths + 1;
    }
  }
  return 0;
}

// The only month whose name begins with the word; 0 for none or several.
int32_t MonthOfBeginning(const char *list, const char *word) {
  int32_t found = 0;
  for (int32_t i = 0; i < kMonths; ++i) {
    if (IsSameNoCase(NameOfList(list, i).substr(0, strlen(word)), word)) {
      if (found != 0) {
        return 0;
      }
      found = i + 1;
    }
  }
  return found;
}

// Reads a month's name: the country's or the English one, whole or a prefix of at least three
// letters. A whole name or usual abbreviation takes precedence over a prefix.
bool ReadMonth(Cursor &cursor, const Conventions &conventions, Number &month) {
  const char *start = cursor.at;
  while (IsWordByte(Peek(cursor))) {
    cursor.at = std::min(cursor.at + CharBytes(cursor.at, conventions.page), cursor.end);
  }
  char word[kWordSize];
  if (!CopyText({start, static_cast<size_t>(cursor.at - start)}, word) || WRENStrChars(word) < 3) {
    return false;
  }
  using Search = int32_t (*)(const char *, const char *);
  const char *lists[] = {conventions.monthNames, CountryBuiltIn().nameTexts[1]};
  for (const Search search : {MonthOfName, MonthOfBeginning}) {
    for (const char *list : lists) {
      month = {search(list, word), 2};
      if (month.value != 0) {
        return true;
      }
    }
  }
  return false;
}

// Reads a marker, which ends the text: 0 for the half before noon, 1 for that after noon.
bool ReadMarker(Cursor &cursor, const Conventions &conventions, int32_t &half) {
  char word[kWordSize];
  if (!CopyText({cursor.at, static_cast<size_t>(cursor.end - cursor.at)}, word)) {
    return false;
  }
  const char *lists[] = {CountryBuiltIn().nameTexts[2], conventions.markers};
  for (const char *list : lists) {
    for (half = 0; half < 2; ++half) {
      if (IsSameNoCase(NameOfList(list, half), word)) {
        cursor.at = cursor.end;
        return true;
      }
    }
  }
  return false;
}

// ---- Times ----

// Reads a time up to the end of the text.
bool ReadTime(Cursor &cursor, const Conventions &conventions, DateTimeParts &parts) {
  Number numbers[3] = {};
  int32_t count = 0;
  char separator = 0;
  parts.fraction = 0;
  while (count < 3) {
    if (!ReadNumber(cursor, numbers[count++])) {
      return false;
    }
    if (!IsTimeSeparator(Peek(cursor))) {
      break;
    }
    const char mark = *cursor.at++;
    if (count == 1) {
      separator = mark;
    } else if (count == 2 ? mark != separator : !ReadFraction(cursor, parts.fraction)) {
      return false;
    }
  }
  parts.hour = numbers[0].value;
  parts.minute = numbers[1].value;
  parts.second = numbers[2].value;
  SkipBlanks(cursor);
  if (cursor.at == cursor.end) {
    return count > 1 && (separator == ':' || separator == conventions.timeSeparator) &&
           IsTimeReal(parts);
  }
  int32_t half = 0;
  if (parts.hour > 12 || !ReadMarker(cursor, conventions, half)) {
    return false;
  }
  parts.hour = parts.hour % 12 + half * 12;
  return IsTimeReal(parts);
}

bool IsTime(Cursor cursor, const Conventions &conventions) {
  DateTimeParts parts = {};
  return ReadTime(cursor, conventions, parts);
}

// ---- Dates ----

int32_t YearOf(const Number &number, int32_t pivotYear) {
  if (number.digits > 2) {
    return number.value;
  }
  const int32_t year = pivotYear - pivotYear % 100 + number.value;
  return year < pivotYear ? year + 100 : year;
}

bool MakeDate(const Number &year, const Number &month, const Number &day,
              const Conventions &conventions, DateTimeParts &parts) {
  parts.year = YearOf(year, conventions.pivotYear);
  parts.month = month.value;
  parts.day = day.value;
  return IsDateReal(parts);
}

// Three numbers are in the country's order, but a first or last number of three or more digits can
// only be the year.
bool MakeNumericDate(const Number (&n)[3], const Conventions &conventions, DateTimeParts &parts) {
  if (n[0].digits > 2) {
    return MakeDate(n[0], n[1], n[2], conventions, parts);
  }
  if (conventions.order == DateOrder::DayMonthYear) {
    return MakeDate(n[2], n[1], n[0], conventions, parts);
  }
  if (conventions.order == DateOrder::YearMonthDay && n[2].digits <= 2) {
    return MakeDate(n[0], n[1], n[2], conventions, parts);
  }
  return MakeDate(n[2], n[0], n[1], conventions, parts);
}

// In a date with the month's name the day comes first, unless the first number can only be the
// year.
bool MakeNamedDate(const Number &first, const Number &month, const Number &last,
                   const Conventions &conventions, DateTimeParts &parts) {
  return first.digits > 2 ? MakeDate(first, month, last, conventions, parts)
                          : MakeDate(last, month, first, conventions, parts);
}

// The separator before the last number of a date with the month's name: a comma, blanks, or both.
bool SkipTail(Cursor &cursor) {
  const bool comma = Peek(cursor) == ',';
  cursor.at += comma ? 1 : 0;
  return SkipBlanks(cursor) || comma;
}

bool SkipByte(Cursor &cursor, char byte) {
  const bool found = Peek(cursor) == byte;
  cursor.at += found ? 1 : 0;
  return found;
}

// Reads a month's name, possibly abbreviated with a point, as in "Jan. 12, 1999".
bool ReadWrittenMonth(Cursor &cursor, const Conventions &conventions, Number &month) {
  if (!ReadMonth(cursor, conventions, month)) {
    return false;
  }
  SkipByte(cursor, '.');
  return true;
}

// word [.] blanks N tail N
bool ReadMonthFirst(Cursor &cursor, const Conventions &conventions, DateTimeParts &parts) {
  Number month;
  Number day;
  Number year;
  return ReadWrittenMonth(cursor, conventions, month) && SkipBlanks(cursor) &&
         ReadNumber(cursor, day) && SkipTail(cursor) && ReadNumber(cursor, year) &&
         MakeDate(year, month, day, conventions, parts);
}

// N s N s N, from the second number on. With a ":" it is a time and not a date when the whole text
// can be a time.
bool ReadNumericDate(Cursor &cursor, const Cursor &start, char separator, Number (&numbers)[3],
                     const Conventions &conventions, DateTimeParts &parts) {
  return ReadNumber(cursor, numbers[1]) && SkipByte(cursor, separator) &&
         ReadNumber(cursor, numbers[2]) && !(separator == ':' && IsTime(start, conventions)) &&
         MakeNumericDate(numbers, conventions, parts);
}

bool ReadDate(Cursor &cursor, const Conventions &conventions, DateTimeParts &parts) {
  if (IsWordByte(Peek(cursor))) {
    return ReadMonthFirst(cursor, conventions, parts);
  }
  const Cursor start = cursor;
  Number numbers[3];
  if (!ReadNumber(cursor, numbers[0])) {
    return false;
  }
  const char separator = IsSeparator(Peek(cursor)) ? *cursor.at++ : '\0';
  if (separator != 0 && IsDigit(Peek(cursor))) {
    return ReadNumericDate(cursor, start, separator, numbers, conventions, parts);
  }
  Number month;
  const bool written = (separator == 0 || separator == '.') && SkipBlanks(cursor);
  const bool named = written ? ReadWrittenMonth(cursor, conventions, month) && SkipTail(cursor)
                             : separator != 0 && ReadMonth(cursor, conventions, month) &&
                                   SkipByte(cursor, separator);
  return named && ReadNumber(cursor, numbers[2]) &&
         MakeNamedDate(numbers[0], month, numbers[2], conventions, parts);
}

bool ReadDateAndTime(Cursor &cursor, const Conventions &conventions, DateTimeParts &parts) {
  if (!ReadDate(cursor, conventions, parts)) {
    return false;
  }
  if (cursor.at == cursor.end) {
    return true;
  }
  return (SkipBlanks(cursor) || SkipByte(cursor, 'T')) && ReadTime(cursor, conventions, parts);
}

Conventions ConventionsOf(const FormatRecord &record) {
  const Country &country = CountryNow();
  Conventions result = {.order = country.dateOrder,
                        .pivotYear = country.pivotYear,
                        .timeSeparator = country.timeSeparator[0],
                        .monthNames = country.nameTexts[1],
                        .markers = country.nameTexts[2],
                        .page = CodePageNow()};
  if (record.useCountry == 0) {
    result.order = static_cast<DateOrder>(std::clamp(record.dateOrder, 0, 2));
    result.pivotYear = record.pivotYear >= kFirstYear && record.pivotYear <= kLastYear - 99
                           ? record.pivotYear
                           : country.pivotYear;
    result.monthNames = NamesInActiveCodePage(record.monthNames);
    result.markers = NamesInActiveCodePage(record.markers);
  }
  return result;
}

}  // namespace

int32_t WRENFmtParseDate(FormatRecord *record) {
  if (record == nullptr || record->input == nullptr) {
    return 0;
  }
  Cursor cursor = {record->input, record->input + strlen(record->input)};
  SkipBlanks(cursor);
  while (cursor.end > cursor.at && IsBlank(cursor.end[-1])) {
    --cursor.end;
  }
  const Conventions conventions = ConventionsOf(*record);
  DateTimeParts parts = {};
  bool good = false;
  switch (record->mode) {
    case WREN_FMT_DATE:
      good = ReadDate(cursor, conventions, parts) && cursor.at == cursor.end;
      break;
    case WREN_FMT_TIME:
      parts = kDayOfTimes;
      good = ReadTime(cursor, conventions, parts);
      break;
    case WREN_FMT_DATETIME:
      good = ReadDateAndTime(cursor, conventions, parts);
      break;
    default:
      break;
  }
  if (good) {
    record->parts = parts;
  }
  return good ? 1 : 0;
}
