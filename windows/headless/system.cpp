// The table of operations, and the session.
#include <algorithm>

#include "windows/headless/state.h"

namespace headless {

namespace {

struct Routines {
  using Hold = headless::Hold;
  static constexpr auto kFind = Find;
  static constexpr auto kControlById = ControlById;
  static constexpr auto kOwnProc = OwnProc;
  static constexpr auto kSetTimer = SetTimerOf;
  static constexpr auto kKillTimer = KillTimerOf;
};
using Common = WindowOperations<Routines>;

intptr_t DialogBoxParam(const OrlDialogTemplate *model, OrlWindow parent, OrlWindowProc proc,
                        intptr_t parameter) {
  Dialog *dialog = NewDialog(model, parent, proc, true);
  if (dialog == nullptr) {
    return -1;
  }
  const Hold hold(dialog);
  OpenDialog(dialog, parameter);
  const intptr_t result = RunModal(dialog);
  Destroy(dialog);
  return result;
}

void EndDialog(OrlWindow window, intptr_t result) {
  Dialog *dialog = FindDialog(window);
  if (dialog != nullptr && !dialog->box) {
    EndModal(dialog, result);
  }
}

OrlWindow CreateDialogParam(const OrlDialogTemplate *model, OrlWindow parent, OrlWindowProc proc,
                            intptr_t parameter) {
  Dialog *dialog = NewDialog(model, parent, proc, false);
  if (dialog == nullptr) {
    return nullptr;
  }
  const Hold hold(dialog);
  OpenDialog(dialog, parameter);
  return dialog->going ? nullptr : dialog->window;
}

void DestroyWindow(OrlWindow window) {
  Dialog *dialog = FindDialog(window);
  if (dialog == nullptr) {
    return;
  }
  if (!dialog->modal) {
    Destroy(dialog);
  } else if (!dialog->box) {
    EndModal(dialog, 0);
  }
}

void SetWindowText(OrlWindow window, const char *text) {
  const Place place = Find(window);
  if (place.control == nullptr) {
    if (place.dialog != nullptr) {
      SetText(&place.dialog->title, text);
    }
    return;
  }
  const Hold hold(place.dialog);
  if (place.control->kind == ORL_CONTROL_EDIT) {
    SetEditText(place.control, text);
  } else {
    SetText(&place.control->text, text);
  }
}

const char *TextOf(OrlWindow window) {
  const Place place = Find(window);
  if (place.dialog == nullptr) {
    return "";
  }
  return Bytes(place.control == nullptr ? place.dialog->title : place.control->text);
}

int32_t GetWindowText(OrlWindow window, char *buffer, int32_t size) {
  const int32_t length = CopyOut(TextOf(window), buffer, size);
  return buffer == nullptr ? 0 : std::min(std::max(size, 1) - 1, length);
}

int32_t GetWindowTextLength(OrlWindow window) {
  return WRENStrLen(TextOf(window));
}

void EnableWindow(OrlWindow window, int32_t enabled) {
  const Place place = Find(window);
  if (place.control != nullptr) {
    place.control->enabled = enabled != 0;
    if (enabled == 0) {
      LoseFocus(place.control);
    }
  } else if (place.dialog != nullptr) {
    place.dialog->enabled = enabled != 0;
  }
}

int32_t IsWindowEnabled(OrlWindow window) {
  const Place place = Find(window);
  if (place.control != nullptr) {
    return place.control->enabled ? 1 : 0;
  }
  return place.dialog != nullptr && place.dialog->enabled && IsInFront(place.dialog) ? 1 : 0;
}

void ShowWindow(OrlWindow window, int32_t shown) {
  const Place place = Find(window);
  if (place.dialog == nullptr) {
    return;
  }
  const Hold hold(place.dialog);
  if (place.control != nullptr) {
    place.control->visible = shown != 0;
    if (shown == 0) {
      LoseFocus(place.control);
    }
    return;
  }
  const bool before = place.dialog->visible;
  place.dialog->visible = shown != 0;
  if (shown != 0 && !before) {
    place.dialog->needsPaint = true;
    FocusDialog(place.dialog);
  } else if (shown == 0) {
    LeaveDialog(place.dialog);
  }
}

int32_t IsWindowVisible(OrlWindow window) {
  const Place place = Find(window);
  return place.dialog != nullptr && place.dialog->visible &&
                 (place.control == nullptr || place.control->visible)
             ? 1
             : 0;
}

void SetFocus(OrlWindow window) {
  const Place place = Find(window);
  if (place.dialog == nullptr) {
    return;
  }
  const Hold hold(place.dialog);
  if (place.control == nullptr) {
    FocusDialog(place.dialog);
  } else {
    SetFocusTo(place.dialog, place.control);
  }
}

void GetWindowRect(OrlWindow window, OrlRect *rect) {
  const Place place = Find(window);
  if (rect != nullptr) {
    *rect = place.dialog == nullptr ? OrlRect{} : ScreenRect(place);
  }
}

void GetClientRect(OrlWindow window, OrlRect *rect) {
  const Place place = Find(window);
  if (rect != nullptr) {
    *rect = place.dialog == nullptr ? OrlRect{} : ClientRect(place);
  }
}

void ScreenToClient(OrlWindow window, int32_t *x, int32_t *y) {
  const Place place = Find(window);
  if (place.dialog == nullptr) {
    return;
  }
  const OrlRect rect = ScreenRect(place);
  const int32_t border = place.control == nullptr ? kBorder : 0;
  const int32_t caption = place.control == nullptr ? kBorder + kCaption : 0;
  if (x != nullptr) {
    *x -= rect.left + border;
  }
  if (y != nullptr) {
    *y -= rect.top + caption;
  }
}

void MoveWindow(OrlWindow window, int32_t x, int32_t y, int32_t width, int32_t height) {
  const Place place = Find(window);
  if (place.dialog == nullptr) {
    return;
  }
  OrlRect *rect = place.control == nullptr ? &place.dialog->rect : &place.control->rect;
  *rect = {x, y, x + std::max(width, 0), y + std::max(height, 0)};
  if (place.control != nullptr && place.control->kind == ORL_CONTROL_LIST) {
    ForgetPictures(place.control);
    ScrollTo(place.control, place.control->list.top);
  }
}

int32_t GetSystemMetrics(int32_t index) {
  return index == ORL_SM_CXFULLSCREEN   ? kScreenWidth
         : index == ORL_SM_CYFULLSCREEN ? kScreenHeight
                                        : 0;
}

void GetTextMetrics(OrlWindow window, OrlTextMetrics *metrics) {
  if (metrics != nullptr) {
    *metrics = Find(window).dialog == nullptr ? OrlTextMetrics{} : kFont;
  }
}

void CheckRadioButton(OrlWindow window, int32_t first, int32_t last, int32_t id) {
  const Dialog *dialog = FindDialog(window);
  for (int32_t i = 0; dialog != nullptr && i < dialog->controlCount; ++i) {
    Control &control = dialog->controls[i];
    if (control.kind == ORL_CONTROL_OPTION && control.id >= first && control.id <= last) {
      control.checked = control.id == id;
    }
  }
}

void MessageBeep(uint32_t /*type*/) {
  ++session.beeps;
}

int32_t IsClipboardTextAvailable() {
  return session.clipboard == nullptr ? 0 : 1;
}

const OrlWindowSystem kSystem = {sizeof(OrlWindowSystem),
                                 DialogBoxParam,
                                 EndDialog,
                                 CreateDialogParam,
                                 DestroyWindow,
                                 Common::GetDlgItem,
                                 Common::GetDlgCtrlID,
                                 Common::GetParent,
                                 SetWindowText,
                                 GetWindowText,
                                 GetWindowTextLength,
                                 EnableWindow,
                                 IsWindowEnabled,
                                 ShowWindow,
                                 IsWindowVisible,
                                 SetFocus,
                                 GetWindowRect,
                                 GetClientRect,
                                 ScreenToClient,
                                 MoveWindow,
                                 GetSystemMetrics,
                                 GetTextMetrics,
                                 Common::SetWindowProc,
                                 Common::CallWindowProc,
                                 Send,
                                 Post,
                                 Common::SetTimer,
                                 Common::KillTimer,
                                 CheckRadioButton,
                                 ShowBox,
                                 MessageBeep,
                                 IsClipboardTextAvailable,
                                 LoadBitmapFile,
                                 DeleteBitmapHandle,
                                 DrawBitmapAt,
                                 DrawTextIn,
                                 InvertIn,
                                 DrawFocusIn,
                                 nullptr,
                                 nullptr,
                                 nullptr,
                                 nullptr};

void ForgetSession() {
  while (session.firstPosted != nullptr) {
    const Owned<Posted> posted(session.firstPosted);
    session.firstPosted = posted->next;
  }
  for (int32_t i = 0; i < session.boxCount; ++i) {
    ReplaceBlock(session.boxes[i].text);
    ReplaceBlock(session.boxes[i].caption);
  }
  ReplaceBlock(session.boxes);
  ReplaceBlock(session.clipboard);
  FreeBitmaps();
  const uint64_t serials = session.serials;  // no handle is used twice
  session = {};
  session.serials = serials;
}

}  // namespace

}  // namespace headless

using headless::session;

const OrlWindowSystem *ORLHeadlessSystem(void) {
  return &headless::kSystem;
}

int32_t ORLHeadlessStart(OrlHeadlessScript script, void *user) {
  if (session.newest != nullptr || ORLSetWindowSystem(&headless::kSystem) == 0) {
    return 0;
  }
  headless::ForgetSession();
  session.script = script;
  session.user = user;
  return 1;
}

void ORLHeadlessEnd(void) {
  if (headless::TopModal() != nullptr) {
    return;
  }
  while (session.newest != nullptr && !session.newest->going) {
    headless::Destroy(session.newest);
  }
  if (session.newest == nullptr) {
    if (ORLGetWindowSystem() == &headless::kSystem) {
      ORLSetWindowSystem(nullptr);
    }
    headless::ForgetSession();
  }
}
