// Parsing by the length of the text. Each parse replaces the text of an existing formula.
#include <benchmark/benchmark.h>

#include "bench/contexts.h"

namespace {

constexpr int64_t kShort = 0;  // the short formula among the lengths

// Sums and products in parentheses, up to that many bytes.
std::string TextOfLength(size_t length) {
  const std::string part = " + (Amount * 2.5 - Tax / 3)";
  std::string text = "Amount";
  while (text.size() + part.size() <= length) {
    text += part;
  }
  return text.append(length - text.size(), ' ');
}

void Parse(benchmark::State &state) {
  EC ec = MakeContext({10, 10, 10});
  const std::string text =
      state.range(0) == kShort ? "Amount*2+Tax" : TextOfLength(static_cast<size_t>(state.range(0)));
  HEXP exp = MustParse(ec, "Amount", "Measured");
  FormulaError error;
  uint16_t type = 0;
  for ([[maybe_unused]] auto step : state) {
    if (ORLParseFormula(ec, exp, text.c_str(), "Measured", &error, &type) == nullptr) {
      state.SkipWithError("the formula does not parse");
      break;
    }
  }
  state.counters["bytes"] = static_cast<double>(text.size());
  ORLDestroyEC(ec);
}
BENCHMARK(Parse)->Arg(kShort)->Arg(200)->Arg(2000)->Arg(20000)->Arg(200000)->Arg(2000000);

}  // namespace
