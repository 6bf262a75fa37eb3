// Saving, selecting and deleting in the editor, and the repair of a block while it loads.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "closed/wren/memory.h"
#include "editor/session.h"
#include "engine/context.h"
#include "support/cases.h"
#include "support/context.h"

namespace {

using Answers = std::vector<int32_t>;

// What the host does when it is asked for permission to delete, notified of a new name, or asked to
// list values.
int32_t (*asked)(EC, HEXP);
void (*renamed)(EC), (*listed)(EC);
std::string hostCalls;

int32_t Ask(EC ec, HEXP exp, void *dialog) {
  hostCalls += "delete " + NameOf(ec, exp) + (dialog == ORLHeadlessFind("EXPBILD") ? " " : "? ");
  return asked == nullptr ? 1 : asked(ec, exp);
}
int32_t Rename(EC ec, const char *from, const char *to) {
  hostCalls += std::string("rename ") + from + " " + to + " ";
  if (renamed != nullptr) renamed(ec);
  return 1;
}
void List(EC ec, const char *, void *, int32_t, int32_t *) {
  if (listed != nullptr) listed(ec);
}

std::vector<std::string> Stored(EC ec) {
  std::vector<std::string> all;
  for (int32_t i = 0; i < ORLGetExpressionCount(ec); ++i) {
    HEXP exp = ORLHEXPFromOrdinal(ec, i);
    all.push_back(NameOf(ec, exp) + "=" + TextOf(ec, exp));
  }
  return all;
}

// Total uses Price.
struct SaveContext : HostedContext {
  explicit SaveContext(bool modes = true) : HostedContext(ORL_FLAG_RANGES) {
    asked = nullptr;
    renamed = listed = nullptr;
    hostCalls.clear();
    owned->renameProc = &Rename;
    ORLSetDelPermissionCallback(*this, &Ask);
    if (modes) ORLSetListValuesCallback(*this, &List);
    Make(*this, "Amount * 2", "Price");
    Make(*this, "Price() + 1", "Total");
    Make(*this, "1 AND 2", "Span");
    Make(*this, "1, 2", "Some");
    before = Stored(*this);
  }
  std::vector<std::string> before;
  // "-Name=Text +Name=Text " for what was removed, and what is new.
  std::string Changes() const {
    const std::vector<std::string> now = Stored(*this);
    std::string changes;
    for (const std::string &row : before) {
      if (std::count(now.begin(), now.end(), row) == 0) changes += "-" + row + " ";
    }
    for (const std::string &row : now) {
      if (std::count(before.begin(), before.end(), row) == 0) changes += "+" + row + " ";
    }
    return changes;
  }
};

const char *const kWords[] = {"Formula", "Range", "Set"};

// Messages(), with short words for the common ones: "ask" and "del Range" for those two questions,
// "kind Range Set" for a Range in the mode Set, "!VAR|text" for an error box.
template <typename... Parts>
std::string Cat(const Parts &...parts) {
  std::string all;
  (all.append(parts), ...);
  return all;
}
std::string Short() {
  std::string all;
  for (std::string message : Messages()) {
    if (message.rfind("!ERR_", 0) == 0) {
      message =
          Cat("!", message.substr(5, message.find(':') - 5), message.substr(message.find('|')));
    }
    for (const char *mode : kWords) {
      const std::string sure = " Delete|Are you sure you want to delete selected ";
      if (message == Cat(mode, " Save|Changes have been made, save before continuing?"))
        message = "ask";
      if (message == Cat(mode, sure, mode)) message = Cat("del ", mode);
      for (const char *kind : kWords) {
        const bool asks = message == Cat(mode, " Editor Warning|Text evaluates as a ", kind,
                                         " instead of a ", mode, ", save anyway?");
        if (asks) message = Cat("kind ", kind, " ", mode);
      }
    }
    all += Cat(all.empty() ? "" : " / ", message);
  }
  return all;
}

// "text|name|title after the dash|rows without the first", "" when the dialog is closed. The data
// of a row has to be the ordinal of its expression.
std::string State(OrlWindow d, EC ec) {
  if (Look(d).reachable == 0) return "";
  std::string rows;
  for (int32_t row = 1; row < Look(d, kListFormulas).rowCount; ++row) {
    const std::string name = Rows(d, kListFormulas)[static_cast<size_t>(row)];
    HEXP exp = ORLHEXPFromName(ec, name.c_str() + (name[0] == '*' ? 1 : 0));
    EXPECT_EQ(ORLHeadlessRowData(d, kListFormulas, row), ORLGetExpressionOrdinal(ec, exp)) << name;
    rows += " " + name;
  }
  EXPECT_EQ(ORLHeadlessRowData(d, kListFormulas, 0), -1);
  const std::string title = Text(d);
  return Marked(d) + "|" + Text(d, kEditName) + "|" + title.substr(title.find(" - ") + 3) + "|" +
         rows;
}

struct Row {
  const char *exp;
  int32_t type;
  const char *acts;
  Answers answers;
  std::string said, state, changes;
};

constexpr int32_t kYes = ORL_IDYES, kNo = ORL_IDNO;
const Answers kStay = {ORL_ID_CANCEL};

void CheckRow(const Row &row, const SaveContext &ec) {
  SCOPED_TRACE(std::string(row.exp) + ": " + row.acts);
  const auto steps = [&](OrlWindow d) {
    Act(d, row.acts);
    EXPECT_EQ(State(d, ec), row.state);
    const bool toText = row.said.find('!') != std::string::npos ||
                        (std::strstr(row.acts, "; click 117") != nullptr && row.answers != kStay);
    EXPECT_TRUE(!toText || Look(d, kEditText).focused != 0);
  };
  Edit(ec, {ORLHEXPFromName(ec, row.exp), row.type}, steps, row.answers);
  EXPECT_EQ(Short(), row.said);
  EXPECT_EQ(ec.Changes(), row.changes);
}

TEST(EditorSave, ResultsOfTheTable) {
  for (const Case &row : CasesOf("editor/save_cases.txt", "save")) {
    SCOPED_TRACE(row.where);
    CheckRow({row[0].c_str(), row.Int(1), row[2].c_str(), row.Ints(3), row[4], row[5], row[6]},
             SaveContext());
  }
  // Without modes no question is asked about the kind.
  CheckRow({"", 0, "type 100 1 AND 2; click 1", {}, "", "", "+Formula1=1 AND 2 "},
           SaveContext(false));
}

TEST(EditorSave, AsksBeforeSavingAnotherKind) {
  const char *const texts[] = {"3", "3 AND 4", "3, 4"};
  const int32_t types[] = {0, 2, 1};
  for (size_t cases = 0; cases < 36; ++cases) {
    const size_t mode = cases % 3, kind = cases / 3 % 3;
    const bool isNew = cases / 9 % 2 == 0, yes = cases / 18 == 0, saves = yes || mode == kind;
    const std::string acts = Cat("select 100 0 -1; type 100 ", texts[kind], "; click 1"),
                      name = isNew ? Cat(kWords[mode], "1") : "Some",
                      title = isNew ? Cat("[ New ", kWords[mode], " ]") : "Some",
                      list = isNew ? " Price Total Span Some" : " Price Total Span *Some";
    const std::string marked = mode == 2 ? Cat("{}", texts[kind]) : Cat(texts[kind], "{}");
    CheckRow({isNew ? "" : "Some",
              types[mode],
              acts.c_str(),
              {yes ? kYes : kNo},
              mode == kind ? "" : Cat("kind ", kWords[kind], " ", kWords[mode]),
              saves ? "" : Cat(marked, "|", name, "|", title, "|", list),
              saves ? Cat(isNew ? "+" : "-Some=1, 2 +", name, "=", texts[kind], " ") : ""},
             SaveContext());
  }
}

void Destroy(EC ec, const char *name) {
  EXPECT_EQ(ORLDestroyEXP(ec, ORLHEXPFromName(ec, name)), 1);
}

// A host that refuses, or changes the context when it is called.
// clang-format off
TEST(EditorSave, HostRoutinesChangeTheContext) {
  const auto gone = [](EC ec) { Destroy(ec, "Total"); };
  const auto taken = [](EC ec) {
    HEXP exp = ORLHEXPFromName(ec, "Total");
    if (exp != nullptr) ORLDestroyEXP(ec, exp);
  };
  const std::string total = "-Total=Price() + 1 ";
  const struct {
    int32_t (*asked)(EC, HEXP);
    void (*renamed)(EC), (*listed)(EC);
    std::string hostCalls;
    Row row;
    void (*boxed)(EC) = nullptr;
  } rows[] = {
      {[](EC, HEXP) { return 0; }, nullptr, nullptr, "delete Total ",
       {"", 0, "row 114 Total; click 116", {}, "Formula Delete|Delete Permission Denied.",
        "{}|Formula1|[ New Formula ]| Price *Total Span Some", ""}},
      // It comes into use: it is kept, and Delete is disabled.
      {[](EC ec, HEXP) { return Make(ec, "Total()", "User") != nullptr ? 1 : 0; }, nullptr, nullptr,
       "delete Total ",
       {"", 0, "row 114 Total; click 116; no click 116", {kYes}, "del Formula",
        "{}|Formula1|[ New Formula ]| Price *Total Span Some User", "+User=Total() "}},
      // It is destroyed while the host is asked, or another one before it.
      {[](EC ec, HEXP exp) { return ORLDestroyEXP(ec, exp); }, nullptr, nullptr, "delete Total ",
       {"Total", 0, "click 116; no click 116; no click 117; no click 118", {}, "",
        "{}Price() + 1|Total|[ New Formula ]| Price Span Some", total}},
      {[](EC ec, HEXP) { Destroy(ec, "Total"); return 1; }, nullptr, nullptr, "delete Some ",
       {"Some", 0, "row 114 Some; click 116", {kYes}, "del Set",
        "{}|Formula1|[ New Formula ]| Price Span", total + "-Some=1, 2 "}},
      {[](EC ec, HEXP) { Store(ec, ORLHEXPFromName(ec, "Span"), "7", "Seven"); return 0; }, nullptr,
       nullptr, "delete Total rename Span Seven ",
       {"", 0, "row 114 Total; click 116", {}, "Formula Delete|Delete Permission Denied.",
        "{}|Formula1|[ New Formula ]| Price *Total Seven Some", "-Span=1 AND 2 +Seven=7 "}},
      // The expression that gets a new name is destroyed, or another one before it.
      {nullptr, gone, nullptr, "rename Total sTotal ",
       {"Total", 0, "type 101 s; click 1", {}, "!GENERAL|{}Price() + 1",
        "{}Price() + 1|sTotal|[ New Formula ]| Price Span Some", total}},
      {nullptr, gone, nullptr, "rename Some sSome ",
       {"Some", 1, "type 101 s; row 114 Span; click 117", {kYes}, "ask",
        "{}1 AND 2|Span|Span| Price *Span sSome", total + "-Some=1, 2 +sSome=1, 2 "}},
      // The shown one is destroyed while values are listed.
      {nullptr, nullptr, gone, "", {"Total", 0, "row 106 Tax; click 133; no click 118", {}, "",
       "{}Price() + 1|Total|[ New Formula ]| Price Span Some", total}},
      // It is destroyed while a box is open: the question whether to save, also with No or Cancel,
      // or an error box.
      {nullptr, nullptr, nullptr, "",
       {"", 0, "type 100 1; row 114 Total; click 135; no click 117", kStay, "ask",
        "1{}|Formula1|[ New Formula ]| Price Span Some", total}, taken},
      {nullptr, nullptr, nullptr, "",
       {"", 0, "type 100 1; row 114 Total; click 117", {kNo}, "ask",
        "{}|Formula1|[ New Formula ]| Price Span Some", total}, taken},
      {nullptr, nullptr, nullptr, "",
       {"", 0, "row 114 Total; type 100 (; click 1; no click 117", {}, "!SYNTAX|({}",
        "({}|Formula1|[ New Formula ]| Price Span Some", total}, taken},
      // One that had no row gets one, and the buttons are unchanged.
      {nullptr, nullptr, nullptr, "",
       {"Formula1", 0, "type 100 Tax +; click 135; click 117; focus 100", {kYes}, "ask",
        "{Expression} AND Expression|Range1|[ New Range ]| Price Total Span Some Formula1",
        "+Formula1=Tax +7 "}},
  };
  for (const auto &[ask, rename, list, said, row, boxed] : rows) {
    const SaveContext ec;
    if (std::string(row.exp) == "Formula1") Make(ec, "7", row.exp);
    asked = ask, renamed = rename, listed = list;
    if (boxed != nullptr) AtBoxes([&, boxed = boxed] { boxed(ec); });
    CheckRow(row, ec);
    EXPECT_EQ(hostCalls, said) << row.acts;
  }
}
// clang-format on

OrlWindowSystem withoutMemory;
// A box can only be opened with memory: it reports that there was none before.
intptr_t WithMemory(const OrlDialogTemplate *dialog, OrlWindow parent, OrlWindowProc proc,
                    intptr_t parameter) {
  TEST_FailAllocationsAfter(-1);
  return ORLHeadlessSystem()->DialogBoxParam(dialog, parent, proc, parameter);
}

TEST(EditorSave, OutOfMemoryIsReported) {
  for (const char *exp : {"", "Total"}) {
    bool saved = false;
    int32_t count = 0;
    for (; !saved && count < 200; ++count) {
      SCOPED_TRACE(std::string(exp) + " " + std::to_string(count));
      const SaveContext ec(false);
      const int64_t blocks = TEST_LiveBlocks();
      const auto steps = [&](OrlWindow d) {
        Act(d, "select 100 0 -1; type 100 7 * 8; type 101 s");
        TEST_FailAllocationsAfter(count);
        OrlDlgProc(d, ORL_WM_COMMAND, 1, 0);
        TEST_FailAllocationsAfter(-1);
        saved = !ec.Changes().empty();
        EXPECT_EQ(Look(d).reachable == 0 ? "7 * 8" : Text(d, kEditText), "7 * 8");
      };
      WithUser(steps, {}, [&] {
        withoutMemory = *ORLHeadlessSystem();
        withoutMemory.DialogBoxParam = &WithMemory;
        ORLSetWindowSystem(&withoutMemory);
        ORLBuildExpression(nullptr, ec, ORLHEXPFromName(ec, exp), 0);
      });
      // Before the parse there are two copies, and that of the old name.
      const bool parsed = count >= (*exp == '\0' ? 2 : 3);
      EXPECT_EQ(Short(), saved ? "" : parsed ? "!MEMORY|{}7 * 8" : "!MEMORY|{}");
      EXPECT_EQ(saved ? blocks : TEST_LiveBlocks(), blocks);
    }
    EXPECT_TRUE(saved && count > 3) << count;
  }
}

// A host that destroys an expression and creates another at once may get the same address.
TEST(EditorSave, ReusedAddressIsNotTheSameExpression) {
  const SaveContext ec;
  Make(ec, "Amount", "Old");
  asked = [](EC context, HEXP exp) {
    ORLDestroyEXP(context, exp);
    Make(context, "Amount", "New");  // at the same address, except in builds with sanitizers
    return 1;
  };
  Edit(ec, {}, [](OrlWindow d) { Act(d, "row 114 Old; click 116"); }, {ORL_IDYES});
  EXPECT_EQ(AllMessages(), "");
  EXPECT_NE(ORLHEXPFromName(ec, "New"), nullptr);
}

TEST(EditorSave, CountsBytesInEveryCodePage) {
  const std::string ze = "\x83\x5B";  // ends in the byte of a "["
  const struct {
    int32_t page;
    std::string text, fault, stored;
  } rows[] = {
      {932, "'" + ze + "' || Nope", "'" + ze + "' || {Nope}", ""},
      {932, "'" + ze + ",Expression...]', 'x'", "", "'" + ze + ",Expression...]', 'x'"},
      {65001, "'\u00e9\u30bc' || Nope", "'\u00e9\u30bc' || {Nope}", ""},
      {65001, "'\u00e9', 'x' [,Expression...] 'y'", "", "'\u00e9', 'x' "},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.text);
    ASSERT_NE(WRENSetCodePage(row.page), 0);
    const SaveContext ec;
    Edit(ec, {nullptr, 1}, [&](OrlWindow d) {
      Act(d, "select 100 0 -1; type 100 " + row.text + "; click 1");
      EXPECT_EQ(row.fault.empty() ? "" : Marked(d), row.fault);
    });
    EXPECT_EQ(Short(), row.fault.empty() ? "" : "!VAR|" + row.fault);
    EXPECT_EQ(TextOf(ec, ORLHEXPFromName(ec, "Set1")), row.stored);
    WRENSetCodePage(1252);
  }
}

TEST(EditorRecovery, RepairsABlockWhileItLoads) {
  // The new text of A waits for E, which follows it, that of D for A.
  const std::pair<const char *, const char *> formulas[] = {
      {"A", "1 + Nope"}, {"B", "("}, {"C", "2"}, {"D", "Bad(1)"}, {"E", "C() + 1"}, {"F", "A()"}};
  std::string block = '\3' + std::string(20, '\0') + '\xfc' + '\0' + '\6' + '\0';
  for (const auto &[name, text] : formulas) block += text + ('\0' + (name + std::string(1, '\0')));
  const std::string all = "select 100 0 -1; type 100 ", a = all + "E() * 2; click 1",
                    d = all + "A() + C(); click 1", b = all + "1 + 1; click 1",
                    good = "A=E() * 2 6, B=1 + 1 2, C=2 2, D=A() + C() 8, E=C() + 1 3, F=A() 6, ";
  const struct {
    std::map<std::string, std::string> acts;  // by the name that the editor opens with
    int32_t result;
    std::string said, stored;  // with the values
  } rows[] = {
      {{{"A", a}, {"B", b}, {"D", d}}, 1, "", good},
      // A text that waits for nothing in the block is also an error; one that waits for itself
      // never resolves.
      {{{"A", a}, {"B", b}, {"D", all + "E1; click 1; " + d}}, 1, "!VAR|{E1}", good},
      {{{"A", a}, {"B", b}, {"D", all + "D(); click 1"}},
       0,
       "",
       "B=1 + 1 2, C=2 2, E=C() + 1 3, A=E() * 2 6, F=A() 6, "},
      // Cancelling ends the load.
      {{{"A", a}, {"B", b}, {"D", "click 2"}}, 0, "", "B=1 + 1 2, C=2 2, "},
      {{{"A", a}, {"B", "close"}}, 0, "", ""},
  };
  const auto report = [](EC, const char *text, const FormulaError *) { ADD_FAILURE() << text; };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.stored);
    const HostedContext ec;
    const auto steps = [&](OrlWindow window) {
      const auto found = row.acts.find(Text(window, kEditName));
      ASSERT_NE(found, row.acts.end()) << Text(window, kEditName);
      EXPECT_EQ(Enabled(window, {kEditName, kButtonDelete, kButtonSelect, kButtonShowText}),
                std::vector<int32_t>());
      Act(window, found->second);
      EXPECT_EQ(Look(window).reachable, 0) << found->second;
    };
    WithUser(steps, {}, [&] {
      const auto size = static_cast<int32_t>(block.size());
      EXPECT_EQ(ORLSetECContents(ec, size, block.data(), 1, report), row.result);
    });
    EXPECT_EQ(Short(), row.said);
    std::string stored;
    for (int32_t i = 0; i < ORLGetExpressionCount(ec); ++i) {
      const std::string value = Evaluate(ec, ORLHEXPFromOrdinal(ec, i));
      stored += Stored(ec)[static_cast<size_t>(i)] + " " + value + ", ";
    }
    EXPECT_EQ(stored, row.stored);
  }
}

}  // namespace
