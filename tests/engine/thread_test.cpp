// Threads with a context each parse, evaluate and fail at the same time.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "support/context.h"

namespace {

// Keeps the first fault of a thread: what was computed, the result and the expected one.
template <class Value>
void Check(const std::string &what, const Value &found, const std::type_identity_t<Value> &expected,
           std::string &fault) {
  if (found == expected || !fault.empty()) return;
  std::ostringstream text;
  text << what << ": " << found << " instead of " << expected;
  fault = text.str();
}

void Work(int number, std::string &fault) {
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
      Check(row.text + ": outcome", Outcome(parsed), row.outcome, fault);
      if (parsed.exp != nullptr) Check(row.text, Evaluate(ec, parsed.exp), row.value, fault);
    }
    Check("valid name", ORLValidName(nullptr, "a name", nullptr), 0, fault);
  }
}

// The columns are shared by all threads, the results are each thread's own.
void ComputeRows(const std::vector<OrlColumn> &columns, int number, std::string &fault) {
  constexpr int64_t kRows = 3000;
  HostedContext ec;
  FUNDefineFunctions(ec);
  Make(ec, "Amount * 3", "Triple");
  HEXP sum = Make(ec, "Triple() / 3 + " + std::to_string(number) + " + DateYear(Start + 1 MONTH)");
  HEXP text = Make(ec, "StrUpper(Name) || '" + std::to_string(number) + "'");
  std::vector<int64_t> values(kRows);
  std::vector<int32_t> offsets(kRows + 1);
  for (int round = 0; round < 20; ++round) {
    OrlRowResults sums = {ORL_COLUMN_INT64, 0, values.data(), nullptr, nullptr};
    OrlRowResults texts = {ORL_COLUMN_TEXT, 0, nullptr, offsets.data(), nullptr};
    Check("sums", ORLEvaluateRows(ec, sum, kRows, 3, columns.data(), &sums), kRows, fault);
    Check("texts", ORLEvaluateRows(ec, text, kRows, 3, columns.data(), &texts), kRows, fault);
    for (int64_t row = 0; row < kRows; ++row) {
      const int64_t found = values[static_cast<size_t>(row)], expected = row + number + 1970;
      if (found != expected) Check("sum of row " + std::to_string(row), found, expected, fault);
    }
    const std::string wanted = "AB" + std::to_string(number);
    const std::string first(static_cast<const char *>(texts.values), wanted.size());
    Check("first text", first, wanted, fault);
    ORLMemFree(texts.values);
  }
}

template <class Routine>
void RunFour(Routine routine) {
  std::vector<std::string> faults(4);
  std::vector<std::thread> threads(4);
  for (size_t i = 0; i < 4; ++i) {
    threads[i] = std::thread([&, i] { routine(static_cast<int>(i) + 1, faults[i]); });
  }
  for (std::thread &thread : threads) thread.join();
  EXPECT_EQ(faults, std::vector<std::string>(4));
}

TEST(Threads, ContextEach) {
  RunFour(Work);
}

TEST(Threads, RowsOfTheSameColumns) {
  std::vector<int64_t> amounts(3000);
  std::vector<int32_t> offsets(3001);
  const std::vector<int32_t> days(3000, 31);
  std::string names;
  for (size_t row = 0; row < amounts.size(); ++row) {
    amounts[row] = static_cast<int64_t>(row);
    names += "ab";
    offsets[row + 1] = static_cast<int32_t>(names.size());
  }
  const std::vector<OrlColumn> columns = {
      {"Amount", ORL_COLUMN_INT64, 0, amounts.data(), nullptr, nullptr},
      {"Start", ORL_COLUMN_DATE32, 0, days.data(), nullptr, nullptr},
      {"Name", ORL_COLUMN_TEXT, 0, names.data(), offsets.data(), nullptr}};
  RunFour([&](int number, std::string &fault) { ComputeRows(columns, number, fault); });
}

}  // namespace
