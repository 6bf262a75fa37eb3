// The cost of one parse, one evaluation and one lookup by the number of rows in the context. The
// row that is used is the last of its kind, the worst for a search from the front.
#include <benchmark/benchmark.h>

#include <chrono>

#include "bench/contexts.h"

namespace {

enum Kind { kItems, kFunctions, kFormulas };
constexpr int kFew = 10;

struct Scale {
  EC ec;
  std::string last;  // name of the last row of the kind
  std::string text;  // a formula that uses it
};

Scale MakeScale(Kind kind, int64_t count) {
  ContextSize size = {kFew, kFew, kFew};
  const int rows = static_cast<int>(count);
  const std::string number = std::to_string(rows - 1);
  Scale scale;
  switch (kind) {
    case kItems:
      size.items = rows;
      scale.last = "Item" + number;
      scale.text = scale.last + " * 2 + Tax";
      break;
    case kFunctions:
      size.functions = rows;
      scale.last = "F" + number;
      scale.text = scale.last + "(Amount) * 2 + Tax";
      break;
    case kFormulas:
      size.formulas = rows;
      scale.last = "Sum" + number;
      scale.text = scale.last + "() * 2 + Tax";
      break;
  }
  scale.ec = MakeContext(size);
  return scale;
}

void ScaleParse(benchmark::State &state, Kind kind) {
  const Scale scale = MakeScale(kind, state.range(0));
  HEXP exp = MustParse(scale.ec, "Amount", "Measured");
  FormulaError error;
  uint16_t type = 0;
  for ([[maybe_unused]] auto step : state) {
    if (ORLParseFormula(scale.ec, exp, scale.text.c_str(), "Measured", &error, &type) == nullptr) {
      state.SkipWithError("the formula does not parse");
      break;
    }
  }
  ORLDestroyEC(scale.ec);
}

// Creates and destroys a formula, as a host does for a text that it only checks.
void ScaleParseDestroy(benchmark::State &state, Kind kind) {
  const Scale scale = MakeScale(kind, state.range(0));
  FormulaError error;
  uint16_t type = 0;
  for ([[maybe_unused]] auto step : state) {
    HEXP exp = ORLParseFormula(scale.ec, nullptr, scale.text.c_str(), nullptr, &error, &type);
    if (ORLDestroyEXP(scale.ec, exp) == 0 || exp == nullptr) {
      state.SkipWithError("the formula does not parse or does not go");
      break;
    }
  }
  ORLDestroyEC(scale.ec);
}

void ScaleEvaluate(benchmark::State &state, Kind kind) {
  const Scale scale = MakeScale(kind, state.range(0));
  HEXP exp = MustParse(scale.ec, scale.text, "Measured");
  NumberValue value = {};
  for ([[maybe_unused]] auto step : state) {
    if (ORLEvaluateExpression(scale.ec, exp, sizeof value, &value) == 0) {
      state.SkipWithError("no value");
      break;
    }
    benchmark::DoNotOptimize(value);
  }
  ORLDestroyEC(scale.ec);
}

// The lookup alone, through a routine that does little else.
void ScaleLookup(benchmark::State &state, Kind kind) {
  const Scale scale = MakeScale(kind, state.range(0));
  HEXP exp = kind == kItems ? MustParse(scale.ec, scale.last, "Measured") : nullptr;
  bool found = true;
  for ([[maybe_unused]] auto step : state) {
    switch (kind) {
      case kItems:
        found = ORLGetSimpleInputSubClass(scale.ec, exp) == 0;
        break;
      case kFunctions:  // its parameter is by value: 0, found or not
        found = ORLIsItemAggregate(scale.ec, ORL_FUNCTION, scale.last.c_str()) == 0;
        break;
      case kFormulas:
        found = ORLHEXPFromName(scale.ec, scale.last.c_str()) != nullptr;
        break;
    }
    benchmark::DoNotOptimize(found);
  }
  if (!found) {
    state.SkipWithError("not found");
  }
  ORLDestroyEC(scale.ec);
}

// Formulas of which each calls the one before.
std::string ChainName(int number) {
  return "F" + std::to_string(number);
}

EC MakeChain(int count) {
  EC ec = ORLCreateEC(nullptr, nullptr, nullptr, 0);
  AddItem(ec, "Amount", ORL_TYPE_NUMBER, &AmountValue);
  for (int i = 0; i < count; ++i) {
    MustParse(ec, i == 0 ? "Amount" : ChainName(i - 1) + "() + 1", ChainName(i).c_str());
  }
  return ec;
}

// A formula in the middle of a chain is given another text, which calls another one below it.
void ScaleReplaceInChain(benchmark::State &state) {
  const auto count = static_cast<int>(state.range(0));
  EC ec = MakeChain(count);
  const std::string name = ChainName(count / 2);
  HEXP exp = ORLHEXPFromName(ec, name.c_str());
  const std::string texts[] = {ChainName(count / 2 - 1) + "() + 2",
                               ChainName(count / 2 - 2) + "() + 2"};
  FormulaError error;
  uint16_t type = 0;
  uint64_t next = 0;
  for ([[maybe_unused]] auto step : state) {
    const char *text = texts[next++ % 2].c_str();
    if (ORLParseFormula(ec, exp, text, name.c_str(), &error, &type) == nullptr) {
      state.SkipWithError("the formula does not parse");
      break;
    }
  }
  ORLDestroyEC(ec);
}

// Whether each formula of a chain uses an item, queried as hosts do: the time of one.
void ScaleUsedInChain(benchmark::State &state) {
  EC ec = MakeChain(static_cast<int>(state.range(0)));
  int32_t row = 0;
  int32_t used = 0;
  for ([[maybe_unused]] auto step : state) {
    used += ORLIsItemUsed(ec, ORLHEXPFromOrdinal(ec, row), ORL_INPUT, "Nothing");
    row = row + 1 < ORLGetExpressionCount(ec) ? row + 1 : 0;
    if (row == 0) {  // a change, after which the host asks of all again
      state.PauseTiming();
      ORLDestroyEXP(ec, MustParse(ec, "1", "Changed"));
      state.ResumeTiming();
    }
  }
  if (used != 0) {
    state.SkipWithError("the item is used");
  }
  ORLDestroyEC(ec);
}

// Items of one name, all deleted at once: the time of one.
void ScaleDeleteAll(benchmark::State &state) {
  const auto count = static_cast<int>(state.range(0));
  for ([[maybe_unused]] auto step : state) {
    EC ec = ORLCreateEC(nullptr, nullptr, nullptr, 0);
    for (int i = 0; i < count; ++i) {
      AddItem(ec, "Same", ORL_TYPE_NUMBER, &AmountValue);
    }
    const auto start = std::chrono::steady_clock::now();
    ORLDeleteAllECVars(ec);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    state.SetIterationTime(taken.count() / count);
    ORLDestroyEC(ec);
  }
}

#define SCALE(routine)                                                                 \
  BENCHMARK_CAPTURE(routine, items, kItems)->Arg(kFew)->Arg(1000)->Arg(20000);         \
  BENCHMARK_CAPTURE(routine, functions, kFunctions)->Arg(kFew)->Arg(1000)->Arg(20000); \
  BENCHMARK_CAPTURE(routine, formulas, kFormulas)->Arg(kFew)->Arg(1000)->Arg(20000)

SCALE(ScaleParse);
SCALE(ScaleParseDestroy);
SCALE(ScaleEvaluate);
SCALE(ScaleLookup);
BENCHMARK(ScaleReplaceInChain)->Arg(kFew)->Arg(1000)->Arg(20000);
BENCHMARK(ScaleUsedInChain)->Arg(kFew)->Arg(1000)->Arg(20000);
BENCHMARK(ScaleDeleteAll)->Arg(kFew)->Arg(1000)->Arg(20000)->UseManualTime()->Iterations(20);

}  // namespace
