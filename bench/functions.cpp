// Formulas with functions, each compared with the same work in plain C++ on ready values; and
// functions whose cost must be linear in the length of their strings.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "bench/contexts.h"

namespace {

constexpr const char *kName = "mary ann o'connor";

int32_t NameValue(EC /*ec*/, HEXP /*exp*/, int32_t size, void **value, const char * /*name*/) {
  return FUNStrVarResult(value, size, kName);
}

struct FunctionRow {
  const char *formula;
  const char *expected;
  std::string (*plain)(const std::string &name, double amount);
};

std::string PlainProper(const std::string &name, double /*amount*/) {
  std::string proper = name;
  bool inWord = false;
  for (char &letter : proper) {
    const int byte = static_cast<unsigned char>(letter);
    letter = static_cast<char>(inWord ? std::tolower(byte) : std::toupper(byte));
    inWord = std::isalnum(byte) != 0 || letter == '\'';
  }
  return proper;
}

std::string PlainPicture(const std::string & /*name*/, double amount) {
  char text[100];
  std::snprintf(text, sizeof text, "%.2f", amount);
  return text;
}

std::string PlainReplace(const std::string &name, double /*amount*/) {
  return std::string(name).replace(5, 3, "lee");
}

std::string PlainJoined(const std::string &name, double amount) {
  return PlainProper(name, amount) + ", " + PlainPicture("", amount);
}

constexpr FunctionRow kFunctionRows[] = {
    {"StrProper(Name)", "Mary Ann O'connor", PlainProper},
    {"StrReplace(Name, 5, 3, 'lee')", "mary lee o'connor", PlainReplace},
    {"NumberToStrPicture(Amount, '#,##0.00')", "12.50", PlainPicture},
    {"StrProper(Name) || ', ' || NumberToStrPicture(Amount, '#,##0.00')",
     "Mary Ann O'connor, 12.50", PlainJoined},
};

// One row by the engine.
void Function(benchmark::State &state) {
  const FunctionRow &row = kFunctionRows[state.range(0)];
  EC ec = MakeContext({0, 0, 0});
  AddItem(ec, "Name", ORL_TYPE_STRING, NameValue);
  HEXP exp = MustParse(ec, row.formula, "Measured");
  char text[100] = "";
  for ([[maybe_unused]] auto step : state) {
    if (ORLEvaluateExpression(ec, exp, sizeof text, text) == 0) {
      state.SkipWithError("no value");
      break;
    }
    benchmark::DoNotOptimize(text);
  }
  if (std::strcmp(text, row.expected) != 0) {
    state.SkipWithError("a wrong value");
  }
  state.SetLabel(row.formula);
  ORLDestroyEC(ec);
}
BENCHMARK(Function)->DenseRange(0, std::size(kFunctionRows) - 1);

// The same row without an engine.
void FunctionLimit(benchmark::State &state) {
  const FunctionRow &row = kFunctionRows[state.range(0)];
  double amount = 12.5;
  const char *name = kName;
  std::string text;
  for ([[maybe_unused]] auto step : state) {
    benchmark::DoNotOptimize(amount);
    benchmark::DoNotOptimize(name);
    text = row.plain(name, amount);
    benchmark::DoNotOptimize(text);
  }
  if (text != row.expected) {
    state.SkipWithError("a wrong value");
  }
}
BENCHMARK(FunctionLimit)->DenseRange(0, std::size(kFunctionRows) - 1);

// Searches and lists that match almost everywhere, the worst case for naive algorithms.
constexpr const char *kLongRows[] = {
    "StrScan(Long, StrRight(Long, NumberRound(StrLength(Long) / 2, 0)) || 'b')",
    "StrTranslate('b', StrRepeat('february,', NumberRound(StrLength(Long) / 9, 0)), 'x')",
    "StrProper(StrPad(StrRepeat('ab', NumberRound(StrLength(Long) / 2, 0)), StrLength(Long)))",
};

int32_t LongValue(EC ec, HEXP /*exp*/, int32_t size, void **value, const char * /*name*/) {
  return FUNStrVarResult(value, size, reinterpret_cast<const char *>(ORLGetUserLong(ec)));
}

void LongText(benchmark::State &state) {
  EC ec = MakeContext({0, 0, 0});
  const std::string text(static_cast<size_t>(state.range(1)), 'a');
  ORLSetUserLong(ec, reinterpret_cast<intptr_t>(text.c_str()));
  AddItem(ec, "Long", ORL_TYPE_STRING, LongValue);
  HEXP exp = MustParse(ec, kLongRows[state.range(0)], "Measured");
  int32_t length = 0;
  void *block = ORLMemAlloc(1);
  for ([[maybe_unused]] auto step : state) {
    if (ORLEvaluateExpressionExt(ec, exp, &length, &block) == 0) {
      state.SkipWithError("no value");
      break;
    }
  }
  ORLMemFree(block);
  state.SetLabel(kLongRows[state.range(0)]);
  state.counters["bytes"] = static_cast<double>(text.size());
  ORLDestroyEC(ec);
}
BENCHMARK(LongText)->ArgsProduct({{0, 1, 2}, {1000, 100000, 1000000}});

}  // namespace
