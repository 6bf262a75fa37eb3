// What a host adds to the editor, where the window system supports it.
#include "editor/editor.h"
#include "editor/window_calls.h"
#include "engine/host_call.h"
#include "language/parse.h"

namespace {

const OrlEditorHost *Host() {
  const auto getHost = Optional(&OrlWindowSystem::GetEditorHost);
  return getHost == nullptr ? nullptr : getHost();
}

// The size of the record as the host was compiled with it.
template <class Routine>
Routine Has(const OrlEditorHost *host, Routine OrlEditorHost::*routine) {
  const auto *entry = reinterpret_cast<const char *>(&(host->*routine));
  const bool isThere = entry + sizeof(Routine) <= reinterpret_cast<const char *>(host) + host->size;
  return isThere ? host->*routine : nullptr;
}

}  // namespace

bool OrlHostAccepts(EditorState &editor, const char *text, const char *name) {
  const OrlEditorHost *host = Host();
  OrlWindow dialog = editor.dialog;
  HEXP exp = OrlCurrentExpression(editor);
  return host == nullptr || host->MaySave == nullptr ||
         ClassifyText(editor.ec, exp, text, name) < 0 ||
         CallHost([=] { return host->MaySave(host->user, dialog, exp, text, name); }) != 0;
}

void OrlNotifyHost(const EditorState &editor) {
  const OrlEditorHost *host = Host();
  if (host != nullptr && host->Changed != nullptr) {
    CallHost([&] { host->Changed(host->user, editor.dialog); });
  }
}

bool OrlHostDescribes(const char *function, char *buffer, int32_t size) {
  const OrlEditorHost *host = Host();
  const auto describe = host == nullptr ? nullptr : Has(host, &OrlEditorHost::DescribeFunction);
  return describe != nullptr &&
         CallHost([=] { return describe(host->user, function, buffer, size); }) != 0;
}

bool OrlHostShows(const char *function) {
  const OrlEditorHost *host = Host();
  const auto shows = host == nullptr ? nullptr : Has(host, &OrlEditorHost::ShowsFunction);
  return shows == nullptr || CallHost([=] { return shows(host->user, function); }) != 0;
}
