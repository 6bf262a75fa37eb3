// Dialogs: created from templates, focus, destruction.
#include "windows/headless/state.h"

#include <algorithm>

namespace headless {

namespace {

constexpr int32_t kBoxWidth = 300;
constexpr int32_t kBoxHeight = 120;

// Dialog units in pixels: a quarter of the average width, an eighth of the height, rounded.
int32_t Pixels(int32_t units, int32_t base, int32_t parts) {
  const int32_t product = units * base;
  return (product >= 0 ? product + parts / 2 : product - parts / 2) / parts;
}

OrlRect PixelRect(int32_t x, int32_t y, int32_t width, int32_t height) {
  OrlRect rect = {};
  rect.left = Pixels(x, kFont.averageWidth, 4);
  rect.top = Pixels(y, kFont.height, 8);
  rect.right = rect.left + Pixels(width, kFont.averageWidth, 4);
  rect.bottom = rect.top + Pixels(height, kFont.height, 8);
  return rect;
}

void Move(OrlRect *rect, int32_t x, int32_t y) {
  *rect = {rect->left + x, rect->top + y, rect->right + x, rect->bottom + y};
}

bool FillControls(Dialog *dialog, const OrlDialogTemplate *model) {
  const int32_t count = model->controlCount;
  if (count < 0 || count > kMostControls || (count > 0 && model->controls == nullptr)) {
    return false;
  }
  const auto size = static_cast<uint32_t>(count) * static_cast<uint32_t>(sizeof(Control));
  dialog->controls = static_cast<Control *>(WRENMemAlloc(size));
  if (dialog->controls == nullptr) {
    return false;
  }
  for (; dialog->controlCount < count; ++dialog->controlCount) {
    const OrlControl &row = model->controls[dialog->controlCount];
    Control &control = dialog->controls[dialog->controlCount];
    control.dialog = dialog;
    control.window = HandleOf(dialog->serial, static_cast<uint64_t>(dialog->controlCount) + 1);
    control.id = row.id;
    control.kind = row.kind;
    control.style = row.style;
    control.rect = PixelRect(row.x, row.y, row.width, row.height);
    control.enabled = control.visible = true;
    control.list.current = -1;
    control.list.rowHeight = kFont.height + kFont.externalLeading;
    if (row.caption != nullptr && *row.caption != 0 && !SetText(&control.text, row.caption)) {
      return false;
    }
  }
  return true;
}

Dialog *NewRecord(OrlWindow parent, bool modal) {
  if (modal && ModalCount() >= kMostModals) {
    return nullptr;
  }
  auto *dialog = static_cast<Dialog *>(WRENMemAlloc(sizeof(Dialog)));
  if (dialog != nullptr) {
    dialog->serial = ++session.serials;
    dialog->window = HandleOf(dialog->serial, 0);
    dialog->parent = parent;
    dialog->modal = modal;
    dialog->enabled = true;
    dialog->focus = -1;
  }
  return dialog;
}

void Link(Dialog *dialog) {
  dialog->older = session.newest;
  session.newest = dialog;
}

void Unlink(const Dialog *dialog) {
  Dialog **link = &session.newest;
  while (*link != dialog) {
    link = &(*link)->older;
  }
  *link = dialog->older;
}

Control *FirstTabStop(Dialog *dialog) {
  Control *end = dialog->controls + dialog->controlCount;
  Control *found = std::find_if(dialog->controls, end, IsTabStop);
  return found == end ? nullptr : found;
}

Control *RememberedFocus(Dialog *dialog) {
  if (dialog->focus < 0) {
    return nullptr;
  }
  Control *control = &dialog->controls[dialog->focus];
  return TakesFocus(*control) ? control : nullptr;
}

// A modeless dialog that belongs to this one.
Dialog *ModelessChildOf(const Dialog *owner) {
  for (Dialog *dialog = session.newest; dialog != nullptr; dialog = dialog->older) {
    if (!dialog->modal && !dialog->going && Find(dialog->parent).dialog == owner) {
      return dialog;
    }
  }
  return nullptr;
}

void EndModalsOf(const Dialog *owner) {
  for (Dialog *dialog = session.newest; dialog != nullptr; dialog = dialog->older) {
    if (dialog->modal && Find(dialog->parent).dialog == owner) {
      dialog->ended = true;
    }
  }
}

void LeaveForParent(const Dialog *dialog) {
  session.focus = nullptr;
  Dialog *next = Find(dialog->parent).dialog;
  next = next == nullptr || !IsInFront(next) ? TopModal() : next;
  if (next != nullptr && next != dialog) {
    const Hold hold(next);
    SetFocusTo(next, RememberedFocus(next));
  }
}

}  // namespace

void FreeDialog(Dialog *dialog) {
  const Owned<Dialog> record(dialog);
  const Owned<Control> controls(dialog->controls);
  for (int32_t i = 0; i < dialog->controlCount; ++i) {
    FreeText(&dialog->controls[i].text);
    FreeRows(&dialog->controls[i].list);
  }
  while (dialog->timers != nullptr) {
    KillTimerOf(dialog, dialog->timers->id);
  }
  FreeText(&dialog->name);
  FreeText(&dialog->title);
}

Dialog *NewDialog(const OrlDialogTemplate *model, OrlWindow parent, OrlWindowProc proc,
                  bool modal) {
  if (model == nullptr || proc == nullptr) {
    return nullptr;
  }
  Dialog *dialog = NewRecord(parent, modal);
  if (dialog == nullptr) {
    return nullptr;
  }
  if (!SetText(&dialog->name, model->name) || !SetText(&dialog->title, model->title) ||
      !FillControls(dialog, model)) {
    FreeDialog(dialog);
    return nullptr;
  }
  dialog->proc = proc;
  dialog->visible = dialog->needsPaint = modal || model->visible != 0;
  dialog->rect = PixelRect(model->x, model->y, model->width, model->height);
  dialog->rect.right += 2 * kBorder;
  dialog->rect.bottom += 2 * kBorder + kCaption;
  const Dialog *owner = Find(parent).dialog;
  if (owner != nullptr) {
    Move(&dialog->rect, owner->rect.left + kBorder, owner->rect.top + kBorder + kCaption);
  }
  Link(dialog);
  return dialog;
}

Dialog *NewBox(OrlWindow parent, const char *caption, uint32_t type) {
  Dialog *dialog = NewRecord(parent, true);
  if (dialog == nullptr) {
    return nullptr;
  }
  if (!SetText(&dialog->title, caption)) {
    FreeDialog(dialog);
    return nullptr;
  }
  dialog->box = dialog->visible = true;
  dialog->boxType = type;
  dialog->rect = {0, 0, kBoxWidth, kBoxHeight};
  Move(&dialog->rect, (kScreenWidth - kBoxWidth) / 2, (kScreenHeight - kBoxHeight) / 2);
  Link(dialog);
  SetFocusTo(dialog, nullptr);
  return dialog;
}

void OpenDialog(Dialog *dialog, intptr_t parameter) {
  SetFocusTo(dialog, nullptr);
  Send(dialog->window, ORL_WM_SETFONT, 1, 0);
  for (int32_t i = 0; i < dialog->controlCount; ++i) {
    Control &list = dialog->controls[i];
    if (list.kind == ORL_CONTROL_LIST && (list.style & ORL_STYLE_OWNER_DRAW) != 0) {
      OrlMeasureItem measure = {list.id, 0, list.list.rowHeight};
      Send(dialog->window, ORL_WM_MEASUREITEM, static_cast<uintptr_t>(list.id),
           reinterpret_cast<intptr_t>(&measure));
      list.list.rowHeight = std::max(1, measure.height);
    }
  }
  const Control *first = FirstTabStop(dialog);
  const auto window = reinterpret_cast<uintptr_t>(first == nullptr ? nullptr : first->window);
  const intptr_t result = Send(dialog->window, ORL_WM_INITDIALOG, window, parameter);
  Control *stop = FirstTabStop(dialog);
  if (result != 0 && stop != nullptr && !dialog->going && !dialog->ended) {
    SetFocusTo(dialog, stop);
  }
}

void Destroy(Dialog *dialog) {
  if (dialog->going) {
    return;
  }
  const Hold hold(dialog);
  dialog->going = true;
  Send(dialog->window, ORL_WM_DESTROY, 0, 0);
  EndModalsOf(dialog);
  for (Dialog *other = ModelessChildOf(dialog); other != nullptr; other = ModelessChildOf(dialog)) {
    Destroy(other);
  }
  for (int32_t i = 0; i < dialog->controlCount; ++i) {
    Send(dialog->controls[i].window, ORL_WM_DESTROY, 0, 0);
  }
  const bool hadFocus = Find(session.focus).dialog == dialog;
  Unlink(dialog);
  dialog->gone = true;
  if (hadFocus) {
    LeaveForParent(dialog);
  }
}

void FocusDialog(Dialog *dialog) {
  SetFocusTo(dialog, RememberedFocus(dialog));
}

void LeaveDialog(Dialog *dialog) {
  if (Find(session.focus).dialog == dialog) {
    LeaveForParent(dialog);
  }
}

bool HasFocus(const Control *control) {
  return session.focus == control->window;
}

void SetFocusTo(Dialog *dialog, Control *control) {
  if (control != nullptr) {
    if (!TakesFocus(*control)) {
      return;
    }
    dialog->focus = static_cast<int32_t>(control - dialog->controls);
  }
  OrlWindow window = control == nullptr ? dialog->window : control->window;
  if (dialog->going || !dialog->visible || !IsInFront(dialog) || session.focus == window) {
    return;
  }
  OrlWindow before = session.focus;
  session.focus = window;
  Control *loser = FindControl(before);
  if (loser != nullptr && loser->kind == ORL_CONTROL_LIST) {
    const Hold hold(loser->dialog);
    DrawPart(loser, loser->list.current, ORL_DRAW_FOCUS);
  }
  if (control != nullptr && session.focus == window) {
    Send(window, ORL_WM_SETFOCUS, reinterpret_cast<uintptr_t>(before), 0);
  }
}

void LoseFocus(Control *control) {
  if (HasFocus(control)) {
    session.focus = control->dialog->window;
    if (control->kind == ORL_CONTROL_LIST) {
      const Hold hold(control->dialog);
      DrawPart(control, control->list.current, ORL_DRAW_FOCUS);
    }
  }
}

OrlRect ScreenRect(const Place &place) {
  OrlRect rect = place.dialog->rect;
  if (place.control != nullptr) {
    const OrlRect &frame = place.dialog->rect;
    rect = place.control->rect;
    Move(&rect, frame.left + kBorder, frame.top + kBorder + kCaption);
  }
  return rect;
}

OrlRect ClientRect(const Place &place) {
  if (place.control != nullptr) {
    return {0, 0, Width(place.control->rect), Height(place.control->rect)};
  }
  const OrlRect &frame = place.dialog->rect;
  return {0, 0, std::max(0, Width(frame) - 2 * kBorder),
          std::max(0, Height(frame) - 2 * kBorder - kCaption)};
}

}  // namespace headless
