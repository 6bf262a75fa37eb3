// Operations of OrlWindowSystem that are the same in every window system of this project.
#ifndef ORLI11_PLATFORM_WINDOW_OPERATIONS_H
#define ORLI11_PLATFORM_WINDOW_OPERATIONS_H

#include <cstdint>

#include "windows.h"

// `System` has the window system's type Hold, which keeps a dialog's record while a procedure runs,
// and its routines:
//   kFind(window)             the dialog of a window, null for an unknown one, and the
//                             control, null for a dialog
//   kControlById(dialog, id)  the control, or null, also for a null dialog
//   kOwnProc                  the default procedure of controls
//   kSetTimer(dialog, id, milliseconds), kKillTimer(dialog, id)
template <class System>
struct WindowOperations {
  static auto DialogOf(OrlWindow window) {
    const auto place = System::kFind(window);
    return place.control == nullptr ? place.dialog : nullptr;
  }

  static OrlWindow GetDlgItem(OrlWindow dialog, int32_t id) {
    const auto *control = System::kControlById(DialogOf(dialog), id);
    return control == nullptr ? nullptr : control->window;
  }

  static int32_t GetDlgCtrlID(OrlWindow window) {
    const auto *control = System::kFind(window).control;
    return control == nullptr ? 0 : control->id;
  }

  static OrlWindow GetParent(OrlWindow window) {
    const auto place = System::kFind(window);
    if (place.dialog == nullptr) {
      return nullptr;
    }
    return place.control == nullptr ? place.dialog->parent : place.dialog->window;
  }

  static OrlWindowProc SetWindowProc(OrlWindow window, OrlWindowProc proc) {
    auto *control = System::kFind(window).control;
    if (control == nullptr) {
      return nullptr;
    }
    OrlWindowProc before = control->proc == nullptr ? System::kOwnProc : control->proc;
    control->proc = proc;
    return before;
  }

  static intptr_t CallWindowProc(OrlWindowProc proc, OrlWindow window, uint32_t message,
                                 uintptr_t wParam, intptr_t lParam) {
    const auto place = System::kFind(window);
    if (proc == nullptr || place.dialog == nullptr) {
      return 0;
    }
    const typename System::Hold hold(place.dialog);
    return proc(window, message, wParam, lParam);
  }

  static void SetTimer(OrlWindow window, uintptr_t timer, uint32_t milliseconds) {
    if (auto *dialog = DialogOf(window); dialog != nullptr) {
      System::kSetTimer(dialog, timer, milliseconds);
    }
  }

  static void KillTimer(OrlWindow window, uintptr_t timer) {
    if (auto *dialog = DialogOf(window); dialog != nullptr) {
      System::kKillTimer(dialog, timer);
    }
  }
};

#endif
