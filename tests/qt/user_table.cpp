// The table under test, wrapped by one that records what a script needs to know.
#include <QCoreApplication>
#include <QThread>
#include <algorithm>

#include "orli11/qt_windows.h"
#include "tests/qt/user.h"

using qt_user::RealTable;
using qt_user::session;
using qt_user::Timer;

namespace {

constexpr uint32_t kShortestPeriod = 10;

int32_t NoteBox(OrlWindow parent, const char *text, const char *caption, uint32_t type) {
  session.boxes.push_back({text, caption, type, parent, 0, nullptr});
  qt_user::Box &box = session.boxes.back();
  const int32_t answer = RealTable().MessageBox(parent, text, caption, type);
  box.answer = answer == 0 ? -1 : answer;
  return answer;
}

void NoteBeep(uint32_t type) {
  ++session.beeps;
  RealTable().MessageBeep(type);
}

void *NoteLoad(const OrlBitmap *bitmap) {
  void *loaded = RealTable().LoadBitmap(bitmap);
  session.bitmaps += loaded != nullptr ? 1 : 0;
  return loaded;
}
void NoteDelete(void *bitmap) {
  session.bitmaps -= bitmap != nullptr ? 1 : 0;
  RealTable().DeleteBitmap(bitmap);
}

// Timers start at the real table when they are due, in ORLHeadlessWait.
void NoteKill(OrlWindow dialog, uintptr_t timer) {
  std::erase_if(session.timers, [dialog, timer](const Timer &each) {
    return each.dialog == dialog && each.id == timer;
  });
}
void NoteTimer(OrlWindow dialog, uintptr_t timer, uint32_t milliseconds) {
  NoteKill(dialog, timer);
  const uint32_t period = std::max(milliseconds, kShortestPeriod);
  session.timers.push_back({dialog, timer, period, session.clock + period, ++session.timerOrder});
}

OrlWindowSystem MakeTable() {
  OrlWindowSystem table = RealTable();
  table.MessageBox = &NoteBox;
  table.MessageBeep = &NoteBeep;
  table.LoadBitmap = &NoteLoad;
  table.DeleteBitmap = &NoteDelete;
  table.SetTimer = &NoteTimer;
  table.KillTimer = &NoteKill;
  return table;
}

}  // namespace

namespace qt_user {

Session session;

const OrlWindowSystem &RealTable() {
  return *ORLQtWindowSystem();
}

const OrlWindowSystem *NotingTable() {
  static const OrlWindowSystem table = MakeTable();
  return &table;
}

Timer *NextTimer(uint64_t until) {
  std::erase_if(session.timers,
                [](const auto &timer) { return qt_windows::FindDialog(timer.dialog) == nullptr; });
  const auto next = std::min_element(
      session.timers.begin(), session.timers.end(), [](const auto &one, const auto &other) {
        return std::pair(one.due, one.order) < std::pair(other.due, other.order);
      });
  return next == session.timers.end() || next->due > until ? nullptr : &*next;
}

void FireTimer(Timer *timer) {
  constexpr unsigned long kPeriod = 20, kSurely = 30;
  const Timer fired = *timer;
  session.clock = fired.due;
  timer->due += fired.period;
  timer->order = ++session.timerOrder;
  RealTable().SetTimer(fired.dialog, fired.id, kPeriod);
  QThread::msleep(kSurely);
  QCoreApplication::processEvents();
  RealTable().KillTimer(fired.dialog, fired.id);
}

}  // namespace qt_user
