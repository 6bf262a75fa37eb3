// The built-in functions as a context knows them, and the routines for result blocks.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "engine/items.h"
#include "functions/result_block.h"
#include "support/context.h"

namespace {

OwnedContext FunctionContext(OrlLookupProc lookup = nullptr) {
  OwnedContext context(ORLCreateEC(nullptr, lookup, nullptr, 0));
  EXPECT_EQ(FUNDefineFunctions(context.get()), 1);
  return context;
}

// "result:parameters" by data type codes.
std::string Signature(const ExprItem *row) {
  std::string text = std::to_string(row->dataType) + ":";
  for (int i = 0; i < row->paramCount; ++i) {
    text += std::to_string(ItemParameters(row)[i].dataType);
    EXPECT_EQ(+ItemParameters(row)[i].mode, 0) << row->name;
  }
  return text;
}

TEST(Registry, RowsInOrder) {
  const OwnedContext context = FunctionContext();
  const std::vector<std::string> names = ItemNames(context.get(), ORL_FUNCTION);
  ASSERT_EQ(names.size(), 46u);
  struct Row {
    size_t index;
    const char *name, *signature;
  };
  for (const Row &row :
       {Row{0, "DateAddDay", "1:10"}, Row{10, "DateConstruct", "1:000000"},
        Row{11, "StrMid", "2:200"}, Row{20, "StrIFF", "2:0222"}, Row{38, "DateIFF", "1:0111"},
        Row{39, "DateToStrPicture", "2:12"}, Row{42, "StrTranslate", "2:222"},
        Row{43, "Power", "0:00"}, Row{45, "DateQuarter", "0:1"}}) {
    EXPECT_EQ(names[row.index], row.name);
    const ExprItem *item = ItemFind(ItemTableOf(context.get(), ORL_FUNCTION), row.name);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(Signature(item), row.signature) << row.name;
    EXPECT_STREQ(item->routineName, ("FUN" + std::string(row.name)).c_str());
    EXPECT_EQ(item->firstOptional + item->optionalCount + item->itemFlags, 0) << row.name;
  }
}

// A call made of each row's own types parses with the row's type, and one argument more does not.
TEST(Registry, EveryRowCanBeCalled) {
  const OwnedContext context = FunctionContext();
  EC ec = context.get();
  const char *const literals[] = {"1.5", "2012-01-31", "'a'"};
  for (const std::string &name : ItemNames(ec, ORL_FUNCTION)) {
    const ExprItem *row = ItemFind(ItemTableOf(ec, ORL_FUNCTION), name.c_str());
    std::string arguments;
    for (int i = 0; i < row->paramCount; ++i) {
      if (i != 0) arguments += ", ";
      arguments += literals[ItemParameters(row)[i].dataType];
    }
    std::string text = name;
    text.append("(").append(arguments);
    EXPECT_EQ(Outcome(Parse(ec, text + ")")), "type " + std::to_string(row->dataType)) << text;
    EXPECT_EQ(Parse(ec, text + ", 1)").error.id, ORL_ERR_NUMPARMSHI) << text;
  }
}

TEST(Registry, RoutinesAreBound) {
  const OwnedContext context = FunctionContext();
  struct Row {
    const char *name;
    void *routine;
  };
  for (const Row &row :
       {Row{"DateAddDay", Address(&FUNDateAddDay)}, Row{"WeekDay", Address(&FUNWeekDay)},
        Row{"DateIFF", Address(&FUNDateIFF)}}) {
    void *const routine = ItemFind(ItemTableOf(context.get(), ORL_FUNCTION), row.name)->routine;
    EXPECT_EQ(routine, row.routine) << row.name;
  }
  EXPECT_EQ(Evaluate(context.get(), Parse(context.get(), "DateYear(2012-01-31)").exp), "2012");
}

// A routine that the library does not have is asked for under its full name.
TEST(Registry, LookupIsAskedForMissingRoutines) {
  static std::set<std::string> asked;
  asked.clear();
  const OwnedContext context = FunctionContext([](const char *name) -> void * {
    asked.insert(name);
    return nullptr;
  });
  std::set<std::string> missing;
  for (const std::string &name : ItemNames(context.get(), ORL_FUNCTION)) {
    const ExprItem *row = ItemFind(ItemTableOf(context.get(), ORL_FUNCTION), name.c_str());
    if (row->routine == nullptr) missing.insert("FUN" + name);
  }
  EXPECT_EQ(asked, missing);
}

TEST(Registry, DefinedTwice) {
  const OwnedContext context = FunctionContext();
  EXPECT_EQ(FUNDefineFunctions(context.get()), 1);
  EXPECT_EQ(ItemNames(context.get(), ORL_FUNCTION).size(), 92u);
  EXPECT_EQ(ORLDelExpItemNoCheck(context.get(), ORL_FUNCTION, "StrMid"), 1);
  EXPECT_EQ(Outcome(Parse(context.get(), "StrMid('a', 1, 2)")), "type 2");
}

TEST(ResultBlocks, Resize) {
  void *block = nullptr;
  EXPECT_EQ(FUNResizeResult(&block, 20), 1);
  ASSERT_NE(block, nullptr);
  std::memset(block, 'x', 20);
  EXPECT_EQ(FUNResizeResult(&block, 2000), 1);
  EXPECT_EQ(ORLMemSize(block), 2000u);
  EXPECT_EQ(static_cast<char *>(block)[19], 'x');
  ORLMemFree(block);
  for (size_t length : {size_t{0}, size_t{49}, size_t{50}, size_t{5000}}) {
    void *result = ORLMemAlloc(50);
    void *const before = result;
    const std::string text(length, 'y');
    EXPECT_EQ(FUNStrVarResult(&result, 50, text.c_str()), 1);
    EXPECT_EQ(text, static_cast<char *>(result));
    EXPECT_EQ(ORLMemSize(result), length < 50 ? 50u : length + 1);
    if (length < 50) {
      EXPECT_EQ(result, before);
    }
    ORLMemFree(result);
  }
}

TEST(ResultBlocks, BytesOfCharacters) {
  struct Row {
    int32_t codePage, bytes;
  };
  for (const Row &row : {Row{1252, 5}, Row{932, 10}, Row{65001, 20}}) {
    ASSERT_EQ(WRENSetCodePage(row.codePage), 1);
    EXPECT_EQ(FUNCharBytes(5), row.bytes) << row.codePage;
    EXPECT_EQ(FUNCharBytes(-5), -row.bytes) << row.codePage;
  }
  WRENSetCodePage(1252);
}

}  // namespace
