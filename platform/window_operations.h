// What is the same in every window system of this project: limits, searches in lists, and
// operations of OrlWindowSystem.
#ifndef ORLI11_PLATFORM_WINDOW_OPERATIONS_H
#define ORLI11_PLATFORM_WINDOW_OPERATIONS_H

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "orli11/windows.h"
#include "platform/text.h"
#include "wreni11.h"

// Modal dialogs inside each other: the limit for a dialog that opens another whenever it is
// cancelled.
constexpr int32_t kMostModals = 100;
constexpr int32_t kMostControls = 4095;  // of a dialog

// In WM_KEYDOWN and WM_KEYUP: a key that has no number of its own.
constexpr uint32_t kKeyWithoutNumber = 231;

// ---- Lists: `textOf(row)` is the text of a row as span<char>, which a zero byte follows
// ----------

// The position of a text in a sorted list of `count` rows, after equal ones.
template <class TextOf>
int32_t SortedPosition(int32_t count, const char *text, TextOf textOf) {
  int32_t low = 0;
  int32_t high = count;
  while (low < high) {
    const int32_t middle = low + (high - low) / 2;
    if (lstrcmpiA(textOf(middle).data(), text) <= 0) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

// Whether a row begins with that text, in any case.
inline bool RowBeginsWith(std::span<char> row, const char *prefix, size_t length) {
  if (row.size() < length) {
    return false;
  }
  char *const end = row.data() + length;
  const char next = *end;
  *end = '\0';
  const bool begins = WRENStrEqualNoCase(row.data(), prefix) != 0;
  *end = next;
  return begins;
}

// LB_FINDSTRING: the next row after `after`, wrapping around at the end, or ORL_LB_ERR.
template <class TextOf>
int32_t FindRowByPrefix(int32_t count, intptr_t after, const char *prefix, TextOf textOf) {
  if (prefix == nullptr || count == 0) {
    return ORL_LB_ERR;
  }
  const size_t length = std::strlen(prefix);
  const int32_t start = after < 0 || after >= count ? 0 : static_cast<int32_t>(after + 1) % count;
  for (int32_t step = 0; step < count; ++step) {
    const int32_t row = (start + step) % count;
    if (RowBeginsWith(textOf(row), prefix, length)) {
      return row;
    }
  }
  return ORL_LB_ERR;
}

// ---- Dialogs ------------------------------------------------------------------------------------

// What a window is: a dialog, or a control in one.
template <class Dialog, class Control>
struct WindowPlace {
  Dialog *dialog = nullptr;    // null for an unknown window
  Control *control = nullptr;  // null for a dialog
};

// Keeps a dialog's record while its procedures run. The last hold of a dialog that was destroyed
// meanwhile releases it.
template <class Dialog, void (*kRelease)(Dialog *)>
class DialogHold {
 public:
  explicit DialogHold(Dialog *dialog) : dialog_(dialog) { ++dialog_->holds; }
  ~DialogHold() {
    assert(dialog_->holds > 0);
    if (--dialog_->holds == 0 && dialog_->gone) {
      kRelease(dialog_);
    }
  }
  DialogHold(const DialogHold &) = delete;
  DialogHold &operator=(const DialogHold &) = delete;

 private:
  Dialog *dialog_;
};

// ---- Operations ---------------------------------------------------------------------------------

// Sends a message to the procedure of a window; 0 for one that is destroyed or has no procedure.
// `Hold` keeps the dialog's record while the procedure runs, `ownProc` is the default procedure of
// controls.
template <class Hold, class Place>
intptr_t SendToPlace(const Place &place, OrlWindowProc ownProc, OrlWindow window, uint32_t message,
                     uintptr_t wParam, intptr_t lParam) {
  if (place.dialog == nullptr) {
    return 0;
  }
  const Hold hold(place.dialog);
  OrlWindowProc proc = place.control == nullptr         ? place.dialog->proc
                       : place.control->proc == nullptr ? ownProc
                                                        : place.control->proc;
  return proc == nullptr ? 0 : proc(window, message, wParam, lParam);
}

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
