// Threads with a context each parse, evaluate and fail at the same time.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "support/context.h"

namespace {

void Work(int number, int *faults) {
  const std::string value = std::to_string(number);
  HostedContext ec(ORL_FLAG_RANGES);
  ec.host.values = {{"Amount", value}, {"Start", "2012-01-31"}, {"Name", "T" + value}};
  struct Row {
    std::string text, outcome, value;
  };
  const std::vector<Row> rows = {
      {"Amount * 2 + 0.5", "type 0", std::to_string(2 * number) + ".5"},
      {std::string(value.size(), ' ') + "Amount + Nope", "102@10+4", ""},
      {"Name || 'x'", "type 2", "'T" + value + "x'"},
      {"Start + Amount DAYS", "type 1", "2012-02-0" + value},
      {"13/45/99 +", "123@0+8", ""},
      {"Amount, 2", "type 0", "none"},
  };
  for (int round = 0; round < 300; ++round) {
    for (const Row &row : rows) {
      const Parsed parsed = Parse(ec, row.text);
      *faults += Outcome(parsed) != row.outcome;
      *faults += parsed.exp != nullptr && Evaluate(ec, parsed.exp) != row.value;
    }
    *faults += ORLValidName(nullptr, "a name", nullptr) != 0;
  }
}

TEST(Threads, ContextEach) {
  std::vector<int> faults(4);
  std::vector<std::thread> threads;
  for (int &count : faults) {
    const int number = static_cast<int>(threads.size()) + 1;
    threads.emplace_back(&Work, number,
                         &count);  // NOLINT(performance-inefficient-vector-operation)
  }
  for (std::thread &thread : threads) thread.join();
  EXPECT_EQ(faults, std::vector<int>(4, 0));
}

}  // namespace
