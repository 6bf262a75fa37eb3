// The text view: the text of the formula that is selected in the list, beside the editor.
#include "editor/editor.h"
#include "editor/editor_text.h"
#include "editor/mode_texts.h"
#include "editor/read_only.h"
#include "editor/window_calls.h"
#include "resources/dialogs.h"

namespace {

void ShowExpression(const EditorState &editor, OrlWindow view, HEXP exp) {
  const EditorText title = LoadText(kModeTexts[KindOfExpression(exp)].viewTitle);
  const int32_t nameSize = ORLGetExpressionNameLength(editor.ec, exp) + 1;
  const int32_t textSize = ORLGetExpressionTextLength(editor.ec, exp) + 1;
  const OwnedText name = Allocate<char>(static_cast<uint32_t>(nameSize));
  const OwnedText text = Allocate<char>(static_cast<uint32_t>(textSize));
  if (name != nullptr && text != nullptr) {
    ORLGetExpressionName(editor.ec, exp, nameSize, name.get());
    ORLGetExpressionText(editor.ec, exp, textSize, text.get());
    SetJoinedTitle(view, title.text, name.get());
    SetItemText(view, kEditView, text.get());
  }
}

void ShowNothing(OrlWindow view, uintptr_t mode) {
  const bool known = mode < kModeCount;
  Windows()->SetWindowText(view, known ? LoadText(kModeTexts[mode].viewTitle).text : "");
  SetItemText(view, kEditView, "");
}

void CloseView(EditorState &editor, OrlWindow view) {
  editor.textViewWindow = nullptr;
  Windows()->DestroyWindow(view);
  OrlEnableShowText(editor);
}

// The view is destroyed without having been closed: with the editor, or by a host routine.
void ForgetView(EditorState &editor, OrlWindow view) {
  if (editor.textViewWindow == view) {
    editor.textViewWindow = nullptr;
    OrlEnableShowText(editor);
  }
}

}  // namespace

void OrlOpenTextView(EditorState &editor) {
  OrlWindow list = ItemOf(editor.dialog, kListFormulas);
  const int32_t row = CurrentRow(list);
  if (editor.textViewWindow == nullptr) {
    if (row == 0) {
      return;
    }
    editor.textViewWindow = Windows()->CreateDialogParam(FindDialog(kDialogTextView), editor.dialog,
                                                         OrlViewTextDlgProc, 0);
    if (editor.textViewWindow == nullptr) {
      return;
    }
    EnableItem(editor.dialog, kButtonShowText, false);
  }
  if (row > 0) {
    HEXP exp = ExpressionOfRow(editor, list, row);
    Send(editor.textViewWindow, kMessageShowExpression, 0, reinterpret_cast<intptr_t>(exp));
  } else {
    Send(editor.textViewWindow, kMessageShowExpression, static_cast<uintptr_t>(editor.editorMode));
  }
}

intptr_t OrlViewTextDlgProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  EditorState *const open = OpenEditor();
  if (open == nullptr) {
    return 0;
  }
  EditorState &editor = *open;
  switch (message) {
    case ORL_WM_INITDIALOG:
      editor.textViewEditProc =
          Windows()->SetWindowProc(ItemOf(window, kEditView), ViewEditSubProc);
      Windows()->ShowWindow(window, 1);
      return 1;
    case kMessageShowExpression:
      if (lParam != 0) {
        ShowExpression(editor, window, reinterpret_cast<HEXP>(lParam));
      } else {
        ShowNothing(window, wParam);
      }
      return 0;
    case ORL_WM_CLOSE:
      CloseView(editor, window);
      return 1;
    case ORL_WM_DESTROY:
      ForgetView(editor, window);
      return 0;
    default:
      return 0;
  }
}

intptr_t ViewEditSubProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  const EditorState *const editor = OpenEditor();
  if (editor == nullptr || IsKeptFromReadOnly(message, wParam)) {
    return 0;
  }
  return Windows()->CallWindowProc(editor->textViewEditProc, window, message, wParam, lParam);
}
