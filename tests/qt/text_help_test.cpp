// Help while the user types: marks, messages, names, placeholders, and help pages.
#include <gtest/gtest.h>

#include <QtTest/qtestkeyboard.h>
#include <QtTest/qtestsystem.h>
#include <QApplication>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTextBrowser>

#include "orli11/qt_windows.h"
#include "windows/qt/colors.h"
#include "windows/qt/list_box.h"
#include "windows/qt/text_scan.h"

namespace {

using qt_windows::Piece;

// "{" and "}" around what was found; "|" is the caret.
std::string Braced(const std::string &text, std::vector<Piece> pieces) {
  std::string braced = text;
  for (auto piece = pieces.rbegin(); piece != pieces.rend(); ++piece) {
    braced.insert(static_cast<size_t>(piece->end), "}");
    braced.insert(static_cast<size_t>(piece->start), "{");
  }
  return braced;
}

TEST(QtTextScan, FindsTokensCallsAndBrackets) {
  const struct {
    const char *text, *quoted, *brackets, *call, *word;
  } rows[] = {
      // text with the caret, literals in quotes, brackets that belong together, call, word
      {"StrMid('a', |1)", "StrMid({'a'}, 1)", "", "StrMid 1", "{1}"},
      {"Str|Mid(a)", "", "", "", "{StrMid}"},
      {"StrMid|(a)", "", "StrMid{(}a{)}", "", "{StrMid}"},
      {"a + (b * (c|))", "", "a + (b * {(}c{)})", "", "{c}"},
      {"F(a, G(b, c), |", "", "", "F 2", ""},
      {"F(a, (b + |c", "", "", "F 1", "{c}"},
      {"'it''s \\' ( ' || ab|", "{'it'}{'s \\' ( '} || ab", "", "", "{ab}"},
      {"'open ab|", "{'open ab}", "", "", ""},
      {"F('(', \"x)\", |", "F({'('}, \"x)\", ", "", "F 2", ""},
      {")(|", "", "", "", ""},
      {"|", "", "", "", ""},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.text);
    std::string text = row.text;
    const size_t bar = text.rfind('|');
    text.erase(bar, 1);
    const QString shown = QString::fromStdString(text);
    const auto caret = static_cast<qsizetype>(bar);
    const auto quoted = qt_windows::QuotedBetween(shown, {0, shown.size()});
    EXPECT_EQ(*row.quoted == 0 ? text : row.quoted, Braced(text, quoted));
    const auto [open, close] = qt_windows::BracketsAt(shown, caret);
    const std::vector<Piece> pair =
        open < 0 ? std::vector<Piece>() : std::vector<Piece>{{open, open + 1}, {close, close + 1}};
    EXPECT_EQ(*row.brackets == 0 ? text : row.brackets, Braced(text, pair));
    const qt_windows::Call call = qt_windows::CallAround(shown, caret);
    EXPECT_EQ(row.call, call.name.isEmpty() ? std::string()
                                            : call.name.toString().toStdString() + " " +
                                                  std::to_string(call.argument));
    const Piece word = qt_windows::WordAt(shown, caret);
    EXPECT_EQ(row.word,
              word.IsEmpty()
                  ? std::string()
                  : "{" + shown.mid(word.start, word.end - word.start).toStdString() + "}");
  }
}

constexpr int32_t kText = 10, kNames = 11, kFunctions = 12, kButton = 1;
constexpr OrlControl kControls[] = {
    {kText, ORL_CONTROL_EDIT, ORL_STYLE_LINES | ORL_STYLE_SCROLL_BAR, "", 0, 0, 200, 50},
    {kNames, ORL_CONTROL_LIST, ORL_STYLE_SORTED | ORL_STYLE_NOTIFY, "", 0, 50, 100, 60},
    {kFunctions, ORL_CONTROL_LIST, ORL_STYLE_SORTED | ORL_STYLE_NOTIFY, "", 100, 50, 100, 60},
    {kButton, ORL_CONTROL_BUTTON, ORL_STYLE_DEFAULT, "OK", 0, 115, 40, 12},
};
constexpr OrlDialogTemplate kTemplate = {"AID", "Aid", "", 8, 0, 0, 200, 130, 1, 4, kControls};

constexpr int kPatience = 60'000;  // milliseconds for what comes at once on an idle machine
const OrlWindowSystem *sys;
std::vector<std::string> received;  // commands, insertions, help

// An edit whose texts are valid except for the word "bad".
int32_t Check(const char *text, OrlTextState *state) {
  const char *bad = std::strstr(text, "bad");
  *state = {};
  if (bad != nullptr) {
    *state = {1, static_cast<int32_t>(bad - text), static_cast<int32_t>(bad - text) + 3, "wrong"};
  } else {
    std::strcpy(state->message, "good");
  }
  return 1;
}

void Insert(int32_t list, const char *row) {
  received.push_back(std::to_string(list) + " " + row);
}

int32_t Describe(int32_t list, const char *row, char *buffer, int32_t size) {
  std::snprintf(buffer, static_cast<size_t>(size), "%s(first, second)\nDoes it.", row);
  return list == kFunctions ? 1 : 0;
}

int32_t IsShown(int32_t /*list*/, const char *row) {
  return std::strcmp(row, "Hidden") == 0 ? 0 : 1;
}

intptr_t Procedure(OrlWindow /*window*/, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  if (message == ORL_WM_COMMAND && (wParam & 0xFFFF) != kText) {
    received.push_back("command " + std::to_string(wParam & 0xFFFF) + " " +
                       std::to_string(wParam >> 16));
  }
  if (message == ORL_WM_HELP_REQUEST) {
    const bool isFunctions = sys->GetDlgCtrlID(reinterpret_cast<OrlWindow>(wParam)) == kFunctions;
    reinterpret_cast<OrlHelpProc>(lParam)(isFunctions ? 257 : 1,
                                          isFunctions ? reinterpret_cast<intptr_t>("chosen") : 400);
  }
  return 0;
}

class QtTextHelp : public testing::Test {
 protected:
  QtTextHelp() {
    static int count = 1;
    static char name[] = "text_help_test", *arguments[] = {name, nullptr};
    static const auto *const application = new QApplication(count, arguments);
    (void)application;
    static constexpr int32_t kLists[] = {kNames, kFunctions, 0};
    static OrlTextAid aid = {};
    aid = {sizeof aid, nullptr, Check, kLists, Insert, Describe, IsShown, nullptr, nullptr};
    sys = ORLQtWindowSystem();
    dialog = sys->CreateDialogParam(&kTemplate, nullptr, Procedure, 0);
    for (const char *row : {"alpha", "alphabet", "beta", "gamma"}) Add(kNames, row);
    for (const char *row : {"Alpine", "Hidden", "Hide"}) Add(kFunctions, row);
    sys->SetTextAid(sys->GetDlgItem(dialog, kText), &aid);
    text = static_cast<QPlainTextEdit *>(WidgetOf(kText));
    text->setFocus();
    EXPECT_TRUE(QTest::qWaitForWindowActive(text->window(), kPatience));
    received.clear();
  }
  ~QtTextHelp() override {
    sys->DestroyWindow(dialog);
    QApplication::processEvents();
  }

  void Add(int32_t list, const char *row) const {
    sys->SendMessage(sys->GetDlgItem(dialog, list), ORL_LB_ADDSTRING, 0,
                     reinterpret_cast<intptr_t>(row));
  }
  QWidget *WidgetOf(int32_t id) const {
    return qt_windows::FindControl(sys->GetDlgItem(dialog, id))->widget;
  }
  // What is marked by a property of its format: "text" of each mark.
  std::vector<std::string> Marked(bool (*wanted)(const QTextCharFormat &)) const {
    std::vector<std::string> marked;
    for (const auto &mark : text->extraSelections()) {
      if (wanted(mark.format)) marked.push_back(mark.cursor.selectedText().toStdString());
    }
    return marked;
  }
  std::vector<std::string> Faults() const {
    return Marked([](const QTextCharFormat &format) {
      return format.underlineStyle() == QTextCharFormat::WaveUnderline;
    });
  }
  bool Says(const char *message) const {
    return QTest::qWaitFor([=, this] { return text->accessibleDescription() == message; },
                           kPatience);
  }

  OrlWindow dialog;
  QPlainTextEdit *text;
};

using Texts = std::vector<std::string>;

TEST_F(QtTextHelp, MarksTheTextAndShowsItsTypeOrError) {
  for (const bool dark : {false, true}) {
    QPalette palette(dark ? QColor(50, 50, 50) : QColor(Qt::white));
    text->setPalette(palette);
    palette = text->palette();
    text->setPlainText("x + 'text' + (bad)");
    ASSERT_TRUE(Says("wrong"));
    EXPECT_EQ(Texts{"bad"}, Faults());
    static QColor quoted;
    quoted = qt_windows::QuotedColor(palette);
    EXPECT_EQ(Texts{"'text'"}, Marked([](const QTextCharFormat &format) {
                return format.foreground().color() == quoted;
              }));
    // The colours differ from the background by more than half of the lightness.
    for (const QColor &color : {quoted, qt_windows::FaultColor(palette)}) {
      EXPECT_GT(std::abs(color.lightness() - palette.color(QPalette::Base).lightness()), 90)
          << dark;
    }
    text->moveCursor(QTextCursor::End);
    QApplication::processEvents();
    EXPECT_EQ((Texts{"(", ")"}), Marked([](const QTextCharFormat &format) {
                return format.hasProperty(QTextFormat::BackgroundBrush);
              }));
    text->setPlainText("x");
    ASSERT_TRUE(Says("good"));
    EXPECT_EQ(Texts{}, Faults());
  }
}

// However long a text is: what is out of view is not marked.
TEST_F(QtTextHelp, MarksOnlyVisibleText) {
  for (const char *line : {"'abc' ||\n", "'abc' || "}) {
    text->setPlainText(QString(line).repeated(7000) + "bad");
    ASSERT_TRUE(Says("wrong"));
    EXPECT_LT(text->extraSelections().size(), 200) << line;
    EXPECT_EQ(Texts{"bad"}, Faults());
    text->setPlainText("");
    ASSERT_TRUE(Says("good"));
  }
}

TEST_F(QtTextHelp, OffersNames) {
  const struct {
    const char *typed;
    QList<Qt::Key> keys;
    const char *received, *text;
  } rows[] = {
      {"1+al", {Qt::Key_Tab}, "11 alpha", "1+al"},
      {"al", {Qt::Key_Down, Qt::Key_Down, Qt::Key_Return}, "12 Alpine", "al"},
      {"AL", {Qt::Key_Up, Qt::Key_Return}, "11 alphabet", "AL"},
      {"alph", {Qt::Key_Escape, Qt::Key_Return}, "command 1 0", "alph"},
      {"al", {Qt::Key_Return}, "command 1 0", "al"},
      {"a", {Qt::Key_Down, Qt::Key_Return}, "command 1 0", "a"},
      {"'al", {Qt::Key_Return}, "command 1 0", "'al"},
      {"hid", {Qt::Key_Tab}, "12 Hide", "hid"},
      {"zz", {Qt::Key_Return}, "command 1 0", "zz"},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.typed);
    sys->SetWindowText(sys->GetDlgItem(dialog, kText), "");
    text->setFocus();
    received.clear();
    QTest::keyClicks(text, row.typed);
    for (const Qt::Key key : row.keys) QTest::keyClick(text, key);
    EXPECT_EQ(Texts{row.received}, received);
    EXPECT_EQ(row.text, text->toPlainText().toStdString());
    auto *names = text->window()->findChild<QListWidget *>();
    EXPECT_FALSE(names->isVisible());
  }
}

// The view of a list is filtered; messages to the list see all rows.
TEST_F(QtTextHelp, ListsAreFiltered) {
  auto *list =
      static_cast<qt_windows::ListBox *>(qt_windows::FindControl(sys->GetDlgItem(dialog, kNames)));
  const auto shown = [list] {
    Texts rows;
    for (int32_t row = 0; row < list->model->Count(); ++row) {
      if (IsRowShown(list, row)) rows.push_back(list->model->At(row).text);
    }
    return rows;
  };
  sys->SendMessage(list->window, ORL_LB_SETCURSEL, 0, 0);
  list->view->setFocus();
  QTest::keyClick(list->view, Qt::Key_F, Qt::ControlModifier);
  QTest::keyClicks(QApplication::focusWidget(), "ET");
  EXPECT_EQ((Texts{"alphabet", "beta"}), shown());
  EXPECT_EQ(4, sys->SendMessage(list->window, ORL_LB_GETCOUNT, 0, 0));
  EXPECT_EQ(Texts{"command 11 1"}, received) << "the row that is shown is current";
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
  EXPECT_EQ(2, sys->SendMessage(list->window, ORL_LB_GETCURSEL, 0, 0));
  Add(kNames, "delta");
  EXPECT_EQ((Texts{"alphabet", "beta"}), shown());
  received.clear();
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
  EXPECT_EQ(Texts{"command 11 2"}, received) << "taken as by a double click";
  EXPECT_EQ(5U, shown().size());
  EXPECT_EQ(list->view, QApplication::focusWidget());
  // What the host hides is not found by letters either.
  auto *functions = WidgetOf(kFunctions);
  functions->setFocus();
  QTest::keyClicks(functions, "hid");
  EXPECT_EQ(2, sys->SendMessage(sys->GetDlgItem(dialog, kFunctions), ORL_LB_GETCURSEL, 0, 0));
}

TEST_F(QtTextHelp, HostShowsTheHelp) {
  OrlEditorHost host = {};
  host.size = sizeof host;
  host.Help = [](void *, const OrlHelp *help) {
    received.push_back(std::to_string(help->control) + " " + std::to_string(help->number) + " " +
                       (help->key == nullptr ? "" : help->key));
    sys->ShowPage(help->dialog, "Title", "## Head\n\n**Text**");
  };
  sys->SetEditorHost(&host);
  const struct {
    int32_t control;
    const char *text, *received;
  } rows[] = {{kText, "+", "10 400 "},
              {kText, "Alpine(", "10 0 Alpine"},
              {kNames, "Alpine(", "11 400 "},
              {kFunctions, "", "12 0 chosen"}};
  for (const auto &row : rows) {
    sys->SetWindowText(sys->GetDlgItem(dialog, kText), "");
    text->setFocus();
    text->window()->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(text->window(), kPatience));
    QTest::keyClicks(text, row.text);
    WidgetOf(row.control)->setFocus();
    received.clear();
    QTest::keyClick(WidgetOf(row.control), Qt::Key_F1);
    EXPECT_EQ(Texts{row.received}, received);
  }
  // One page at a time, which goes by Escape.
  const auto pages = [] {
    int count = 0;
    for (const QWidget *widget : QApplication::topLevelWidgets()) {
      count += widget->isVisible() && widget->windowTitle() == "Title" ? 1 : 0;
    }
    return count;
  };
  EXPECT_EQ(1, pages());
  for (QWidget *widget : QApplication::topLevelWidgets()) {
    auto *browser = widget->findChild<QTextBrowser *>();
    if (browser == nullptr) continue;
    EXPECT_EQ("Head\nText", browser->toPlainText());
    QTest::keyClick(browser, Qt::Key_Escape);
  }
  EXPECT_EQ(0, pages());
  sys->SetEditorHost(nullptr);
}

}  // namespace
