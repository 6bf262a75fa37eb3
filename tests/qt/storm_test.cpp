// Random keys and presses on the editor with all that helps while people write, and on the windows
// beside it: nothing may break, and the context stays whole. ORLI_EVENTS tells how many, ORLI_SEED
// with which numbers they begin; the sanitizers tell what they find.
#include <gtest/gtest.h>

#include <QtTest/qtestkeyboard.h>
#include <QtTest/qtestmouse.h>
#include <QtTest/qtestsystem.h>
#include <QApplication>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QTimer>
#include <cstdlib>
#include <random>

#include "orli11/qt_windows.h"
#include "support/context.h"
#include "windows/qt/state.h"

namespace {

std::mt19937 numbers;
int left, shownPages, previews;

int Below(int count) {
  return count <= 0 ? 0 : static_cast<int>(numbers() % static_cast<uint32_t>(count));
}

const Qt::Key kKeys[] = {Qt::Key_Tab,      Qt::Key_Backtab, Qt::Key_Return,    Qt::Key_Escape,
                         Qt::Key_Up,       Qt::Key_Down,    Qt::Key_Left,      Qt::Key_Right,
                         Qt::Key_Home,     Qt::Key_End,     Qt::Key_Backspace, Qt::Key_Delete,
                         Qt::Key_F1,       Qt::Key_F6,      Qt::Key_F7,        Qt::Key_PageUp,
                         Qt::Key_PageDown, Qt::Key_Space};
// With Control, and with Alt.
const Qt::Key kCommands[] = {Qt::Key_Space, Qt::Key_F, Qt::Key_Z, Qt::Key_A, Qt::Key_X, Qt::Key_V};
const Qt::Key kMnemonics[] = {Qt::Key_I, Qt::Key_U, Qt::Key_F, Qt::Key_M, Qt::Key_N,
                              Qt::Key_H, Qt::Key_V, Qt::Key_D, Qt::Key_S, Qt::Key_Y};
const char *const kWords[] = {"Am", "StrL", "eft(", "'it''s'", ", ",  " + ",
                              "(",  ")",    "1",    "F",       "x\"", "Tax "};

// What lies behind the window in front gets no events of a user.
bool IsReached(const QWidget *window) {
  const QWidget *front = QApplication::activeModalWidget();
  if (window == front || qobject_cast<const QMessageBox *>(front) != nullptr) {
    return window == front;
  }
  const qt_windows::Dialog *top = qt_windows::TopModal();
  for (const qt_windows::Dialog *dialog : qt_windows::Dialogs()) {
    if (dialog->widget == window && dialog->parent == top->window) return true;
  }
  return false;
}

// Where the next event goes: what has the focus of the window in front, or any of its parts.
QWidget *Target() {
  QWidget *front = QApplication::activePopupWidget();
  front = front == nullptr ? QApplication::activeWindow() : front;
  front = front == nullptr ? QApplication::activeModalWidget() : front;
  const bool isPopup = front != nullptr && front == QApplication::activePopupWidget();
  if (front == nullptr || (!isPopup && !IsReached(front))) return nullptr;
  QWidget *focus = front->focusWidget();
  return focus == nullptr ? front : focus;
}

void SendOne(QWidget *target) {
  const int deed = Below(20);
  if (deed < 8) {
    QTest::keyClicks(target, kWords[Below(std::size(kWords))]);
  } else if (deed < 13) {
    QTest::keyClick(target, kKeys[Below(std::size(kKeys))]);
  } else if (deed < 15) {
    QTest::keyClick(target, kCommands[Below(std::size(kCommands))], Qt::ControlModifier);
  } else if (deed < 17) {
    QTest::keyClick(target, kMnemonics[Below(std::size(kMnemonics))], Qt::AltModifier);
  } else {
    QWidget *window = target->window();
    const QPoint place(Below(window->width()), Below(window->height()));
    QWidget *there = window->childAt(place);
    if (there == nullptr) return;
    const QPoint inside = there->mapFrom(window, place);
    const Qt::MouseButton button = Below(6) == 0 ? Qt::RightButton : Qt::LeftButton;
    if (Below(3) == 0) {
      QTest::mouseDClick(there, button, Qt::NoModifier, inside);
    } else {
      QTest::mouseClick(there, button, Qt::NoModifier, inside);
    }
  }
}

// Closes what is open, from the front.
void GiveUp() {
  if (QApplication::activePopupWidget() != nullptr) {
    QApplication::activePopupWidget()->close();
  } else if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
    box->reject();
  } else if (qt_windows::Dialog *top = qt_windows::TopModal()) {
    EndModal(top, 0);
  }
}

// Each event is followed by the next from the loop that runs then, however deep.
void Go() {
  if (qt_windows::TopModal() == nullptr) return;
  // Sometimes waits until the text has been checked.
  const bool rests = Below(1500) == 0;
  QTimer::singleShot(rests ? 450 : 0, QCoreApplication::instance(), Go);
  QWidget *target = Target();
  if (left > 0 && target == nullptr) {
    QApplication::activeModalWidget()->activateWindow();
  } else if (left > 0) {
    --left;
    SendOne(target);
    if (rests && qobject_cast<QPlainTextEdit *>(Target()) != nullptr) {
      QTest::keyClick(Target(), Qt::Key_A, Qt::ControlModifier);
      QTest::keyClicks(Target(), "Amount * 2");
    }
  } else {
    GiveUp();
  }
}

void ListValues(EC, const char *, void *list, int32_t, int32_t *more) {
  ORLGetWindowSystem()->SendMessage(list, ORL_LB_ADDSTRING, 0, reinterpret_cast<intptr_t>("it's"));
  *more = Below(2);
}

TEST(QtStorm, NothingBreaks) {
  static int count = 1;
  static char name[] = "storm_test", *arguments[] = {name, nullptr};
  static const auto *const application = new QApplication(count, arguments);
  (void)application;
  const char *wanted = std::getenv("ORLI_EVENTS");
  left = wanted == nullptr ? 3000 : std::atoi(wanted);
  const char *first = std::getenv("ORLI_SEED");
  ORLSetWindowSystem(ORLQtWindowSystem());
  OrlEditorHost host = {};
  host.size = sizeof host;
  host.flags = ORL_HOST_DISCARDS;
  host.Help = [](void *, const OrlHelp *help) {
    ++shownPages;
    ORLGetWindowSystem()->ShowPage(help->dialog, help->key == nullptr ? "Help" : help->key,
                                   "# Page");
  };
  host.ShowsFunction = [](void *, const char *function) { return function[0] == 'D' ? 0 : 1; };
  host.Preview = [](void *, const char *text, OrlWindow list) {
    ++previews;
    ORLGetWindowSystem()->SendMessage(list, ORL_LB_ADDSTRING, 0, reinterpret_cast<intptr_t>(text));
  };
  ORLGetWindowSystem()->SetEditorHost(&host);
  for (uint32_t seed = first == nullptr ? 1 : static_cast<uint32_t>(std::atoi(first)); left > 0;
       ++seed) {
    numbers.seed(seed);
    HostedContext ec(ORL_FLAG_RANGES);
    ORLSetListValuesCallback(ec, ListValues);
    ORLSetDelPermissionCallback(ec, [](EC, HEXP, void *) { return Below(4); });
    for (int i = 0; i < 10; ++i)
      Store(ec, nullptr, "Amount * 2", ("F" + std::to_string(i)).c_str());
    // A context lasts for some openings.
    for (int i = 0; i < 5 && left > 0; ++i) {
      QTimer::singleShot(0, QCoreApplication::instance(), Go);
      ORLBuildExpressionOfType(nullptr, ec, ORLHEXPFromName(ec, "F1"), 0, Below(3), "");
      QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    for (int32_t i = 0; i < ORLGetExpressionCount(ec); ++i) {
      HEXP exp = ORLHEXPFromOrdinal(ec, i);
      uint16_t type = 0;
      EXPECT_EQ(exp, ORLParseFormula(ec, exp, TextOf(ec, exp).c_str(), NameOf(ec, exp).c_str(),
                                     nullptr, &type))
          << "seed " << seed << ": " << TextOf(ec, exp);
    }
  }
  EXPECT_GT(shownPages, 0);
  ORLGetWindowSystem()->SetEditorHost(nullptr);
  ORLSetWindowSystem(nullptr);
  std::printf("%d pages, %d previews\n", shownPages, previews);
}

}  // namespace
