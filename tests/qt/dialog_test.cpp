// Dialogs on the screen: positions and sizes, names, mnemonics, boxes, timers.
#include <gtest/gtest.h>

#include <QtTest/qtestkeyboard.h>
#include <QtTest/qtestmouse.h>
#include <QtTest/qtestsystem.h>
#include <QAbstractScrollArea>
#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QTimer>
#include <functional>
#include <map>
#include <set>

#include "orli11/qt_windows.h"
#include "resources/control_ids.h"
#include "resources/dialogs.h"
#include "windows/qt/state.h"

namespace {

using qt_windows::Control;
using qt_windows::Dialog;

constexpr int kPatience = 60'000;  // milliseconds for what comes at once on an idle machine
const OrlWindowSystem *sys = nullptr;
std::function<void(OrlWindow)> act;                   // once the dialog is shown
std::function<intptr_t(uint32_t, uintptr_t)> answer;  // to the messages of the dialog

intptr_t Proc(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t /*lParam*/) {
  if (message == ORL_WM_INITDIALOG) {
    QTimer::singleShot(0, QCoreApplication::instance(), [window] {
      act(window);
      sys->EndDialog(window, 1);
    });
  }
  return answer ? answer(message, wParam) : 0;
}

void RunDialog(const OrlDialogTemplate *model, const std::function<void(OrlWindow)> &steps) {
  sys = ORLQtWindowSystem();
  ASSERT_NE(nullptr, sys) << ORLQtWindowSystemProblem();
  act = steps;
  EXPECT_EQ(1, sys->DialogBoxParam(model, nullptr, Proc, 0));
  answer = nullptr;
}

QWidget *WidgetOf(OrlWindow dialog, int32_t id) {
  return qt_windows::ControlById(qt_windows::FindDialog(dialog), id)->widget;
}

QRect PlaceOf(OrlWindow dialog, int32_t id) {
  return WidgetOf(dialog, id)->geometry();
}

int Across(const Control &control) {
  const auto *button = static_cast<QPushButton *>(control.widget);
  return button->fontMetrics().size(Qt::TextShowMnemonic, button->text()).width();
}

// Whether two controls share more than a line of pixels at their border.
bool Overlap(const Control &left, const Control &right) {
  const QRect shared = left.widget->geometry().intersected(right.widget->geometry());
  const bool frame = left.kind == ORL_CONTROL_GROUP || right.kind == ORL_CONTROL_GROUP;
  const bool shown = !left.widget->isHidden() && !right.widget->isHidden();
  return shown && !frame && shared.width() > 2 && shared.height() > 2;
}

// Every template, in its own size and enlarged. For the editor the plain form: others are where its
// mode buttons do until it has laid them out.
TEST(QtDialog, ControlsDoNotOverlapOrClipText) {
  for (const char *name : {kDialogEditor, kDialogTextView, kDialogValues, kDialogError}) {
    SCOPED_TRACE(name);
    RunDialog(FindDialog(name), [](OrlWindow window) {
      const Dialog *dialog = qt_windows::FindDialog(window);
      for (const int32_t id :
           {kButtonApply, kOptionFormula, kOptionRange, kOptionSet, kLabelMode}) {
        sys->ShowWindow(sys->GetDlgItem(window, id), 0);
      }
      for (const QSize &extra : {QSize(0, 0), QSize(333, 0), QSize(0, 277), QSize(901, 700)}) {
        dialog->widget->resize(dialog->baseSize + extra);
        for (const auto &control : dialog->controls) {
          const bool button = control->kind == ORL_CONTROL_BUTTON;
          EXPECT_TRUE(!button || Across(*control) + 4 <= control->widget->width()) << control->id;
          for (const auto &other : dialog->controls) {
            EXPECT_FALSE(control != other && Overlap(*control, *other))
                << control->id << " and " << other->id << " at +" << extra.width();
          }
        }
      }
    });
  }
}

// In each font: controls in a row or column have equal steps, and lists are aligned.
TEST(QtDialog, ControlsAreSpacedEvenly) {
  for (const int points : {7, 9, 10, 11, 13}) {
    int count = 1;
    char name[] = "host";
    char *arguments[] = {name, nullptr};
    const QApplication host(count, arguments);
    QFont font = QApplication::font();
    font.setPointSize(points);
    QApplication::setFont(font);
    RunDialog(FindDialog(kDialogEditor), [points](OrlWindow window) {
      const std::vector<std::vector<int32_t>> across = {
          {kButtonOk, kButtonCancel, kButtonDelete, kButtonWrap},
          {kButtonDigit7, kButtonDigit8, kButtonDigit9},
          {kButtonDigit1, kButtonDigit0, kButtonDigit2, kButtonPoint, kButtonDigit3},
          {kButtonPlus, kButtonConcat, kButtonMinus},
          {kOptionFormula, kOptionRange, kOptionSet}};
      const std::vector<std::vector<int32_t>> down = {
          {kButtonCut, kButtonCopy, kButtonPaste, kButtonClear},
          {kButtonSelect, kButtonShowText, kButtonValues},
          {kButtonDigit7, kButtonDigit4, kButtonDigit1, kButtonDigit0},
          {kButtonPlus, kButtonTimes, kButtonConcat}};
      const auto steps = [window](const std::vector<int32_t> &ids, bool isDown) {
        std::set<int> found;
        for (size_t i = 1; i < ids.size(); ++i) {
          const QPoint step =
              PlaceOf(window, ids[i]).topLeft() - PlaceOf(window, ids[i - 1]).topLeft();
          found.insert(isDown ? step.y() : step.x());
        }
        return found.size();
      };
      for (const auto &ids : across) EXPECT_EQ(1U, steps(ids, false)) << ids[0] << ", " << points;
      for (const auto &ids : down) EXPECT_EQ(1U, steps(ids, true)) << ids[0] << ", " << points;
      sys->MoveWindow(sys->GetDlgItem(window, kListFormulas), PlaceOf(window, kListFormulas).x(),
                      PlaceOf(window, kListFormulas).y() + 30,
                      PlaceOf(window, kListFormulas).width(),
                      PlaceOf(window, kListFormulas).height() - 30);
      EXPECT_EQ(PlaceOf(window, kListItems).size().height(),
                PlaceOf(window, kListFunctions).size().height());
      EXPECT_EQ(PlaceOf(window, kListItems).bottom(), PlaceOf(window, kListFunctions).bottom());
      EXPECT_EQ(PlaceOf(window, kListItems).bottom(), PlaceOf(window, kListFormulas).bottom());
    });
  }
}

TEST(QtDialog, EnlargingGrowsTextAndLists) {
  RunDialog(FindDialog(kDialogEditor), [](OrlWindow window) {
    const Dialog *dialog = qt_windows::FindDialog(window);
    std::map<int32_t, QRect> before;
    const std::vector<int32_t> ids = {kButtonOk,     kEditText,      kEditName,     kButtonCut,
                                      kListItems,    kListFunctions, kListFormulas, kButtonDigit0,
                                      kButtonDigit9, kOptionFormula, kOptionSet,    kEditStatus};
    for (const int32_t id : ids) before[id] = PlaceOf(window, id);
    dialog->widget->resize(dialog->baseSize + QSize(300, 200));
    const auto grown = [&](int32_t id) { return PlaceOf(window, id).size() - before[id].size(); };
    EXPECT_EQ(300, grown(kEditText).width());
    EXPECT_EQ(300, grown(kEditStatus).width());
    EXPECT_EQ(300, grown(kListItems).width() + grown(kListFunctions).width() +
                       grown(kListFormulas).width());
    EXPECT_GT(grown(kEditName).width(), 50);
    // The text and the lists below it share the height.
    EXPECT_NEAR(200, grown(kEditText).height() + grown(kListItems).height(), 20);
    EXPECT_GT(grown(kEditText).height(), 50);
    EXPECT_GT(grown(kListFunctions).height(), 50);
    for (const int32_t id : {kButtonOk, kButtonCut, kButtonDigit0, kOptionFormula})
      EXPECT_EQ(QSize(0, 0), grown(id)) << id;
    // Adjacent controls stay adjacent.
    const auto apart = [&](int32_t left, int32_t right) {
      return PlaceOf(window, right).topLeft() - PlaceOf(window, left).topLeft() -
             (before[right].topLeft() - before[left].topLeft());
    };
    EXPECT_EQ(QPoint(0, 0), apart(kOptionFormula, kOptionSet));
    EXPECT_EQ(QPoint(0, 0), apart(kButtonDigit0, kButtonDigit9));
    dialog->widget->resize(dialog->baseSize);
    for (const int32_t id : ids) EXPECT_EQ(before[id], PlaceOf(window, id)) << id;
    // A control that the program moves to its own position stays there, however often.
    for (const int32_t id : ids) {
      const QRect place = PlaceOf(window, id);
      for (int i = 0; i < 3; ++i) {
        sys->MoveWindow(sys->GetDlgItem(window, id), place.x(), place.y(), place.width(),
                        place.height());
      }
      EXPECT_EQ(place, PlaceOf(window, id)) << id;
    }
  });
}

QString SpokenName(QWidget *widget) {
  return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
}

TEST(QtDialog, ControlsHaveNamesForScreenReaders) {
  RunDialog(FindDialog(kDialogEditor), [](OrlWindow window) {
    const std::pair<int32_t, const char *> names[] = {
        {100, "Formula text"}, {101, "Formula Name"}, {106, "Data Items"}, {107, "Functions"},
        {114, "Formulas"},     {134, "Formula"},      {103, "Cut"},        {1, "OK"},
        {108, "plus"},         {112, "joined with"},  {105, "in brackets"}};
    for (const auto &[id, name] : names) {
      EXPECT_EQ(QString(name), SpokenName(WidgetOf(window, id))) << id;
    }
    for (const auto &control : qt_windows::FindDialog(window)->controls) {
      const bool named =
          control->kind == ORL_CONTROL_LABEL || !SpokenName(control->widget).isEmpty();
      EXPECT_TRUE(named) << control->id;
    }
    EXPECT_EQ(QAccessible::RadioButton,
              QAccessible::queryAccessibleInterface(WidgetOf(window, kOptionFormula))->role());
  });
  RunDialog(FindDialog(kDialogError), [](OrlWindow window) {
    sys->SetWindowText(sys->GetDlgItem(window, kErrorMessage), "ERR_VAR: What is wrong");
    EXPECT_EQ("ERR_VAR: What is wrong",
              qt_windows::FindDialog(window)->widget->accessibleDescription());
  });
}

// Mnemonics by the keyboard: Alt and a letter, on whatever has the focus.
TEST(QtDialog, MnemonicsLeadToControls) {
  const struct {
    Qt::Key key;
    int32_t focus;
  } rows[] = {{Qt::Key_I, kListItems},     {Qt::Key_U, kListFormulas}, {Qt::Key_F, kListFunctions},
              {Qt::Key_M, kOptionFormula}, {Qt::Key_M, kEditName},     {Qt::Key_Q, kEditName}};
  RunDialog(FindDialog(kDialogEditor), [&rows](OrlWindow window) {
    sys->SetFocus(sys->GetDlgItem(window, kEditText));
    EXPECT_TRUE(QTest::qWaitForWindowActive(qt_windows::FindDialog(window)->widget, kPatience));
    for (const auto &row : rows) {
      ASSERT_NE(nullptr, QApplication::focusWidget());
      QTest::keyClick(QApplication::focusWidget(), row.key, Qt::AltModifier);
      EXPECT_EQ(WidgetOf(window, row.focus), QApplication::focusWidget()) << row.key;
    }
    EXPECT_EQ(0, sys->GetWindowTextLength(sys->GetDlgItem(window, kEditName)))
        << "a letter was typed";
  });
}

// For a read-only text, with a procedure before it that handles all keys.
TEST(QtDialog, ReadOnlyTextScrollsByKeys) {
  RunDialog(FindDialog(kDialogTextView), [](OrlWindow window) {
    OrlWindow edit = sys->GetDlgItem(window, kEditText);
    sys->SetWindowProc(edit,
                       [](OrlWindow, uint32_t, uintptr_t, intptr_t) -> intptr_t { return 0; });
    EXPECT_TRUE(QTest::qWaitForWindowActive(qt_windows::FindDialog(window)->widget, kPatience));
    sys->SetWindowText(edit, QByteArray(200, '\n').constData());
    auto *area = qobject_cast<QAbstractScrollArea *>(WidgetOf(window, kEditText));
    const std::pair<Qt::Key, bool> keys[] = {{Qt::Key_Down, true},    {Qt::Key_PageDown, true},
                                             {Qt::Key_End, true},     {Qt::Key_Up, false},
                                             {Qt::Key_PageUp, false}, {Qt::Key_Home, false}};
    for (const auto &[key, forwards] : keys) {
      const int before = area->verticalScrollBar()->value();
      QTest::keyClick(area, key);
      const int after = area->verticalScrollBar()->value();
      EXPECT_TRUE(forwards ? after > before : after < before) << key;
    }
    EXPECT_EQ(0, area->verticalScrollBar()->value());
  });
}

// As on a small screen, or with a large font.
TEST(QtDialog, FitsTheScreen) {
  int count = 1;
  char name[] = "host";
  char *arguments[] = {name, nullptr};
  const QApplication host(count, arguments);
  QFont font = QApplication::font();
  font.setPointSize(40);
  QApplication::setFont(font);
  RunDialog(FindDialog(kDialogEditor), [](OrlWindow window) {
    const QWidget *widget = qt_windows::FindDialog(window)->widget;
    const QSize room = widget->screen()->availableSize();
    EXPECT_LE(widget->width(), room.width());
    EXPECT_LE(widget->height(), room.height());
    EXPECT_GT(widget->height(), room.height() / 2);
  });
}

TEST(QtDialog, BoxesOfferWhatTheirTypeSays) {
  const struct {
    uint32_t type;
    QList<Qt::Key> keys;
    int32_t answer, buttons;
    QMessageBox::Icon icon;
  } rows[] = {
      {ORL_MB_OK | ORL_MB_ICONSTOP, {Qt::Key_Return}, ORL_ID_OK, 1, QMessageBox::Critical},
      {ORL_MB_OK, {Qt::Key_Escape}, ORL_ID_OK, 1, QMessageBox::NoIcon},
      {ORL_MB_YESNO | ORL_MB_ICONQUESTION, {Qt::Key_Return}, ORL_IDYES, 2, QMessageBox::Question},
      {ORL_MB_YESNO | ORL_MB_DEFBUTTON2, {Qt::Key_Return}, ORL_IDNO, 2, QMessageBox::NoIcon},
      {ORL_MB_YESNO, {Qt::Key_Escape}, ORL_IDNO, 2, QMessageBox::NoIcon},
      {ORL_MB_YESNOCANCEL, {Qt::Key_Escape}, ORL_ID_CANCEL, 3, QMessageBox::NoIcon},
  };
  RunDialog(FindDialog(kDialogValues), [&rows](OrlWindow window) {
    for (const auto &row : rows) {
      QTimer::singleShot(0, QCoreApplication::instance(), [&row] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        ASSERT_NE(nullptr, box);
        EXPECT_EQ(row.icon, box->icon());
        EXPECT_EQ(row.buttons, box->buttons().size());
        EXPECT_EQ("<b>one</b>\ntwo", box->text());
        QTest::keyClick(box, row.keys[0]);
      });
      EXPECT_EQ(row.answer, sys->MessageBox(window, "<b>one</b>\r\ntwo", "Box", row.type))
          << row.type;
    }
  });
}

TEST(QtDialog, TimersAndPostedMessagesArrive) {
  std::vector<std::pair<uint32_t, uintptr_t>> received;
  answer = [&received](uint32_t message, uintptr_t wParam) {
    const bool drawn = message == ORL_WM_PAINT && wParam == 0;
    if (drawn || message == ORL_WM_TIMER || message > 1024) received.emplace_back(message, wParam);
    return 0;
  };
  RunDialog(FindDialog(kDialogValues), [&received](OrlWindow window) {
    QWidget *widget = qt_windows::FindDialog(window)->widget;
    EXPECT_TRUE(QTest::qWaitForWindowExposed(widget, kPatience));
    for (int i = 0; i < 3; ++i) {  // notified of its drawing after that, each time
      received.clear();
      widget->repaint();
      EXPECT_TRUE(received.empty()) << i;
      QCoreApplication::processEvents();
      ASSERT_EQ(1, received.size()) << i;
      EXPECT_EQ(uint32_t{ORL_WM_PAINT}, received[0].first);
    }
    received.clear();
    sys->SetTimer(window, 7, 20);
    sys->SetTimer(window, 8, 0x7FFFFFFF);
    sys->PostMessage(window, 1025, 1, 0);
    sys->PostMessage(window, 1026, 2, 0);
    EXPECT_TRUE(received.empty()) << "at once";
    while (received.size() < 4) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    sys->KillTimer(window, 7);
    sys->PostMessage(window, 1027, 3, 0);  // never comes: the dialog goes first
  });
  using Received = std::vector<std::pair<uint32_t, uintptr_t>>;
  EXPECT_EQ((Received{{1025, 1}, {1026, 2}, {ORL_WM_TIMER, 7}, {ORL_WM_TIMER, 7}}),
            Received(received.begin(), received.begin() + 4));
}

// User events, timers and posted messages come too late: EndDialog has been called.
TEST(QtDialog, EndedDialogReceivesNoEvents) {
  int32_t received = 0;
  bool ended = false;
  answer = [&](uint32_t message, uintptr_t) {
    received += ended && message != ORL_WM_DESTROY ? 1 : 0;
    return 0;
  };
  RunDialog(FindDialog(kDialogEditor), [&](OrlWindow window) {
    sys->PostMessage(window, 1025, 0, 0);
    sys->SetTimer(window, 7, 10);
    sys->EndDialog(window, 1);
    ended = true;
    for (const int32_t id : {kButtonOk, kEditText, kEditName, kListItems, kOptionFormula}) {
      for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape, Qt::Key_Space, Qt::Key_A}) {
        QTest::keyClick(WidgetOf(window, id), key);
      }
      QTest::mouseClick(WidgetOf(window, id), Qt::LeftButton);
    }
    qt_windows::FindDialog(window)->widget->close();
    QTest::qWait(30);
  });
  EXPECT_EQ(0, received);
}

// A user who leaves a dialog with changed text is asked before the command, unless the host
// disables that or nothing is lost.
TEST(QtDialog, AsksBeforeChangedTextIsDiscarded) {
  OrlEditorHost quiet = {};
  quiet.size = sizeof quiet;
  quiet.flags = ORL_HOST_DISCARDS;
  const struct {
    const char *typed;
    bool quiet, undone, asks;
  } rows[] = {{"x", false, false, true},
              {"", false, false, false},
              {"x", false, true, false},
              {"x", true, false, false}};
  for (const auto &row : rows) {
    SCOPED_TRACE(std::string(row.typed) + (row.quiet ? " quiet" : "") +
                 (row.undone ? " undone" : ""));
    int32_t cancelled = 0, asked = 0;
    answer = [&](uint32_t message, uintptr_t wParam) {
      const bool isCancel = message == ORL_WM_COMMAND && wParam == ORL_ID_CANCEL;
      cancelled += isCancel ? 1 : 0;
      return isCancel ? 1 : 0;
    };
    RunDialog(FindDialog(kDialogEditor), [&](OrlWindow window) {
      sys->SetEditorHost(row.quiet ? &quiet : nullptr);
      QWidget *text = WidgetOf(window, kEditText);
      QTest::keyClicks(text, row.typed);
      if (row.undone) QTest::keyClick(text, Qt::Key_Z, Qt::ControlModifier);
      const std::function<void()> leave[] = {
          [&] { QTest::keyClick(text, Qt::Key_Escape); },
          [&] { QTest::mouseClick(WidgetOf(window, 2), Qt::LeftButton); },
          [&] { qt_windows::FindDialog(window)->widget->close(); }};
      int32_t expected = 0;
      for (const auto &way : leave) {
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape, Qt::Key_Y}) {
          QTimer timer;
          QObject::connect(&timer, &QTimer::timeout, [&] {
            QWidget *box = QApplication::activeModalWidget();
            if (qobject_cast<QMessageBox *>(box) == nullptr || !box->isActiveWindow()) return;
            timer.stop();
            ++asked;
            QTest::keyClick(box, key, key == Qt::Key_Y ? Qt::AltModifier : Qt::NoModifier);
          });
          timer.start(10);
          way();
          expected += !row.asks || key == Qt::Key_Y ? 1 : 0;
          EXPECT_EQ(expected, cancelled) << key;
        }
      }
      EXPECT_EQ(row.asks ? 9 : 0, asked);
    });
    sys->SetEditorHost(nullptr);
  }
}

// The main edit: it has the focus after a button that disables itself, and its procedures check the
// clipboard when another program has changed it.
TEST(QtDialog, MainEditGetsTheFocusBack) {
  static OrlTextAid aid = {};
  aid.size = sizeof aid;
  static int32_t looks;
  looks = 0;
  RunDialog(FindDialog(kDialogEditor), [](OrlWindow window) {
    OrlWindow edit = sys->GetDlgItem(window, kEditText);
    sys->SetTextAid(edit, &aid);
    sys->SetWindowProc(edit, [](OrlWindow, uint32_t message, uintptr_t, intptr_t) -> intptr_t {
      looks += message == ORL_WM_KEYDOWN ? 1 : 0;
      return 0;
    });
    answer = [window](uint32_t message, uintptr_t wParam) {
      if (message == ORL_WM_COMMAND && wParam == kButtonDelete) {
        sys->EnableWindow(sys->GetDlgItem(window, kButtonDelete), 0);
      }
      return 0;
    };
    EXPECT_TRUE(QTest::qWaitForWindowActive(qt_windows::FindDialog(window)->widget, kPatience));
    QTest::mouseClick(WidgetOf(window, kButtonDelete), Qt::LeftButton);
    EXPECT_EQ(WidgetOf(window, kEditText), QApplication::focusWidget());
    looks = 0;
    QApplication::clipboard()->setText("another program's");
    EXPECT_TRUE(QTest::qWaitFor([] { return looks >= 1; }, kPatience));
  });
}

// A side window by keys: Return picks the row unless the dialog handles it, F6 goes to the window
// beside it and back, Escape closes it.
TEST(QtDialog, SideWindowsAreReachedByKeys) {
  for (const bool handles : {false, true}) {
    static std::vector<uintptr_t> received;
    static bool closed, handled;
    received.clear();
    closed = false;
    handled = handles;
    const auto side = [](OrlWindow window, uint32_t message, uintptr_t wParam,
                         intptr_t) -> intptr_t {
      if (message == ORL_WM_COMMAND) received.push_back(wParam);
      if (message == ORL_WM_CLOSE) {
        closed = true;
        sys->DestroyWindow(window);
      }
      return message == ORL_WM_COMMAND && handled ? 1 : 0;
    };
    RunDialog(FindDialog(kDialogTextView), [&](OrlWindow window) {
      OrlWindow beside = sys->CreateDialogParam(FindDialog(kDialogValues), window, side, 0);
      OrlWindow list = sys->GetDlgItem(beside, kListValues);
      sys->SendMessage(list, ORL_LB_ADDSTRING, 0, reinterpret_cast<intptr_t>("row"));
      sys->SendMessage(list, ORL_LB_SETCURSEL, 0, 0);
      QWidget *widget = qt_windows::FindDialog(beside)->widget;
      ASSERT_TRUE(QTest::qWaitForWindowActive(widget, kPatience));
      QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
      for (QWidget *next : {WidgetOf(window, kEditView), WidgetOf(beside, kListValues)}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_F6);
        EXPECT_TRUE(
            QTest::qWaitFor([next] { return QApplication::focusWidget() == next; }, kPatience));
      }
      QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    });
    const uintptr_t doubleClick = kListValues | uintptr_t{ORL_LBN_DBLCLK} << 16;
    EXPECT_EQ(
        handles ? (std::vector<uintptr_t>{1, 2}) : (std::vector<uintptr_t>{1, doubleClick, 2}),
        received);
    EXPECT_EQ(!handles, closed);
  }
}

}  // namespace
