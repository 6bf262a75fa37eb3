// Blocks of up to a megabyte that are designed to be slow to load, as a host may receive them from
// untrusted sources. Loading or rejecting one must take less than a second.
#include <benchmark/benchmark.h>
#include <orli11.h>

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace {

struct Block {
  std::string rows;
  int count = 0;

  void Add(const std::string &name, const std::string &text) {
    rows += text + '\0' + name + '\0';
    ++count;
  }

  // A block of version 3 with no operator names and no items.
  std::string Bytes() const {
    std::string bytes(1, 3);
    bytes.append(20, '\0');
    for (const int byte : {252, 0, count & 255, count >> 8}) {
      bytes += static_cast<char>(byte);
    }
    return bytes + rows;
  }
};

std::string Name(char letter, int number) {
  return letter + std::string("_") + std::to_string(number);
}

std::string Sum(int terms) {
  std::string text = "1";
  for (int i = 1; i < terms; ++i) {
    text += "+1";
  }
  return text;
}

// Adds rows D_0 and on, and a formula that calls each of them.
void AddCalled(Block &block, int count) {
  std::string calls = "1";
  for (int i = 0; i < count; ++i) {
    block.Add(Name('D', i), "1");
    calls += "+" + Name('D', i) + "()";
  }
  block.Add("U", calls);
}

// A long formula, and second rows of names that are called: each could close a cycle.
Block SecondRows() {
  Block block;
  block.Add("C", Sum(180000));
  AddCalled(block, 12000);
  for (int i = 0; i < 12000; ++i) {
    block.Add(Name('D', i), "C()");
  }
  return block;
}

// The same where the long formula comes last and the names follow from the end.
Block SecondRowsBackwards() {
  Block block;
  AddCalled(block, 12000);
  block.Add("C", Sum(180000));
  for (int i = 11999; i >= 0; --i) {
    block.Add(Name('D', i), "C()");
  }
  return block;
}

Block DoubledChain(bool backwards) {
  constexpr int kRows = 32000;
  Block block;
  for (int i = 0; i < kRows; ++i) {
    const int row = backwards ? kRows - 1 - i : i;
    const std::string below = Name('F', row - 1) + "()";
    std::string text = row == 0 ? "1" : below;
    if (row != 0) {
      text.append("+").append(below);
    }
    block.Add(Name('F', row), text);
  }
  return block;
}

// As many formulas as a block holds, each of which refers to the one below; in the order in which
// they can be parsed, in its reverse, or in a shuffled one.
enum class StoredOrder { Best, Reverse, Shuffled };

Block Chain(StoredOrder order) {
  constexpr int kRows = 32767;
  std::vector<int> places(kRows);
  std::iota(places.begin(), places.end(), 0);
  if (order == StoredOrder::Reverse) {
    std::reverse(places.begin(), places.end());
  } else if (order == StoredOrder::Shuffled) {
    std::shuffle(places.begin(), places.end(), std::mt19937(1));
  }
  Block block;
  for (const int row : places) {
    block.Add(Name('F', row), row == 0 ? "1" : Name('F', row - 1) + "()+1");
  }
  return block;
}

// One long formula that calls others, which are resolved one by one in the passes of the load.
Block LongCaller() {
  constexpr int kCalls = 16;
  Block block;
  std::string text = Sum(490000);
  for (int i = 1; i <= kCalls; ++i) {
    text += "+" + Name('Z', i) + "()";
  }
  block.Add("R", text);
  for (int i = kCalls; i > 0; --i) {
    block.Add(Name('Z', i), i == 1 ? "1" : Name('Z', i - 1) + "()");
  }
  return block;
}

void LoadBlock(benchmark::State &state, Block (*make)()) {
  const std::string bytes = make().Bytes();
  const auto ignore = [](EC, const char *, const FormulaError *) {};
  int32_t loaded = 0;
  for ([[maybe_unused]] auto step : state) {
    EC ec = ORLCreateEC(nullptr, nullptr, nullptr, 0);
    loaded = ORLSetECContents(ec, static_cast<int32_t>(bytes.size()), bytes.data(), 1, ignore);
    ORLDestroyEC(ec);
  }
  state.counters["bytes"] = static_cast<double>(bytes.size());
  state.SetLabel(loaded != 0 ? "loaded" : "refused");
}

BENCHMARK_CAPTURE(LoadBlock, second_rows, &SecondRows)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LoadBlock, second_rows_backwards, &SecondRowsBackwards)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LoadBlock, doubled_chain, [] {
  return DoubledChain(false);
})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LoadBlock, doubled_chain_backwards, [] {
  return DoubledChain(true);
})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LoadBlock, chain, [] {
  return Chain(StoredOrder::Best);
})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LoadBlock, chain_reverse, [] {
  return Chain(StoredOrder::Reverse);
})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LoadBlock, chain_shuffled, [] {
  return Chain(StoredOrder::Shuffled);
})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LoadBlock, long_caller, &LongCaller)->Unit(benchmark::kMillisecond);

}  // namespace
