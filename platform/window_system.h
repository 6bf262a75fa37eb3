// The current window system.
#ifndef ORLI11_PLATFORM_WINDOW_SYSTEM_H
#define ORLI11_PLATFORM_WINDOW_SYSTEM_H

#include <cassert>

#include "orli11/windows.h"

// The table last passed to ORLSetWindowSystem, or null.
const OrlWindowSystem *Windows();

// An optional operation of that system, or null. Requires a current window system.
template <class Entry>
Entry Optional(Entry OrlWindowSystem::*operation) {
  const OrlWindowSystem *system = Windows();
  assert(system != nullptr);
  const auto *entry = reinterpret_cast<const char *>(&(system->*operation));
  const bool isThere =
      entry + sizeof(Entry) <= reinterpret_cast<const char *>(system) + system->size;
  return isThere ? system->*operation : nullptr;
}

// The same for a routine that opens a modal dialog: when the host has set none, the library's own
// is loaded and becomes the current one. Null when none is available. Call it before constructing
// DialogInUse.
const OrlWindowSystem *WindowsForDialog();

// While one of these exists, the current window system cannot be replaced: whoever runs a modal
// dialog holds one.
class DialogInUse {
 public:
  DialogInUse();
  ~DialogInUse();
  DialogInUse(const DialogInUse &) = delete;
  DialogInUse &operator=(const DialogInUse &) = delete;
};

#endif
