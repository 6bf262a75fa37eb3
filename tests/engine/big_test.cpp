// Sizes that would break recursive or quadratic code: everything here must end in seconds, on a
// stack of half a MiB.
#include <gtest/gtest.h>
#include <pthread.h>

#include <string>

#include "closed/wren/memory.h"
#include "support/context.h"

namespace {

// Runs a test's body. Assertions inside work as usual.
void OnSmallStack(void (*body)()) {
  const int64_t before = TEST_LiveBlocks();
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, size_t{512} * 1024), 0);
  pthread_t thread = {};
  const auto run = [](void *argument) -> void * {
    return reinterpret_cast<void (*)()>(argument)(), nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, reinterpret_cast<void *>(body)), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(TEST_LiveBlocks(), before);
}

std::string Formula(int i, const char *tail = "") {
  return "F" + std::to_string(i) + tail;
}

void MillionTerms() {
  constexpr int kTerms = 1000000;
  const HostedContext ec;
  std::string text = "1";
  for (int i = 1; i < kTerms; ++i) text += "+1";
  HEXP exp = Make(ec, text, "Long");
  EXPECT_EQ(ORLGetExpressionTextLength(ec, exp), 2 * kTerms - 1);
  EXPECT_EQ(Evaluate(ec, exp), "1000000");
  EXPECT_EQ(ORLIsItemUsed(ec, exp, 1, "Amount"), 0);
  EXPECT_EQ(ORLIsFunctionVariableUsed(ec, exp, "Half", "Amount"), 0);
  EXPECT_EQ(ORLIsAggregateUsed(ec, exp), 0);
  EXPECT_EQ(Outcome(Store(ec, exp, "Long() + " + text, "Long")), "125@0+5");
  uint16_t type = 0;
  ASSERT_NE(ORLCloneExpression(ec, exp, "Twin", &type), nullptr);
  EXPECT_EQ(ORLDestroyEXP(ec, exp), 1);
  const OwnedContext copy(ORLCopyEC(ec));
  EXPECT_EQ(Evaluate(copy.get(), ORLHEXPFromName(copy.get(), "Twin")), "1000000");
}

// A list has at most 65,535 members.
void LongListsAndArguments() {
  const HostedContext ec(ORL_FLAG_RANGES);
  std::string members;
  for (int i = 0; i < 60000; ++i) members += ",'b'";
  EXPECT_EQ(ORLIsExpRange(ec, Make(ec, "'a'" + members), 1), 1);
  EXPECT_EQ(ORLIsItemUsed(ec, Make(ec, "Tail(1" + members + ")"), 0, "Tail"), 1);
  EXPECT_EQ(Outcome(Parse(ec, "'a'" + members + members)), "121@0+0");
}

void ChainOfFormulas() {
  constexpr int kFormulas = 30000;
  HostedContext ec;
  ec.host.values = {{"Amount", "1"}};
  for (int i = 0; i < kFormulas; ++i) {
    const std::string text = i == 0 ? "Amount" : Formula(i - 1, "() + 1");
    ASSERT_EQ(Outcome(Store(ec, nullptr, text, Formula(i).c_str())), "type 0") << i;
  }
  HEXP first = ORLHEXPFromName(ec, "F0");
  HEXP last = ORLHEXPFromName(ec, Formula(kFormulas - 1).c_str());
  EXPECT_EQ(Evaluate(ec, last), "30000");
  EXPECT_EQ(ORLIsItemUsed(ec, last, 2, "F0"), 1);
  EXPECT_EQ(ORLIsItemUsed(ec, last, 1, "Tax"), 0);
  EXPECT_EQ(ORLIsNamedFormulaUsed(ec, "F0"), 1);
  EXPECT_EQ(ORLIsAggregateUsed(ec, last), 0);
  EXPECT_EQ(ORLDestroyEXP(ec, first), 0);
  EXPECT_EQ(Outcome(Store(ec, first, "1 + " + Formula(kFormulas - 1, "()"), "F0")), "125@4+7");
  const OwnedContext copy(ORLCopyEC(ec));
  EXPECT_EQ(Evaluate(copy.get(), ORLHEXPFromOrdinal(copy.get(), kFormulas - 1)), "30000");
  for (int i = kFormulas - 1; i >= 0; --i) {
    ASSERT_EQ(ORLDestroyEXP(ec, ORLHEXPFromOrdinal(ec, i)), 1) << i;
  }
}

void DoublingFormulas() {
  const HostedContext ec;
  HEXP bottom = Make(ec, "Amount", "F0");
  for (int i = 1; i <= 60; ++i) {
    const std::string text = Formula(i - 1, "() + ") + Formula(i - 1, "()");
    ASSERT_EQ(Outcome(Store(ec, nullptr, text, Formula(i).c_str())), "type 0") << i;
  }
  HEXP top = ORLHEXPFromName(ec, "F60");
  EXPECT_EQ(ORLIsItemUsed(ec, top, 1, "Tax"), 0);
  EXPECT_EQ(ORLIsAggregateUsed(ec, top), 0);
  EXPECT_EQ(ORLIsFunctionVariableUsed(ec, top, "Half", "Amount"), 0);
  EXPECT_EQ(ORLIsItemUsedInComplex(ec, "Tax"), 0);
  EXPECT_EQ(Outcome(Store(ec, bottom, "F60()", "F0")), "125@0+4");
  EXPECT_EQ(Outcome(Store(ec, bottom, "Tax", "F0")), "type 0");
  EXPECT_EQ(ORLIsItemUsed(ec, top, 1, "Tax"), 1);
  const OwnedContext copy(ORLCopyEC(ec));
  EXPECT_EQ(ORLGetExpressionCount(copy.get()), 61);
  for (int i = 60; i >= 0; --i) {
    EXPECT_EQ(ORLDestroyEXP(ec, ORLHEXPFromName(ec, Formula(i).c_str())), 1) << i;
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
TEST(Big, DoublingFormulas) {
  OnSmallStack(&DoublingFormulas);
}

}  // namespace
