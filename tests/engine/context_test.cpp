// Contexts: settings, copy, deletion of the items, and handles that are null.
#include "engine/context.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "engine/module.h"
#include "support/context.h"

namespace {

TEST(Context, NullHandles) {
  const HostedContext ec;
  uint16_t type = 0;
  ExprItem item = {};
  const auto never = [](EC, HEXP, int32_t) { return 5; };
  // clang-format off
  const std::vector<intptr_t> zeros = {
      ORLSetUserLong(nullptr, 7), ORLGetUserLong(nullptr), ORLGetExpressionCount(nullptr),
      ORLEnumExpressions(nullptr, never), ORLSetOperatorCallback(nullptr, 0, 0, "x"),
      FUNDefineFunctions(nullptr), ORLAddExpressionItem(nullptr, &item),
      ORLDelExpItemNoCheck(nullptr, 1, "x"), ORLLoadComboBox(nullptr, 1, nullptr),
      ORLGetExpressionTextLength(ec, nullptr), ORLIsExpRange(ec, nullptr, 1),
      ORLIsExpressionSimple(ec, nullptr), ORLIsExpressionSimpleInput(ec, nullptr),
      ORLIsItemUsed(ec, nullptr, 1, "Amount"), ORLIsAggregateUsed(ec, nullptr),
      ORLIsFunctionVariableUsed(ec, nullptr, "Half", "Amount")};
  const std::vector<intptr_t> others = {
      ORLDestroyEC(nullptr), ORLDeleteExpItem(nullptr, 1, "x", nullptr), ORLDestroyEXP(ec, nullptr),
      ORLGetExpressionOrdinal(ec, nullptr), ORLGetSimpleInputSubClass(ec, nullptr),
      ORLGetExpressionDataType(ec, nullptr)};
  // clang-format on
  EXPECT_EQ(zeros, std::vector<intptr_t>(zeros.size(), 0));
  EXPECT_EQ(others, (std::vector<intptr_t>{1, 1, 1, -1, -1, 65535}));
  EXPECT_EQ(ORLHEXPFromOrdinal(nullptr, 0), nullptr);
  EXPECT_EQ(ORLCloneExpression(nullptr, nullptr, nullptr, &type), nullptr);
  EXPECT_EQ(ORLCloneExpression(ec, nullptr, "Z", &type), nullptr);
  FormulaError error = {};
  EXPECT_EQ(ORLParseString(nullptr, "1", "Z", &error, &type), nullptr);
  EXPECT_EQ(error.id, ORL_ERR_GENERAL);
  EXPECT_EQ(ORLParseString(ec, nullptr, nullptr, &error, &type), nullptr);
  EXPECT_EQ(error.id, ORL_ERR_SYNTAX);
  EXPECT_NE(ORLParseString(ec, "1", nullptr, &error, &type), nullptr);
  int32_t names = 0;
  ORLEnumExpItems(
      ec, ORL_INPUT, [](EC, const char *, void *user) { ++*static_cast<int32_t *>(user); }, &names);
  EXPECT_GT(names, 0);
  EXPECT_EQ(ORLLoadComboBox(ec, ORL_INPUT, nullptr), names);
}

TEST(Context, Settings) {
  const HostedContext ec;
  ExprContext *inner = ec;
  EXPECT_EQ(ORLSetUserLong(ec, INTPTR_MIN), reinterpret_cast<intptr_t>(&ec.host));
  EXPECT_EQ(ORLGetUserLong(ec), INTPTR_MIN);
  const std::string longest(519, 'a');
  ORLSetHelpPath(ec, longest.c_str(), 3);
  ORLSetHelpPath(ec, (longest + "b").c_str(), 4);
  EXPECT_EQ(inner->helpPath, longest);
  EXPECT_EQ(inner->helpContext, 4);
  EXPECT_EQ(ORLSetDatePicture(ec, "yyyy-MM-dd", "", nullptr), 1);
  EXPECT_STREQ(inner->pictures[0], "yyyy-MM-dd");
  EXPECT_EQ(inner->pictures[1], nullptr);
  EXPECT_EQ(inner->pictureWidth, 10);
  ORLSetDateConvert(ec, "{d '%s'}", nullptr, "{t '%s'}", 2);
  EXPECT_EQ(inner->pictureWidth, 10);  // templates are measured with the next picture
  ORLSetDateConvert(ec, nullptr, "{ts '%s'}", nullptr, 2);
  EXPECT_STREQ(inner->dateConvert[0], "{d '%s'}");
  EXPECT_STREQ(inner->dateConvert[1], "{ts '%s'}");
  EXPECT_EQ(inner->dateConvertFlags, 2);
  EXPECT_EQ(ORLSetDatePicture(ec, nullptr, "MM", nullptr), 1);
  EXPECT_EQ(inner->pictures[0], nullptr);
  const OwnedContext copy(ORLCopyEC(ec));  // without the first picture none are copied
  EXPECT_EQ(copy->pictures[1], nullptr);
}

TEST(Context, ModuleEntryWorksOnce) {
  void *const handle = moduleHandle;
  ExprContext *const context = defaultContext;
  EXPECT_NE(handle, nullptr);
  int other = 0;
  for (uint32_t reason : {0u, 1u, 2u, 3u}) EXPECT_EQ(ModuleEntry(&other, reason, nullptr), 1);
  EXPECT_EQ(defaultContext, context);
  EXPECT_EQ(FUNModuleHandle(), handle);
  EXPECT_STREQ(moduleTexts.baseNames[kClassFormula], "Formula");
  EXPECT_STREQ(moduleTexts.editorTitles[kClassSet], "Set Editor");
  EXPECT_STREQ(moduleTexts.typeLabels[kLabelDate], "DateTime");
  EXPECT_EQ(WEP(0), 1);
}

TEST(Context, DeleteAllItems) {
  const OwnedContext bare(ORLCreateEC(nullptr, nullptr, nullptr, 0));
  EXPECT_EQ(ORLDeleteAllECVars(bare.get()), 0);
  HostedContext ec;
  ec.host.values["Amount"] = "5";
  HEXP exp = Make(ec, "Amount + 1");
  EXPECT_EQ(ORLDeleteAllECVars(ec), 1);
  EXPECT_TRUE(ItemNames(ec, ORL_INPUT).empty());
  EXPECT_EQ(ItemNames(ec, ORL_KEYWORD).size(), 2u);
  EXPECT_EQ(Evaluate(ec, exp), "none");
  EXPECT_EQ(ORLDeleteAllECVars(ec), 1);
}

// A copy has the items, the settings and the expressions that parse again; not callbacks, help path
// or counters.
TEST(Context, CopyHasItemsSettingsAndFormulas) {
  HostedContext ec(ORL_FLAG_RANGES, [](const char *) { return Address(&HostValue); });
  ec.host.values = {{"Amount", "5"}};
  ORLSetHelpPath(ec, "help.txt", 9);
  ORLSetDatePicture(ec, "yyyy", "MM", nullptr);
  ORLSetDateConvert(ec, nullptr, "%s", nullptr, 1);
  ORLSetListValuesCallback(ec, [](EC, const char *, void *, int32_t, int32_t *) {});
  ORLSetDelPermissionCallback(ec, [](EC, HEXP, void *) { return 1; });
  ORLSetOperatorCallback(ec, 0, 2, "plus");
  HEXP one = Make(ec, "Amount + 1", "One");
  Make(ec, "Amount * 2", "Two");
  Make(ec, "Name + Name", "NeedsCallback");
  Make(ec, "Amount, Tax", "List");
  // One refers to a later formula from now on, and so does not parse in the copy's order.
  Make(ec, "7", "Late");
  ASSERT_EQ(Outcome(Store(ec, one, "Late() + 1", "Early")), "type 0");

  const OwnedContext copy(ORLCopyEC(ec));
  EC twin = copy.get();
  EXPECT_EQ(twin->delPermissionProc, ec.owned->delPermissionProc);
  EXPECT_EQ(twin->listValuesProc, ec.owned->listValuesProc);
  EXPECT_STREQ(twin->pictures[1], "MM");
  EXPECT_STREQ(twin->dateConvert[1], "%s");
  EXPECT_EQ(twin->dateConvertFlags, 1);
  EXPECT_STREQ(twin->helpPath, "");
  EXPECT_EQ(twin->operators[kGroupAdd].procs[2], nullptr);
  EXPECT_EQ(ORLGetUserLong(twin), ORLGetUserLong(ec));
  const std::string all = Snapshot(ec);
  ec.owned.reset();  // the copy is independent
  EXPECT_EQ(Snapshot(twin),
            all.substr(0, all.find("Early:")) + "Two:0=Amount * 2\nList:0=Amount, Tax\nLate:0=7\n");
  EXPECT_EQ(Evaluate(twin, ORLHEXPFromName(twin, "Two")), "10");
}

TEST(ErrorText, IsTruncatedAndCounted) {
  const std::string text = "ERR_FUNC: Unknown function.";
  const auto length = static_cast<int32_t>(text.size());
  char buffer[100];
  for (const int32_t size : {-1, 0, 1, 5, length, length + 1, 100}) {
    std::fill_n(buffer, sizeof buffer, '#');
    EXPECT_EQ(ORLErrorText(ORL_ERR_FUNC, size, buffer), length) << size;
    const auto capacity = static_cast<size_t>(std::max(size, 0));
    const std::string written = capacity == 0 ? "" : text.substr(0, capacity - 1) + '\0';
    EXPECT_EQ(std::string(buffer, sizeof buffer),
              written + std::string(sizeof buffer - written.size(), '#'))
        << size;
  }
  EXPECT_EQ(ORLErrorText(ORL_ERR_FUNC, 0, nullptr), length);
  for (const int32_t id : {INT32_MIN, 0, 99, 104, 138, 208}) {
    EXPECT_EQ(ORLErrorText(id, sizeof buffer, buffer), 0) << id;
    EXPECT_STREQ(buffer, "") << id;
  }
}

}  // namespace
