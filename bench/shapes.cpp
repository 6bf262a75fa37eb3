// Formulas of many shapes, each compared with the same work in plain C++: values that differ from
// row to row come from a routine, and every node is a call of its own.
#include <benchmark/benchmark.h>
#include <pavni11.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <string>

#include "bench/contexts.h"
#include "bench/plain.h"

namespace {

constexpr size_t kRowCount = 256;
constexpr size_t kNumbers = 3;  // A, B, C: with 2, 3 and no decimals

struct Row {
  NumberValue numbers[kNumbers];
  NumberValue dates[2];
  Packed plainNumbers[kNumbers];
  int32_t days[2];  // since 1970
  std::string name, city, digits;
};

Row rows[kRowCount];
size_t rowNow = 0;

NumberValue NumberFrom(const std::string &text) {
  NumberValue number = {};
  WRENNumFromText(&number, text.c_str());
  return number;
}

NumberValue DateFromDays(int32_t days) {
  constexpr int32_t kDayNumberOf1970 = 2440588;
  DateTimeParts parts = {};
  PAVNDaysToDate(days + kDayNumberOf1970, &parts);
  NumberValue date = {};
  date.length = static_cast<uint8_t>(PAVNDateToNumber(date.payload, &parts));
  return date;
}

void FillRows() {
  constexpr const char *kNames[] = {"Alexandra", "bob", "mary ann",
                                    "Dmitri",    "Jo",  "Penelope O'Hara"};
  constexpr const char *kCities[] = {"Seattle", "new york", "Ulm", "San Francisco", "Wellington"};
  uint32_t state = 1;
  const auto next = [&](uint32_t bound) {
    state = state * 1664525 + 1013904223;
    return static_cast<int32_t>((state >> 8) % bound);
  };
  for (Row &row : rows) {
    const int32_t places[kNumbers] = {2, 3, 0};
    for (size_t i = 0; i < kNumbers; ++i) {
      const int32_t c = next(i == 2 ? 900 : 90000) + 1;
      row.plainNumbers[i] = Constant(c, places[i]);
      char text[32];
      std::snprintf(text, sizeof text, "%.*f", places[i], ToDouble(row.plainNumbers[i]));
      row.numbers[i] = NumberFrom(text);
      if (i == 0) {
        row.digits = text;
      }
    }
    for (size_t i = 0; i < 2; ++i) {
      row.days[i] = next(20000);
      row.dates[i] = DateFromDays(row.days[i]);
    }
    row.name = kNames[next(std::size(kNames))];
    row.city = kCities[next(std::size(kCities))];
  }
}

template <size_t index>
int32_t NumberItem(EC /*ec*/, HEXP /*exp*/, int32_t /*size*/, void **value, const char * /*name*/) {
  *static_cast<NumberValue *>(*value) = rows[rowNow].numbers[index];
  return 1;
}
template <size_t index>
int32_t DateItem(EC /*ec*/, HEXP /*exp*/, int32_t /*size*/, void **value, const char * /*name*/) {
  *static_cast<NumberValue *>(*value) = rows[rowNow].dates[index];
  return 1;
}
template <std::string Row::*text>
int32_t TextItem(EC /*ec*/, HEXP /*exp*/, int32_t size, void **value, const char * /*name*/) {
  return FUNStrVarResult(value, size, (rows[rowNow].*text).c_str());
}

int32_t LargerRoutine(EC /*ec*/, HEXP /*exp*/, int32_t /*size*/, void **result,
                      const char * /*name*/, void **args) {
  const auto *a = static_cast<NumberValue *>(args[0]);
  const auto *b = static_cast<NumberValue *>(args[1]);
  *static_cast<NumberValue *>(*result) = WRENNumCompare(a, b) < 0 ? *b : *a;
  return 1;
}

void AddLarger(EC ec) {
  ORL_EXPR_ITEM_WITH(2) row = {};
  row.item.kind = ORL_FUNCTION;
  row.item.dataType = ORL_TYPE_NUMBER;
  row.item.routine = reinterpret_cast<void *>(LargerRoutine);
  row.item.paramCount = 2;
  std::snprintf(row.item.name, sizeof row.item.name, "Larger");
  ORLAddExpressionItem(ec, &row.item);
}

EC MakeShapesContext() {
  EC ec = MakeContext({0, 0, 0});
  AddItem(ec, "A", ORL_TYPE_NUMBER, NumberItem<0>);
  AddItem(ec, "B", ORL_TYPE_NUMBER, NumberItem<1>);
  AddItem(ec, "C", ORL_TYPE_NUMBER, NumberItem<2>);
  AddItem(ec, "D1", ORL_TYPE_DATE, DateItem<0>);
  AddItem(ec, "D2", ORL_TYPE_DATE, DateItem<1>);
  AddItem(ec, "Name", ORL_TYPE_STRING, TextItem<&Row::name>);
  AddItem(ec, "City", ORL_TYPE_STRING, TextItem<&Row::city>);
  AddItem(ec, "Digits", ORL_TYPE_STRING, TextItem<&Row::digits>);
  AddLarger(ec);
  MustParse(ec, "A-B", "Net");
  MustParse(ec, "Net()+C", "Total");
  return ec;
}

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;
using Text = std::string;

struct Answer {
  Packed number;
  Text text;
};

// Called through pointers, as the host's routines are.
template <size_t index>
void ReadNumber(Packed *value) {
  *value = rows[rowNow].plainNumbers[index];
}
void ReadDay(size_t index, int32_t *day) {
  *day = rows[rowNow].days[index];
}
void ReadText(Text Row::*column, const char **text) {
  *text = (rows[rowNow].*column).c_str();
}
void (*readDay)(size_t, int32_t *) = ReadDay;
void (*readText)(Text Row::*, const char **) = ReadText;

int32_t D(size_t index) {
  int32_t day = 0;
  readDay(index - 1, &day);
  return day;
}
[[gnu::noinline]] Text TextOf(Text Row::*column) {
  const char *text = nullptr;
  readText(column, &text);
  return text;
}
Text Name() {
  return TextOf(&Row::name);
}
Text City() {
  return TextOf(&Row::city);
}

// A tree under construction.
struct Tree {
  const PlainNode *root;
};
Tree Leaf(void (*read)(Packed *)) {
  return {new PlainNode{read, nullptr, nullptr, nullptr, {}}};
}
Tree Fixed(int64_t coefficient, int32_t scale) {
  return {new PlainNode{nullptr, nullptr, nullptr, nullptr, Constant(coefficient, scale)}};
}
Tree Node(void (*operation)(Packed *, const Packed &, const Packed &), Tree left, Tree right) {
  return {new PlainNode{nullptr, operation, left.root, right.root, {}}};
}
Tree operator+(Tree a, Tree b) {
  return Node(Add, a, b);
}
Tree operator-(Tree a, Tree b) {
  return Node(Subtract, a, b);
}
Tree operator*(Tree a, Tree b) {
  return Node(Multiply, a, b);
}
Tree operator/(Tree a, Tree b) {
  return Node(Divide, a, b);
}
// As formulas write them. NOLINTBEGIN(readability-identifier-naming)
const Tree A = Leaf(ReadNumber<0>);
const Tree B = Leaf(ReadNumber<1>);
const Tree C = Leaf(ReadNumber<2>);
// NOLINTEND(readability-identifier-naming)
const Tree kNet = A - B;
const Tree kTotal = kNet + C;

int32_t SignOfNet() {
  Packed net;
  Walk(kNet.root, &net);
  return SignOf(net);
}
// Reads all, as a function of four values does.
[[gnu::noinline]] void ReadChosen(Packed *value) {
  Packed choices[3];
  const int32_t sign = SignOfNet();
  Walk(A.root, &choices[0]);
  Walk(C.root, &choices[1]);
  Walk(B.root, &choices[2]);
  *value = choices[sign + 1];
}
[[gnu::noinline]] void ReadNameLength(Packed *value) {
  *value = Constant(static_cast<int64_t>(Name().size()), 0);
}
[[gnu::noinline]] void ReadDigits(Packed *value) {
  int64_t c = 0;
  int32_t scale = 0;
  bool behind = false;
  for (const char letter : TextOf(&Row::digits)) {
    if (letter == '.') {
      behind = true;
    } else {
      c = c * 10 + (letter - '0');
      scale += behind ? 1 : 0;
    }
  }
  *value = Constant(c, scale);
}
[[gnu::noinline]] Text TextOfNumber(Tree tree, int32_t places) {
  Packed number;
  Walk(tree.root, &number);
  char text[40];
  std::snprintf(text, sizeof text, "%.*f", places, ToDouble(number));
  return text;
}

[[gnu::noinline]] Text Joined(const Text &a, const Text &b) {
  return a + b;
}
[[gnu::noinline]] Text Part(const Text &a, size_t from, size_t length) {
  return from < a.size() ? a.substr(from, length) : Text();
}
[[gnu::noinline]] Text LastOf(const Text &a, size_t length) {
  return a.size() <= length ? a : a.substr(a.size() - length);
}
[[gnu::noinline]] Text Lower(Text a) {
  for (char &letter : a) {
    letter = static_cast<char>(letter >= 'A' && letter <= 'Z' ? letter + 32 : letter);
  }
  return a;
}

[[gnu::noinline]] Text ChosenWord() {
  const Text words[] = {"less", "equal", "more"};
  return words[SignOfNet() + 1];
}

year_month_day DateOf(int32_t day) {
  return sys_days{days{day}};
}
int32_t DayOf(const year_month_day &date) {
  return static_cast<int32_t>(sys_days{date}.time_since_epoch().count());
}
// A date is stored by its parts, so a move by days converts to a day number and back.
[[gnu::noinline]] year_month_day Moved(const year_month_day &date, int32_t by) {
  return sys_days{date} + days{by};
}
[[gnu::noinline]] Packed DaysBetween(const year_month_day &a, const year_month_day &b) {
  return Constant(DayOf(a) - DayOf(b), 0);
}
[[gnu::noinline]] year_month_day MonthEnd(const year_month_day &date) {
  return date.year() / date.month() / std::chrono::last;
}
[[gnu::noinline]] Text DateText(const year_month_day &date) {
  char text[40];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  return text;
}

struct Shape {
  const char *formula;
  char kind;  // n: of decimals, t: of texts, d: of dates
  bool isText;
  Tree tree;
  void (*plain)(Answer &answer);  // null: the tree
};

#define TREE(kind, formula, tree) \
  { formula, kind, false, tree, nullptr }
#define NUMBER(kind, formula, value)                                        \
  {                                                                         \
    formula, kind, false, {}, [](Answer &answer) { answer.number = value; } \
  }
#define TEXT(kind, formula, value)                                       \
  {                                                                      \
    formula, kind, true, {}, [](Answer &answer) { answer.text = value; } \
  }

const Tree kOne = Fixed(1, 0);

const Shape kShapes[] = {
    TREE('n', "A*1.19", A *Fixed(119, 2)),
    TREE('n', "A+B+C+A+B+C+A+B+C+A+B", A + B + C + A + B + C + A + B + C + A + B),
    TREE('n', "A+B-C*3+B*8-C+A*3-B+C-A",
         A + B - C * Fixed(3, 0) + B * Fixed(8, 0) - C + A * Fixed(3, 0) - B + C - A),
    TREE('n', "(A+B)*(A-B)*0.5+(C-A)*(C+1)",
         (A + B) * (A - B) * Fixed(5, 1) + (C - A) * (C + kOne)),
    TREE('n', "A/B", A / B),
    TREE('n', "(A+B)/(C*C+1)", (A + B) / (C * C + kOne)),
    TREE('n', "NumberRound(A*B,1)", Node(Round, A *B, Fixed(1, 0))),
    TREE('n', "NumberTruncate(A*B,0)", Node(Truncate, A *B, Fixed(0, 0))),
    TREE('n', "NumberAbsolute(A-B)+NumberMod(C,7)",
         Node(Absolute, A - B, {}) + Node(Remainder, C, Fixed(7, 0))),
    TREE('n', "NumberIFF(A-B,A,C,B)", Leaf(ReadChosen)),
    TREE('n', "Total()*2+Net()", kTotal *Fixed(2, 0) + kNet),
    TREE('n', "Larger(A,B)+Larger(B,C)", Node(Larger, A, B) + Node(Larger, B, C)),
    TREE('t', "StrLength(Name)*A", Leaf(ReadNameLength) * A),
    TREE('t', "StrToNumber(Digits)+1", Leaf(ReadDigits) + kOne),
    TEXT('t', "Name || ', ' || City", Joined(Joined(Name(), ", "), City())),
    TEXT('t', "StrMid(Name,1,4) || StrRight(City,3)",
         Joined(Part(Name(), 1, 4), LastOf(City(), 3))),
    TEXT('t', "StrLower(StrLeft(Name,5))", Lower(Part(Name(), 0, 5))),
    TEXT('t', "StrIFF(A-B,'less','equal','more')", ChosenWord()),
    TEXT('t', "NumberToStr(A,2) || ' EUR'", Joined(TextOfNumber(A, 2), " EUR")),
    TEXT('t', "StrReplace(Name,0,1,'x')", Name().replace(0, 1, "x")),
    NUMBER('d', "D2-D1", DaysBetween(DateOf(D(2)), DateOf(D(1)))),
    NUMBER('d', "D1+30 DAYS-D2", DaysBetween(Moved(DateOf(D(1)), 30), DateOf(D(2)))),
    NUMBER('d', "DateMonthEnd(D1)-D1", DaysBetween(MonthEnd(DateOf(D(1))), DateOf(D(1)))),
    NUMBER('d', "WeekDay(D1)",
           Constant((std::chrono::weekday{sys_days{DateOf(D(1))}}.c_encoding() + 1) % 7, 0)),
    TEXT('d', "DateToStrPicture(D1,'yyyy-mm-dd')", DateText(DateOf(D(1)))),
};

[[gnu::noinline]] void ComputePlain(const Shape &shape, Answer &answer) {
  if (shape.plain != nullptr) {
    shape.plain(answer);
  } else {
    Walk(shape.tree.root, &answer.number);
  }
}

bool SameAnswer(const Shape &shape, const NumberValue &number, const char *text,
                const Answer &plain) {
  if (shape.isText) {
    return plain.text == text;
  }
  double value = 0;
  WRENNumToDouble(&number, &value);
  const double expected = ToDouble(plain.number);
  return std::fabs(value - expected) <= 1e-12 * (std::fabs(expected) + 1);
}

// Computes all rows once, by both; false when a result differs.
bool AllSame(EC ec, HEXP exp, const Shape &shape) {
  for (rowNow = 0; rowNow < kRowCount; ++rowNow) {
    NumberValue number = {};
    char text[100] = "";
    Answer plain = {};
    ComputePlain(shape, plain);
    void *target = shape.isText ? static_cast<void *>(text) : &number;
    if (ORLEvaluateExpression(ec, exp, sizeof text, target) == 0 ||
        !SameAnswer(shape, number, text, plain)) {
      return false;
    }
  }
  rowNow = 0;
  return true;
}

void NextRow() {
  rowNow = (rowNow + 1) % kRowCount;
}

void ShapeEngine(benchmark::State &state) {
  const Shape &shape = kShapes[state.range(0)];
  EC ec = MakeShapesContext();
  HEXP exp = MustParse(ec, shape.formula, "Measured");
  if (!AllSame(ec, exp, shape)) {
    state.SkipWithError("a wrong value");
  }
  char text[100] = "";
  for ([[maybe_unused]] auto step : state) {
    ORLEvaluateExpression(ec, exp, sizeof text, text);
    benchmark::DoNotOptimize(text);
    NextRow();
  }
  state.SetLabel(std::string(1, shape.kind) + shape.formula);
  ORLDestroyEC(ec);
}

void ShapePlain(benchmark::State &state) {
  const Shape &shape = kShapes[state.range(0)];
  Answer answer = {};
  rowNow = 0;
  for ([[maybe_unused]] auto step : state) {
    ComputePlain(shape, answer);
    benchmark::DoNotOptimize(answer);
    NextRow();
  }
}

[[maybe_unused]] const bool kFilled = (FillRows(), true);
BENCHMARK(ShapeEngine)->DenseRange(0, std::size(kShapes) - 1);
BENCHMARK(ShapePlain)->DenseRange(0, std::size(kShapes) - 1);

}  // namespace
