// Updates the editor after a host routine, which may have changed the context.
#include <algorithm>
#include <initializer_list>

#include "editor/editor.h"
#include "editor/mode_texts.h"
#include "editor/window_calls.h"
#include "engine/context.h"
#include "engine/expressions.h"
#include "platform/text.h"

namespace {

bool RowShows(OrlWindow list, int32_t row, int32_t ordinal, const char *name) {
  if (Send(list, ORL_LB_GETITEMDATA, static_cast<uintptr_t>(row)) != ordinal) {
    return false;
  }
  const OwnedText text = TextOfRow(list, row);
  return text == nullptr ||
         SameText(text.get(), name);  // when out of memory it counts as unchanged
}

bool IsHidden(EC ec, HEXP exp) {
  return (ec->flags & ORL_FLAG_LIST_ALL) == 0 && OrlIsHiddenExpression(ec, exp);
}

// True when the rows are in the order of the expressions, with their names and ordinals, and no
// expression that should be listed is missing.
bool RowsAgree(const EditorState &editor, OrlWindow list, int32_t rows) {
  EC ec = editor.ec;
  int32_t row = 1;
  for (int32_t ordinal = 0; ordinal < ORLGetExpressionCount(ec); ++ordinal) {
    HEXP exp = ORLHEXPFromOrdinal(ec, ordinal);
    if (row < rows && RowShows(list, row, ordinal, exp->entry.name)) {
      ++row;
    } else if (!IsHidden(ec, exp)) {
      return false;
    }
  }
  return row == rows;
}

// Lists the expressions again; those that had a row keep it, even if a new list would hide them.
// False when out of memory.
bool ListAnew(const EditorState &editor, OrlWindow list, int32_t rows) {
  EC ec = editor.ec;
  const Owned<HEXP> block = Allocate<HEXP>(static_cast<uint32_t>(rows));
  if (block == nullptr) {
    return false;
  }
  HEXP *const listed = block.get();
  for (int32_t row = rows - 1; row >= 1; --row) {
    listed[row] = ExpressionOfRow(editor, list, row);
    Send(list, ORL_LB_DELETESTRING, static_cast<uintptr_t>(row));
  }
  std::sort(listed, listed + rows);
  for (int32_t ordinal = 0; ordinal < ORLGetExpressionCount(ec); ++ordinal) {
    HEXP exp = ORLHEXPFromOrdinal(ec, ordinal);
    if (!IsHidden(ec, exp) || std::binary_search(listed, listed + rows, exp)) {
      InsertRow(list, -1, exp->entry.name, ordinal);
    }
  }
  WRENListBoxRefit(list);
  return true;
}

// Makes the row of an expression current again, unless the host has removed the expression. Buttons
// that act on a row are updated with it; without a former row they are unchanged.
void RestoreRow(const EditorState &editor, OrlWindow list, int32_t row, HEXP exp) {
  if (row < 0) {
    return;
  }
  if (row >= 1) {
    const int32_t ordinal = ORLGetExpressionOrdinal(editor.ec, exp);
    row = ordinal < 0 ? -1 : RowOfOrdinal(list, ordinal);
  }
  SetCurrentRow(list, row);
  if (row >= 0) {
    return;
  }
  for (const int32_t button : {kButtonDelete, kButtonSelect, kButtonShowText}) {
    EnableItem(editor.dialog, button, false);
  }
  if (editor.textViewWindow != nullptr) {
    Send(editor.textViewWindow, kMessageShowExpression, static_cast<uintptr_t>(editor.editorMode));
  }
}

}  // namespace

void OrlFollowContext(EditorState &editor) {
  OrlWindow list = ItemOf(editor.dialog, kListFormulas);
  const auto rows = static_cast<int32_t>(Send(list, ORL_LB_GETCOUNT));
  if (!RowsAgree(editor, list, rows)) {
    const int32_t row = CurrentRow(list);
    HEXP exp = ExpressionOfRow(editor, list, row);
    if (ListAnew(editor, list, rows)) {
      RestoreRow(editor, list, row, exp);
    }
  }
  OrlEnableDelete(editor);
  if (EditorHasModes(editor)) {
    OrlCaptionByRow(editor);  // an expression may be of another kind now
  }
  if (editor.repair != nullptr) {
    return;
  }
  HEXP current = OrlCurrentExpression(editor);
  const bool renamable =
      current == nullptr || ORLIsNamedFormulaUsed(editor.ec, current->entry.name) == 0;
  EnableItem(editor.dialog, kEditName, renamable);
  EnableItem(editor.dialog, kLabelName, renamable);
  OrlSetTitle(editor);  // the text of a removed expression stays in the edits, as a new text
}
