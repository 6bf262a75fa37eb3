// What a host adds to the editor, where the window system knows of one.
#include "editor/editor.h"
#include "editor/window_calls.h"
#include "engine/host_call.h"
#include "language/parse.h"

namespace {

const OrlEditorHost *Host() {
  const auto getHost = Optional(&OrlWindowSystem::GetEditorHost);
  return getHost == nullptr ? nullptr : getHost();
}

}  // namespace

bool OrlHostTakes(EditorState &editor, const char *text, const char *name) {
  const OrlEditorHost *host = Host();
  OrlWindow dialog = editor.dialog;
  HEXP exp = OrlCurrentExpression(editor);
  return host == nullptr || host->MaySave == nullptr ||
         ClassifyText(editor.ec, exp, text, name) < 0 ||
         CallHost([=] { return host->MaySave(host->user, dialog, exp, text, name); }) != 0;
}

void OrlTellHost(const EditorState &editor) {
  const OrlEditorHost *host = Host();
  if (host != nullptr && host->Changed != nullptr) {
    CallHost([&] { host->Changed(host->user, editor.dialog); });
  }
}
