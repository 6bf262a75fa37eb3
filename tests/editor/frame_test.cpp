// The frame of the editor: its initial state, commands, modes and captions.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstring>

#include "closed/wren/memory.h"
#include "editor/session.h"
#include "support/cases.h"
#include "support/context.h"

namespace {

using Ids = std::vector<int32_t>;

const Ids kChanging = {kButtonOk,   kEditName,  kButtonCopy,   kButtonCut,    kButtonPaste,
                       kButtonWrap, kLabelName, kButtonDelete, kButtonSelect, kButtonShowText};
const Ids kHiding = {kButtonConcat, kButtonApply, kButtonValues, kOptionFormula,
                     kOptionRange,  kOptionSet,   kLabelMode};

// Price is used by Total; Formula7 is simple and has a generated name, so it is not listed. Modes
// bring a range and a set.
HostedContext Formulas(bool modes, uint16_t flags = ORL_FLAG_RANGES) {
  HostedContext context(flags);
  if (modes) ORLSetListValuesCallback(context, &ListNothing);
  ORLSetDelPermissionCallback(context, &PermitAll);
  Make(context, "Amount * 2", "Price");
  Make(context, "Price() + 1", "Total");
  Make(context, "5", "Formula7");
  if (modes) Make(context, "1 AND 2", "Span");
  if (modes) Make(context, "1, 2", "Some");
  return context;
}

// A block with one formula.
std::string BlockOf(const char *text, const char *name) {
  using namespace std::string_literals;
  return "\3"s + std::string(20, '\0') + "\xfc\0\1\0"s + text + "\0"s + name + "\0"s;
}
int32_t Load(EC ec, const std::string &block) {
  return ORLSetECContents(ec, static_cast<int32_t>(block.size()), block.data(), 1, nullptr);
}

const std::string kAll = "Price:0, Total:1, Span:3, Some:4";
const std::string kRange = "{Expression} AND Expression";
const Ids kFree = {kButtonOk, kEditName, kLabelName, kButtonDelete, kButtonSelect, kButtonShowText};

// The columns of the sessions in frame_cases.txt.
enum Column {
  kModes,
  kType,
  kExp,
  kActs,
  kAnswers,
  kMarked,
  kName,
  kMode,
  kTitled,
  kRows,
  kEnabled,
  kSaid
};

void CheckSession(OrlWindow d, const Case &row) {
  const bool modes = row.Int(kModes) != 0;
  const std::string &rows = row[kRows];
  EXPECT_EQ(Look(d).reachable, row[kName].empty() && row[kMarked].empty() ? 0 : 1);
  if (Look(d).reachable == 0) return;
  const std::string word = std::vector{"Formula", "Range", "Set"}[size_t(row.Int(kMode))];
  const std::string newRow = "[ New " + word + " ]";
  const bool elsewhere = rows.find_first_of("*-") != std::string::npos;
  EXPECT_EQ(Marked(d), row[kMarked]);
  EXPECT_EQ(Text(d, kEditName), row[kName]);
  EXPECT_EQ(Text(d), word + " Editor - " + (row[kTitled].empty() ? newRow : row[kTitled]));
  EXPECT_EQ(RowList(d, kListFormulas, true),
            (elsewhere ? "" : "*") + newRow + ":-1, " + rows.substr(rows[0] == '-' ? 1 : 0));
  EXPECT_EQ(Enabled(d, kChanging), row.Ints(kEnabled));
  EXPECT_EQ(Visible(d, kHiding), modes ? (Ids{kButtonConcat, kButtonValues, kOptionFormula,
                                              kOptionRange, kOptionSet, kLabelMode})
                                       : Ids{kButtonConcat});
  for (int32_t mode = 0; modes && mode < 3; ++mode) {
    EXPECT_EQ(Look(d, kOptionFormula + mode).checked, mode == row.Int(kMode) ? 1 : 0) << mode;
  }
  EXPECT_EQ(Text(d, kEditStatus).rfind("To build a " + word + ": ", 0), 0u) << Text(d, kEditStatus);
  EXPECT_EQ(ORLHeadlessBitmapCount(), modes ? 3 : 0);
  for (const char *last : {"", "click 103", "click 104", "click 105", "click 117", "click 131"}) {
    const bool ends = row[kActs].ends_with(last) && row[kActs].empty() == (*last == 0);
    EXPECT_EQ(Look(d, kEditText).focused,
              ends && row[kSaid].empty() ? 1 : Look(d, kEditText).focused);
  }
}

TEST(EditorFrame, ResultsOfTheTable) {
  for (const Case &row : CasesOf("editor/frame_cases.txt", "sessions")) {
    SCOPED_TRACE(row.where);
    const HostedContext ec = Formulas(row.Int(kModes) != 0);
    bool played = false;
    const auto steps = [&](OrlWindow d) {
      played = true;
      Act(d, row[kActs]);
      CheckSession(d, row);
    };
    HEXP exp = ORLHEXPFromName(ec, row[kExp].c_str());
    HEXP made = Edit(ec, {exp, row.Int(kType)}, steps, row.Ints(kAnswers));
    EXPECT_TRUE(played);
    EXPECT_EQ(made == nullptr ? AllMessages() : NameOf(ec, made) + "=" + TextOf(ec, made),
              row[kSaid]);
  }
}

TEST(EditorFrame, FollowsTheFlagsAndTheHost) {
  struct FlagRow {
    uint16_t flags;
    bool permission, shown;
    const char *caption;
    size_t rows;
    Ids enabled;
  };
  const uint16_t noConcat = ORL_FLAG_NO_CONCAT;
  for (const FlagRow &row :
       {FlagRow{0, true, true, "||", 3, kFree}, FlagRow{noConcat, true, false, "||", 3, kFree},
        FlagRow{noConcat | ORL_FLAG_PERCENT, true, true, "%", 3, kFree},
        FlagRow{ORL_FLAG_LIST_ALL,
                false,
                true,
                "||",
                4,
                {kButtonOk, kEditName, kLabelName, kButtonSelect, kButtonShowText}}}) {
    const HostedContext ec = Formulas(false, row.flags);
    if (!row.permission) ORLSetDelPermissionCallback(ec, nullptr);
    Edit(ec, {ORLHEXPFromName(ec, "Total")}, [&](OrlWindow d) {
      EXPECT_EQ(Look(d, kButtonConcat).visible, row.shown ? 1 : 0);
      EXPECT_EQ(Text(d, kButtonConcat), row.caption);
      EXPECT_EQ(Rows(d, kListFormulas).size(), row.rows);
      EXPECT_EQ(Enabled(d, kChanging), row.enabled);
      EXPECT_EQ(Look(d, kGroupOperators).rect.bottom > Look(d, kButtonConcat).rect.bottom,
                row.shown)
          << "the box";
      if (row.shown) Act(d, "click 112");
      EXPECT_EQ(Text(d, kEditText),
                (row.shown ? std::string(" ") + row.caption + " " : "") + "Price() + 1");
    });
  }
}

TEST(EditorFrame, ListsItemsKeywordsAndFunctions) {
  HostedContext ec;
  for (const int16_t type : {int16_t{-1}, int16_t{254}, int16_t{255}}) {
    AddKeyword(ec, ("Word" + std::to_string(type)).c_str(), type, 0, 0);
  }
  Edit(ec, {}, [&](OrlWindow d) {
    EXPECT_EQ(RowList(d, kListItems),
              "Amount, Edge, End, Money, Name, Start, Tax, Word-1, Word254");
    EXPECT_EQ(Rows(d, kListFunctions).size(), ItemNames(ec, ORL_FUNCTION).size());
    EXPECT_EQ(Look(d, kListItems).currentRow, -1);
  });
}

// The row height is that of the font; the label and the list make space for the buttons.
OrlWindowSystem changed;
int32_t leading;

void TallerFont(OrlWindow dialog, OrlTextMetrics *metrics) {
  ORLHeadlessSystem()->GetTextMetrics(dialog, metrics);
  metrics->externalLeading = leading;
}

TEST(EditorFrame, LaysOutTheColumnOfFormulas) {
  struct LayoutRow {
    int32_t leading;
    bool values;
    int32_t labelTop, listTop;
  };
  // A row is 13 pixels high and some more; the label was at 75, the list from 93 to 231, and the
  // buttons end at 132.
  for (const LayoutRow &row : {LayoutRow{0, true, 135, 153},
                               {2, true, 138, 156},
                               {66, true, 213, 231},
                               {0, false, 75, 93}}) {
    const HostedContext ec = Formulas(row.values);
    leading = row.leading;
    WithUser(
        [&](OrlWindow d) {
          const OrlRect label = Look(d, kLabelFormulas).rect, list = Look(d, kListFormulas).rect;
          EXPECT_EQ((Ids{label.left, label.top, label.right, label.bottom}),
                    (Ids{189, row.labelTop, 266, row.labelTop + 13}));
          EXPECT_EQ((Ids{list.left, list.top, list.right, list.bottom}),
                    (Ids{159, row.listTop, 293, 231}));
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

TEST(EditorFrame, OtherEventsDoNothing) {
  const HostedContext ec = Formulas(true);
  Edit(ec, {}, [&](OrlWindow d) {
    const std::string before = Marked(d) + Text(d) + RowList(d, kListFormulas);
    for (const uintptr_t id :
         {0u, 3u, 99u, 113u, 115u, 119u, 132u, 137u, 138u, 139u, 140u, 65535u}) {
      EXPECT_EQ(OrlDlgProc(d, ORL_WM_COMMAND, id, 0), 0) << id;
    }
    for (const uint32_t message : {0u, 1u, 1024u, 1125u, uint32_t{ORL_WM_TIMER}, UINT32_MAX}) {
      EXPECT_EQ(OrlDlgProc(d, message, 7, 0), 0) << message;
    }
    EXPECT_EQ(Marked(d) + Text(d) + RowList(d, kListFormulas), before);
  });
}

std::string helped;
int32_t NoteHelp(int32_t command, intptr_t data) {
  helped = std::to_string(command) + " " +
           (command == 257 ? reinterpret_cast<const char *>(data) : std::to_string(data));
  return 1;
}

TEST(EditorFrame, CaptionsFollowTheRowAndHelpTheModes) {
  for (const bool modes : {true, false}) {
    const HostedContext ec = Formulas(modes);
    Edit(ec, {}, [&](OrlWindow d) {
      for (const char *row : {"Span:Range", "Some:Set", "Price:Formula"}) {
        const std::string name(row, std::strchr(row, ':')),
            kind = modes ? std::strchr(row, ':') + 1 : "Formula";
        if (!modes && name != "Price") continue;
        Act(d, "row 114 " + name);
        EXPECT_EQ(Text(d, kButtonSelect), "&Select " + kind);
        EXPECT_EQ(Text(d, kButtonShowText), "S&how " + kind + " Text...");
        EXPECT_EQ(Text(d), "Formula Editor - [ New Formula ]");
      }
      for (const int32_t control : Ids{kEditText, kListFunctions, kListFormulas, kNoControl}) {
        ORLHeadlessHelp(d, control, &NoteHelp);
        EXPECT_EQ(helped, modes ? "1 401" : "1 400") << control;
      }
      Act(d, "row 107 Half");
      ORLHeadlessHelp(d, kListFunctions, &NoteHelp);
      EXPECT_EQ(helped, "257 Half");
    });
  }
}

TEST(EditorFrame, OpensTheValuesOfAnItemByItsWholeName) {
  for (const char *item : {"Tax", "Ta", "tax", "", "Net Sales"}) {
    const HostedContext ec = Formulas(true);
    const bool found = std::strcmp(item, "Tax") == 0;
    Edit(ec, {nullptr, 0, item}, [&](OrlWindow d) {
      EXPECT_EQ(ORLHeadlessFind("LISTVALUES") != nullptr, found) << item;
      EXPECT_EQ(Look(d, kListItems).currentRow, found ? 6 : -1) << item;
      EXPECT_EQ(Text(d, kButtonValues),
                found ? "List Data Item &Values" : "Data Item &Values Dialog...");
    });
  }
}

TEST(EditorFrame, LimitsWhatIsTypedAndScrollsToTheExpression) {
  const HostedContext ec = Formulas(false);
  for (int32_t i = 0; i < 40; ++i) Make(ec, "Tax", "Many" + std::to_string(i));
  Edit(ec, {ORLHEXPFromName(ec, "Many20")}, [&](OrlWindow d) {
    EXPECT_EQ(Look(d, kListFormulas).topRow, Look(d, kListFormulas).currentRow);
    EXPECT_EQ(Rows(d, kListFormulas)[23], "*Many20");
  });
  Edit(ec, {nullptr, 0, nullptr, 3}, [&](OrlWindow d) {
    ORLHeadlessType(d, kEditText, "12345");
    ORLHeadlessType(d, kEditName, std::string(80, 'x').c_str());
    EXPECT_EQ(Text(d, kEditText), "123");
    Act(d, "click 120");
    EXPECT_EQ(Text(d, kEditText), "1230") << "picks go beyond the limit";
    EXPECT_EQ(Text(d, kEditName).size(), 64u);
  });
}

// The host deletes expressions while the editor shows them; a second editor is refused.
TEST(EditorFrame, DestroyedExpressionsAreNotUsed) {
  const std::string text = "{}Price() + 1";
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"click 117", "{}"},
      {"click 118", text},
      {"click 116", text},
      {"double 114 Total", text},
      {"row 114 Price; click 118; row 114 Total", text},
      {"right 114 Total", text},
      {"click 135", kRange},
      {"type 100 2 *; click 1", "2 *" + text}};
  for (const auto &[acts, marked] : rows) {
    SCOPED_TRACE(acts);
    const HostedContext ec = Formulas(true);
    HEXP total = ORLHEXPFromName(ec, "Total");
    HEXP made = Edit(ec, {total}, [&, &act = acts, &text = marked](OrlWindow d) {
      EXPECT_EQ(ORLBuildExpression(d, ec, nullptr, 0), nullptr);
      ORLDestroyEXP(ec, total);
      Make(ec, "Amount", std::string(60, 'z'));
      Act(d, act);
      EXPECT_EQ(Marked(d), text);
      ORLHeadlessRepaint(d);
    });
    EXPECT_EQ(made, acts[0] == 't' ? ORLHEXPFromName(ec, "Total") : nullptr);
  }
}

TEST(EditorFrame, ReadsNoHandleThatIsNotInTheContext) {
  const HostedContext ec = Formulas(true);
  void *unreadable = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(unreadable, MAP_FAILED);
  Edit(ec, {static_cast<HEXP>(unreadable)}, [&](OrlWindow d) { EXPECT_EQ(Marked(d), "{}"); });
  munmap(unreadable, 4096);
}

// Memory runs out at each allocation of a session in turn; nothing stored is changed by it.
TEST(EditorFrame, OutOfMemoryAtEachAllocation) {
  const HostedContext ec = Formulas(true);
  const std::string before = Snapshot(ec);
  bool whole = false;
  const auto steps = [&](OrlWindow d) {
    for (const int32_t id : {kListItems, kListFunctions, kListFormulas})
      ORLHeadlessDoubleClickRow(d, id, 2);
    for (const int32_t id :
         {kButtonWrap, kButtonShowText, kButtonValues, kOptionRange, kButtonDigit0, kButtonSelect})
      ORLHeadlessClick(d, id);
    ORLHeadlessRightDoubleClickRow(d, kListFormulas, 3);
    whole = Look(d, kListItems).rowCount == 7 && Rows(d, kListFormulas).size() == 5;
  };
  int64_t budget = 0;
  for (bool reached = false; !reached && budget < 5000; ++budget) {
    WithUser(steps, {ORL_IDNO, ORL_IDNO}, [&] {
      TEST_FailAllocationsAfter(budget);
      EXPECT_EQ(ORLBuildExpression(nullptr, ec, nullptr, 0), nullptr);
      void *more = WRENMemAlloc(1);
      reached = more != nullptr;
      TEST_FailAllocationsAfter(-1);
      WRENMemFree(more);
    });
    ASSERT_EQ(Snapshot(ec), before) << budget;
  }
  EXPECT_TRUE(whole) << budget;
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

TEST(EditorFrame, ReportsThatNoDialogCouldBeOpened) {
  const HostedContext ec = Formulas(false);
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
  const HostedContext ec = Formulas(true);
  const std::string block = BlockOf("1 + Nope", "Net");
  WithUser(
      [&](OrlWindow d) {
        EXPECT_EQ(Marked(d) + "|" + Text(d, kEditName) + "|" + Text(d),
                  "1 + {Nope}|Net|Formula Editor - Net");
        EXPECT_EQ(RowList(d, kListFormulas, true), "[ New Formula ]:-1, " + kAll);
        EXPECT_EQ(Enabled(d, kChanging), (Ids{kButtonCopy, kButtonCut, kButtonWrap, kLabelName}));
        EXPECT_EQ(Visible(d, kHiding), (Ids{kButtonConcat}));
        EXPECT_EQ(Look(d, kEditText).modified, 1);
        Act(d, "wait 999");
        EXPECT_EQ(AllMessages(), "");
        Act(d, "wait 1; row 114 Total");
        EXPECT_EQ(AllMessages(), "!ERR_VAR: Unknown input item.|1 + {Nope}");
        EXPECT_EQ(Enabled(d, kChanging),
                  (Ids{kButtonCopy, kButtonCut, kButtonWrap, kLabelName, kButtonShowText}));
        EXPECT_EQ(ORLHeadlessBitmapCount(), 0);
        Act(d, "wait 5000; type 100 2; click 1");
      },
      {}, [&] { EXPECT_EQ(Load(ec, block), 1); });
  EXPECT_EQ(AllMessages(), "!ERR_VAR: Unknown input item.|1 + {Nope}");
  EXPECT_EQ(TextOf(ec, ORLHEXPFromName(ec, "Net")), "1 + 2");
}

}  // namespace
