// Actions of a script on dialogs on Qt widgets: keyboard and mouse events as from the platform's
// window, so that Qt itself finds the widget that receives them.
#include "tests/qt/user.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QLineEdit>
#include <QListView>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>
#include <QThread>
#include <QWindow>
#include <algorithm>

#include "windows/qt/edit.h"
#include "wreni11.h"

// Notifications of a platform about its windows; Qt provides them for tests (qtestmouse.h).
QT_BEGIN_NAMESPACE
Q_GUI_EXPORT void qt_handleMouseEvent(QWindow *window, const QPointF &local, const QPointF &global,
                                      Qt::MouseButtons state, Qt::MouseButton button,
                                      QEvent::Type type, Qt::KeyboardModifiers held, int stamp);
Q_GUI_EXPORT void qt_handleKeyEvent(QWindow *window, QEvent::Type type, int key,
                                    Qt::KeyboardModifiers held, const QString &text, bool repeated,
                                    ushort count);
QT_END_NAMESPACE

using qt_user::FindWindow;
using qt_user::IsUsable;
using qt_user::session;
using qt_user::Window;
using qt_windows::Control;
using qt_windows::Dialog;

namespace {

constexpr auto kIdle = static_cast<QEvent::Type>(QEvent::User + 1000);

// ---- The loop

// Counts all events, and calls the script where a loop would wait.
class Watcher : public QObject {
 public:
  uint64_t events = 0;
  int idleLevel = 0;  // of the loop that waits, during the call

 protected:
  bool eventFilter(QObject * /*to*/, QEvent * /*event*/) override {
    ++events;
    return false;
  }
  bool event(QEvent *event) override;
};
Watcher *watcher = nullptr;

void MakeApplication() {
  static int count = 1;
  static char name[] = "tests";
  static char *arguments[] = {name, nullptr};
  if (watcher != nullptr) return;
  qputenv("QT_NO_GLIB", "1");  // whose loop reports that it waits when it does not
  // Both are kept until the process ends: Qt is unloaded before their destructors would run.
  static auto *application = new QApplication(count, arguments);
  watcher = new Watcher;
  application->installEventFilter(watcher);
  QApplication::setQuitOnLastWindowClosed(false);
  QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
                   watcher, [] {
                     if (session.open && watcher->idleLevel == 0) {
                       watcher->idleLevel = QThread::currentThread()->loopLevel();
                       QCoreApplication::postEvent(watcher, new QEvent(kIdle));
                     }
                   });
}

// A window manager gives the focus to the window on top when the one that had it goes.
void FocusTopWindow() {
  const Window top = qt_user::TopWindow();
  QWidget *widget = top.Widget();
  const bool lost = QGuiApplication::focusWindow() == nullptr;
  if (lost && widget != nullptr && widget->isVisible()) widget->activateWindow();
}

// Handles what is pending until nothing is.
void Settle() {
  constexpr int kMostRounds = 1000;
  uint64_t before = 0;
  for (int round = 0; round < kMostRounds && before != watcher->events; ++round) {
    before = watcher->events;
    QCoreApplication::processEvents();
    FocusTopWindow();
  }
}

void GiveUp(const Window &top) {
  if (top.box != nullptr) {
    top.box->widget->reject();
    return;
  }
  const qt_windows::Hold hold(top.dialog);
  qt_windows::SendCommand(top.dialog, ORL_ID_CANCEL);
  Settle();
  if (!top.dialog->ended) EndModal(top.dialog, 0);
}

bool Watcher::event(QEvent *event) {
  if (event->type() != kIdle) return QObject::event(event);
  // A loop that was to end may have said once more that it waits.
  if (std::exchange(idleLevel, 0) != QThread::currentThread()->loopLevel()) return true;
  Settle();
  const Window top = qt_user::TopWindow();
  if (top.Widget() == nullptr || (top.dialog != nullptr && top.dialog->ended)) return true;
  if (session.script == nullptr) {
    GiveUp(top);
  } else if (session.script(session.user, ORLHeadlessTop()) == 0) {
    session.script = nullptr;
  }
  // The loop may have been ended while another one ran inside.
  QAbstractEventDispatcher::instance()->wakeUp();
  return true;
}

int32_t End(bool done) {
  Settle();
  return done ? 1 : 0;
}

// ---- The mouse

int stamp = 1000;             // of the mouse's events, milliseconds
constexpr int kApart = 2000;  // no double click
constexpr int kTogether = 10;
Qt::MouseButtons held = Qt::NoButton;

// A position on a control that remains valid when the control is destroyed.
struct Spot {
  QPointer<QWidget> window;
  QPoint point;  // in the window
};

Spot SpotOn(const QWidget *widget, const QPoint &point) {
  return {widget->window(), widget->mapTo(widget->window(), point)};
}

void Mouse(const Spot &spot, QEvent::Type type, Qt::MouseButton button, int later = kTogether) {
  stamp += later;
  if (type == QEvent::MouseButtonPress) held |= button;
  if (type == QEvent::MouseButtonRelease) held &= ~Qt::MouseButtons(button);
  QWindow *window = spot.window.isNull() ? nullptr : spot.window->windowHandle();
  if (window == nullptr) window = QGuiApplication::focusWindow();
  if (window == nullptr) return;
  const QPoint global = window->mapToGlobal(spot.point);
  qt_handleMouseEvent(window, spot.point, global, held, button, type, Qt::NoModifier, stamp);
}

// Comes to a window as a window manager lets the user: pressing on it brings it to the front.
void MoveTo(const Spot &spot) {
  if (!spot.window->isActiveWindow()) {
    spot.window->activateWindow();
    Settle();
  }
  if (!spot.window.isNull()) Mouse(spot, QEvent::MouseMove, Qt::NoButton, kApart);
}

void Press(const Spot &spot, Qt::MouseButton button = Qt::LeftButton) {
  Mouse(spot, QEvent::MouseButtonPress, button);
  Mouse(spot, QEvent::MouseButtonRelease, button);
}

void PressAt(const Spot &spot, bool twice, Qt::MouseButton button = Qt::LeftButton) {
  MoveTo(spot);
  Press(spot, button);
  if (twice) {
    Settle();
    Press(spot, button);
  }
}

// The control is visible at that position and not covered.
bool IsSeen(const Control &control, const Spot &spot) {
  const QWidget *there = spot.window->childAt(spot.point);
  return there == control.widget || control.widget->isAncestorOf(there);
}

// ---- Places in edits

// The scroll bar brings the caret's line into view; the point is in the widget that scrolls.
Spot SpotInLines(QPlainTextEdit *edit, int unit) {
  QTextCursor cursor(edit->document());
  cursor.setPosition(unit);
  const QTextBlock block = cursor.block();
  const QTextLine line = block.layout()->lineForTextPosition(cursor.positionInBlock());
  const QRect before = edit->cursorRect(cursor);
  if (!edit->viewport()->rect().contains(before.center())) {
    edit->verticalScrollBar()->setValue(block.firstLineNumber() + line.lineNumber());
  }
  return SpotOn(edit->viewport(), edit->cursorRect(cursor).center());
}

// The edit's position for the caret; beyond its edges when it is out of view.
Spot SpotInLine(QLineEdit *edit, int unit) {
  QPoint spot = edit->rect().center();
  while (edit->cursorPositionAt(spot) < unit) ++spot.rx();
  while (edit->cursorPositionAt(spot) > unit) --spot.rx();
  return SpotOn(edit, spot);
}

Spot SpotOfByte(const Control &control, int32_t byte) {
  const auto &edit = static_cast<const qt_windows::Edit &>(control);
  const QString shown = edit.Shown();
  const auto unit =
      static_cast<int>(byte < 0 ? shown.size() : PositionOfByte(shown, byte, edit.textKind));
  auto *line = qobject_cast<QLineEdit *>(edit.widget);
  return line != nullptr ? SpotInLine(line, unit)
                         : SpotInLines(static_cast<QPlainTextEdit *>(edit.widget), unit);
}

Spot SpotToPress(const Control &control) {
  return control.kind == ORL_CONTROL_EDIT ? SpotOfByte(control, -1)
                                          : SpotOn(control.widget, control.widget->rect().center());
}

// ---- Keys

struct KeyRow {
  uint32_t number;
  int key;
  const char *text;
};
constexpr KeyRow kKeys[] = {
    {ORL_VK_TAB, Qt::Key_Tab, "\t"},         {ORL_VK_RETURN, Qt::Key_Return, "\r"},
    {ORL_VK_ESCAPE, Qt::Key_Escape, "\33"},  {ORL_VK_SPACE, Qt::Key_Space, " "},
    {ORL_VK_END, Qt::Key_End, ""},           {ORL_VK_HOME, Qt::Key_Home, ""},
    {ORL_VK_LEFT, Qt::Key_Left, ""},         {ORL_VK_UP, Qt::Key_Up, ""},
    {ORL_VK_RIGHT, Qt::Key_Right, ""},       {ORL_VK_DOWN, Qt::Key_Down, ""},
    {ORL_VK_DELETE, Qt::Key_Delete, "\177"}, {ORL_VK_BACK, Qt::Key_Backspace, "\b"},
};

struct Stroke {
  int key;
  Qt::KeyboardModifiers modifiers;
  QString text;
};

Stroke StrokeOfKey(uint32_t number, uint32_t keysHeld) {
  Qt::KeyboardModifiers modifiers;
  const bool shift = (keysHeld & ORL_HEADLESS_SHIFT) != 0;
  const bool control = (keysHeld & ORL_HEADLESS_CONTROL) != 0;
  if (shift) modifiers |= Qt::ShiftModifier;
  if (control) modifiers |= Qt::ControlModifier;
  const auto *row = std::find_if(std::begin(kKeys), std::end(kKeys),
                                 [number](const KeyRow &each) { return each.number == number; });
  if (row != std::end(kKeys)) {
    const int key = shift && row->key == Qt::Key_Tab ? +Qt::Key_Backtab : row->key;
    return {key, modifiers, QString::fromLatin1(row->text)};
  }
  const auto small = static_cast<char16_t>(number - 'A' + (control ? 1 : 'a'));
  const bool letter = number >= 'A' && number <= 'Z';
  return {static_cast<int>(number), modifiers,
          QString(QChar(letter && !(shift && !control) ? small : static_cast<char16_t>(number)))};
}

// The stroke that types one character.
Stroke StrokeOfCharacter(const QByteArray &bytes) {
  const char first = bytes.at(0);
  if (first == '\n') return StrokeOfKey(ORL_VK_RETURN, 0);
  if (first == '\r' || first == '\t' || first == '\b' || first == '\33' || first == ' ') {
    return StrokeOfKey(static_cast<uint8_t>(first), 0);
  }
  if (first > 0 && first < ' ') {
    return StrokeOfKey(static_cast<uint32_t>(first - 1 + 'A'), ORL_HEADLESS_CONTROL);
  }
  const QString text = qt_windows::ShownText(bytes.constData(), qt_windows::TextKind::OneLine);
  return {text.at(0).toUpper().unicode(), text.at(0).isUpper() ? Qt::ShiftModifier : Qt::NoModifier,
          text};
}

// The control of a dialog that takes keys, or null.
const QWidget *KeyTarget(const Dialog *dialog) {
  const QWidget *focus = QApplication::focusWidget();
  const bool takes = focus != nullptr && focus->window() == dialog->widget &&
                     focus != dialog->widget && focus->isEnabled();
  return takes ? focus : nullptr;
}

// Keys go to the window that has the focus. False when nothing takes this one.
bool PressKey(OrlWindow window, const Stroke &stroke) {
  const Window target = FindWindow(window);
  if (!IsUsable(target) || !target.Widget()->isActiveWindow()) return false;
  const bool forDialog = stroke.key == Qt::Key_Escape || stroke.key == Qt::Key_Return ||
                         stroke.key == Qt::Key_Tab || stroke.key == Qt::Key_Backtab;
  if (!forDialog && KeyTarget(target.dialog) == nullptr) return false;
  for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
    QWindow *focus = QGuiApplication::focusWindow();
    if (focus == nullptr) break;
    qt_handleKeyEvent(focus, type, stroke.key, stroke.modifiers, stroke.text, false, 1);
  }
  Settle();
  return true;
}

// Brings the focus to a control unless it is there; false when no user could.
bool GoTo(OrlWindow dialog, int32_t id) {
  const Window target = FindWindow(dialog, id);
  if (target.dialog == nullptr || !IsUsable(target)) return false;
  if (target.control != nullptr && !TakesFocus(*target.control)) return false;
  if (!target.dialog->widget->isActiveWindow()) {
    target.dialog->widget->activateWindow();
    Settle();
  }
  if (target.control != nullptr && !qt_user::HasFocus(target)) {
    target.control->widget->setFocus(Qt::OtherFocusReason);
    Settle();
  }
  return true;
}

int32_t PressRow(OrlWindow dialog, int32_t list, int32_t row, bool twice, Qt::MouseButton button) {
  const Window window = FindWindow(dialog, list);
  QListView *view = qt_user::ViewOf(window.control);
  if (view == nullptr || row < 0 || row >= view->model()->rowCount() || !IsUsable(window)) return 0;
  const QModelIndex index = view->model()->index(row, 0);
  view->scrollTo(index);
  PressAt(SpotOn(view->viewport(), view->visualRect(index).center()), twice, button);
  return End(true);
}

int32_t PressOn(OrlWindow dialog, int32_t id, bool twice) {
  const Window target = FindWindow(dialog, id);
  if (target.control == nullptr || !TakesFocus(*target.control) || !IsUsable(target)) return 0;
  const Spot spot = SpotToPress(*target.control);
  if (!IsSeen(*target.control, spot)) return 0;
  PressAt(spot, twice);
  return End(true);
}

}  // namespace

// ---- Session

int32_t ORLHeadlessStart(OrlHeadlessScript script, void *user) {
  MakeApplication();
  if (ORLSetWindowSystem(ORLHeadlessSystem()) == 0) return 0;
  // As on the system without a screen.
  static OrlEditorHost host = {};
  host.size = sizeof(host);
  host.flags = ORL_HOST_DISCARDS | ORL_HOST_UNAIDED;
  ORLHeadlessSystem()->SetEditorHost(&host);
  session = {};
  QGuiApplication::clipboard()->clear();
  session.script = script;
  session.user = user;
  session.open = true;
  return 1;
}

void ORLHeadlessEnd() {
  if (!session.open || qt_windows::TopModal() != nullptr) return;
  while (!qt_windows::Dialogs().empty()) qt_windows::Destroy(qt_windows::Dialogs().back());
  Settle();
  // What was deleted inside of a loop that has ended.
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  ORLSetWindowSystem(nullptr);
  session = {};
}

const OrlWindowSystem *ORLHeadlessSystem() {
  MakeApplication();
  return qt_user::NotingTable();
}

// ---- The user

int32_t ORLHeadlessFocus(OrlWindow dialog, int32_t id) {
  return End(GoTo(dialog, id));
}

int32_t ORLHeadlessType(OrlWindow dialog, int32_t id, const char *text) {
  bool done = text != nullptr && GoTo(dialog, id);
  while (done && *text != 0) {
    const char *end = WRENStrAdvance(text, 1);
    done = PressKey(dialog, StrokeOfCharacter(QByteArray(text, end - text)));
    text = end;
  }
  return End(done);
}

int32_t ORLHeadlessKey(OrlWindow dialog, int32_t id, uint32_t key, uint32_t keysHeld) {
  return End(GoTo(dialog, id) && PressKey(dialog, StrokeOfKey(key, keysHeld)));
}

int32_t ORLHeadlessClick(OrlWindow dialog, int32_t id) {
  return PressOn(dialog, id, false);
}

int32_t ORLHeadlessDoubleClick(OrlWindow dialog, int32_t id) {
  return PressOn(dialog, id, true);
}

int32_t ORLHeadlessSelect(OrlWindow dialog, int32_t id, int32_t from, int32_t to) {
  const Window target = FindWindow(dialog, id);
  const Control *edit = target.control;
  if (edit == nullptr || edit->kind != ORL_CONTROL_EDIT || !IsUsable(target)) return 0;
  Spot start = SpotOfByte(*edit, from);
  if (!IsSeen(*edit, start)) return 0;
  OrlHeadlessState state = {};
  ORLHeadlessLook(dialog, id, &state);
  // Pressing on a selection drags it: a click removes it first.
  if (state.selectionStart != state.selectionEnd) {
    PressAt(start, false);
    Settle();
    if (!IsUsable(FindWindow(dialog, id))) return 0;
    start = SpotOfByte(*edit, from);
  }
  MoveTo(start);
  Mouse(start, QEvent::MouseButtonPress, Qt::LeftButton);
  const Spot end = SpotOfByte(*edit, to);
  Mouse(end, QEvent::MouseMove, Qt::NoButton);
  Mouse(end, QEvent::MouseButtonRelease, Qt::LeftButton);
  return End(true);
}

int32_t ORLHeadlessClickRow(OrlWindow dialog, int32_t list, int32_t row) {
  return PressRow(dialog, list, row, false, Qt::LeftButton);
}

int32_t ORLHeadlessDoubleClickRow(OrlWindow dialog, int32_t list, int32_t row) {
  return PressRow(dialog, list, row, true, Qt::LeftButton);
}

int32_t ORLHeadlessRightDoubleClickRow(OrlWindow dialog, int32_t list, int32_t row) {
  return PressRow(dialog, list, row, true, Qt::RightButton);
}

int32_t ORLHeadlessClose(OrlWindow dialog) {
  const Window window = FindWindow(dialog);
  if (!IsUsable(window)) return 0;
  QCloseEvent event;
  QCoreApplication::sendEvent(window.Widget()->windowHandle(), &event);
  return End(window.box == nullptr || !IsUsable(window));
}

int32_t ORLHeadlessAnswer(OrlWindow box, int32_t answer) {
  const Window window = FindWindow(box);
  if (window.box == nullptr || !IsUsable(window)) return 0;
  const QMessageBox::StandardButton which = answer == ORL_IDYES       ? QMessageBox::Yes
                                            : answer == ORL_IDNO      ? QMessageBox::No
                                            : answer == ORL_ID_CANCEL ? QMessageBox::Cancel
                                                                      : QMessageBox::Ok;
  const QAbstractButton *button = window.box->widget->button(which);
  if (button == nullptr) return 0;
  PressAt(SpotOn(button, button->rect().center()), false);
  return End(true);
}

int32_t ORLHeadlessWait(uint32_t milliseconds) {
  const uint64_t until = session.clock + milliseconds;
  Settle();
  while (qt_user::Timer *next = qt_user::NextTimer(until)) {
    const Dialog *top = qt_windows::TopModal();
    if (top != nullptr && top->ended) break;
    qt_user::FireTimer(next);
    Settle();
  }
  session.clock = std::max(session.clock, until);
  return 1;
}

int32_t ORLHeadlessHelp(OrlWindow dialog, int32_t id, OrlHelpProc callback) {
  const Window asked = FindWindow(dialog, id);
  if (asked.dialog == nullptr || !IsUsable(FindWindow(dialog)) || !asked.Widget()->isVisible()) {
    return 0;
  }
  OrlWindow window = asked.control == nullptr ? dialog : asked.control->window;
  qt_windows::Send(dialog, ORL_WM_HELP_REQUEST, reinterpret_cast<uintptr_t>(window),
                   reinterpret_cast<intptr_t>(callback));
  return End(true);
}

int32_t ORLHeadlessRepaint(OrlWindow dialog) {
  const Window window = FindWindow(dialog);
  if (window.dialog == nullptr || !window.Widget()->isVisible()) return 0;
  window.Widget()->repaint();
  return End(true);
}
