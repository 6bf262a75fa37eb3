// Thousands of random actions of a user and of a host that changes the context when it is called;
// after each the editor has to agree with the context.
#include <gtest/gtest.h>

#include <random>

#include "editor/editor.h"
#include "editor/session.h"
#include "engine/context.h"
#include "support/context.h"

namespace {

// clang-format off
constexpr int32_t kSessions = 60, kActions = 150;
const std::vector<std::string> kTexts = {
    "1 + 2", "7", "Amount", "Amount * 2", "F1() + 1", "F2() * F3()", "N1()", "1 AND 2", "1 +", "",
    "F4() AND 9", "1, 2", "Tax, F5(), 3", "'it''s'", "Nope(1)", "Start + 1 day",
    "StrMid( String , "};

struct Session {
  std::mt19937 random;
  EC ec;
  int32_t left;      // actions
  bool unlisted;     // the editor has opened with an expression without a row
  bool hostRuns;     // it is in one of its own calls
  std::string done;  // for failure messages
} session;

int32_t Below(int32_t count) {
  return static_cast<int32_t>(session.random() % static_cast<uint32_t>(count));
}
template <typename Value>
const Value &OneOf(const std::vector<Value> &from) { return from[session.random() % from.size()]; }
std::string Name() { return (Below(2) == 0 ? "N" : "F") + std::to_string(Below(30)); }

// ---- The host

// Sometimes it deletes, renames, replaces or adds an expression.
void Meddle() {
  EC ec = session.ec;
  if (session.hostRuns || Below(3) != 0) return;
  session.hostRuns = true;
  HEXP exp = ORLHEXPFromOrdinal(ec, Below(ORLGetExpressionCount(ec) + 1));
  const int32_t deed = Below(5);
  if (deed == 0) {
    Store(ec, nullptr, OneOf(kTexts), Name().c_str());
  } else if (deed == 1 && exp != nullptr) {
    Store(ec, exp, TextOf(ec, exp), Name().c_str());
  } else if (deed == 2 && exp != nullptr) {
    Store(ec, exp, OneOf(kTexts), NameOf(ec, exp).c_str());
  } else if (exp != nullptr) {
    ORLDestroyEXP(ec, exp);
  }
  session.hostRuns = false;
}
int32_t Permit(EC, HEXP, void *) { return Meddle(), Below(4); }
int32_t Rename(EC, const char *, const char *) { return Meddle(), 1; }
void ListValues(EC, const char *, void *list, int32_t, int32_t *more) {
  ORLHeadlessSystem()->SendMessage(list, ORL_LB_ADDSTRING, 0, reinterpret_cast<intptr_t>("it's"));
  *more = Below(2);
  Meddle();
}

// ---- What must hold

void CheckRows(OrlWindow d) {
  const std::vector<std::string> rows = Rows(d, kListFormulas, true);
  const int32_t current = Look(d, kListFormulas).currentRow;
  std::string expected, found;
  size_t row = 1;
  for (int32_t i = 0; i < ORLGetExpressionCount(session.ec); ++i) {
    HEXP exp = ORLHEXPFromOrdinal(session.ec, i);
    const std::string mark = static_cast<int32_t>(row) == current ? "*" : "",
                      text = mark + NameOf(session.ec, exp) + ":" + std::to_string(i);
    const bool listed = row < rows.size() && rows[row] == text;
    // One that a new list would hide may have a row.
    if (listed || !OrlIsHiddenExpression(session.ec, exp)) expected += text + ", ", ++row;
  }
  for (size_t i = 1; i < rows.size(); ++i) found += rows[i] + ", ";
  EXPECT_EQ(found, expected);
}

void CheckEditor(OrlWindow d) {
  const EditorState &editor = *OpenEditor();
  const std::vector<std::string> words = {"Formula", "Range", "Set"};
  const std::string word = Text(d).substr(0, Text(d).find(' '));
  const auto isEnabled = [d](int32_t id) { return Look(d, id).enabled != 0; };
  const int32_t row = Look(d, kListFormulas).currentRow, item = Look(d, kListItems).currentRow;
  const std::string name = row < 1 ? "" : Rows(d, kListFormulas)[static_cast<size_t>(row)].substr(1),
                    newRow = "[ New " + word + " ]";
  HEXP exp = editor.currentExp;
  ASSERT_TRUE(exp == nullptr || ORLGetExpressionOrdinal(session.ec, exp) >= 0);
  CheckRows(d);
  EXPECT_EQ(word, words[size_t(editor.editorMode)]);
  EXPECT_EQ(Rows(d, kListFormulas, true)[0], (row == 0 ? "*" : "") + newRow + ":-1");
  const std::string shown = exp == nullptr ? "" : NameOf(session.ec, exp);
  const bool free = ORLIsNamedFormulaUsed(session.ec, shown.c_str()) == 0;
  EXPECT_EQ(Text(d), word + " Editor - " + (exp == nullptr ? newRow : shown));
  EXPECT_EQ(Enabled(d, {kEditName, kLabelName}).size(), free ? 2u : 0u);
  EXPECT_EQ(isEnabled(kButtonDelete), row >= 1 && ORLIsNamedFormulaUsed(session.ec, name.c_str()) == 0);
  if (row >= 0) {
    HEXP ofRow = ORLHEXPFromName(session.ec, name.c_str());
    EXPECT_EQ(Text(d, kButtonSelect), "&Select " + (row == 0 ? word : words[size_t(KindOfExpression(ofRow))]));
  }
  if (row >= 0 || !session.unlisted) {
    EXPECT_EQ(isEnabled(kButtonSelect), row >= 0);
    EXPECT_EQ(isEnabled(kButtonShowText), row >= 1 && ORLHeadlessFind("EXPTEXTVIEW") == nullptr);
  }
  EXPECT_TRUE(!isEnabled(kButtonOk) || (!Text(d, kEditName).empty() && (word == "Set" || !Text(d, kEditText).empty())));
  const bool open = ORLHeadlessFind("LISTVALUES") != nullptr;
  EXPECT_EQ(Text(d, kButtonValues), open ? "List Data Item &Values" : "Data Item &Values Dialog...");
  EXPECT_TRUE(open || isEnabled(kButtonValues) == (item >= 0));
  for (int32_t i = 0; i < 3; ++i) EXPECT_EQ(Look(d, kOptionFormula + i).checked, i == editor.editorMode);
  EXPECT_EQ(Rows(d, kListItems).size() + Rows(d, kListFunctions).size(), 7u + 1u + 20u);
}

// ---- The user

// One action; the editor decides whether it is possible.
void ActAtRandom(OrlWindow d) {
  static const std::vector<int32_t> edits = {kEditText, kEditName}, lists = {kListItems, kListFunctions, kListFormulas, kListFormulas, kListFormulas},
                                    keys = {9, 32, 13, 38, 40, 37, 39, 46, 8};
  const int32_t kind = Below(14), list = OneOf(lists), edit = OneOf(edits), key = OneOf(keys);
  const int32_t row = Below(Look(d, list).rowCount + 1), id = kEditText + Below(40);
  OrlWindow view = ORLHeadlessFind("EXPTEXTVIEW"), values = ORLHeadlessFind("LISTVALUES");
  const std::string text = edit == kEditName ? Name() : OneOf(kTexts);
  for (const int32_t part : {kind, id, list, row}) session.done += std::to_string(part) + " ";
  session.done += text + "; ";
  switch (kind) {
    case 0: case 1: ORLHeadlessClick(d, id); break;
    case 2: case 3: ORLHeadlessClickRow(d, list, row); break;
    case 4: ORLHeadlessDoubleClickRow(d, list, row); break;
    case 5: ORLHeadlessRightDoubleClickRow(d, kListFormulas, row); break;
    // Of the keys that go to another formula the editor is notified of two only.
    case 6:
      ORLHeadlessKey(d, id == kListFormulas && (key == 37 || key == 39) ? kEditText : id, uint32_t(key), 0);
      break;
    case 7: ORLHeadlessSelect(d, kEditText, Below(9), Below(30)); break;
    case 8: ORLHeadlessSelect(d, edit, 0, -1); ORLHeadlessType(d, edit, text.c_str()); break;
    case 9: ORLHeadlessClick(d, Below(3) == 0 ? kButtonDelete : kButtonSelect); break;
    case 10: ORLHeadlessClick(d, Below(8) == 0 ? kButtonOk + Below(2) : kButtonValues + Below(4)); break;
    case 11: ORLHeadlessDoubleClickRow(values, kListValues, 0); ORLHeadlessType(view, kEditView, "x"); break;
    case 12: ORLHeadlessClose(Below(2) == 0 ? view : values); break;
    default: ORLHeadlessClick(d, 1);
  }
}

int32_t PlayUser(void *, OrlWindow window) {
  char name[32] = "";
  if (ORLHeadlessName(window, name, sizeof name) < 0) {
    Meddle();
    ORLHeadlessAnswer(window, OneOf<int32_t>({6, 6, 7, 2, 1}));
  } else if (name != std::string("EXPBILD")) {
    Meddle();
    ORLHeadlessClick(window, kErrorOk);
  } else if (session.left-- > 0) {
    CheckEditor(window);
    ActAtRandom(window);
    return testing::Test::HasFailure() ? 0 : 1;
  } else {
    ORLHeadlessClose(window);
  }
  return 1;
}
// clang-format on

TEST(RandomSession, AgreesWithTheContext) {
  for (int32_t seed = 1; seed <= kSessions; ++seed) {
    HostedContext ec(ORL_FLAG_RANGES);
    ec.owned->renameProc = &Rename;
    ORLSetListValuesCallback(ec, &ListValues);
    ORLSetDelPermissionCallback(ec, &Permit);
    AddKeyword(ec, "Word", 0, 0, 0);
    session = {std::mt19937(static_cast<uint32_t>(seed)), ec, kActions, false, true, ""};
    for (int32_t i = 0; i < 30; ++i) Store(ec, nullptr, OneOf(kTexts), Name().c_str());
    session.hostRuns = false;
    ASSERT_EQ(ORLHeadlessStart(&PlayUser, nullptr), 1);
    while (session.left > 0 && !HasFailure()) {
      HEXP exp = ORLHEXPFromName(ec, Name().c_str());
      session.unlisted = exp != nullptr && OrlIsHiddenExpression(ec, exp);
      ORLBuildExpressionOfType(nullptr, ec, exp, 0, Below(3), Below(2) == 0 ? "Tax" : "");
    }
    ORLHeadlessEnd();
    ASSERT_FALSE(HasFailure()) << "session " << seed << ":" << session.done;
  }
}

}  // namespace
