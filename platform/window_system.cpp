// The current window system.
#include "platform/window_system.h"

#include <atomic>
#include <cassert>
#include <cstddef>
#include <cstring>

namespace {

std::atomic<const OrlWindowSystem *> windowSystem{nullptr};
std::atomic<int32_t> openDialogs{0};

// The required entries end before this one.
constexpr size_t kRequired = offsetof(OrlWindowSystem, SetEditorHost);

// True when no required entry of the table is null. All entries are routines.
bool IsWhole(const OrlWindowSystem &table) {
  using Entry = void (*)();
  constexpr size_t kFirst = offsetof(OrlWindowSystem, DialogBoxParam);
  static_assert((sizeof(OrlWindowSystem) - kFirst) % sizeof(Entry) == 0);
  for (size_t at = kFirst; at < kRequired; at += sizeof(Entry)) {
    Entry entry = nullptr;
    std::memcpy(&entry, reinterpret_cast<const char *>(&table) + at, sizeof(entry));
    if (entry == nullptr) {
      return false;
    }
  }
  return true;
}

}  // namespace

int32_t ORLSetWindowSystem(const OrlWindowSystem *system) {
  if (openDialogs != 0) {
    return 0;
  }
  if (system != nullptr && (system->size < kRequired || !IsWhole(*system))) {
    return 0;
  }
  windowSystem = system;
  return 1;
}

const OrlWindowSystem *ORLGetWindowSystem(void) {
  return windowSystem;
}

const OrlWindowSystem *Windows() {
  return windowSystem;
}

DialogInUse::DialogInUse() {
  ++openDialogs;
}

DialogInUse::~DialogInUse() {
  assert(openDialogs > 0);
  --openDialogs;
}
