// Formulas over columns: ORLEvaluateRows, ORLEvaluateExpression row by row over the same arrays,
// and the same work in plain C++, the lower bound.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "bench/contexts.h"

namespace {

__extension__ typedef __int128 Wide;

constexpr size_t kColumnRows = 65536;

// A small generator: the same rows in every run.
struct Random {
  uint64_t state = UINT64_C(0x9E3779B97F4A7C15);
  int64_t Below(int64_t end) {
    state = state * UINT64_C(6364136223846793005) + UINT64_C(1442695040888963407);
    return static_cast<int64_t>(state >> 33) % end;
  }
};

struct Table {
  std::vector<int64_t> amount, tax;      // scale 2
  std::vector<int64_t> high, low, wind;  // scale 1
  std::vector<double> amountDouble, taxDouble, highDouble, lowDouble, windDouble;
  std::vector<Wide> amountWide, taxWide;
  std::vector<NumberValue> amountNumber, taxNumber, highNumber, lowNumber, windNumber;
  std::vector<int32_t> day;
  std::vector<NumberValue> date;
  std::string name, city;
  std::vector<int32_t> nameEnds = {0}, cityEnds = {0};
  size_t row = 0;  // of the value routines

  Table();
};

NumberValue NumberOf(int64_t value, int scale) {
  NumberValue number;
  WRENNumFromText(&number, (std::to_string(value) + "e-" + std::to_string(scale)).c_str());
  return number;
}

void Fill(std::vector<int64_t> &values, std::vector<double> &doubles,
          std::vector<NumberValue> &numbers, int64_t value, int scale) {
  values.push_back(value);
  doubles.push_back(static_cast<double>(value) / (scale == 1 ? 10 : 100));
  numbers.push_back(NumberOf(value, scale));
}

Table::Table() {
  Random random;
  static const char *const names[] = {"ada", "Grace", "edsger", "Barbara", "x"};
  static const char *const cities[] = {" Seattle ", "New York", "  Porto", "Saint-Denis   "};
  for (size_t i = 0; i < kColumnRows; ++i) {
    Fill(amount, amountDouble, amountNumber, random.Below(10000000), 2);
    Fill(tax, taxDouble, taxNumber, random.Below(100000), 2);
    Fill(high, highDouble, highNumber, random.Below(450) - 100, 1);
    Fill(low, lowDouble, lowNumber, random.Below(300) - 150, 1);
    Fill(wind, windDouble, windNumber, random.Below(95), 1);
    amountWide.push_back(amount.back());
    taxWide.push_back(tax.back());
    day.push_back(static_cast<int32_t>(random.Below(20000)));
    name += names[random.Below(5)];
    city += cities[random.Below(4)];
    nameEnds.push_back(static_cast<int32_t>(name.size()));
    cityEnds.push_back(static_cast<int32_t>(city.size()));
  }
}

Table &Rows() {
  static Table table;
  return table;
}

OrlColumn Column(const char *name, int32_t form, int32_t scale, const void *values,
                 const int32_t *offsets = nullptr) {
  return {name, form, scale, values, offsets, nullptr};
}

struct Measured {
  const char *formula;
  int16_t type;  // of all its items
  std::vector<OrlColumn> columns;
  int32_t form, scale;  // of the results
};

// One pass over all rows; items per second are rows.
void Batch(benchmark::State &state, const Measured &measured) {
  EC ec = MakeContext({0, 0, 0});
  for (const OrlColumn &column : measured.columns) {
    if (std::strcmp(column.name, "Amount") != 0 && std::strcmp(column.name, "Tax") != 0) {
      AddItem(ec, column.name, measured.type, nullptr);
    }
  }
  HEXP exp = MustParse(ec, measured.formula, "Measured");
  std::vector<uint8_t> values(kColumnRows * 16);
  std::vector<int32_t> offsets(kColumnRows + 1);
  std::vector<uint8_t> valid(kColumnRows / 8);
  for ([[maybe_unused]] auto step : state) {
    const bool text = measured.form == ORL_COLUMN_TEXT;
    OrlRowResults results = {measured.form, measured.scale, text ? nullptr : values.data(),
                             offsets.data(), valid.data()};
    const int64_t done =
        ORLEvaluateRows(ec, exp, kColumnRows, static_cast<int32_t>(measured.columns.size()),
                        measured.columns.data(), &results);
    if (done != static_cast<int64_t>(kColumnRows)) {
      state.SkipWithError("rows without a value");
      break;
    }
    benchmark::DoNotOptimize(results);
    if (text) {
      ORLMemFree(results.values);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kColumnRows));
  ORLDestroyEC(ec);
}

Measured B1(int32_t form) {
  Table &table = Rows();
  const void *amount = table.amount.data();
  const void *tax = table.tax.data();
  if (form == ORL_COLUMN_DOUBLE) {
    amount = table.amountDouble.data();
    tax = table.taxDouble.data();
  } else if (form == ORL_COLUMN_DECIMAL128) {
    amount = table.amountWide.data();
    tax = table.taxWide.data();
  } else if (form == ORL_COLUMN_NUMBER) {
    amount = table.amountNumber.data();
    tax = table.taxNumber.data();
  }
  return {"Amount*2+Tax",
          ORL_TYPE_NUMBER,
          {Column("Amount", form, 2, amount), Column("Tax", form, 2, tax)},
          form,
          2};
}

Measured B2(int32_t form) {
  Table &table = Rows();
  const bool doubles = form == ORL_COLUMN_DOUBLE;
  const auto column = [&](const char *name, const std::vector<int64_t> &longs,
                          const std::vector<double> &others) {
    return Column(name, form, 1, doubles ? static_cast<const void *>(others.data()) : longs.data());
  };
  return {"(temp_max+temp_min)/2 - 32*5/9 + wind*wind",
          ORL_TYPE_NUMBER,
          {column("temp_max", table.high, table.highDouble),
           column("temp_min", table.low, table.lowDouble),
           column("wind", table.wind, table.windDouble)},
          form,
          2};
}

void B1Long(benchmark::State &state) {
  Batch(state, B1(ORL_COLUMN_INT64));
}
BENCHMARK(B1Long)->Name("B1/int64");
void B1Number(benchmark::State &state) {
  Measured measured = B1(ORL_COLUMN_INT64);
  measured.form = ORL_COLUMN_NUMBER;
  Batch(state, measured);
}
BENCHMARK(B1Number)->Name("B1/int64-to-number");
void B1Packed(benchmark::State &state) {
  Batch(state, B1(ORL_COLUMN_NUMBER));
}
BENCHMARK(B1Packed)->Name("B1/number");
void B1Wide(benchmark::State &state) {
  Batch(state, B1(ORL_COLUMN_DECIMAL128));
}
BENCHMARK(B1Wide)->Name("B1/decimal128");
void B1Double(benchmark::State &state) {
  Batch(state, B1(ORL_COLUMN_DOUBLE));
}
BENCHMARK(B1Double)->Name("B1/double");
void B2Long(benchmark::State &state) {
  Batch(state, B2(ORL_COLUMN_INT64));
}
BENCHMARK(B2Long)->Name("B2/int64");
void B2Double(benchmark::State &state) {
  Batch(state, B2(ORL_COLUMN_DOUBLE));
}
BENCHMARK(B2Double)->Name("B2/double");

void B3(benchmark::State &state) {
  Table &table = Rows();
  Batch(state, {"StrUpper(StrLeft(Name,3)) || '-' || StrTrim(City)",
                ORL_TYPE_STRING,
                {Column("Name", ORL_COLUMN_TEXT, 0, table.name.data(), table.nameEnds.data()),
                 Column("City", ORL_COLUMN_TEXT, 0, table.city.data(), table.cityEnds.data())},
                ORL_COLUMN_TEXT,
                0});
}
BENCHMARK(B3)->Name("B3/text");

void B4(benchmark::State &state) {
  Batch(state, {"DateYear(D + 1 MONTH)",
                ORL_TYPE_DATE,
                {Column("D", ORL_COLUMN_DATE32, 0, Rows().day.data())},
                ORL_COLUMN_INT64,
                0});
}
BENCHMARK(B4)->Name("B4/date32");

template <std::vector<NumberValue> Table::*column>
int32_t ElementValue(EC /*ec*/, HEXP /*exp*/, int32_t /*size*/, void **value,
                     const char * /*name*/) {
  const Table &table = Rows();
  std::memcpy(*value, &(table.*column)[table.row], sizeof(NumberValue));
  return 1;
}

template <std::string Table::*bytes, std::vector<int32_t> Table::*ends>
int32_t ElementText(EC /*ec*/, HEXP /*exp*/, int32_t /*size*/, void **value,
                    const char * /*name*/) {
  const Table &table = Rows();
  const int32_t *offsets = (table.*ends).data() + table.row;
  std::memcpy(*value, (table.*bytes).data() + offsets[0],
              static_cast<size_t>(offsets[1] - offsets[0]));
  return 1;
}

void OneByOne(benchmark::State &state, const char *formula, int16_t type,
              const std::vector<std::pair<const char *, OrlValueProc>> &items) {
  Table &table = Rows();
  EC ec = ORLCreateEC(nullptr, nullptr, nullptr, 0);
  FUNDefineFunctions(ec);
  for (const auto &[name, routine] : items) {
    AddItem(ec, name, type, routine);
  }
  HEXP exp = MustParse(ec, formula, "Measured");
  char value[64];
  for ([[maybe_unused]] auto step : state) {
    for (table.row = 0; table.row < kColumnRows; ++table.row) {
      if (ORLEvaluateExpression(ec, exp, sizeof value, value) == 0) {
        state.SkipWithError("no value");
        return;
      }
      benchmark::DoNotOptimize(value);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kColumnRows));
  ORLDestroyEC(ec);
}

void E1(benchmark::State &state) {
  OneByOne(
      state, "Amount*2+Tax", ORL_TYPE_NUMBER,
      {{"Amount", ElementValue<&Table::amountNumber>}, {"Tax", ElementValue<&Table::taxNumber>}});
}
BENCHMARK(E1)->Name("B1/row-by-row");
void E2(benchmark::State &state) {
  OneByOne(state, "(temp_max+temp_min)/2 - 32*5/9 + wind*wind", ORL_TYPE_NUMBER,
           {{"temp_max", ElementValue<&Table::highNumber>},
            {"temp_min", ElementValue<&Table::lowNumber>},
            {"wind", ElementValue<&Table::windNumber>}});
}
BENCHMARK(E2)->Name("B2/row-by-row");
void E3(benchmark::State &state) {
  OneByOne(state, "StrUpper(StrLeft(Name,3)) || '-' || StrTrim(City)", ORL_TYPE_STRING,
           {{"Name", ElementText<&Table::name, &Table::nameEnds>},
            {"City", ElementText<&Table::city, &Table::cityEnds>}});
}
BENCHMARK(E3)->Name("B3/row-by-row");
void E4(benchmark::State &state) {
  Table &table = Rows();
  if (table.date.empty()) {
    EC ec = MakeContext({0, 0, 0});
    AddItem(ec, "D", ORL_TYPE_DATE, nullptr);
    const OrlColumn days = Column("D", ORL_COLUMN_DATE32, 0, table.day.data());
    table.date.resize(kColumnRows);
    OrlRowResults results = {ORL_COLUMN_NUMBER, 0, table.date.data(), nullptr, nullptr};
    ORLEvaluateRows(ec, MustParse(ec, "D", "Dates"), kColumnRows, 1, &days, &results);
    ORLDestroyEC(ec);
  }
  OneByOne(state, "DateYear(D + 1 MONTH)", ORL_TYPE_DATE, {{"D", ElementValue<&Table::date>}});
}
BENCHMARK(E4)->Name("B4/row-by-row");

template <class Pass>
void MeasurePlain(benchmark::State &state, Pass pass) {
  Table &table = Rows();
  for ([[maybe_unused]] auto step : state) {
    pass(table);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kColumnRows));
}

void PlainLongs(benchmark::State &state) {
  std::vector<int64_t> result(kColumnRows);
  MeasurePlain(state, [&](const Table &table) {
    for (size_t i = 0; i < kColumnRows; ++i) {
      result[i] = table.amount[i] * 2 + table.tax[i];
    }
    benchmark::DoNotOptimize(result.data());
  });
}
BENCHMARK(PlainLongs)->Name("B1/plain-int64");

// A decimal of 13 bytes for each value: taken apart, brought to one scale, checked, packed.
struct Thirteen {
  int64_t c;
  int32_t e;
};
Thirteen Unpack(const NumberValue &value) {
  uint32_t head = 0;
  int64_t low = 0;
  std::memcpy(&head, value.payload, sizeof head);
  std::memcpy(&low, value.payload + 4, sizeof low);
  return {head >> 31 != 0 ? -low : low, static_cast<int8_t>(head)};
}
[[gnu::noinline]] bool AddProduct(NumberValue *result, const NumberValue &a, const NumberValue &b) {
  Thirteen x = Unpack(a);
  Thirteen y = Unpack(b);
  if (__builtin_mul_overflow(x.c, 2, &x.c)) {
    return false;
  }
  for (; x.e > y.e; --x.e) {
    if (__builtin_mul_overflow(x.c, 10, &x.c)) {
      return false;
    }
  }
  for (; y.e > x.e; --y.e) {
    if (__builtin_mul_overflow(y.c, 10, &y.c)) {
      return false;
    }
  }
  if (__builtin_add_overflow(x.c, y.c, &x.c)) {
    return false;
  }
  for (; x.e < 0 && x.c % 10 == 0; ++x.e) {
    x.c /= 10;
  }
  const uint32_t head = static_cast<uint8_t>(x.e) | (x.c < 0 ? UINT32_C(1) << 31 : 0);
  const int64_t low = x.c < 0 ? -x.c : x.c;
  result->length = 12;
  std::memcpy(result->payload, &head, sizeof head);
  std::memcpy(result->payload + 4, &low, sizeof low);
  return true;
}

void PlainDecimals(benchmark::State &state) {
  std::vector<NumberValue> result(kColumnRows);
  MeasurePlain(state, [&](const Table &table) {
    for (size_t i = 0; i < kColumnRows; ++i) {
      AddProduct(&result[i], table.amountNumber[i], table.taxNumber[i]);
    }
    benchmark::DoNotOptimize(result.data());
  });
}
BENCHMARK(PlainDecimals)->Name("B1/plain-decimal");

void PlainDoubles(benchmark::State &state) {
  std::vector<double> result(kColumnRows);
  MeasurePlain(state, [&](const Table &table) {
    for (size_t i = 0; i < kColumnRows; ++i) {
      result[i] = (table.highDouble[i] + table.lowDouble[i]) / 2 - 32.0 * 5 / 9 +
                  table.windDouble[i] * table.windDouble[i];
    }
    benchmark::DoNotOptimize(result.data());
  });
}
BENCHMARK(PlainDoubles)->Name("B2/plain-double");

std::string_view Slice(const std::string &bytes, const std::vector<int32_t> &ends, size_t i) {
  return std::string_view(bytes).substr(static_cast<size_t>(ends[i]),
                                        static_cast<size_t>(ends[i + 1] - ends[i]));
}

void PlainTexts(benchmark::State &state) {
  std::string result;
  std::vector<int32_t> ends(kColumnRows + 1);
  MeasurePlain(state, [&](const Table &table) {
    result.clear();
    for (size_t i = 0; i < kColumnRows; ++i) {
      for (char c : Slice(table.name, table.nameEnds, i).substr(0, 3)) {
        result += static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
      }
      result += '-';
      std::string_view city = Slice(table.city, table.cityEnds, i);
      while (!city.empty() && city.front() == ' ') {
        city.remove_prefix(1);
      }
      while (!city.empty() && city.back() == ' ') {
        city.remove_suffix(1);
      }
      result += city;
      ends[i + 1] = static_cast<int32_t>(result.size());
    }
    benchmark::DoNotOptimize(result.data());
  });
}
BENCHMARK(PlainTexts)->Name("B3/plain-string-view");

void PlainDates(benchmark::State &state) {
  using std::chrono::year_month_day, std::chrono::sys_days, std::chrono::days;
  std::vector<int64_t> result(kColumnRows);
  MeasurePlain(state, [&](const Table &table) {
    for (size_t i = 0; i < kColumnRows; ++i) {
      year_month_day date{sys_days{days{table.day[i]}}};
      date += std::chrono::months{1};
      if (!date.ok()) {
        date = date.year() / date.month() / std::chrono::last;
      }
      result[i] = static_cast<int>(year_month_day{sys_days{date}}.year());
    }
    benchmark::DoNotOptimize(result.data());
  });
}
BENCHMARK(PlainDates)->Name("B4/plain-chrono");

}  // namespace
