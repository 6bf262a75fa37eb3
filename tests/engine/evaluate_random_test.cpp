// Random formulas, computed by the engine as a whole and operation by operation through the
// exported routines, which use packed values and blocks: both must produce the same bytes. Some
// host routines change the context and the operators during an evaluation.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "closed/wren/memory.h"
#include "dates/date_arithmetic.h"
#include "pavni11.h"
#include "support/context.h"

namespace {

// A formula with its value.
struct Sample {
  std::string formula;
  NumberValue number = {};
  std::string text;
};

struct Generator {
  std::mt19937 random{1};
  std::vector<Sample> numbers, dates, texts;  // the input items
  EC ec = nullptr;
  int32_t page = 0;
  std::vector<Sample> formulas;  // named ones, of Number, of this code page
  bool operators = false;        // whether this sample may set them; formulas are computed later
  bool plusIsHosts = false;

  size_t Below(size_t end) { return random() % end; }
  const Sample &Item(const std::vector<Sample> &items) { return items[Below(items.size())]; }
  Sample Formula(int depth);
  Sample Operation(Sample left, char op, Sample right);
  Sample Number(int depth);
  Sample Date(int depth);
  Sample Text(int depth);
};

using Routine = OrlFunctionProc;

// Calls a routine as the engine calls one of the host.
Sample Call(const char *name, Routine routine, bool text, std::vector<Sample> args,
            const std::string &types) {
  Sample result;
  std::vector<void *> entries;
  result.formula = std::string(name) + "(";
  for (size_t i = 0; i < args.size(); ++i) {
    result.formula += (i == 0 ? "" : ", ") + args[i].formula;
    entries.push_back(types[i] == 't' ? static_cast<void *>(args[i].text.data())
                                      : static_cast<void *>(&args[i].number));
  }
  result.formula += ")";
  const int32_t size = text ? 50 : 13;
  void *block = ORLMemAlloc(static_cast<uint32_t>(size));
  EXPECT_EQ(routine(nullptr, nullptr, size, &block, name, entries.data()), 1) << result.formula;
  if (text) {
    result.text = static_cast<char *>(block);
  } else {
    std::memcpy(&result.number, block, sizeof result.number);
  }
  ORLMemFree(block);
  return result;
}

// The host's routine of '+'.
int32_t TakeLess(EC, HEXP, int32_t, int32_t, void *left, int32_t, void *right, int32_t,
                 void *result) {
  WRENNumSub(static_cast<NumberValue *>(result), static_cast<NumberValue *>(left),
             static_cast<NumberValue *>(right));
  return 1;
}
void *LookUp(const char *name) {
  return std::strcmp(name, "TakeLess") == 0 ? Address(&TakeLess) : nullptr;
}

// Routines that change what names refer to, or the routine of '+', and return their argument.
int32_t Rename(EC ec, HEXP, int32_t, void **result, const char *, void **args) {
  if (ec != nullptr) {
    AddInput(ec, "other", 0, 0, nullptr);
    ORLDeleteExpItem(ec, ORL_INPUT, "other", nullptr);
  }
  if (args[0] == nullptr) return 0;  // out of memory
  std::memcpy(*result, args[0], sizeof(NumberValue));
  return 1;
}
int32_t SetPlus(EC ec, HEXP, int32_t, void **result, const char *name, void **args) {
  if (ec != nullptr) ORLSetOperatorCallback(ec, 0, 0, name[0] == 'T' ? "TakeLess" : "none");
  if (args[0] == nullptr) return 0;  // out of memory
  std::memcpy(*result, args[0], sizeof(NumberValue));
  return 1;
}

// A new named formula, or an existing one.
Sample Generator::Formula(int depth) {
  constexpr size_t kMostFormulas = 200;
  if (formulas.size() == kMostFormulas || (!formulas.empty() && Below(2) == 0)) {
    return Item(formulas);
  }
  Sample formula = Number(depth);
  const std::string name = "Formula" + std::to_string(page) + "_" + std::to_string(formulas.size());
  Make(ec, formula.formula, name);
  formula.formula = name + "()";
  formulas.push_back(formula);
  return formula;
}

Sample Generator::Operation(Sample left, char op, Sample right) {
  Sample result;
  result.formula = "(" + left.formula + " " + op + " " + right.formula + ")";
  if (op == '+' && plusIsHosts) {
    TakeLess(nullptr, nullptr, 0, 0, &left.number, 0, &right.number, 0, &result.number);
    return result;
  }
  if (left.number.length == 0) WRENNumSetZero(&left.number);
  if (right.number.length == 0) WRENNumSetZero(&right.number);
  const NumberValue *a = &left.number;
  const NumberValue *b = &right.number;
  if (op == '/' && (WRENNumIsZero(a) != 0 || WRENNumIsZero(b) != 0)) {
    WRENNumSetZero(&result.number);
  } else {
    const auto compute = op == '+'   ? WRENNumAdd
                         : op == '-' ? WRENNumSub
                         : op == '*' ? WRENNumMul
                                     : WRENNumDiv;
    compute(&result.number, a, b);
  }
  return result;
}

Sample Generator::Number(int depth) {
  if (depth == 0) return Item(numbers);
  const auto number = [&] { return Number(depth - 1); };
  switch (Below(15)) {
    case 12:
      return operators ? Item(numbers) : Formula(depth - 1);
    case 13:
      return Call("Rename", Rename, false, {number()}, "n");
    case 14: {
      if (!operators) return Item(numbers);
      const Sample argument = number();
      plusIsHosts = Below(2) == 0;
      return Call(plusIsHosts ? "TakePlus" : "LeavePlus", SetPlus, false, {argument}, "n");
    }
    case 0:
      return Call("NumberRound", FUNNumberRound, false, {number(), number()}, "nn");
    case 1:
      return Call("NumberTruncate", FUNNumberTruncate, false, {number(), number()}, "nn");
    case 2:
      return Call("NumberAbsolute", FUNNumberAbsolute, false, {number()}, "n");
    case 3:
      return Call("NumberMod", FUNNumberMod, false, {number(), number()}, "nn");
    case 4:
      return Call("NumberIFF", FUNNumberIFF, false, {number(), number(), number(), number()},
                  "nnnn");
    case 5:
      return Call("StrLength", FUNStrLength, false, {Text(depth - 1)}, "t");
    case 6: {
      static const std::pair<const char *, Routine> fields[] = {
          {"DateYear", FUNDateYear}, {"DateMonth", FUNDateMonth},    {"DateDay", FUNDateDay},
          {"DateHour", FUNDateHour}, {"DateMinute", FUNDateMinute},  {"DateSecond", FUNDateSecond},
          {"WeekDay", FUNWeekDay},   {"DateQuarter", FUNDateQuarter}};
      const auto &[name, routine] = fields[Below(std::size(fields))];
      return Call(name, routine, false, {Date(depth - 1)}, "d");
    }
    case 7: {
      const Sample left = Date(depth - 1);
      const Sample right = Date(depth - 1);
      Sample result;
      result.formula = "(" + left.formula + " - " + right.formula + ")";
      DateDifference(&result.number, &left.number, &right.number);
      return result;
    }
    default: {
      const Sample left = number();
      return Operation(left, "+-*/"[Below(4)], number());
    }
  }
}

Sample Generator::Date(int depth) {
  if (depth == 0) return Item(dates);
  if (Below(3) == 0) {
    const Sample selector = Number(depth - 1);
    return Call("DateIFF", FUNDateIFF, false,
                {selector, Date(depth - 1), Date(depth - 1), Date(depth - 1)}, "nddd");
  }
  static const std::pair<const char *, uint16_t> units[] = {
      {"", kUnitNone},       {" MONTHS", kUnitMonth},   {" YEARS", kUnitYear},
      {" HOURS", kUnitHour}, {" MINUTES", kUnitMinute}, {" SECONDS", kUnitSecond}};
  const auto &[word, unit] = units[Below(std::size(units))];
  const Sample date = Date(depth - 1);
  Sample amount = Number(depth - 1);
  const char op = "+-"[Below(2)];
  Sample result;
  result.formula = "(" + date.formula + " " + op + " " + amount.formula + word + ")";
  if (amount.number.length == 0) WRENNumSetZero(&amount.number);
  DateArithmetic(&result.number, &date.number, &amount.number, op, unit);
  return result;
}

Sample Generator::Text(int depth) {
  if (depth == 0) return Item(texts);
  static const std::pair<const char *, Routine> whole[] = {
      {"StrUpper", FUNStrUpper}, {"StrLower", FUNStrLower}, {"StrTrim", FUNStrTrim},
      {"StrLTrim", FUNStrLTrim}, {"StrRTrim", FUNStrRTrim}, {"StrProper", FUNStrProper}};
  static const std::pair<const char *, Routine> parts[] = {{"StrLeft", FUNStrLeft},
                                                           {"StrRight", FUNStrRight}};
  const auto text = [&] { return Text(depth - 1); };
  const auto count = [&] { return Item(numbers); };
  switch (Below(6)) {
    case 0: {
      const auto &[name, routine] = whole[Below(std::size(whole))];
      return Call(name, routine, true, {text()}, "t");
    }
    case 1: {
      const auto &[name, routine] = parts[Below(std::size(parts))];
      return Call(name, routine, true, {text(), count()}, "tn");
    }
    case 2:
      return Call("StrMid", FUNStrMid, true, {text(), count(), count()}, "tnn");
    case 3:
      return Call("StrIFF", FUNStrIFF, true, {count(), text(), text(), text()}, "nttt");
    default: {
      Sample left = text();
      const Sample right = text();
      left.formula = "(" + left.formula + " || " + right.formula + ")";
      left.text += right.text;
      return left;
    }
  }
}

Generator *generator = nullptr;

int32_t ItemValue(EC, HEXP, int32_t size, void **value, const char *name) {
  const size_t place = static_cast<size_t>(name[1] - '0');
  if (name[0] == 't') {
    return FUNStrVarResult(value, size, generator->texts[place].text.c_str());
  }
  const Sample &item = (name[0] == 'n' ? generator->numbers : generator->dates)[place];
  std::memcpy(*value, &item.number, sizeof item.number);
  return 1;
}

NumberValue DateOf(int32_t year, int32_t month, int32_t day, int32_t second) {
  const DateTimeParts parts = {month, day, year, 23, 59, second, 999999};
  NumberValue date = {};
  date.length = static_cast<uint8_t>(PAVNDateToNumber(date.payload, &parts));
  return date;
}

// Items whose values are of every kind, null and foreign bytes among them.
void AddItems(EC ec) {
  for (const char *number : {"2", "-3.50", "0", "1234.5", "12345678901234567890123456", "9e152",
                             "-1e-128", "0.3333333333333333333333333", "7", "."}) {
    Sample item;
    item.formula = "n" + std::to_string(generator->numbers.size());
    WRENNumFromText(&item.number, number);
    if (number[0] == '7') std::memset(&item.number, 12, sizeof item.number);
    generator->numbers.push_back(item);
  }
  for (const NumberValue &date : {DateOf(2024, 2, 29, 0),
                                  DateOf(1, 1, 1, 59),
                                  DateOf(9999, 12, 31, 59),
                                  DateOf(1969, 7, 20, 17),
                                  {}}) {
    generator->dates.push_back({"d" + std::to_string(generator->dates.size()), date, ""});
  }
  for (const std::string &text :
       {std::string(), std::string("  Ada Lovelace "), std::string("x\x81 \xE9\xC3\xA9 "),
        std::string(60, 'm') + "\xE0 ", std::string("abcdefghijklmnopqrs")}) {
    generator->texts.push_back({"t" + std::to_string(generator->texts.size()), {}, text});
  }
  for (const Sample &item : generator->numbers)
    AddInput(ec, item.formula.c_str(), 0, 0, Address(&ItemValue));
  for (const Sample &item : generator->dates)
    AddInput(ec, item.formula.c_str(), 1, 0, Address(&ItemValue));
  for (const Sample &item : generator->texts)
    AddInput(ec, item.formula.c_str(), 2, 0, Address(&ItemValue));
  AddFunction(ec, {"Rename", 0, {{0, 0, 0}}, 0, 0, 0, Address(&Rename)});
  for (const char *name : {"TakePlus", "LeavePlus"}) {
    AddFunction(ec, {name, 0, {{0, 0, 0}}, 0, 0, 0, Address(&SetPlus)});
  }
}

bool EvaluatesTo(EC ec, HEXP exp, const Sample &sample, bool isText) {
  ORLSetOperatorCallback(ec, 0, 0, "none");
  if (isText) {
    std::string text(sample.text.size() + 1, '#');
    return ORLEvaluateExpression(ec, exp, static_cast<int32_t>(text.size()), text.data()) == 1 &&
           text == sample.text + '\0';
  }
  NumberValue value;
  return ORLEvaluateExpression(ec, exp, sizeof value, &value) == 1 &&
         std::memcmp(&value, &sample.number, sizeof value) == 0;
}

// A first evaluation that runs out of memory at some allocation keeps nothing but the program.
void EvaluateWithoutMemory(EC ec, HEXP exp, size_t allocations) {
  NumberValue number;
  void *block = ORLMemAlloc(sizeof number);
  TEST_FailAllocationsAfter(static_cast<int64_t>(allocations));
  ORLEvaluateExpressionExt(ec, exp, nullptr, &block);
  TEST_FailAllocationsAfter(-1);
  ORLMemFree(block);
}

TEST(EvaluateRandom, AgreesWithTheRoutinesOneByOne) {
  Generator random;
  generator = &random;
  const OwnedContext context(ORLCreateEC(nullptr, LookUp, nullptr, 0));
  EC ec = random.ec = context.get();
  FUNDefineFunctions(ec);
  AddItems(ec);
  for (int32_t page : {1252, 932, 65001}) {
    WRENSetCodePage(page);
    random.page = page;
    random.formulas.clear();
    for (int i = 0; i < 6000; ++i) {
      const int kind = i % 3;
      const int depth = 1 + i % 4;
      random.operators = i % 2 == 0;
      random.plusIsHosts = false;
      const Sample sample = kind == 0   ? random.Number(depth)
                            : kind == 1 ? random.Date(depth)
                                        : random.Text(depth);
      HEXP exp = Make(ec, sample.formula);
      if (!random.operators) EvaluateWithoutMemory(ec, exp, random.Below(8));
      ASSERT_TRUE(EvaluatesTo(ec, exp, sample, kind == 2))
          << sample.formula << " in " << page << " is not "
          << (kind == 2 ? sample.text : NumberText(sample.number));
      const int64_t blocks = TEST_LiveBlocks();
      ASSERT_TRUE(EvaluatesTo(ec, exp, sample, kind == 2)) << sample.formula << " again";
      ASSERT_EQ(TEST_LiveBlocks(), blocks) << sample.formula;
      ORLDestroyEXP(ec, exp);
    }
  }
  WRENSetCodePage(1252);
}

}  // namespace
