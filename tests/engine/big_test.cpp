// Sizes that would break what recurses or searches: everything here must end in seconds.
#include <gtest/gtest.h>
#include <pthread.h>

#include <string>

#include "closed/wren/memory.h"
#include "support/context.h"

namespace {

// Runs a test's body on a thread with a stack of half a MiB. Assertions inside work as usual.
void OnSmallStack(void (*body)()) {
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, size_t{512} * 1024), 0);
  pthread_t thread = {};
  const auto run = [](void *argument) -> void * {
    reinterpret_cast<void (*)()>(argument)();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, reinterpret_cast<void *>(body)), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

std::string FormulaName(int i) {
  return "F" + std::to_string(i);
}

void MillionTerms() {
  constexpr int kTerms = 1000000;
  const int64_t before = TEST_LiveBlocks();
  {
    HostData host;
    OwnedContext context = StandardContext(0, &host);
    EC ec = context.get();
    std::string text = "1";
    for (int i = 1; i < kTerms; ++i) text += "+1";
    HEXP exp = Parse(ec, text, "Long").exp;
    ASSERT_NE(exp, nullptr);
    EXPECT_EQ(ORLGetExpressionTextLength(ec, exp), 2 * kTerms - 1);
    EXPECT_EQ(Evaluate(ec, exp), "1000000");
    EXPECT_EQ(ORLIsItemUsed(ec, exp, 1, "Amount"), 0);
    EXPECT_EQ(ORLIsFunctionVariableUsed(ec, exp, "Half", "Amount"), 0);
    EXPECT_EQ(ORLIsAggregateUsed(ec, exp), 0);
    EXPECT_EQ(ORLIsNamedFormulaUsed(ec, "Long"), 0);
    EXPECT_EQ(Outcome(Store(ec, exp, "Long() + " + text, "Long")), "125@0+5");
    uint16_t type = 0;
    HEXP clone = ORLCloneExpression(ec, exp, "Twin", &type);
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(ORLDestroyEXP(ec, exp), 1);
    const OwnedContext copy(ORLCopyEC(ec));
    EXPECT_EQ(Evaluate(copy.get(), ORLHEXPFromName(copy.get(), "Twin")), "1000000");
  }
  EXPECT_EQ(TEST_LiveBlocks(), before);
}

void LongListsAndArguments() {
  const OwnedContext context = StandardContext(ORL_FLAG_RANGES);
  EC ec = context.get();
  std::string members;
  for (int i = 0; i < 60000; ++i) members += ",'b'";
  HEXP set = Parse(ec, "'a'" + members).exp;
  ASSERT_NE(set, nullptr);
  EXPECT_EQ(ORLIsExpRange(ec, set, 1), 1);
  HEXP call = Parse(ec, "Tail(1" + members + ")").exp;
  ASSERT_NE(call, nullptr);
  EXPECT_EQ(ORLIsItemUsed(ec, call, 0, "Tail"), 1);
  // A list has at most 65,535 members.
  members += members;
  EXPECT_EQ(Outcome(Parse(ec, "'a'" + members)), "121@0+0");
}

void ChainOfFormulas() {
  constexpr int kFormulas = 30000;
  const int64_t before = TEST_LiveBlocks();
  {
    HostData host;
    host.values = {{"Amount", "1"}};
    const OwnedContext context = StandardContext(0, &host);
    EC ec = context.get();
    ASSERT_EQ(Outcome(Store(ec, nullptr, "Amount", "F0")), "type 0");
    for (int i = 1; i < kFormulas; ++i) {
      const std::string text = FormulaName(i - 1) + "() + 1";
      ASSERT_EQ(Outcome(Store(ec, nullptr, text, FormulaName(i).c_str())), "type 0") << i;
    }
    HEXP last = ORLHEXPFromName(ec, FormulaName(kFormulas - 1).c_str());
    EXPECT_EQ(Evaluate(ec, last), std::to_string(kFormulas));
    EXPECT_EQ(ORLIsItemUsed(ec, last, 2, "F0"), 1);
    EXPECT_EQ(ORLIsItemUsed(ec, last, 1, "Amount"), 1);
    EXPECT_EQ(ORLIsItemUsed(ec, last, 1, "Tax"), 0);
    EXPECT_EQ(ORLIsNamedFormulaUsed(ec, "F0"), 1);
    EXPECT_EQ(ORLIsNamedFormulaUsed(ec, FormulaName(kFormulas - 1).c_str()), 0);
    EXPECT_EQ(ORLIsItemUsedInComplex(ec, "Tax"), 0);
    EXPECT_EQ(ORLIsAggregateUsed(ec, last), 0);
    HEXP first = ORLHEXPFromName(ec, "F0");
    EXPECT_EQ(ORLDestroyEXP(ec, first), 0);
    const std::string round = "1 + " + FormulaName(kFormulas - 1) + "()";
    EXPECT_EQ(Outcome(Store(ec, first, round, "F0")), "125@4+7");
    const OwnedContext copy(ORLCopyEC(ec));
    EXPECT_EQ(ORLGetExpressionCount(copy.get()), kFormulas);
    EXPECT_EQ(Evaluate(copy.get(), ORLHEXPFromOrdinal(copy.get(), kFormulas - 1)),
              std::to_string(kFormulas));
    for (int i = kFormulas - 1; i >= 0; --i) {
      HEXP exp = ORLHEXPFromOrdinal(ec, i);
      ASSERT_EQ(ORLDestroyEXP(ec, exp), 1) << i;
    }
    EXPECT_EQ(ORLGetExpressionCount(ec), 0);
  }
  EXPECT_EQ(TEST_LiveBlocks(), before);
}

// Deleting the item below the chain asks the host for the formulas from the last to the first.
void DeleteBelowAChain() {
  constexpr int kFormulas = 300;
  const OwnedContext context = StandardContext(0);
  EC ec = context.get();
  for (int i = 0; i < kFormulas; ++i) {
    const std::string text = i == 0 ? "Amount" : FormulaName(i - 1).append("()");
    ASSERT_NE(Parse(ec, text, FormulaName(i).c_str()).exp, nullptr);
  }
  static int asked;
  asked = 0;
  const auto destroy = [](EC context_, HEXP exp, ExprItem *) {
    EXPECT_EQ(NameOf(context_, exp), FormulaName(kFormulas - 1 - asked));
    ++asked;
    return ORLDestroyEXP(context_, exp);
  };
  EXPECT_EQ(ORLDeleteExpItem(ec, ORL_INPUT, "Amount", destroy), 1);
  EXPECT_EQ(asked, kFormulas);
}

void DoublingFormulas() {
  const OwnedContext context = StandardContext(0);
  EC ec = context.get();
  ASSERT_NE(Store(ec, nullptr, "Amount", "F0").exp, nullptr);
  for (int i = 1; i <= 60; ++i) {
    const std::string below = FormulaName(i - 1) + "()";
    std::string text = below;
    text.append(" + ").append(below);
    ASSERT_NE(Store(ec, nullptr, text, FormulaName(i).c_str()).exp, nullptr);
  }
  HEXP top = ORLHEXPFromName(ec, "F60");
  HEXP bottom = ORLHEXPFromName(ec, "F0");
  EXPECT_EQ(ORLIsItemUsed(ec, top, 1, "Tax"), 0);
  EXPECT_EQ(ORLIsItemUsed(ec, top, 1, "Amount"), 1);
  EXPECT_EQ(ORLIsAggregateUsed(ec, top), 0);
  EXPECT_EQ(ORLIsFunctionVariableUsed(ec, top, "Half", "Amount"), 0);
  EXPECT_EQ(ORLIsItemUsedInComplex(ec, "Tax"), 0);
  EXPECT_EQ(Outcome(Store(ec, bottom, "F60()", "F0")), "125@0+4");
  EXPECT_EQ(Outcome(Store(ec, bottom, "Tax", "F0")), "type 0");
  EXPECT_EQ(ORLIsItemUsed(ec, top, 1, "Tax"), 1);
  EXPECT_EQ(Outcome(Store(ec, nullptr, "F60() + F59()", "New")), "type 0");
  const OwnedContext copy(ORLCopyEC(ec));
  EXPECT_EQ(ORLGetExpressionCount(copy.get()), 62);
  EXPECT_EQ(ORLDestroyEXP(ec, ORLHEXPFromName(ec, "New")), 1);
  for (int i = 60; i >= 0; --i) {
    EXPECT_EQ(ORLDestroyEXP(ec, ORLHEXPFromName(ec, FormulaName(i).c_str())), 1);
  }
}

TEST(Big, MillionTerms) {
  OnSmallStack(&MillionTerms);
}
TEST(Big, LongListsAndArguments) {
  OnSmallStack(&LongListsAndArguments);
}
TEST(Big, ChainOfFormulas) {
  OnSmallStack(&ChainOfFormulas);
}
TEST(Big, DeleteBelowAChain) {
  OnSmallStack(&DeleteBelowAChain);
}
TEST(Big, DoublingFormulas) {
  OnSmallStack(&DoublingFormulas);
}

}  // namespace
