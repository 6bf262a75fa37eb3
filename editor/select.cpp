// The rows of the list of formulas: loading one into the edits, and deleting one.
#include <initializer_list>

#include "editor/editor.h"
#include "editor/editor_text.h"
#include "editor/mode_texts.h"
#include "editor/window_calls.h"
#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/host_call.h"
#include "platform/text.h"

namespace {

// Asks host and user whether the expression may be deleted. Both may take long, and the host may
// change the context.
bool DeletionIsWanted(EditorState &editor, HEXP exp) {
  const ExpressionRef asked = RefTo(exp);
  const int32_t kind = KindOfExpression(exp);
  const EditorText caption = LoadText(kModeTexts[kind].deleteCaption);
  const int32_t permitted =
      CallHost([&] { return editor.ec->delPermissionProc(editor.ec, exp, editor.dialog); });
  if (permitted == 0) {
    Windows()->MessageBox(editor.dialog, LoadText(kStringDeleteDenied).text, caption.text,
                          ORL_MB_OK);
    return false;
  }
  if (!IsStored(editor.ec, asked)) {
    return false;  // the host has deleted it itself
  }
  EditorText question = LoadText(kStringDeleteQuestion);
  AppendText(question, kModeTexts[kind].word);
  const int32_t answer =
      Windows()->MessageBox(editor.dialog, question.text, caption.text,
                            ORL_MB_YESNO | ORL_MB_ICONQUESTION | ORL_MB_DEFBUTTON2);
  return answer == ORL_IDYES && IsStored(editor.ec, asked);
}

// Removes the row of a deleted expression from the list; those after it keep their ordinals.
void RemoveRow(OrlWindow list, int32_t ordinal) {
  const int32_t row = RowOfOrdinal(list, ordinal);
  if (row >= 0) {
    Send(list, ORL_LB_DELETESTRING, static_cast<uintptr_t>(row));
  }
  const intptr_t count = Send(list, ORL_LB_GETCOUNT);
  for (intptr_t i = 0; i < count; ++i) {
    const intptr_t data = Send(list, ORL_LB_GETITEMDATA, static_cast<uintptr_t>(i));
    if (data > ordinal) {
      Send(list, ORL_LB_SETITEMDATA, static_cast<uintptr_t>(i), data - 1);
    }
  }
  WRENListBoxRefit(list);
  SetCurrentRow(list, -1);
}

// Updates the editor after a deletion.
void ShowDeleted(EditorState &editor, bool wasCurrent) {
  for (const int32_t button : {kButtonDelete, kButtonSelect, kButtonShowText}) {
    EnableItem(editor.dialog, button, false);
  }
  if (wasCurrent) {
    editor.currentExp = nullptr;
    OrlShowCurrent(editor);
  }
  if (editor.textViewWindow != nullptr) {
    Send(editor.textViewWindow, kMessageShowExpression, static_cast<uintptr_t>(editor.editorMode));
  }
}

}  // namespace

void OrlSelectFormula(EditorState &editor) {
  OrlWindow list = ItemOf(editor.dialog, kListFormulas);
  if (CurrentRow(list) < 0 || (OrlIsModified(editor) && !OrlAskSave(editor))) {
    return;
  }
  const int32_t chosen = CurrentRow(list);  // a save may have moved it, or the host deleted it
  OrlSetCurrentExpression(editor, ExpressionOfRow(editor, list, chosen));
  const bool isNew = editor.currentExp == nullptr;
  if (!isNew) {
    OrlSetMode(editor, kOptionFormula + KindOfExpression(editor.currentExp), false);
  }
  OrlShowCurrent(editor);
  if (isNew) {
    OrlSeedText(editor);
  }
  OrlClearModified(editor);
  FocusItem(editor.dialog, kEditText);
}

bool OrlSaveAndGoOn(EditorState &editor) {
  if (editor.repair != nullptr || OrlSaveText(editor) == nullptr) {
    return false;
  }
  editor.currentExp = nullptr;
  OrlShowCurrent(editor);
  OrlSeedText(editor);
  OrlClearModified(editor);
  FocusItem(editor.dialog, kEditText);
  return true;
}

void OrlDeleteSelected(EditorState &editor) {
  OrlWindow list = ItemOf(editor.dialog, kListFormulas);
  const int32_t row = CurrentRow(list);
  HEXP exp = ExpressionOfRow(editor, list, row);
  if (exp == nullptr || editor.ec->delPermissionProc == nullptr) {
    return;
  }
  const bool wanted = DeletionIsWanted(editor, exp);
  OrlFollowContext(editor);
  if (!wanted) {
    return;
  }
  const int32_t ordinal = ORLGetExpressionOrdinal(editor.ec, exp);
  const bool wasCurrent = exp == OrlCurrentExpression(editor);
  if (ordinal < 0 || ORLDestroyEXP(editor.ec, exp) == 0) {
    return;
  }
  RemoveRow(list, ordinal);
  ShowDeleted(editor, wasCurrent);
  OrlNotifyHost(editor);
  OrlFollowContext(editor);  // a formula that only the deleted one used may be renamed again
}
