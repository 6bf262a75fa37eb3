// Threads with a context each parse, evaluate and fail at the same time.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "support/context.h"

namespace {

void Work(int number, int *faults) {
  HostData host;
  const std::string value = std::to_string(number);
  host.values = {{"Amount", value}, {"Start", "2012-01-31"}, {"Name", "T" + value}};
  const OwnedContext context = StandardContext(ORL_FLAG_RANGES, &host);
  EC ec = context.get();
  const std::string spaces(static_cast<size_t>(number), ' ');
  struct Row {
    std::string text, outcome, value;
  };
  const std::vector<Row> rows = {
      {"Amount * 2 + 0.5", "type 0", std::to_string(2 * number) + ".5"},
      {spaces + "Amount + Nope", "102@" + std::to_string(number + 9) + "+4", ""},
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
    const std::string name = NameOf(ec, Parse(ec, "1").exp);
    *faults += name.compare(0, 7, "Formula") != 0;
    *faults += ORLValidName(nullptr, "a name", nullptr) != 0;
  }
}

TEST(Threads, ContextEach) {
  std::vector<int> faults(4);
  std::vector<std::thread> threads;
  threads.reserve(4);
  WRENSetCountry("C");
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back(&Work, i + 1, &faults[static_cast<size_t>(i)]);
  }
  for (std::thread &thread : threads) thread.join();
  EXPECT_EQ(faults, std::vector<int>(4, 0));
}

}  // namespace
