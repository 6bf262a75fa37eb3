// The built-in functions of a context, and the routines for result blocks.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "engine/items.h"
#include "functions/result_block.h"
#include "support/context.h"

namespace {

// Each row's parameters have types of their own: a call with one argument of each type parses with
// the row's type, and one argument more does not. Each has its routine, so that the host's lookup
// is never called.
TEST(Registry, Rows) {
  static std::string asked;
  const OwnedContext context(ORLCreateEC(
      nullptr, [](const char *name) { return asked += name, Address(&HostValue); }, nullptr, 0));
  EC ec = context.get();
  EXPECT_EQ(FUNDefineFunctions(ec), 1);
  AddInput(ec, "no routine and no name of one", 0, 0, nullptr);
  const char *const literals[] = {"1.5", "2012-01-31", "'a'"};
  std::string signatures;
  for (const std::string &name : ItemNames(ec, ORL_FUNCTION)) {
    const ExprItem *row = ItemFind(ItemTableOf(ec, ORL_FUNCTION), name.c_str());
    EXPECT_EQ(std::string(row->routineName), "FUN" + name);
    EXPECT_EQ(row->firstOptional + row->optionalCount + row->itemFlags, 0) << name;
    signatures += name + " " + std::to_string(row->dataType) + ":";
    std::string call = name;
    for (int i = 0; i < row->paramCount; ++i) {
      const ParamRecord parameter = ItemParameters(row)[i];
      EXPECT_EQ(parameter.mode + parameter.subClass, 0) << name;
      signatures += std::to_string(parameter.dataType);
      call += (i == 0 ? "(" : ", ") + std::string(literals[parameter.dataType]);
    }
    signatures += ", ";
    EXPECT_EQ(Outcome(Parse(ec, call + ")")), "type " + std::to_string(row->dataType)) << call;
    EXPECT_EQ(Parse(ec, call + ", 1)").error.id, ORL_ERR_NUMPARMSHI) << call;
    EXPECT_TRUE(row->routine != nullptr) << name;
  }
  EXPECT_EQ(asked, "");
  EXPECT_EQ(signatures,
            "DateAddDay 1:10, DateYear 0:1, DateMonth 0:1, DateDay 0:1, DateHour 0:1, DateMinute "
            "0:1, DateSecond 0:1, DateMonthBegin 1:1, DateMonthEnd 1:1, DateToStr 2:1, "
            "DateConstruct 1:000000, StrMid 2:200, StrRight 2:20, StrLeft 2:20, StrLength 0:2, "
            "StrRTrim 2:2, StrLTrim 2:2, StrRepeat 2:20, StrPad 2:20, StrCompare 0:22, StrIFF "
            "2:0222, StrCase 2:02, StrProper 2:2, StrReplace 2:2002, StrScan 0:22, StrSpaces 2:0, "
            "StrToDate 1:2, StrToNumber 0:2, StrUpper 2:2, NumberAbsolute 0:0, NumberMod 0:00, "
            "NumberToStr 2:00, NumberToCurrency 2:0, NumberCountryFmt 2:0, NumberRound 0:00, "
            "NumberTruncate 0:00, StrLower 2:2, NumberIFF 0:0000, DateIFF 1:0111, DateToStrPicture "
            "2:12, NumberToStrPicture 2:02, StrTrim 2:2, StrTranslate 2:222, Power 0:00, WeekDay "
            "0:1, DateQuarter 0:1, ");
  void *const weekDay = ItemFind(ItemTableOf(ec, ORL_FUNCTION), "WeekDay")->routine;
  EXPECT_EQ(weekDay, Address(&FUNWeekDay));
  EXPECT_EQ(Evaluate(ec, Make(ec, "DateYear(2012-01-31)")), "2012");
  EXPECT_EQ(FUNDefineFunctions(ec), 1);  // adding twice is not an error
  EXPECT_EQ(ItemNames(ec, ORL_FUNCTION).size(), 92u);
}

TEST(Registry, ResultBlocks) {
  void *block = nullptr;
  EXPECT_EQ(FUNResizeResult(&block, 2000), 1);
  EXPECT_EQ(ORLMemSize(block), 2000u);
  ORLMemFree(block);
  for (const size_t length : {0u, 49u, 50u, 5000u}) {
    void *result = ORLMemAlloc(50);
    void *const before = result;
    const std::string text(length, 'y');
    EXPECT_EQ(FUNStrVarResult(&result, 50, text.c_str()), 1);
    EXPECT_EQ(text, static_cast<char *>(result));
    EXPECT_EQ(ORLMemSize(result), length < 50 ? 50u : length + 1);
    EXPECT_TRUE(length >= 50 || result == before) << length;
    ORLMemFree(result);
  }
}

}  // namespace
