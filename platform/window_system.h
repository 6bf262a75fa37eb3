// The window system in force.
#ifndef ORLI11_PLATFORM_WINDOW_SYSTEM_H
#define ORLI11_PLATFORM_WINDOW_SYSTEM_H

#include "platform/windows.h"

// What ORLSetWindowSystem was given last, or null.
const OrlWindowSystem *Windows();

#endif
