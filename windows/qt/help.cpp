// The F1 key: the dialog's logic determines the help topic, and the host shows it.
#include <cstddef>
#include <cstring>

#include "windows/qt/state.h"

namespace qt_windows {

namespace {

constexpr int32_t kHelpByKey = 257;

// The control for which help was requested while the dialog handles the request; the innermost one.
struct Asked {
  Dialog *dialog;
  const Control *control;
  bool isAnswered;
};
Asked *asked = nullptr;

// The host's routine, if the host was compiled with one.
const OrlEditorHost *HostWithHelp() {
  const OrlEditorHost *host = GetEditorHost();
  const bool has = host != nullptr && host->size > offsetof(OrlEditorHost, Help);
  return has && host->Help != nullptr ? host : nullptr;
}

// The edit with the text aid, of the dialog or of the one that it belongs to.
const Control *WritingFor(const Dialog *dialog) {
  while (dialog != nullptr && dialog->writing == nullptr) {
    dialog = Find(dialog->parent).dialog;
  }
  return dialog == nullptr ? nullptr : dialog->writing;
}

// OrlHelpProc. The dialog's own topic, unless the caret is in the name or the call of a function.
int32_t Answer(int32_t command, intptr_t data) {
  const OrlEditorHost *host = HostWithHelp();
  if (asked == nullptr || host == nullptr) {
    return 0;
  }
  asked->isAnswered = true;
  const Control *writing = WritingFor(asked->dialog);
  const bool writes = writing != nullptr && asked->control == writing;
  const QByteArray function = writes ? writing->FunctionAtCaret() : QByteArray();
  const QByteArray message = asked->dialog->widget->accessibleDescription().toUtf8();
  OrlHelp help = {};
  help.size = sizeof help;
  help.dialog = asked->dialog->window;
  help.control = asked->control == nullptr ? 0 : asked->control->id;
  help.message = message.constData();
  help.path = "";
  if (!function.isEmpty()) {
    help.key = function.constData();
  } else if (command == kHelpByKey) {
    help.key = reinterpret_cast<const char *>(data);
  } else {
    help.number = static_cast<int32_t>(data);
  }
  if (writing != nullptr) {
    help.path = writing->HelpPath(&help.context);
  }
  host->Help(host->user, &help);
  return 1;
}

}  // namespace

void AskForHelp(Dialog *dialog, const Control *control) {
  if (HostWithHelp() == nullptr || HasEnded(dialog)) {
    return;
  }
  const Hold hold(dialog);
  Asked *outer = asked;
  Asked now = {dialog, control, false};
  asked = &now;
  Send(dialog->window, ORL_WM_HELP_REQUEST,
       reinterpret_cast<uintptr_t>(control == nullptr ? nullptr : control->window),
       reinterpret_cast<intptr_t>(&Answer));
  // A side window without help of its own.
  Dialog *parent = Find(dialog->parent).dialog;
  if (!now.isAnswered && parent != nullptr && !dialog->going) {
    Send(parent->window, ORL_WM_HELP_REQUEST, 0, reinterpret_cast<intptr_t>(&Answer));
  }
  asked = outer;
}

}  // namespace qt_windows
