// Opening the editor: its state, its lists, and the initial text.
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

constexpr uint32_t kErrorDelay = 1000;  // milliseconds

struct Interception {
  int32_t control;
  OrlWindowProc proc;
};
constexpr Interception kInterceptions[] = {
    {kEditText, EditSubProc},    {kEditStatus, StatusSubProc},     {kListFormulas, LBFormsSubProc},
    {kListItems, LBVarsSubProc}, {kListFunctions, LBFuncsSubProc},
};

void LoadWords(EditorState &editor) {
  editor.expressionWord[0] = '\0';
  LoadStringA(moduleHandle, kStringExpressionWord, editor.expressionWord, kLabelSize);
  std::snprintf(editor.expressionTail, sizeof editor.expressionTail, "[,%s...]",
                editor.expressionWord);
  std::snprintf(editor.anyTail, sizeof editor.anyTail, "[,%s...]",
                moduleTexts.typeLabels[kLabelAny]);
}

void LoadRowBitmaps(EditorState &editor) {
  const char *const names[kModeCount] = {kBitmapFormulaRow, kBitmapRangeRow, kBitmapSetRow};
  editor.bitmapWidth = 0;
  editor.bitmapHeight = 0;
  for (int32_t mode = 0; mode < kModeCount; ++mode) {
    const OrlBitmap *bitmap = EditorHasModes(editor) ? FindBitmap(names[mode]) : nullptr;
    editor.rowBitmaps[mode] = bitmap == nullptr ? nullptr : Windows()->LoadBitmap(bitmap);
    if (mode == kModeFormula && editor.rowBitmaps[mode] != nullptr) {
      editor.bitmapWidth = bitmap->width;
      editor.bitmapHeight = bitmap->height;
    }
  }
}

void Intercept(EditorState &editor) {
  for (const Interception &row : kInterceptions) {
    editor.controlProcs[row.control] =
        Windows()->SetWindowProc(ItemOf(editor.dialog, row.control), row.proc);
  }
}

// Opens the values dialog for the item that the host has named, once the editor is open.
void OpenValuesLater(const EditorState &editor) {
  const char *item = editor.valuesItem;
  int32_t row = -1;
  if (item[0] != '\0' && editor.repair == nullptr &&
      OrlFindExact(ItemOf(editor.dialog, kListItems), item, &row)) {
    EnableItem(editor.dialog, kButtonValues, true);
    Windows()->PostMessage(editor.dialog, ORL_WM_COMMAND, kButtonValues, 0);
  }
}

// Adds the names of a table whose data type, as a signed number, is below `typeLimit`.
void AddNames(OrlWindow list, const ItemTable &table, int32_t typeLimit) {
  for (uint32_t i = 0; i < HandleArrayRows(table.rows); ++i) {
    const auto *item = static_cast<const ExprItem *>(HandleArrayPointerAt(table.rows, i));
    if (item != nullptr && item->dataType < typeLimit) {
      SendText(list, ORL_LB_ADDSTRING, 0, item->name);
    }
  }
  WRENListBoxRefit(list);
}

void FillFormulas(const EditorState &editor, OrlWindow list) {
  InsertRow(list, -1, LoadText(kModeTexts[editor.editorMode].newRow).text, -1);
  WRENListBoxRefit(list);
  const bool all = (editor.ec->flags & ORL_FLAG_LIST_ALL) != 0;
  for (int32_t ordinal = 0; ordinal < ORLGetExpressionCount(editor.ec); ++ordinal) {
    HEXP exp = ORLHEXPFromOrdinal(editor.ec, ordinal);
    if (exp != nullptr && (all || !OrlIsHiddenExpression(editor.ec, exp))) {
      InsertRow(list, -1, exp->entry.name, ordinal);
    }
  }
  WRENListBoxRefit(list);
}

void StartWithExpression(const EditorState &editor, HEXP exp) {
  EC ec = editor.ec;
  SetItemText(editor.dialog, kEditText, exp->text);
  if (exp->entry.name[0] != '\0') {
    SetItemText(editor.dialog, kEditName, exp->entry.name);
    if (ORLIsNamedFormulaUsed(ec, exp->entry.name) != 0) {
      EnableItem(editor.dialog, kEditName, false);
      EnableItem(editor.dialog, kLabelName, false);
    }
  }
  OrlWindow list = ItemOf(editor.dialog, kListFormulas);
  const int32_t row = RowOfOrdinal(list, ORLGetExpressionOrdinal(ec, exp));
  if (row >= 0) {
    SetCurrentRow(list, row);
    Windows()->PostMessage(list, ORL_LB_SETTOPINDEX, static_cast<uintptr_t>(row), 0);
  }
  EnableItem(editor.dialog, kButtonShowText, true);
}

void StartWithFailure(const EditorState &editor) {
  const FormulaRepair &repair = *editor.repair;
  SetItemText(editor.dialog, kEditName, repair.name);
  SetItemText(editor.dialog, kEditText, repair.text);
  OrlWindow edit = ItemOf(editor.dialog, kEditText);
  OrlSelectError(edit, repair.error);
  SetModified(edit, true);
  EnableItem(editor.dialog, kEditName, false);
  EnableItem(editor.dialog, kButtonSelect, false);
  FocusItem(editor.dialog, kEditText);
  EnableItem(editor.dialog, kButtonShowText, false);
}

void StartWithNewText(const EditorState &editor) {
  char name[kGeneratedNameSize];
  GeneratedName(editor.ec, static_cast<ExpressionClass>(editor.editorMode), name);
  SetItemText(editor.dialog, kEditName, name);
  SetCurrentRow(ItemOf(editor.dialog, kListFormulas), 0);
  EnableItem(editor.dialog, kButtonShowText, false);
}

void StartModes(EditorState &editor) {
  if (!EditorHasModes(editor)) {
    for (const int32_t id : {kLabelMode, kOptionFormula, kOptionRange, kOptionSet}) {
      ShowItem(editor.dialog, id, false);
    }
    return;
  }
  OrlLayoutFormulas(editor);
  Windows()->CheckRadioButton(editor.dialog, kOptionFormula, kOptionSet,
                              kModeTexts[editor.editorMode].optionButton);
  if (OrlCurrentExpression(editor) == nullptr) {
    SetCurrentRow(ItemOf(editor.dialog, kListFormulas), 0);
    OrlSeedText(editor);
  }
}

}  // namespace

bool OrlFindExact(OrlWindow list, const char *name, int32_t *row) {
  int32_t at = -1;
  for (;;) {
    const auto found = static_cast<int32_t>(
        SendText(list, ORL_LB_FINDSTRING, static_cast<uintptr_t>(static_cast<intptr_t>(at)), name));
    if (found <= at) {
      return false;  // none, or the search has wrapped around
    }
    at = found;
    const OwnedText text = TextOfRow(list, at);
    if (text != nullptr && SameText(text.get(), name)) {
      SetCurrentRow(list, at);
      Send(list, ORL_LB_SETTOPINDEX, static_cast<uintptr_t>(at));
      *row = at;
      return true;
    }
  }
}

void OrlInitDialog(EditorState &editor) {
  constexpr int32_t kEveryType = INT16_MAX + 1;
  constexpr int32_t kKeywordTypes = 255;
  AddNames(ItemOf(editor.dialog, kListItems), editor.ec->inputs, kEveryType);
  AddNames(ItemOf(editor.dialog, kListItems), editor.ec->keywords, kKeywordTypes);
  AddNames(ItemOf(editor.dialog, kListFunctions), editor.ec->functions, kEveryType);
  FillFormulas(editor, ItemOf(editor.dialog, kListFormulas));
  OrlLayoutOperators(editor);
  HEXP exp = OrlCurrentExpression(editor);
  if (exp != nullptr) {
    StartWithExpression(editor, exp);
  } else if (editor.repair != nullptr) {
    StartWithFailure(editor);
  } else {
    StartWithNewText(editor);
  }
  OrlEnableDelete(editor);
  OrlSetTitle(editor);
  if (EditorHasModes(editor)) {
    EnableItem(editor.dialog, kButtonValues, false);
  } else {
    ShowItem(editor.dialog, kButtonValues, false);
  }
  ShowItem(editor.dialog, kButtonApply, false);
  StartModes(editor);
  OrlSetStatus(editor);
}

void OrlOpenDialog(EditorState &editor) {
  LoadWords(editor);
  LoadRowBitmaps(editor);
  Intercept(editor);
  OrlInitDialog(editor);
  OrlEnableEditButtons(editor);
  if (editor.record->textLimit != 0) {
    Send(ItemOf(editor.dialog, kEditText), ORL_EM_LIMITTEXT, editor.record->textLimit);
  }
  Send(ItemOf(editor.dialog, kEditName), ORL_EM_LIMITTEXT, kItemNameSize - 1);
  FocusItem(editor.dialog, kEditText);
  editor.textViewWindow = nullptr;
  editor.valuesWindow = nullptr;
  if (editor.repair != nullptr) {
    Windows()->SetTimer(editor.dialog, kErrorTimer, kErrorDelay);
  }
  editor.valuesMore = 1;
  OrlOfferTextAid(editor);
  OpenValuesLater(editor);
}
