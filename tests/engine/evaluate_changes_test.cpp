// Evaluation when the host surprises: blocks that were replaced, and names that mean something else
// than they did when the formula was parsed.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>

#include "closed/wren/memory.h"
#include "support/context.h"

namespace {

// ---- Blocks ----

void Replace(void **value, uint32_t size) {
  ORLMemFree(*value);
  *value = size == 0 ? nullptr : ORLMemAlloc(size);
  if (*value != nullptr) std::memset(*value, 'x', size);
}
// What a value or function routine does to its block before it returns 1.
int32_t Nothing(void **) {
  return 1;
}
int32_t Null(void **value) {
  return Replace(value, 0), 1;
}
int32_t OneByte(void **value) {
  return Replace(value, 1), 1;
}
int32_t TwelveBytes(void **value) {
  return Replace(value, 12), 1;
}
int32_t Unterminated(void **value) {
  return std::memset(*value, 'x', ORLMemSize(*value)), 1;
}
int32_t LargeUnterminated(void **value) {
  return Replace(value, 5000), 1;
}
int32_t LargeThenFail(void **value) {
  return Replace(value, 5000), 0;
}
int32_t NullThenFail(void **value) {
  return Replace(value, 0), 0;
}
int32_t FullNumber(void **value) {
  Replace(value, sizeof(NumberValue));
  WRENNumFromInt(static_cast<NumberValue *>(*value), 8);
  return 1;
}

int32_t (*behaviour)(void **) = nullptr;
int32_t Misbehave(EC, HEXP, int32_t, void **value, const char *) {
  return behaviour(value);
}
int32_t MisbehaveCall(EC, HEXP, int32_t, void **value, const char *, void **) {
  return behaviour(value);
}

TEST(Blocks, ThatRoutinesLeaveBehind) {
  struct Row {
    const char *what;
    int32_t (*behaviour)(void **);
    const char *number, *text;  // the value, or null where any will do
  };
  // A text ends within its block: without a terminator its last byte becomes one.
  const std::string small = "'" + std::string(49, 'x') + "!'";
  const std::string large = "'" + std::string(4999, 'x') + "!'";
  const Row rows[] = {
      {"nothing", &Nothing, "null", "'!'"},
      {"null block", &Null, "none", "none"},
      {"twelve bytes", &TwelveBytes, "none", "'xxxxxxxxxxx!'"},
      {"one byte", &OneByte, "none", "'!'"},
      {"no terminator", &Unterminated, nullptr, small.c_str()},
      {"large, no terminator", &LargeUnterminated, nullptr, large.c_str()},
      {"large, then failure", &LargeThenFail, "none", "none"},
      {"null, then failure", &NullThenFail, "none", "none"},
      {"another block with a number", &FullNumber, "8", nullptr},
  };
  const OwnedContext context = StandardContext(0);
  EC ec = context.get();
  AddInput(ec, "N", 0, 0, Address(&Misbehave));
  AddInput(ec, "D", 1, 0, Address(&Misbehave));
  AddInput(ec, "S", 2, 0, Address(&Misbehave));
  AddFunction(ec, {"FN", 0, {}, 0, 0, 0, Address(&MisbehaveCall)});
  AddFunction(ec, {"FD", 1, {}, 0, 0, 0, Address(&MisbehaveCall)});
  AddFunction(ec, {"FS", 2, {}, 0, 0, 0, Address(&MisbehaveCall)});
  ORLDestroyEXP(ec, Parse(ec, "1").exp);  // tables that stay
  const int64_t before = TEST_LiveBlocks();
  for (const Row &row : rows) {
    SCOPED_TRACE(row.what);
    behaviour = row.behaviour;
    for (const char *text : {"N", "FN()"}) {
      HEXP exp = Parse(ec, text).exp;
      const std::string value = Evaluate(ec, exp);
      if (row.number != nullptr) {
        EXPECT_EQ(value, row.number) << text;
      }
      ORLDestroyEXP(ec, exp);
    }
    for (const char *text : {"S || '!'", "FS() || '!'"}) {
      HEXP exp = Parse(ec, text).exp;
      const std::string value = Evaluate(ec, exp);
      if (row.text != nullptr) {
        EXPECT_EQ(value, row.text) << text;
      }
      ORLDestroyEXP(ec, exp);
    }
    // Used on, whatever it holds, a date must not lead outside its block.
    for (const char *text : {"D + N MONTHS", "FD() - D", "Day(D)"}) {
      HEXP exp = Parse(ec, text).exp;
      ASSERT_NE(exp, nullptr) << text;
      Evaluate(ec, exp);
      ORLDestroyEXP(ec, exp);
    }
    EXPECT_EQ(TEST_LiveBlocks(), before);
  }
}

// ---- Names ----

int32_t Length(EC, HEXP, int32_t, void **result, const char *, void **args) {
  const auto *text = static_cast<const char *>(args[0]);
  WRENNumFromInt(static_cast<NumberValue *>(*result),
                 text == nullptr ? -1 : static_cast<int32_t>(std::strlen(text)));
  return 1;
}
int32_t ThreeTexts(EC, HEXP, int32_t, void **result, const char *, void **args) {
  int32_t there = 0;
  for (int i = 0; i < 3; ++i) there += args != nullptr && args[i] != nullptr;
  WRENNumFromInt(static_cast<NumberValue *>(*result), there);
  return 1;
}
int32_t LongText(EC, HEXP, int32_t size, void **result, const char *, void **) {
  return FUNStrVarResult(result, size, "a text that is longer than a number");
}

TEST(Names, ThatMeanSomethingElseGiveNoValue) {
  struct Row {
    const char *what, *text;
    std::function<void(EC)> change;
    const char *value;
  };
  const auto dropItem = [](EC ec) { ORLDelExpItemNoCheck(ec, ORL_INPUT, "Amount"); };
  const auto dropCall = [](EC ec) { ORLDelExpItemNoCheck(ec, ORL_FUNCTION, "Text"); };
  const auto moveTotal = [](EC ec) {
    EXPECT_NE(Store(ec, ORLHEXPFromName(ec, "Total"), "'moved'", "Moved").exp, nullptr);
  };
  const Row rows[] = {
      {"nothing changed", "Amount + Total()", [](EC) {}, "8"},
      {"item gone", "Amount + 1", dropItem, "none"},
      {"item is text now", "Amount + 1", [&](EC ec) { dropItem(ec), AddInput(ec, "Amount", 2); },
       "none"},
      {"item is a date now", "Amount + 1", [&](EC ec) { dropItem(ec), AddInput(ec, "Amount", 1); },
       "none"},
      {"text is a number now", "Name || 'a'",
       [](EC ec) { ORLDelExpItemNoCheck(ec, ORL_INPUT, "Name"), AddInput(ec, "Name", 0); }, "none"},
      {"item came back", "Amount + 1", [&](EC ec) { dropItem(ec), AddInput(ec, "Amount", 0); },
       "6"},
      {"item is a keyword now", "Amount + 1",
       [&](EC ec) { dropItem(ec), AddKeyword(ec, "Amount", 0, 0, 0); }, "none"},
      {"function gone", "Text('abc') || 'd'", dropCall, "none"},
      {"function is a number now", "Text('abc') || 'd'",
       [&](EC ec) {
         dropCall(ec), AddFunction(ec, {"Text", 0, {{0, 2, 0}}, 0, 0, 0, Address(&Length)});
       },
       "none"},
      {"number is a long text now", "Len('abc') + 1",
       [](EC ec) {
         ORLDelExpItemNoCheck(ec, ORL_FUNCTION, "Len");
         AddFunction(ec, {"Len", 2, {{0, 2, 0}}, 0, 0, 0, Address(&LongText)});
       },
       "none"},
      {"parameter is text now", "Twice(Amount)",
       [](EC ec) {
         ORLDelExpItemNoCheck(ec, ORL_FUNCTION, "Twice");
         AddFunction(ec, {"Twice", 0, {{0, 2, 0}}, 0, 0, 0, Address(&Length)});
       },
       nullptr},
      {"expression by name now", "Twice(Amount + 1)",
       [](EC ec) {
         ORLDelExpItemNoCheck(ec, ORL_FUNCTION, "Twice");
         AddFunction(ec, {"Twice", 0, {{1, 0, 0}}, 0, 0, 0, Address(&Length)});
       },
       nullptr},
      {"three parameters now", "Twice(Amount)",
       [](EC ec) {
         ORLDelExpItemNoCheck(ec, ORL_FUNCTION, "Twice");
         AddFunction(
             ec, {"Twice", 0, {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}, 0, 0, 0, Address(&ThreeTexts)});
       },
       nullptr},
      {"no parameters now", "Twice(Amount)",
       [](EC ec) {
         ORLDelExpItemNoCheck(ec, ORL_FUNCTION, "Twice");
         AddFunction(ec, {"Twice", 0, {}, 0, 0, 0, nullptr});
       },
       "none"},
      {"formula gone", "Total() + 1", moveTotal, "none"},
      {"formula has another name", "Total() + 1",
       [](EC ec) { Store(ec, ORLHEXPFromName(ec, "Total"), "3", "Moved"); }, "none"},
      {"another formula has its name", "Total() + 1",
       [](EC ec) {
         Store(ec, ORLHEXPFromName(ec, "Total"), "3", "Moved");
         Store(ec, nullptr, "70", "Total");
       },
       "71"},
      {"formula is text now", "Total() + 1",
       [&](EC ec) { moveTotal(ec), Parse(ec, "'abc'", "Total"); }, "none"},
      {"formula is a range now", "Total() + 1",
       [&](EC ec) { moveTotal(ec), Parse(ec, "Amount AND 3", "Total"); }, "none"},
      {"formula is a set now", "Total() + 1",
       [](EC ec) { Store(ec, ORLHEXPFromName(ec, "Total"), "Amount, 3", "Total"); }, "none"},
      {"formula has another text", "Total() + 1",
       [](EC ec) { Store(ec, ORLHEXPFromName(ec, "Total"), "Amount * 3", "Total"); }, "16"},
      {"formula is a function now", "Total() + 1",
       [&](EC ec) {
         moveTotal(ec), AddFunction(ec, {"Total", 0, {}, 0, 0, 0, Address(&ThreeTexts)});
       },
       "none"},
  };
  for (const Row &row : rows) {
    for (const bool evaluatedBefore : {false, true}) {
      SCOPED_TRACE(row.what + std::string(evaluatedBefore ? ", evaluated before" : ""));
      HostData host;
      host.values = {{"Amount", "5"}, {"Name", "Ann"}};
      const OwnedContext context = StandardContext(ORL_FLAG_RANGES, &host);
      EC ec = context.get();
      AddFunction(ec, {"Len", 0, {{0, 2, 0}}, 0, 0, 0, Address(&Length)});
      AddFunction(ec, {"Twice", 0, {{0, 0, 0}}, 0, 0, 0, Address(&ThreeTexts)});
      ASSERT_NE(Parse(ec, "3", "Total").exp, nullptr);
      HEXP exp = Parse(ec, row.text, "Tested").exp;
      ASSERT_NE(exp, nullptr);
      if (evaluatedBefore) Evaluate(ec, exp);
      row.change(ec);
      const int64_t before = TEST_LiveBlocks();
      const std::string value = Evaluate(ec, exp);
      if (row.value != nullptr) {
        EXPECT_EQ(value, row.value);
      }
      EXPECT_EQ(TEST_LiveBlocks(), before);
    }
  }
}

// ---- Circles, which duplicate names can make ----

TEST(Circles, EveryRoutineEnds) {
  HostData host;
  const OwnedContext context = StandardContext(0, &host);
  EC ec = context.get();
  HEXP first = Parse(ec, "1", "A").exp;
  HEXP b = Parse(ec, "2", "B").exp;
  HEXP second = Parse(ec, "B() + Half(Amount)", "A").exp;
  ASSERT_EQ(Outcome(Store(ec, b, "A() * 2", "B")), "type 0");    // the first A refers to nothing
  ASSERT_EQ(Outcome(Store(ec, first, "1", "Other")), "type 0");  // now A is the second one
  HEXP user = Parse(ec, "A() + B()", "User").exp;
  ASSERT_NE(user, nullptr);
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
  // A new formula may refer to the circle, and one that would join it is refused.
  EXPECT_EQ(Outcome(Parse(ec, "A()", "Beside")), "type 0");
  EXPECT_EQ(Outcome(Store(ec, b, "A() + 1", "B")), "125@0+2");
  const OwnedContext copy(ORLCopyEC(ec));
  EXPECT_EQ(ORLGetExpressionCount(copy.get()), 1);
}

}  // namespace
