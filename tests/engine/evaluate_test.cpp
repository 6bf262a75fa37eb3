// Evaluation: values of every kind of node, host routines, and what the two entries deliver.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "closed/wren/memory.h"
#include "functions/result_block.h"
#include "support/context.h"

namespace {

using Calls = std::vector<std::pair<HEXP, std::string>>;

// ---- Host functions ----

void **recordedArgs = nullptr;
std::vector<std::string> recorded;  // what Record was given, per declared parameter

// Twice the first argument; no value without one.
int32_t Twice(EC, HEXP, int32_t, void **result, const char *, void **args) {
  if (args == nullptr || args[0] == nullptr) return 0;
  const auto *value = static_cast<const NumberValue *>(args[0]);
  WRENNumAdd(static_cast<NumberValue *>(*result), value, value);
  return 1;
}

// Notes which of its three arguments are there and gives 7.
int32_t Record(EC, HEXP, int32_t, void **result, const char *, void **args) {
  recordedArgs = args;
  recorded.clear();
  for (int i = 0; args != nullptr && i < 3; ++i) {
    recorded.emplace_back(args[i] == nullptr ? "none" : "some");
  }
  WRENNumFromInt(static_cast<NumberValue *>(*result), 7);
  return 1;
}

// Its argument by name as its text.
int32_t NameText(EC, HEXP, int32_t size, void **result, const char *, void **args) {
  return FUNStrVarResult(result, size,
                         args[0] == nullptr ? "(none)" : static_cast<char *>(args[0]));
}

// Its argument, as a text.
int32_t Echo(EC, HEXP, int32_t size, void **result, const char *, void **args) {
  return args[0] == nullptr ? 0 : FUNStrVarResult(result, size, static_cast<char *>(args[0]));
}

int32_t FailAfterResize(EC, HEXP, int32_t, void **result, const char *, void **) {
  FUNResizeResult(result, 5000);
  return 0;
}

OwnedContext EvaluationContext(uint16_t flags, HostData *host) {
  OwnedContext context = StandardContext(flags, host);
  EC ec = context.get();
  AddFunction(ec, {"Twice", 0, {{0, 0, 0}}, 0, 0, 0, Address(&Twice)});
  AddFunction(ec, {"TwiceOpt", 0, {{0, 0, 0}}, 0, 1, 0, Address(&Twice)});
  AddFunction(ec, {"Record", 0, {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}, 1, 2, 0, Address(&Record)});
  AddFunction(ec, {"Tail7", 0, {{0, 0, 0}, {0, 0, 0}}, 1, 0, 0, Address(&Twice)});
  AddFunction(ec, {"Star", 0, {{1, 5, 0}}, 0, 0, 0, Address(&Record)});
  AddFunction(ec, {"NameText", 2, {{1, 0, 0}}, 0, 0, 4, Address(&NameText)});
  AddFunction(ec, {"Echo", 2, {{0, 2, 0}}, 0, 0, 0, Address(&Echo)});
  AddFunction(ec, {"FailN", 0, {}, 0, 0, 0, Address(&FailAfterResize)});
  AddFunction(ec, {"FailS", 2, {}, 0, 0, 0, Address(&FailAfterResize)});
  AddInput(ec, "Null", 0);
  AddInput(ec, "NullDate", 1);
  AddInput(ec, "Bad", 0);  // its routine fails
  AddInput(ec, "Gone", 0, 0, nullptr);
  AddInput(ec, "Long", 2);
  host->values = {{"Amount", "5"},
                  {"Tax", "0.25"},
                  {"Name", "Ann"},
                  {"Start", "2012-01-31"},
                  {"End", "2012-02-10 10:30:15"},
                  {"Null", ""},
                  {"NullDate", ""},
                  {"Money", "abc"},
                  {"Long", std::string(200, 'x')}};
  return context;
}

TEST(Evaluate, Rows) {
  constexpr uint16_t kRanges = ORL_FLAG_RANGES;
  struct Row {
    uint16_t flags;
    const char *text, *value;
  };
  const Row rows[] = {
      // Numbers
      {0, "2 + 3 * 4", "14"},
      {0, "(2 + 3) * 4", "20"},
      {0, "10 - 3 - 2", "5"},
      {0, "100 / 10 / 5", "2"},
      {0, "-5 - -2", "-3"},
      {0, "0.1 + 0.2", "0.3"},
      {0, "Amount * 2 + Tax", "10.25"},
      {0, "Null", "null"},
      {0, "Null + 5", "5"},
      {0, "5 + Null", "5"},
      {0, "Null - 3", "-3"},
      {0, "Null * 5", "0"},
      {0, "Null + Null", "0"},
      {0, "5 / 0", "0"},
      {0, "0 / 5", "0"},
      {0, "Null / 5", "0"},
      {0, "5 / Null", "0"},
      // Dates
      {0, "2012-01-31", "2012-01-31"},
      {0, "Start + 1 MONTH", "2012-02-29"},
      {0, "Start + 2", "2012-02-02"},
      {0, "Start - 1 YEAR", "2011-01-31"},
      {0, "Start + Null", "2012-01-31"},
      {0, "End + 20 HOURS", "2012-02-11 06:30:15"},
      {0, "NullDate", "null"},
      {0, "NullDate + 1", "null"},
      {0, "End - Start", "10"},
      {0, "NullDate - Start", "null"},
      {0, "2012-03-01 - 2012-02-28", "2"},
      {ORL_FLAG_DATE_MINUS_STRING, "Start - Name", "none"},
      // Texts
      {0, "Name || ' ' || 'b'", "'Ann b'"},
      {0, "''", "''"},
      {0, "'it''s'", "'it's'"},
      {0, "'a\\'b'", "'a'b'"},
      {0, "'a\\''b'", "'a'b'"},
      {0, "'a\\b'", "'a\\b'"},
      {0, "'a\\'", "'a\\'"},
      {ORL_FLAG_STRING_PLUS, "'a' + 'b'", "none"},
      // Nothing that could be computed
      {ORL_FLAG_PERCENT, "7 % 3", "none"},
      {kRanges, "Amount AND Tax", "none"},
      {kRanges, "Amount, Tax", "none"},
      {0, "Bad", "none"},
      {0, "Bad + 1", "none"},
      {0, "1 + Gone", "none"},
      {0, "Half(1)", "none"},
      {0, "FailN()", "none"},
      {0, "FailS() || 'a'", "none"},
      {0, "Money", "none"},
      // Calls
      {0, "Twice(Amount + 1)", "12"},
      {0, "Twice(Twice(Amount))", "20"},
      {0, "Twice(Bad)", "none"},
      {0, "Record(Bad, 1)", "7"},
      {0, "TwiceOpt()", "none"},
      {0, "Tail7(3, Bad, Bad, Bad)", "6"},
      {0, "Echo(Name || '!')", "'Ann!'"},
      {0, "NameText(Amount)", "'Amount'"},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(row.text);
    HostData host;
    const OwnedContext context = EvaluationContext(row.flags, &host);
    const Parsed parsed = Parse(context.get(), row.text);
    ASSERT_NE(parsed.exp, nullptr) << Outcome(parsed);
    const int64_t before = TEST_LiveBlocks();
    EXPECT_EQ(Evaluate(context.get(), parsed.exp), row.value);
    EXPECT_EQ(Evaluate(context.get(), parsed.exp), row.value) << "again";
    EXPECT_EQ(TEST_LiveBlocks(), before);
  }
}

TEST(Evaluate, OrderAndHandlesOfHostCalls) {
  HostData host;
  const OwnedContext context = EvaluationContext(0, &host);
  EC ec = context.get();
  HEXP inner = Parse(ec, "Amount + Tax", "Inner").exp;
  HEXP outer = Parse(ec, "Amount + Inner() * Tax", "Outer").exp;
  EXPECT_EQ(Evaluate(ec, outer), "6.3125");
  EXPECT_EQ(host.calls,
            (Calls{{outer, "Amount"}, {inner, "Amount"}, {inner, "Tax"}, {outer, "Tax"}}));
  // Both operands and all arguments are computed even when one has no value.
  host.calls.clear();
  HEXP failing = Parse(ec, "Bad + Record(Bad, Amount)").exp;
  EXPECT_EQ(Evaluate(ec, failing), "none");
  EXPECT_EQ(host.calls, (Calls{{failing, "Bad"}, {failing, "Bad"}, {failing, "Amount"}}));
  EXPECT_EQ(recorded, (std::vector<std::string>{"none", "some", "none"}));
  // By name: the routine of the item is not called.
  host.calls.clear();
  EXPECT_EQ(Evaluate(ec, Parse(ec, "NameText(Amount)").exp), "'Amount'");
  EXPECT_TRUE(host.calls.empty());
  // Beyond the declared count nothing is computed.
  EXPECT_EQ(Evaluate(ec, Parse(ec, "Tail7(1, Amount, Tax)").exp), "2");
  ASSERT_EQ(host.calls.size(), 1u);
  EXPECT_EQ(host.calls[0].second, "Amount");
  EXPECT_EQ(Evaluate(ec, Parse(ec, "Star(*)").exp), "7");
  EXPECT_EQ(recordedArgs, nullptr);
}

// ---- The two entries ----

TEST(EvaluateEntries, Texts) {
  HostData host;
  const OwnedContext context = EvaluationContext(0, &host);
  EC ec = context.get();
  HEXP eight = Parse(ec, "'ABCD' || 'EFGH'").exp;
  struct Row {
    int32_t size;
    const char *buffer;  // twelve bytes, # for those not written
  };
  for (const Row &row : {Row{5, "ABCDE#######"}, Row{8, "ABCDEFGH####"}, Row{1, "A###########"},
                         Row{9, "ABCDEFGH\0###"}, Row{12, "ABCDEFGH\0###"}}) {
    char buffer[13] = "############";
    EXPECT_EQ(ORLEvaluateExpression(ec, eight, row.size, buffer), 1);
    EXPECT_EQ(std::string(buffer, 12), std::string(row.buffer, 12)) << row.size;
  }
  int32_t needed = 0;
  EXPECT_EQ(ORLEvaluateExpression(ec, eight, 0, &needed), 1);
  EXPECT_EQ(needed, 9);

  void *block = nullptr;
  int32_t length = 0;
  EXPECT_EQ(ORLEvaluateExpressionExt(ec, Parse(ec, "Name").exp, &length, &block), 1);
  EXPECT_EQ(length, 4);
  EXPECT_EQ(ORLMemSize(block), 5u);
  EXPECT_STREQ(static_cast<char *>(block), "Ann");
  EXPECT_EQ(ORLEvaluateExpressionExt(ec, Parse(ec, "Long").exp, &length, &block), 1);
  EXPECT_EQ(length, 201);
  EXPECT_EQ(std::string(static_cast<char *>(block)), host.values["Long"]);
  // A block that is large enough stays, and what does not compute leaves it alone.
  void *const kept = block;
  EXPECT_EQ(ORLEvaluateExpressionExt(ec, eight, &length, &block), 1);
  EXPECT_EQ(block, kept);
  EXPECT_EQ(length, 9);
  length = 77;
  EXPECT_EQ(ORLEvaluateExpressionExt(ec, Parse(ec, "FailS()").exp, &length, &block), 0);
  EXPECT_EQ(ORLEvaluateExpressionExt(ec, nullptr, &length, &block), 0);
  EXPECT_STREQ(static_cast<char *>(block), "ABCDEFGH");
  EXPECT_EQ(length, 77);
  ORLMemFree(block);

  // The length has 16 bits; the text comes whole.
  host.values["Long"] = std::string(70000, 'y');
  block = nullptr;
  EXPECT_EQ(ORLEvaluateExpressionExt(ec, Parse(ec, "Long").exp, &length, &block), 1);
  EXPECT_EQ(length, 70001 & 0xffff);
  EXPECT_EQ(ORLMemSize(block), 70002u);
  ORLMemFree(block);
}

TEST(EvaluateEntries, NumbersAndNothing) {
  HostData host;
  const OwnedContext context = EvaluationContext(0, &host);
  EC ec = context.get();
  unsigned char buffer[14];
  for (int32_t size : {0, 1, 13, 100}) {
    std::memset(buffer, 0xee, sizeof buffer);
    EXPECT_EQ(ORLEvaluateExpression(ec, Parse(ec, "Amount").exp, size, buffer), 1);
    const NumberValue five = NumberOf("5");
    EXPECT_EQ(std::memcmp(buffer, &five, sizeof five), 0) << size;
    EXPECT_EQ(buffer[13], 0xee);
  }
  std::memset(buffer, 0xee, sizeof buffer);
  EXPECT_EQ(ORLEvaluateExpression(ec, nullptr, 13, buffer), 0);
  for (const char *text : {"Bad", "Money", "FailS()"}) {
    EXPECT_EQ(ORLEvaluateExpression(ec, Parse(ec, text).exp, 13, buffer), 0) << text;
  }
  for (const unsigned char byte : buffer) EXPECT_EQ(byte, 0xee);
}

// ---- Operator callbacks ----

std::vector<std::string> operands;

int32_t NotedOperator(EC, HEXP, int32_t type, int32_t leftSize, const NumberValue *left,
                      int32_t rightSize, const NumberValue *right, int32_t resultSize,
                      NumberValue *result) {
  EXPECT_EQ(type, 0);
  EXPECT_EQ(leftSize + rightSize + resultSize, 39);
  EXPECT_EQ(result->length, 0);
  operands.push_back(NumberText(*left) + " " + NumberText(*right));
  if (NumberText(*left) != "9") WRENNumFromInt(result, 100);
  return 0;  // not looked at
}

TEST(OperatorCallbacks, ReplaceTheArithmeticOfNumbers) {
  struct Row {
    int16_t op, type;
    const char *text, *value, *operands;
  };
  const Row rows[] = {
      {0, 0, "5 + Null", "100", "5 null"},
      {0, 0, "9 + 1", "null", "9 1"},
      {1, 0, "5 - 2", "100", "5 2"},
      {2, 0, "6 / 0", "100", "6 0"},
      {3, 0, "6 * 2", "100", "6 2"},
      {3, 0, "6 / 2", "3", ""},
      {2, 0, "6 * 2", "12", ""},
      {0, 0, "Bad + 1", "none", ""},
      {0, 2, "Name + Name", "none", ""},
      {4, 0, "1 || 2", "none", ""},
      {0, 1, "Start + 2", "2012-02-02", ""},
      {1, 0, "End - Start", "10", ""},
      {0, 3, "Money + Money", "none", ""},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(row.text);
    HostData host;
    const OwnedContext plain = EvaluationContext(0, &host);
    const OwnedContext context =
        StandardContext(0, &host, [](const char *) { return Address(&NotedOperator); });
    AddInput(context.get(), "Null", 0);
    AddInput(context.get(), "Bad", 0);
    ASSERT_EQ(ORLSetOperatorCallback(context.get(), row.op, row.type, "noted"), 1);
    operands.clear();
    EXPECT_EQ(Evaluate(context.get(), Parse(context.get(), row.text).exp), row.value);
    EXPECT_EQ(operands, *row.operands == '\0' ? std::vector<std::string>{}
                                              : std::vector<std::string>{row.operands});
  }
}

TEST(OperatorCallbacks, WithoutLookupNothingIsCalled) {
  HostData host;
  const OwnedContext context = EvaluationContext(0, &host);
  EXPECT_EQ(ORLSetOperatorCallback(context.get(), 0, 0, "noted"), 1);
  EXPECT_EQ(Evaluate(context.get(), Parse(context.get(), "1 + 2").exp), "3");
}

}  // namespace
