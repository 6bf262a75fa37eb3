// Short forms of the window system's operations, for the code of dialogs. Requires a current window
// system.
#ifndef ORLI11_EDITOR_WINDOW_CALLS_H
#define ORLI11_EDITOR_WINDOW_CALLS_H

#include <cassert>
#include <cstdint>

#include "platform/window_system.h"

inline intptr_t Send(OrlWindow window, uint32_t message, uintptr_t wParam = 0,
                     intptr_t lParam = 0) {
  assert(Windows() != nullptr);
  return Windows()->SendMessage(window, message, wParam, lParam);
}

inline intptr_t SendText(OrlWindow window, uint32_t message, uintptr_t wParam, const char *text) {
  return Send(window, message, wParam, reinterpret_cast<intptr_t>(text));
}

inline OrlWindow ItemOf(OrlWindow dialog, int32_t id) {
  return Windows()->GetDlgItem(dialog, id);
}

inline void EnableItem(OrlWindow dialog, int32_t id, bool enabled) {
  Windows()->EnableWindow(ItemOf(dialog, id), enabled ? 1 : 0);
}

inline void ShowItem(OrlWindow dialog, int32_t id, bool shown) {
  Windows()->ShowWindow(ItemOf(dialog, id), shown ? 1 : 0);
}

inline void FocusItem(OrlWindow dialog, int32_t id) {
  Windows()->SetFocus(ItemOf(dialog, id));
}

inline void SetItemText(OrlWindow dialog, int32_t id, const char *text) {
  Windows()->SetWindowText(ItemOf(dialog, id), text);
}

inline bool ItemHasText(OrlWindow dialog, int32_t id) {
  return Windows()->GetWindowTextLength(ItemOf(dialog, id)) > 0;
}

// ---- Lists ----------------------------------------------------------------------------------

inline int32_t CurrentRow(OrlWindow list) {
  return static_cast<int32_t>(Send(list, ORL_LB_GETCURSEL));
}

inline void SetCurrentRow(OrlWindow list, int32_t row) {
  Send(list, ORL_LB_SETCURSEL, static_cast<uintptr_t>(static_cast<intptr_t>(row)));
}

// Inserts a row with its data, -1 for the end. Returns the row's index, or a negative value when
// out of memory.
inline int32_t InsertRow(OrlWindow list, int32_t row, const char *text, int32_t data) {
  const auto place = static_cast<uintptr_t>(static_cast<intptr_t>(row));
  const auto inserted = static_cast<int32_t>(SendText(list, ORL_LB_INSERTSTRING, place, text));
  if (inserted >= 0) {
    Send(list, ORL_LB_SETITEMDATA, static_cast<uintptr_t>(inserted), data);
  }
  return inserted;
}

// ---- Edits ----------------------------------------------------------------------------------

struct Selection {
  int32_t start, end;
};

inline Selection SelectionOf(OrlWindow edit) {
  Selection selection = {0, 0};
  Send(edit, ORL_EM_GETSEL, reinterpret_cast<uintptr_t>(&selection.start),
       reinterpret_cast<intptr_t>(&selection.end));
  return selection;
}

inline void Select(OrlWindow edit, int32_t start, int32_t end) {
  Send(edit, ORL_EM_SETSEL, static_cast<uintptr_t>(start), end);
}

inline bool IsModified(OrlWindow edit) {
  return Send(edit, ORL_EM_GETMODIFY) != 0;
}

inline void SetModified(OrlWindow edit, bool modified) {
  Send(edit, ORL_EM_SETMODIFY, modified ? 1 : 0);
}

#endif
