// Texts of controls in memory, and the row of an expression.
#include "editor/editor.h"
#include "editor/window_calls.h"

char *TextOfWindow(OrlWindow window) {
  const int32_t length = Windows()->GetWindowTextLength(window);
  char *text = static_cast<char *>(WRENMemAlloc(static_cast<uint32_t>(length) + 1));
  if (text != nullptr) {
    Windows()->GetWindowText(window, text, length + 1);
  }
  return text;
}

char *TextOfRow(OrlWindow list, int32_t row) {
  const auto place = static_cast<uintptr_t>(static_cast<intptr_t>(row));
  const intptr_t length = row < 0 ? -1 : Send(list, ORL_LB_GETTEXTLEN, place);
  if (length < 0) {
    return nullptr;
  }
  char *text = static_cast<char *>(WRENMemAlloc(static_cast<uint32_t>(length) + 1));
  if (text != nullptr) {
    Send(list, ORL_LB_GETTEXT, place, reinterpret_cast<intptr_t>(text));
  }
  return text;
}

HEXP ExpressionOfRow(OrlWindow list, int32_t row) {
  char *name = row >= 1 ? TextOfRow(list, row) : nullptr;
  HEXP exp = name != nullptr ? ORLHEXPFromName(CurrentEditor().ec, name) : nullptr;
  WRENMemFree(name);
  return exp;
}

int32_t RowOfOrdinal(OrlWindow list, int32_t ordinal) {
  const auto rows = static_cast<int32_t>(Send(list, ORL_LB_GETCOUNT));
  for (int32_t row = 0; row < rows; row++) {
    if (Send(list, ORL_LB_GETITEMDATA, static_cast<uintptr_t>(row)) == ordinal) {
      return row;
    }
  }
  return -1;
}
