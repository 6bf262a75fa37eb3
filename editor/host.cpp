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

bool OrlHostTakes(OrlWindow dialog, const char *text, const char *name) {
  const OrlEditorHost *host = Host();
  HEXP exp = OrlCurrentExpression();
  return host == nullptr || host->MaySave == nullptr ||
         ClassifyText(CurrentEditor().ec, exp, text, name) < 0 ||
         CallHost([=] { return host->MaySave(host->user, dialog, exp, text, name); }) != 0;
}

void OrlTellHost(OrlWindow dialog) {
  const OrlEditorHost *host = Host();
  if (host != nullptr && host->Changed != nullptr) {
    CallHost([=] { host->Changed(host->user, dialog); });
  }
}
