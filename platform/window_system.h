// The window system in force.
#ifndef ORLI11_PLATFORM_WINDOW_SYSTEM_H
#define ORLI11_PLATFORM_WINDOW_SYSTEM_H

#include "orli11/windows.h"

// What ORLSetWindowSystem was given last, or null.
const OrlWindowSystem *Windows();

// The same for a routine that opens a modal dialog: where the host has handed in none, the
// library's own is loaded and is in force from then on. Null when there is none to be had. Asked
// ahead of DialogInUse.
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
