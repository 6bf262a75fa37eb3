// Contexts: creation, settings, copy, deletion of the items, destruction.
#include "engine/context.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "closed/wren/memory.h"
#include "engine/module.h"
#include "support/context.h"

namespace {

TEST(Context, NewOneIsEmpty) {
  for (const uint16_t flags : {uint16_t{0}, uint16_t{ORL_FLAG_NO_CONCAT}}) {
    const OwnedContext context(ORLCreateEC(nullptr, nullptr, nullptr, flags));
    EC ec = context.get();
    ASSERT_NE(ec, nullptr);
    EXPECT_EQ(ec->concatAllowed, flags == 0 ? 1 : 0);
    EXPECT_EQ(ORLGetExpressionCount(ec), 0);
    EXPECT_EQ(Snapshot(ec), "\n\n\n");
    EXPECT_EQ(ORLGetUserLong(ec), 0);
    EXPECT_EQ(ec->expressions, nullptr);
    EXPECT_EQ(ec->inputs.rows, nullptr);
  }
}

TEST(Context, NullHandles) {
  uint16_t type = 0;
  EXPECT_EQ(ORLDestroyEC(nullptr), 1);
  EXPECT_EQ(ORLSetUserLong(nullptr, 7), 0);
  EXPECT_EQ(ORLGetUserLong(nullptr), 0);
  EXPECT_EQ(ORLGetExpressionCount(nullptr), 0);
  EXPECT_EQ(ORLHEXPFromOrdinal(nullptr, 0), nullptr);
  EXPECT_EQ(ORLCloneExpression(nullptr, nullptr, nullptr, &type), nullptr);
  EXPECT_EQ(ORLSetOperatorCallback(nullptr, 0, 0, "x"), 0);
  EXPECT_EQ(FUNDefineFunctions(nullptr), 0);
}

TEST(Context, UserLong) {
  const OwnedContext context(ORLCreateEC(nullptr, nullptr, nullptr, 0));
  const intptr_t address = reinterpret_cast<intptr_t>(&context);
  EXPECT_EQ(ORLSetUserLong(context.get(), 7), 0);
  EXPECT_EQ(ORLGetUserLong(context.get()), 7);
  EXPECT_EQ(ORLSetUserLong(context.get(), address), 7);
  EXPECT_EQ(ORLGetUserLong(context.get()), address);
}

TEST(Context, HelpPath) {
  const OwnedContext context(ORLCreateEC(nullptr, nullptr, nullptr, 0));
  EC ec = context.get();
  const std::string longest(519, 'a');
  ORLSetHelpPath(ec, longest.c_str(), 3);
  EXPECT_EQ(ec->helpPath, longest);
  EXPECT_EQ(ec->helpContext, 3);
  ORLSetHelpPath(ec, std::string(520, 'b').c_str(), 4);
  EXPECT_EQ(ec->helpPath, longest);
  EXPECT_EQ(ec->helpContext, 4);
  ORLSetHelpPath(ec, "", 5);
  EXPECT_STREQ(ec->helpPath, "");
}

TEST(Context, DatePicturesAndTemplates) {
  const OwnedContext context(ORLCreateEC(nullptr, nullptr, nullptr, 0));
  EC ec = context.get();
  EXPECT_EQ(ORLSetDatePicture(ec, "yyyy-MM-dd", "", nullptr), 1);
  EXPECT_STREQ(ec->pictures[0], "yyyy-MM-dd");
  EXPECT_EQ(ec->pictures[1], nullptr);
  EXPECT_EQ(ec->pictures[2], nullptr);
  EXPECT_EQ(ec->pictureWidth, 10);
  ORLSetDateConvert(ec, "{d '%s'}", nullptr, "{t '%s'}", 2);
  EXPECT_EQ(ec->pictureWidth, 10);  // templates count with the next picture
  ORLSetDateConvert(ec, nullptr, "{ts '%s'}", nullptr, 2);
  EXPECT_STREQ(ec->dateConvert[0], "{d '%s'}");
  EXPECT_STREQ(ec->dateConvert[1], "{ts '%s'}");
  EXPECT_STREQ(ec->dateConvert[2], "{t '%s'}");
  EXPECT_EQ(ec->dateConvertFlags, 2);
  EXPECT_EQ(ORLSetDatePicture(ec, nullptr, "", nullptr), 1);
  for (const char *picture : ec->pictures) EXPECT_EQ(picture, nullptr);
}

TEST(Context, ModuleEntryWorksOnce) {
  void *const handle = moduleHandle;
  ExprContext *const context = defaultContext;
  EXPECT_NE(handle, nullptr);
  int other = 0;
  for (uint32_t reason : {0u, 1u, 2u, 3u}) EXPECT_EQ(ModuleEntry(&other, reason, nullptr), 1);
  EXPECT_EQ(moduleHandle, handle);
  EXPECT_EQ(defaultContext, context);
  EXPECT_EQ(FUNModuleHandle(), handle);
  EXPECT_STREQ(moduleTexts.baseNames[kClassFormula], "Formula");
  EXPECT_STREQ(moduleTexts.editorTitles[kClassSet], "Set Editor");
  EXPECT_STREQ(moduleTexts.typeLabels[kLabelDate], "DateTime");
  EXPECT_EQ(WEP(0), 1);
}

TEST(Context, DeleteAllItems) {
  HostData host;
  const OwnedContext bare(ORLCreateEC(nullptr, nullptr, nullptr, 0));
  EXPECT_EQ(ORLDeleteAllECVars(bare.get()), 0);
  const OwnedContext context = StandardContext(0, &host);
  EC ec = context.get();
  host.values["Amount"] = "5";
  const Parsed parsed = Parse(ec, "Amount + 1");
  EXPECT_EQ(Evaluate(ec, parsed.exp), "6");
  EXPECT_EQ(ORLDeleteAllECVars(ec), 1);
  EXPECT_TRUE(ItemNames(ec, ORL_INPUT).empty());
  EXPECT_EQ(ItemNames(ec, ORL_KEYWORD).size(), 2u);
  EXPECT_EQ(Evaluate(ec, parsed.exp), "none");
  EXPECT_EQ(ORLDeleteAllECVars(ec), 1);
}

// A copy has the items, the settings and what parses again; not callbacks, help path or counters.
TEST(ContextCopy, TakesOverItemsSettingsAndTexts) {
  HostData host;
  host.values = {{"Amount", "5"}};
  OwnedContext source =
      StandardContext(ORL_FLAG_RANGES, &host, [](const char *) { return Address(&HostValue); });
  EC ec = source.get();
  ORLSetHelpPath(ec, "help.txt", 9);
  ORLSetDatePicture(ec, "yyyy", "MM", nullptr);
  ORLSetDateConvert(ec, nullptr, "%s", nullptr, 1);
  ORLSetListValuesCallback(ec, [](EC, const char *, void *, int32_t, int32_t *) {});
  ORLSetDelPermissionCallback(ec, [](EC, HEXP, void *) { return 1; });
  ASSERT_EQ(ORLSetOperatorCallback(ec, 0, 2, "plus"), 1);
  ASSERT_EQ(Outcome(Parse(ec, "Amount + 1", "One")), "type 0");
  ASSERT_EQ(Outcome(Parse(ec, "One() * 2", "Two")), "type 0");
  ASSERT_EQ(Outcome(Parse(ec, "Name + Name", "NeedsCallback")), "type 2");
  ASSERT_EQ(Outcome(Parse(ec, "Amount, Tax", "List")), "type 0");
  // One refers to a later formula from now on, and so does not parse in the copy's order.
  ASSERT_EQ(Outcome(Parse(ec, "7", "Late")), "type 0");
  ASSERT_EQ(Outcome(Store(ec, ORLHEXPFromName(ec, "One"), "Late() + 1", "Early")), "type 0");
  ASSERT_EQ(Outcome(Store(ec, ORLHEXPFromName(ec, "Two"), "Amount * 2", "Two")), "type 0");

  const OwnedContext copy(ORLCopyEC(ec));
  EC twin = copy.get();
  ASSERT_NE(twin, nullptr);
  EXPECT_EQ(twin->delPermissionProc, ec->delPermissionProc);
  EXPECT_EQ(twin->listValuesProc, ec->listValuesProc);
  EXPECT_STREQ(twin->pictures[1], "MM");
  EXPECT_STREQ(twin->dateConvert[1], "%s");
  EXPECT_EQ(twin->dateConvertFlags, 1);
  EXPECT_STREQ(twin->helpPath, "");
  EXPECT_EQ(twin->operators[kGroupAdd].procs[2], nullptr);
  EXPECT_EQ(ORLGetUserLong(twin), ORLGetUserLong(ec));
  source.reset();  // the copy stands alone
  EXPECT_EQ(ItemNames(twin, ORL_FUNCTION).size(), 20u);
  EXPECT_EQ(ItemNames(twin, ORL_KEYWORD).size(), 2u);
  ASSERT_EQ(ORLGetExpressionCount(twin), 3);
  EXPECT_EQ(NameOf(twin, ORLHEXPFromOrdinal(twin, 0)), "Two");
  EXPECT_EQ(NameOf(twin, ORLHEXPFromOrdinal(twin, 1)), "List");
  EXPECT_EQ(NameOf(twin, ORLHEXPFromOrdinal(twin, 2)), "Late");
  EXPECT_EQ(Evaluate(twin, ORLHEXPFromName(twin, "Two")), "10");
}

TEST(ContextCopy, PicturesNeedTheFirst) {
  const OwnedContext source(ORLCreateEC(nullptr, nullptr, nullptr, 0));
  ORLSetDatePicture(source.get(), nullptr, "MM", "dd");
  const OwnedContext copy(ORLCopyEC(source.get()));
  for (const char *picture : copy.get()->pictures) EXPECT_EQ(picture, nullptr);
}

TEST(Context, DestroyFreesAllAndCallsNoHost) {
  const int64_t before = TEST_LiveBlocks();
  HostData host;
  OwnedContext context = StandardContext(ORL_FLAG_RANGES, &host);
  EC ec = context.get();
  FUNDefineFunctions(ec);
  ORLSetDatePicture(ec, "yyyy", "MM", "dd");
  ORLSetDateConvert(ec, "%s", "%s", "%s", 3);
  for (int16_t op = 0; op < 5; ++op) {
    for (int16_t type = 0; type < 4; ++type) ORLSetOperatorCallback(ec, op, type, "some name");
  }
  ORLSetOperatorCallback(ec, 0, 0, "another name");
  EXPECT_EQ(ORLSetOperatorCallback(ec, 5, 0, "x"), 1);
  EXPECT_EQ(ORLSetOperatorCallback(ec, -1, 0, "x"), 1);
  for (const char *text : {"Amount + 1", "Name || 'it''s'", "1.5, Amount, 2 * Tax",
                           "Amount AND Opt(1, Half(2))", "2012-01-31 + 2 DAYS", "Formula1()"}) {
    EXPECT_NE(Parse(ec, text).exp, nullptr) << text;
  }
  for (const char *text : {"Amount +", "Half(Name)", "1, 'a'", "((((Amount", "Opt(1, Half(2), 'a'",
                           "1 + 2 * (3 + Opt(1, 2) 4"}) {
    EXPECT_EQ(Parse(ec, text).exp, nullptr) << text;
  }
  EXPECT_GT(TEST_LiveBlocks(), before);
  context.reset();
  EXPECT_EQ(TEST_LiveBlocks(), before);
  EXPECT_TRUE(host.calls.empty());
}

}  // namespace
