// What the editor shows: the two edits, modes, titles, captions, and what is enabled.
#include <initializer_list>

#include "editor/editor.h"
#include "editor/editor_text.h"
#include "editor/mode_texts.h"
#include "editor/window_calls.h"
#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/module.h"
#include "persistence/repair.h"

namespace {

void EnableName(OrlWindow dialog, bool enabled) {
  EnableItem(dialog, kEditName, enabled);
  EnableItem(dialog, kLabelName, enabled);
}

void ShowNewText(OrlWindow dialog) {
  const EditorState &editor = CurrentEditor();
  SetItemText(dialog, kEditText, "");
  char name[kGeneratedNameSize];
  GeneratedName(editor.ec, static_cast<ExpressionClass>(editor.editorMode), name);
  SetItemText(dialog, kEditName, name);
  EnableName(dialog, true);
}

void ShowExpression(OrlWindow dialog, HEXP exp) {
  const EditorState &editor = CurrentEditor();
  SetItemText(dialog, kEditText, exp->text);
  if (exp->name[0] != '\0') {
    SetItemText(dialog, kEditName, exp->name);
    EnableName(dialog, ORLIsNamedFormulaUsed(editor.ec, exp->name) == 0);
  }
  if (editor.textViewWindow != nullptr) {
    Send(editor.textViewWindow, kMessageShowExpression, 0, reinterpret_cast<intptr_t>(exp));
  }
}

void MarkMode(OrlWindow dialog) {
  Windows()->CheckRadioButton(dialog, kOptionFormula, kOptionSet,
                              kModeTexts[CurrentEditor().editorMode].optionButton);
}

// The kind of a row of the Formulas list.
int32_t KindOfRow(OrlWindow list, int32_t row) {
  return row == 0 ? CurrentEditor().editorMode : KindOfExpression(ExpressionOfRow(list, row));
}

}  // namespace

bool OrlIsModified(OrlWindow dialog) {
  return IsModified(ItemOf(dialog, kEditText)) || IsModified(ItemOf(dialog, kEditName));
}

void OrlClearModified(OrlWindow dialog) {
  SetModified(ItemOf(dialog, kEditText), false);
  SetModified(ItemOf(dialog, kEditName), false);
}

void OrlShowCurrent(OrlWindow dialog) {
  HEXP exp = OrlCurrentExpression();
  if (exp != nullptr) {
    ShowExpression(dialog, exp);
  } else {
    ShowNewText(dialog);
  }
  OrlSyncValuesButton(dialog, 0);
  OrlClearModified(dialog);
  OrlSetTitle(dialog);
  OrlEnableEditButtons(dialog);
}

void OrlSetMode(OrlWindow dialog, int32_t target, bool interactive) {
  EditorState &editor = CurrentEditor();
  if (target == kModeTexts[editor.editorMode].optionButton ||
      (interactive && OrlIsModified(dialog) && !OrlAskSave(dialog))) {
    MarkMode(dialog);
    return;
  }
  editor.editorMode = target - kOptionFormula;
  MarkMode(dialog);
  OrlWindow list = ItemOf(dialog, kListFormulas);
  const int32_t row = CurrentRow(list);
  Send(list, ORL_LB_DELETESTRING, 0);
  InsertRow(list, 0, LoadText(kModeTexts[editor.editorMode].newRow).text, -1);
  if (row >= 0) {
    SetCurrentRow(list, row);
  }
  OrlSetTitle(dialog);
  OrlSetStatus(dialog);
  if (interactive) {
    editor.currentExp = nullptr;
    OrlShowCurrent(dialog);
    OrlSeedText(dialog);
    OrlClearModified(dialog);
    FocusItem(dialog, kEditText);
  }
}

void OrlSetTitle(OrlWindow dialog) {
  const EditorState &editor = CurrentEditor();
  const char *title = moduleTexts.editorTitles[editor.editorMode];
  HEXP exp = OrlCurrentExpression();
  const EditorText newRow = LoadText(kModeTexts[editor.editorMode].newRow);
  const char *name = exp != nullptr                      ? exp->name
                     : CurrentEditor().repair != nullptr ? CurrentEditor().repair->name
                                                         : newRow.text;
  if (!SetJoinedTitle(dialog, title, name)) {
    Windows()->SetWindowText(dialog, title);
  }
}

void OrlSetStatus(OrlWindow dialog) {
  SetItemText(dialog, kEditStatus, LoadText(kModeTexts[CurrentEditor().editorMode].status).text);
}

void OrlEnableOk(OrlWindow dialog) {
  EnableItem(dialog, kButtonOk, ItemHasText(dialog, kEditText) && ItemHasText(dialog, kEditName));
}

void OrlEnableEditButtons(OrlWindow dialog) {
  const Selection selection = SelectionOf(ItemOf(dialog, kEditText));
  for (const int32_t id : {kButtonCut, kButtonCopy, kButtonClear, kButtonWrap}) {
    EnableItem(dialog, id, selection.start != selection.end);
  }
  EnableItem(dialog, kButtonPaste, Windows()->IsClipboardTextAvailable() != 0);
}

void OrlEnableDelete(OrlWindow dialog) {
  EC ec = CurrentEditor().ec;
  OrlWindow list = ItemOf(dialog, kListFormulas);
  const int32_t row = CurrentRow(list);
  const bool offered =
      CurrentEditor().repair == nullptr && ec->delPermissionProc != nullptr && row >= 1;
  char *name = offered ? TextOfRow(list, row) : nullptr;
  EnableItem(dialog, kButtonDelete, name != nullptr && ORLIsNamedFormulaUsed(ec, name) == 0);
  WRENMemFree(name);
}

void OrlEnableShowText(OrlWindow dialog) {
  EnableItem(dialog, kButtonShowText, CurrentRow(ItemOf(dialog, kListFormulas)) >= 1);
}

void OrlCaptionByRow(OrlWindow dialog) {
  OrlWindow list = ItemOf(dialog, kListFormulas);
  const int32_t row = CurrentRow(list);
  if (row < 0) {
    return;
  }
  const ModeTexts &texts = kModeTexts[KindOfRow(list, row)];
  SetItemText(dialog, kButtonSelect, LoadText(texts.selectCaption).text);
  SetItemText(dialog, kButtonShowText, LoadText(texts.showCaption).text);
}

void OrlCaptionValues(OrlWindow dialog) {
  constexpr uint32_t kOpensDialog = 245;
  constexpr uint32_t kListsValues = 246;
  const bool open = CurrentEditor().valuesWindow != nullptr;
  SetItemText(dialog, kButtonValues, LoadText(open ? kListsValues : kOpensDialog).text);
}
