// The state of the window system without a screen, and the routines that its files share.
//
// A window is a handle: the serial number of its dialog and the index of the control in it, never
// an address. Handles of a destroyed dialog find nothing; its record is kept as long as one of its
// procedures is still running (Hold), so that a caller that has found a window may use it until it
// returns, whatever the procedures do meanwhile. Rows may be removed at every event.
#ifndef ORLI11_WINDOWS_HEADLESS_STATE_H
#define ORLI11_WINDOWS_HEADLESS_STATE_H

#include <cstdint>

#include "platform/owned.h"
#include "platform/window_operations.h"
#include "windows/headless/headless.h"

namespace headless {

// A string in a block of its own; without a block it is empty.
struct Text {
  char *bytes;
  int32_t length, capacity;
};

// The drawing of a row.
struct RowPicture {
  char bitmap[64];
  int32_t bitmapX, bitmapY;
  Text text;
  OrlRect rowRect, textRect, invertedRect;
  bool inverted, focusRect;
  int32_t drawings;
};

struct Row {
  char *text;
  intptr_t data;
  RowPicture *picture;  // null while it has not been drawn
};

struct List {
  Row *rows;
  int32_t count, capacity, current, top, rowHeight;
  int32_t pictures;  // rows that have one
  bool dirty;        // rows in view may have none
};

struct Edit {
  int32_t anchor, caret;  // the ends of the selection
  int32_t limit;
  int32_t topLine, leftColumn;  // what is scrolled out of view
  int32_t typedCount;
  char typed[4];  // a character whose last byte has not arrived yet
  bool modified, dragging;
};

struct Dialog;

struct Control {
  Dialog *dialog;
  OrlWindow window;
  OrlWindowProc proc;  // called first, or null
  int32_t id;
  OrlControlKind kind;
  uint32_t style;
  Text text;
  OrlRect rect;  // in the client area
  bool enabled, visible, checked, pressed;
  Edit edit;
  List list;
};

struct Timer {
  Timer *next;
  uintptr_t id;
  uint32_t period;
  uint64_t due, order;
};

// A dialog or a question box.
struct Dialog {
  Dialog *older;
  OrlWindow window, parent;
  OrlWindowProc proc;  // null for a box
  uint64_t serial;
  int32_t holds;
  bool box, modal, visible, enabled, needsPaint;
  bool ended;  // its loop is to end
  bool going, gone;
  intptr_t result;
  Text name, title;
  OrlRect rect;   // on the screen, with the frame
  int32_t focus;  // the control that has, had or will have the focus; -1 for none
  Timer *timers;
  uint32_t boxType;
  Control *controls;
  int32_t controlCount;
};

struct Posted {
  Posted *next;
  OrlWindow window;
  uint32_t message;
  uintptr_t wParam;
  intptr_t lParam;
};

struct Bitmap {
  Bitmap *next;
  char name[64];
};

struct BoxRecord {
  char *text, *caption;
  uint32_t type;
  OrlWindow window, parent;
  int32_t answer;
};

struct Session {
  OrlHeadlessScript script;
  void *user;
  bool scriptOver;
  Dialog *newest;
  uint64_t serials, timerOrder, clock;
  Posted *firstPosted, *lastPosted;
  uint64_t eventsAtOnce;  // since the user's last action
  OrlWindow focus;        // a control, a dialog without one, or null
  uint32_t keysHeld;
  char *clipboard;      // null without text
  RowPicture *surface;  // the row that is being drawn
  RowPicture loose;     // drawn for DrawRow
  Bitmap *bitmaps;
  BoxRecord *boxes;
  int32_t boxCount, boxCapacity, beeps;
};

extern Session session;

// Frees the record of a dialog that is not linked.
void FreeDialog(Dialog *dialog);
using Hold = DialogHold<Dialog, FreeDialog>;

// The font of all dialogs, and the frame around a client area.
constexpr OrlTextMetrics kFont = {13, 0, 6};
constexpr int32_t kBorder = 3;
constexpr int32_t kCaption = 19;
constexpr int32_t kScreenWidth = 1024;
constexpr int32_t kScreenHeight = 749;

// ---- Blocks and texts (state.cpp)

const char *Bytes(const Text &text);
// False, with the text unchanged, when out of memory. A null text is the empty one.
bool SetText(Text *text, const char *bytes);
// Replaces the bytes from `from` to `to` by `count` bytes.
bool ReplaceBytes(Text *text, int32_t from, int32_t to, const char *bytes, int32_t count);
// Frees the bytes; the text is then the empty one.
void FreeText(Text *text);
// A copy in a block of its own, of the empty text for null; null when out of memory.
OwnedText CopyOfText(const char *text);
// Makes space for `needed` entries of an array; false when out of memory.
bool Reserve(void **entries, int32_t *capacity, int32_t needed, uint32_t entrySize);
// Copies what fits; returns the length of the whole text.
int32_t CopyOut(const char *text, char *buffer, int32_t size);

// ---- Windows (state.cpp)

using Place = WindowPlace<Dialog, Control>;
// The handle of a dialog (control 0) or of its control at `control` - 1.
OrlWindow HandleOf(uint64_t serial, uint64_t control);
// Lookups: null for an unknown or destroyed window.
Place Find(OrlWindow window);
Control *FindControl(OrlWindow window);
// A dialog, not one of its controls.
Dialog *FindDialog(OrlWindow window);
// The first control with that id, or null; also for a null dialog.
Control *ControlById(Dialog *dialog, int32_t id);
// The modal dialog or box on top, or null; their number.
Dialog *TopModal();
int32_t ModalCount();
// True when the user or the program can set the focus there: it belongs to the modal one on top.
bool IsInFront(const Dialog *dialog);
// True when the user can act on it: in front, visible and enabled.
bool IsUsable(const Dialog *dialog);
bool IsUsable(const Control *control);
int32_t Width(const OrlRect &rect);
int32_t Height(const OrlRect &rect);

// ---- Dialogs (dialogs.cpp)

// Create a dialog or question box, which is linked but not yet notified; null for an invalid
// template, too many dialogs, or when out of memory.
Dialog *NewDialog(const OrlDialogTemplate *model, OrlWindow parent, OrlWindowProc proc, bool modal);
Dialog *NewBox(OrlWindow parent, const char *caption, uint32_t type);
// Sends the messages for a new dialog.
void OpenDialog(Dialog *dialog, intptr_t parameter);
// Notifies it and removes it with everything that belongs to it.
void Destroy(Dialog *dialog);
// Moves the focus to a control, or with null to the dialog itself, if it can take it. A dialog that
// is hidden or not in front only remembers the control.
void SetFocusTo(Dialog *dialog, Control *control);
// To the control that had it last.
void FocusDialog(Dialog *dialog);
// Hidden, it returns the focus.
void LeaveDialog(Dialog *dialog);
// Removes the focus from the control if it has it.
void LoseFocus(Control *control);
bool HasFocus(const Control *control);
// The rectangle of a window on the screen, with its frame; and its client area, from 0, 0.
OrlRect ScreenRect(const Place &place);
OrlRect ClientRect(const Place &place);

// ---- Events (loop.cpp)

// Sends to the procedure of a window; 0 for one that is destroyed or has none.
intptr_t Send(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam);
// Queues a message, which is sent after the current event; lost when out of memory.
void Post(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam);
// WM_COMMAND of a control, or of an id that need not be a control's.
void Notify(const Control *control, uint32_t notification);
void SendCommand(Dialog *dialog, int32_t id);
// Runs the loop of a modal dialog or box until it has ended, with the script as its user; returns
// its result. When the script is over the dialog is cancelled.
intptr_t RunModal(Dialog *dialog);
// Ends the loop with that result. No effect on a modeless dialog or one that has ended.
void EndModal(Dialog *dialog, intptr_t result);
// Handles posted events until none is left, or the modal loop is to end.
void RunPosted();
// The same, and draws what has changed.
void Settle();
// Sends WM_TIMER for the timer that is due first, up to that time of the session's clock, and sets
// the clock to it; false when there is none.
bool SendNextTimer(uint64_t until);
// Set or replace, and remove, a timer; `period` in milliseconds.
void SetTimerOf(Dialog *dialog, uintptr_t id, uint32_t period);
void KillTimerOf(Dialog *dialog, uintptr_t id);
// Records a question box and runs it; returns the answer, 0 when out of memory.
int32_t ShowBox(OrlWindow parent, const char *text, const char *caption, uint32_t type);
// Whether a box of that type has the button; the answer that closing it gives.
bool BoxOffers(uint32_t type, int32_t answer);
int32_t CancelOfBox(uint32_t type);

// ---- Controls (controls.cpp, edits.cpp, lists.cpp, pictures.cpp)

// The default procedure of controls of every kind.
intptr_t OwnProc(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam);
// True when the focus may be set there, or the tab key stops there.
bool TakesFocus(const Control &control);
bool IsTabStop(const Control &control);
// What the user does: presses a button if it is enabled, the Return, Escape and Tab keys.
void PressButton(Control *button);
void PressDefault(Dialog *dialog);
void PressEscape(Dialog *dialog);
void MoveByTab(Dialog *dialog, bool back);
// An arrow key in a group of option buttons.
void PressNeighbour(Control *option, bool back);

// Messages of edits. The program sets a text: the selection is empty at its start.
intptr_t EditProc(Control *edit, uint32_t message, uintptr_t wParam, intptr_t lParam);
void SetEditText(Control *edit, const char *text);
void SelectAll(Control *edit);
// The start of the character at `position`; a line break is one.
int32_t CharacterAt(const Text &text, int32_t position);
// Scrolls so that the byte is in view; returns the mouse position there, as in lParam.
intptr_t PointOfByte(Control *edit, int32_t position);

// Messages of lists.
intptr_t ListProc(Control *list, uint32_t message, uintptr_t wParam, intptr_t lParam);
void FreeRows(List *list);
bool HasRow(const Control *list, int64_t row);
// Makes a row the top row as far as the rows reach; scrolls no more than is needed to show a row.
void ScrollTo(Control *list, int32_t row);
void ScrollIntoView(Control *list, int32_t row);
// A point in the row, as in lParam of mouse events.
intptr_t PointOfRow(const Control *list, int32_t row);

// Empty a drawing; remove the one of a row; remove all of a list, which is drawn again later.
void Wipe(RowPicture *picture);
void FreePicture(List *list, Row *row);
void ForgetPictures(Control *list);
// ORL_STATE_... of a row.
uint32_t StateOfRow(const Control *list, int32_t row);
// Draws on a picture: the row's own or any.
void Draw(Control *list, int32_t row, uint32_t action, uint32_t state, RowPicture *picture);
// Draws a part of a row that has been drawn: `action` is ORL_DRAW_...
void DrawPart(Control *list, int32_t row, uint32_t action);
void DrawWhole(Control *list, int32_t row);
void DrawRowsInView(Control *list);
void FreeBitmaps();

// The drawing operations of the table; `surface` is the drawing of a row.
void *LoadBitmapFile(const OrlBitmap *bitmap);
void DeleteBitmapHandle(void *bitmap);
void DrawBitmapAt(void *surface, void *bitmap, int32_t x, int32_t y);
void DrawTextIn(void *surface, const char *text, const OrlRect *rect);
void InvertIn(void *surface, const OrlRect *rect);
void DrawFocusIn(void *surface, const OrlRect *rect);

}  // namespace headless

#endif
