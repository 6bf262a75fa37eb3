// The text view: the text of the formula that is selected in the list, beside the editor.
#include "editor/editor.h"
#include "editor/editor_text.h"
#include "editor/mode_texts.h"
#include "editor/read_only.h"
#include "editor/window_calls.h"
#include "resources/dialogs.h"

namespace {

// The view's edit and its own procedure; one view at a time.
thread_local OrlWindowProc ownEditProc;

void ShowExpression(OrlWindow view, HEXP exp) {
  EditorState &editor = CurrentEditor();
  const EditorText title = LoadText(kModeTexts[KindOfExpression(exp)].viewTitle);
  const int32_t nameSize = ORLGetExpressionNameLength(editor.ec, exp) + 1;
  const int32_t textSize = ORLGetExpressionTextLength(editor.ec, exp) + 1;
  char *name = static_cast<char *>(WRENMemAlloc(static_cast<uint32_t>(nameSize)));
  char *text = static_cast<char *>(WRENMemAlloc(static_cast<uint32_t>(textSize)));
  if (name != nullptr && text != nullptr) {
    ORLGetExpressionName(editor.ec, exp, nameSize, name);
    ORLGetExpressionText(editor.ec, exp, textSize, text);
    SetJoinedTitle(view, title.text, name);
    SetItemText(view, kEditView, text);
  }
  WRENMemFree(name);
  WRENMemFree(text);
}

void ShowNothing(OrlWindow view, uintptr_t mode) {
  const bool known = mode < kModeCount;
  Windows()->SetWindowText(view, known ? LoadText(kModeTexts[mode].viewTitle).text : "");
  SetItemText(view, kEditView, "");
}

void CloseView(OrlWindow view) {
  OrlWindow dialog = Windows()->GetParent(view);
  CurrentEditor().textViewWindow = nullptr;
  Windows()->DestroyWindow(view);
  if (dialog != nullptr) {
    OrlEnableShowText(dialog);
  }
}

// The view goes without having been closed: with the editor, or by a routine of the host.
void ForgetView(OrlWindow view) {
  if (CurrentEditor().textViewWindow == view) {
    CurrentEditor().textViewWindow = nullptr;
    OrlEnableShowText(Windows()->GetParent(view));
  }
}

}  // namespace

void OrlOpenTextView(OrlWindow dialog) {
  EditorState &editor = CurrentEditor();
  OrlWindow list = ItemOf(dialog, kListFormulas);
  const int32_t row = CurrentRow(list);
  if (editor.textViewWindow == nullptr) {
    if (row == 0) {
      return;
    }
    editor.textViewWindow =
        Windows()->CreateDialogParam(FindDialog(kDialogTextView), dialog, OrlViewTextDlgProc, 0);
    if (editor.textViewWindow == nullptr) {
      return;
    }
    EnableItem(dialog, kButtonShowText, false);
  }
  if (row > 0) {
    HEXP exp = ExpressionOfRow(list, row);
    Send(editor.textViewWindow, kMessageShowExpression, 0, reinterpret_cast<intptr_t>(exp));
  } else {
    Send(editor.textViewWindow, kMessageShowExpression, static_cast<uintptr_t>(editor.editorMode));
  }
}

intptr_t OrlViewTextDlgProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  if (!EditorRuns()) {
    return 0;
  }
  switch (message) {
    case ORL_WM_INITDIALOG:
      ownEditProc = Windows()->SetWindowProc(ItemOf(window, kEditView), ViewEditSubProc);
      Windows()->ShowWindow(window, 1);
      return 1;
    case kMessageShowExpression:
      if (lParam != 0) {
        ShowExpression(window, reinterpret_cast<HEXP>(lParam));
      } else {
        ShowNothing(window, wParam);
      }
      return 0;
    case ORL_WM_CLOSE:
      CloseView(window);
      return 1;
    case ORL_WM_DESTROY:
      ForgetView(window);
      return 0;
    default:
      return 0;
  }
}

intptr_t ViewEditSubProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  if (!EditorRuns() || IsKeptFromReadOnly(message, wParam)) {
    return 0;
  }
  return Windows()->CallWindowProc(ownEditProc, window, message, wParam, lParam);
}
