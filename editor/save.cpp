// Saving: the two edits become a stored expression.
#include <cstring>

#include "editor/editor.h"
#include "editor/editor_text.h"
#include "editor/mode_texts.h"
#include "editor/window_calls.h"
#include "engine/context.h"
#include "engine/expressions.h"
#include "language/parse.h"
#include "language/parse_state.h"
#include "persistence/repair.h"
#include "platform/strings.h"
#include "platform/text.h"

namespace {

// Working copies of a save.
struct SaveTexts {
  OwnedText oldName;  // of the expression that is shown; null for a new text
  OwnedText text;
  OwnedText name;
};

// Questions to ask when a text is of another kind than the mode: [mode][kind].
constexpr uint32_t kKindQuestions[kModeCount][kModeCount] = {
    {0, kStringRangeInFormulaMode, kStringSetInFormulaMode},
    {kStringFormulaInRangeMode, 0, kStringSetInRangeMode},
    {kStringFormulaInSetMode, kStringRangeInSetMode, 0},
};

bool TakeTexts(const EditorState &editor, SaveTexts &texts) {
  if (editor.currentExp != nullptr) {
    texts.oldName = CopyText(editor.currentExp->entry.name);
    if (texts.oldName == nullptr) {
      return false;
    }
  }
  texts.text = TextOfWindow(ItemOf(editor.dialog, kEditText));
  texts.name = TextOfWindow(ItemOf(editor.dialog, kEditName));
  return texts.text != nullptr && texts.name != nullptr;
}

// Keeps the text and its name for the reader of a block when the word at which the parse failed
// names a formula that has not been read yet.
bool DeferText(const EditorState &editor, const SaveTexts &texts, const FormulaError &error) {
  FormulaRepair *repair = editor.repair;
  if (repair == nullptr || error.id != ORL_ERR_FUNC ||
      ForwardReference(*repair->pending, texts.text.get(), error) == nullptr) {
    return false;
  }
  const size_t textSize = std::strlen(texts.text.get()) + 1;
  const size_t nameSize = std::strlen(texts.name.get()) + 1;
  OwnedText row = Allocate<char>(textSize + nameSize);
  if (row == nullptr) {
    return false;
  }
  std::memcpy(row.get(), texts.text.get(), textSize);
  std::memcpy(row.get() + textSize, texts.name.get(), nameSize);
  repair->deferred = std::move(row);
  return true;
}

// Shows the error in the text or its name, and selects its span.
void ReportFailure(const EditorState &editor, const SaveTexts &texts, FormulaError error) {
  if (error.id == ORL_ERR_NAME || error.id == ORL_ERR_DUPNAME) {
    error.offset = 0;
    error.length = WRENStrLen(texts.name.get());
    ORLErrorDisplay(editor.dialog, texts.name.get(), &error);
  } else if (!DeferText(editor, texts, error)) {
    ORLErrorDisplay(editor.dialog, texts.text.get(), &error);
  }
  OrlSelectError(ItemOf(editor.dialog, kEditText), error);
  FocusItem(editor.dialog, kEditText);
}

// True when the text is of the mode's kind, when the user accepts it anyway, and when it does not
// parse at all, which the save will report. Asked before anything is stored, so that a No changes
// nothing.
bool KindIsWanted(const EditorState &editor, const SaveTexts &texts) {
  if (!EditorHasModes(editor)) {
    return true;
  }
  const int32_t kind =
      ClassifyText(editor.ec, editor.currentExp, texts.text.get(), texts.name.get());
  if (kind < 0 || kind == editor.editorMode) {
    return true;
  }
  const EditorText question = LoadText(kKindQuestions[editor.editorMode][kind]);
  EditorText caption = LoadText(kModeTexts[editor.editorMode].title);
  AppendText(caption, kStringWarningWord);
  return Windows()->MessageBox(editor.dialog, question.text, caption.text,
                               ORL_MB_YESNO | ORL_MB_ICONSTOP) == ORL_IDYES;
}

bool RowIs(OrlWindow list, int32_t row, const char *name) {
  const OwnedText text = TextOfRow(list, row);
  return text != nullptr && SameText(text.get(), name);
}

// Updates the list of formulas for a saved expression; `oldName` is null for a new one. Changes
// that a host routine has made at the same time are left to OrlFollowContext.
void ShowSaved(const EditorState &editor, HEXP saved, const char *oldName) {
  const int32_t ordinal = ORLGetExpressionOrdinal(editor.ec, saved);
  OrlWindow list = ItemOf(editor.dialog, kListFormulas);
  const int32_t current = CurrentRow(list);
  if (oldName == nullptr) {
    InsertRow(list, -1, saved->entry.name, ordinal);
  } else {
    const int32_t row = RowOfOrdinal(list, ordinal);
    if (SameText(oldName, saved->entry.name) || !RowIs(list, row, oldName)) {
      return;
    }
    Send(list, ORL_LB_DELETESTRING, static_cast<uintptr_t>(row));
    InsertRow(list, row, saved->entry.name, ordinal);
    SetCurrentRow(list, current);
  }
  WRENListBoxRefit(list);
}

HEXP ParseAndShow(EditorState &editor, const SaveTexts &texts) {
  OrlCurrentExpression(editor);
  if (!KindIsWanted(editor, texts)) {
    return nullptr;
  }
  OrlCurrentExpression(editor);  // the host may have changed the context during the question
  if (!OrlHostAccepts(editor, texts.text.get(), texts.name.get())) {
    return nullptr;
  }
  OrlCurrentExpression(editor);
  FormulaError error = {};
  uint16_t dataType = 0;
  HEXP saved = ORLParseFormula(editor.ec, editor.currentExp, texts.text.get(), texts.name.get(),
                               &error, &dataType);
  if (saved == nullptr) {
    ReportFailure(editor, texts, error);
  } else {
    ShowSaved(editor, saved, editor.currentExp != nullptr ? texts.oldName.get() : nullptr);
  }
  return saved;
}

}  // namespace

void OrlCutTail(const EditorState &editor, char *text) {
  const size_t length = std::strlen(editor.expressionTail);
  for (char *at = text; editor.editorMode == kModeSet && *at != '\0'; at = CharNextA(at)) {
    if (std::strncmp(at, editor.expressionTail, length) == 0) {
      *at = '\0';
      break;
    }
  }
}

HEXP OrlSaveText(EditorState &editor) {
  if (!ItemHasText(editor.dialog, kEditText)) {
    return nullptr;
  }
  OrlCurrentExpression(editor);
  SaveTexts texts = {};
  HEXP saved = nullptr;
  if (TakeTexts(editor, texts)) {
    OrlCutTail(editor, texts.text.get());
    if (editor.editorMode == kModeSet) {
      SetItemText(editor.dialog, kEditText, texts.text.get());
    }
    saved = ParseAndShow(editor, texts);
  } else {
    const FormulaError error = {ORL_ERR_MEMORY, 0, 0};
    ORLErrorDisplay(editor.dialog, "", &error);
  }
  if (saved != nullptr) {
    OrlNotifyHost(editor);
  }
  OrlFollowContext(editor);
  OrlEnableEditButtons(editor);
  return saved;
}

bool OrlAskSave(EditorState &editor) {
  const EditorText question = LoadText(kStringSaveQuestion);
  const EditorText caption = LoadText(kModeTexts[editor.editorMode].saveCaption);
  const int32_t answer =
      Windows()->MessageBox(editor.dialog, question.text, caption.text, ORL_MB_YESNOCANCEL);
  OrlFollowContext(editor);
  switch (answer) {
    case ORL_IDYES:
      return OrlSaveText(editor) != nullptr;
    case ORL_IDNO:
      return true;
    default:
      return false;
  }
}
