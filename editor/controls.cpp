// The procedures that stand ahead of the editor's controls.
#include "editor/editor.h"
#include "editor/window_calls.h"

namespace {

// Hands an event to the control itself.
intptr_t Own(int32_t control, OrlWindow window, uint32_t message, uintptr_t wParam,
             intptr_t lParam) {
  return Windows()->CallWindowProc(CurrentEditor().controlProcs[control], window, message, wParam,
                                   lParam);
}

// A list whose rows the space key inserts.
intptr_t ListEvent(int32_t control, OrlWindow window, uint32_t message, uintptr_t wParam,
                   intptr_t lParam) {
  if (!EditorRuns()) {
    return 0;
  }
  const intptr_t result = Own(control, window, message, wParam, lParam);
  if (message == ORL_WM_CHAR && wParam == ' ') {
    OrlInsertItem(window);
  }
  return result;
}

}  // namespace

void OrlFollowRow(OrlWindow dialog, bool openTextView) {
  if (CurrentEditor().repair == nullptr) {
    EnableItem(dialog, kButtonSelect, true);
  }
  OrlEnableDelete(dialog);
  if (openTextView) {
    OrlOpenTextView(dialog);
  }
  if (CurrentEditor().textViewWindow == nullptr) {
    OrlEnableShowText(dialog);
  }
  if (EditorHasModes()) {
    OrlCaptionByRow(dialog);
  }
}

intptr_t EditSubProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  if (!EditorRuns()) {
    return 0;
  }
  const intptr_t result = Own(kEditText, window, message, wParam, lParam);
  if (message == ORL_WM_KEYDOWN || message == ORL_WM_LBUTTONUP) {
    OrlEnableEditButtons(Windows()->GetParent(window));
  }
  return result;
}

intptr_t StatusSubProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  if (!EditorRuns()) {
    return 0;
  }
  switch (message) {
    case ORL_WM_SETFOCUS: {
      OrlWindow dialog = Windows()->GetParent(window);
      OrlWindow before = reinterpret_cast<OrlWindow>(wParam);
      // A modeless dialog of the editor has it as its parent too, but is no control of it.
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
      return Own(kEditStatus, window, message, wParam, lParam);
  }
}

intptr_t LBFormsSubProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  if (!EditorRuns()) {
    return 0;
  }
  const intptr_t result = ListEvent(kListFormulas, window, message, wParam, lParam);
  OrlWindow dialog = Windows()->GetParent(window);
  switch (message) {
    case ORL_LB_SETCURSEL:
      if (EditorHasModes()) {
        OrlCaptionByRow(dialog);
      }
      break;
    case ORL_WM_KEYUP:
      if (wParam == ORL_VK_UP || wParam == ORL_VK_DOWN) {
        OrlFollowRow(dialog, CurrentEditor().textViewWindow != nullptr);
      }
      break;
    case ORL_WM_LBUTTONUP:
      OrlFollowRow(dialog, CurrentEditor().textViewWindow != nullptr);
      break;
    case ORL_WM_RBUTTONDBLCLK:
      // The right button selects nothing by itself: the row under the mouse is clicked for it.
      Own(kListFormulas, window, ORL_WM_LBUTTONDOWN, wParam, lParam);
      Own(kListFormulas, window, ORL_WM_LBUTTONUP, wParam, lParam);
      OrlFollowRow(dialog, true);
      break;
    default:
      break;
  }
  return result;
}

intptr_t LBVarsSubProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  return ListEvent(kListItems, window, message, wParam, lParam);
}

intptr_t LBFuncsSubProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  return ListEvent(kListFunctions, window, message, wParam, lParam);
}
