// Every allocation of every operation fails once: the result is the documented one, the context is
// unchanged, and nothing leaks.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "closed/wren/memory.h"
#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/items.h"
#include "language/tree.h"
#include "support/context.h"

namespace {

int32_t LongText(EC, HEXP, int32_t size, void **result, const char *, void **) {
  return FUNStrVarResult(result, size, "a text of more than fifty characters, so it must grow");
}

// A context with formulas, pictures and callbacks, all in place before any failure.
OwnedContext Prepared(HostData *host) {
  host->values = {{"Amount", "5"}, {"Tax", "2"}, {"Name", "a name"}, {"Start", "2012-01-31"}};
  host->values["Name"].append(80, 'n');
  OwnedContext context = StandardContext(ORL_FLAG_RANGES | ORL_FLAG_MODIFIERS, host,
                                         [](const char *) -> void * { return nullptr; });
  EC ec = context.get();
  AddFunction(ec, {"Grow", 2, {{0, 0, 0}, {1, 0, 0}}, 0, 0, 0, Address(&LongText)});
  ORLSetDatePicture(ec, "yyyy", "MM", "dd");
  for (const char *name : {"plus", "add"}) ORLSetOperatorCallback(ec, 0, 2, name);
  Make(ec, "Amount * 2", "One");
  Make(ec, "One() + Tax", "Two");
  Make(ec, "Amount, One()", "List");
  return context;
}

enum class State { Same, MayDiffer, Dead };
const auto kNothingFirst = [](EC) {};

// Runs the operation with the n-th allocation failing, for each n, until it returns true. `first`
// runs before, with memory.
void Sweep(const char *what, State afterFailure, const std::function<bool(EC)> &operation,
           const std::function<void(EC)> &first = kNothingFirst) {
  for (int64_t n = 0; n < 5000; ++n) {
    SCOPED_TRACE(what + (", allocation " + std::to_string(n)));
    const int64_t before = TEST_LiveBlocks();
    bool done = false;
    {
      HostData host;
      OwnedContext context = Prepared(&host);
      EC ec = context.get();
      first(ec);
      const std::string state = Snapshot(ec);
      const int64_t blocks = TEST_LiveBlocks();
      TEST_FailAllocationsAfter(n);
      done = operation(ec);
      TEST_FailAllocationsAfter(-1);
      if (!done && afterFailure == State::Dead && TEST_LiveBlocks() == before) {
        context.release();  // NOLINT(bugprone-unused-return-value): the failure has destroyed it
      } else if (!done && afterFailure != State::MayDiffer) {
        EXPECT_EQ(Snapshot(ec), state);
        // A table may have grown early, but the number of blocks must be the same.
        EXPECT_LE(TEST_LiveBlocks(), blocks + 2);
      }
      // It still works.
      if (context != nullptr) {
        EXPECT_EQ(Evaluate(ec, Make(ec, "Amount + Two()")), "17");
      }
    }
    ASSERT_EQ(TEST_LiveBlocks(), before) << "leak";
    if (done || testing::Test::HasFailure()) return;
  }
  FAIL() << what << " never succeeds";
}

// Every kind of token and node, and texts with errors: the result is the usual one or out of
// memory. After a sign, where only a number can follow, out of memory is a syntax error.
TEST(AllocationFailure, Parse) {
  for (const char *text : {"1",
                           "-1 + 2 * Amount",
                           "'it''s' || Name",
                           "2012-01-31 + 2 DAYS",
                           "Amount, Tax, 3",
                           "Amount AND Tax + 1",
                           "Opt(1, Half(Tax), 3)",
                           "Sum(DISTINCT Amount)",
                           "Count(*)",
                           "Two() + Two()",
                           "KeyFn(Net Sales)",
                           "@PI",
                           "((1))",
                           "1.5E-3",
                           "12 Jan 99",
                           "1 + (2 * Half(3), 'a'",
                           "Amount, 2, 'a'",
                           "Opt(1, Nope)",
                           "13/45/99 + (1 2",
                           "Two(1)",
                           "1 AND Half(Name)",
                           "'a' + 1"}) {
    HostData host;
    const OwnedContext context = Prepared(&host);
    const std::string usual = Outcome(Parse(context.get(), text));
    Sweep(text, State::Same, [text, &usual](EC ec) {
      const std::string outcome = Outcome(Parse(ec, text));
      EXPECT_TRUE(outcome == usual || outcome == "121@0+0" ||
                  (text[0] == '-' && outcome.compare(0, 3, "109") == 0))
          << outcome;
      return outcome == usual;
    });
  }
}

TEST(AllocationFailure, Evaluate) {
  for (const char *text : {"1 + Amount * Tax", "Two()", "Name || 'it''s'", "Start + 2 DAYS",
                           "Grow(Amount, Tax) || Grow(1, Amount)", "Start - Start"}) {
    std::string usual;
    const auto first = [&](EC ec) { usual = Evaluate(ec, Make(ec, text, "Tested")); };
    Sweep(
        text, State::Same,
        [&usual](EC ec) {
          HEXP exp = ORLHEXPFromName(ec, "Tested");
          const std::string value = Evaluate(ec, exp);
          EXPECT_TRUE(value == usual || value == "none") << value;
          return value != "none";
        },
        first);
  }
}

// The row is added even when its routine's name could not be copied; repeated until it is.
bool AddRow(EC ec) {
  ExprItem item = {};
  item.kind = ORL_KEYWORD;
  std::strcpy(item.name, "Added");
  item.routineName = "routine";
  if (ORLAddExpressionItem(ec, &item) == 0) return false;
  if (ItemFind(&ec->keywords, "Added")->routineName != nullptr) return true;
  EXPECT_EQ(ORLDelExpItemNoCheck(ec, ORL_KEYWORD, "Added"), 1);
  return false;
}

bool DeleteRow(EC ec) {
  const auto destroy = [](EC context, HEXP exp, ExprItem *) { return ORLDestroyEXP(context, exp); };
  return ORLDeleteExpItem(ec, ORL_INPUT, "Spare", destroy) == 1 &&
         ORLHEXPFromName(ec, "Spared") == nullptr;
}

// Rows and expressions may be missing in a copy; what it has is complete.
bool Copy(EC ec) {
  const OwnedContext copy(ORLCopyEC(ec));
  if (copy == nullptr) return false;
  for (int32_t i = 0; i < ORLGetExpressionCount(copy.get()); ++i) {
    HEXP exp = ORLHEXPFromOrdinal(copy.get(), i);
    HEXP source = ORLHEXPFromName(ec, NameOf(copy.get(), exp).c_str());
    EXPECT_TRUE(source != nullptr && TextOf(copy.get(), exp) == TextOf(ec, source))
        << NameOf(copy.get(), exp);
  }
  return Snapshot(copy.get()) == Snapshot(ec) && copy->pictures[2] != nullptr;
}

TEST(AllocationFailure, EverythingElse) {
  Sweep("create", State::Same,
        [](EC) { return OwnedContext(ORLCreateEC(nullptr, nullptr, nullptr, 0)) != nullptr; });
  Sweep("copy", State::Same, &Copy);
  Sweep("store a new one", State::Same,
        [](EC ec) { return Store(ec, nullptr, "Two() * Half(Amount)", "New").exp != nullptr; });
  Sweep("parse several", State::MayDiffer, [](EC ec) {
    const OrlFormulaText texts[] = {{"Later() + 1", "First"}, {"Two()", "Later"}};
    FormulaError error = {};
    const bool done = ORLParseFormulas(ec, 2, texts, nullptr, &error) == 1;
    EXPECT_EQ(error.id, done ? 0 : ORL_ERR_MEMORY);
    return done;
  });
  Sweep("store over", State::Same, [](EC ec) {
    return Store(ec, ORLHEXPFromName(ec, "One"), "10 + 1 - 1", "One").exp != nullptr;
  });
  Sweep("clone", State::Same, [](EC ec) {
    uint16_t type = 0;
    return ORLCloneExpression(ec, ORLHEXPFromName(ec, "Two"), nullptr, &type) != nullptr;
  });
  Sweep("check a name", State::Same, [](EC ec) { return ORLValidName(ec, "Fine", nullptr) == 1; });
  Sweep("add an item", State::Same, &AddRow);
  Sweep("define functions", State::MayDiffer, [](EC ec) { return FUNDefineFunctions(ec) == 1; });
  Sweep("delete an item", State::MayDiffer, &DeleteRow,
        [](EC ec) { AddInput(ec, "Spare", 0), Make(ec, "Spare + 1", "Spared"); });
  Sweep("settings", State::Same, [](EC ec) {
    ORLSetDatePicture(ec, "dd", "MM", "yyyy");
    ORLSetDateConvert(ec, "%s", "a%s", "b%s", 1);
    return ec->pictures[0] != nullptr && ec->pictures[2] != nullptr &&
           ec->dateConvert[2] != nullptr;
  });
  Sweep("operator callback", State::Dead,
        [](EC ec) { return ORLSetOperatorCallback(ec, 0, 0, "routine") == 1; });
}

// The row is renamed in any case; each formula is updated or unchanged.
TEST(AllocationFailure, Rename) {
  const auto rename = [](EC ec) {
    ORLRenameExpressionItem(ec, ORL_INPUT, "Spare", "Another");
    EXPECT_EQ(ItemFind(&ec->inputs, "Spare"), nullptr);
    bool done = true;
    for (const char *name : {"Here", "There"}) {
      HEXP exp = ORLHEXPFromName(ec, name);
      const bool renamed = TextOf(ec, exp).find("Spare") == std::string::npos;
      EXPECT_EQ(TextOf(ec, exp), renamed ? "Another + Half(Another)" : "Spare + Half(Spare)");
      done = done && ORLIsItemUsed(ec, exp, ORL_INPUT, "Spare") == 0 &&
             NodeLength(LeftOperand(exp->tree)) == 7;
    }
    return done;
  };
  Sweep("rename", State::MayDiffer, rename, [](EC ec) {
    AddInput(ec, "Spare", 0);
    for (const char *name : {"Here", "There"}) Make(ec, "Spare + Half(Spare)", name);
  });
}

std::vector<std::string> reports;

// One load of a block of Net, B and C, where B waits for C and Net for both, with the n-th
// allocation failing. A failure has been reported at most once, for a formula.
bool Load(const std::string &block, const char *formulas, int64_t n) {
  const OwnedContext target(ORLCreateEC(
      nullptr, [](const char *) { return Address(&HostValue); }, nullptr, 0));
  EC ec = target.get();
  const auto report = [](EC, const char *text, const FormulaError *error) {
    reports.push_back(std::string(text) + ": " + Outcome({nullptr, *error, 0}));
  };
  reports.clear();
  TEST_FailAllocationsAfter(n);
  const int32_t result =
      ORLSetECContents(ec, static_cast<int32_t>(block.size()), block.data(), 1, report);
  TEST_FailAllocationsAfter(-1);
  if (result != 0) {
    EXPECT_EQ(Snapshot(ec), std::string("\n_Days;\n\n") + formulas);
    EXPECT_TRUE(reports.empty());
  } else if (!reports.empty()) {
    EXPECT_EQ(reports.size(), 1);
    EXPECT_NE(reports[0].find(": 121@0+0"), std::string::npos) << reports[0];
  }
  return result != 0;
}

// With operator names, an item, and in the oldest form words that change. Writing needs no memory.
TEST(AllocationFailure, WriteAndRead) {
  const OwnedContext source(ORLCreateEC(nullptr, nullptr, nullptr, 0));
  EC ec = source.get();
  for (const int16_t op : {int16_t{0}, int16_t{4}}) ORLSetOperatorCallback(ec, op, 0, "Operate");
  AddInput(ec, "_Days", 0);
  for (const char *name : {"Net", "B", "C"}) Make(ec, "1", name);
  Store(ec, ORLHEXPFromName(ec, "B"), "C() + 1", "B");
  Store(ec, ORLHEXPFromName(ec, "Net"), "_Days * B()", "Net");
  std::string block(static_cast<size_t>(ORLGetECBlockSize(ec, 1)), '#');
  const auto size = static_cast<int32_t>(block.size());
  TEST_FailAllocationsAfter(0);
  EXPECT_EQ(ORLGetECBlock(ec, size, block.data()), size);
  TEST_FailAllocationsAfter(-1);
  using namespace std::string_literals;
  const std::string oldest = std::string(20, '\0') + "\xFA\0\1\0\1"s + std::string(11, '\0') +
                             "Days"s + std::string(38, '\0') + "Get\0\xFC\0\3\0"s +
                             "1\0C\0C() + 1\0B\0Days * B()\0Net\0"s;
  const std::pair<std::string, const char *> blocks[] = {
      {block, "Net:0=_Days * B()\nB:0=C() + 1\nC:0=1\n"},
      {oldest, "C:0=1\nB:0=C() + 1\nNet:0=_Days * B()\n"}};
  for (const auto &[stored, formulas] : blocks) {
    SCOPED_TRACE("version " + std::to_string(stored[0]));
    std::set<std::string> reported;
    int64_t n = 0;
    for (bool done = false; !done && n < 5000 && !HasFailure(); ++n) {
      SCOPED_TRACE("allocation " + std::to_string(n));
      const int64_t before = TEST_LiveBlocks();
      done = Load(stored, formulas, n);
      reported.insert(reports.begin(), reports.end());
      ASSERT_EQ(TEST_LiveBlocks(), before) << "leak";
    }
    EXPECT_LT(n, 5000);
    EXPECT_EQ(reported.size(), 3);  // each formula has run out of memory
  }
}

TEST(AllocationFailure, DestroyNeedsNoMemoryAndNoHost) {
  const int64_t before = TEST_LiveBlocks();
  HostData host;
  OwnedContext context = Prepared(&host);
  TEST_FailAllocationsAfter(0);
  EXPECT_EQ(ORLDestroyEXP(context.get(), ORLHEXPFromName(context.get(), "List")), 1);
  EXPECT_EQ(ORLDelExpItemNoCheck(context.get(), ORL_INPUT, "Amount"), 1);
  context.reset();
  TEST_FailAllocationsAfter(-1);
  EXPECT_EQ(TEST_LiveBlocks(), before);
  EXPECT_TRUE(host.calls.empty());
}

}  // namespace
