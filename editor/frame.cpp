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
  EditorState &editor;
  int32_t id;
  int32_t notification;
};

void Accept(const Command &command) {
  HEXP saved = OrlSaveText(command.editor);
  const FormulaRepair *repair = command.editor.repair;
  if (saved != nullptr || (repair != nullptr && repair->deferred != nullptr)) {
    command.editor.record->result = saved;
    Windows()->EndDialog(command.editor.dialog, 0);
  }
}

void Cancel(const Command &command) {
  Windows()->EndDialog(command.editor.dialog, 0);
}

void EditChanged(const Command &command) {
  if (command.notification == ORL_EN_CHANGE) {
    OrlEnableOk(command.editor);
  }
}

void EditText(const Command &command) {
  const uint32_t message = command.id == kButtonCopy    ? ORL_WM_COPY
                           : command.id == kButtonCut   ? ORL_WM_CUT
                           : command.id == kButtonPaste ? ORL_WM_PASTE
                                                        : ORL_WM_CLEAR;
  Send(ItemOf(command.editor.dialog, kEditText), message);
  OrlEnableEditButtons(command.editor);
  FocusItem(command.editor.dialog, kEditText);
}

void Wrap(const Command &command) {
  OrlWrapSelection(command.editor);
  EnableItem(command.editor.dialog, kButtonWrap, false);
  OrlEnableEditButtons(command.editor);
}

void ListCommand(const Command &command) {
  if (command.notification == ORL_LBN_DBLCLK) {
    OrlInsertItem(command.editor, ItemOf(command.editor.dialog, command.id));
  } else if (command.notification == ORL_LBN_SELCHANGE && command.id == kListItems) {
    OrlSyncValuesButton(command.editor, kListingNew);
  } else if (command.notification == ORL_LBN_SELCHANGE && command.id == kListFormulas) {
    // By a key other than the arrows, or by a screen reader.
    OrlFollowRow(command.editor, command.editor.textViewWindow != nullptr);
  }
}

void InsertOperator(const Command &command) {
  const bool concat = command.editor.ec->concatAllowed != 0;
  const char *const texts[] = {" + ", " - ", " * ", " / ", concat ? " || " : " % "};
  const char *text = texts[command.id - kButtonPlus];
  OrlInsertText(command.editor, text, WRENStrLen(text));
}

void InsertDigit(const Command &command) {
  const char text = "0123456789."[command.id - kButtonDigit0];
  OrlInsertText(command.editor, &text, 1);
}

void Delete(const Command &command) {
  OrlDeleteSelected(command.editor);
}

void SelectRow(const Command &command) {
  OrlSelectFormula(command.editor);
}

void ShowText(const Command &command) {
  OrlOpenTextView(command.editor);
}

void ShowValues(const Command &command) {
  OrlOpenValues(command.editor);
  OrlCaptionValues(command.editor);
}

void ChangeMode(const Command &command) {
  OrlSetMode(command.editor, command.id, true);
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

intptr_t RunCommand(EditorState &editor, uintptr_t wParam) {
  const Command command = {editor, static_cast<int32_t>(wParam & 0xFFFF),
                           static_cast<int32_t>(wParam >> 16 & 0xFFFF)};
  const auto *row = std::find_if(std::begin(kCommands), std::end(kCommands), [&](const auto &at) {
    return command.id >= at.first && command.id <= at.last;
  });
  if (row != std::end(kCommands)) {
    row->action(command);
  }
  return command.id == kButtonOk || command.id == kButtonCancel ? 1 : 0;
}

void Begin(EditorState *editor, OrlWindow dialog, const void *record) {
  if (editor == nullptr || record != editor->record) {
    Windows()->EndDialog(dialog, 0);
  } else {
    editor->dialog = dialog;
    OrlOpenDialog(*editor);
  }
}

void Measure(const EditorState &editor, OrlMeasureItem *item) {
  const OrlTextMetrics &metrics = editor.metrics;
  if (item != nullptr && item->control == kListFormulas) {
    item->height = metrics.height + metrics.externalLeading;
  }
}

void ShowLoadError(EditorState &editor, uintptr_t timer) {
  const FormulaRepair *repair = editor.repair;
  if (timer == kErrorTimer) {
    Windows()->KillTimer(editor.dialog, timer);
    if (repair != nullptr) {
      OrlLoadErrorDisplay(editor.dialog, repair->text, &repair->error);
      OrlFollowContext(editor);
    }
  }
}

void DeleteRowBitmaps(EditorState &editor) {
  for (void *&bitmap : editor.rowBitmaps) {
    if (bitmap != nullptr) {
      Windows()->DeleteBitmap(bitmap);
    }
    bitmap = nullptr;
  }
}

}  // namespace

void OrlHelpRequest(EditorState &editor, OrlWindow control, OrlHelpProc callback) {
  constexpr intptr_t kEditorHelp = 400;
  constexpr intptr_t kEditorWithModesHelp = 401;
  if (callback == nullptr) {
    return;
  }
  OrlWindow functions = ItemOf(editor.dialog, kListFunctions);
  const OwnedText name = control != nullptr && control == functions
                             ? TextOfRow(functions, CurrentRow(functions))
                             : nullptr;
  const int32_t command = name != nullptr ? kHelpByKey : kHelpByNumber;
  const intptr_t data = name != nullptr          ? reinterpret_cast<intptr_t>(name.get())
                        : EditorHasModes(editor) ? kEditorWithModesHelp
                                                 : kEditorHelp;
  CallHost([=] { return callback(command, data); });
  OrlFollowContext(editor);
}

intptr_t OrlDlgProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  EditorState *const open = OpenEditor();
  if (message == ORL_WM_INITDIALOG && Windows() != nullptr) {
    Begin(open, window, reinterpret_cast<const void *>(lParam));
    return 0;
  }
  if (open == nullptr) {
    return 0;
  }
  EditorState &editor = *open;
  switch (message) {
    case ORL_WM_SETFONT:
      Windows()->GetTextMetrics(window, &editor.metrics);
      break;
    case ORL_WM_MEASUREITEM:
      Measure(editor, reinterpret_cast<OrlMeasureItem *>(lParam));
      break;
    case ORL_WM_COMMAND:
      return RunCommand(editor, wParam);
    case ORL_WM_DRAWITEM:
      OrlDrawFormulaRow(editor, reinterpret_cast<const OrlDrawItem *>(lParam));
      break;
    case ORL_WM_TIMER:
      ShowLoadError(editor, wParam);
      break;
    case kMessageSelectPlaceholder:
      OrlSelectPlaceholder(editor);
      break;
    case ORL_WM_HELP_REQUEST:
      OrlHelpRequest(editor, reinterpret_cast<OrlWindow>(wParam),
                     reinterpret_cast<OrlHelpProc>(lParam));
      break;
    case ORL_WM_DESTROY:
      DeleteRowBitmaps(editor);
      break;
    default:
      break;
  }
  return 0;
}
