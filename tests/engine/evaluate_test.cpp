// Evaluation: values of every kind of node, host routines, and the results of the two entries.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "closed/wren/memory.h"
#include "functions/result_block.h"
#include "support/cases.h"
#include "support/context.h"

namespace {

// ---- Host functions ----

bool listGiven = false;
std::string given;  // "+" or "-" for each declared parameter of Record

// Twice the first argument; no value without one.
int32_t Twice(EC, HEXP, int32_t, void **result, const char *, void **args) {
  if (args == nullptr || args[0] == nullptr) return 0;
  const auto *value = static_cast<const NumberValue *>(args[0]);
  return WRENNumAdd(static_cast<NumberValue *>(*result), value, value), 1;
}

// Records which of its three arguments are present and returns 7.
int32_t Record(EC, HEXP, int32_t, void **result, const char *, void **args) {
  listGiven = args != nullptr;
  given.clear();
  for (int i = 0; listGiven && i < 3; ++i) given += args[i] == nullptr ? '-' : '+';
  return WRENNumFromInt(static_cast<NumberValue *>(*result), 7), 1;
}

// Its argument, or the name of it, as a text.
int32_t Echo(EC, HEXP, int32_t size, void **result, const char *, void **args) {
  return FUNStrVarResult(result, size, args[0] == nullptr ? "(no)" : static_cast<char *>(args[0]));
}

int32_t FailAfterResize(EC, HEXP, int32_t, void **result, const char *, void **) {
  FUNResizeResult(result, 5000);
  return 0;
}

struct EvaluationContext : HostedContext {
  explicit EvaluationContext(uint16_t flags = 0, OrlLookupProc lookup = nullptr)
      : HostedContext(flags, lookup) {
    EC ec = *this;
    AddFunction(ec, {"Twice", 0, {{0, 0, 0}}, 0, 1, 0, Address(&Twice)});
    AddFunction(ec, {"Record", 0, {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}, 1, 2, 0, Address(&Record)});
    AddFunction(ec, {"Tail2", 0, {{0, 0, 0}, {0, 0, 0}}, 1, 0, 0, Address(&Twice)});
    AddFunction(ec, {"Star", 0, {{1, 5, 0}}, 0, 0, 0, Address(&Record)});
    AddFunction(ec, {"NameText", 2, {{1, 0, 0}}, 0, 0, 4, Address(&Echo)});
    AddFunction(ec, {"Echo", 2, {{0, 2, 0}}, 0, 0, 0, Address(&Echo)});
    AddFunction(ec, {"FailN", 0, {}, 0, 0, 0, Address(&FailAfterResize)});
    AddFunction(ec, {"FailS", 2, {}, 0, 0, 0, Address(&FailAfterResize)});
    AddInput(ec, "Null", 0);
    AddInput(ec, "NullDate", 1);
    AddInput(ec, "Bad", 0);  // its routine fails
    AddInput(ec, "Gone", 0, 0, nullptr);
    AddInput(ec, "Long", 2);
    host.values = {{"Amount", "5"}, {"Tax", "0.25"},  {"Name", "Ann"}, {"Start", "2012-01-31"},
                   {"Null", ""},    {"NullDate", ""}, {"Money", "abc"}};
    host.values["End"] = "2012-02-10 10:30:15";
    host.values["Long"] = std::string(70000, 'x');
  }
};

TEST(Evaluate, Rows) {
  for (const Case &row : CasesOf("engine/engine_cases.txt", "values")) {
    SCOPED_TRACE(row.where);
    const int64_t before = TEST_LiveBlocks();
    std::optional<EvaluationContext> ec(std::in_place, row.Flags(0));
    HEXP exp = Make(*ec, row[1]);
    for (int time = 0; time < 2; ++time) EXPECT_EQ(Evaluate(*ec, exp), row[2]);
    ec.reset();
    EXPECT_EQ(TEST_LiveBlocks(), before);
  }
}

struct Arithmetic {
  std::vector<std::string> numbers;
  std::string operators;  // between them

  std::string Text() const {
    std::string text = numbers[0];
    for (size_t i = 0; i < operators.size(); ++i) text += operators[i] + numbers[i + 1];
    return text;
  }
  // Two equal signs between whole numbers; what follows the second one may have a fraction.
  bool MayHoldDate() const {
    const auto whole = [&](size_t i) { return numbers[i].find('.') == std::string::npos; };
    for (size_t i = 1; i < operators.size(); ++i) {
      const bool sign = operators[i] == '-' || operators[i] == '/';
      if (sign && operators[i] == operators[i - 1] && whole(i - 1) && whole(i)) return true;
    }
    return false;
  }
  double Value() const {
    double sum = 0, term = std::stod(numbers[0]);
    for (size_t i = 0; i < operators.size(); ++i) {
      const double number = std::stod(numbers[i + 1]);
      if (operators[i] == '*') term *= number;
      if (operators[i] == '/') term /= number;
      if (operators[i] == '*' || operators[i] == '/') continue;
      sum += term;
      term = operators[i] == '-' ? -number : number;
    }
    return sum + term;
  }
};

TEST(Evaluate, PlainArithmeticIsNotADate) {
  const EvaluationContext ec(ORL_FLAG_RANGES);
  std::mt19937 random(7);
  const auto upTo = [&](unsigned most) { return std::to_string(random() % most + 1); };
  int dates = 0;
  for (int i = 0; i < 20000; ++i) {
    Arithmetic arithmetic;
    for (auto count = 2 + random() % 3; count > 0; --count) {
      arithmetic.numbers.push_back(upTo(13) + (random() % 2 == 0 ? "." + upTo(12) : ""));
      if (count > 1) arithmetic.operators += "--//+*"[random() % 6];
    }
    const std::string text = arithmetic.Text();
    if (arithmetic.MayHoldDate()) {
      ++dates;
      continue;
    }
    const Parsed parsed = Parse(ec, text);
    ASSERT_EQ(Outcome(parsed), "type 0") << text;
    const double value = arithmetic.Value();
    ASSERT_NEAR(std::stod(Evaluate(ec, parsed.exp)), value, 1e-9 * (1 + std::fabs(value))) << text;
    ORLDestroyEXP(ec, parsed.exp);
  }
  EXPECT_LT(dates, 20000 / 10) << "texts that may hold a date";
}

// Both operands and all arguments are computed even when one has no value; but not arguments beyond
// the declared parameters, nor those passed by name.
TEST(Evaluate, OrderAndHandlesOfHostCalls) {
  EvaluationContext ec;
  HEXP inner = Make(ec, "Amount + Tax", "Inner");
  struct Row {
    const char *text, *value;
    std::vector<std::string> asked;
  };
  const Row rows[] = {
      {"Amount + Inner() * Tax", "6.3125", {"Amount", "Inner:Amount", "Inner:Tax", "Tax"}},
      {"Bad + Record(Bad, Amount)", "none", {"Bad", "Bad", "Amount"}},
      {"NameText(Amount)", "'Amount'", {}},
      {"Tail2(3, Amount, Tax)", "6", {"Amount"}},
      {"Star(*)", "7", {}},
  };
  for (const Row &row : rows) {
    ec.host.calls.clear();
    HEXP exp = Make(ec, row.text);
    EXPECT_EQ(Evaluate(ec, exp), row.value) << row.text;
    std::vector<std::string> asked;
    for (const auto &[by, name] : ec.host.calls) {
      asked.push_back((by == exp ? "" : by == inner ? "Inner:" : "?") + name);
    }
    EXPECT_EQ(asked, row.asked) << row.text;
    if (row.text[0] == 'B') {
      EXPECT_EQ(given, "-+-");
    }
  }
  EXPECT_FALSE(listGiven);  // Star(*) has no argument list
}

// ---- The two entries ----

TEST(Evaluate, IntoABuffer) {
  const EvaluationContext ec;
  const NumberValue five = [] {
    NumberValue number;
    return WRENNumFromInt(&number, 5), number;
  }();
  const std::string eight = std::string("ABCDEFGH").append(1, '\0');
  const std::string number(reinterpret_cast<const char *>(&five), sizeof five);
  struct Row {
    const char *text;
    int32_t size, result;
    std::string written;
  };
  for (const Row &row :
       {Row{"'ABCD' || 'EFGH'", 5, 1, "ABCDE"}, Row{"'ABCD' || 'EFGH'", 8, 1, "ABCDEFGH"},
        Row{"'ABCD' || 'EFGH'", 9, 1, eight}, Row{"'ABCDEFGH'", 20, 1, eight},
        Row{"'ABCDEFGH'", 0, 1, std::string("\x09\0\0\0", 4)}, Row{"'ABCDEFGH'", -1, 0, ""},
        Row{"Amount", 0, 1, number}, Row{"Amount", 100, 1, number}, Row{"Bad", 13, 0, ""},
        Row{"Money", 13, 0, ""}, Row{"FailS()", 13, 0, ""}}) {
    std::string buffer(20, '#');
    EXPECT_EQ(ORLEvaluateExpression(ec, Make(ec, row.text), row.size, buffer.data()), row.result);
    EXPECT_EQ(buffer, row.written + std::string(20 - row.written.size(), '#'))
        << row.text << " into " << row.size;
  }
  EXPECT_EQ(ORLEvaluateExpression(ec, nullptr, 13, nullptr), 0);
}

// A block grows when necessary, else it is kept, also when there is no value.
TEST(Evaluate, IntoABlock) {
  EvaluationContext ec;
  struct Row {
    const char *text;
    int32_t result, length;
    uint32_t size;
  };
  void *block = nullptr;
  int32_t length = 0;
  for (const Row &row : {Row{"Name", 1, 4, 5}, Row{"Long", 1, 70001 & 0xffff, 70002},
                         Row{"'ABCD'", 1, 5, 70002}, Row{"FailS()", 0, 5, 70002}}) {
    EXPECT_EQ(ORLEvaluateExpressionExt(ec, Make(ec, row.text), &length, &block), row.result);
    EXPECT_EQ(length, row.length) << row.text;
    EXPECT_EQ(ORLMemSize(block), row.size) << row.text;
    const std::string text = static_cast<char *>(block);
    EXPECT_EQ(text, row.text[0] == 'N'   ? "Ann"
                    : row.text[0] == 'L' ? ec.host.values["Long"]
                                         : "ABCD");
  }
  EXPECT_EQ(ORLEvaluateExpressionExt(ec, nullptr, &length, &block), 0);
  ORLMemFree(block);
}

// ---- Operator callbacks ----

std::string operands;

int32_t NotedOperator(EC, HEXP, int32_t type, int32_t leftSize, const NumberValue *left,
                      int32_t rightSize, const NumberValue *right, int32_t resultSize,
                      NumberValue *result) {
  EXPECT_EQ(type, 0);
  EXPECT_EQ(leftSize + rightSize + resultSize, 39);
  EXPECT_EQ(result->length, 0);
  operands = NumberText(*left) + " " + NumberText(*right);
  if (NumberText(*left) == "8") throw 8;
  if (NumberText(*left) != "9") WRENNumFromInt(result, 100);
  return 0;  // not looked at
}

TEST(Evaluate, OperatorCallbacks) {
  for (const Case &row : CasesOf("engine/engine_cases.txt", "operators")) {
    SCOPED_TRACE(row.where);
    const auto op = static_cast<int16_t>(row.Int(0)), type = static_cast<int16_t>(row.Int(1));
    const EvaluationContext ec(0, [](const char *) { return Address(&NotedOperator); });
    ASSERT_EQ(ORLSetOperatorCallback(ec, op, type, "noted"), 1);
    operands.clear();
    HEXP exp = Parse(ec, row[2]).exp;
    EXPECT_EQ(Evaluate(ec, exp), row[3]);
    EXPECT_EQ(operands, row[4]);
    EXPECT_EQ(ORLSetOperatorCallback(ec, op, type, nullptr), 1);
    operands.clear();
    Evaluate(ec, exp);
    EXPECT_EQ(operands, "") << "after it was taken back";
  }
  const EvaluationContext ec;  // without a lookup there is nothing to call
  EXPECT_EQ(ORLSetOperatorCallback(ec, 0, 0, "noted"), 1);
  EXPECT_EQ(Evaluate(ec, Make(ec, "1 + 2")), "3");
}

}  // namespace
