#include "persistence/recovery.h"

#include <cstring>

#include "engine/context.h"
#include "platform/window_system.h"
#include "wreni11.h"

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

}  // namespace

RecoveryState &CurrentRecovery() {
  static thread_local RecoveryState state;
  return state;
}

PendingRow *AwaitedRow(const RecoveryState &recovery, const char *text, const FormulaError &error) {
  char word[256];
  const int64_t length = error.length;
  if (recovery.pending == nullptr || error.offset < 0 || length < 1 ||
      length > static_cast<int64_t>(sizeof word) || error.offset + length > WRENStrLen(text)) {
    return nullptr;
  }
  std::memcpy(word, text + error.offset, static_cast<size_t>(length));
  word[length - 1] = '\0';  // over the parenthesis
  WRENStrRTrim(word, word);
  return PendingRowOf(*recovery.pending, word);
}

HEXP RepairFormula(EC ec, const char *text, const FormulaError &error) {
  RecoveryState &recovery = CurrentRecovery();
  const RecoveryState outer = recovery;  // of an editor whose host loads another block meanwhile
  recovery.active = true;
  recovery.deferred = nullptr;
  recovery.text = text;
  recovery.name = text + std::strlen(text) + 1;
  recovery.error = error;
  HEXP repaired = ORLBuildExpression(DialogParent(ec->owner), ec, nullptr, 0);
  recovery.active = outer.active;
  recovery.text = outer.text;
  recovery.name = outer.name;
  recovery.error = outer.error;
  return repaired;
}
