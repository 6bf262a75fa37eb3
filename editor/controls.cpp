// The procedures that receive the messages of the editor's controls first.
#include "editor/editor.h"
#include "editor/window_calls.h"

namespace {

// Passes an event to the control's own procedure.
intptr_t Own(const EditorState &editor, int32_t control, OrlWindow window, uint32_t message,
             uintptr_t wParam, intptr_t lParam) {
  return Windows()->CallWindowProc(editor.controlProcs[control], window, message, wParam, lParam);
}

// A list whose rows the space key inserts.
intptr_t ListEvent(EditorState *editor, int32_t control, OrlWindow window, uint32_t message,
                   uintptr_t wParam, intptr_t lParam) {
  if (editor == nullptr) {
    return 0;
  }
  const intptr_t result = Own(*editor, control, window, message, wParam, lParam);
  if (message == ORL_WM_CHAR && wParam == ' ') {
    OrlInsertItem(*editor, window);
  }
  return result;
}

}  // namespace

void OrlFollowRow(EditorState &editor, bool openTextView) {
  if (editor.repair == nullptr) {
    EnableItem(editor.dialog, kButtonSelect, true);
  }
  OrlEnableDelete(editor);
  if (openTextView) {
    OrlOpenTextView(editor);
  }
  if (editor.textViewWindow == nullptr) {
    OrlEnableShowText(editor);
  }
  if (EditorHasModes(editor)) {
    OrlCaptionByRow(editor);
  }
}

intptr_t EditSubProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  EditorState *const editor = OpenEditor();
  if (editor == nullptr) {
    return 0;
  }
  const intptr_t result = Own(*editor, kEditText, window, message, wParam, lParam);
  if (message == ORL_WM_KEYDOWN || message == ORL_WM_LBUTTONUP) {
    OrlEnableEditButtons(*editor);
  }
  return result;
}

intptr_t StatusSubProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  const EditorState *const editor = OpenEditor();
  if (editor == nullptr) {
    return 0;
  }
  switch (message) {
    case ORL_WM_SETFOCUS: {
      OrlWindow dialog = editor->dialog;
      OrlWindow before = reinterpret_cast<OrlWindow>(wParam);
      // A modeless dialog also has the editor as its parent, but is not one of its controls.
      const bool isSibling =
          before != nullptr && ItemOf(dialog, Windows()->GetDlgCtrlID(before)) == before;
      Windows()->SetFocus(isSibling ? before : ItemOf(dialog, kEditText));
      return 0;
    }
    case ORL_WM_SETCURSOR:
    case ORL_WM_KEYDOWN:
    case ORL_WM_CHAR:
    case ORL_WM_MOUSEMOVE:
    case ORL_WM_LBUTTONDOWN:
    case ORL_WM_LBUTTONUP:
    case ORL_WM_LBUTTONDBLCLK:
      return 0;
    default:
      return Own(*editor, kEditStatus, window, message, wParam, lParam);
  }
}

intptr_t LBFormsSubProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  EditorState *const open = OpenEditor();
  if (open == nullptr) {
    return 0;
  }
  EditorState &editor = *open;
  const intptr_t result = ListEvent(&editor, kListFormulas, window, message, wParam, lParam);
  switch (message) {
    case ORL_LB_SETCURSEL:
      if (EditorHasModes(editor)) {
        OrlCaptionByRow(editor);
      }
      break;
    case ORL_WM_KEYUP:
      if (wParam == ORL_VK_UP || wParam == ORL_VK_DOWN) {
        OrlFollowRow(editor, editor.textViewWindow != nullptr);
      }
      break;
    case ORL_WM_LBUTTONUP:
      OrlFollowRow(editor, editor.textViewWindow != nullptr);
      break;
    case ORL_WM_RBUTTONDBLCLK:
      // The right button does not select a row by itself: a click on the row under the mouse is
      // simulated.
      Own(editor, kListFormulas, window, ORL_WM_LBUTTONDOWN, wParam, lParam);
      Own(editor, kListFormulas, window, ORL_WM_LBUTTONUP, wParam, lParam);
      OrlFollowRow(editor, true);
      break;
    default:
      break;
  }
  return result;
}

intptr_t LBVarsSubProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  return ListEvent(OpenEditor(), kListItems, window, message, wParam, lParam);
}

intptr_t LBFuncsSubProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  return ListEvent(OpenEditor(), kListFunctions, window, message, wParam, lParam);
}
