/* headless.h - a window system without a screen, and a simulated user.
 *
 * It keeps the whole state of dialogs and controls and follows the contract of orli11/windows.h,
 * but shows nothing: a script, a host routine, acts as the user and reads everything back.
 *
 *   static int32_t Script(void *user, OrlWindow window) {
 *     ORLHeadlessType(window, 100, "1 + 1");
 *     return ORLHeadlessClick(window, 1);
 *   }
 *   ORLHeadlessStart(Script, NULL);
 *   exp = ORLBuildExpression(NULL, ec, NULL, 0);
 *   ORLHeadlessEnd();
 *
 * Conventions
 * 1. A control is addressed by its dialog and its id, a dialog itself by ORL_HEADLESS_SELF for the
 *    id; where several controls share an id the first is meant. A window that is not there, or not
 *    of the kind that a routine is for, returns 0, or -1 where stated.
 * 2. Texts are bytes in the active code page, positions and lengths in them bytes. A routine that
 *    copies a text into `buffer` of `size` bytes cuts it to fit, terminates it and returns the
 *    length of the whole text; buffer may be null with a size of 0.
 * 3. Actions do what a user can do, by events through the procedures of the windows. 1 when it was
 *    done; 0 when no user could: the window has gone or is hidden or disabled, or does not belong
 *    to the modal dialog (or box) on top. An action returns when all it led to is over: posted
 *    events have been handled, and a dialog or box that it opened has been closed.
 * 4. One session at a time in the process, on one thread. Its blocks are those of WRENMemAlloc;
 *    without memory no dialog can be created and texts stay as they were.
 *
 * Measures
 * The screen has 1024 by 749 pixels. The font is 13 pixels high with an average width of 6, a
 * dialog unit 6/4 by 13/8 pixels, rounded. A dialog has a frame of 3 pixels and a caption of 19
 * above its client area, whose size is that of the template; its place counts from its parent's
 * client area, without a parent from the screen's corner. Controls have no frame. In an edit every
 * byte is a column, and a line is as long as it is written. The rows of a list are 13 pixels high
 * unless it is owner-drawn; its top row is at most the one that shows the last row at the bottom.
 *
 * Where the contract leaves it open
 * - Each dialog remembers which of its controls had the focus last. A dialog that opens takes the
 *   focus; what it had when it is destroyed returns to its parent. A control that is disabled or
 *   hidden loses it. Labels and frames never have it.
 * - The program may select any bytes. What the user then types, deletes or pastes takes whole
 *   characters, a line break being one. Pasting into an edit of one line ends at a line break, and
 *   what exceeds the limit is left out, with a beep.
 * - A list takes CB_ADDSTRING as it takes LB_ADDSTRING, as a combo box of the host's would.
 * - WM_DESTROY is sent to the dialog, then to the dialogs that belong to it, then to its controls.
 *   DestroyWindow ends a modal dialog with 0.
 * - A timer's shortest time is 10 milliseconds. It runs until it is killed.
 * - A bitmap loads when its file begins as a BMP file of its size does.
 * - Posted events are dropped when a hundred thousand have come without an action of the user's;
 *   no modal dialog opens over a hundred others.
 */
#ifndef ORLI11_WINDOWS_HEADLESS_HEADLESS_H
#define ORLI11_WINDOWS_HEADLESS_HEADLESS_H

#include "platform/windows.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Session --------------------------------------------------------------------------------- */

/* The script: called whenever a modal dialog or box waits for its user, after posted events have
 * been handled and changes drawn; `window` is that dialog or box, the one on top. Returns nonzero
 * to be called again, 0 when it has ended: from then on dialogs are cancelled (command 2, closed
 * with 0 when they stay open) and boxes answered by Cancel, else No, else OK.
 *
 * When an action opens a modal dialog or a box, the script is called for that one from inside the
 * action, which returns when it has been closed. */
typedef int32_t (*OrlHeadlessScript)(void *user, OrlWindow window);

/* Starts a session and sets the window system of the process (ORLSetWindowSystem). The state of an
 * earlier session is cleared. A null script does nothing. 0 while a dialog is open. */
ORL_API int32_t ORLHeadlessStart(OrlHeadlessScript script, void *user);
/* Ends the session: removes the window system, destroys the remaining dialogs and frees everything.
 * Does nothing while a modal dialog or box is open. */
ORL_API void ORLHeadlessEnd(void);
/* The table; always the same. */
ORL_API const OrlWindowSystem *ORLHeadlessSystem(void);

/* ---- Looking --------------------------------------------------------------------------------- */

/* The id that means the dialog or box itself. */
enum { ORL_HEADLESS_SELF = -1 };

/* The kind of a window that is not a control; controls have their OrlControlKind. */
enum { ORL_HEADLESS_DIALOG = 100, ORL_HEADLESS_BOX = 101 };

typedef struct {
  int32_t kind, id;
  uint32_t style;
  OrlWindow window, parent;
  int32_t modal;     /* dialog */
  int32_t enabled;   /* a dialog below a modal one is not */
  int32_t visible;   /* a control: with its dialog */
  int32_t focused;   /* a dialog: it or one of its controls */
  int32_t reachable; /* an action on it would be done */
  int32_t checked;   /* option */
  OrlRect rect;      /* a control in its dialog's client area, a dialog or box on the screen */
  int32_t textLength;
  /* Edit. The caret is at one end of the selection. limit 0: none. */
  int32_t selectionStart, selectionEnd, caret, limit, modified;
  /* List. Without a current row -1. */
  int32_t rowCount, currentRow, topRow;
} OrlHeadlessState;

/* The state of a control or dialog; 0 when it does not exist. */
ORL_API int32_t ORLHeadlessLook(OrlWindow dialog, int32_t id, OrlHeadlessState *state);
/* The control at `index` in tab order, labels without an id included; null after the last. */
ORL_API OrlWindow ORLHeadlessControlAt(OrlWindow dialog, int32_t index);
/* The text of an edit, the caption of another control, the title of a dialog or box. -1 when it
 * does not exist. */
ORL_API int32_t ORLHeadlessText(OrlWindow dialog, int32_t id, char *buffer, int32_t size);

/* A row of a list: its text, -1 when it is not there; its data. */
ORL_API int32_t ORLHeadlessRow(OrlWindow dialog, int32_t list, int32_t row, char *buffer,
                               int32_t size);
ORL_API intptr_t ORLHeadlessRowData(OrlWindow dialog, int32_t list, int32_t row);

/* The content of a row of an owner-drawn list, as the dialog has drawn it. The texts are those of
 * the last drawing, empty when there was none, and valid until the next call of any routine. */
typedef struct {
  const char *bitmap; /* its name */
  int32_t bitmapX, bitmapY;
  const char *text;
  OrlRect rowRect, textRect;
  int32_t inverted; /* has been inverted an odd number of times, last in invertedRect */
  OrlRect invertedRect;
  int32_t focusRect; /* likewise with the focus rectangle */
  int32_t drawings;  /* number of partial and complete drawings since the last complete one */
} OrlHeadlessRowShown;

/* Rows in view are drawn whole when the loop is idle, ORL_DRAW_SELECT and ORL_DRAW_FOCUS come when
 * the current row or the focus moves. A row out of view is drawn for this query. */
ORL_API int32_t ORLHeadlessRowShows(OrlWindow dialog, int32_t list, int32_t row,
                                    OrlHeadlessRowShown *shown);
/* Draws a row with a given action (ORL_DRAW_...) and state (ORL_STATE_...), on an empty background,
 * and returns the result. Row -1 is the empty list. */
ORL_API int32_t ORLHeadlessDrawRow(OrlWindow dialog, int32_t list, int32_t row, uint32_t action,
                                   uint32_t state, OrlHeadlessRowShown *shown);

/* The modal dialog or box on top, or null. */
ORL_API OrlWindow ORLHeadlessTop(void);
/* The dialog of this template that was opened last, or null. */
ORL_API OrlWindow ORLHeadlessFind(const char *name);
/* Fills in up to `capacity` open dialogs and boxes, the oldest first. The number of all. */
ORL_API int32_t ORLHeadlessOpen(OrlWindow *windows, int32_t capacity);
/* The name of the template of a dialog; -1 for a box. */
ORL_API int32_t ORLHeadlessName(OrlWindow dialog, char *buffer, int32_t size);

/* A question box of the session, the first one being 0. The texts are valid until the next
 * ORLHeadlessStart or ORLHeadlessEnd. */
typedef struct {
  const char *text, *caption;
  uint32_t type;
  OrlWindow window, parent;
  int32_t answer; /* 0 while it is open */
} OrlHeadlessBox;
ORL_API int32_t ORLHeadlessBoxCount(void);
ORL_API int32_t ORLHeadlessBoxAt(int32_t index, OrlHeadlessBox *box);

/* Beeps of the session. */
ORL_API int32_t ORLHeadlessBeepCount(void);
/* Bitmaps that are loaded at present. */
ORL_API int32_t ORLHeadlessBitmapCount(void);

/* ---- The user -------------------------------------------------------------------------------- */

/* Moves the focus to a control, as the tab key or a mnemonic do; nothing is pressed. The control
 * may pass the focus on. */
ORL_API int32_t ORLHeadlessFocus(OrlWindow dialog, int32_t id);

/* Types a text, having brought the focus to the control if it was elsewhere. Each character is a
 * WM_KEYDOWN, a WM_CHAR for each byte and a WM_KEYUP for the control that has the focus then. 13
 * and 10 are the Return key, 9 Tab, 8 Backspace, 27 Escape. Typing ends early, with 0, when no
 * control can receive it any more. The key of a letter (as a capital), a digit and the blank is its
 * number in ASCII, of all others 231. */
ORL_API int32_t ORLHeadlessType(OrlWindow dialog, int32_t id, const char *text);

/* Presses a key (ORL_VK_...) with keys held down. Keys do as on the platform:
 * - Tab and, with Shift, the way back: the next control that takes it, where an edit of one line
 *   selects all its text; Escape: command 2; neither is seen by controls.
 * - Return: the button that has the focus, else the default button, else command 1. Only an edit of
 *   several lines sees it; with Control it is a line break there (\n), without it the edit hands
 *   it on.
 * - In an edit the arrows, Home, End, Backspace and Delete go by whole characters, Home and End
 *   with Control to the ends of the text; with Shift the selection grows. The control characters
 *   3, 22 and 24 (typed, or Control with C, V, X) copy, paste and cut.
 * - In a list the arrows, Home and End; on a button Space; among option buttons of a group the
 *   arrows press the next one. */
enum { ORL_HEADLESS_SHIFT = 1, ORL_HEADLESS_CONTROL = 2 };
ORL_API int32_t ORLHeadlessKey(OrlWindow dialog, int32_t id, uint32_t key, uint32_t held);

/* Presses and releases the left button on a control: a button or option sends BN_CLICKED (an option
 * is marked by its dialog, with CheckRadioButton, and by nothing else), an edit moves its caret to
 * the end of its text, a list to the row at its middle. A label cannot be pressed. */
ORL_API int32_t ORLHeadlessClick(OrlWindow dialog, int32_t id);
/* The same twice, the second press being WM_LBUTTONDBLCLK. */
ORL_API int32_t ORLHeadlessDoubleClick(OrlWindow dialog, int32_t id);

/* Selects text in an edit with the mouse, from the byte `from` to the byte `to`, which is where the
 * caret is then; -1 is the end. A place inside a character is its beginning. */
ORL_API int32_t ORLHeadlessSelect(OrlWindow dialog, int32_t id, int32_t from, int32_t to);

/* Clicks a row of a list, having scrolled it into view; the same twice; twice with the right button
 * (only the last event, WM_RBUTTONDBLCLK, is sent). */
ORL_API int32_t ORLHeadlessClickRow(OrlWindow dialog, int32_t list, int32_t row);
ORL_API int32_t ORLHeadlessDoubleClickRow(OrlWindow dialog, int32_t list, int32_t row);
ORL_API int32_t ORLHeadlessRightDoubleClickRow(OrlWindow dialog, int32_t list, int32_t row);

/* Closes a dialog by its frame: command 2 for a modal one, WM_CLOSE for another. A box is answered
 * by Cancel, or OK where that is the only button; one that can only say Yes or No stays. */
ORL_API int32_t ORLHeadlessClose(OrlWindow dialog);
/* Presses a button of a box: ORL_IDYES, ORL_IDNO, ORL_ID_OK, ORL_ID_CANCEL. */
ORL_API int32_t ORLHeadlessAnswer(OrlWindow box, int32_t answer);

/* Lets time pass; timers come in the order of their times. The clock does not run otherwise. */
ORL_API int32_t ORLHeadlessWait(uint32_t milliseconds);

/* Asks for help on a control or, with ORL_HEADLESS_SELF, a dialog: ORL_WM_HELP_REQUEST. */
ORL_API int32_t ORLHeadlessHelp(OrlWindow dialog, int32_t id, OrlHelpProc callback);

/* Has a dialog redrawn, WM_PAINT and all rows. */
ORL_API int32_t ORLHeadlessRepaint(OrlWindow dialog);

/* The clipboard. Setting it plays another program; null takes the text away. Its text: -1 when
 * there is none. */
ORL_API int32_t ORLHeadlessSetClipboard(const char *text);
ORL_API int32_t ORLHeadlessClipboard(char *buffer, int32_t size);

#ifdef __cplusplus
}
#endif

#endif
