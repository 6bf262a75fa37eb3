// Copies of the texts of controls, and the row of an expression.
#include "editor/editor.h"
#include "editor/window_calls.h"

OwnedText TextOfWindow(OrlWindow window) {
  const int32_t length = Windows()->GetWindowTextLength(window);
  OwnedText text = Allocate<char>(static_cast<uint32_t>(length) + 1);
  if (text != nullptr) {
    Windows()->GetWindowText(window, text.get(), length + 1);
  }
  return text;
}

OwnedText TextOfRow(OrlWindow list, int32_t row) {
  const auto place = static_cast<uintptr_t>(static_cast<intptr_t>(row));
  const intptr_t length = row < 0 ? -1 : Send(list, ORL_LB_GETTEXTLEN, place);
  if (length < 0) {
    return nullptr;
  }
  OwnedText text = Allocate<char>(static_cast<uint64_t>(length) + 1);
  if (text != nullptr) {
    Send(list, ORL_LB_GETTEXT, place, reinterpret_cast<intptr_t>(text.get()));
  }
  return text;
}

HEXP ExpressionOfRow(const EditorState &editor, OrlWindow list, int32_t row) {
  const OwnedText name = row >= 1 ? TextOfRow(list, row) : nullptr;
  return name != nullptr ? ORLHEXPFromName(editor.ec, name.get()) : nullptr;
}

int32_t RowOfOrdinal(OrlWindow list, int32_t ordinal) {
  const auto rows = static_cast<int32_t>(Send(list, ORL_LB_GETCOUNT));
  for (int32_t row = 0; row < rows; ++row) {
    if (Send(list, ORL_LB_GETITEMDATA, static_cast<uintptr_t>(row)) == ordinal) {
      return row;
    }
  }
  return -1;
}
