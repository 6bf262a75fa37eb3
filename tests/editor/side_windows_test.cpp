// The windows beside the editor, the values that go into the text, and the error boxes.
#include <gtest/gtest.h>

#include <cstring>

#include "editor/editor.h"
#include "editor/session.h"
#include "support/context.h"

namespace {

std::vector<std::string> values;  // what the host lists
std::vector<int32_t> mores;       // what it says in turn; nothing behind the last
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
int32_t Permit(EC, HEXP, void *) {
  return 1;
}

struct Context : HostedContext {
  Context() : HostedContext(ORL_FLAG_RANGES) {
    ORLSetListValuesCallback(*this, &ListValues);
    ORLSetDelPermissionCallback(*this, &Permit);
    AddKeyword(*this, "Word", 0, 0, 0);
    Make(*this, "Tax + 1", "Total");
    Make(*this, "1 AND 2", "Span");
    Make(*this, "1, 2", "Some");
    values.clear();
    mores.clear();
    calls.clear();
  }
};

// Plays acts for the editor, the window of a name beside it (behind the first bar), and the editor
// again. The window, or null.
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
  const std::string total = "Formula Text - Total|{}Tax + 1", span = "Range Text - Span|{}1 AND 2",
      some = "Set Text - Some|{}1, 2", renamed = "Formula Text - sTotal|{}Tax + 1", rename =
      "right 114 Total; click 117; type 101 s; click 1";
  const std::pair<std::string, std::string> rows[] = {  // acts; title and text, "" without a window
      {"row 114 Total; click 118", total}, {"row 114 Total; click 118; row 114 Span", span},
      {"right 114 Some", some}, {"right 114 Some; key 114 38", span},
      {"right 114 Total; key 114 35", some},
      {"right 114 Some; row 114 [ New Formula ]", "Formula Text|{}"},
      {"click 135; right 114 Some; right 114 [ New Range ]", "Range Text|{}"},
      {"right 114 Some; click 116; row 114 Span", span},
      {"click 136; row 114 Span; click 118; click 116", "Set Text|{}"},
      {"right 114 Span; row 114 Total; click 117", total},
      // A new name shows when the row is chosen anew.
      {rename + "17", renamed}, {rename + "35", total}, {rename + "35; row 114 sTotal", renamed},
      // The user changes nothing in it.
      {"right 114 Total|type 100 x; key 100 46; select 100 0 3; click 100|", total},
      {"right 114 Total|close|", ""}, {"right 114 Total; row 114 [ New Formula ]|close|", ""},
      {"right 114 Total|close|row 114 Span; click 118", span},
      {"right 114 [ New Formula ]", ""}, {"row 114 Total; right 114 [ New Formula ]", ""},
  };
  for (const auto &[acts, shown] : rows) {
    SCOPED_TRACE(acts);
    const Context ec;
    const auto steps = [&acts = acts, &shown = shown](OrlWindow d) {
      OrlWindow view = Play(d, acts, "EXPTEXTVIEW");
      EXPECT_EQ(view == nullptr ? "" : Text(view) + "|" + Marked(view), shown);
      EXPECT_EQ(Look(d, 118).enabled, view == nullptr && Look(d, 114).currentRow > 0 ? 1 : 0);
      EXPECT_EQ(ORLHeadlessOpen(nullptr, 0), view == nullptr ? 1 : 2);
    };
    Edit(ec, {}, steps, {ORL_IDYES});
  }
}

TEST(ValuesDialog, KeepsItsButtonInStep) {
  const std::string opens = "Data Item &Values Dialog...|", lists = "List Data Item &Values|",
                    item = "row 106 Tax", open = item + "; click 133", tax = " |Tax - Values";
  const struct {
    std::string acts;
    std::vector<int32_t> mores;
    std::string state;  // caption, enabled, what the host was asked, title
  } rows[] = {
      {"", {}, opens + "0||"}, {item, {}, opens + "1||"}, {open, {0}, lists + "0|Tax 1" + tax},
      {open, {1}, lists + "1|Tax 1" + tax}, {open, {}, lists + "1|Tax 1" + tax},
      {open + "; click 133", {1, 1}, lists + "0|Tax 1 Tax 0" + tax},
      {open + "; click 133; row 106 Name", {1, 0, 1},
       lists + "1|Tax 1 Tax 0 Name 1 |Name - Values"},
      {open + "; row 106 Word", {0, 0}, lists + "0|Tax 1 Word 1 |Word - Values"},
      {open + "; row 106 Name; row 106 Tax", {0, 1}, lists + "1|Tax 1 Name 1 Tax 1" + tax},
      {open + "; row 114 Total; click 117", {0, 1}, lists + "1|Tax 1 Tax 0" + tax},
      {open + "; click 135", {1, 0}, lists + "0|Tax 1 Tax 0" + tax},
      {open + "|close|", {0}, opens + "1|Tax 1 |"},
      {open + "|close|click 133", {0, 1}, lists + "1|Tax 1 Tax 1" + tax},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.acts);
    const Context ec;
    mores = row.mores;
    Edit(ec, {}, [&](OrlWindow d) {
      OrlWindow window = Play(d, row.acts, "LISTVALUES");
      EXPECT_EQ(Text(d, 133) + "|" + std::to_string(Look(d, 133).enabled) + "|" + calls + "|" +
                    (window == nullptr ? "" : Text(window)), row.state);
    });
  }
}
// clang-format on

TEST(ValuesDialog, StandsBesideTheFunctions) {
  for (const bool far : {false, true}) {
    const Context ec;
    Edit(ec, {}, [&](OrlWindow d) {
      const OrlWindowSystem &system = *ORLHeadlessSystem();
      const int32_t place = far ? 5000 : 0;
      system.MoveWindow(d, place, place, 400, 400);
      Act(d, "row 106 Tax; click 133");
      OrlRect list = {}, own = {};
      system.GetWindowRect(system.GetDlgItem(d, 107), &list);
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
  const std::string date = "Jan 5, 2012", tail = ", {Expression} [,Expression...]";
  const struct {
    const char *item;
    std::string value;
    int32_t type;  // of the text
    uint16_t flags;
    int32_t templates;  // a bit for each
    std::string text;
  } rows[] = {
      {"Name", "O'Brien", 0, 0, 0, "'O''Brien'{}"}, {"Name", "''", 0, 0, 0, "''''''{}"},
      {"Name", "", 0, 0, 0, "''{}"}, {"Name", "x", 2, 0, 0, "'x' AND {Expression}"},
      {"Amount", "1'000.50", 0, 0, 7, "1'000.50{}"}, {"Word", "it's", 0, 0, 7, "it's{}"},
      {"Money", "$ 5", 0, 0, 7, "$ 5{}"}, {"Start", date, 0, 0, 7, "{d '2012-01-05'}{}"},
      {"Start", date + " 9:04 pm", 0, 0, 7, "{ts '2012-01-05 21:04'}{}"},
      {"Start", "10:30:15", 0, 0, 7, "{t '10:30'}{}"}, {"Start", "hello", 0, 0, 7, "hello{}"},
      {"Start", date, 0, 0, 0, date + "{}"}, {"Start", date, 0, 0, 6, date + "{}"},
      {"Start", date, 0, 2, 7, date + "{}"}, {"Start", date, 0, 1, 7, "{d '2012-01-05'}{}"},
      {"Start", date, 1, 1, 4, "'2012-01-05'" + tail}, {"Start", "hello", 1, 1, 4, "''" + tail},
      {"Start", date, 1, 1, 0, date + tail}, {"Start", date, 1, 3, 7, date + tail},
      {"Start", date, 1, 0, 1, "{d '2012-01-05'}" + tail},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.item + (" " + row.value) + " " + std::to_string(row.flags));
    const Context ec;
    values = {row.value};
    ORLSetDatePicture(ec, "yyyy-MM-dd", "yyyy-MM-dd HH:mm", "HH:mm");
    const char *formats[3];
    for (int32_t i = 0; i < 3; i++) formats[i] = row.templates >> i & 1 ? kTemplates[i] : nullptr;
    ORLSetDateConvert(ec, formats[0], formats[1], formats[2], row.flags);
    Edit(ec, {nullptr, row.type, row.item}, [&](OrlWindow d) {
      OrlWindow window = ORLHeadlessFind("LISTVALUES");
      EXPECT_EQ(Text(window) + " " + calls, row.item + (" - Values " + calls));
      EXPECT_EQ(calls, row.item + std::string(" 1 "));
      ASSERT_EQ(ORLHeadlessDoubleClickRow(window, 100, 0), 1);
      EXPECT_EQ(Marked(d), row.text);
    });
  }
}

TEST(QuoteString, DoublesQuotesAndKeepsCharactersWhole) {
  const struct { int32_t page; const char *text, *quoted; } rows[] = {
      {1252, "", "''"}, {1252, "'", "''''"}, {1252, "\x83'", "'\x83'''"},
      {932, "\x83'a", "'\x83'a'"},
      {932, "\x83\x5C'\x81\x40", "'\x83\x5C''\x81\x40'"}, {932, "a\x83", "'a\x83'"},
      {65001, "\u00e9'\u30bc", "'\u00e9''\u30bc'"}, {65001, "\xe3'", "'\xe3'''"},
  };
  for (const auto &row : rows) {
    ASSERT_NE(WRENSetCodePage(row.page), 0);
    std::vector<char> target(2 * std::strlen(row.text) + 3);
    OrlQuoteString(target.data(), row.text);
    EXPECT_STREQ(target.data(), row.quoted) << row.page;
  }
  WRENSetCodePage(1252);
}

// ---- Error boxes

std::function<int32_t(OrlWindow)> user;
int32_t PlayUser(void *, OrlWindow window) { return user(window); }

std::string key;
int32_t NoteHelp(int32_t command, intptr_t data) {
  key = std::to_string(command) + " " + reinterpret_cast<const char *>(data);
  return 1;
}

TEST(ErrorBox, ShowsTheFaultAndNothingElseCan) {
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
        EXPECT_EQ(Text(box, 201) + "|" + Marked(box, 200), row.shown) << acts;
      }
      EXPECT_EQ(Look(box, 200).focused, 1);
      Act(box, "key 200 9");
      ORLHeadlessRepaint(box);
      EXPECT_EQ(Look(box, 202).focused, 1);
      ORLHeadlessHelp(box, 200, nullptr);
      ORLHeadlessHelp(box, ORL_HEADLESS_SELF, &NoteHelp);
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

// A host may call the procedures of windows that are not there.
// A host may destroy a window beside the editor, also from within its own routine; it can be opened
// again, and the host is never asked for values without a list.
TEST(SideWindows, CanBeDestroyedByTheHost) {
  const Context ec;
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
    EXPECT_EQ(Text(d, 133), "Data Item &Values Dialog...");
    Act(d, "click 133");
    EXPECT_NE(ORLHeadlessFind("LISTVALUES"), nullptr);
    EXPECT_EQ(Text(d, 133), "List Data Item &Values");
    Act(d, "row 114 Total; click 118");
    ORLHeadlessSystem()->DestroyWindow(ORLHeadlessFind("EXPTEXTVIEW"));
    Act(d, "click 118");
    EXPECT_NE(ORLHeadlessFind("EXPTEXTVIEW"), nullptr);
    EXPECT_EQ(OrlDlgProc(d, ORL_WM_MEASUREITEM, 0, 0) + OrlDlgProc(d, ORL_WM_DRAWITEM, 0, 0), 0);
  });
}

TEST(SideWindows, AnswerStrayCalls) {
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
