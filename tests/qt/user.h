// The simulated user of the window system on Qt widgets: implements the routines of
// windows/headless/headless.h by keyboard and mouse events to the windows of Qt's offscreen
// platform. Shared by user.cpp (actions) and user_look.cpp (queries).
//
// Where it differs from the system without a screen: pixels are those of the font, beeps
// count where a dialog asks for them, and what the editor's tests do not use is left out.
#ifndef ORLI11_TESTS_QT_USER_H
#define ORLI11_TESTS_QT_USER_H

#include <QMessageBox>
#include <QPointer>
#include <QString>
#include <deque>
#include <vector>

#include "windows/headless/headless.h"
#include "windows/qt/pictures.h"
#include "windows/qt/state.h"

class QListView;

namespace qt_user {

struct Box {
  QByteArray text, caption;
  uint32_t type = 0;
  OrlWindow parent = nullptr;
  int32_t answer = 0;
  QPointer<QMessageBox> widget;  // known once it waits for its user
};

// By a clock that advances only in ORLHeadlessWait.
struct Timer {
  OrlWindow dialog = nullptr;
  uintptr_t id = 0;
  uint32_t period = 0;
  uint64_t due = 0, order = 0;
};

struct Session {
  OrlHeadlessScript script = nullptr;
  void *user = nullptr;
  bool open = false;
  int32_t beeps = 0, bitmaps = 0;
  std::deque<Box> boxes;
  std::vector<Timer> timers;
  uint64_t clock = 0, timerOrder = 0;
  qt_windows::DrawnRow drawn;  // by ORLHeadlessDrawRow
};
extern Session session;

// A window of the session: a control with its dialog, a dialog alone, or a box.
struct Window {
  qt_windows::Dialog *dialog = nullptr;
  qt_windows::Control *control = nullptr;
  Box *box = nullptr;
  // Its widget, null when there is none (any more).
  QWidget *Widget() const;
};
Window FindWindow(OrlWindow window, int32_t id = ORL_HEADLESS_SELF);
OrlWindow HandleOf(const Box &box);
// The modal dialog or box that waits for the user.
Window TopWindow();
// Whether the user can reach it: visible, enabled and not below a modal window.
bool IsUsable(const Window &window);
bool HasFocus(const Window &window);

// The view of a list, null for another control.
QListView *ViewOf(qt_windows::Control *list);

// The table under test, and one that records some calls and forwards them (user_table.cpp).
const OrlWindowSystem *NotingTable();
const OrlWindowSystem &RealTable();
// The timer that is due first, null when none is due; fires it once in the real table.
Timer *NextTimer(uint64_t until);
void FireTimer(Timer *timer);

}  // namespace qt_user

#endif
