// What the editor works on: the expression that it shows, and the mode.
#include <cassert>

#include "editor/editor.h"
#include "editor/editor_text.h"
#include "editor/mode_texts.h"
#include "editor/window_calls.h"
#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/module.h"

namespace {

void EnableName(const EditorState &editor, bool enabled) {
  EnableItem(editor.dialog, kEditName, enabled);
  EnableItem(editor.dialog, kLabelName, enabled);
}

void ShowNewText(const EditorState &editor) {
  SetItemText(editor.dialog, kEditText, "");
  char name[kGeneratedNameSize];
  GeneratedName(editor.ec, static_cast<ExpressionClass>(editor.editorMode), name);
  SetItemText(editor.dialog, kEditName, name);
  EnableName(editor, true);
}

void ShowExpression(const EditorState &editor, HEXP exp) {
  SetItemText(editor.dialog, kEditText, exp->text);
  if (exp->entry.name[0] != '\0') {
    SetItemText(editor.dialog, kEditName, exp->entry.name);
    EnableName(editor, ORLIsNamedFormulaUsed(editor.ec, exp->entry.name) == 0);
  }
  if (editor.textViewWindow != nullptr) {
    Send(editor.textViewWindow, kMessageShowExpression, 0, reinterpret_cast<intptr_t>(exp));
  }
}

void MarkMode(const EditorState &editor) {
  Windows()->CheckRadioButton(editor.dialog, kOptionFormula, kOptionSet,
                              kModeTexts[editor.editorMode].optionButton);
}

}  // namespace

void OrlShowCurrent(EditorState &editor) {
  HEXP exp = OrlCurrentExpression(editor);
  if (exp != nullptr) {
    ShowExpression(editor, exp);
  } else {
    ShowNewText(editor);
  }
  OrlSyncValuesButton(editor, kListingMore);
  OrlClearModified(editor);
  OrlSetTitle(editor);
  OrlEnableEditButtons(editor);
}

void OrlSetMode(EditorState &editor, int32_t optionButton, bool interactive) {
  assert(optionButton >= kOptionFormula && optionButton <= kOptionSet);
  if (optionButton == kModeTexts[editor.editorMode].optionButton ||
      (interactive && OrlIsModified(editor) && !OrlAskSave(editor))) {
    MarkMode(editor);
    return;
  }
  editor.editorMode = optionButton - kOptionFormula;
  MarkMode(editor);
  OrlWindow list = ItemOf(editor.dialog, kListFormulas);
  const int32_t row = CurrentRow(list);
  Send(list, ORL_LB_DELETESTRING, 0);
  InsertRow(list, 0, LoadText(kModeTexts[editor.editorMode].newRow).text, -1);
  if (row >= 0) {
    SetCurrentRow(list, row);
  }
  OrlSetTitle(editor);
  OrlSetStatus(editor);
  if (interactive) {
    editor.currentExp = nullptr;
    OrlShowCurrent(editor);
    OrlSeedText(editor);
    OrlClearModified(editor);
    FocusItem(editor.dialog, kEditText);
  }
}
