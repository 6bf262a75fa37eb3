// Evaluation compared with its lower bound, and over the rows of data/weather.csv.
#include <benchmark/benchmark.h>
#include <pavni11.h>

#include <array>
#include <cstring>
#include <fstream>
#include <sstream>
#include <vector>

#include "bench/contexts.h"

namespace {

// Amount*2+Tax by the engine, 25.07.
void EvaluateAmount(benchmark::State &state) {
  EC ec = MakeContext({10, 10, 10});
  HEXP exp = MustParse(ec, "Amount*2+Tax", "Measured");
  NumberValue value = {};
  for ([[maybe_unused]] auto step : state) {
    if (ORLEvaluateExpression(ec, exp, sizeof value, &value) == 0) {
      state.SkipWithError("no value");
      break;
    }
    benchmark::DoNotOptimize(value);
  }
  NumberValue expected;
  WRENNumFromText(&expected, "25.07");
  if (WRENNumCompare(&value, &expected) != 0) {
    state.SkipWithError("a wrong value");
  }
  ORLDestroyEC(ec);
}
BENCHMARK(EvaluateAmount);

// The same without an engine: two calls through pointers and two operations on decimals.
void EvaluateAmountLimit(benchmark::State &state) {
  OrlValueProc amountProc = AmountValue;
  OrlValueProc taxProc = TaxValue;
  NumberValue two;
  WRENNumFromInt(&two, 2);
  for ([[maybe_unused]] auto step : state) {
    benchmark::DoNotOptimize(amountProc);
    benchmark::DoNotOptimize(taxProc);
    NumberValue amount = {};
    NumberValue tax = {};
    void *amountBlock = &amount;
    void *taxBlock = &tax;
    amountProc(nullptr, nullptr, sizeof amount, &amountBlock, "Amount");
    taxProc(nullptr, nullptr, sizeof tax, &taxBlock, "Tax");
    WRENNumMul(&amount, &amount, &two);
    WRENNumAdd(&amount, &amount, &tax);
    benchmark::DoNotOptimize(amount);
  }
}
BENCHMARK(EvaluateAmountLimit);

constexpr size_t kColumns = 5;  // date and four numbers; the word after them is not used
constexpr std::array<const char *, kColumns> kColumnNames = {"date", "precipitation", "temp_max",
                                                             "temp_min", "wind"};
using WeatherRow = std::array<NumberValue, kColumns>;

NumberValue DateOf(const std::string &text) {
  FormatRecord record;
  WRENFmtInit(&record);
  record.mode = WREN_FMT_DATE;
  record.input = text.c_str();
  record.useCountry = 1;
  NumberValue date = {};
  if (WRENFmtParseDate(&record) == 1) {
    date.length = static_cast<uint8_t>(PAVNDateToNumber(date.payload, &record.parts));
  }
  return date;
}

std::vector<WeatherRow> LoadWeather() {
  std::vector<WeatherRow> rows;
  std::ifstream file("data/weather.csv");
  std::string line;
  std::getline(file, line);
  while (std::getline(file, line)) {
    std::istringstream fields(line);
    std::string field;
    WeatherRow row = {};
    for (size_t i = 0; i < kColumns && std::getline(fields, field, ','); ++i) {
      if (i == 0) {
        row[i] = DateOf(field);
      } else {
        WRENNumFromText(&row[i], field.c_str());
      }
    }
    rows.push_back(row);
  }
  return rows;
}

template <size_t Index>
int32_t WeatherValue(EC ec, HEXP /*exp*/, int32_t /*size*/, void **value, const char * /*name*/) {
  const auto *row = reinterpret_cast<const WeatherRow *>(ORLGetUserLong(ec));
  std::memcpy(*value, &(*row)[Index], sizeof(NumberValue));
  return 1;
}

// One pass over all rows; the time is that of a pass, items per second are rows.
void Weather(benchmark::State &state, const char *text) {
  const std::vector<WeatherRow> rows = LoadWeather();
  if (rows.empty()) {
    state.SkipWithError("data/weather.csv is not there; run from the project's root");
    return;
  }
  constexpr std::array<OrlValueProc, kColumns> kRoutines = {
      WeatherValue<0>, WeatherValue<1>, WeatherValue<2>, WeatherValue<3>, WeatherValue<4>};
  EC ec = MakeContext({0, 0, 0});
  for (size_t i = 0; i < kColumns; ++i) {
    AddItem(ec, kColumnNames[i], i == 0 ? ORL_TYPE_DATE : ORL_TYPE_NUMBER, kRoutines[i]);
  }
  HEXP exp = MustParse(ec, text, "Measured");
  NumberValue value = {};
  for ([[maybe_unused]] auto step : state) {
    for (const WeatherRow &row : rows) {
      ORLSetUserLong(ec, reinterpret_cast<intptr_t>(&row));
      if (ORLEvaluateExpression(ec, exp, sizeof value, &value) == 0) {
        state.SkipWithError("no value");
        return;
      }
    }
    benchmark::DoNotOptimize(value);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(rows.size()));
  ORLDestroyEC(ec);
}
BENCHMARK_CAPTURE(Weather, fahrenheit, "(temp_max + temp_min) / 2 * 9 / 5 + 32");
BENCHMARK_CAPTURE(Weather, date, "DateMonthEnd(date + 3 DAYS) - date");

}  // namespace
