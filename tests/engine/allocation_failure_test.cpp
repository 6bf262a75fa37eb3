// Every allocation of every operation fails once: the result is the promised one, the context is as
// it was, and nothing leaks.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "closed/wren/memory.h"
#include "engine/context.h"
#include "support/context.h"

namespace {

constexpr uint16_t kFlags = ORL_FLAG_RANGES | ORL_FLAG_MODIFIERS;

int32_t SevenText(EC, HEXP, int32_t size, void **result, const char *, void **) {
  return FUNStrVarResult(result, size,
                         "a text of more than fifty characters, so that it must grow");
}

// A context with formulas, pictures and callbacks, all in place before any failure.
OwnedContext Prepared(HostData *host) {
  host->values = {
      {"Amount", "5"}, {"Tax", "2"}, {"Name", std::string(80, 'n')}, {"Start", "2012-01-31"}};
  OwnedContext context =
      StandardContext(kFlags, host, [](const char *) -> void * { return nullptr; });
  EC ec = context.get();
  AddFunction(ec, {"Grow", 2, {{0, 0, 0}, {1, 0, 0}}, 0, 0, 0, Address(&SevenText)});
  ORLSetDatePicture(ec, "yyyy", "MM", "dd");
  EXPECT_NE(Parse(ec, "Amount * 2", "One").exp, nullptr);
  EXPECT_NE(Parse(ec, "One() + Tax", "Two").exp, nullptr);
  EXPECT_NE(Parse(ec, "Amount, One()", "List").exp, nullptr);
  return context;
}

enum class State { Same, MayDiffer, Dead };

// Runs the operation with the n-th allocation failing, for each n, until it gives true.
void Sweep(const char *what, State afterFailure, const std::function<bool(EC)> &operation) {
  SCOPED_TRACE(what);
  for (int64_t n = 0; n < 5000; ++n) {
    SCOPED_TRACE("allocation " + std::to_string(n));
    const int64_t before = TEST_LiveBlocks();
    bool done = false;
    {
      HostData host;
      OwnedContext context = Prepared(&host);
      EC ec = context.get();
      const std::string state = Snapshot(ec);
      const int64_t blocks = TEST_LiveBlocks();
      TEST_FailAllocationsAfter(n);
      done = operation(ec);
      TEST_FailAllocationsAfter(-1);
      if (!done && afterFailure == State::Dead && TEST_LiveBlocks() == before) {
        context.release();  // NOLINT(bugprone-unused-return-value): the failure has destroyed it
      } else if (!done && afterFailure != State::MayDiffer) {
        EXPECT_EQ(Snapshot(ec), state);
        // A table may have grown ahead of need, but no block may be lost in numbers.
        EXPECT_LE(TEST_LiveBlocks(), blocks + 2);
      }
      if (context != nullptr) {
        // It goes on working.
        EXPECT_NE(Parse(ec, "Amount + Two()", "After").exp, nullptr);
        EXPECT_EQ(Evaluate(ec, ORLHEXPFromName(ec, "After")), "17");
      }
    }
    ASSERT_EQ(TEST_LiveBlocks(), before) << "leak";
    if (done || testing::Test::HasFailure()) return;
  }
  FAIL() << "never succeeds";
}

TEST(AllocationFailures, Create) {
  const int64_t before = TEST_LiveBlocks();
  bool done = false;
  for (int64_t n = 0; n < 100 && !done; ++n) {
    TEST_FailAllocationsAfter(n);
    const OwnedContext context(ORLCreateEC(nullptr, nullptr, nullptr, 0));
    TEST_FailAllocationsAfter(-1);
    done = context != nullptr;
    EXPECT_EQ(done, n > 0);
  }
  EXPECT_TRUE(done);
  EXPECT_EQ(TEST_LiveBlocks(), before);
}

// Every kind of token and node; an error must be the one for no memory. Where only a number can
// follow, behind a sign, a number without memory is a syntax error.
TEST(AllocationFailures, Parse) {
  for (const char *text :
       {"1", "-1 + 2 * Amount", "'it''s' || Name", "2012-01-31 + 2 DAYS", "Amount, Tax, 3",
        "Amount AND Tax + 1", "Opt(1, Half(Tax), 3)", "Sum(DISTINCT Amount)", "Count(*)",
        "Two() + Two()", "KeyFn(Net Sales)", "@PI", "((1))", "1.5E-3", "12 Jan 99"}) {
    Sweep(text, State::Same, [text](EC ec) {
      const Parsed parsed = Parse(ec, text);
      EXPECT_TRUE(parsed.exp != nullptr || Outcome(parsed) == "121@0+0" ||
                  (text[0] == '-' && parsed.error.id == ORL_ERR_SYNTAX))
          << Outcome(parsed);
      return parsed.exp != nullptr;
    });
  }
}

// Texts with a fault of their own: the answer is that fault or no memory.
TEST(AllocationFailures, ParseOfBadTexts) {
  for (const char *text : {"1 + (2 * Half(3), 'a'", "Amount, 2, 'a'", "Opt(1, Nope)",
                           "13/45/99 + (1 2", "Two(1)", "1 AND Half(Name)", "'a' + 1"}) {
    HostData host;
    const OwnedContext context = Prepared(&host);
    const std::string fault = Outcome(Parse(context.get(), text));
    Sweep(text, State::Same, [text, &fault](EC ec) {
      const std::string outcome = Outcome(Parse(ec, text));
      EXPECT_TRUE(outcome == fault || outcome == "121@0+0") << outcome;
      return outcome == fault;
    });
  }
}

TEST(AllocationFailures, StoreAndClone) {
  Sweep("store a new one", State::Same,
        [](EC ec) { return Store(ec, nullptr, "Two() * Half(Amount)", "New").exp != nullptr; });
  Sweep("store over", State::Same, [](EC ec) {
    HEXP one = ORLHEXPFromName(ec, "One");
    HEXP stored = Store(ec, one, "10 + 1 - 1", "One").exp;
    if (stored == nullptr) return false;
    TEST_FailAllocationsAfter(-1);
    EXPECT_NE(Store(ec, one, "Amount * 2", "One").exp, nullptr);
    return true;
  });
  Sweep("clone", State::Same, [](EC ec) {
    uint16_t type = 0;
    return ORLCloneExpression(ec, ORLHEXPFromName(ec, "Two"), nullptr, &type) != nullptr;
  });
  Sweep("valid name", State::Same,
        [](EC ec) { return ORLValidName(ec, "\"a name\".b", nullptr) == 1; });
  Sweep("destroy one", State::MayDiffer,
        [](EC ec) { return ORLDestroyEXP(ec, ORLHEXPFromName(ec, "List")) == 1; });
}

TEST(AllocationFailures, Items) {
  char routineName[] = "routine";
  Sweep("add an item", State::Same, [&routineName](EC ec) {
    ExprItem item = {};
    item.kind = ORL_KEYWORD;
    std::strcpy(item.name, "Added");
    item.routineName = routineName;
    if (ORLAddExpressionItem(ec, &item) == 0) return false;
    const ExprItem *kept = nullptr;
    for (uint32_t i = 0; i < HandleArrayRows(ec->keywords.rows); ++i) {
      kept = static_cast<const ExprItem *>(HandleArrayPointerAt(ec->keywords.rows, i));
    }
    // The row counts even when its routine's name could not be kept; go on until it is.
    EXPECT_STREQ(kept->name, "Added");
    if (kept->routineName != nullptr) return true;
    EXPECT_EQ(ORLDelExpItemNoCheck(ec, ORL_KEYWORD, "Added"), 1);
    return false;
  });
  Sweep("define the functions", State::MayDiffer,
        [](EC ec) { return FUNDefineFunctions(ec) == 1; });
  Sweep("delete an item", State::MayDiffer, [](EC ec) {
    AddInput(ec, "Spare", 0);
    Parse(ec, "Spare + 1", "Spared");
    const int32_t result = ORLDeleteExpItem(
        ec, ORL_INPUT, "Spare",
        [](EC context, HEXP exp, ExprItem *) { return ORLDestroyEXP(context, exp); });
    return result == 1 && ORLHEXPFromName(ec, "Spared") == nullptr && TEST_LiveBlocks() > 0;
  });
}

TEST(AllocationFailures, Settings) {
  Sweep("pictures", State::Same, [](EC ec) {
    EXPECT_EQ(ORLSetDatePicture(ec, "dd", "MM", "yyyy"), 1);
    return ec->pictures[0] != nullptr && ec->pictures[1] != nullptr && ec->pictures[2] != nullptr;
  });
  Sweep("templates", State::Same, [](EC ec) {
    ORLSetDateConvert(ec, "%s", "a%s", "b%s", 1);
    return ec->dateConvert[0] != nullptr && ec->dateConvert[1] != nullptr &&
           ec->dateConvert[2] != nullptr;
  });
  Sweep("operator callback", State::Dead,
        [](EC ec) { return ORLSetOperatorCallback(ec, 0, 0, "routine") == 1; });
}

TEST(AllocationFailures, Evaluate) {
  HostData host;
  const OwnedContext context = Prepared(&host);
  EC ec = context.get();
  for (const char *text : {"1 + Amount * Tax", "Two()", "Name || 'it''s'", "Start + 2 DAYS",
                           "Grow(Amount, Tax) || Grow(1, Amount)", "Start - Start"}) {
    SCOPED_TRACE(text);
    HEXP exp = Parse(ec, text).exp;
    const std::string expected = Evaluate(ec, exp);
    EXPECT_NE(expected, "none");
    const bool isText = ORLGetExpressionDataType(ec, exp) == ORL_TYPE_STRING;
    const int64_t before = TEST_LiveBlocks();
    bool done = false;
    for (int64_t n = 0; n < 1000 && !done; ++n) {
      NumberValue number = {};
      void *block = isText ? nullptr : &number;
      int32_t length = 0;
      TEST_FailAllocationsAfter(n);
      done = ORLEvaluateExpressionExt(ec, exp, &length, &block) == 1;
      TEST_FailAllocationsAfter(-1);
      if (isText) {
        EXPECT_EQ(block != nullptr, done);
        ORLMemFree(block);
      }
      ASSERT_EQ(TEST_LiveBlocks(), before) << "leak at allocation " << n;
    }
    EXPECT_TRUE(done);
    EXPECT_EQ(Evaluate(ec, exp), expected);
  }
}

TEST(AllocationFailures, Copy) {
  Sweep("copy", State::Same, [](EC ec) {
    const OwnedContext copy(ORLCopyEC(ec));
    if (copy == nullptr) return false;
    // Rows and expressions may be missing; what is there is whole.
    for (int32_t i = 0; i < ORLGetExpressionCount(copy.get()); ++i) {
      HEXP exp = ORLHEXPFromOrdinal(copy.get(), i);
      HEXP source = ORLHEXPFromName(ec, NameOf(copy.get(), exp).c_str());
      if (source == nullptr) {
        ADD_FAILURE() << NameOf(copy.get(), exp);
        continue;
      }
      EXPECT_EQ(TextOf(copy.get(), exp), TextOf(ec, source));
    }
    return Snapshot(copy.get()) == Snapshot(ec) && copy->pictures[2] != nullptr;
  });
}

TEST(AllocationFailures, DestroyNeedsNoMemory) {
  const int64_t before = TEST_LiveBlocks();
  HostData host;
  OwnedContext context = Prepared(&host);
  TEST_FailAllocationsAfter(0);
  EXPECT_EQ(ORLDestroyEXP(context.get(), ORLHEXPFromName(context.get(), "List")), 1);
  EXPECT_EQ(ORLDelExpItemNoCheck(context.get(), ORL_INPUT, "Amount"), 1);
  context.reset();
  TEST_FailAllocationsAfter(-1);
  EXPECT_EQ(TEST_LiveBlocks(), before);
}

}  // namespace
