// The procedure of the editor dialog: its commands and other events.
#include <algorithm>
#include <iterator>

#include "editor/editor.h"
#include "editor/window_calls.h"
#include "engine/context.h"
#include "engine/host_call.h"
#include "persistence/repair.h"

namespace {

struct Command {
  OrlWindow dialog;
  int32_t id;
  int32_t notification;
};

OrlWindow TextEdit(OrlWindow dialog) {
  return ItemOf(dialog, kEditText);
}

void Accept(const Command &command) {
  HEXP saved = OrlSaveText(command.dialog);
  const FormulaRepair *repair = CurrentEditor().repair;
  if (saved != nullptr || (repair != nullptr && repair->deferred != nullptr)) {
    CurrentEditor().record->result = saved;
    Windows()->EndDialog(command.dialog, 0);
  }
}

void Cancel(const Command &command) {
  Windows()->EndDialog(command.dialog, 0);
}

void EditChanged(const Command &command) {
  if (command.notification == ORL_EN_CHANGE) {
    OrlEnableOk(command.dialog);
  }
}

void EditText(const Command &command) {
  const uint32_t message = command.id == kButtonCopy    ? ORL_WM_COPY
                           : command.id == kButtonCut   ? ORL_WM_CUT
                           : command.id == kButtonPaste ? ORL_WM_PASTE
                                                        : ORL_WM_CLEAR;
  Send(TextEdit(command.dialog), message);
  OrlEnableEditButtons(command.dialog);
  FocusItem(command.dialog, kEditText);
}

void Wrap(const Command &command) {
  OrlWrapSelection(TextEdit(command.dialog));
  EnableItem(command.dialog, kButtonWrap, false);
  OrlEnableEditButtons(command.dialog);
}

void ListCommand(const Command &command) {
  if (command.notification == ORL_LBN_DBLCLK) {
    OrlInsertItem(ItemOf(command.dialog, command.id));
  } else if (command.notification == ORL_LBN_SELCHANGE && command.id == kListItems) {
    OrlSyncValuesButton(command.dialog, 1);
  } else if (command.notification == ORL_LBN_SELCHANGE && command.id == kListFormulas) {
    // By a key that is none of the arrows, or by a screen reader.
    OrlFollowRow(command.dialog, CurrentEditor().textViewWindow != nullptr);
  }
}

void InsertOperator(const Command &command) {
  const bool concat = CurrentEditor().ec->concatAllowed != 0;
  const char *const texts[] = {" + ", " - ", " * ", " / ", concat ? " || " : " % "};
  const char *text = texts[command.id - kButtonPlus];
  OrlInsertText(TextEdit(command.dialog), text, WRENStrLen(text));
}

void InsertDigit(const Command &command) {
  const char text = "0123456789."[command.id - kButtonDigit0];
  OrlInsertText(TextEdit(command.dialog), &text, 1);
}

void Delete(const Command &command) {
  OrlDeleteSelected(command.dialog);
}

void SelectRow(const Command &command) {
  OrlSelectFormula(command.dialog);
}

void ShowText(const Command &command) {
  OrlOpenTextView(command.dialog);
}

void ShowValues(const Command &command) {
  OrlOpenValues(command.dialog);
  OrlCaptionValues(command.dialog);
}

void ChangeMode(const Command &command) {
  OrlSetMode(command.dialog, command.id, true);
}

struct CommandRow {
  int32_t first, last;  // ids
  void (*action)(const Command &command);
};

constexpr CommandRow kCommands[] = {
    {kButtonOk, kButtonOk, Accept},
    {kButtonCancel, kButtonCancel, Cancel},
    {kEditText, kEditName, EditChanged},
    {kButtonCopy, kButtonPaste, EditText},
    {kButtonWrap, kButtonWrap, Wrap},
    {kListItems, kListFunctions, ListCommand},
    {kButtonPlus, kButtonConcat, InsertOperator},
    {kListFormulas, kListFormulas, ListCommand},
    {kButtonDelete, kButtonDelete, Delete},
    {kButtonSelect, kButtonSelect, SelectRow},
    {kButtonShowText, kButtonShowText, ShowText},
    {kButtonDigit0, kButtonPoint, InsertDigit},
    {kButtonClear, kButtonClear, EditText},
    {kButtonValues, kButtonValues, ShowValues},
    {kOptionFormula, kOptionSet, ChangeMode},
};

intptr_t RunCommand(OrlWindow dialog, uintptr_t wParam) {
  const Command command = {dialog, static_cast<int32_t>(wParam & 0xFFFF),
                           static_cast<int32_t>(wParam >> 16 & 0xFFFF)};
  const auto *row = std::find_if(std::begin(kCommands), std::end(kCommands), [&](const auto &at) {
    return command.id >= at.first && command.id <= at.last;
  });
  if (row != std::end(kCommands)) {
    row->action(command);
  }
  return command.id == kButtonOk || command.id == kButtonCancel ? 1 : 0;
}

void Begin(OrlWindow dialog, const void *record) {
  if (record == nullptr || record != CurrentEditor().record) {
    Windows()->EndDialog(dialog, 0);
  } else {
    OrlOpenDialog(dialog);
  }
}

void Measure(OrlMeasureItem *item) {
  const OrlTextMetrics &metrics = CurrentEditor().metrics;
  if (item != nullptr && item->control == kListFormulas) {
    item->height = metrics.height + metrics.externalLeading;
  }
}

void ShowLoadError(OrlWindow dialog, uintptr_t timer) {
  const FormulaRepair *repair = CurrentEditor().repair;
  if (timer == kErrorTimer) {
    Windows()->KillTimer(dialog, timer);
    if (repair != nullptr) {
      OrlLoadErrorDisplay(dialog, repair->text, &repair->error);
      OrlFollowContext(dialog);
    }
  }
}

void DeleteRowBitmaps() {
  for (void *&bitmap : CurrentEditor().rowBitmaps) {
    if (bitmap != nullptr) {
      Windows()->DeleteBitmap(bitmap);
    }
    bitmap = nullptr;
  }
}

}  // namespace

void OrlHelpRequest(OrlWindow dialog, OrlWindow control, OrlHelpProc callback) {
  constexpr int32_t kHelpByNumber = 1;
  constexpr int32_t kHelpByKey = 257;
  constexpr intptr_t kEditorHelp = 400;
  constexpr intptr_t kEditorWithModesHelp = 401;
  if (callback == nullptr) {
    return;
  }
  OrlWindow functions = ItemOf(dialog, kListFunctions);
  char *name = control != nullptr && control == functions
                   ? TextOfRow(functions, CurrentRow(functions))
                   : nullptr;
  const int32_t command = name != nullptr ? kHelpByKey : kHelpByNumber;
  const intptr_t data = name != nullptr    ? reinterpret_cast<intptr_t>(name)
                        : EditorHasModes() ? kEditorWithModesHelp
                                           : kEditorHelp;
  CallHost([=] { return callback(command, data); });
  WRENMemFree(name);
  OrlFollowContext(dialog);
}

intptr_t OrlDlgProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  if (Windows() == nullptr || (CurrentEditor().record == nullptr && message != ORL_WM_INITDIALOG)) {
    return 0;
  }
  switch (message) {
    case ORL_WM_SETFONT:
      Windows()->GetTextMetrics(window, &CurrentEditor().metrics);
      break;
    case ORL_WM_MEASUREITEM:
      Measure(reinterpret_cast<OrlMeasureItem *>(lParam));
      break;
    case ORL_WM_INITDIALOG:
      Begin(window, reinterpret_cast<const void *>(lParam));
      break;
    case ORL_WM_COMMAND:
      return RunCommand(window, wParam);
    case ORL_WM_DRAWITEM:
      OrlDrawFormulaRow(reinterpret_cast<const OrlDrawItem *>(lParam));
      break;
    case ORL_WM_TIMER:
      ShowLoadError(window, wParam);
      break;
    case kMessageSelectPlaceholder:
      OrlSelectPlaceholder(window);
      break;
    case ORL_WM_HELP_REQUEST:
      OrlHelpRequest(window, reinterpret_cast<OrlWindow>(wParam),
                     reinterpret_cast<OrlHelpProc>(lParam));
      break;
    case ORL_WM_DESTROY:
      DeleteRowBitmaps();
      break;
    default:
      break;
  }
  return 0;
}
