// The opening of the editor: its state, its lists, and the text that it starts with.
#include <algorithm>
#include <cstdio>
#include <initializer_list>

#include "editor/editor.h"
#include "editor/editor_text.h"
#include "editor/mode_texts.h"
#include "editor/window_calls.h"
#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/items.h"
#include "engine/module.h"
#include "persistence/repair.h"
#include "platform/strings.h"
#include "platform/text.h"
#include "resources/bitmaps.h"

namespace {

constexpr int32_t kNameLimit = 64;
constexpr uint32_t kErrorDelay = 1000;  // milliseconds
constexpr uint32_t kWordExpression = 209;

struct Interception {
  int32_t control;
  OrlWindowProc proc;
};
constexpr Interception kInterceptions[] = {
    {kEditText, EditSubProc},    {kEditStatus, StatusSubProc},     {kListFormulas, LBFormsSubProc},
    {kListItems, LBVarsSubProc}, {kListFunctions, LBFuncsSubProc},
};

void LoadWords() {
  EditorState &editor = CurrentEditor();
  editor.expressionWord[0] = '\0';
  LoadStringA(moduleHandle, kWordExpression, editor.expressionWord, kLabelSize);
  std::snprintf(editor.expressionTail, sizeof editor.expressionTail, "[,%s...]",
                editor.expressionWord);
  std::snprintf(editor.anyTail, sizeof editor.anyTail, "[,%s...]",
                moduleTexts.typeLabels[kLabelAny]);
}

void LoadRowBitmaps() {
  EditorState &editor = CurrentEditor();
  const char *const names[kModeCount] = {kBitmapFormulaRow, kBitmapRangeRow, kBitmapSetRow};
  editor.bitmapWidth = 0;
  editor.bitmapHeight = 0;
  for (int32_t mode = 0; mode < kModeCount; mode++) {
    const OrlBitmap *bitmap = EditorHasModes() ? FindBitmap(names[mode]) : nullptr;
    editor.rowBitmaps[mode] = bitmap == nullptr ? nullptr : Windows()->LoadBitmap(bitmap);
    if (mode == kModeFormula && editor.rowBitmaps[mode] != nullptr) {
      editor.bitmapWidth = bitmap->width;
      editor.bitmapHeight = bitmap->height;
    }
  }
}

void Intercept(OrlWindow dialog) {
  for (const Interception &row : kInterceptions) {
    CurrentEditor().controlProcs[row.control] =
        Windows()->SetWindowProc(ItemOf(dialog, row.control), row.proc);
  }
}

// Opens the values of the item that the host has named, once the editor stands.
void OpenValuesLater(OrlWindow dialog) {
  const char *item = CurrentEditor().valuesItem;
  int32_t row = -1;
  if (item[0] != '\0' && CurrentEditor().repair == nullptr &&
      OrlFindExact(ItemOf(dialog, kListItems), item, &row)) {
    EnableItem(dialog, kButtonValues, true);
    Windows()->PostMessage(dialog, ORL_WM_COMMAND, kButtonValues, 0);
  }
}

// Adds the names of a table whose data type, as a signed number, is below `typeLimit`.
void AddNames(OrlWindow list, const ItemTable &table, int32_t typeLimit) {
  for (uint32_t i = 0; i < HandleArrayRows(table.rows); i++) {
    const auto *item = static_cast<const ExprItem *>(HandleArrayPointerAt(table.rows, i));
    if (item != nullptr && item->dataType < typeLimit) {
      SendText(list, ORL_LB_ADDSTRING, 0, item->name);
    }
  }
  WRENListBoxRefit(list);
}

void FillFormulas(OrlWindow list) {
  const EditorState &editor = CurrentEditor();
  InsertRow(list, -1, LoadText(kModeTexts[editor.editorMode].newRow).text, -1);
  WRENListBoxRefit(list);
  const bool all = (editor.ec->flags & ORL_FLAG_LIST_ALL) != 0;
  for (int32_t ordinal = 0; ordinal < ORLGetExpressionCount(editor.ec); ordinal++) {
    HEXP exp = ORLHEXPFromOrdinal(editor.ec, ordinal);
    if (exp != nullptr && (all || !OrlIsHiddenExpression(editor.ec, exp))) {
      InsertRow(list, -1, exp->name, ordinal);
    }
  }
  WRENListBoxRefit(list);
}

void StartWithExpression(OrlWindow dialog, HEXP exp) {
  EC ec = CurrentEditor().ec;
  SetItemText(dialog, kEditText, exp->text);
  if (exp->name[0] != '\0') {
    SetItemText(dialog, kEditName, exp->name);
    if (ORLIsNamedFormulaUsed(ec, exp->name) != 0) {
      EnableItem(dialog, kEditName, false);
      EnableItem(dialog, kLabelName, false);
    }
  }
  OrlWindow list = ItemOf(dialog, kListFormulas);
  const int32_t row = RowOfOrdinal(list, ORLGetExpressionOrdinal(ec, exp));
  if (row >= 0) {
    SetCurrentRow(list, row);
    Windows()->PostMessage(list, ORL_LB_SETTOPINDEX, static_cast<uintptr_t>(row), 0);
  }
  EnableItem(dialog, kButtonShowText, true);
}

void StartWithFailure(OrlWindow dialog) {
  const FormulaRepair &repair = *CurrentEditor().repair;
  SetItemText(dialog, kEditName, repair.name);
  SetItemText(dialog, kEditText, repair.text);
  OrlWindow edit = ItemOf(dialog, kEditText);
  OrlSelectError(edit, repair.error);
  SetModified(edit, true);
  EnableItem(dialog, kEditName, false);
  EnableItem(dialog, kButtonSelect, false);
  FocusItem(dialog, kEditText);
  EnableItem(dialog, kButtonShowText, false);
}

void StartWithNewText(OrlWindow dialog) {
  const EditorState &editor = CurrentEditor();
  char name[kGeneratedNameSize];
  GeneratedName(editor.ec, static_cast<ExpressionClass>(editor.editorMode), name);
  SetItemText(dialog, kEditName, name);
  SetCurrentRow(ItemOf(dialog, kListFormulas), 0);
  EnableItem(dialog, kButtonShowText, false);
}

void StartModes(OrlWindow dialog) {
  const EditorState &editor = CurrentEditor();
  if (!EditorHasModes()) {
    for (const int32_t id : {kLabelMode, kOptionFormula, kOptionRange, kOptionSet}) {
      ShowItem(dialog, id, false);
    }
    return;
  }
  OrlLayoutFormulas(dialog);
  Windows()->CheckRadioButton(dialog, kOptionFormula, kOptionSet,
                              kModeTexts[editor.editorMode].optionButton);
  if (OrlCurrentExpression() == nullptr) {
    SetCurrentRow(ItemOf(dialog, kListFormulas), 0);
    OrlSeedText(dialog);
  }
}

}  // namespace

bool OrlFindExact(OrlWindow list, const char *name, int32_t *row) {
  int32_t at = -1;
  for (;;) {
    const auto found = static_cast<int32_t>(
        SendText(list, ORL_LB_FINDSTRING, static_cast<uintptr_t>(static_cast<intptr_t>(at)), name));
    if (found <= at) {
      return false;  // none, or the search has come around
    }
    at = found;
    char *text = TextOfRow(list, at);
    const bool same = text != nullptr && SameText(text, name);
    WRENMemFree(text);
    if (same) {
      SetCurrentRow(list, at);
      Send(list, ORL_LB_SETTOPINDEX, static_cast<uintptr_t>(at));
      *row = at;
      return true;
    }
  }
}

bool OrlIsHiddenExpression(EC ec, HEXP exp) {
  return (ORLIsExpressionSimple(ec, exp) != 0 || ORLIsExpressionSimpleInput(ec, exp) != 0) &&
         ORLIsExpNameGenerated(ec, exp) != 0;
}

void OrlSelectError(OrlWindow edit, const FormulaError &error) {
  // A span may lie behind the text, where the edit cuts it; beyond what numbers hold it is cut
  // here.
  const int64_t start = std::max(error.offset, 0);
  const int64_t end = std::min<int64_t>(start + std::max(error.length, 0), INT32_MAX);
  Select(edit, static_cast<int32_t>(start), static_cast<int32_t>(end));
}

void OrlInitDialog(OrlWindow dialog) {
  const EditorState &editor = CurrentEditor();
  constexpr int32_t kEveryType = INT16_MAX + 1;
  constexpr int32_t kKeywordTypes = 255;
  AddNames(ItemOf(dialog, kListItems), editor.ec->inputs, kEveryType);
  AddNames(ItemOf(dialog, kListItems), editor.ec->keywords, kKeywordTypes);
  AddNames(ItemOf(dialog, kListFunctions), editor.ec->functions, kEveryType);
  FillFormulas(ItemOf(dialog, kListFormulas));
  OrlLayoutOperators(dialog);
  HEXP exp = OrlCurrentExpression();
  if (exp != nullptr) {
    StartWithExpression(dialog, exp);
  } else if (CurrentEditor().repair != nullptr) {
    StartWithFailure(dialog);
  } else {
    StartWithNewText(dialog);
  }
  OrlEnableDelete(dialog);
  OrlSetTitle(dialog);
  if (EditorHasModes()) {
    EnableItem(dialog, kButtonValues, false);
  } else {
    ShowItem(dialog, kButtonValues, false);
  }
  ShowItem(dialog, kButtonApply, false);
  StartModes(dialog);
  OrlSetStatus(dialog);
}

void OrlOpenDialog(OrlWindow dialog) {
  EditorState &editor = CurrentEditor();
  LoadWords();
  LoadRowBitmaps();
  Intercept(dialog);
  OrlInitDialog(dialog);
  OrlEnableEditButtons(dialog);
  if (editor.record->textLimit != 0) {
    Send(ItemOf(dialog, kEditText), ORL_EM_LIMITTEXT, editor.record->textLimit);
  }
  Send(ItemOf(dialog, kEditName), ORL_EM_LIMITTEXT, kNameLimit);
  FocusItem(dialog, kEditText);
  editor.textViewWindow = nullptr;
  editor.valuesWindow = nullptr;
  if (CurrentEditor().repair != nullptr) {
    Windows()->SetTimer(dialog, kErrorTimer, kErrorDelay);
  }
  editor.valuesMore = 1;
  OpenValuesLater(dialog);
}
