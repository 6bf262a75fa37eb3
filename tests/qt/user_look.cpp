// Queries of a script about dialogs on Qt widgets.
#include <QAbstractButton>
#include <QApplication>
#include <QWindow>
#include <algorithm>

#include "tests/qt/user.h"
#include "windows/qt/edit.h"
#include "windows/qt/list_box.h"
#include "windows/qt/pictures.h"

using qt_user::Box;
using qt_user::FindWindow;
using qt_user::session;
using qt_user::Window;
using qt_windows::Control;
using qt_windows::Dialog;

namespace {

constexpr uintptr_t kBoxes = uintptr_t{0xB0C5} << 48;  // far from all handles of dialogs

int32_t CopyOut(const QByteArray &text, char *buffer, int32_t size) {
  const auto length = static_cast<int32_t>(text.size());
  if (buffer != nullptr && size > 0) {
    const int32_t copied = std::min(length, size - 1);
    std::copy_n(text.constData(), copied, buffer);
    buffer[copied] = 0;
  }
  return length;
}

template <typename Value>
intptr_t AddressOf(Value *value) {
  return reinterpret_cast<intptr_t>(value);
}

OrlRect RectOf(const QRect &rect) {
  return {rect.left(), rect.top(), rect.right() + 1, rect.bottom() + 1};
}

// Sends a message to the control itself, past a procedure set before it.
template <typename Parameter>
int32_t Ask(Control *control, uint32_t message, uintptr_t wParam, Parameter lParam) {
  return static_cast<int32_t>(control->OwnMessage(message, wParam, intptr_t(lParam)));
}

void LookAt(Control *control, OrlHeadlessState *state) {
  state->kind = control->kind;
  state->id = control->id;
  state->style = control->style;
  state->window = control->window;
  state->parent = control->dialog->window;
  state->enabled = qt_user::RealTable().IsWindowEnabled(control->window);
  state->visible = control->widget->isVisible() ? 1 : 0;
  state->textLength = static_cast<int32_t>(control->Text().size());
  if (const auto *option = qobject_cast<QAbstractButton *>(control->widget)) {
    state->checked = option->isChecked() ? 1 : 0;
  }
  if (control->kind == ORL_CONTROL_EDIT) {
    Ask(control, ORL_EM_GETSEL, reinterpret_cast<uintptr_t>(&state->selectionStart),
        AddressOf(&state->selectionEnd));
    const auto &edit = static_cast<const qt_windows::Edit &>(*control);
    state->caret = ByteOfPosition(edit.Shown(), edit.Selected().caret, edit.textKind);
    state->modified = Ask(control, ORL_EM_GETMODIFY, 0, 0);
    state->limit = edit.limit;
  }
  if (const QListView *view = qt_user::ViewOf(control)) {
    state->rowCount = Ask(control, ORL_LB_GETCOUNT, 0, 0);
    state->currentRow = Ask(control, ORL_LB_GETCURSEL, 0, 0);
    state->topRow = std::max(0, view->indexAt(QPoint(1, 1)).row());
  }
}

void LookAt(const Window &window, OrlHeadlessState *state) {
  const QWidget *widget = window.Widget();
  state->kind = window.box != nullptr ? ORL_HEADLESS_BOX : ORL_HEADLESS_DIALOG;
  state->id = ORL_HEADLESS_SELF;
  state->window = window.box != nullptr ? HandleOf(*window.box) : window.dialog->window;
  state->parent = window.box != nullptr ? window.box->parent : window.dialog->parent;
  state->modal = window.box != nullptr || window.dialog->modal ? 1 : 0;
  state->enabled = IsUsable(window) ? 1 : 0;
  state->visible = widget->isVisible() ? 1 : 0;
  state->currentRow = -1;
}

QByteArray TextOf(const Window &window) {
  if (window.control != nullptr) return window.control->Text();
  if (window.box != nullptr) return window.box->caption;
  return window.dialog->title;
}

Control *FindRow(OrlWindow dialog, int32_t list, int32_t row) {
  Control *control = FindWindow(dialog, list).control;
  const bool there =
      qt_user::ViewOf(control) != nullptr && row >= 0 && row < Ask(control, ORL_LB_GETCOUNT, 0, 0);
  return there ? control : nullptr;
}

std::vector<OrlWindow> OpenWindows() {
  std::vector<OrlWindow> all;
  for (const Dialog *dialog : qt_windows::Dialogs()) all.push_back(dialog->window);
  for (const Box &box : session.boxes) {
    if (box.answer == 0) all.push_back(HandleOf(box));
  }
  return all;
}

}  // namespace

namespace qt_user {

QWidget *Window::Widget() const {
  if (box != nullptr) return box->widget;
  if (control != nullptr) return control->widget;
  return dialog == nullptr ? nullptr : dialog->widget;
}

OrlWindow HandleOf(const Box &box) {
  uintptr_t index = 0;
  while (&session.boxes[index] != &box) ++index;
  return reinterpret_cast<OrlWindow>(kBoxes + index);
}

Window FindWindow(OrlWindow window, int32_t id) {
  const uintptr_t index = reinterpret_cast<uintptr_t>(window) - kBoxes;
  if (index < session.boxes.size()) {
    Box &box = session.boxes[index];
    return id == ORL_HEADLESS_SELF && !box.widget.isNull() ? Window{nullptr, nullptr, &box}
                                                           : Window{};
  }
  Dialog *dialog = qt_windows::FindDialog(window);
  if (dialog == nullptr || id == ORL_HEADLESS_SELF) return {dialog, nullptr, nullptr};
  Control *control = qt_windows::ControlById(dialog, id);
  return control == nullptr ? Window{} : Window{dialog, control, nullptr};
}

Window TopWindow() {
  auto *shown = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
  if (shown == nullptr) return {qt_windows::TopModal(), nullptr, nullptr};
  const auto open = std::find_if(session.boxes.rbegin(), session.boxes.rend(),
                                 [](const Box &box) { return box.answer == 0; });
  if (open == session.boxes.rend()) return {};
  open->widget = shown;
  return {nullptr, nullptr, &*open};
}

bool IsUsable(const Window &window) {
  const QWidget *widget = window.Widget();
  const Dialog *top = qt_windows::TopModal();
  if (widget == nullptr || !widget->isVisible() || !widget->isEnabled()) return false;
  if (window.box == nullptr && top != nullptr && top->ended) return false;
  const QWindow *modal = QGuiApplication::modalWindow(), *own = widget->window()->windowHandle();
  return modal == nullptr || modal == own || modal->isAncestorOf(own, QWindow::IncludeTransients);
}

bool HasFocus(const Window &window) {
  const QWidget *widget = window.Widget();
  const QWidget *focus = QApplication::focusWidget();
  if (window.control == nullptr) return widget != nullptr && widget->isActiveWindow();
  return focus != nullptr && (widget == focus || widget->isAncestorOf(focus));
}

QListView *ViewOf(Control *list) {
  const bool is = list != nullptr && list->kind == ORL_CONTROL_LIST;
  return is ? static_cast<qt_windows::ListBox *>(list)->view : nullptr;
}

}  // namespace qt_user

int32_t ORLHeadlessLook(OrlWindow dialog, int32_t id, OrlHeadlessState *state) {
  const Window seen = FindWindow(dialog, id);
  const QWidget *widget = seen.Widget();
  if (widget == nullptr || state == nullptr) return 0;
  *state = {};
  if (seen.control != nullptr) LookAt(seen.control, state);
  if (seen.control == nullptr) LookAt(seen, state);
  state->focused = HasFocus(seen) ? 1 : 0;
  state->reachable = IsUsable(seen) ? 1 : 0;
  state->rect = RectOf(widget->geometry());
  return 1;
}

OrlWindow ORLHeadlessControlAt(OrlWindow dialog, int32_t index) {
  const Dialog *seen = qt_windows::FindDialog(dialog);
  if (seen == nullptr || index < 0) return nullptr;
  const auto at = static_cast<size_t>(index);
  return at < seen->controls.size() ? seen->controls[at]->window : nullptr;
}

int32_t ORLHeadlessText(OrlWindow dialog, int32_t id, char *buffer, int32_t size) {
  const Window seen = FindWindow(dialog, id);
  return seen.Widget() == nullptr ? -1 : CopyOut(TextOf(seen), buffer, size);
}

int32_t ORLHeadlessRow(OrlWindow dialog, int32_t list, int32_t row, char *buffer, int32_t size) {
  Control *control = FindRow(dialog, list, row);
  if (control == nullptr) return -1;
  const auto at = static_cast<uintptr_t>(row);
  QByteArray text(Ask(control, ORL_LB_GETTEXTLEN, at, 0) + 1, '#');
  text.resize(Ask(control, ORL_LB_GETTEXT, at, AddressOf(text.data())));
  return CopyOut(text, buffer, size);
}

intptr_t ORLHeadlessRowData(OrlWindow dialog, int32_t list, int32_t row) {
  Control *control = FindRow(dialog, list, row);
  return control == nullptr
             ? 0
             : control->OwnMessage(ORL_LB_GETITEMDATA, static_cast<uintptr_t>(row), 0);
}

int32_t ORLHeadlessRowShows(OrlWindow dialog, int32_t list, int32_t row,
                            OrlHeadlessRowShown *shown) {
  if (FindRow(dialog, list, row) == nullptr) return 0;
  OrlHeadlessState state = {};
  ORLHeadlessLook(dialog, list, &state);
  uint32_t drawn = row == state.currentRow ? ORL_STATE_SELECTED : 0;
  if (drawn != 0 && state.focused != 0) drawn |= ORL_STATE_FOCUS;
  return ORLHeadlessDrawRow(dialog, list, row, ORL_DRAW_ENTIRE, drawn, shown);
}

int32_t ORLHeadlessDrawRow(OrlWindow dialog, int32_t list, int32_t row, uint32_t action,
                           uint32_t state, OrlHeadlessRowShown *shown) {
  Control *control = FindWindow(dialog, list).control;
  qt_windows::DrawnRow &drawn = session.drawn;
  drawn = {};
  if (control == nullptr || shown == nullptr) return 0;
  if (row == -1) {
    OrlDrawItem item = {list, row, action, state, control->window, nullptr, {}, 0};
    DrawItem(*control, &item, &drawn);
  } else if (!DrawRowOf(control, row, action, state, &drawn)) {
    return 0;
  }
  *shown = {drawn.picture.name.constData(),
            drawn.pictureAt.x(),
            drawn.pictureAt.y(),
            drawn.text.constData(),
            RectOf(drawn.row),
            RectOf(drawn.textRect),
            drawn.inverted ? 1 : 0,
            RectOf(drawn.invertedRect),
            drawn.focused ? 1 : 0,
            1};
  return 1;
}

OrlWindow ORLHeadlessTop() {
  const Window top = qt_user::TopWindow();
  if (top.box != nullptr) return HandleOf(*top.box);
  return top.dialog == nullptr ? nullptr : top.dialog->window;
}

OrlWindow ORLHeadlessFind(const char *name) {
  OrlWindow found = nullptr;
  for (const Dialog *dialog : qt_windows::Dialogs()) {
    if (qstrcmp(dialog->model->name, name) == 0) found = dialog->window;
  }
  return found;
}

int32_t ORLHeadlessOpen(OrlWindow *windows, int32_t room) {
  const std::vector<OrlWindow> all = OpenWindows();
  const auto count = static_cast<int32_t>(all.size());
  if (windows != nullptr) std::copy_n(all.begin(), std::clamp(room, 0, count), windows);
  return count;
}

int32_t ORLHeadlessName(OrlWindow dialog, char *buffer, int32_t size) {
  const Dialog *seen = qt_windows::FindDialog(dialog);
  return seen == nullptr ? -1 : CopyOut(seen->model->name, buffer, size);
}

int32_t ORLHeadlessBoxCount() {
  return static_cast<int32_t>(session.boxes.size());
}

int32_t ORLHeadlessBoxAt(int32_t index, OrlHeadlessBox *box) {
  if (index < 0 || index >= ORLHeadlessBoxCount() || box == nullptr) return 0;
  const Box &noted = session.boxes[static_cast<size_t>(index)];
  *box = {noted.text.constData(),
          noted.caption.constData(),
          noted.type,
          HandleOf(noted),
          noted.parent,
          noted.answer};
  return 1;
}

int32_t ORLHeadlessBeepCount() {
  return session.beeps;
}

int32_t ORLHeadlessBitmapCount() {
  return session.bitmaps;
}
