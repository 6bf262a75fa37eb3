// Edits that a user can read and scroll but not change.
#ifndef ORLI11_EDITOR_READ_ONLY_H
#define ORLI11_EDITOR_READ_ONLY_H

#include "orli11/windows.h"

// True for an event that such an edit must not receive: typing, and what would move the selection.
// The Return key is passed on, for the default button.
inline bool IsKeptFromReadOnly(uint32_t message, uintptr_t wParam) {
  switch (message) {
    case ORL_WM_CHAR:
    case ORL_WM_MOUSEMOVE:
    case ORL_WM_LBUTTONDOWN:
    case ORL_WM_LBUTTONUP:
    case ORL_WM_LBUTTONDBLCLK:
      return true;
    case ORL_WM_KEYDOWN:
      return wParam != ORL_VK_RETURN;
    default:
      return false;
  }
}

#endif
