// The frame of the editor: what it opens with, its commands, modes and captions.
#include <gtest/gtest.h>

#include <cstring>

#include "closed/wren/memory.h"
#include "editor/session.h"
#include "support/context.h"

namespace {

using Ids = std::vector<int32_t>;

constexpr uint16_t kRanges = ORL_FLAG_RANGES;
const Ids kChanging = {1, 101, 102, 103, 104, 105, 115, 116, 117, 118};
const Ids kHiding = {112, 132, 133, 134, 135, 136, 138};
const Ids kModes = {134, 135, 136, 138};

void ListNothing(EC, const char *, void *, int32_t, int32_t *) {}
int32_t Permit(EC, HEXP, void *) {
  return 1;
}

// Price is used by Total; Formula7 is simple and has a generated name.
HostedContext Formulas(uint16_t flags, bool values, bool permission = true) {
  HostedContext context(flags);
  if (values) ORLSetListValuesCallback(context, &ListNothing);
  if (permission) ORLSetDelPermissionCallback(context, &Permit);
  Make(context, "Amount * 2", "Price");
  Make(context, "Price() + 1", "Total");
  Make(context, "5", "Formula7");
  if ((flags & ORL_FLAG_RANGES) != 0) {
    Make(context, "1 AND 2", "Span");
    Make(context, "1, 2", "Some");
  }
  return context;
}

std::string State(OrlWindow d) {
  return Marked(d) + "|" + Text(d, 101) + "|" + Text(d) + "|" + RowList(d, 114, true);
}

int32_t CheckedMode(OrlWindow d) {
  for (int32_t id : {134, 135, 136}) {
    if (Look(d, id).checked != 0) return id;
  }
  return 0;
}

// A block with one formula.
std::string BlockOf(const char *text, const char *name) {
  using namespace std::string_literals;
  return "\3"s + std::string(20, '\0') + "\xfc\0\1\0"s + text + "\0"s + name + "\0"s;
}
int32_t Load(EC ec, const std::string &block) {
  return ORLSetECContents(ec, static_cast<int32_t>(block.size()), block.data(), 1, nullptr);
}

// ---- Opening

struct OpeningRow {
  uint16_t flags;
  bool values, permission;
  const char *exp;
  int32_t type;
  std::string state;
  Ids enabled, shown;
  std::string operatorText;
};

// clang-format off
const std::vector<OpeningRow> kOpenings = {
    // A new text, without and with modes; the starting text leaves OK disabled.
    {0, false, true, "", 0, "{}|Formula1|Formula Editor - [ New Formula ]|"
     "*[ New Formula ]:-1, Price:0, Total:1", {101, 115, 117}, {112}, "||"},
    {kRanges, true, true, "", 0, "{}|Formula1|Formula Editor - [ New Formula ]|"
     "*[ New Formula ]:-1, Price:0, Total:1, Span:3, Some:4", {101, 115, 117},
     {112, 133, 134, 135, 136, 138}, "||"},
    {0, true, true, "", 2, "{Expression} AND Expression|Range1|Range Editor - [ New Range ]|"
     "*[ New Range ]:-1, Price:0, Total:1", {101, 102, 103, 105, 115, 117},
     {112, 133, 134, 135, 136, 138}, "||"},
    {0, true, true, "", 1, "{Expression}, Expression [,Expression...]|Set1|Set Editor - [ New Set ]"
     "|*[ New Set ]:-1, Price:0, Total:1", {101, 102, 103, 105, 115, 117},
     {112, 133, 134, 135, 136, 138}, "||"},
    {0, false, true, "", 1, "{}|Set1|Set Editor - [ New Set ]|*[ New Set ]:-1, Price:0, Total:1",
     {101, 115, 117}, {112}, "||"},
    {0, false, true, "", 3, "{}|Formula1|Formula Editor - [ New Formula ]|"
     "*[ New Formula ]:-1, Price:0, Total:1", {101, 115, 117}, {112}, "||"},
    // An expression: free, in use, not listed, of another kind than the mode; without permission.
    {0, false, true, "Total", 0, "{}Price() + 1|Total|Formula Editor - Total|"
     "[ New Formula ]:-1, Price:0, *Total:1", {1, 101, 115, 116, 117, 118}, {112}, "||"},
    {0, false, true, "Price", 0, "{}Amount * 2|Price|Formula Editor - Price|"
     "[ New Formula ]:-1, *Price:0, Total:1", {1, 117, 118}, {112}, "||"},
    {0, false, true, "Formula7", 0, "{}5|Formula7|Formula Editor - Formula7|"
     "[ New Formula ]:-1, Price:0, Total:1", {1, 101, 115, 117, 118}, {112}, "||"},
    {kRanges, true, false, "Span", 0, "{}1 AND 2|Span|Formula Editor - Span|[ New Formula ]:-1, "
     "Price:0, Total:1, *Span:3, Some:4", {1, 101, 115, 117, 118},
     {112, 133, 134, 135, 136, 138}, "||"},
    // Flags: everything listed, the remainder, neither.
    {ORL_FLAG_LIST_ALL | ORL_FLAG_NO_CONCAT | ORL_FLAG_PERCENT, false, true, "", 0,
     "{}|Formula1|Formula Editor - [ New Formula ]|*[ New Formula ]:-1, Price:0, Total:1, "
     "Formula7:2", {101, 115, 117}, {112}, "%"},
    {ORL_FLAG_NO_CONCAT, false, true, "", 0, "{}|Formula1|Formula Editor - [ New Formula ]|"
     "*[ New Formula ]:-1, Price:0, Total:1", {101, 115, 117}, {}, "||"},
};
// clang-format on

TEST(EditorFrame, OpensAsTheTableSays) {
  for (const OpeningRow &row : kOpenings) {
    const HostedContext ec = Formulas(row.flags, row.values, row.permission);
    SCOPED_TRACE(row.state);
    ASSERT_EQ(ORLHeadlessBitmapCount(), 0);
    bool played = false;
    Edit(ec, {ORLHEXPFromName(ec, row.exp), row.type}, [&](OrlWindow d) {
      played = true;
      EXPECT_EQ(State(d), row.state);
      EXPECT_EQ(Enabled(d, kChanging), row.enabled);
      EXPECT_EQ(Visible(d, kHiding), row.shown);
      EXPECT_EQ(Text(d, 112), row.operatorText);
      EXPECT_EQ(CheckedMode(d), !row.values ? 0 : row.type == 1 ? 136 : row.type == 2 ? 135 : 134);
      EXPECT_EQ(Look(d, 100).focused, 1);
      EXPECT_EQ(Look(d, 100).modified + Look(d, 101).modified, 0);
      EXPECT_EQ(ORLHeadlessBitmapCount(), row.values ? 3 : 0);
      const char *start = row.type == 2   ? "To build a Range: Replace the 'Expression' keywords on"
                          : row.type == 1 ? "To build a Set: Replace"
                                          : "To build a Formula: Select";
      EXPECT_EQ(Text(d, 139).rfind(start, 0), 0u);
      EXPECT_EQ(Text(d, 133), "Data Item &Values Dialog...");
    });
    EXPECT_TRUE(played);
  }
}

TEST(EditorFrame, ListsItemsKeywordsAndFunctions) {
  HostedContext ec;
  for (const int16_t type : {int16_t{-1}, int16_t{254}, int16_t{255}}) {
    AddKeyword(ec, ("Word" + std::to_string(type)).c_str(), type, 0, 0);
  }
  Edit(ec, {}, [&](OrlWindow d) {
    EXPECT_EQ(RowList(d, 106), "Amount, Edge, End, Money, Name, Start, Tax, Word-1, Word254");
    EXPECT_EQ(Rows(d, 107).size(), ItemNames(ec, ORL_FUNCTION).size());
    EXPECT_EQ(Look(d, 106).currentRow, -1);
  });
}

// The row height is that of the font; the label and the list give way to the buttons.
OrlWindowSystem changed;
int32_t leading;

void TallerFont(OrlWindow dialog, OrlTextMetrics *metrics) {
  ORLHeadlessSystem()->GetTextMetrics(dialog, metrics);
  metrics->externalLeading = leading;
}

TEST(EditorFrame, LaysOutTheColumnOfFormulasAndTheOperators) {
  struct LayoutRow {
    int32_t leading;
    bool values;
    int32_t labelTop, listTop, listBottom;
  };
  // A row is 13 pixels high and 0 or 2 more; the label stood at 75, the list from 93 to 231, and
  // the buttons end at 132.
  for (const LayoutRow &row : {LayoutRow{0, true, 135, 153, 231}, LayoutRow{2, true, 138, 156, 231},
                               LayoutRow{0, false, 75, 93, 231}}) {
    const HostedContext ec = Formulas(0, row.values);
    leading = row.leading;
    WithUser(
        [&](OrlWindow d) {
          const OrlRect label = Look(d, 137).rect, list = Look(d, 114).rect,
                        box = Look(d, 113).rect;
          EXPECT_EQ((Ids{label.left, label.top, label.right, label.bottom}),
                    (Ids{189, row.labelTop, 266, row.labelTop + 13}));
          EXPECT_EQ((Ids{list.left, list.top, list.right, list.bottom}),
                    (Ids{159, row.listTop, 293, row.listBottom}));
          EXPECT_EQ(box.bottom - box.top, 62 + 18);
        },
        {},
        [&] {
          changed = *ORLHeadlessSystem();
          changed.GetTextMetrics = &TallerFont;
          ASSERT_EQ(ORLSetWindowSystem(&changed), 1);
          ORLBuildExpression(nullptr, ec, nullptr, 0);
        });
  }
}

// ---- Commands

struct CommandRow {
  const char *exp;
  std::string acts;
  std::vector<int32_t> answers;
  std::string marked, name, title;  // empty: the editor is closed
  Ids enabled;
  std::string told, result;
};

const std::string kNew = "Formula Editor - [ New Formula ]";
const std::string kSaveQuestion = "Formula Save|Changes have been made, save before continuing?";

// clang-format off
const std::vector<CommandRow> kCommands = {
    {"", "type 100 1 + 1; click 1", {}, "", "", "", {}, "", "Formula1=1 + 1"},
    {"", "type 100 1 +; click 1", {}, "1 +{}", "Formula1", kNew, {1, 101, 115, 117},
     "!ERR_SYNTAX: Incomplete or invalid formula|1 +{}", ""},
    {"Total", "type 100 9; click 2", {}, "", "", "", {}, "", ""},
    {"Total", "type 100 9; key 100 27", {}, "", "", "", {}, "", ""},
    {"Total", "close", {}, "", "", "", {}, "", ""},
    // OK: while both edits hold text.
    {"", "no click 1; type 100 1", {}, "1{}", "Formula1", kNew, {1, 101, 115, 117}, "", ""},
    {"Total", "select 101 0 -1; key 101 8", {}, "{}Price() + 1", "", "Formula Editor - Total",
     {101, 115, 116, 117, 118}, "", ""},
    {"Total", "select 101 0 -1; key 101 8; type 101 T", {}, "{}Price() + 1", "T",
     "Formula Editor - Total", {1, 101, 115, 116, 117, 118}, "", ""},
    {"", "type 100 1; key 100 8", {}, "{}", "Formula1", kNew, {101, 115, 117}, "", ""},
    // The clipboard, and brackets.
    {"", "no click 102; type 100 abc; select 100 1 2; click 102; key 100 35; click 104", {}, "abcb{}",
     "Formula1", kNew, {1, 101, 104, 115, 117}, "", ""},
    {"", "type 100 abc; select 100 1 2; click 103", {}, "a{}c", "Formula1", kNew,
     {1, 101, 104, 115, 117}, "", ""},
    {"", "type 100 abc; select 100 1 2; click 131", {}, "a{}c", "Formula1", kNew,
     {1, 101, 115, 117}, "", ""},
    {"", "type 100 a b c; select 100 2 3; click 105", {}, "a (b) c{}", "Formula1", kNew,
     {1, 101, 115, 117}, "", ""},
    // Rows: nothing is loaded by a click; Select loads, and asks when the edits have changed.
    {"", "row 114 Total", {}, "{}", "Formula1", kNew, {101, 115, 116, 117, 118}, "", ""},
    {"", "row 114 Price", {}, "{}", "Formula1", kNew, {101, 115, 117, 118}, "", ""},
    {"", "key 114 40; key 114 40; key 114 38", {}, "{}", "Formula1", kNew, {101, 115, 117, 118}, "",
     ""},
    {"", "row 114 Total; click 117", {}, "{}Price() + 1", "Total", "Formula Editor - Total",
     {1, 101, 115, 116, 117, 118}, "", ""},
    {"", "row 114 Price; click 117", {}, "{}Amount * 2", "Price", "Formula Editor - Price",
     {1, 117, 118}, "", ""},
    {"Price", "type 100 x; row 114 [ New Formula ]; click 117", {ORL_ID_CANCEL}, "x{}Amount * 2",
     "Price", "Formula Editor - Price", {1, 117}, kSaveQuestion, ""},
    {"Price", "type 100 x; row 114 [ New Formula ]; click 117", {ORL_IDNO}, "{}", "Formula1", kNew,
     {101, 115, 117}, kSaveQuestion, ""},
    {"", "row 114 Total; click 116", {ORL_IDYES}, "{}", "Formula1", kNew, {101, 115},
     "Formula Delete|Are you sure you want to delete selected Formula", ""},
    {"", "row 114 Total; click 118", {}, "{}", "Formula1", kNew, {101, 115, 116, 117}, "", ""},
    // No modes: their buttons cannot be pressed, nor the values'.
    {"", "no click 134; no click 135; no click 136; no click 133; no click 132", {}, "{}",
     "Formula1", kNew, {101, 115, 117}, "", ""},
};
// clang-format on

TEST(EditorFrame, DoesWhatTheButtonsSay) {
  for (const CommandRow &row : kCommands) {
    SCOPED_TRACE(std::string(row.exp) + ": " + row.acts);
    const HostedContext ec = Formulas(0, false);
    const auto steps = [&](OrlWindow d) {
      Act(d, row.acts);
      EXPECT_EQ(Look(d).reachable, row.title.empty() ? 0 : 1);
      if (row.title.empty()) return;
      EXPECT_EQ((std::vector{Marked(d), Text(d, 101), Text(d)}),
                (std::vector{row.marked, row.name, row.title}));
      EXPECT_EQ(Enabled(d, kChanging), row.enabled);
    };
    HEXP made = Edit(ec, {ORLHEXPFromName(ec, row.exp)}, steps, row.answers);
    EXPECT_EQ(ToldAll(), row.told);
    EXPECT_EQ(made == nullptr ? "" : NameOf(ec, made) + "=" + TextOf(ec, made), row.result);
  }
}

struct ModeRow {
  const char *exp;
  std::string acts;
  std::vector<int32_t> answers;
  int32_t checked;
  std::string state, told;
};

// clang-format off
const std::vector<ModeRow> kModeRows = {
    {"", "click 135", {}, 135, "{Expression} AND Expression|Range1|Range Editor - [ New Range ]|"
     "*[ New Range ]:-1, Price:0, Total:1, Span:3, Some:4", ""},
    {"", "click 136; click 134", {}, 134, "{}|Formula1|Formula Editor - [ New Formula ]|"
     "*[ New Formula ]:-1, Price:0, Total:1, Span:3, Some:4", ""},
    {"Total", "click 134", {}, 134, "{}Price() + 1|Total|Formula Editor - Total|"
     "[ New Formula ]:-1, Price:0, *Total:1, Span:3, Some:4", ""},
    {"Total", "click 136", {}, 136, "{Expression}, Expression [,Expression...]|Set1|"
     "Set Editor - [ New Set ]|[ New Set ]:-1, Price:0, *Total:1, Span:3, Some:4", ""},
    {"", "type 100 1; click 135", {ORL_ID_CANCEL}, 134, "1{}|Formula1|Formula Editor - "
     "[ New Formula ]|*[ New Formula ]:-1, Price:0, Total:1, Span:3, Some:4", kSaveQuestion},
    {"Total", "type 101 s; click 135", {ORL_IDYES}, 135, "{Expression} AND Expression|Range1|Range "
     "Editor - [ New Range ]|[ New Range ]:-1, Price:0, *sTotal:1, Span:3, Some:4", kSaveQuestion},
    {"", "type 100 (; click 136", {ORL_IDYES}, 134, "({}|Formula1|Formula Editor - [ New Formula ]|"
     "*[ New Formula ]:-1, Price:0, Total:1, Span:3, Some:4",
     kSaveQuestion + " / !ERR_SYNTAX: Incomplete or invalid formula|({}"},
    // The mode follows a row that is selected; captions follow the current row.
    {"", "row 114 Some; click 117", {}, 136, "{}1, 2|Some|Set Editor - Some|"
     "[ New Set ]:-1, Price:0, Total:1, Span:3, *Some:4", ""},
};
// clang-format on

TEST(EditorFrame, ChangesModes) {
  for (const ModeRow &row : kModeRows) {
    SCOPED_TRACE(std::string(row.exp) + ": " + row.acts);
    const HostedContext ec = Formulas(kRanges, true);
    const auto steps = [&](OrlWindow d) {
      Act(d, row.acts);
      EXPECT_EQ(State(d), row.state);
      EXPECT_EQ(CheckedMode(d), row.checked);
      EXPECT_EQ(Look(d, 100).modified, row.checked == 134 && !row.told.empty() ? 1 : 0);
    };
    Edit(ec, {ORLHEXPFromName(ec, row.exp)}, steps, row.answers);
    EXPECT_EQ(ToldAll(), row.told);
  }
}

TEST(EditorFrame, CaptionsFollowTheRow) {
  for (const bool values : {true, false}) {
    const HostedContext ec = Formulas(kRanges, values);
    Edit(ec, {}, [&](OrlWindow d) {
      for (const char *row : {"Span:Range", "Some:Set", "Price:Formula"}) {
        const std::string name(row, std::strchr(row, ':')),
            kind = values ? row + name.size() + 1 : "Formula";
        Act(d, "row 114 " + name);
        EXPECT_EQ(Text(d, 117), "&Select " + kind);
        EXPECT_EQ(Text(d, 118), "S&how " + kind + " Text...");
        EXPECT_EQ(Text(d), kNew);
      }
    });
  }
}

TEST(EditorFrame, OtherEventsDoNothing) {
  const HostedContext ec = Formulas(kRanges, true);
  Edit(ec, {}, [&](OrlWindow d) {
    const std::string before = State(d);
    for (const uintptr_t id : {0, 3, 99, 113, 115, 119, 132, 137, 138, 139, 140, 65535}) {
      EXPECT_EQ(OrlDlgProc(d, ORL_WM_COMMAND, id, 0), 0) << id;
    }
    for (const uint32_t message : {0u, 1u, 1024u, 1125u, uint32_t{ORL_WM_TIMER}, UINT32_MAX}) {
      EXPECT_EQ(OrlDlgProc(d, message, 7, 0), 0) << message;
    }
    EXPECT_EQ(State(d), before);
  });
}

std::string helped;
int32_t NoteHelp(int32_t command, intptr_t data) {
  helped = std::to_string(command) + " " +
           (command == 257 ? reinterpret_cast<const char *>(data) : std::to_string(data));
  return 1;
}

TEST(EditorFrame, AsksTheHostForHelp) {
  for (const bool values : {true, false}) {
    const HostedContext ec = Formulas(0, values);
    Edit(ec, {}, [&](OrlWindow d) {
      for (const int32_t control : {100, 107, 114, -1}) {
        ORLHeadlessHelp(d, control, &NoteHelp);
        EXPECT_EQ(helped, values ? "1 401" : "1 400") << control;
      }
      Act(d, "row 107 Half");
      ORLHeadlessHelp(d, 107, &NoteHelp);
      EXPECT_EQ(helped, "257 Half");
    });
  }
}

TEST(EditorFrame, OpensTheValuesOfAnItemByItsWholeName) {
  for (const char *item : {"Tax", "Ta", "tax", "", "Net Sales"}) {
    const HostedContext ec = Formulas(0, true);
    const bool found = std::strcmp(item, "Tax") == 0;
    Edit(ec, {nullptr, 0, item}, [&](OrlWindow d) {
      EXPECT_EQ(ORLHeadlessFind("LISTVALUES") != nullptr, found) << item;
      EXPECT_EQ(Look(d, 106).currentRow, found ? 8 - 2 : -1) << item;
      EXPECT_EQ(Text(d, 133), found ? "List Data Item &Values" : "Data Item &Values Dialog...");
    });
  }
}

TEST(EditorFrame, LimitsWhatIsTyped) {
  const HostedContext ec = Formulas(0, false);
  Edit(ec, {nullptr, 0, nullptr, 3}, [&](OrlWindow d) {
    ORLHeadlessType(d, 100, "12345");
    ORLHeadlessType(d, 101, std::string(80, 'x').c_str());
    EXPECT_EQ(Text(d, 100), "123");
    EXPECT_EQ(Text(d, 101).size(), 64u);
  });
}

// The host takes expressions away while the editor shows them; a second editor is refused.
TEST(EditorFrame, GoesOnWithoutExpressionsThatAreGone) {
  for (const char *acts : {"click 117", "click 118", "click 116", "double 114 Total", "click 135",
                           "row 114 Total; right 114 Total", "type 100 2 *; click 1"}) {
    SCOPED_TRACE(acts);
    const HostedContext ec = Formulas(kRanges, true);
    HEXP total = ORLHEXPFromName(ec, "Total");
    Edit(ec, {total}, [&](OrlWindow d) {
      EXPECT_EQ(ORLBuildExpression(d, ec, nullptr, 0), nullptr);
      ORLDestroyEXP(ec, total);
      Make(ec, "Amount", std::string(60, 'z'));
      Act(d, acts);
      ORLHeadlessRepaint(d);
    });
  }
}

// ---- Without an editor

std::string askedFor;
intptr_t NoDialog(const OrlDialogTemplate *dialog, OrlWindow parent, OrlWindowProc, intptr_t) {
  askedFor +=
      std::string(dialog->name) + "@" + std::to_string(reinterpret_cast<intptr_t>(parent)) + " ";
  return -1;
}
// Windows 1 to 9, each the parent of the one above it: hidden, disabled, both, usable.
std::string windowStates;
char StateOf(OrlWindow window) {
  const auto at = reinterpret_cast<size_t>(window) - 1;
  return at < windowStates.size() ? windowStates[at] : 'n';
}
int32_t IsVisible(OrlWindow window) {
  return std::strchr("dU", StateOf(window)) != nullptr;
}
int32_t IsEnabled(OrlWindow window) {
  return std::strchr("hU", StateOf(window)) != nullptr;
}
OrlWindow ParentOf(OrlWindow window) {
  const auto next = reinterpret_cast<size_t>(window) + 1;
  return next <= windowStates.size() ? reinterpret_cast<OrlWindow>(next) : nullptr;
}
intptr_t NoteName(OrlWindow window, uint32_t message, uintptr_t, intptr_t text) {
  askedFor += std::to_string(reinterpret_cast<intptr_t>(window)) + ":" + std::to_string(message) +
              reinterpret_cast<const char *>(text) + " ";
  return 0;
}

TEST(EditorFrame, TellsThatNoDialogCouldBeOpened) {
  const HostedContext ec = Formulas(0, false);
  EXPECT_EQ(ORLBuildExpression(nullptr, ec, nullptr, 0), nullptr);
  EXPECT_EQ(ORLBuildExpression(nullptr, nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(ORLLoadComboBox(ec, ORL_INPUT, &changed), 7);
  for (const auto proc :
       {OrlDlgProc, EditSubProc, StatusSubProc, LBFormsSubProc, LBVarsSubProc, LBFuncsSubProc}) {
    EXPECT_EQ(proc(nullptr, ORL_WM_COMMAND, 1, 0), 0);
  }
  changed = *ORLHeadlessSystem();
  changed.DialogBoxParam = &NoDialog;
  changed.IsWindowVisible = &IsVisible;
  changed.IsWindowEnabled = &IsEnabled;
  changed.GetParent = &ParentOf;
  changed.SendMessage = &NoteName;
  ASSERT_EQ(ORLSetWindowSystem(&changed), 1);
  askedFor.clear();
  EXPECT_EQ(ORLBuildExpression(reinterpret_cast<void *>(5), ec, nullptr, 0), nullptr);
  EXPECT_EQ(askedFor, "EXPBILD@5 DLGERROR@5 ");
  askedFor.clear();
  HostedContext two;
  ORLDeleteAllECVars(two);
  AddInput(two, "B", 0);
  AddInput(two, "a", 0);
  EXPECT_EQ(ORLLoadComboBox(two, ORL_INPUT, reinterpret_cast<void *>(9)), 2);
  EXPECT_EQ(ORLLoadComboBox(two, ORL_FORMULA, reinterpret_cast<void *>(9)), 0);
  EXPECT_EQ(askedFor, "9:323B 9:323a ");
  // A repair opens over the nearest usable window from the owner, which is window 1, upwards.
  for (const char *row : {"U 1", "hdU 3", "nUU 2", "hd 2", "n 1", "dUn 2", " 0"}) {
    windowStates.assign(row, std::strchr(row, ' '));
    const OwnedContext owned(ORLCreateEC(
        windowStates.empty() ? nullptr : reinterpret_cast<void *>(1), nullptr, nullptr, 0));
    askedFor.clear();
    EXPECT_EQ(Load(owned.get(), BlockOf("(", "A")), 0);
    EXPECT_EQ(askedFor.substr(0, 9), std::string("EXPBILD@") + std::strchr(row, ' ')[1]) << row;
  }
  ORLSetWindowSystem(nullptr);
}

TEST(EditorFrame, OpensOnAFormulaThatFailedWhileLoading) {
  const HostedContext ec = Formulas(kRanges, true);
  const std::string block = BlockOf("1 + Nope", "Net");
  WithUser(
      [&](OrlWindow d) {
        EXPECT_EQ(State(d),
                  "1 + {Nope}|Net|Formula Editor - Net|[ New Formula ]:-1, Price:0, "
                  "Total:1, Span:3, Some:4");
        EXPECT_EQ(Enabled(d, kChanging), (Ids{102, 103, 105, 115}));
        EXPECT_EQ(Visible(d, kHiding), (Ids{112}));
        EXPECT_EQ(Look(d, 100).modified, 1);
        Act(d, "wait 999");
        EXPECT_EQ(ToldAll(), "");
        Act(d, "wait 1; row 114 Total");
        EXPECT_EQ(ToldAll(), "!ERR_VAR: Unknown input item.|1 + {Nope}");
        EXPECT_EQ(Enabled(d, kChanging), (Ids{102, 103, 105, 115, 118}));
        EXPECT_EQ(ORLHeadlessBitmapCount(), 0);
        Act(d, "wait 5000; type 100 2; click 1");
      },
      {}, [&] { EXPECT_EQ(Load(ec, block), 1); });
  EXPECT_EQ(ToldAll(), "!ERR_VAR: Unknown input item.|1 + {Nope}");
  EXPECT_EQ(TextOf(ec, ORLHEXPFromName(ec, "Net")), "1 + 2");
}

}  // namespace
