// Controls: their own procedure, buttons, and the keys that a dialog handles itself.
#include "windows/headless/state.h"

namespace headless {

namespace {

bool IsButton(const Control &control) {
  return control.kind == ORL_CONTROL_BUTTON || control.kind == ORL_CONTROL_OPTION;
}

intptr_t ButtonProc(Control *button, uint32_t message, uintptr_t wParam) {
  switch (message) {
    case ORL_WM_LBUTTONDOWN:
    case ORL_WM_LBUTTONDBLCLK:
      button->pressed = true;
      SetFocusTo(button->dialog, button);
      break;
    case ORL_WM_KEYDOWN:
      button->pressed = button->pressed || wParam == ORL_VK_SPACE;
      break;
    case ORL_WM_KEYUP:
      if (wParam == ORL_VK_SPACE && button->pressed) {
        PressButton(button);
      }
      break;
    case ORL_WM_LBUTTONUP:
      if (button->pressed) {
        PressButton(button);
      }
      break;
    default:
      break;
  }
  return 0;
}

}  // namespace

intptr_t OwnProc(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  Control *control = FindControl(window);
  if (control == nullptr) {
    return 0;
  }
  const Hold hold(control->dialog);
  switch (control->kind) {
    case ORL_CONTROL_EDIT:
      return EditProc(control, message, wParam, lParam);
    case ORL_CONTROL_LIST:
      return ListProc(control, message, wParam, lParam);
    default:
      return IsButton(*control) ? ButtonProc(control, message, wParam) : 0;
  }
}

bool TakesFocus(const Control &control) {
  return control.kind != ORL_CONTROL_LABEL && control.kind != ORL_CONTROL_GROUP &&
         control.enabled && control.visible;
}

bool IsTabStop(const Control &control) {
  return TakesFocus(control) && (control.style & ORL_STYLE_NO_TAB) == 0;
}

void PressButton(Control *button) {
  button->pressed = false;
  if (button->enabled) {
    Notify(button, ORL_BN_CLICKED);
  }
}

void PressDefault(Dialog *dialog) {
  Control *button = FindControl(session.focus);
  if (button == nullptr || button->dialog != dialog || button->kind != ORL_CONTROL_BUTTON) {
    button = nullptr;
    for (int32_t i = 0; i < dialog->controlCount && button == nullptr; ++i) {
      Control &each = dialog->controls[i];
      button = each.kind == ORL_CONTROL_BUTTON && (each.style & ORL_STYLE_DEFAULT) != 0 ? &each
                                                                                        : nullptr;
    }
  }
  if (button == nullptr) {
    SendCommand(dialog, ORL_ID_OK);
  } else if (button->visible) {
    PressButton(button);
  }
}

void PressEscape(Dialog *dialog) {
  const Control *cancel = ControlById(dialog, ORL_ID_CANCEL);
  if (cancel == nullptr || cancel->enabled) {
    SendCommand(dialog, ORL_ID_CANCEL);
  }
}

void MoveByTab(Dialog *dialog, bool back) {
  const int32_t count = dialog->controlCount;
  const Control *focus = FindControl(session.focus);
  // Without a focus the search begins before the first, or after the last.
  int32_t at = back ? count : -1;
  if (focus != nullptr && focus->dialog == dialog) {
    at = static_cast<int32_t>(focus - dialog->controls);
  }
  for (int32_t step = 0; step < count; ++step) {
    at = (at + (back ? count - 1 : 1)) % count;
    Control &control = dialog->controls[at];
    if (IsTabStop(control)) {
      SetFocusTo(dialog, &control);
      if (HasFocus(&control) && control.kind == ORL_CONTROL_EDIT &&
          (control.style & ORL_STYLE_LINES) == 0) {
        SelectAll(&control);
      }
      return;
    }
  }
}

void PressNeighbour(Control *option, bool back) {
  const Dialog *dialog = option->dialog;
  // The group: the options around this one, up to the start of another group.
  Control *first = option;
  while (first > dialog->controls && (first->style & ORL_STYLE_GROUP) == 0 &&
         first[-1].kind == ORL_CONTROL_OPTION) {
    --first;
  }
  Control *end = option + 1;
  while (end < dialog->controls + dialog->controlCount && end->kind == ORL_CONTROL_OPTION &&
         (end->style & ORL_STYLE_GROUP) == 0) {
    ++end;
  }
  Control *next = option;
  do {
    next = back ? (next == first ? end : next) - 1 : (next + 1 == end ? first : next + 1);
  } while (next != option && !(next->enabled && next->visible));
  if (next != option) {
    SetFocusTo(next->dialog, next);
    PressButton(next);
  }
}

}  // namespace headless
