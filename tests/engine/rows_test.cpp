// ORLEvaluateRows: columns and results of each form, rows without a value, rejected arguments, host
// routines during the rows, and out of memory.
#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "closed/wren/memory.h"
#include "engine/random_rows.h"
#include "support/context.h"

namespace {

// Three rows for each form; the second has no value where `valid` says so.
const int64_t kLongs[] = {1250, -175, INT64_MAX};
const Wide kWides[] = {-1, static_cast<Wide>(INT64_MAX) * 1000000, 5};
const double kDoubles[] = {0.1, -2.5, 1e30};
const int32_t kDays[] = {0, -1, 2932896};
const int64_t kInstants[] = {0, -1, 86400000001};
const char kTexts[] = "abc'def";
const int32_t kOffsets[] = {0, 3, 3, 7};
const uint8_t kSecondMissing[] = {0x05};

OrlColumn Column(const char *name, int32_t form, const void *values, int32_t scale = 0) {
  return {name, form, scale, values, form == ORL_COLUMN_TEXT ? kOffsets : nullptr, nullptr};
}

struct Results {
  std::vector<uint8_t> values = std::vector<uint8_t>(256, '#');
  std::vector<int32_t> offsets = std::vector<int32_t>(8, -7);
  uint8_t valid = 0xA8;
  OrlRowResults record;

  explicit Results(int32_t form, int32_t scale = 0)
      : record{form, scale, form == ORL_COLUMN_TEXT ? nullptr : values.data(), offsets.data(),
               &valid} {}
  ~Results() {
    if (record.form == ORL_COLUMN_TEXT) ORLMemFree(record.values);
  }
  bool Untouched() const {
    return values == std::vector<uint8_t>(256, '#') && offsets == std::vector<int32_t>(8, -7) &&
           valid == 0xA8 && (record.form != ORL_COLUMN_TEXT || record.values == nullptr);
  }
  template <class T>
  T At(int row) const {
    T element;
    std::memcpy(&element, values.data() + static_cast<size_t>(row) * sizeof(T), sizeof(T));
    return element;
  }
  std::string Row(int row) const;
};

std::string Results::Row(int row) const {
  if ((valid >> row & 1) == 0) return "-";
  switch (record.form) {
    case ORL_COLUMN_NUMBER:
      return NumberText(At<NumberValue>(row));
    case ORL_COLUMN_DECIMAL128:
      return std::to_string(static_cast<int64_t>(At<Wide>(row) >> 64)) + ":" +
             std::to_string(static_cast<uint64_t>(At<Wide>(row)));
    case ORL_COLUMN_DOUBLE:
      return std::to_string(At<double>(row));
    case ORL_COLUMN_DATE32:
      return std::to_string(At<int32_t>(row));
    case ORL_COLUMN_TEXT: {
      const char *bytes = static_cast<const char *>(record.values);
      const auto i = static_cast<size_t>(row);
      return std::string(bytes + offsets[i], bytes + offsets[i + 1]);
    }
    default:
      return std::to_string(At<int64_t>(row));
  }
}

std::string Rows(EC ec, const std::string &formula, Results &results,
                 const std::vector<OrlColumn> &columns) {
  HEXP exp = Make(ec, formula);
  const int64_t count = ORLEvaluateRows(ec, exp, 3, static_cast<int32_t>(columns.size()),
                                        columns.data(), &results.record);
  ORLDestroyEXP(ec, exp);
  if (count < 0) return "refused";
  std::string text = std::to_string(count);
  for (int row = 0; row < 3; ++row) text += " " + results.Row(row);
  return text;
}

TEST(Rows, FormsOfColumnsAndResults) {
  const OrlColumn longs = Column("Amount", ORL_COLUMN_INT64, kLongs, 2);
  const OrlColumn wides = Column("Amount", ORL_COLUMN_DECIMAL128, kWides, 37);
  const OrlColumn doubles = Column("Amount", ORL_COLUMN_DOUBLE, kDoubles);
  const OrlColumn days = Column("Start", ORL_COLUMN_DATE32, kDays);
  const OrlColumn instants = Column("Start", ORL_COLUMN_TIMESTAMP, kInstants);
  const OrlColumn texts = Column("Name", ORL_COLUMN_TEXT, kTexts);
  OrlColumn missing = longs;
  missing.valid = kSecondMissing;
  NumberValue packed[3] = {};
  WRENNumFromLong(&packed[0], 7);
  const OrlColumn numbers = Column("Amount", ORL_COLUMN_NUMBER, packed);
  const struct {
    const char *formula;
    OrlColumn column;
    int32_t form, scale;
    const char *rows;
  } cases[] = {
      {"Amount", longs, ORL_COLUMN_NUMBER, 0, "3 12.5 -1.75 9.22337203685478e+16"},
      {"Amount * 2", longs, ORL_COLUMN_INT64, 2, "2 2500 -350 -"},
      {"Amount", longs, ORL_COLUMN_INT64, 1, "3 125 -18 922337203685477581"},
      {"Amount", longs, ORL_COLUMN_INT64, 37, "0 - - -"},
      {"Amount / 3", missing, ORL_COLUMN_DECIMAL128, 3, "2 0:4167 - 1:12297829382473034407"},
      {"Amount", missing, ORL_COLUMN_DOUBLE, 0, "2 12.500000 - 92233720368547760.000000"},
      {"Amount", wides, ORL_COLUMN_DECIMAL128, 37,
       "3 -1:18446744073709551615 499999:18446744073708551616 0:5"},
      {"Amount + Amount", doubles, ORL_COLUMN_NUMBER, 0, "3 0.2 -5 2e+30"},
      {"Amount", numbers, ORL_COLUMN_NUMBER, 0, "3 7 null null"},
      {"Amount", numbers, ORL_COLUMN_INT64, 0, "1 7 - -"},
      {"Amount + 1", numbers, ORL_COLUMN_INT64, 0, "3 8 1 1"},
      {"Start + 1", days, ORL_COLUMN_DATE32, 0, "2 1 0 -"},
      {"DateYear(Start)", days, ORL_COLUMN_INT64, 0, "3 1970 1969 9999"},
      {"Start", instants, ORL_COLUMN_TIMESTAMP, 0, "3 0 -1 86400000001"},
      {"Start", instants, ORL_COLUMN_DATE32, 0, "3 0 -1 1"},
      {"Name || '.'", texts, ORL_COLUMN_TEXT, 0, "3 abc. . 'def."},
      {"StrLength(Name)", texts, ORL_COLUMN_INT64, 0, "3 3 0 4"},
      {"2 + 2", longs, ORL_COLUMN_INT64, 0, "3 4 4 4"},
      {"Missing", longs, ORL_COLUMN_NUMBER, 0, "0 - - -"},
  };
  HostedContext ec;
  FUNDefineFunctions(ec);
  AddInput(ec, "Missing", 0, 0, nullptr);
  for (const auto &row : cases) {
    Results results(row.form, row.scale);
    EXPECT_EQ(Rows(ec, row.formula, results, {row.column}), row.rows)
        << row.formula << ", form " << row.form << ", scale " << row.scale;
    EXPECT_EQ(results.valid & 0xF8, 0) << row.formula;
  }
}

TEST(Rows, RefusedArgumentsWriteNothing) {
  const OrlColumn good = Column("Amount", ORL_COLUMN_INT64, kLongs, 2);
  const int32_t descending[] = {0, 3, 2, 7};
  const int32_t negative[] = {-1, 0, 0, 0};
  const struct {
    const char *what, *formula;
    std::vector<OrlColumn> columns;
    int32_t form, scale;
  } cases[] = {
      {"no such item", "Amount", {Column("Nope", ORL_COLUMN_INT64, kLongs)}, 0, 0},
      {"no name", "Amount", {Column(nullptr, ORL_COLUMN_INT64, kLongs)}, 0, 0},
      {"twice", "Amount", {good, Column("Tax", ORL_COLUMN_INT64, kLongs), good}, 0, 0},
      {"no values", "Amount", {Column("Amount", ORL_COLUMN_INT64, nullptr)}, 0, 0},
      {"scale", "Amount", {Column("Amount", ORL_COLUMN_INT64, kLongs, 38)}, 0, 0},
      {"negative scale", "Amount", {Column("Amount", ORL_COLUMN_DECIMAL128, kWides, -1)}, 0, 0},
      {"form", "Amount", {Column("Amount", 7, kLongs)}, 0, 0},
      {"date for a number", "Amount", {Column("Amount", ORL_COLUMN_DATE32, kDays)}, 0, 0},
      {"number for a date", "Amount", {Column("Start", ORL_COLUMN_INT64, kLongs)}, 0, 0},
      {"number for a text", "Amount", {Column("Name", ORL_COLUMN_NUMBER, kLongs)}, 0, 0},
      {"text for a number", "Amount", {Column("Amount", ORL_COLUMN_TEXT, kTexts)}, 0, 0},
      {"no offsets", "Name", {{"Name", ORL_COLUMN_TEXT, 0, kTexts, nullptr, nullptr}}, 6, 0},
      {"descending", "Name", {{"Name", ORL_COLUMN_TEXT, 0, kTexts, descending, nullptr}}, 6, 0},
      {"negative", "Name", {{"Name", ORL_COLUMN_TEXT, 0, kTexts, negative, nullptr}}, 6, 0},
      {"result form", "Amount", {good}, ORL_COLUMN_TEXT, 0},
      {"date result", "Amount", {good}, ORL_COLUMN_DATE32, 0},
      {"number result", "Name", {good}, ORL_COLUMN_NUMBER, 0},
      {"result scale", "Amount", {good}, ORL_COLUMN_INT64, 38},
      {"unknown form", "Amount", {good}, -1, 0},
  };
  HostedContext ec;
  for (const auto &row : cases) {
    Results results(row.form, row.scale);
    EXPECT_EQ(Rows(ec, row.formula, results, row.columns), "refused") << row.what;
    EXPECT_TRUE(results.Untouched()) << row.what;
  }
  Results results(ORL_COLUMN_NUMBER);
  HEXP exp = Make(ec, "Amount");
  const auto rows = [&](EC context, HEXP formula, int64_t count, int32_t columns,
                        const OrlColumn *first, OrlRowResults *record) {
    return ORLEvaluateRows(context, formula, count, columns, first, record);
  };
  EXPECT_EQ(rows(nullptr, exp, 3, 1, &good, &results.record), -1);
  EXPECT_EQ(rows(ec, nullptr, 3, 1, &good, &results.record), -1);
  EXPECT_EQ(rows(ec, exp, -1, 1, &good, &results.record), -1);
  EXPECT_EQ(rows(ec, exp, 3, -1, &good, &results.record), -1);
  EXPECT_EQ(rows(ec, exp, 3, 1, nullptr, &results.record), -1);
  EXPECT_EQ(rows(ec, exp, 3, 1, &good, nullptr), -1);
  EXPECT_EQ(rows(ec, exp, 0, 1, &good, &results.record), 0);
  results.record.values = nullptr;
  EXPECT_EQ(rows(ec, exp, 3, 1, &good, &results.record), -1);
  EXPECT_TRUE(results.Untouched());
}

// A text result of no rows, and of rows that are all empty, is still a block.
TEST(Rows, EmptyTexts) {
  HostedContext ec;
  HEXP exp = Make(ec, "Name || ''");
  const OrlColumn column = {"Name", ORL_COLUMN_TEXT, 0, nullptr, kOffsets, nullptr};
  for (int64_t rows : {0, 1}) {
    const int32_t offsets[] = {5, 5};
    OrlColumn empty = column;
    empty.offsets = offsets;
    Results results(ORL_COLUMN_TEXT);
    EXPECT_EQ(ORLEvaluateRows(ec, exp, rows, 1, &empty, &results.record), rows);
    EXPECT_NE(results.record.values, nullptr);
    EXPECT_EQ(results.offsets[0], 0);
    EXPECT_EQ(results.offsets[static_cast<size_t>(rows)], 0);
  }
}

// Strings that make a batch start over, with fewer rows each time.
TEST(Rows, LongTextsTakeFewerRowsAtATime) {
  constexpr int32_t kRows = 1100;
  constexpr int32_t kLength = 20000;
  std::string bytes;
  std::string wanted;
  std::vector<int32_t> offsets = {0};
  for (int32_t row = 0; row < kRows; ++row) {
    const std::string text = std::to_string(row) + std::string(row % 9 == 0 ? kLength : 0, 'x');
    bytes += text;
    wanted.append(text).append("-").append(text);
    offsets.push_back(static_cast<int32_t>(bytes.size()));
  }
  HostedContext ec;
  HEXP exp = Make(ec, "Name || '-' || Name");
  const OrlColumn column = {"Name", ORL_COLUMN_TEXT, 0, bytes.data(), offsets.data(), nullptr};
  std::vector<int32_t> ends(kRows + 1);
  OrlRowResults results = {ORL_COLUMN_TEXT, 0, nullptr, ends.data(), nullptr};
  ASSERT_EQ(ORLEvaluateRows(ec, exp, kRows, 1, &column, &results), kRows);
  EXPECT_TRUE(wanted == std::string(static_cast<const char *>(results.values),
                                    static_cast<size_t>(ends.back())));
  ORLMemFree(results.values);
}

// ---- Routines of the host ----

std::string calls;

int32_t AskedValue(EC, HEXP, int32_t, void **value, const char *name) {
  calls += name;
  if (calls.size() == 3) throw std::runtime_error("no value this time");
  WRENNumFromInt(static_cast<NumberValue *>(*value), static_cast<int32_t>(calls.size()));
  return 1;
}

int32_t AskedFunction(EC, HEXP, int32_t, void **value, const char *name, void **args) {
  calls += name;
  const auto *number = static_cast<const NumberValue *>(args[0]);
  if (number == nullptr || WRENNumToInt(number) < 0) return 0;
  std::memcpy(*value, number, sizeof *number);
  return 1;
}

// The value of the item in other evaluations while the row is computed.
int32_t InnerAmount(EC ec, HEXP, int32_t, void **value, const char *, void **) {
  return ORLEvaluateExpression(ec, ORLHEXPFromName(ec, "Inner"), sizeof(NumberValue), *value);
}

// The second item without a column is called after the first in each row; a failure affects one
// row.
TEST(Rows, HostRoutinesAreCalledInTheOrderOfRows) {
  HostedContext ec;
  FUNDefineFunctions(ec);
  AddInput(ec, "p", 0, 0, Address(&AskedValue));
  AddInput(ec, "q", 0, 0, Address(&AskedValue));
  AddFunction(ec, {"f", 0, {{0, 0, 0}}, 0, 0, 0, Address(&AskedFunction)});
  AddFunction(ec, {"g", 0, {{0, 0, 0}}, 0, 0, 0, Address(&InnerAmount)});
  Make(ec, "Amount * 10", "Inner");
  const OrlColumn column = Column("Amount", ORL_COLUMN_INT64, kLongs, 2);
  const struct {
    const char *formula, *calls, *rows;
  } cases[] = {
      {"p + Amount + q", "pqpqpq", "1 1550 - -"},
      {"NumberAbsolute(f(Amount)) + p", "fpfpfp", "2 1450 400 -"},
      {"f(Amount) + NumberRound(f(2), 0)", "ffffff", "1 1450 - -"},
      {"g(0) + Amount", "", "2 13750 -1925 -"},
  };
  for (const auto &row : cases) {
    calls.clear();
    Results results(ORL_COLUMN_INT64, 2);
    const std::string rows = Rows(ec, row.formula, results, {column});
    EXPECT_EQ(calls, row.calls) << row.formula;
    EXPECT_EQ(rows, row.rows) << row.formula;
  }
  // The items are unchanged.
  ec.host.values["Amount"] = "5";
  EXPECT_EQ(Evaluate(ec, Make(ec, "Amount")), "5");
}

// ---- Memory ----

// With every allocation failing once the result is -1 with nothing written, or the complete one.
TEST(Rows, OutOfMemory) {
  const std::string longText(2000, 'm');
  const int32_t offsets[] = {0, 3, 1500, 2000};
  const std::vector<OrlColumn> columns = {
      Column("Amount", ORL_COLUMN_INT64, kLongs, 2),
      {"Name", ORL_COLUMN_TEXT, 0, longText.data(), offsets, nullptr}};
  const struct {
    const char *formula;
    int32_t form;
  } cases[] = {{"Amount * Amount / 3", ORL_COLUMN_NUMBER},
               {"Doubled() + Tax", ORL_COLUMN_DECIMAL128},
               {"StrUpper(Name) || Name", ORL_COLUMN_TEXT},
               {"Name || Name || Name || Name", ORL_COLUMN_TEXT}};
  for (const auto &row : cases) {
    std::string usual;
    for (int64_t n = -1; n < 200; ++n) {
      SCOPED_TRACE(row.formula + (", allocation " + std::to_string(n)));
      const int64_t before = TEST_LiveBlocks();
      {
        HostedContext ec;
        FUNDefineFunctions(ec);
        ec.host.values["Tax"] = "2";
        Make(ec, "Amount * 2", "Doubled");
        HEXP exp = Make(ec, row.formula);
        Results results(row.form);
        const int64_t blocks = TEST_LiveBlocks();
        TEST_FailAllocationsAfter(n);
        const int64_t count = ORLEvaluateRows(ec, exp, 3, 2, columns.data(), &results.record);
        TEST_FailAllocationsAfter(-1);
        std::string rows;
        for (int i = 0; i < 3 && count >= 0; ++i) rows += results.Row(i) + " ";
        if (n < 0) usual = rows;
        if (count < 0) {
          EXPECT_TRUE(results.Untouched());
          EXPECT_LE(TEST_LiveBlocks(), blocks + 4);
        } else {
          EXPECT_EQ(rows, usual);
          if (n >= 0) n = 1000;
        }
      }
      ASSERT_EQ(TEST_LiveBlocks(), before) << "leak";
    }
  }
}

}  // namespace
