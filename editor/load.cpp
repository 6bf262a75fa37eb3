// Loading a context: a formula that does not parse any more is corrected in the editor.
#include "editor/editor.h"
#include "engine/context.h"
#include "persistence/block_reader.h"

namespace {

// The nearest window from `owner` upwards that can have a dialog over it, or the topmost one.
OrlWindow DialogParent(OrlWindow owner) {
  const OrlWindowSystem *windows = Windows();
  OrlWindow window = owner;
  while (windows != nullptr && window != nullptr &&
         (windows->IsWindowVisible(window) == 0 || windows->IsWindowEnabled(window) == 0)) {
    OrlWindow parent = windows->GetParent(window);
    if (parent == nullptr) {
      break;
    }
    window = parent;
  }
  return window;
}

HEXP RepairInEditor(EC ec, FormulaRepair &repair, void * /*data*/) {
  return OrlRunEditor(DialogParent(ec->owner), {ec, nullptr, nullptr, 0}, kModeFormula, "",
                      &repair);
}

void ShowError(EC ec, const char *text, const FormulaError &error, void * /*data*/) {
  ORLErrorDisplay(ec->owner, text, &error);
}

}  // namespace

int32_t ORLSetECContents(EC ec, int32_t size, const void *block, int32_t loadFormulas,
                         OrlErrorProc errorProc) {
  const LoadDialogs dialogs = {&RepairInEditor, &ShowError, nullptr};
  return ReadContext(ec, size, block, loadFormulas != 0, errorProc, dialogs) ? 1 : 0;
}
