// Queries for scripts.
#include <algorithm>
#include <cstring>

#include "windows/headless/state.h"

using headless::Bytes;
using headless::Control;
using headless::CopyOut;
using headless::Dialog;
using headless::Hold;
using headless::Row;
using headless::RowPicture;
using headless::session;

namespace {

// A control by its id, or with ORL_HEADLESS_SELF and no control the dialog.
struct Seen {
  Dialog *dialog;
  Control *control;
};
Seen Look(OrlWindow window, int32_t id) {
  Dialog *dialog = headless::FindDialog(window);
  Control *control = headless::ControlById(dialog, id);
  const bool there = control != nullptr || id == ORL_HEADLESS_SELF;
  return there ? Seen{dialog, control} : Seen{};
}

Control *FindList(OrlWindow window, int32_t id) {
  Control *control = Look(window, id).control;
  return control != nullptr && control->kind == ORL_CONTROL_LIST ? control : nullptr;
}

const Row *FindRow(OrlWindow window, int32_t list, int32_t row) {
  const Control *control = FindList(window, list);
  return control != nullptr && HasRow(control, row) ? &control->list.rows[row] : nullptr;
}

OrlHeadlessState StateOf(const Dialog &dialog) {
  OrlHeadlessState state = {};
  state.kind = dialog.box ? ORL_HEADLESS_BOX : ORL_HEADLESS_DIALOG;
  state.id = ORL_HEADLESS_SELF;
  state.window = dialog.window;
  state.parent = dialog.parent;
  state.modal = dialog.modal ? 1 : 0;
  state.enabled = dialog.enabled && IsInFront(&dialog) ? 1 : 0;
  state.visible = dialog.visible ? 1 : 0;
  state.focused = headless::Find(session.focus).dialog == &dialog ? 1 : 0;
  state.reachable = IsUsable(&dialog) ? 1 : 0;
  state.rect = dialog.rect;
  state.textLength = dialog.title.length;
  state.currentRow = -1;
  return state;
}

OrlHeadlessState StateOf(const Control &control) {
  OrlHeadlessState state = {};
  state.kind = control.kind;
  state.id = control.id;
  state.style = control.style;
  state.window = control.window;
  state.parent = control.dialog->window;
  state.enabled = control.enabled ? 1 : 0;
  state.visible = control.visible && control.dialog->visible ? 1 : 0;
  state.focused = HasFocus(&control) ? 1 : 0;
  state.reachable = IsUsable(&control) ? 1 : 0;
  state.checked = control.checked ? 1 : 0;
  state.rect = control.rect;
  state.textLength = control.text.length;
  state.selectionStart = std::min(control.edit.anchor, control.edit.caret);
  state.selectionEnd = std::max(control.edit.anchor, control.edit.caret);
  state.caret = control.edit.caret;
  state.limit = control.edit.limit;
  state.modified = control.edit.modified ? 1 : 0;
  state.rowCount = control.list.count;
  state.currentRow = control.list.current;
  state.topRow = control.list.top;
  return state;
}

OrlHeadlessRowShown Shown(const RowPicture &picture) {
  OrlHeadlessRowShown shown = {};
  shown.bitmap = picture.bitmap;
  shown.bitmapX = picture.bitmapX;
  shown.bitmapY = picture.bitmapY;
  shown.text = Bytes(picture.text);
  shown.rowRect = picture.rowRect;
  shown.textRect = picture.textRect;
  shown.inverted = picture.inverted ? 1 : 0;
  shown.invertedRect = picture.invertedRect;
  shown.focusRect = picture.focusRect ? 1 : 0;
  shown.drawings = picture.drawings;
  return shown;
}

}  // namespace

int32_t ORLHeadlessLook(OrlWindow dialog, int32_t id, OrlHeadlessState *state) {
  const auto [seen, control] = Look(dialog, id);
  if (seen == nullptr || state == nullptr) {
    return 0;
  }
  *state = control == nullptr ? StateOf(*seen) : StateOf(*control);
  return 1;
}

OrlWindow ORLHeadlessControlAt(OrlWindow dialog, int32_t index) {
  const Dialog *seen = headless::FindDialog(dialog);
  if (seen == nullptr || index < 0 || index >= seen->controlCount) {
    return nullptr;
  }
  return seen->controls[index].window;
}

int32_t ORLHeadlessText(OrlWindow dialog, int32_t id, char *buffer, int32_t size) {
  const auto [seen, control] = Look(dialog, id);
  if (seen == nullptr) {
    return -1;
  }
  return CopyOut(Bytes(control == nullptr ? seen->title : control->text), buffer, size);
}

int32_t ORLHeadlessRow(OrlWindow dialog, int32_t list, int32_t row, char *buffer, int32_t size) {
  const Row *seen = FindRow(dialog, list, row);
  return seen == nullptr ? -1 : CopyOut(seen->text, buffer, size);
}

intptr_t ORLHeadlessRowData(OrlWindow dialog, int32_t list, int32_t row) {
  const Row *seen = FindRow(dialog, list, row);
  return seen == nullptr ? 0 : seen->data;
}

int32_t ORLHeadlessRowShows(OrlWindow dialog, int32_t list, int32_t row,
                            OrlHeadlessRowShown *shown) {
  Control *control = FindList(dialog, list);
  if (control == nullptr || shown == nullptr || !HasRow(control, row)) {
    return 0;
  }
  const Hold hold(control->dialog);
  if (control->list.rows[row].picture == nullptr) {
    DrawWhole(control, row);
  }
  const Row *seen = FindRow(dialog, list, row);
  if (seen == nullptr || seen->picture == nullptr) {
    return 0;
  }
  *shown = Shown(*seen->picture);
  return 1;
}

int32_t ORLHeadlessDrawRow(OrlWindow dialog, int32_t list, int32_t row, uint32_t action,
                           uint32_t state, OrlHeadlessRowShown *shown) {
  Control *control = FindList(dialog, list);
  if (control == nullptr || shown == nullptr || (row != -1 && !HasRow(control, row)) ||
      (control->style & ORL_STYLE_OWNER_DRAW) == 0) {
    return 0;
  }
  const Hold hold(control->dialog);
  headless::Wipe(&session.loose);
  Draw(control, row, action, state, &session.loose);
  *shown = Shown(session.loose);
  return 1;
}

OrlWindow ORLHeadlessTop(void) {
  const Dialog *top = headless::TopModal();
  return top == nullptr ? nullptr : top->window;
}

OrlWindow ORLHeadlessFind(const char *name) {
  for (const Dialog *dialog = session.newest; dialog != nullptr; dialog = dialog->older) {
    if (!dialog->box && name != nullptr && std::strcmp(Bytes(dialog->name), name) == 0) {
      return dialog->window;
    }
  }
  return nullptr;
}

int32_t ORLHeadlessOpen(OrlWindow *windows, int32_t capacity) {
  int32_t count = 0;
  for (const Dialog *dialog = session.newest; dialog != nullptr; dialog = dialog->older) {
    ++count;
  }
  int32_t index = count;
  for (const Dialog *dialog = session.newest; dialog != nullptr; dialog = dialog->older) {
    if (--index < capacity && windows != nullptr) {
      windows[index] = dialog->window;
    }
  }
  return count;
}

int32_t ORLHeadlessName(OrlWindow dialog, char *buffer, int32_t size) {
  const Dialog *seen = headless::FindDialog(dialog);
  return seen == nullptr || seen->box ? -1 : CopyOut(Bytes(seen->name), buffer, size);
}

int32_t ORLHeadlessBoxCount(void) {
  return session.boxCount;
}

int32_t ORLHeadlessBoxAt(int32_t index, OrlHeadlessBox *box) {
  if (index < 0 || index >= session.boxCount || box == nullptr) {
    return 0;
  }
  const headless::BoxRecord &record = session.boxes[index];
  *box = {record.text, record.caption, record.type, record.window, record.parent, record.answer};
  return 1;
}

int32_t ORLHeadlessBeepCount(void) {
  return session.beeps;
}

int32_t ORLHeadlessBitmapCount(void) {
  int32_t count = 0;
  for (const headless::Bitmap *bitmap = session.bitmaps; bitmap != nullptr; bitmap = bitmap->next) {
    ++count;
  }
  return count;
}

int32_t ORLHeadlessClipboard(char *buffer, int32_t size) {
  return session.clipboard == nullptr ? -1 : CopyOut(session.clipboard, buffer, size);
}
