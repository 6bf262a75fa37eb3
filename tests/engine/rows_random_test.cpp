// Random formulas over random columns: ORLEvaluateRows computes the same as ORLEvaluateExpression
// row by row, with value routines that convert the elements of the columns by the exported
// routines.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "engine/random_rows.h"
#include "pavni11.h"
#include "support/context.h"

namespace {

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
