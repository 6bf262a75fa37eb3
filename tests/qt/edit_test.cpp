// Edits on Qt widgets under the keys, the clipboard and the input methods of a user.
#include <gtest/gtest.h>

#include <QAbstractScrollArea>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <functional>

#include "orli11/qt_windows.h"
#include "tests/wren/text_model.h"
#include "windows/qt/state.h"

namespace {

constexpr int32_t kLines = 10, kLine = 11, kShown = 12, kButton = 13;
constexpr OrlControl kControls[] = {
    {kLines, ORL_CONTROL_EDIT, ORL_STYLE_LINES | ORL_STYLE_SCROLL_BAR, "", 0, 0, 100, 40},
    {kLine, ORL_CONTROL_EDIT, 0, "", 0, 40, 100, 12},
    {kShown, ORL_CONTROL_EDIT, ORL_STYLE_LINES | ORL_STYLE_READ_ONLY, "kept", 0, 52, 100, 12},
    {kButton, ORL_CONTROL_BUTTON, ORL_STYLE_DEFAULT, "OK", 0, 70, 40, 12},
};
constexpr OrlDialogTemplate kTemplate = {"EDITS", "Edits", "", 8, 0, 0, 100, 90, 1, 4, kControls};

const OrlWindowSystem *table;
std::vector<std::string>
    received;  // the texts at the time of each EN_CHANGE, "" for other commands

std::string TextOf(OrlWindow window) {
  std::string text(static_cast<size_t>(table->GetWindowTextLength(window)) + 1, '?');
  table->GetWindowText(window, text.data(), static_cast<int32_t>(text.size()));
  text.pop_back();
  return text;
}

intptr_t Procedure(OrlWindow, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  if (message == ORL_WM_COMMAND) {
    const bool change = wParam >> 16 == ORL_EN_CHANGE;
    received.push_back(change ? TextOf(reinterpret_cast<OrlWindow>(lParam)) : "");
  }
  return 0;
}

class QtEdit : public testing::Test {
 protected:
  QtEdit() {
    static int count = 1;
    static char name[] = "edit_test", *arguments[] = {name, nullptr};
    static const auto *const application = new QApplication(count, arguments);
    (void)application;
    table = ORLQtWindowSystem();
    dialog = table->CreateDialogParam(&kTemplate, nullptr, Procedure, 0);
    Use(kLines);
  }
  ~QtEdit() override {
    table->DestroyWindow(dialog);
    QApplication::processEvents();
  }

  void Use(int32_t id) {
    edit = table->GetDlgItem(dialog, id);
    widget = qt_windows::FindControl(edit)->widget;
    table->SetFocus(edit);
  }
  intptr_t Send(uint32_t message, uintptr_t wParam = 0, intptr_t lParam = 0) {
    return table->SendMessage(edit, message, wParam, lParam);
  }
  void Set(const std::string &text) { table->SetWindowText(edit, text.c_str()); }
  void Select(int32_t start, int32_t end) {
    Send(ORL_EM_SETSEL, static_cast<uintptr_t>(start), end);
  }
  void Key(int key, Qt::KeyboardModifiers held = Qt::NoModifier, const QString &text = {}) {
    QKeyEvent press(QEvent::KeyPress, key, held, text);
    QApplication::sendEvent(widget, &press);
    QKeyEvent release(QEvent::KeyRelease, key, held, text);
    QApplication::sendEvent(widget, &release);
  }
  void Control(int key) { Key(key, Qt::ControlModifier); }
  void Type(const QString &text) {
    for (const char32_t code : text.toUcs4()) {
      Key(Qt::Key_unknown, Qt::NoModifier, QString::fromUcs4(&code, 1));
    }
  }
  void Paste(const QString &text) {
    QApplication::clipboard()->setText(text);
    Control(Qt::Key_V);
  }
  void Choose(const QString &caption) {
    const auto *area = qobject_cast<QAbstractScrollArea *>(widget);
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, widget->mapToGlobal(QPoint()));
    QApplication::sendEvent(area == nullptr ? widget : area->viewport(), &event);
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    for (QAction *action : menu == nullptr ? QList<QAction *>() : menu->actions()) {
      if (action->text().startsWith(caption)) {
        action->trigger();
      }
    }
    delete menu;
  }
  void Compose(const QString &shown, const QString &commit) {
    QInputMethodEvent event(shown, {});
    event.setCommitString(commit);
    QApplication::sendEvent(widget, &event);
  }

  OrlWindow dialog, edit;
  QWidget *widget;
};

// Each on "abc" with b selected and "x\ny" on the clipboard.
TEST_F(QtEdit, EachChangeIsNotifiedOnce) {
  const struct {
    const char *what;
    std::function<void()> act;
    std::string lines, line;  // the texts afterwards
    bool byProgram = false;
  } rows[] = {
      {"type", [&] { Type("z"); }, "azc", "azc"},
      {"paste", [&] { Control(Qt::Key_V); }, "ax\nyc", "axc"},
      {"message", [&] { Send(ORL_WM_PASTE); }, "ax\nyc", "axc"},
      {"cut", [&] { Control(Qt::Key_X); }, "ac", "ac"},
      {"clear", [&] { Send(ORL_WM_CLEAR); }, "ac", "ac"},
      {"delete", [&] { Key(Qt::Key_Delete); }, "ac", "ac"},
      {"back", [&] { Key(Qt::Key_Backspace, Qt::NoModifier, "\b"); }, "ac", "ac"},
      {"commit", [&] { Compose("", "zz"); }, "azzc", "azzc"},
      {"byte", [&] { Send(ORL_WM_CHAR, 'z'); }, "azc", "azc"},
      {"copy", [&] { Control(Qt::Key_C); }, "abc", "abc"},
      {"program", [&] { Set("q"); }, "q", "q", true},
  };
  for (const auto &row : rows) {
    for (const int32_t id : {kLines, kLine}) {
      Use(id);
      Set("abc");
      Select(1, 2);
      QApplication::clipboard()->setText("x\ny");
      received.clear();
      row.act();
      const std::string &text = id == kLines ? row.lines : row.line;
      EXPECT_EQ(TextOf(edit), text) << row.what << id;
      const bool notifies = row.byProgram ? id == kLine : text != "abc";
      EXPECT_EQ(received, std::vector<std::string>(notifies ? 1 : 0, text)) << row.what << id;
      EXPECT_EQ(Send(ORL_EM_GETMODIFY), notifies && !row.byProgram ? 1 : 0) << row.what << id;
    }
  }
  Use(kLines);
  Set("ab");
  received.clear();
  Compose("zz", "");
  EXPECT_EQ(TextOf(edit), "ab") << "composed characters are not in the text yet";
  Compose("", "z");
  Control(Qt::Key_Return);
  EXPECT_EQ(received, (std::vector<std::string>{"zab", "z\nab"}));
}

TEST_F(QtEdit, InsertionsOfTheProgramCanBeUndone) {
  Set("abs(Expression)");
  Type("1 ");
  Set("abs(Amount)");
  Set("abs(Amount + \xE9)");
  received.clear();
  const std::pair<const char *, int> rows[] = {// text; caret
                                               {"abs(Amount)", 10},
                                               {"1 abs(Expression)", 16},
                                               {"abs(Expression)", 0}};
  for (const auto &[text, caret] : rows) {
    Control(Qt::Key_Z);
    EXPECT_EQ(TextOf(edit), text);
    EXPECT_EQ(Send(ORL_EM_GETSEL) & 0xFFFF, caret) << text;
  }
  EXPECT_EQ(received.size(), 3U);
  Send(ORL_EM_SETMODIFY, 0);
  Control(Qt::Key_Z);
  EXPECT_EQ(TextOf(edit), "abs(Expression)") << "forgotten";
  for (const int32_t page : kCodePages) {
    const CodePageScope scope(page);
    std::mt19937 random(5);
    for (int32_t round = 0; round < 300; ++round) {
      const std::string texts[] = {RandomText(random, page, 8),
                                   RandomText(random, page, 8) + "\r\n.\n"};
      Set("\xF0\x90\x90\xA8" + texts[0]);
      Set("\xF0\x90\x90\xA9" + texts[1]);
      ASSERT_EQ(TextOf(edit), "\xF0\x90\x90\xA9" + texts[1]) << page;
      Control(Qt::Key_Z);
      ASSERT_EQ(TextOf(edit), "\xF0\x90\x90\xA8" + texts[0]) << page << Shown(texts[1]);
    }
  }
}

// Into "ab" with b selected.
TEST_F(QtEdit, LimitIsOfBytes) {
  const struct {
    int32_t page;
    uintptr_t limit;
    const char *entered;
    std::string typed, pasted;
  } rows[] = {
      {932, 3, "\u3042\u3042", "a\x82\xA0", "a\x82\xA0"},
      {932, 4, "\u3042\u00E9x", "a\x82\xA0x", "a\x82\xA0x"},   // a character that 932 does not have
      {65001, 4, "\u00E9\u3042x", "a\xC3\xA9x", "a\xC3\xA9"},  // keys come one by one
      {65001, 2, "\u3042", "ab", "ab"},
      {65001, 5, "\U0001F600", "a\xF0\x9F\x98\x80", "a\xF0\x9F\x98\x80"},
      {1252, 0, "\u20AC\u3042", "a\x80", "a\x80"},
      {1252, 1, "x", "ab", "ab"},
  };
  for (const auto &row : rows) {
    const CodePageScope scope(row.page);
    for (const int32_t id : {kLines, kLine}) {
      Use(id);
      Send(ORL_EM_LIMITTEXT, row.limit);
      const std::function<void()> ways[] = {[&] { Type(row.entered); }, [&] { Paste(row.entered); },
                                            [&] { Choose("&Paste"); },  // the same
                                            [&] { Compose("", row.entered); }};
      for (size_t way = 0; way < std::size(ways); ++way) {
        Set("ab");
        Select(1, 2);
        ways[way]();
        EXPECT_EQ(TextOf(edit), way == 0 ? row.typed : row.pasted) << row.entered << id << way;
      }
    }
  }
}

TEST_F(QtEdit, SelectionsAreBytes) {
  const std::string japanese = "\x82\xA0x\r\n\x82\xA0", utf8 = "\xF0\x9F\x98\x80\xFF\xC3\xA9";
  const struct {
    int32_t page;
    std::string text;
    int32_t start, end, first, last;
  } rows[] = {
      {932, japanese, 2, 5, 2, 5},
      {932, japanese, 3, 1, 0, 3},
      {932, japanese, 4, 6, 3, 5},
      {932, japanese, 0, -1, 0, 7},
      {932, japanese, 99, 99, 7, 7},
      {932, japanese, -1, 3, 7, 7},
      {65001, utf8, 4, 5, 4, 5},
      {65001, utf8, 3, 6, 0, 5},
      {65001, utf8, 5, -1, 5, 7},
      {1252, "abc", 2, 0, 0, 2},
      {1252, "abc", -1, 0, 0, 0},
      {1252, "", 1, 2, 0, 0},
      {1252, std::string(300000, 'a'), 1, -1, 1, 300000},  // a word without an end costs no more
  };
  for (const int32_t id : {kLines, kLine}) {
    Use(id);
    for (const auto &row : rows) {
      const CodePageScope scope(row.page);
      if (id == kLines || row.text != japanese) {
        if (TextOf(edit) != row.text) {
          Set(row.text);
        }
        Select(row.start, row.end);
        int32_t first = -7, last = -7;
        const intptr_t both = Send(ORL_EM_GETSEL, reinterpret_cast<uintptr_t>(&first),
                                   reinterpret_cast<intptr_t>(&last));
        EXPECT_EQ(std::make_pair(first, last), std::make_pair(row.first, row.last))
            << Shown(row.text).substr(0, 40) << row.start << " " << row.end;
        EXPECT_EQ(both, row.last > 0xFFFF ? -1 : row.first | row.last << 16);
        EXPECT_EQ(Send(ORL_EM_GETSEL), both);
      }
    }
  }
}

TEST_F(QtEdit, CopiesKeepTheirBytes) {
  const CodePageScope scope(65001);
  const std::string text = "a\xFF\xED\xA0\x80\xC2\xA0\r\nb\n\xE2\x80\xA8";
  Set(text);
  Select(0, -1);
  Control(Qt::Key_C);
  EXPECT_EQ(QApplication::clipboard()->text(),
            QString("a\uFFFD\uFFFD\uFFFD\uFFFD\u00A0\nb\n\uFFFD\uFFFD\uFFFD"));
  Select(99, 99);
  Control(Qt::Key_V);
  EXPECT_EQ(TextOf(edit), text + text);
  Use(kLine);
  Control(Qt::Key_V);
  EXPECT_EQ(TextOf(edit), text.substr(0, text.find('\r')));
  Use(kShown);
  Control(Qt::Key_V);
  Send(ORL_WM_PASTE);
  Compose("", "x");
  Choose("Cu&t");
  EXPECT_EQ(TextOf(edit), "kept");
}

}  // namespace
