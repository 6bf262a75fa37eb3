// The box that shows a text, its error span and the message.
#include <algorithm>
#include <cassert>

#include "editor/editor.h"
#include "editor/editor_text.h"
#include "editor/read_only.h"
#include "editor/window_calls.h"
#include "engine/host_call.h"
#include "resources/dialogs.h"

namespace {

constexpr char kHelpKey[] = "Error messages";

// What the box shows; one box at a time.
struct DisplayedError {
  const char *text;
  FormulaError error;
  bool firstPaint;  // it has not been painted yet
  OrlWindowProc ownEditProc;
};
thread_local DisplayedError displayed;

intptr_t Display(const char *dialog, OrlWindow parent, const char *text,
                 const FormulaError *error) {
  if (error == nullptr || WindowsForDialog() == nullptr) {
    return -1;
  }
  const DialogInUse inUse;
  displayed = {text != nullptr ? text : "", *error, false, nullptr};
  return CallHost(
      [=] { return Windows()->DialogBoxParam(FindDialog(dialog), parent, ORLErrorDlgProc, 0); });
}

void Open(OrlWindow box) {
  displayed.firstPaint = true;
  SetItemText(box, kErrorMessage, LoadText(static_cast<uint32_t>(displayed.error.id)).text);
  SetItemText(box, kErrorText, displayed.text);
  displayed.ownEditProc = Windows()->SetWindowProc(ItemOf(box, kErrorText), ORLErrorEditProc);
}

// Selected once the box is open: before that the focus would select the whole text.
void ShowPlace(OrlWindow box) {
  FocusItem(box, kErrorText);
  OrlSelectError(ItemOf(box, kErrorText), displayed.error);
}

void Help(OrlHelpProc callback) {
  if (callback != nullptr) {
    CallHost([=] { return callback(kHelpByKey, reinterpret_cast<intptr_t>(kHelpKey)); });
  }
}

}  // namespace

void OrlSelectError(OrlWindow edit, const FormulaError &error) {
  // A span may end after the text, where the edit clamps it; the sum is clamped here against
  // overflow.
  const int64_t start = std::max(error.offset, 0);
  const int64_t end = std::min<int64_t>(start + std::max(error.length, 0), INT32_MAX);
  Select(edit, static_cast<int32_t>(start), static_cast<int32_t>(end));
}

int32_t ORLErrorDisplay(void *parentWindow, const char *text, const FormulaError *error) {
  return static_cast<int32_t>(Display(kDialogError, parentWindow, text, error));
}

intptr_t OrlLoadErrorDisplay(OrlWindow parent, const char *text, const FormulaError *error) {
  assert(error != nullptr);
  if (Windows() != nullptr) {
    Windows()->MessageBeep(0);
  }
  return Display(kDialogLoadError, parent, text, error);
}

intptr_t ORLErrorDlgProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  if (Windows() == nullptr) {
    return 0;
  }
  const auto command = static_cast<int32_t>(wParam & 0xFFFF);
  switch (message) {
    case ORL_WM_INITDIALOG:
      Open(window);
      return 0;
    case ORL_WM_PAINT:
      if (displayed.firstPaint) {
        displayed.firstPaint = false;
        Windows()->PostMessage(window, kMessageErrorShown, 0, 0);
      }
      return 0;
    case kMessageErrorShown:
      ShowPlace(window);
      return 1;
    case ORL_WM_COMMAND:
      if (command == kErrorOk || command == ORL_ID_CANCEL) {
        Windows()->EndDialog(window, 1);
      }
      return 0;
    case ORL_WM_HELP_REQUEST:
      Help(reinterpret_cast<OrlHelpProc>(lParam));
      return 0;
    default:
      return 0;
  }
}

intptr_t ORLErrorEditProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  if (Windows() == nullptr || IsKeptFromReadOnly(message, wParam)) {
    return 0;
  }
  return Windows()->CallWindowProc(displayed.ownEditProc, window, message, wParam, lParam);
}
