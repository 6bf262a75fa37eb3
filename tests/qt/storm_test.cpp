// Random keys, presses and changes around the editor, with all that helps while people write, and
// the windows beside it: nothing may break, and the context stays whole. ORLI_EVENTS is their
// number, ORLI_SEED the first seed; the sanitizers report their findings.
#include <gtest/gtest.h>

#include <QtTest/qtestkeyboard.h>
#include <QtTest/qtestmouse.h>
#include <QtTest/qtestsystem.h>
#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QLoggingCategory>
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
int left, shownPages, previews, changes, refusals;

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
const char *const kGood[] = {"Amount * 2", "Amount AND 3", "Amount, 5", "F3() + Tax"};

// Windows below the front one receive no user events.
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

// What is in a window at a random place of it, or null.
QWidget *AnyPart(const QWidget *window, QPoint *inside) {
  const QPoint place(Below(window->width()), Below(window->height()));
  QWidget *there = window->childAt(place);
  if (there != nullptr) *inside = there->mapFrom(window, place);
  return there;
}

void PressAnywhere(const QWidget *window) {
  QPoint inside;
  QWidget *there = AnyPart(window, &inside);
  if (there == nullptr) return;
  const Qt::MouseButton button = Below(6) == 0 ? Qt::RightButton : Qt::LeftButton;
  if (Below(3) == 0) {
    QTest::mouseDClick(there, button, Qt::NoModifier, inside);
  } else {
    QTest::mouseClick(there, button, Qt::NoModifier, inside);
  }
}

// As a screen reader does: an action of a control or of a row.
void ActAnywhere(const QWidget *window) {
  QPoint inside;
  QAccessibleInterface *part = QAccessible::queryAccessibleInterface(AnyPart(window, &inside));
  if (part != nullptr && part->childCount() > 0) part = part->child(Below(part->childCount()));
  QAccessibleActionInterface *actions = part == nullptr ? nullptr : part->actionInterface();
  if (actions == nullptr || actions->actionNames().isEmpty()) return;
  actions->doAction(actions->actionNames()[Below(static_cast<int>(actions->actionNames().size()))]);
}

void ChangeSurroundings(QWidget *window) {
  switch (Below(3)) {
    case 0:
      QApplication::clipboard()->setText(kWords[Below(std::size(kWords))]);
      break;
    case 1:
      window->resize(200 + Below(900), 200 + Below(900));
      break;
    default:
      QApplication::setPalette(QPalette(Below(2) == 0 ? QColor(Qt::white) : QColor(50, 50, 50)));
  }
}

void SendOne(QWidget *target) {
  const int deed = Below(200);
  const qt_windows::Dialog *top = qt_windows::TopModal();
  const bool isBeside =
      top == nullptr || top->writing == nullptr || target->window() != top->widget;
  if (isBeside && Below(5) == 0) {
    QTest::keyClick(target, Qt::Key_Escape);  // so that most events are for the editor
  } else if (deed < 80) {
    QTest::keyClicks(target, kWords[Below(std::size(kWords))]);
  } else if (deed < 130) {
    QTest::keyClick(target, kKeys[Below(std::size(kKeys))]);
  } else if (deed < 150) {
    QTest::keyClick(target, kCommands[Below(std::size(kCommands))], Qt::ControlModifier);
  } else if (deed < 170) {
    QTest::keyClick(target, kMnemonics[Below(std::size(kMnemonics))], Qt::AltModifier);
  } else if (deed < 190) {
    PressAnywhere(target->window());
  } else if (deed < 194) {
    ActAnywhere(target->window());
  } else if (deed < 196) {
    ChangeSurroundings(target->window());
  } else if (qobject_cast<QPlainTextEdit *>(target) != nullptr) {
    QTest::keyClick(target, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(target, kGood[Below(std::size(kGood))]);
    if (Below(2) == 0) QTest::keyClick(target, Qt::Key_N, Qt::AltModifier);
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
void Go();

void GoOn(int milliseconds) {
  static QTimer *const next = [] {
    auto *timer = new QTimer(QCoreApplication::instance());
    timer->setSingleShot(true);
    QObject::connect(timer, &QTimer::timeout, Go);
    return timer;
  }();
  next->start(milliseconds);
}

void Go() {
  if (qt_windows::TopModal() == nullptr) return;
  // Sometimes waits until the text has been checked.
  constexpr int kUntilChecked = 450;
  GoOn(Below(1000) == 0 ? kUntilChecked : 0);
  QWidget *target = Target();
  if (left > 0 && target == nullptr) {
    QApplication::activeModalWidget()->activateWindow();
  } else if (left > 0) {
    --left;
    SendOne(target);
  } else {
    GiveUp();
  }
}

void ListValues(EC, const char *, void *list, int32_t, int32_t *more) {
  ORLGetWindowSystem()->SendMessage(list, ORL_LB_ADDSTRING, 0, reinterpret_cast<intptr_t>("it's"));
  *more = Below(2);
}

OrlEditorHost StormHost() {
  OrlEditorHost host = {};
  host.size = sizeof host;
  host.MaySave = [](void *, OrlWindow, HEXP, const char *, const char *) {
    const bool may = Below(8) > 0;
    refusals += may ? 0 : 1;
    return may ? 1 : 0;
  };
  host.Changed = [](void *, OrlWindow) { ++changes; };
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
  return host;
}

// Each formula that the editor has stored parses again.
void CheckStoredFormulas(EC ec, uint32_t seed) {
  for (int32_t i = 0; i < ORLGetExpressionCount(ec); ++i) {
    HEXP exp = ORLHEXPFromOrdinal(ec, i);
    uint16_t type = 0;
    FormulaError error = {};
    const HEXP parsed =
        ORLParseFormula(ec, exp, TextOf(ec, exp).c_str(), NameOf(ec, exp).c_str(), &error, &type);
    // A formula that others call may become a range of its type, and then they cannot call it.
    EXPECT_TRUE(parsed == exp || (parsed == nullptr && error.id == ORL_ERR_IMBEDDEDRANGE))
        << "seed " << seed << ", message " << error.id << ": " << TextOf(ec, exp);
  }
}

TEST(QtStorm, RandomEvents) {
  static int count = 1;
  static char name[] = "storm_test", *arguments[] = {name, nullptr};
  static const auto *const application = new QApplication(count, arguments);
  (void)application;
  QLoggingCategory::setFilterRules("*.warning=false");  // of a platform without a screen
  const char *wanted = std::getenv("ORLI_EVENTS");
  left = wanted == nullptr ? 8000 : std::atoi(wanted);
  const char *first = std::getenv("ORLI_SEED");
  ORLSetWindowSystem(ORLQtWindowSystem());
  OrlEditorHost host = StormHost();
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
      host.flags = Below(3) == 0 ? ORL_HOST_DISCARDS : 0;
      GoOn(0);
      ORLBuildExpressionOfType(nullptr, ec, ORLHEXPFromName(ec, "F1"), 0, Below(3), "");
      QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    CheckStoredFormulas(ec, seed);
  }
  EXPECT_GT(shownPages, 0);
  EXPECT_GT(changes, 0);
  ORLGetWindowSystem()->SetEditorHost(nullptr);
  ORLSetWindowSystem(nullptr);
  std::printf("%d pages, %d previews, %d changes, %d refused\n", shownPages, previews, changes,
              refusals);
}

}  // namespace
