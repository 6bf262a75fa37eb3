#include "host/field.h"

#include <pavni11.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <string>

#include "host/chars.h"

namespace {

constexpr int kMostDigits = 26;
constexpr size_t kLongestDate = 64;
constexpr size_t kFormatCapacity = 100;
constexpr int32_t kMinutesOfDay = 24 * 60;

int CountDigits(std::string_view text) {
  int digits = 0;
  for (const char byte : text) {
    if (byte == 'e' || byte == 'E') {
      break;
    }
    digits += IsDigit(byte) && (digits != 0 || byte != '0') ? 1 : 0;
  }
  return digits;
}

// The text with the special blanks that some countries use for grouping replaced by plain ones.
std::string WithPlainBlanks(std::string_view text) {
  std::string plain(Trimmed(text));
  for (const std::string_view blank : {"\xC2\xA0", "\xE2\x80\xAF"}) {
    for (size_t at = plain.find(blank); at != std::string::npos; at = plain.find(blank, at)) {
      plain.replace(at, blank.size(), " ");
    }
  }
  return plain;
}

// A number with the given decimal separator, as plain text: the other separator, or blanks, group
// digits by three. Empty when it is not of that form.
std::string WithoutGroups(std::string_view field, char decimal) {
  const std::string text = WithPlainBlanks(field);
  const size_t separator = text.find_first_of(decimal == ',' ? ". " : ", ");
  const char group = separator == std::string::npos ? ' ' : text[separator];
  const std::string_view whole = std::string_view(text).substr(0, text.find(decimal));
  std::string plain;
  size_t run = 0;  // digits since the start or the last group separator
  bool grouped = false;
  for (const char byte : whole) {
    if (byte == group) {
      if (run == 0 || run > 3 || (grouped && run != 3)) {
        return {};
      }
      grouped = true;
      run = 0;
    } else {
      plain += byte;
      run += IsDigit(byte) ? 1 : 0;
    }
  }
  if (grouped && run != 3) {
    return {};
  }
  if (whole.size() != text.size()) {
    plain += '.';
    plain += text.substr(whole.size() + 1);
    if (text.find_first_of("., ", whole.size() + 1) != std::string_view::npos) {
      return {};
    }
  }
  return plain;
}

// Whether a number is exact: no excess digits, not too small.
bool IsExact(const NumberValue &value, std::string_view text) {
  const int digits = CountDigits(text);
  return WRENNumIsNull(&value) == 0 && digits <= kMostDigits &&
         (digits == 0 || WRENNumIsZero(&value) == 0);
}

// The digits at the start of the text; removes them.
std::string_view TakeDigits(std::string_view &text) {
  size_t count = 0;
  while (count < text.size() && IsDigit(text[count])) {
    ++count;
  }
  const std::string_view digits = text.substr(0, count);
  text.remove_prefix(count);
  return digits;
}

// Three numbers of one separator at the start of a text.
struct ThreeNumbers {
  std::string_view first, second, third;
  char separator = '\0';  // 0: the text does not begin with them
  bool equal = true;      // both separators are the same
  std::string_view rest;
};

ThreeNumbers TakeThree(std::string_view text) {
  ThreeNumbers result;
  result.first = TakeDigits(text);
  if (result.first.empty() || text.size() < 2 || !IsDigit(text[1])) {
    return {};
  }
  result.separator = text[0];
  text.remove_prefix(1);
  result.second = TakeDigits(text);
  result.equal = !text.empty() && text[0] == result.separator;
  text.remove_prefix(text.empty() ? 0 : 1);
  result.third = TakeDigits(text);
  result.rest = text;
  return result;
}

// How the country writes dates.
struct CountryDates {
  char separator;
  bool yearFirst;
};

CountryDates FindCountryDates() {
  std::array<char, kFormatCapacity> text = {};
  FormatRecord record;
  WRENFmtInit(&record);
  record.mode = WREN_FMT_DATE;
  record.output = text.data();
  record.useCountry = 1;
  record.parts = {12, 31, 1999, 0, 0, 0, 0};
  WRENFmtDate(&record);
  const std::string_view shown(text.data());
  const size_t place = shown.find_first_not_of("0123456789");
  LocaleBlock locale;
  WRENFmtLoadLocale(&locale);
  return {place == std::string_view::npos ? '/' : shown[place], locale.dateOrder == 2};
}

// Whether three numbers at the start are written as a date and not as a version or an address: in
// ISO form, or with the country's separator, or with any date separator when the order was given; a
// year of two or four digits; a blank or a T before the time. Other texts are left to the library.
bool LooksLikeDate(const FieldRules &rules, std::string_view text) {
  static const CountryDates country = FindCountryDates();
  const ThreeNumbers numbers = TakeThree(Trimmed(text));
  if (numbers.separator == '\0') {
    return true;
  }
  const bool iso = numbers.separator == '-' && numbers.first.size() == 4;
  const bool named = rules.dateOrder >= 0;
  const bool separated = named ? std::strchr("-./", numbers.separator) != nullptr
                               : numbers.separator == country.separator;
  if (!numbers.equal || !(iso || separated)) {
    return false;
  }
  const bool yearFirst = named ? rules.dateOrder == 2 : country.yearFirst;
  const bool firstIsYear = numbers.first.size() > 2 || (yearFirst && numbers.third.size() <= 2);
  const size_t year = firstIsYear ? numbers.first.size() : numbers.third.size();
  const std::string_view rest = numbers.rest;
  return (year == 2 || year == 4) &&
         (rest.empty() || rest[0] == 'T' || kBlanks.find(rest[0]) != std::string_view::npos);
}

// The position of the "Z" or offset of an ISO date and time; npos when there is none.
size_t FindOffset(std::string_view text) {
  constexpr size_t kTime = 11;  // of 2024-01-31T10:30
  const ThreeNumbers numbers = TakeThree(text);
  if (numbers.separator != '-' || numbers.first.size() != 4 || text.size() < kTime + 3) {
    return std::string_view::npos;
  }
  if (text.back() == 'Z' || text.back() == 'z') {
    return text.size() - 1;
  }
  const size_t sign = text.find_last_of("+-");
  if (sign < kTime + 2 || text.find(':') > sign) {
    return std::string_view::npos;
  }
  return sign;
}

// The offset in minutes of "Z", "+02", "-0530" or "+05:30"; false for anything else.
bool OffsetMinutes(std::string_view offset, int32_t &minutes) {
  if (offset == "Z" || offset == "z") {
    minutes = 0;
    return true;
  }
  std::string digits(offset.substr(1));
  if (digits.size() == 5 && digits[2] == ':') {
    digits.erase(2, 1);
  }
  if ((digits.size() != 2 && digits.size() != 4) ||
      !std::all_of(digits.begin(), digits.end(), IsDigit)) {
    return false;
  }
  digits.resize(4, '0');
  const int32_t hour = (digits[0] - '0') * 10 + digits[1] - '0';
  const int32_t minute = (digits[2] - '0') * 10 + digits[3] - '0';
  minutes = (offset[0] == '-' ? -1 : 1) * (hour * 60 + minute);
  return hour < 24 && minute < 60;
}

void SubtractMinutes(DateTimeParts &parts, int32_t minutes) {
  int32_t total = parts.hour * 60 + parts.minute - minutes;
  int32_t days = PAVNDateToDays(&parts);
  for (; total < 0; total += kMinutesOfDay) {
    --days;
  }
  for (; total >= kMinutesOfDay; total -= kMinutesOfDay) {
    ++days;
  }
  PAVNDaysToDate(days, &parts);
  parts.hour = total / 60;
  parts.minute = total % 60;
}

bool ParseDate(const FieldRules &rules, const char *text, DateTimeParts &parts) {
  FormatRecord record;
  WRENFmtInit(&record);
  record.mode = WREN_FMT_DATETIME;
  record.input = text;
  record.useCountry = 1;
  if (rules.dateOrder >= 0) {
    LocaleBlock locale;
    WRENFmtLoadLocale(&locale);
    record.useCountry = 0;
    record.dateOrder = rules.dateOrder;
    record.dayNames = locale.dayNames;
    record.monthNames = locale.monthNames;
    record.markers = locale.markers;
    record.pivotYear = locale.pivotYear;
  }
  const bool good = WRENFmtParseDate(&record) != 0;
  parts = record.parts;
  return good;
}

bool IsMonth(std::string_view digits) {
  const int number = digits.size() <= 2 ? std::stoi(std::string(digits)) : 0;
  return number >= 1 && number <= 12;
}

bool IsDay(std::string_view digits) {
  const int number = digits.size() <= 2 ? std::stoi(std::string(digits)) : 0;
  return number >= 1 && number <= 31;
}

}  // namespace

bool NumberFromField(const FieldRules &rules, const char *text, NumberValue *value) {
  const char *first = text + std::strspn(text, " \t");
  if (!IsDigit(*first) && std::strchr("+-.,", *first) == nullptr) {
    return false;
  }
  if (rules.decimal == '\0') {
    WRENNumFromText(value, text);
    return IsExact(*value, text);
  }
  const std::string plain = WithoutGroups(text, rules.decimal);
  WRENNumFromText(value, plain.c_str());
  return IsExact(*value, plain);
}

bool DayOfPlainDate(const char *text, int32_t &day) {
  constexpr std::string_view kShape = "dddd-dd-dd";
  for (size_t i = 0; i < kShape.size(); ++i) {
    if (kShape[i] == 'd' ? !IsDigit(text[i]) : text[i] != kShape[i]) {
      return false;
    }
  }
  const auto number = [text](int first, int digits) {
    int value = 0;
    for (int i = first; i < first + digits; ++i) {
      value = value * 10 + (text[i] - '0');
    }
    return value;
  };
  const std::chrono::year_month_day date(std::chrono::year(number(0, 4)),
                                         std::chrono::month(static_cast<unsigned>(number(5, 2))),
                                         std::chrono::day(static_cast<unsigned>(number(8, 2))));
  if (text[kShape.size()] != '\0' || !date.ok() || number(0, 4) == 0) {
    return false;
  }
  day = static_cast<int32_t>(std::chrono::sys_days(date).time_since_epoch().count());
  return true;
}

bool PlainDecimal(const char *text, int64_t &value, uint8_t &decimals) {
  constexpr ptrdiff_t kMostDigitsOf64Bits = 18;
  const bool negative = *text == '-';
  text += negative ? 1 : 0;
  uint64_t number = 0;  // wraps around where there are too many digits
  const char *first = text;
  for (; IsDigit(*text); ++text) {
    number = number * 10 + static_cast<unsigned char>(*text - '0');
  }
  const ptrdiff_t whole = text - first;
  ptrdiff_t fraction = 0;
  if (*text == '.') {
    first = ++text;
    for (; IsDigit(*text); ++text) {
      number = number * 10 + static_cast<unsigned char>(*text - '0');
    }
    fraction = text - first;
    if (fraction == 0) {
      return false;
    }
  }
  value = negative ? -static_cast<int64_t>(number) : static_cast<int64_t>(number);
  decimals = static_cast<uint8_t>(fraction);
  return *text == '\0' && whole > 0 && whole + fraction <= kMostDigitsOf64Bits;
}

bool DateFromField(const FieldRules &rules, const char *text, NumberValue *value) {
  std::string_view whole(text);
  if (whole.size() > kLongestDate) {
    return false;
  }
  whole = Trimmed(whole);
  const size_t offset = FindOffset(whole);
  std::string local;
  int32_t minutes = 0;
  if (offset != std::string_view::npos) {
    if (!OffsetMinutes(whole.substr(offset), minutes)) {
      return false;
    }
    local = Trimmed(whole.substr(0, offset));
    text = local.c_str();
  }
  DateTimeParts parts;
  if (!ParseDate(rules, text, parts) || !LooksLikeDate(rules, text)) {
    return false;
  }
  if (minutes != 0) {
    SubtractMinutes(parts, minutes);
  }
  std::memset(value, 0, sizeof *value);
  value->length = static_cast<uint8_t>(PAVNDateToNumber(value->payload, &parts));
  return value->length != 0;
}

bool HasOffset(std::string_view text) {
  return FindOffset(Trimmed(text)) != std::string_view::npos;
}

CodeShape CodeShapeOf(std::string_view number) {
  number = Trimmed(number);
  if (number.starts_with('+')) {
    return kCodeSign;
  }
  if (number.starts_with('-')) {
    number.remove_prefix(1);
  }
  if (number.size() > 1 && number[0] == '0' && IsDigit(number[1])) {
    return kCodeZeros;
  }
  const std::string_view digits = TakeDigits(number);
  const bool exponent = !digits.empty() && number.size() > 1 &&
                        (number[0] == 'e' || number[0] == 'E') && IsDigit(number[1]);
  return exponent ? kCodeExponent : kCodeNone;
}

bool YearIsFirst(std::string_view text) {
  return TakeThree(Trimmed(text)).first.size() == 4;
}

int32_t CountryDateOrder() {
  LocaleBlock locale;
  WRENFmtLoadLocale(&locale);
  return locale.dateOrder;
}

unsigned DateOrdersOf(std::string_view text) {
  const ThreeNumbers numbers = TakeThree(Trimmed(text));
  if (numbers.separator == '\0' || !numbers.equal || numbers.third.empty() ||
      std::strchr("-./", numbers.separator) == nullptr) {
    return 0;
  }
  unsigned orders = 0;
  if (numbers.first.size() <= 2 && (numbers.third.size() == 2 || numbers.third.size() == 4)) {
    orders |= IsMonth(numbers.first) && IsDay(numbers.second) ? kOrderMdy : 0U;
    orders |= IsDay(numbers.first) && IsMonth(numbers.second) ? kOrderDmy : 0U;
  }
  if (numbers.first.size() == 2 && numbers.third.size() <= 2) {
    orders |= IsMonth(numbers.second) && IsDay(numbers.third) ? kOrderYmd : 0U;
  }
  return orders;
}
