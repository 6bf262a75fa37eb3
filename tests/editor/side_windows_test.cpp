// The windows beside the editor, the values inserted into the text, and the error boxes.
#include <gtest/gtest.h>

#include <cstring>

#include "editor/editor.h"
#include "editor/session.h"
#include "support/cases.h"
#include "support/context.h"

namespace {

std::vector<Case> Cases(const char *section) {
  return CasesOf("editor/side_cases.txt", section);
}

std::vector<std::string> values;  // what the host lists
std::vector<int32_t> mores;       // the values of *more in turn; 0 after the last
std::string calls;

void ListValues(EC, const char *name, void *list, int32_t first, int32_t *more) {
  calls += std::string(name) + " " + std::to_string(first) + " ";
  for (const std::string &value : values) {
    const auto text = reinterpret_cast<intptr_t>(value.c_str());
    ORLHeadlessSystem()->SendMessage(list, ORL_LB_ADDSTRING, 0, text);
  }
  if (mores.empty()) return;
  *more = mores.front();
  mores.erase(mores.begin());
}

struct ValuesContext : HostedContext {
  ValuesContext() : HostedContext(ORL_FLAG_RANGES) {
    ORLSetListValuesCallback(*this, &ListValues);
    ORLSetDelPermissionCallback(*this, &PermitAll);
    AddKeyword(*this, "Word", 0, 0, 0);
    Make(*this, "Tax + 1", "Total");
    Make(*this, "1 AND 2", "Span");
    Make(*this, "1, 2", "Some");
    values.clear();
    mores.clear();
    calls.clear();
  }
};

// Runs actions in the editor, in the named window beside it (after the first bar), and in the
// editor again. Returns the window, or null.
OrlWindow Play(OrlWindow d, const std::string &acts, const char *name) {
  const size_t first = acts.find('|'), last = acts.rfind('|');
  Act(d, acts.substr(0, first));
  if (first != last) {
    Act(ORLHeadlessFind(name), acts.substr(first + 1, last - first - 1));
    Act(d, acts.substr(last + 1));
  }
  return ORLHeadlessFind(name);
}

// clang-format off
TEST(TextView, ShowsTheSelectedFormula) {
  for (const Case &row : Cases("view")) {
    SCOPED_TRACE(row.where);
    const ValuesContext ec;
    const auto steps = [&row](OrlWindow d) {
      OrlWindow view = Play(d, row[0], "EXPTEXTVIEW");
      EXPECT_EQ(view == nullptr ? "" : Text(view) + "|" + Marked(view), row[1]);
      EXPECT_EQ(Look(d, kButtonShowText).enabled, view == nullptr && Look(d, kListFormulas).currentRow > 0 ? 1 : 0);
      EXPECT_EQ(ORLHeadlessOpen(nullptr, 0), view == nullptr ? 1 : 2);
    };
    Edit(ec, {}, steps, {ORL_IDYES});
  }
}

TEST(ValuesDialog, ButtonFollowsTheState) {
  for (const Case &row : Cases("button")) {
    SCOPED_TRACE(row.where);
    const ValuesContext ec;
    mores = row.Ints(1);
    Edit(ec, {}, [&](OrlWindow d) {
      OrlWindow window = Play(d, row[0], "LISTVALUES");
      EXPECT_EQ(Text(d, kButtonValues) + "|" + std::to_string(Look(d, kButtonValues).enabled) + "|" + calls + "|" +
                    (window == nullptr ? "" : Text(window)), row[2]);
    });
  }
}
// clang-format on

TEST(ValuesDialog, IsPlacedNextToTheFunctions) {
  for (const bool far : {false, true}) {
    const ValuesContext ec;
    Edit(ec, {}, [&](OrlWindow d) {
      const OrlWindowSystem &system = *ORLHeadlessSystem();
      const int32_t place = far ? 5000 : 0;
      system.MoveWindow(d, place, place, 400, 400);
      Act(d, "row 106 Tax; click 133");
      OrlRect list = {}, own = {};
      system.GetWindowRect(system.GetDlgItem(d, kListFunctions), &list);
      system.GetWindowRect(ORLHeadlessFind("LISTVALUES"), &own);
      const int32_t quarter = (list.bottom - list.top) / 4;
      EXPECT_EQ(far ? own.right : own.left, far ? system.GetSystemMetrics(16) : list.right);
      EXPECT_EQ(far ? own.bottom : own.top, far ? system.GetSystemMetrics(17) : list.top + quarter);
    });
  }
}

// clang-format off
TEST(ValuesDialog, InsertsLiterals) {
  constexpr const char *kTemplates[] = {"{d '%s'}", "{ts '%s'}", "{t '%s'}"};
  for (const Case &row : Cases("literals")) {
    SCOPED_TRACE(row.where);
    const ValuesContext ec;
    values = {row[1]};
    ORLSetDatePicture(ec, "yyyy-MM-dd", "yyyy-MM-dd HH:mm", "HH:mm");
    const char *formats[3];
    for (int32_t i = 0; i < 3; ++i) formats[i] = (row.Int(4) >> i & 1) != 0 ? kTemplates[i] : nullptr;
    ORLSetDateConvert(ec, formats[0], formats[1], formats[2], static_cast<uint16_t>(row.Int(3)));
    Edit(ec, {nullptr, row.Int(2), row[0].c_str()}, [&](OrlWindow d) {
      OrlWindow window = ORLHeadlessFind("LISTVALUES");
      EXPECT_EQ(Text(window) + " " + calls, row[0] + " - Values " + calls);
      EXPECT_EQ(calls, row[0] + " 1 ");
      ASSERT_EQ(ORLHeadlessDoubleClickRow(window, kListValues, 0), 1);
      EXPECT_EQ(Marked(d), row[5]);
    });
  }
}

TEST(QuoteString, DoublesQuotesAndKeepsCharactersWhole) {
  for (const Case &row : Cases("quotes")) {
    ASSERT_NE(WRENSetCodePage(row.Int(0)), 0);
    std::vector<char> target(2 * row[1].size() + 3);
    OrlQuoteString(target.data(), row[1].c_str());
    EXPECT_EQ(target.data(), row[2]) << row.where;
  }
  WRENSetCodePage(1252);
}

// ---- Error boxes

std::function<int32_t(OrlWindow)> user;
int32_t PlayUser(void *, OrlWindow window) { return user(window); }

std::string key;
int32_t NoteBoxHelp(int32_t command, intptr_t data) {
  key = std::to_string(command) + " " + reinterpret_cast<const char *>(data);
  return 1;
}

TEST(ErrorBox, ShowsTheErrorAndIsModal) {
  const std::string name = "ERR_NAME: Invalid Formula Name.|",
      var = "ERR_VAR: Unknown input item.|",
      low = "ERR_MEMLOW: Error creating dialog box, memory critically low.|";
  const struct {
    const char *text; FormulaError error; const char *acts; std::string shown;
  } rows[] = {
      {"Tax + Nope", {ORL_ERR_VAR, 6, 4}, "click 202", var + "Tax + {Nope}"},
      {"abcdefgh", {ORL_ERR_VAR, 5, 3}, "close", var + "abcde{fgh}"},
      {"a b", {ORL_ERR_NAME, 1, 1000}, "key 200 27", name + "a{ b}"},
      {"a b", {99, 1, 0}, "key 200 13", "|a{} b"}, {"a b", {-1, 7, 7}, "click 202", "|a b{}"},
      {"a b", {ORL_ERR_NAME, INT32_MAX, INT32_MAX}, "click 202", name + "a b{}"},
      {"", {ORL_ERR_MEMLOW, 0, 0}, "click 202", low + "{}"},
      {nullptr, {ORL_ERR_MEMLOW, INT32_MIN, -5}, "click 202", low + "{}"},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.shown);
    int32_t played = 0;
    user = [&](OrlWindow box) {
      for (const char *acts : {"", "type 200 x", "select 200 0 1", "click 200", "key 200 46"}) {
        Act(box, acts);
        EXPECT_EQ(Text(box, kErrorMessage) + "|" + Marked(box, kErrorText), row.shown) << acts;
      }
      EXPECT_EQ(Look(box, kErrorText).focused, 1);
      Act(box, "key 200 9");
      ORLHeadlessRepaint(box);
      EXPECT_EQ(Look(box, kErrorOk).focused, 1);
      ORLHeadlessHelp(box, kErrorText, nullptr);
      ORLHeadlessHelp(box, ORL_HEADLESS_SELF, &NoteBoxHelp);
      Act(box, row.acts);
      return ++played;
    };
    ORLHeadlessStart(&PlayUser, nullptr);
    EXPECT_EQ(ORLErrorDisplay(nullptr, row.text, &row.error), 1);
    EXPECT_EQ(ORLHeadlessBeepCount(), 0);
    EXPECT_EQ(OrlLoadErrorDisplay(nullptr, row.text, &row.error), 1);
    EXPECT_EQ(ORLHeadlessBeepCount(), 1);
    EXPECT_EQ(ORLErrorDisplay(nullptr, row.text, nullptr), -1);
    ORLHeadlessEnd();
    EXPECT_EQ(ORLErrorDisplay(nullptr, row.text, &row.error), -1);
    EXPECT_EQ(std::to_string(played) + key, "2257 Error messages");
  }
}
// clang-format on

// A host may call the procedures of windows that do not exist. A host may destroy a window beside
// the editor, also from within its own routine; it can be opened again, and the host is never asked
// for values without a list.
TEST(SideWindows, CanBeDestroyedByTheHost) {
  const ValuesContext ec;
  static int32_t destroying = 0;
  destroying = 1;
  ORLSetListValuesCallback(ec, [](EC, const char *, void *list, int32_t, int32_t *) {
    EXPECT_NE(list, nullptr);
    const OrlWindowSystem &windows = *ORLHeadlessSystem();
    if (destroying-- > 0) windows.DestroyWindow(windows.GetParent(list));
  });
  Edit(ec, {}, [](OrlWindow d) {
    Act(d, "row 106 Amount; click 133");
    EXPECT_EQ(ORLHeadlessFind("LISTVALUES"), nullptr);
    EXPECT_EQ(Text(d, kButtonValues), "Data Item &Values Dialog...");
    Act(d, "click 133");
    EXPECT_NE(ORLHeadlessFind("LISTVALUES"), nullptr);
    EXPECT_EQ(Text(d, kButtonValues), "List Data Item &Values");
    Act(d, "row 114 Total; click 118");
    ORLHeadlessSystem()->DestroyWindow(ORLHeadlessFind("EXPTEXTVIEW"));
    Act(d, "click 118");
    EXPECT_NE(ORLHeadlessFind("EXPTEXTVIEW"), nullptr);
    EXPECT_EQ(OrlDlgProc(d, ORL_WM_MEASUREITEM, 0, 0) + OrlDlgProc(d, ORL_WM_DRAWITEM, 0, 0), 0);
  });
}

TEST(SideWindows, ProceduresIgnoreCallsWithoutAnEditor) {
  for (const bool system : {false, true}) {
    if (system) ORLHeadlessStart(nullptr, nullptr);
    for (const auto proc : {OrlViewTextDlgProc, ViewEditSubProc, OrlListValuesDlgProc,
                            ORLErrorDlgProc, ORLErrorEditProc}) {
      for (const uint32_t message : {15u, 16u, 258u, 272u, 273u, 1025u, 1124u, 1125u, 33791u}) {
        EXPECT_EQ(proc(nullptr, message, 0, 0),
                  system && message == 1025 && proc == ORLErrorDlgProc)
            << message;
      }
    }
    ORLHeadlessEnd();
  }
}

}  // namespace
