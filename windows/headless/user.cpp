// Actions for scripts: the user's keys, mouse and waiting, as events through the procedures of the
// windows.
#include <algorithm>
#include <cstring>

#include "windows/headless/state.h"

using headless::Control;
using headless::Dialog;
using headless::Hold;
using headless::session;

namespace {

// One action of the user's on a dialog.
class Action {
 public:
  explicit Action(Dialog *dialog) : hold_(dialog) { session.eventsAtOnce = 0; }
  // It ends when everything that it caused has ended.
  int32_t End(bool done) {
    session.keysHeld = 0;
    headless::Settle();
    return done ? 1 : 0;
  }

 private:
  Hold hold_;
};

Dialog *UsableDialog(OrlWindow window) {
  Dialog *dialog = headless::FindDialog(window);
  return dialog != nullptr && IsUsable(dialog) ? dialog : nullptr;
}

Control *UsableControl(OrlWindow window, int32_t id) {
  Control *control = headless::ControlById(headless::FindDialog(window), id);
  return control != nullptr && IsUsable(control) ? control : nullptr;
}

Control *UsableKind(OrlWindow window, int32_t id, OrlControlKind kind) {
  Control *control = UsableControl(window, id);
  return control != nullptr && control->kind == kind ? control : nullptr;
}

// A user event for a control, followed by the messages posted because of it. False when the control
// can no longer be reached.
bool Input(const Control *control, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  if (!IsUsable(control)) {
    return false;
  }
  headless::Send(control->window, message, wParam, lParam);
  headless::RunPosted();
  return true;
}

void MouseInput(const Control *control, uint32_t message, intptr_t point) {
  Input(control, message, 0, point);
}

void MoveMouse(const Control *control, intptr_t point) {
  Input(control, ORL_WM_SETCURSOR, reinterpret_cast<uintptr_t>(control->window), 0);
  MouseInput(control, ORL_WM_MOUSEMOVE, point);
}

void PressMouse(const Control *control, intptr_t point, bool twice) {
  MoveMouse(control, point);
  MouseInput(control, ORL_WM_LBUTTONDOWN, point);
  MouseInput(control, ORL_WM_LBUTTONUP, point);
  if (twice) {
    MouseInput(control, ORL_WM_LBUTTONDBLCLK, point);
    MouseInput(control, ORL_WM_LBUTTONUP, point);
  }
}

intptr_t PlaceToPress(Control *control) {
  if (control->kind == ORL_CONTROL_EDIT) {
    return headless::PointOfByte(control, control->text.length);
  }
  const intptr_t x = headless::Width(control->rect) / 2;
  const intptr_t y = headless::Height(control->rect) / 2;
  return (x & 0x7FFF) | (y & 0x7FFF) << 16;
}

int32_t Press(OrlWindow dialog, int32_t id, bool twice) {
  Control *control = UsableControl(dialog, id);
  if (control == nullptr || !TakesFocus(*control)) {
    return 0;
  }
  Action action(control->dialog);
  PressMouse(control, PlaceToPress(control), twice);
  return action.End(true);
}

// A row that the user has brought into view, or null.
Control *ReachRow(OrlWindow dialog, int32_t list, int32_t row) {
  Control *control = UsableKind(dialog, list, ORL_CONTROL_LIST);
  if (control == nullptr || !HasRow(control, row)) {
    return nullptr;
  }
  ScrollIntoView(control, row);
  return control;
}

// The control of the dialog that receives keys, or null.
Control *KeyTarget(const Dialog *dialog) {
  Control *control = headless::FindControl(session.focus);
  return control != nullptr && control->dialog == dialog && IsUsable(control) ? control : nullptr;
}

bool IsArrow(uint32_t key) {
  return key >= ORL_VK_LEFT && key <= ORL_VK_DOWN;
}

// A key with the bytes of the character that it types, if any. False when no control receives it.
bool PressKey(Dialog *dialog, uint32_t key, uint32_t held, const char *bytes, int32_t count) {
  if (!IsUsable(dialog)) {
    return false;
  }
  const bool control = (held & ORL_HEADLESS_CONTROL) != 0;
  Control *target = KeyTarget(dialog);
  const bool inLines = target != nullptr && target->kind == ORL_CONTROL_EDIT &&
                       (target->style & ORL_STYLE_LINES) != 0;
  session.keysHeld = held;
  if (key == ORL_VK_TAB && !control) {
    headless::MoveByTab(dialog, (held & ORL_HEADLESS_SHIFT) != 0);
  } else if (key == ORL_VK_ESCAPE) {
    headless::PressEscape(dialog);
  } else if (key == ORL_VK_RETURN && !inLines) {
    headless::PressDefault(dialog);
  } else if (target == nullptr) {
    return false;
  } else if (target->kind == ORL_CONTROL_OPTION && IsArrow(key)) {
    headless::PressNeighbour(target, key == ORL_VK_LEFT || key == ORL_VK_UP);
  } else {
    Input(target, ORL_WM_KEYDOWN, key, 0);
    for (int32_t i = 0; i < count; ++i) {
      session.keysHeld = held;
      Input(target, ORL_WM_CHAR, static_cast<uint8_t>(bytes[i]), 0);
    }
    const Control *last = KeyTarget(dialog);
    if (last != nullptr) {
      Input(last, ORL_WM_KEYUP, key, 0);
    }
  }
  headless::RunPosted();
  return true;
}

// The byte that a key types, 0 for none.
char CharacterOfKey(uint32_t key, uint32_t held) {
  const bool control = (held & ORL_HEADLESS_CONTROL) != 0;
  if (key >= 'A' && key <= 'Z') {
    const bool shift = (held & ORL_HEADLESS_SHIFT) != 0;
    return static_cast<char>(control ? key - 'A' + 1 : shift ? key : key - 'A' + 'a');
  }
  if (key == ORL_VK_RETURN && control) {
    return '\n';
  }
  const bool itself = (key >= '0' && key <= '9') || key == ORL_VK_SPACE || key == ORL_VK_BACK ||
                      key == ORL_VK_TAB || key == ORL_VK_RETURN;
  return static_cast<char>(itself ? key : 0);
}

bool TypeCharacter(Dialog *dialog, const char *text, int32_t size) {
  const auto byte = static_cast<uint8_t>(*text);
  if (size == 1 && (byte == '\r' || byte == '\n')) {
    return PressKey(dialog, ORL_VK_RETURN, 0, "\r", 1);
  }
  uint32_t key = kKeyWithoutNumber;
  if (size == 1 && byte < 0x80) {
    const bool small = byte >= 'a' && byte <= 'z';
    const bool known = small || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
                       byte == ' ' || byte == '\t' || byte == '\b' || byte == 27;
    key = !known ? kKeyWithoutNumber : small ? byte - 'a' + 'A' : byte;
  }
  return PressKey(dialog, key, 0, text, size);
}

// Moves the focus to a control of the dialog unless it has it; null when no user could.
Dialog *GoTo(OrlWindow window, int32_t id) {
  if (id == ORL_HEADLESS_SELF) {
    Dialog *dialog = UsableDialog(window);
    if (dialog != nullptr && headless::Find(session.focus).dialog != dialog) {
      FocusDialog(dialog);
    }
    return dialog;
  }
  Control *control = UsableControl(window, id);
  if (control == nullptr || !TakesFocus(*control)) {
    return nullptr;
  }
  if (!HasFocus(control)) {
    SetFocusTo(control->dialog, control);
    headless::RunPosted();
  }
  return control->dialog;
}

int32_t PressRow(OrlWindow dialog, int32_t list, int32_t row, bool twice) {
  Control *control = ReachRow(dialog, list, row);
  if (control == nullptr) {
    return 0;
  }
  Action action(control->dialog);
  PressMouse(control, PointOfRow(control, row), twice);
  return action.End(true);
}

}  // namespace

int32_t ORLHeadlessFocus(OrlWindow dialog, int32_t id) {
  Dialog *found = headless::FindDialog(dialog);
  if (found == nullptr) {
    return 0;
  }
  Action action(found);
  return action.End(GoTo(dialog, id) != nullptr);
}

int32_t ORLHeadlessType(OrlWindow dialog, int32_t id, const char *text) {
  Dialog *found = headless::FindDialog(dialog);
  if (found == nullptr || text == nullptr) {
    return 0;
  }
  Action action(found);
  bool done = GoTo(dialog, id) != nullptr;
  while (done && *text != 0) {
    const auto size = static_cast<int32_t>(WRENStrAdvance(text, 1) - text);
    done = TypeCharacter(found, text, size);
    text += size;
  }
  return action.End(done);
}

int32_t ORLHeadlessKey(OrlWindow dialog, int32_t id, uint32_t key, uint32_t held) {
  Dialog *found = headless::FindDialog(dialog);
  if (found == nullptr) {
    return 0;
  }
  Action action(found);
  const char typed = CharacterOfKey(key, held);
  return action.End(GoTo(dialog, id) != nullptr &&
                    PressKey(found, key, held, &typed, typed == 0 ? 0 : 1));
}

int32_t ORLHeadlessClick(OrlWindow dialog, int32_t id) {
  return Press(dialog, id, false);
}

int32_t ORLHeadlessDoubleClick(OrlWindow dialog, int32_t id) {
  return Press(dialog, id, true);
}

int32_t ORLHeadlessSelect(OrlWindow dialog, int32_t id, int32_t from, int32_t to) {
  Control *edit = UsableKind(dialog, id, ORL_CONTROL_EDIT);
  if (edit == nullptr) {
    return 0;
  }
  Action action(edit->dialog);
  const auto place = [edit](int32_t position) {
    const int32_t length = edit->text.length;
    return CharacterAt(edit->text, position < 0 ? length : std::min(position, length));
  };
  const intptr_t start = headless::PointOfByte(edit, place(from));
  MoveMouse(edit, start);
  MouseInput(edit, ORL_WM_LBUTTONDOWN, start);
  const intptr_t end = headless::PointOfByte(edit, place(to));
  MouseInput(edit, ORL_WM_MOUSEMOVE, end);
  MouseInput(edit, ORL_WM_LBUTTONUP, end);
  return action.End(true);
}

int32_t ORLHeadlessClickRow(OrlWindow dialog, int32_t list, int32_t row) {
  return PressRow(dialog, list, row, false);
}

int32_t ORLHeadlessDoubleClickRow(OrlWindow dialog, int32_t list, int32_t row) {
  return PressRow(dialog, list, row, true);
}

int32_t ORLHeadlessRightDoubleClickRow(OrlWindow dialog, int32_t list, int32_t row) {
  Control *control = ReachRow(dialog, list, row);
  if (control == nullptr) {
    return 0;
  }
  Action action(control->dialog);
  const intptr_t point = PointOfRow(control, row);
  MoveMouse(control, point);
  MouseInput(control, ORL_WM_RBUTTONDBLCLK, point);
  return action.End(true);
}

int32_t ORLHeadlessClose(OrlWindow window) {
  Dialog *dialog = UsableDialog(window);
  if (dialog == nullptr) {
    return 0;
  }
  if (dialog->box) {
    const int32_t cancel = headless::CancelOfBox(dialog->boxType);
    return cancel == ORL_IDNO ? 0 : ORLHeadlessAnswer(window, cancel);
  }
  Action action(dialog);
  if (dialog->modal) {
    SendCommand(dialog, ORL_ID_CANCEL);
  } else {
    headless::Send(window, ORL_WM_CLOSE, 0, 0);
  }
  return action.End(true);
}

int32_t ORLHeadlessAnswer(OrlWindow window, int32_t answer) {
  Dialog *box = UsableDialog(window);
  if (box == nullptr || !box->box || !headless::BoxOffers(box->boxType, answer)) {
    return 0;
  }
  EndModal(box, answer);
  return 1;
}

int32_t ORLHeadlessWait(uint32_t milliseconds) {
  const uint64_t until = session.clock + milliseconds;
  session.eventsAtOnce = 0;
  headless::Settle();
  const Dialog *top = headless::TopModal();
  while ((top == nullptr || !top->ended) && headless::SendNextTimer(until)) {
    session.eventsAtOnce = 0;
    headless::Settle();
    top = headless::TopModal();
  }
  session.clock = std::max(session.clock, until);
  return 1;
}

int32_t ORLHeadlessHelp(OrlWindow window, int32_t id, OrlHelpProc callback) {
  Dialog *dialog = UsableDialog(window);
  const Control *control = headless::ControlById(dialog, id);
  if (dialog == nullptr || dialog->box ||
      (id != ORL_HEADLESS_SELF && (control == nullptr || !control->visible))) {
    return 0;
  }
  Action action(dialog);
  OrlWindow asked = control == nullptr ? window : control->window;
  headless::Send(window, ORL_WM_HELP_REQUEST, reinterpret_cast<uintptr_t>(asked),
                 reinterpret_cast<intptr_t>(callback));
  return action.End(true);
}

int32_t ORLHeadlessRepaint(OrlWindow window) {
  Dialog *dialog = headless::FindDialog(window);
  if (dialog == nullptr || dialog->box || !dialog->visible) {
    return 0;
  }
  Action action(dialog);
  dialog->needsPaint = true;
  for (int32_t i = 0; i < dialog->controlCount; ++i) {
    ForgetPictures(&dialog->controls[i]);
  }
  return action.End(true);
}

int32_t ORLHeadlessSetClipboard(const char *text) {
  OwnedText copy = text == nullptr ? nullptr : headless::CopyOfText(text);
  if (text != nullptr && copy == nullptr) {
    return 0;
  }
  ReplaceBlock(session.clipboard, std::move(copy));
  return 1;
}
