// The stored form of a context as its host sees it: what is written into how many bytes, and what a
// block of any version, valid or not, leaves in the context that reads it.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>

#include "block_support.h"
#include "closed/wren/memory.h"
#include "wren/text_model.h"

namespace {

using Texts = std::vector<std::string>;

// Pieces of a block.
std::string Text(const std::string &text) {
  return text + '\0';
}
std::string Header(int tag, int count) {
  return {static_cast<char>(tag), 0, static_cast<char>(count), static_cast<char>(count >> 8)};
}
// The start up to the operator texts; `slots` is all of them, as they are in the block.
std::string Start(int version, const std::string &slots = std::string(20, '\0')) {
  return (version == 0 ? "" : std::string(1, static_cast<char>(version))) + slots;
}
std::string Fixed(int version, const std::string &name, char subClass = 0, char kind = 1) {
  std::string row = std::string(12, '\0') + name;
  row[0] = kind;
  row.resize(version < 2 ? 52 : 77);
  row += {0, 0, subClass, 0, 0, 0, 0, 0};
  return version == 0 ? row.substr(0, 54) : row;
}
std::string Inputs(int version, const Texts &names, char subClass = 0) {
  std::string rows = Header(250, static_cast<int>(names.size()));
  for (const std::string &name : names) rows += Fixed(version, name, subClass) + Text("Get" + name);
  return rows;
}
// Rows "Name=text".
std::string Formulas(const Texts &formulas) {
  std::string rows = Header(252, static_cast<int>(formulas.size()));
  for (const std::string &row : formulas) {
    const size_t at = row.find('=');
    rows += Text(row.substr(at + 1)) + Text(row.substr(0, at));
  }
  return rows;
}

// The same in the words of StateOf.
std::string Input(const std::string &name, int subClass = 0) {
  return name + "(1,0,0," + std::to_string(subClass) + ",0,0)=Get" + name + " ";
}

const std::string kOneRow = Inputs(3, {"Amount"}), kAmount = Input("Amount"),
                  kAsked = "?GetAmount ";
const std::string kWorked = Start(3) + kOneRow + Formulas({"Net=Amount*2"});

TEST(BlockWriter, WorkedExample) {
  const OwnedContext ec = ContextFor({});
  ExprItem item = {};
  item.kind = ORL_INPUT;
  item.routineName = "GetAmount";
  std::strcpy(item.name, "Amount");
  ORLAddExpressionItem(ec.get(), &item);
  Make(ec.get(), "Amount*2", "Net");
  const auto zeros = [](size_t count) { return std::string(2 * count, '0'); };
  const std::string hex = "03" + zeros(20) + "fa000100" + "01000000" + zeros(8) + "416d6f756e74" +
                          zeros(59 + 8) + "476574416d6f756e7400" + "fc000100" +
                          "416d6f756e742a3200" + "4e657400";
  EXPECT_EQ(ORLGetECBlockSize(ec.get(), 1), 137);
  EXPECT_EQ(ORLGetECBlockSize(ec.get(), 0), 120);
  for (int time = 0; time < 2; ++time) EXPECT_EQ(Hex(BlockOf(ec.get())), hex);
  EXPECT_EQ(Hex(kWorked), hex) << "the pieces of this test";
}

struct Pieces {
  Texts operators, inputs, formulas;
};

// What fits into a capacity: of the texts and inputs each that does, of the formulas none after one
// that does not; no section after a loss, and no header without a byte after it.
std::string Fitting(const Pieces &pieces, int64_t capacity) {
  std::string block = "\x03";
  bool lost = false;
  const auto put = [&](const std::string &piece, int64_t following) {
    const bool fits = static_cast<int64_t>(block.size() + piece.size()) + following <= capacity;
    lost = lost || !fits;
    if (fits) block += piece;
  };
  for (const std::string &piece : pieces.operators) put(piece, 0);
  if (!lost) put(Header(250, static_cast<int>(pieces.inputs.size())), 1);
  if (lost) return block;
  for (const std::string &piece : pieces.inputs) put(piece, 0);
  if (!lost) put(Header(252, static_cast<int>(pieces.formulas.size())), 1);
  for (const std::string &piece : pieces.formulas) {
    if (!lost) put(piece, 0);
  }
  return block;
}

TEST(BlockWriter, EveryCapacity) {
  Pieces pieces;
  for (int i = 0; i < 20; ++i) {
    pieces.operators.push_back(Text(i % 3 == 0 ? "" : "Op" + std::to_string(i * i)));
  }
  for (const char *routine : {"GetOfLongName", "Get", "GetMore"}) {
    const std::string name(64 - 30 * pieces.inputs.size(), 'n');
    pieces.inputs.push_back(Fixed(3, name, 5) + Text(routine));
  }
  for (const char *row : {"A=1 + 1000000", "B=2", "C=3, 4"}) {
    pieces.formulas.push_back(Formulas({row}).substr(4));
  }
  const std::string whole = Fitting(pieces, INT32_MAX);
  const OwnedContext ec = ContextFor({});
  ASSERT_EQ(Load(ec.get(), whole), 1);
  const auto size = static_cast<int32_t>(whole.size());
  ASSERT_EQ(ORLGetECBlockSize(ec.get(), 1), size);
  for (int32_t capacity = -1; capacity <= size + 1; ++capacity) {
    const std::string fitting = Fitting(pieces, capacity);
    const size_t bytes = static_cast<size_t>(std::max(capacity, 1));
    const auto buffer = ExactBuffer(bytes);
    const int32_t result = ORLGetECBlock(ec.get(), capacity, buffer.get());
    ASSERT_EQ(result, static_cast<int32_t>(fitting.size())) << "capacity " << capacity;
    const std::string untouched(bytes - fitting.size(), '\x7E');
    ASSERT_EQ(Hex({buffer.get(), bytes}), Hex(fitting + untouched)) << "capacity " << capacity;
  }
  const int32_t inputsAlone = ORLGetECBlockSize(ec.get(), 0);
  EXPECT_EQ(Fitting(pieces, inputsAlone), whole.substr(0, whole.find('\xFC')));
}

TEST(BlockWriter, EmptyAndRefilledTables) {
  const OwnedContext owned = ContextFor({});
  EC ec = owned.get();
  char byte = 'x';
  EXPECT_EQ(ORLGetECBlockSize(nullptr, 1) + ORLGetECBlock(nullptr, 0, &byte) + byte, 1 + 1 + 3);
  EXPECT_EQ(ORLGetECBlock(ec, 100, nullptr), 0);
  const std::string row = Header(250, 1) + Fixed(3, "Amount") + Text("");
  const std::string times = std::string(8, '\0') + Text("OpT") + std::string(11, '\0');
  const std::string last = times.substr(0, times.size() - 1) + Text("OpX");
  // What is done, the sizes with the formulas and without, and the block.
  // clang-format off
  const struct {
    const char *what; std::function<void()> step; int32_t all, without; std::string block;
  } rows[] = {
      {"new", [] {}, 21, 21, Start(3)},
      {"an input", [&] { AddInput(ec, "Amount", 0); }, 111, 111, Start(3) + row},
      {"no input left", [&] { ORLDelExpItemNoCheck(ec, 1, "Amount"); }, 25, 25, Start(3)},
      {"a formula", [&] { Make(ec, "1", "A"); }, 33, 25, Start(3) + Formulas({"A=1"})},
      {"none left", [&] { ORLDestroyEXP(ec, ORLHEXPFromOrdinal(ec, 0)); }, 25, 25, Start(3)},
      {"operator *", [&] { ORLSetOperatorCallback(ec, 3, 0, "OpT"); }, 28, 28, Start(3, times)},
      {"last of ||", [&] { ORLSetOperatorCallback(ec, 4, 3, "OpX"); }, 31, 31, Start(3, last)},
  };
  // clang-format on
  for (const auto &[what, step, all, without, block] : rows) {
    SCOPED_TRACE(what);
    step();
    EXPECT_EQ(ORLGetECBlockSize(ec, 1), all);
    EXPECT_EQ(ORLGetECBlockSize(ec, 0), without);
    EXPECT_EQ(Hex(BlockOf(ec)), Hex(block));
  }
}

struct ReadRow {
  const char *what;
  std::string block;
  int32_t result;
  std::string log, state;
  LoadTarget target = {};
  bool formulas = true;
};

void ExpectRead(const std::vector<ReadRow> &rows) {
  for (const ReadRow &row : rows) {
    SCOPED_TRACE(std::string(row.what) + ": " + Hex(row.block));
    const int64_t before = TEST_LiveBlocks();
    OwnedContext ec = ContextFor(row.target);
    EXPECT_EQ(Load(ec.get(), row.block, row.formulas), row.result);
    EXPECT_EQ(hostLog, row.log);
    EXPECT_EQ(StateOf(ec.get()), row.state);
    ec.reset();
    EXPECT_EQ(TEST_LiveBlocks(), before);
  }
}

// clang-format off
TEST(BlockReader, OperatorsAndInputs) {
  const std::string empty(20, '\0');
  const std::string ops = empty.substr(17) + Text("OpA") + empty.substr(5) + Text("OpB");
  const std::string rows = Header(250, 2), name40(40, 'n');
  ExpectRead({
      {"nothing stored", Start(3), 1, "", ""},
      {"a byte short", Start(3).substr(0, 20), 0, "", ""},
      {"a version that is not known", "\x04" + kWorked.substr(1), 0, "", ""},
      {"the greatest first byte", "\xFF" + kWorked.substr(1), 0, "", ""},
      {"formulas not asked for", kWorked, 1, kAsked, kAmount, {}, false},
      {"a routine unknown", Start(3) + rows + Fixed(3, "A") + Text("Unknown") + kWorked.substr(25),
       0,
       "?Unknown ", "A(1,0,0,0,0,0)=Unknown! "},
      {"no lookup", kWorked, 1, "", "Amount(1,0,0,0,0,0)=GetAmount! Net:=Amount*2 ",
       {.lookup = false}},
      {"operators", Start(2, ops) + kOneRow, 1, "?OpA ?OpB " + kAsked,
       "op3=OpA op19=OpB " + kAmount},
      {"operators without lookup", Start(1, ops), 1, "", "op3=OpA! op19=OpB! ", {.lookup = false}},
      {"the last text has no end", Start(3, ops.substr(0, 25)), 0, "?OpA ", "op3=OpA "},
      {"an operator unknown", Start(3, Text("OpA") + Text("Unknown") + ops), 0, "?OpA ?Unknown ",
       "op0=OpA "},
      {"an end after the 19th", Start(3, empty.substr(2) + Text("OpA")), 0, "?OpA ", "op18=OpA "},
      {"a routine without a name", Start(3) + Header(250, 1) + Fixed(3, "A") + Text(""), 1, "? ",
       "A(1,0,0,0,0,0)= "},
      {"two of a name", Start(3) + Inputs(3, {"A", "A"}) + Formulas({"F=1", "F=2"}), 1,
       "?GetA ?GetA ",
       Input("A") + Input("A") + "F:=1 F:=2 "},
      {"a name that nothing ends", Start(1) + Inputs(1, {name40}), 1, "?Get" + name40 + " ",
       Input(name40)},
  });
}

TEST(BlockReader, SectionsAndTheirEnds) {
  const std::string v3 = Start(3), v0 = Start(0), x = "x", net = Formulas({"N=2"});
  const std::string row = Fixed(3, "A"), no = Header(250, 0);
  const std::string old = Header(251, 2) + Fixed(0, "O") + Text("Run") + Fixed(0, "P") + Text("");
  std::string two = Header(251, 1) + Fixed(0, "Old") + std::string(12, '\7');
  two[4 + 52] = 2;
  ExpectRead({
      {"one byte after the operators", v3 + "\xFA", 1, "", ""},
      {"a tag alone", v3 + no.substr(0, 2), 0, "", ""},
      {"ends after a header", v3 + no, 0, "", ""},
      {"no rows", v3 + no + net, 1, "", "N:=2 "},
      {"a count below 0", v3 + Header(250, -1) + net, 1, "", "N:=2 "},
      {"half a row", v3 + Header(250, 1) + row.substr(1), 0, "", "- "},
      {"ends after the fixed part of a row", v3 + Header(250, 1) + row, 0, "", "- "},
      {"a routine's name without end", v3 + Header(250, 1) + row + x, 0, "", "A(1,0,0,0,0,0)=! "},
      {"fewer rows than the count", v3 + Header(250, 2) + kOneRow.substr(4), 0, kAsked, kAmount + "- "},
      {"a second section of rows", v3 + kOneRow + kOneRow + net, 1, kAsked, kAmount},
      {"a section that is not known", v3 + kOneRow + "\xFA\x01\x01" + net, 1, kAsked, kAmount},
      {"bytes after all", kWorked + x + net, 1, kAsked, kAmount + "Net:=Amount*2 "},
      {"formulas before inputs", v3 + net + kOneRow, 1, "", "N:=2 "},
      {"functions where none can be", v3 + old + net, 1, "", ""},
      {"in version 2", Start(2) + old + net, 1, "", ""},
      {"in version 1", Start(1) + old + net, 1, "", ""},
      {"functions", v0 + Inputs(0, {"Amount"}) + old + net, 1, kAsked, kAmount + "N:=2 "},
      {"functions alone", v0 + old, 1, "", ""},
      {"functions with parameters", v0 + two + Text("Run") + net, 1, "", "N:=2 "},
      {"parameters cut", v0 + two.substr(0, two.size() - 1), 0, "", ""},
      {"a function without its text", v0 + two, 0, "", ""},
      {"functions that end with the header", v0 + Header(251, 0), 0, "", ""},
      {"formulas that end with the tag", v3 + net.substr(0, 2), 0, "", ""},
      {"the same, not asked for", v3 + net.substr(0, 2), 1, "", "", {}, false},
      {"formulas that end with the header", v3 + net.substr(0, 4), 0, "", ""},
      {"no formulas", v3 + Header(252, -1) + x, 1, "", ""},
      {"a text without end", v3 + Header(252, 2) + net.substr(4) + x, 0, "", "N:=2 "},
      {"a text without name", v3 + Header(252, 2) + net.substr(4) + Text(x), 0, "", "N:=2 "},
      {"a name without end", Start(1) + Header(252, 2) + net.substr(4) + Text("1") + x, 0, "",
       "N:=2 "},
  });
}

TEST(BlockReader, Formulas) {
  const auto rows = [](int version, const Texts &all) { return Start(version) + Formulas(all); };
  const std::string name300(300, 'n');
  ExpectRead({
      {"a forward reference", rows(3, {"A=B()", "B=2"}), 1, "", "A:=B() B:=2 "},
      {"blanks in it", rows(2, {"A=B  ()", "B=2"}), 1, "", "A:=B  () B:=2 "},
      {"a chain", rows(3, {"A=B()", "B=C()", "C=3"}), 1, "", "A:=B() B:=C() C:=3 "},
      {"in ranges and sets", rows(3, {"R=(B()) AND 3", "S=1, B()", "B=2"}), 1, "",
       "R:=(B()) AND 3 S:=1, B() B:=2 "},
      {"a call in a text is none", rows(3, {"A=B() || ' A() '", "B='b'"}), 1, "",
       "A:=B() || ' A() ' B:='b' "},
      {"in an old block", rows(1, {"Z=1", "A=B()", "B=2"}), 0, "!B() 103@0+2 ", "Z:=1 "},
      {"in the oldest", rows(0, {"A=B()", "B=2"}), 0, "!B() 103@0+2 ", ""},
      {"without parentheses", rows(3, {"A=B", "B=2"}), 0, "", ""},
      {"a formula that fails", rows(3, {"A=B()", "B=2", "W=1 +", "C=3"}), 0, "", "B:=2 "},
      {"one that fails later", rows(3, {"A=B() + 'a'", "B=2"}), 0, "", "B:=2 "},
      {"in a cycle", rows(3, {"A=B()", "B=A()", "C=1"}), 0, "", "C:=1 "},
      {"itself", rows(2, {"A=A()"}), 0, "", ""},
      {"no names", rows(3, {"=F()", "=1, 2", "F=1"}), 1, "", "Formula1:=F() Set1:=1, 2 F:=1 "},
      {"generated names", rows(3, {"Formula1=1", "=2"}), 1, "", "Formula1:=1 Formula2:=2 "},
      {"a name that is none", rows(3, {"a b=1"}), 0, "", ""},
      {"a word longer than names", rows(3, {"A=" + name300 + "()", name300 + "=1"}), 0, "", ""},
      {"a word that begins with a name", rows(3, {"A=BB()", "B=2"}), 0, "", ""},
  });
}

TEST(BlockReader, WhatChangedSinceOlderVersions) {
  const auto inputs = [](int version) { return Start(version) + Inputs(version, {"Amount"}, 5); };
  const std::string days = Start(0) + Inputs(0, {"Days"}), asked = "?GetDays ";
  const std::string renamed = "_" + Input("Days");
  ExpectRead({
      {"3 has the class as stored", inputs(3), 1, kAsked, Input("Amount", 5), {.reportAverage = 1}},
      {"2 takes that of ReportAverage", inputs(2), 1, kAsked, Input("Amount", 7),
       {.reportAverage = 1}},
      {"1 does so", inputs(1), 1, kAsked, Input("Amount", 7), {.reportAverage = 1}},
      {"0 does so", inputs(0), 1, kAsked, Input("Amount", 7), {.reportAverage = 1}},
      {"0 has none of its own", inputs(0), 1, kAsked, kAmount},
      {"1 has", inputs(1), 1, kAsked, Input("Amount", 5)},
      {"a function without parentheses", inputs(2), 1, kAsked, Input("Amount", 7),
       {.reportAverage = -1}},
      {"a name that is a unit", days + Formulas({"F=Days*2"}), 1, asked, renamed + "F:=_Days*2 "},
      {"it stays in 1", Start(1) + Inputs(1, {"Days"}), 1, asked, Input("Days")},
      {"the stored text is reported", days + Formulas({"F=Days*Nope"}), 0,
       asked + "!Days*Nope 102@6+4 ", renamed},
      {"units change too", days + Formulas({"F=2012-01-31 + 7 DAYS"}), 0,
       asked + "!2012-01-31 + 7 DAYS 109@16+5 ", renamed},
      {"from the name on", Start(0) + Formulas({"A='a day '", "HOUR=1", "B='a day '"}), 1, "",
       "A:='a day ' _HOUR:=1 B:='a _day ' "},
      {"every unit", days + Formulas({"F='( year MonthS DAY,\"day\"|minute%second dayss )'"}), 1,
       asked, renamed + "F:='( _year _MonthS _DAY,\"day\"|_minute%_second dayss )' "},
      {"no other word", days + Formulas({"F='( HOUR(Start)+Years*days2*to_day )'"}), 1, asked,
       renamed + "F:='( _HOUR(Start)+_Years*days2*to_day )' "},
  });
}
// clang-format on

TEST(BlockReader, NothingToRead) {
  const OwnedContext ec = ContextFor({});
  EXPECT_EQ(Load(nullptr, kWorked), 0);
  EXPECT_EQ(ORLSetECContents(ec.get(), 100, nullptr, 1, nullptr), 0);
  for (int32_t size : {INT32_MIN, -1, 0, 1, 2}) {
    EXPECT_EQ(ORLSetECContents(ec.get(), size, kWorked.data(), 1, nullptr), 0) << size;
  }
  EXPECT_EQ(StateOf(ec.get()), "");
}

TEST(BlockReader, SecondBlockIsAddedToTheFirst) {
  const OwnedContext ec = ContextFor({});
  EXPECT_EQ(Load(ec.get(), Start(3) + Inputs(3, {"A"}) + Formulas({"F=A"})), 1);
  EXPECT_EQ(Load(ec.get(), Start(3) + Inputs(3, {"B"}) + Formulas({"G=A+B"})), 1);
  EXPECT_EQ(StateOf(ec.get()), Input("A") + Input("B") + "F:=A G:=A+B ");
}

TEST(BlockReader, CopiesRowsOfADamagedKind) {
  for (const char kind : {'\0', '\2', '\3', 'c'}) {
    const OwnedContext ec = ContextFor({});
    std::string row = Fixed(3, "A", 0, kind) + Text("Get");
    row[77] = 127;  // a count of parameters that no input has
    ASSERT_EQ(Load(ec.get(), Start(3) + Header(250, 1) + row + Formulas({"F=A"})), 1);
    const OwnedContext copy(ORLCopyEC(ec.get()));
    EXPECT_EQ(StateOf(copy.get()), StateOf(ec.get())) << +kind;
  }
}

// Formulas as texts, "Name=text" each; errors are shown as "index id@offset+length".
TEST(ParseFormulas, WhateverTheirOrder) {
  const struct {
    Texts formulas;
    std::string wrong, state;
  } rows[] = {
      {{}, "", ""},
      {{"A=B() || C()", "C='c'", "B=C() || C()"}, "", "C:='c' B:=C() || C() A:=B() || C() "},
      {{"=F()", "F=1"}, "", "F:=1 Formula1:=F() "},
      {{"A=B()", "B=2", "W=1 +", "C=3"}, "2 109@3+1", "B:=2 "},
      {{"C=1", "A=B() + 'a'", "B=2"}, "1 100@6+3", "C:=1 B:=2 "},
      {{"A=1", "A=2"}, "", "A:=1 A:=2 "},
      {{"A=1", "a b=2"}, "1 107@0+1", "A:=1 "},
      {{"C=1", "D=A()", "A=B()", "B=A()"}, "1 125@0+0", "C:=1 "},
      {{"A=A()"}, "0 125@0+0", ""},
  };
  for (const auto &row : rows) {
    Texts parts;
    for (const std::string &formula : row.formulas) {
      parts.push_back(formula.substr(0, formula.find('=')));
      parts.push_back(formula.substr(formula.find('=') + 1));
    }
    std::vector<OrlFormulaText> texts;
    for (size_t i = 0; i < parts.size(); i += 2) {
      texts.push_back({parts[i + 1].c_str(), parts[i].empty() ? nullptr : parts[i].c_str()});
    }
    const OwnedContext ec = ContextFor({});
    int32_t wrong = -1;
    FormulaError error = {};
    const auto count = static_cast<int32_t>(texts.size());
    const bool good = ORLParseFormulas(ec.get(), count, texts.data(), &wrong, &error) == 1;
    SCOPED_TRACE(testing::PrintToString(row.formulas));
    EXPECT_EQ(good ? "" : std::to_string(wrong) + " " + Outcome({nullptr, error, 0}), row.wrong);
    EXPECT_EQ(StateOf(ec.get()), row.state);
    EXPECT_EQ(StateOf(OwnedContext(ORLCopyEC(ec.get())).get()), row.state);
  }
  FormulaError error = {};
  EXPECT_EQ(ORLParseFormulas(nullptr, 0, nullptr, nullptr, &error), 0);
  EXPECT_EQ(error.id, ORL_ERR_GENERAL);
}

// As many formulas as a block can hold, each of which needs the next, and the first one all, the
// last of the chain before them.
TEST(BlockReader, LongChains) {
  constexpr int kCount = 32767;
  std::vector<int> order(kCount);
  std::iota(order.begin(), order.end(), 0);
  for (const char *what : {"worst order", "random order"}) {
    SCOPED_TRACE(what);
    Texts rows;
    for (const int i : order) {
      std::string text = i + 1 < kCount ? "F" + std::to_string(i + 1) + "()" : "1";
      for (int call = kCount - 1; i == 0 && call != 1; --call) {
        text.insert(text.rfind('F'), "F" + std::to_string(call) + "() + ");
      }
      rows.push_back("F" + std::to_string(i) + "=" + text);
    }
    const std::string block = Start(3) + Formulas(rows);
    const OwnedContext ec = ContextFor({});
    EXPECT_EQ(Load(ec.get(), block), 1);
    EXPECT_TRUE(BlockOf(ec.get()) == block);
    std::shuffle(order.begin(), order.end(), std::mt19937(1));
  }
}

// A host routine may delete the rows that have been read.
TEST(BlockReader, LookupThatDeletesRows) {
  static EC loading = nullptr;
  const OwnedContext written(ORLCreateEC(nullptr, nullptr, nullptr, 0));
  for (const char *name : {"Amount", "Tax", "Rate"}) {
    ExprItem row = {};
    row.kind = ORL_INPUT;
    std::strcpy(row.name, name);
    row.routineName = "Value";
    ORLAddExpressionItem(written.get(), &row);
  }
  const OwnedContext ec(ORLCreateEC(
      nullptr,
      [](const char *) { return ORLDeleteAllECVars(loading), static_cast<void *>(&loading); },
      nullptr, 0));
  loading = ec.get();
  EXPECT_EQ(Load(ec.get(), BlockOf(written.get())), 1);
  EXPECT_EQ(ItemNames(ec.get(), ORL_INPUT).size(), 0u);
}

// A chain whose end half the rows call, all under one name that is called itself: each could close
// a cycle.
TEST(BlockReader, ManyRowsOfOneName) {
  constexpr int kCount = 32767;
  Texts rows = {"F0=1", "Z=D()"};
  for (int i = 1; i < kCount / 2; ++i) {
    rows.push_back("F" + std::to_string(i) + "=F" + std::to_string(i - 1) + "()");
  }
  const std::string last = rows.back().substr(0, rows.back().find('='));
  while (rows.size() < kCount) rows.push_back("D=" + last + "()");
  const OwnedContext ec = ContextFor({});
  EXPECT_EQ(Load(ec.get(), Start(3) + Formulas(rows)), 1);
  EXPECT_EQ(ORLGetExpressionCount(ec.get()), kCount);
}

// The rows "| offset | bytes | meaning |" of the page, where "00 x 20" is as many zeros.
TEST(BlockPage, DumpIsWhatTheWriterWrites) {
  std::ifstream page("docs/block-format.md");
  std::string dump, line, bytes;
  while (std::getline(page, line) && line != "## A block in bytes") continue;
  while (std::getline(page, line)) {
    std::istringstream row(line);
    size_t offset = 0, times = 1;
    if (row.get() != '|' || !(row >> offset) || !std::getline(row.ignore(9, '|'), bytes, '|'))
      continue;
    EXPECT_EQ(offset, dump.size()) << line;
    std::istringstream words(bytes);
    for (std::string word; words >> word;) {
      if (word != "x") dump += Unhex(word);
      if (word == "x" && words >> times) dump.append(times - 1, dump.back());
    }
  }
  const OwnedContext ec = ContextFor({});
  EXPECT_EQ(Load(ec.get(), dump), 1) << Hex(dump);
  EXPECT_EQ(StateOf(ec.get()),
            "op0=OpAdd Amount(1,0,0,7,0,0)=GetAmount Start(1,1,0,0,0,0)=GetStart "
            "Gross:=Net() * 1.2 Net:=Amount + 10 Low:=Amount AND 100 ");
  EXPECT_EQ(Hex(BlockOf(ec.get())), Hex(dump));
}

}  // namespace
