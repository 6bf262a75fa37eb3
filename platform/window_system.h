// The window system in force.
#ifndef ORLI11_PLATFORM_WINDOW_SYSTEM_H
#define ORLI11_PLATFORM_WINDOW_SYSTEM_H

#include "orli11/windows.h"

// What ORLSetWindowSystem was given last, or null.
const OrlWindowSystem *Windows();

// An optional operation of that system, or null. There must be one in force.
template <class Entry>
Entry Optional(Entry OrlWindowSystem::*operation) {
  const OrlWindowSystem *system = Windows();
  const auto *entry = reinterpret_cast<const char *>(&(system->*operation));
  const bool isThere =
      entry + sizeof(Entry) <= reinterpret_cast<const char *>(system) + system->size;
  return isThere ? system->*operation : nullptr;
}

// The same for a routine that opens a modal dialog: where the host has handed in none, the
// library's own is loaded and is in force from then on. Null when there is none to be had. Asked
// before DialogInUse.
const OrlWindowSystem *WindowsForDialog();

// As long as one of these lives, the window system in force stays: whoever runs a modal dialog
// keeps one meanwhile.
class DialogInUse {
 public:
  DialogInUse();
  ~DialogInUse();
  DialogInUse(const DialogInUse &) = delete;
  DialogInUse &operator=(const DialogInUse &) = delete;
};

#endif
