// The state of the window system on Qt widgets, and the routines that its files share.
//
// A window is a handle, a number that is never reused; FindDialog and FindControl look it up, and
// return null when it is destroyed. The record and the widgets of a destroyed dialog are kept as
// long as one of its procedures is still running (Hold). Rows may be removed at every event.
//
// Texts are bytes in the active code page at the interface and QStrings in widgets; text_map.h
// converts between the two.
#ifndef ORLI11_WINDOWS_QT_STATE_H
#define ORLI11_WINDOWS_QT_STATE_H

#include <QByteArray>
#include <QRect>
#include <QString>
#include <QWidget>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "orli11/windows.h"
#include "platform/window_operations.h"

class QEventLoop;
class QKeyEvent;
class QMouseEvent;
class QScrollArea;

namespace qt_windows {

struct Dialog;
class Preview;

// A control. Each kind derives a record of its own, which refers to its widget; the widget is owned
// by the dialog's widget.
struct Control {
  Dialog *dialog = nullptr;
  OrlWindow window = nullptr;
  OrlWindowProc proc = nullptr;  // called first, or null
  int32_t id = 0;
  OrlControlKind kind = ORL_CONTROL_LABEL;
  uint32_t style = 0;
  QWidget *widget = nullptr;
  QRect base;  // its rectangle in a client area of the template's size

  Control() = default;
  Control(const Control &) = delete;
  Control &operator=(const Control &) = delete;
  virtual ~Control() = default;

  virtual QByteArray Text() const = 0;
  // Set by the program. A null text is the empty one.
  virtual void SetText(const char *text) = 0;
  // Handles a message from the program, or an event sent by a procedure, as the control's own
  // procedure. User events arrive through Deliver.
  virtual intptr_t OwnMessage(uint32_t message, uintptr_t wParam, intptr_t lParam) = 0;
  // Moves the widget. A list reduces itself to whole rows.
  virtual void Place(const QRect &rect) { widget->setGeometry(rect); }
  // The height of a row, as the dialog returned it for WM_MEASUREITEM.
  virtual void SetRowHeight(int32_t /*pixels*/) {}
  // Marks the text as saved; undo does not go beyond it.
  virtual void MarkAsSaved() {}
  // Whether the user has changed it since.
  virtual bool IsUnsaved() const { return false; }
  // Starts to help the user with the text; false for a control without editable text.
  virtual bool TakeTextAid(const OrlTextAid * /*aid*/) { return false; }
  // The user returns to it: the next placeholder is selected unless something is selected.
  virtual void GoOn() {}
  // Of an edit with a text aid: the function at its caret, its preview, and help.
  virtual QByteArray FunctionAtCaret() const { return {}; }
  virtual Preview *PreviewHere() const { return nullptr; }
  virtual const char *HelpPath(int32_t *context) const {
    *context = 0;
    return "";
  }
  // Of a list whose rows a text aid describes.
  virtual void SetRowAid(const OrlTextAid * /*aid*/) {}
};

inline bool IsList(const Control &control) {
  return control.kind == ORL_CONTROL_LIST;
}

struct Dialog {
  const OrlDialogTemplate *model = nullptr;
  OrlWindow window = nullptr, parent = nullptr;
  OrlWindowProc proc = nullptr;
  QWidget *widget = nullptr;    // owns this record
  QScrollArea *area = nullptr;  // fills it, and scrolls if the screen is too small
  QWidget *client = nullptr;    // in the area; parent of the controls
  QByteArray title;
  int32_t holds = 0;
  bool modal = false;
  bool ended = false;  // its loop should end
  bool going = false, gone = false;
  bool shown = false;  // or will be shown once it has been notified of its creation
  bool paintPosted = false;
  QEventLoop *loop = nullptr;  // while it runs
  intptr_t result = 0;
  OrlWindow focus = nullptr;   // the control that had the focus last
  Control *writing = nullptr;  // the edit with a text aid, the main control
  OrlTextMetrics metrics = {};
  QSize given;                                     // of the window, by the program
  QSize baseSize;                                  // of the client area, as the template says
  double unitX = 0, unitY = 0;                     // pixels of a dialog unit
  std::vector<std::unique_ptr<Control>> controls;  // in tab order
};

// Lets the event loop delete the record and the widgets of a dialog.
void ReleaseDialog(Dialog *dialog);
using Hold = DialogHold<Dialog, ReleaseDialog>;

// ---- Handles (handles.cpp)

using Place = WindowPlace<Dialog, Control>;
Place Find(OrlWindow window);
Dialog *FindDialog(OrlWindow window);
Control *FindControl(OrlWindow window);
Control *ControlById(Dialog *dialog, int32_t id);
OrlWindow NewHandle(Dialog *dialog, Control *control);
void ForgetHandles(Dialog *dialog);
// All dialogs, the oldest first; the modal one on top, or null.
const std::vector<Dialog *> &Dialogs();
void LinkDialog(Dialog *dialog);
Dialog *TopModal();

// ---- Events (events.cpp)

// Sends to the procedure of a window; 0 for one that is destroyed.
intptr_t Send(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam);
// True when the dialog, or the modal one that it belongs to, has ended: pending user events, timers
// and posted messages do not reach it.
bool HasEnded(const Dialog *dialog);
// After the present event, in order.
void Post(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam);
// WM_COMMAND of a control, or of an id without a control; returns the procedure's result.
void Notify(const Control *control, uint32_t notification);
intptr_t SendCommand(Dialog *dialog, int32_t id);
// The controls' own procedure, for all kinds.
intptr_t OwnProc(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam);

// Passes a user event to the procedure of a control. When it reaches the control's own procedure,
// `own` runs the widget's own handling; otherwise the widget does not receive it. False when the
// control was destroyed meanwhile.
bool Deliver(Control *control, uint32_t message, uintptr_t wParam, intptr_t lParam,
             const std::function<void()> &own);

// The events of widgets (messenger.h): converted to messages. `own` is the widget's own handler of
// the event.
void KeyPressed(Control *control, QKeyEvent *event, const std::function<void()> &own);
void KeyReleased(Control *control, QKeyEvent *event, const std::function<void()> &own);
void MousePressed(Control *control, QMouseEvent *event, const std::function<void()> &own);
void MouseMoved(Control *control, QMouseEvent *event, const std::function<void()> &own);
void MouseReleased(Control *control, QMouseEvent *event, const std::function<void()> &own);
void MouseDoubleClicked(Control *control, QMouseEvent *event, const std::function<void()> &own);
void FocusCame(Control *control, const std::function<void()> &own);

// The Return key: the focused button, else the default button, else command 1, else it picks the
// row of a list as a double click does. Escape: command 2, and a side window that does not handle
// it is closed. F6: the next window of a dialog and its side windows.
void PressReturn(Dialog *dialog);
void PressEscape(Dialog *dialog);
void GoToNextWindow(const Dialog *dialog);
// Presses a button as the user does; no effect when it is disabled.
void PressButton(Control *button);
// An arrow key in a group of option buttons: the neighbour gets the focus and is pressed.
void PressNeighbour(Control *option, bool back);

// ---- Dialogs (dialogs.cpp, layout.cpp)

// Whether one more modal dialog or box may open: not inside too many others, and not while a row is
// drawn, as Qt could not continue painting afterwards. Call it on the application's thread.
bool CanNest();
// Null when it cannot be created.
Dialog *NewDialog(const OrlDialogTemplate *model, OrlWindow parent, OrlWindowProc proc, bool modal);
// Sends the messages for a new dialog, and shows it if its template says so.
void OpenDialog(Dialog *dialog, intptr_t parameter);
void Destroy(Dialog *dialog);
intptr_t RunModal(Dialog *dialog);
void EndModal(Dialog *dialog, intptr_t result);
void ShowDialog(Dialog *dialog, bool shown);
// To a control, or with null to the one of the dialog that had it last.
void FocusIn(Dialog *dialog, Control *control);

// Moves the upper left corner of a window's frame, also before the window is shown.
void MoveFrame(Dialog *dialog, const QPoint &corner);
// Places a dialog beside the one that it belongs to: to its right, else to its left, else where the
// screen has space. Whether a new one would fit there without hiding anything.
void PlaceBeside(Dialog *dialog);
bool HasRoomBeside(const Dialog *dialog, const OrlDialogTemplate &other);

// A widget of the host, or null: a handle that is not a widget is never dereferenced.
QWidget *HostWidget(OrlWindow window);
// Keeps a window above its parent, which does not own it: the parent may be deleted first.
void KeepAbove(QWidget *widget, OrlWindow parent);
void SetTimerOf(Dialog *dialog, uintptr_t timer, uint32_t milliseconds);
void KillTimerOf(Dialog *dialog, uintptr_t timer);

// A caption without mnemonic marks; "&&" is one "&".
QString WithoutMarks(const QString &caption);
// Names of controls for screen readers, mnemonics and the tab order (names.cpp).
void NameControls(Dialog *dialog);
// Labels that name no control are the dialog's description.
void DescribeDialog(Dialog *dialog);
// True when the user can move the focus there.
bool TakesFocus(const Control &control);

// The largest size of a window: each pixel takes memory.
constexpr int kLargestWindow = 10000;

// Measures the font and places the controls by the template, enlarged where a caption needs it;
// lays them out again in a client area of another size.
void MeasureDialog(Dialog *dialog);
void LayoutDialog(Dialog *dialog);
// Makes the window higher when a text that cannot be scrolled has more lines than fit.
void FitHints(Dialog *dialog);
// Makes the window wider when its title needs it, up to twice its width.
void FitTitle(Dialog *dialog);
// Sets the size of the client area; the window shows as much of it as fits the screen.
void ResizeClient(Dialog *dialog, const QSize &size);
// Buttons in a row or column get equal steps; lists that end close to each other are aligned
// (spacing.cpp).
void SpaceEvenly(Dialog *dialog);
void AlignLists(Dialog *dialog);
// Restores the size that the user has chosen for a dialog in an earlier run; saves the present one
// if the user has changed it.
void RestoreSize(Dialog *dialog);
void KeepSize(Dialog *dialog);
// The program has moved a control.
void MoveControl(Control *control, const QRect &rect);

// ---- Controls: created as a child of the dialog's widget, with a complete record except for
// `base`

Control *NewLines(const OrlControl &row, Dialog *dialog);   // lines_edit.cpp
Control *NewLine(const OrlControl &row, Dialog *dialog);    // line_edit.cpp
Control *NewList(const OrlControl &row, Dialog *dialog);    // list.cpp
Control *NewOption(const OrlControl &row, Dialog *dialog);  // option_button.cpp
Control *NewButton(const OrlControl &row, Dialog *dialog);  // labels.cpp
Control *NewLabel(const OrlControl &row, Dialog *dialog);
Control *NewGroup(const OrlControl &row, Dialog *dialog);

// Checks or unchecks an option button.
void MarkOption(Control *option, bool marked);

// ---- Drawing (pictures.cpp)

// While a dialog draws a row.
bool IsDrawing();
void *LoadBitmapFile(const OrlBitmap *bitmap);
void DeleteBitmapHandle(void *bitmap);
void DrawBitmapAt(void *surface, void *bitmap, int32_t x, int32_t y);
void DrawTextIn(void *surface, const char *text, const OrlRect *rect);
void InvertIn(void *surface, const OrlRect *rect);
void DrawFocusIn(void *surface, const OrlRect *rect);

// ---- Boxes (boxes.cpp)

// The number of open boxes.
int32_t OpenBoxes();
int32_t ShowBox(OrlWindow parent, const char *text, const char *caption, uint32_t type);

// ---- What the host adds to the editor (editor_host.cpp)

const OrlEditorHost *SetEditorHost(const OrlEditorHost *host);
const OrlEditorHost *GetEditorHost();
// Asks the user of a modal dialog whether changed texts may be discarded, unless there are none or
// the host has disabled the question. False also when the dialog was destroyed meanwhile.
bool MayDiscard(Dialog *dialog);

// ---- Help while a text is written (text_help.cpp)

void SetTextAid(OrlWindow edit, const OrlTextAid *aid);
// Lets the procedures of an edit check its selection and the clipboard, as after a key.
void ReportSelection(Control *edit);
// Moves the focus back to the main control of the dialog, if there is one.
void GoToText(Dialog *dialog);

// ---- Help (help.cpp, side_page.cpp)

// The user of a dialog requests help, for a control or, with null, for none.
void AskForHelp(Dialog *dialog, const Control *control);
void ShowPage(OrlWindow dialog, const char *title, const char *page);

// ---- The application (application.cpp)

// True when there is an application for dialogs on this thread: the host's, or our own, created now
// if a display is available.
bool BeginApplication();
// Deletes it when it is our own and no dialog is open any more.
void EndApplication();
// Whether there is one or could be; the reason if not.
bool CanShow();
const char *CannotShow();

}  // namespace qt_windows

#endif
