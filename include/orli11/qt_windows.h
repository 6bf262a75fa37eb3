/* qt_windows.h - the window system on Qt widgets, libORLI11-qt.so.
 *
 * The engine loads it when the first dialog opens, if there is a display and the host has set no
 * other window system. A host that needs it earlier links it and sets it:
 *
 *   ORLSetWindowSystem(ORLQtWindowSystem());
 *
 * It uses the host's QApplication, on that application's thread. When the process has none it
 * creates one for as long as dialogs are open. A parent window may be a QWidget of the host, and a
 * combo box for ORLLoadComboBox a QComboBox; other pointers are treated as unknown parents.
 */
#ifndef ORLI11_QT_WINDOWS_H
#define ORLI11_QT_WINDOWS_H

#include "windows.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The table; always the same. Null when no dialog can be shown: no display is available, or the
 * process has an application that is not a QApplication or runs on another thread. */
ORL_API const OrlWindowSystem *ORLQtWindowSystem(void);
/* The reason why the table is null, as text; valid until the thread's next call. Empty when it is
 * not null. */
ORL_API const char *ORLQtWindowSystemProblem(void);

#ifdef __cplusplus
}
#endif

#endif
