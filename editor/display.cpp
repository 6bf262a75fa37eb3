// What the editor shows besides its text: titles, captions, and which controls are enabled.
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

// The kind of a row of the Formulas list.
int32_t KindOfRow(const EditorState &editor, OrlWindow list, int32_t row) {
  return row == 0 ? editor.editorMode : KindOfExpression(ExpressionOfRow(editor, list, row));
}

}  // namespace

bool OrlIsModified(const EditorState &editor) {
  return IsModified(ItemOf(editor.dialog, kEditText)) ||
         IsModified(ItemOf(editor.dialog, kEditName));
}

void OrlClearModified(const EditorState &editor) {
  SetModified(ItemOf(editor.dialog, kEditText), false);
  SetModified(ItemOf(editor.dialog, kEditName), false);
}

void OrlSetTitle(EditorState &editor) {
  const char *title = moduleTexts.editorTitles[editor.editorMode];
  HEXP exp = OrlCurrentExpression(editor);
  const EditorText newRow = LoadText(kModeTexts[editor.editorMode].newRow);
  const char *name = exp != nullptr             ? exp->entry.name
                     : editor.repair != nullptr ? editor.repair->name
                                                : newRow.text;
  if (!SetJoinedTitle(editor.dialog, title, name)) {
    Windows()->SetWindowText(editor.dialog, title);
  }
}

void OrlSetStatus(const EditorState &editor) {
  SetItemText(editor.dialog, kEditStatus, LoadText(kModeTexts[editor.editorMode].status).text);
}

void OrlEnableOk(const EditorState &editor) {
  EnableItem(editor.dialog, kButtonOk,
             ItemHasText(editor.dialog, kEditText) && ItemHasText(editor.dialog, kEditName));
}

void OrlEnableEditButtons(const EditorState &editor) {
  const Selection selection = SelectionOf(ItemOf(editor.dialog, kEditText));
  for (const int32_t id : {kButtonCut, kButtonCopy, kButtonClear, kButtonWrap}) {
    EnableItem(editor.dialog, id, selection.start != selection.end);
  }
  EnableItem(editor.dialog, kButtonPaste, Windows()->IsClipboardTextAvailable() != 0);
}

void OrlEnableDelete(const EditorState &editor) {
  EC ec = editor.ec;
  OrlWindow list = ItemOf(editor.dialog, kListFormulas);
  const int32_t row = CurrentRow(list);
  const bool offered = editor.repair == nullptr && ec->delPermissionProc != nullptr && row >= 1;
  const OwnedText name = offered ? TextOfRow(list, row) : nullptr;
  EnableItem(editor.dialog, kButtonDelete,
             name != nullptr && ORLIsNamedFormulaUsed(ec, name.get()) == 0);
}

void OrlEnableShowText(const EditorState &editor) {
  EnableItem(editor.dialog, kButtonShowText, CurrentRow(ItemOf(editor.dialog, kListFormulas)) >= 1);
}

void OrlCaptionByRow(const EditorState &editor) {
  OrlWindow list = ItemOf(editor.dialog, kListFormulas);
  const int32_t row = CurrentRow(list);
  if (row < 0) {
    return;
  }
  const ModeTexts &texts = kModeTexts[KindOfRow(editor, list, row)];
  SetItemText(editor.dialog, kButtonSelect, LoadText(texts.selectCaption).text);
  SetItemText(editor.dialog, kButtonShowText, LoadText(texts.showCaption).text);
}

void OrlCaptionValues(const EditorState &editor) {
  const bool open = editor.valuesWindow != nullptr;
  SetItemText(editor.dialog, kButtonValues,
              LoadText(open ? kStringListValues : kStringOpenValues).text);
}
