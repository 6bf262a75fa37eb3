#include "engine/random_rows.h"

#include <chrono>
#include <cmath>
#include <cstring>

#include "pavni11.h"

namespace {

NumberValue DateOf(int64_t day, int64_t microseconds) {
  NumberValue date = {};
  if (day < -800000 || day > 3000000) return date;
  const std::chrono::year_month_day calendar(
      std::chrono::sys_days(std::chrono::days(static_cast<int>(day))));
  const auto second = static_cast<int32_t>(microseconds / 1000000);
  const DateTimeParts parts = {static_cast<int32_t>(static_cast<unsigned>(calendar.month())),
                               static_cast<int32_t>(static_cast<unsigned>(calendar.day())),
                               static_cast<int>(calendar.year()),
                               second / 3600,
                               second / 60 % 60,
                               second % 60,
                               static_cast<int32_t>(microseconds % 1000000)};
  if (parts.year >= 1 && parts.year <= 9999) {
    date.length = static_cast<uint8_t>(PAVNDateToNumber(date.payload, &parts));
  }
  return date;
}

NumberValue NumberOf(const std::string &text) {
  NumberValue number;
  WRENNumFromText(&number, text.c_str());
  return number;
}

std::string WideText(Wide value) {
  std::string digits;
  const bool negative = value < 0;
  for (; digits.empty() || value != 0; value /= 10) {
    const auto digit = static_cast<int>(value % 10);
    digits.insert(digits.begin(), static_cast<char>('0' + (digit < 0 ? -digit : digit)));
  }
  return (negative ? "-" : "") + digits;
}

template <class T>
void Append(Item &item, const T &element) {
  item.bytes.append(reinterpret_cast<const char *>(&element), sizeof element);
}

}  // namespace

NumberValue World::AnyNumber() {
  static const char *const texts[] = {"0",      "1",
                                      "-1",     "0.1",
                                      "2",      "99999999999999999999999999",
                                      "9e152",  "-99999999999999999999999999e127",
                                      "1e-128", "-1e-128",
                                      "0.5",    "12345678901234567890.123456",
                                      "",       "9223372036854775807",
                                      "1e26",   "-9223372036854775808.5"};
  if (OneIn(3)) return NumberOf(Any(texts));
  const auto digits = static_cast<int64_t>(random()) >> Below(64);
  return NumberOf(std::to_string(digits) + "e" + std::to_string(static_cast<int>(Below(12)) - 9));
}

void World::FillNumber(Item &item) {
  static const int64_t longs[] = {0, 1, -1, INT64_MAX, INT64_MIN, 1000000007, -100};
  static const double doubles[] = {0.0,    -0.0,     0.1,       1e300,
                                   5e-324, HUGE_VAL, -HUGE_VAL, static_cast<double>(NAN),
                                   1.5,    1e22,     123456.75, -2.5e-7};
  const size_t spread = Below(64);
  for (size_t at = 0; at < rows; ++at) {
    switch (item.form) {
      case ORL_COLUMN_NUMBER:
        item.numbers.push_back(AnyNumber());
        if (OneIn(50)) std::memset(&item.numbers.back(), 12, sizeof(NumberValue));
        Append(item, item.numbers.back());
        break;
      case ORL_COLUMN_INT64: {
        const int64_t value = OneIn(200) ? Any(longs) : static_cast<int64_t>(random()) >> spread;
        item.numbers.push_back(NumberOf(std::to_string(value) + "e-" + std::to_string(item.scale)));
        Append(item, value);
        break;
      }
      case ORL_COLUMN_DECIMAL128: {
        const auto high = static_cast<int64_t>(random());
        const Wide value = (static_cast<Wide>(high) << 64 | static_cast<Wide>(random())) >>
                           (OneIn(3) ? Below(128) : 64 + spread);
        item.numbers.push_back(NumberOf(WideText(value) + "e-" + std::to_string(item.scale)));
        Append(item, value);
        break;
      }
      default: {
        const double value = OneIn(10) ? Any(doubles)
                                       : std::ldexp(static_cast<double>(random() >> 11),
                                                    static_cast<int>(Below(80)) - 70);
        NumberValue number;
        WRENNumFromDouble(&number, value);
        item.numbers.push_back(number);
        Append(item, value);
      }
    }
  }
}

void World::FillDate(Item &item) {
  static const int32_t days[] = {0, -1, -719162, -719163, 2932896, 2932897, INT32_MIN, INT32_MAX};
  static const int64_t instants[] = {
      0, -1, INT64_MIN, INT64_MAX, -719162 * kDay - 1, 2932897 * kDay - 1};
  for (size_t at = 0; at < rows; ++at) {
    int64_t day = OneIn(20) ? Any(days) : static_cast<int64_t>(Below(60000)) - 30000;
    int64_t rest = 0;
    if (item.form == ORL_COLUMN_DATE32) {
      Append(item, static_cast<int32_t>(day));
    } else {
      const int64_t instant =
          OneIn(20) ? Any(instants) : day % 50000 * kDay + static_cast<int64_t>(Below(kDay));
      rest = (instant % kDay + kDay) % kDay;
      day = instant / kDay - (instant % kDay < 0 ? 1 : 0);
      if (item.form == ORL_COLUMN_TIMESTAMP) Append(item, instant);
    }
    item.numbers.push_back(DateOf(day, rest));
    if (item.form == ORL_COLUMN_NUMBER) Append(item, item.numbers.back());
  }
}

void World::FillText(Item &item) {
  static const std::string pool[] = {"",
                                     "  Ada Lovelace ",
                                     "x\x81 \xE9\xC3\xA9 ",
                                     std::string(60, 'm') + "\xE0 ",
                                     "3.25",
                                     "2012-01-31",
                                     std::string("cut\0off", 7),
                                     "\x83\x5C\x83",
                                     std::string(3000, 'z') + "Z"};
  item.offsets.push_back(static_cast<int32_t>(Below(4)));
  item.bytes.assign(static_cast<size_t>(item.offsets[0]), '?');
  for (size_t at = 0; at < rows; ++at) {
    std::string text = OneIn(4) ? pool[Below(OneIn(20) ? 9 : 8)] : "";
    for (size_t n = text.empty() ? Below(24) : 0; n > 0; --n) {
      text += static_cast<char>(OneIn(40) ? 128 + static_cast<int>(Below(128))
                                          : " abcXYZ09,"[Below(10)]);
    }
    item.bytes += text;
    item.offsets.push_back(static_cast<int32_t>(item.bytes.size()));
    item.texts.emplace_back(text.c_str());
  }
}

void World::Fill(Item &item) {
  static const int32_t numberForms[] = {ORL_COLUMN_NUMBER,     ORL_COLUMN_INT64,
                                        ORL_COLUMN_INT64,      ORL_COLUMN_INT64,
                                        ORL_COLUMN_DECIMAL128, ORL_COLUMN_DOUBLE};
  static const int32_t dateForms[] = {ORL_COLUMN_NUMBER, ORL_COLUMN_DATE32, ORL_COLUMN_TIMESTAMP};
  item.scale = static_cast<int32_t>(OneIn(8) ? Below(38) : Below(2) * 2);
  item.allValid = OneIn(2);
  for (size_t i = 0; i < (rows + 7) / 8; ++i) {
    item.valid.push_back(static_cast<uint8_t>(OneIn(3) ? random() : 255));
  }
  switch (item.name[0]) {
    case 'n':
      item.form = Any(numberForms);
      return FillNumber(item);
    case 'd':
      item.form = Any(dateForms);
      return FillDate(item);
    default:
      item.form = ORL_COLUMN_TEXT;
      return FillText(item);
  }
}

// ---- Formulas ----

std::string World::Items(char kind) {
  return kind + std::to_string(Below(kind == 'n' ? 6 : 3));
}

// A formula made of a pattern: {N}, {D} and {T} become a Number, a Date and a text, {C} a count.
std::string World::Filled(const char *pattern, int depth) {
  std::string formula;
  for (const char *at = pattern; *at != '\0'; ++at) {
    if (*at != '{') {
      formula += *at;
      continue;
    }
    formula += at[1] == 'N'   ? Number(depth)
               : at[1] == 'D' ? Date(depth)
               : at[1] == 'T' ? Text(depth)
                              : Count();
    at += 2;
  }
  return formula;
}

std::string World::Count() {
  static const char *const counts[] = {"0", "1", "2", "3.7", "0 - 1", "20", "100", "n0", "n5"};
  return Any(counts);
}

std::string World::Number(int depth) {
  static const char *const literals[] = {"2",    "0",
                                         "0.5",  "1.25",
                                         "32",   "100000000000",
                                         "7",    "17.777777777777777777777778",
                                         "0.04", "99999999999999999999999999"};
  static const char *const calls[] = {"NumberRound({N}, {C})",
                                      "NumberTruncate({N}, {C})",
                                      "NumberAbsolute({N})",
                                      "NumberMod({N}, {N})",
                                      "NumberIFF({N}, {N}, {N}, {N})",
                                      "StrLength({T})",
                                      "StrCompare({T}, {T})",
                                      "StrScan({T}, {T})",
                                      "StrToNumber({T})",
                                      "Power({N}, {C})",
                                      "({D} - {D})",
                                      "(routineless + {N})",
                                      "DateYear({D})",
                                      "DateMonth({D})",
                                      "DateDay({D})",
                                      "DateHour({D})",
                                      "DateMinute({D})",
                                      "DateSecond({D})",
                                      "WeekDay({D})",
                                      "DateQuarter({D})"};
  static const char *const operations[] = {"({N} + {N})", "({N} - {N})", "({N} * {N})",
                                           "({N} / {N})"};
  if (hosted && OneIn(4)) return depth == 0 ? "nh" : "fh(" + Number(depth - 1) + ")";
  if (depth == 0) return OneIn(4) ? Any(literals) : OneIn(12) ? "nf()" : Items('n');
  return Filled(OneIn(3) ? Any(operations) : Any(calls), depth - 1);
}

std::string World::Date(int depth) {
  static const char *const calls[] = {
      "DateIFF({N}, {D}, {D}, {D})",
      "DateMonthBegin({D})",
      "DateMonthEnd({D})",
      "DateAddDay({D}, {N})",
      "StrToDate({T})",
      "StrToDate(DateToStr({D}))",
      "({D} + {N})",
      "({D} - {N} MONTHS)",
      "({D} + {N} MONTHS)",
      "({D} + {N} YEARS)",
      "({D} - {N} HOURS)",
      "({D} + {N} MINUTES)",
      "({D} - {N} SECONDS)",
      "({D} - {N} YEARS)",
      "({D} + {C} DAYS)",
      "({D} - {C} MONTHS)",
      "({D} + {C} SECONDS)",
      "DateConstruct(1900 + NumberMod({N}, 300), {C}, 1 + NumberMod({N}, 31), {C}, 59, 60)"};
  if (depth == 0) return OneIn(10) ? "2012-02-29 10:30:00" : OneIn(10) ? "df()" : Items('d');
  return Filled(Any(calls), depth - 1);
}

std::string World::Text(int depth) {
  static const char *const calls[] = {"StrUpper({T})",
                                      "StrLower({T})",
                                      "StrTrim({T})",
                                      "StrLTrim({T})",
                                      "StrRTrim({T})",
                                      "StrProper({T})",
                                      "StrLeft({T}, {C})",
                                      "StrRight({T}, {C})",
                                      "StrMid({T}, {C}, {C})",
                                      "StrReplace({T}, {C}, {C}, {T})",
                                      "StrIFF({N}, {T}, {T}, {T})",
                                      "StrPad({T}, NumberMod({N}, 40))",
                                      "StrRepeat({T}, NumberMod({N}, 5))",
                                      "StrSpaces(NumberMod({N}, 40))",
                                      "StrCase({C}, {T})",
                                      "StrTranslate({T}, {T}, {T})",
                                      "NumberToStr({N}, {C})",
                                      "NumberToStrPicture({N}, '#,##0.00')",
                                      "NumberToCurrency({N})",
                                      "NumberCountryFmt({N})",
                                      "DateToStr({D})",
                                      "DateToStrPicture({D}, 'yyyy-mm-dd')"};
  if (depth == 0) return OneIn(6) ? "'it''s'" : OneIn(10) ? "tf()" : Items('t');
  return Filled(OneIn(3) ? "({T} || {T})" : Any(calls), depth - 1);
}
