/* qt_windows.h - the window system on Qt widgets, libORLI11-qt.so.
 *
 * The engine loads it by itself when the first dialog opens, a display is there and the host has
 * handed in no other. A host that wants it earlier links it and hands it in:
 *
 *   ORLSetWindowSystem(ORLQtWindowSystem());
 *
 * It works on the QApplication of the host, on the thread of that. Where the process has none it
 * makes one for as long as dialogs are open. A parent window may be a QWidget of the host's, and a
 * combo box that ORLLoadComboBox fills a QComboBox; other pointers are parents that it does not
 * know.
 */
#ifndef ORLI11_QT_WINDOWS_H
#define ORLI11_QT_WINDOWS_H

#include "windows.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The table; always the same. Null where no dialog can be shown: no display can be reached, or the
 * process has an application that is not a QApplication or runs on another thread. */
ORL_API const OrlWindowSystem *ORLQtWindowSystem(void);
/* Why the table is null, in words; valid until the thread's next call. Empty when it is not. */
ORL_API const char *ORLQtWindowSystemProblem(void);

#ifdef __cplusplus
}
#endif

#endif
