// What the host adds to the editor, and the question before the user's text is discarded.
#include <algorithm>

#include "windows/qt/state.h"

namespace qt_windows {

namespace {

const OrlEditorHost *presentHost = nullptr;

bool HasUnsaved(const Dialog *dialog) {
  return std::any_of(dialog->controls.begin(), dialog->controls.end(),
                     [](const auto &control) { return control->IsUnsaved(); });
}

}  // namespace

const OrlEditorHost *SetEditorHost(const OrlEditorHost *host) {
  const OrlEditorHost *before = presentHost;
  presentHost = host;
  return before;
}

const OrlEditorHost *GetEditorHost() {
  return presentHost;
}

bool MayDiscard(Dialog *dialog) {
  const bool isQuiet = presentHost != nullptr && (presentHost->flags & ORL_HOST_DISCARDS) != 0;
  if (isQuiet || !dialog->modal || HasEnded(dialog) || !HasUnsaved(dialog)) {
    return true;
  }
  const Hold hold(dialog);
  const int32_t answer =
      ShowBox(dialog->window, "The text has been changed. Discard the changes?",
              dialog->title.constData(), ORL_MB_YESNO | ORL_MB_ICONQUESTION | ORL_MB_DEFBUTTON2);
  return answer != ORL_IDNO && !dialog->going;
}

}  // namespace qt_windows
