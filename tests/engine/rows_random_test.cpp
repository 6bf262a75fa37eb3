// Random formulas over random columns: ORLEvaluateRows computes the same as ORLEvaluateExpression
// row by row, with value routines that convert the elements of the columns by the exported
// routines.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "pavni11.h"
#include "support/context.h"

namespace {

__extension__ typedef __int128 Wide;

constexpr int64_t kDay = INT64_C(86400000000);

// The values of one input item: as a column, and as values.
struct Item {
  std::string name;
  int32_t form = 0, scale = 0;
  std::string bytes;  // the elements
  std::vector<int32_t> offsets;
  std::vector<uint8_t> valid;
  bool allValid = false;
  std::vector<NumberValue> numbers;
  std::vector<std::string> texts;

  OrlColumn Column() const {
    return {name.c_str(),
            form,
            scale,
            bytes.data(),
            offsets.empty() ? nullptr : offsets.data(),
            allValid ? nullptr : valid.data()};
  }
  bool HasValue(size_t row) const { return allValid || (valid[row / 8] >> (row % 8) & 1) != 0; }
};

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

// The plain text of a number with `scale` decimals, as an integer; false when `bits` do not hold
// it.
bool Scaled(const NumberValue &value, int32_t scale, int bits, Wide *result) {
  NumberValue rounded;
  WRENNumRound(&rounded, &value, scale);
  char text[200];
  if (WRENNumToText(&rounded, sizeof text, text) == 0) return false;
  std::string digits = text;
  const size_t point = digits.find('.');
  const size_t decimals = point == std::string::npos ? 0 : digits.size() - point - 1;
  if (point != std::string::npos) digits.erase(point, 1);
  digits.append(static_cast<size_t>(scale) - decimals, '0');
  const bool negative = digits[0] == '-';
  *result = 0;
  for (size_t i = negative ? 1 : 0; i < digits.size(); ++i) {
    const int digit = digits[i] - '0';
    if (__builtin_mul_overflow(*result, 10, result) ||
        __builtin_add_overflow(*result, negative ? -digit : digit, result)) {
      return false;
    }
  }
  return bits == 128 || *result == static_cast<int64_t>(*result);
}

struct World {
  std::mt19937_64 random;
  size_t rows = 0;
  std::deque<Item> items;
  size_t current = 0;   // whose values ItemValue returns
  size_t counted = 0;   // calls of the routines that count them
  bool hosted = false;  // formulas call them

  explicit World(uint64_t seed) : random(seed) {}
  size_t Below(size_t end) { return random() % end; }
  bool OneIn(size_t n) { return Below(n) == 0; }
  template <class T, size_t n>
  T Any(const T (&values)[n]) {
    return values[Below(n)];
  }

  void Fill(Item &item);
  void FillNumber(Item &item);
  void FillDate(Item &item);
  void FillText(Item &item);
  NumberValue AnyNumber();
  std::string Number(int depth), Date(int depth), Text(int depth), Count();
  std::string Items(char kind), Filled(const char *pattern, int depth);
};

World *world = nullptr;

// The results of the routines of an item without a column and of a function depend on the number of
// calls before, so that both evaluations agree only when they call in the same order. Some calls
// fail.
int32_t CountedValue(EC, HEXP, int32_t, void **value, const char *) {
  const size_t call = ++world->counted;
  if (call % 29 == 0) throw std::runtime_error("no value this time");
  WRENNumFromInt(static_cast<NumberValue *>(*value), static_cast<int32_t>(call * 7919 % 101) - 50);
  return call % 13 == 0 ? 0 : 1;
}

int32_t CountedFunction(EC ec, HEXP exp, int32_t size, void **value, const char *name,
                        void **args) {
  const auto *number = static_cast<const NumberValue *>(args[0]);
  if (number == nullptr || CountedValue(ec, exp, size, value, name) == 0) return 0;
  auto *result = static_cast<NumberValue *>(*value);
  WRENNumAdd(result, result, number);
  return 1;
}

int32_t ItemValue(EC, HEXP, int32_t size, void **value, const char *name) {
  for (const Item &item : world->items) {
    if (item.name != name || !item.HasValue(world->current)) continue;
    if (name[0] == 't') return FUNStrVarResult(value, size, item.texts[world->current].c_str());
    std::memcpy(*value, &item.numbers[world->current], sizeof(NumberValue));
    return 1;
  }
  return 0;
}

template <class T>
void Append(Item &item, const T &element) {
  item.bytes.append(reinterpret_cast<const char *>(&element), sizeof element);
}

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

// ---- Both ways ----

// The element that a value has in a form; false where the form cannot hold it.
bool Element(const NumberValue &value, int32_t form, int32_t scale, std::string *element) {
  Wide integer = 0;
  double number = 0;
  DateTimeParts parts = {};
  switch (form) {
    case ORL_COLUMN_NUMBER:
      element->assign(reinterpret_cast<const char *>(&value), sizeof value);
      return true;
    case ORL_COLUMN_INT64:
    case ORL_COLUMN_DECIMAL128:
      if (!Scaled(value, scale, form == ORL_COLUMN_INT64 ? 64 : 128, &integer)) return false;
      element->assign(reinterpret_cast<const char *>(&integer), form == ORL_COLUMN_INT64 ? 8 : 16);
      return true;
    case ORL_COLUMN_DOUBLE: {
      char text[2];
      if (WRENNumToText(&value, sizeof text, text) == 0) return false;
      WRENNumToDouble(&value, &number);
      element->assign(reinterpret_cast<const char *>(&number), sizeof number);
      return true;
    }
    default: {
      PAVNNumberToDate(value.payload, value.length, &parts);
      if (parts.year == 0) return false;
      const std::chrono::sys_days day(std::chrono::year(parts.year) / parts.month / parts.day);
      const int32_t days = static_cast<int32_t>(day.time_since_epoch().count());
      const int64_t instant =
          days * kDay + (parts.hour * 3600 + parts.minute * 60 + parts.second) * INT64_C(1000000) +
          parts.fraction;
      *element = form == ORL_COLUMN_DATE32
                     ? std::string(reinterpret_cast<const char *>(&days), sizeof days)
                     : std::string(reinterpret_cast<const char *>(&instant), sizeof instant);
      return true;
    }
  }
}

size_t SizeOf(int32_t form) {
  static const size_t sizes[] = {sizeof(NumberValue), 8, 16, 8, 4, 8, 0};
  return sizes[form];
}

// The elements row by row; an empty one where a row has no value.
std::vector<std::string> RowByRow(EC ec, HEXP exp, int32_t form, int32_t scale,
                                  std::vector<bool> *valid) {
  std::vector<std::string> elements;
  world->counted = 0;
  for (world->current = 0; world->current < world->rows; ++world->current) {
    std::string element;
    bool has = false;
    if (form == ORL_COLUMN_TEXT) {
      void *block = nullptr;
      int32_t length = 0;
      has = ORLEvaluateExpressionExt(ec, exp, &length, &block) != 0;
      if (has) element = static_cast<const char *>(block);
      ORLMemFree(block);
    } else {
      NumberValue value;
      has = ORLEvaluateExpression(ec, exp, sizeof value, &value) != 0 &&
            Element(value, form, scale, &element);
      if (!has) element.assign(SizeOf(form), '\0');
    }
    elements.push_back(element);
    valid->push_back(has);
  }
  world->current = 0;
  return elements;
}

void Compare(EC ec, HEXP exp, const std::string &formula, int32_t form, int32_t scale,
             const std::vector<OrlColumn> &columns) {
  std::vector<bool> wanted;
  const std::vector<std::string> elements = RowByRow(ec, exp, form, scale, &wanted);
  const size_t size = SizeOf(form);
  std::string values(world->rows * size + 1, '#');
  std::vector<int32_t> offsets(world->rows + 1, -1);
  std::vector<uint8_t> valid((world->rows + 7) / 8, 255);
  OrlRowResults results = {form, scale, form == ORL_COLUMN_TEXT ? nullptr : values.data(),
                           offsets.data(), valid.data()};
  const size_t counted = world->counted;
  world->counted = 0;
  const int64_t count =
      ORLEvaluateRows(ec, exp, static_cast<int64_t>(world->rows),
                      static_cast<int32_t>(columns.size()), columns.data(), &results);
  ASSERT_EQ(count, std::count(wanted.begin(), wanted.end(), true)) << formula;
  ASSERT_EQ(world->counted, counted) << formula;
  for (size_t row = 0; row < world->rows; ++row) {
    const std::string element =
        form == ORL_COLUMN_TEXT
            ? std::string(static_cast<const char *>(results.values) + offsets[row],
                          static_cast<size_t>(offsets[row + 1] - offsets[row]))
            : values.substr(row * size, size);
    ASSERT_EQ(element, elements[row])
        << formula << "\nrow " << row << ", form " << form << ", scale " << scale;
    ASSERT_EQ((valid[row / 8] >> (row % 8) & 1) != 0, wanted[row]) << formula << "\nrow " << row;
  }
  if (form == ORL_COLUMN_TEXT) ORLMemFree(results.values);
  ASSERT_EQ(values.back(), '#');
}

OwnedContext Context(World &filled) {
  OwnedContext context(ORLCreateEC(nullptr, nullptr, nullptr, 0));
  FUNDefineFunctions(context.get());
  for (const char *name :
       {"n0", "n1", "n2", "n3", "n4", "n5", "d0", "d1", "d2", "t0", "t1", "t2"}) {
    Item &item = filled.items.emplace_back();
    item.name = name;
    filled.Fill(item);
    AddInput(context.get(), name, static_cast<int16_t>(std::string_view("ndt").find(name[0])), 0,
             Address(&ItemValue));
  }
  AddInput(context.get(), "routineless", 0, 0, nullptr);
  AddInput(context.get(), "nh", 0, 0, Address(&CountedValue));
  AddFunction(context.get(), {"fh", 0, {{0, 0, 0}}, 0, 0, 0, Address(&CountedFunction)});
  Make(context.get(), "n0 * n1 + 2", "nf");
  Make(context.get(), "d0 + n1 MONTHS", "df");
  Make(context.get(), "StrTrim(t0) || '-'", "tf");
  return context;
}

// The cost of a round is mostly the evaluation row by row; there are more than 300,000 rows in all.
// The environment variable ORLI_ROWS_ROUNDS sets the number of rounds.
TEST(RowsRandom, AgreeWithRowByRow) {
  static const int32_t numberForms[] = {ORL_COLUMN_NUMBER,     ORL_COLUMN_NUMBER,
                                        ORL_COLUMN_INT64,      ORL_COLUMN_INT64,
                                        ORL_COLUMN_DECIMAL128, ORL_COLUMN_DOUBLE};
  static const int32_t dateForms[] = {ORL_COLUMN_NUMBER, ORL_COLUMN_DATE32, ORL_COLUMN_TIMESTAMP};
  static const int32_t textForms[] = {ORL_COLUMN_TEXT};
  const char *rounds = std::getenv("ORLI_ROWS_ROUNDS");
  const uint64_t count = rounds == nullptr ? 60 : std::strtoull(rounds, nullptr, 10);
  for (uint64_t seed = 0; seed < count; ++seed) {
    SCOPED_TRACE(seed);
    static const int32_t pages[] = {1252, 932, 65001};
    WRENSetCodePage(pages[seed % 3]);
    World filled(seed);
    world = &filled;
    filled.rows = seed % 8 == 0 ? 3000 : filled.Below(90);
    const OwnedContext context = Context(filled);
    std::vector<OrlColumn> columns;
    for (const Item &item : filled.items) columns.push_back(item.Column());
    const int formulas = seed % 8 == 0 ? 30 : 120;
    for (int i = 0; i < formulas && !HasFatalFailure(); ++i) {
      const int depth = 1 + i % 4;
      const int kind = i % 5;
      filled.hosted = filled.OneIn(10);
      const std::string formula = kind == 4   ? filled.Text(depth)
                                  : kind == 3 ? filled.Date(depth)
                                              : filled.Number(depth);
      const int32_t form = kind == 4   ? filled.Any(textForms)
                           : kind == 3 ? filled.Any(dateForms)
                                       : filled.Any(numberForms);
      const auto scale = static_cast<int32_t>(filled.OneIn(5) ? filled.Below(38) : filled.Below(5));
      HEXP exp = Make(context.get(), formula);
      Compare(context.get(), exp, formula, form, scale, columns);
      ORLDestroyEXP(context.get(), exp);
    }
    if (HasFatalFailure()) break;
  }
  WRENSetCodePage(1252);
}

}  // namespace
