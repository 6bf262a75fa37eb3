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

// Working copies of a save, freed at its end.
struct SaveTexts {
  char *oldName;  // of the expression that is shown; null for a new text
  char *text;
  char *name;
};

// Questions when a text is of another kind than the mode: [mode][kind].
constexpr uint32_t kKindQuestions[kModeCount][kModeCount] = {
    {0, 220, 221},
    {222, 0, 223},
    {224, 225, 0},
};
constexpr uint32_t kWarningWord = 226;
constexpr uint32_t kSaveQuestion = 202;

bool TakeTexts(OrlWindow dialog, SaveTexts &texts) {
  const EditorState &editor = CurrentEditor();
  if (editor.currentExp != nullptr) {
    texts.oldName = CopyText(editor.currentExp->name).release();
    if (texts.oldName == nullptr) {
      return false;
    }
  }
  texts.text = TextOfWindow(ItemOf(dialog, kEditText));
  texts.name = TextOfWindow(ItemOf(dialog, kEditName));
  return texts.text != nullptr && texts.name != nullptr;
}

void FreeTexts(SaveTexts &texts) {
  WRENMemFree(texts.oldName);
  WRENMemFree(texts.text);
  WRENMemFree(texts.name);
}

// In Set mode the tail that stands for further members is no part of the text.
void CutTail(OrlWindow dialog, char *text) {
  const EditorState &editor = CurrentEditor();
  if (editor.editorMode != kModeSet) {
    return;
  }
  const size_t length = std::strlen(editor.expressionTail);
  for (char *at = text; *at != '\0'; at = CharNextA(at)) {
    if (std::strncmp(at, editor.expressionTail, length) == 0) {
      *at = '\0';
      break;
    }
  }
  SetItemText(dialog, kEditText, text);
}

// Keeps the text and its name for the reader of a block when the word at which the parse failed is
// the name of a formula that is still to come.
bool DeferText(const SaveTexts &texts, const FormulaError &error) {
  FormulaRepair *repair = CurrentEditor().repair;
  if (repair == nullptr || error.id != ORL_ERR_FUNC ||
      AwaitedRow(*repair->pending, texts.text, error) == nullptr) {
    return false;
  }
  const size_t textSize = std::strlen(texts.text) + 1;
  const size_t nameSize = std::strlen(texts.name) + 1;
  OwnedText row = Allocate<char>(textSize + nameSize);
  if (row == nullptr) {
    return false;
  }
  std::memcpy(row.get(), texts.text, textSize);
  std::memcpy(row.get() + textSize, texts.name, nameSize);
  repair->deferred = std::move(row);
  return true;
}

// Tells what is wrong with the text or its name, and shows the place in the text.
void TellFailure(OrlWindow dialog, const SaveTexts &texts, FormulaError error) {
  if (error.id == ORL_ERR_NAME || error.id == ORL_ERR_DUPNAME) {
    error.offset = 0;
    error.length = WRENStrLen(texts.name);
    ORLErrorDisplay(dialog, texts.name, &error);
  } else if (!DeferText(texts, error)) {
    ORLErrorDisplay(dialog, texts.text, &error);
  }
  OrlSelectError(ItemOf(dialog, kEditText), error);
  FocusItem(dialog, kEditText);
}

// True when the text is of the kind of the mode, when the user takes it all the same, and when it
// does not parse at all, which the save will tell. Asked before anything is stored, so that a No
// leaves everything as it is.
bool KindIsWanted(OrlWindow dialog, const SaveTexts &texts) {
  const EditorState &editor = CurrentEditor();
  if (!EditorHasModes()) {
    return true;
  }
  const int32_t kind = ClassifyText(editor.ec, editor.currentExp, texts.text, texts.name);
  if (kind < 0 || kind == editor.editorMode) {
    return true;
  }
  const EditorText question = LoadText(kKindQuestions[editor.editorMode][kind]);
  EditorText caption = LoadText(kModeTexts[editor.editorMode].title);
  AppendText(caption, kWarningWord);
  return Windows()->MessageBox(dialog, question.text, caption.text,
                               ORL_MB_YESNO | ORL_MB_ICONSTOP) == ORL_IDYES;
}

bool RowIs(OrlWindow list, int32_t row, const char *name) {
  char *text = TextOfRow(list, row);
  const bool same = text != nullptr && SameText(text, name);
  WRENMemFree(text);
  return same;
}

// Brings the list of formulas in step with a saved expression; `oldName` is null for a new one.
// What a routine of the host has changed at the same time is left to OrlFollowContext.
void ShowSaved(OrlWindow dialog, HEXP saved, const char *oldName) {
  const int32_t ordinal = ORLGetExpressionOrdinal(CurrentEditor().ec, saved);
  OrlWindow list = ItemOf(dialog, kListFormulas);
  const int32_t current = CurrentRow(list);
  if (oldName == nullptr) {
    InsertRow(list, -1, saved->name, ordinal);
  } else {
    const int32_t row = RowOfOrdinal(list, ordinal);
    if (SameText(oldName, saved->name) || !RowIs(list, row, oldName)) {
      return;
    }
    Send(list, ORL_LB_DELETESTRING, static_cast<uintptr_t>(row));
    InsertRow(list, row, saved->name, ordinal);
    SetCurrentRow(list, current);
  }
  WRENListBoxRefit(list);
}

HEXP ParseAndShow(OrlWindow dialog, const SaveTexts &texts) {
  EditorState &editor = CurrentEditor();
  OrlCurrentExpression();
  if (!KindIsWanted(dialog, texts)) {
    return nullptr;
  }
  OrlCurrentExpression();  // the question may have let the host change the context
  if (!OrlHostTakes(dialog, texts.text, texts.name)) {
    return nullptr;
  }
  OrlCurrentExpression();
  FormulaError error = {};
  uint16_t dataType = 0;
  HEXP saved =
      ORLParseFormula(editor.ec, editor.currentExp, texts.text, texts.name, &error, &dataType);
  if (saved == nullptr) {
    TellFailure(dialog, texts, error);
  } else {
    ShowSaved(dialog, saved, editor.currentExp != nullptr ? texts.oldName : nullptr);
  }
  return saved;
}

}  // namespace

HEXP OrlSaveText(OrlWindow dialog) {
  if (!ItemHasText(dialog, kEditText)) {
    return nullptr;
  }
  OrlCurrentExpression();
  SaveTexts texts = {};
  HEXP saved = nullptr;
  if (TakeTexts(dialog, texts)) {
    CutTail(dialog, texts.text);
    saved = ParseAndShow(dialog, texts);
  } else {
    const FormulaError error = {ORL_ERR_MEMORY, 0, 0};
    ORLErrorDisplay(dialog, "", &error);
  }
  FreeTexts(texts);
  if (saved != nullptr) {
    OrlTellHost(dialog);
  }
  OrlFollowContext(dialog);
  OrlEnableEditButtons(dialog);
  return saved;
}

bool OrlAskSave(OrlWindow dialog) {
  const EditorText question = LoadText(kSaveQuestion);
  const EditorText caption = LoadText(kModeTexts[CurrentEditor().editorMode].saveCaption);
  const int32_t answer =
      Windows()->MessageBox(dialog, question.text, caption.text, ORL_MB_YESNOCANCEL);
  OrlFollowContext(dialog);
  switch (answer) {
    case ORL_IDYES:
      return OrlSaveText(dialog) != nullptr;
    case ORL_IDNO:
      return true;
    default:
      return false;
  }
}
