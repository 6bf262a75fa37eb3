// The window system in force.
#ifndef ORLI11_PLATFORM_WINDOW_SYSTEM_H
#define ORLI11_PLATFORM_WINDOW_SYSTEM_H

#include "platform/windows.h"

// What ORLSetWindowSystem was given last, or null.
const OrlWindowSystem *Windows();

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
