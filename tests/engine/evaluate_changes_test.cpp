// Evaluation with unexpected hosts: replaced blocks, and names that resolve differently than when
// the formula was parsed.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "closed/wren/memory.h"
#include "support/context.h"

namespace {

// ---- Blocks ----

struct Behaviour {
  const char *what;
  int32_t size;  // size of the block that replaces the given one; 0: null, -1: none
  bool filled;   // with 'x' up to the last byte
  int32_t result;
  std::string number, text;  // the value, or "any"
};
const Behaviour *behaviour = nullptr;

int32_t Misbehave(void **value) {
  if (behaviour->size >= 0) {
    ORLMemFree(*value);
    *value = behaviour->size == 0 ? nullptr : ORLMemAlloc(static_cast<uint32_t>(behaviour->size));
  }
  if (behaviour->filled && *value != nullptr) std::memset(*value, 'x', ORLMemSize(*value));
  if (behaviour->result < 0) throw 1;
  return behaviour->result;
}
int32_t MisbehavingItem(EC, HEXP, int32_t, void **value, const char *) {
  return Misbehave(value);
}
int32_t MisbehavingCall(EC, HEXP, int32_t, void **value, const char *, void **) {
  return Misbehave(value);
}

// A text ends within its block: without a terminator its last byte becomes one.
TEST(EvaluateChanges, BlocksThatRoutinesReturn) {
  const Behaviour rows[] = {
      {"nothing", -1, false, 1, "null", "'!'"},
      {"null block", 0, false, 1, "none", "none"},
      {"twelve bytes", 12, true, 1, "none", "'xxxxxxxxxxx!'"},
      {"one byte", 1, true, 1, "none", "'!'"},
      {"no terminator", -1, true, 1, "any", "'" + std::string(49, 'x') + "!'"},
      {"large, no terminator", 5000, true, 1, "any", "'" + std::string(4999, 'x') + "!'"},
      {"large, then failure", 5000, true, 0, "none", "none"},
      {"null, then failure", 0, false, 0, "none", "none"},
      {"large, then an exception", 5000, true, -1, "none", "none"},
      {"another block", 13, false, 1, "null", "'!'"},
  };
  for (const Behaviour &row : rows) {
    behaviour = &row;
    const int64_t before = TEST_LiveBlocks();
    std::optional<HostedContext> ec(std::in_place);
    AddInput(*ec, "N", 0, 0, Address(&MisbehavingItem));
    AddInput(*ec, "D", 1, 0, Address(&MisbehavingItem));
    AddInput(*ec, "S", 2, 0, Address(&MisbehavingItem));
    AddFunction(*ec, {"FN", 0, {}, 0, 0, 0, Address(&MisbehavingCall)});
    AddFunction(*ec, {"FD", 1, {}, 0, 0, 0, Address(&MisbehavingCall)});
    AddFunction(*ec, {"FS", 2, {}, 0, 0, 0, Address(&MisbehavingCall)});
    // clang-format off
    const std::pair<const char *, std::string> formulas[] = {
        {"N", row.number}, {"FN()", row.number}, {"S || '!'", row.text}, {"FS() || '!'", row.text},
        // Whatever it holds, a date must not be read outside its block.
        {"D + N MONTHS", "any"}, {"FD() - D", "any"}, {"Day(D)", "any"},
    };
    // clang-format on
    for (const auto &[text, expected] : formulas) {
      const std::string value = Evaluate(*ec, Make(*ec, text));
      EXPECT_TRUE(value == expected || expected == "any") << row.what << ": " << text << value;
    }
    ec.reset();
    EXPECT_EQ(TEST_LiveBlocks(), before) << row.what;
  }
}

// ---- Names ----

// The number of its first three arguments that are present.
int32_t Present(EC, HEXP, int32_t, void **result, const char *, void **args) {
  int32_t there = 0;
  for (int i = 0; i < 3; ++i) there += args != nullptr && args[i] != nullptr;
  return WRENNumFromInt(static_cast<NumberValue *>(*result), there), 1;
}
int32_t LongText(EC, HEXP, int32_t size, void **result, const char *, void **) {
  return FUNStrVarResult(result, size, "a text that is longer than a number");
}

using Change = std::function<void(EC)>;
Change Drop(const char *name, int32_t kind = ORL_INPUT) {
  return [=](EC ec) { EXPECT_EQ(ORLDelExpItemNoCheck(ec, kind, name), 1); };
}
Change Input(const char *name, int16_t type) {
  return [=](EC ec) { AddInput(ec, name, type); };
}
Change Keyword(const char *name) {
  return [=](EC ec) { AddKeyword(ec, name, 0, 0, 0); };
}
Change Function(const FunctionRow &row) {
  return [=](EC ec) { AddFunction(ec, row); };
}
// The formula Total receives another text and name.
Change Total(const char *text, const char *name) {
  return
      [=](EC ec) { EXPECT_NE(Store(ec, ORLHEXPFromName(ec, "Total"), text, name).exp, nullptr); };
}
Change New(const char *text, const char *name) {
  return [=](EC ec) { Make(ec, text, name); };
}

TEST(EvaluateChanges, RedefinedNamesHaveNoValue) {
  struct Row {
    const char *text;
    std::vector<Change> changes;
    const char *value;
  };
  const Change dropText = Drop("Text", ORL_FUNCTION);
  const Change dropCount = Drop("Present", ORL_FUNCTION);
  const Change moved = Total("3", "Moved");
  void *const present = Address(&Present);
  // clang-format off
  const Row rows[] = {
      {"Amount + Total()", {}, "8"},
      {"Amount + 1", {Drop("Amount")}, "none"},
      {"Amount + 1", {Drop("Amount"), Input("Amount", 2)}, "none"},
      {"Amount + 1", {Drop("Amount"), Input("Amount", 1)}, "none"},
      {"Amount + 1", {Drop("Amount"), Keyword("Amount")}, "none"},
      {"Amount + 1", {Drop("Amount"), Input("Amount", 0)}, "6"},
      {"Name || 'a'", {Drop("Name"), Input("Name", 0)}, "none"},
      {"Text('abc') || 'd'", {dropText}, "none"},
      {"Text('abc') || 'd'", {dropText, Function({"Text", 0, {{0, 2, 0}}, 0, 0, 0, present})}, "none"},
      {"Present(1) + 1", {}, "2"},
      {"Present(1) + 1", {dropCount, Function({"Present", 2, {{0, 0, 0}}, 0, 0, 0, Address(&LongText)})}, "none"},
      {"Present(Amount)", {dropCount, Function({"Present", 0, {{0, 2, 0}}, 0, 0, 0, present})}, "none"},
      {"Present(Amount + 1)", {dropCount, Function({"Present", 0, {{1, 0, 0}}, 0, 0, 0, present})}, "0"},
      {"Present(Amount)", {dropCount, Function({"Present", 0, {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}, 0, 0, 0, present})}, "1"},
      {"Present(Amount)", {dropCount, Function({"Present", 0, {}, 0, 0, 0, present})}, "0"},
      {"Total() + 1", {Total("'moved'", "Moved")}, "none"},
      {"Total() + 1", {moved, New("70", "Total")}, "71"},
      {"Total() + 1", {moved, New("'abc'", "Total")}, "none"},
      {"Total() + 1", {moved, New("Amount AND 3", "Total")}, "none"},
      {"Total() + 1", {moved, Function({"Total", 0, {}, 0, 0, 0, present})}, "none"},
      {"Total() + 1", {Total("Amount, 3", "Total")}, "none"},
      {"Total() + 1", {Total("Amount * 3", "Total")}, "16"},
  };
  // clang-format on
  for (const Row &row : rows) {
    for (const bool evaluatedBefore : {false, true}) {
      SCOPED_TRACE("row " + std::to_string(&row - rows) + ", " + row.text);
      const int64_t before = TEST_LiveBlocks();
      std::optional<HostedContext> ec(std::in_place, ORL_FLAG_RANGES);
      ec->host.values = {{"Amount", "5"}, {"Name", "Ann"}};
      AddFunction(*ec, {"Present", 0, {{0, 0, 0}}, 0, 0, 0, present});
      Make(*ec, "3", "Total");
      HEXP exp = Make(*ec, row.text, "Tested");
      if (evaluatedBefore) Evaluate(*ec, exp);
      for (const Change &change : row.changes) change(*ec);
      EXPECT_EQ(Evaluate(*ec, exp), row.value) << evaluatedBefore;
      ec.reset();
      EXPECT_EQ(TEST_LiveBlocks(), before);
    }
  }
}

// Duplicate names can form cycles: every routine must end.
TEST(EvaluateChanges, Cycles) {
  const HostedContext ec;
  HEXP first = Make(ec, "1", "A");
  HEXP b = Make(ec, "2", "B");
  HEXP second = Make(ec, "B() + Half(Amount)", "A");
  ASSERT_EQ(Outcome(Store(ec, b, "A() * 2", "B")), "type 0");    // the first A refers to nothing
  ASSERT_EQ(Outcome(Store(ec, first, "1", "Other")), "type 0");  // now A is the second one
  HEXP user = Make(ec, "A() + B()", "User");
  for (HEXP exp : {b, second, user}) {
    EXPECT_EQ(Evaluate(ec, exp), "none");
    EXPECT_EQ(ORLIsItemUsed(ec, exp, 2, "Unknown"), 0);
    EXPECT_EQ(ORLIsItemUsed(ec, exp, 1, "Amount"), 1);
    EXPECT_EQ(ORLIsItemUsed(ec, exp, 2, "A"), 1);
    EXPECT_EQ(ORLIsAggregateUsed(ec, exp), 0);
    EXPECT_EQ(ORLIsFunctionVariableUsed(ec, exp, "Half", "Amount"), 1);
    EXPECT_EQ(ORLIsFunctionVariableUsed(ec, exp, "Half", "Tax"), 0);
  }
  EXPECT_EQ(ORLIsNamedFormulaUsed(ec, "User"), 0);
  EXPECT_EQ(ORLIsItemUsedInComplex(ec, "Tax"), 0);
  EXPECT_EQ(ORLDestroyEXP(ec, b), 0);
  EXPECT_EQ(ORLDestroyEXP(ec, user), 1);
  // A new formula may refer to the cycle, and one that would join it is rejected.
  EXPECT_EQ(Outcome(Parse(ec, "A()", "Beside")), "type 0");
  EXPECT_EQ(Outcome(Store(ec, b, "A() + 1", "B")), "125@0+2");
  const OwnedContext copy(ORLCopyEC(ec));
  EXPECT_EQ(ORLGetExpressionCount(copy.get()), 1);
}

}  // namespace
