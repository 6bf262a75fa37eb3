// The state of the window system on Qt widgets, and what its files call in each other.
//
// A window is a handle, a number that never comes twice; FindDialog and FindControl tell what
// stands behind it, null when it has gone. A dialog that has gone is found by no handle; its record
// and its widgets stay as long as one of its procedures is still running (Hold). Rows may go at
// every event.
//
// Texts are bytes in the active code page at the interface and QStrings in widgets; text_map.h
// tells how one becomes the other and back.
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

class QEventLoop;
class QKeyEvent;
class QMouseEvent;
class QScrollArea;

namespace qt_windows {

struct Dialog;
class Preview;

// A control. Each kind derives a record of its own, which knows its widget; the widget belongs to
// the dialog's widget.
struct Control {
  Dialog *dialog = nullptr;
  OrlWindow window = nullptr;
  OrlWindowProc proc = nullptr;  // put ahead, or null
  int32_t id = 0;
  OrlControlKind kind = ORL_CONTROL_LABEL;
  uint32_t style = 0;
  QWidget *widget = nullptr;
  QRect base;  // its place in the client area as large as the template says

  Control() = default;
  Control(const Control &) = delete;
  Control &operator=(const Control &) = delete;
  virtual ~Control() = default;

  virtual QByteArray Text() const = 0;
  // By the program. A null text is the empty one.
  virtual void SetText(const char *text) = 0;
  // What the control's own procedure does with a message that comes from the program, or with an
  // event that a procedure has made up. Events of the user's come by Deliver.
  virtual intptr_t OwnMessage(uint32_t message, uintptr_t wParam, intptr_t lParam) = 0;
  // Puts the widget there. A list cuts itself to whole rows.
  virtual void Place(const QRect &rect) { widget->setGeometry(rect); }
  // The height of a row; for the dialog's answer to WM_MEASUREITEM.
  virtual void SetRowHeight(int32_t /*pixels*/) {}
  // Takes what it shows for what is saved, from which nothing is undone.
  virtual void TakeAsSaved() {}
  // Whether the user has changed it since.
  virtual bool IsUnsaved() const { return false; }
  // Helps its user to write from now on; false where nothing can be written.
  virtual bool TakeTextAid(const OrlTextAid * /*aid*/) { return false; }
  // The user has come back to it to write on: the next placeholder is selected unless something is.
  virtual void GoOn() {}
  // Of an edit with a text aid: the function at its caret, what it gives beside it, and help.
  virtual QByteArray FunctionAtCaret() const { return {}; }
  virtual Preview *PreviewHere() const { return nullptr; }
  virtual const char *HelpPath(int32_t *context) const {
    *context = 0;
    return "";
  }
  // Of a list whose rows a text aid knows.
  virtual void TakeRowAid(const OrlTextAid * /*aid*/) {}
};

struct Dialog {
  const OrlDialogTemplate *model = nullptr;
  OrlWindow window = nullptr, parent = nullptr;
  OrlWindowProc proc = nullptr;
  QWidget *widget = nullptr;    // owns this record
  QScrollArea *area = nullptr;  // fills it, and scrolls where the screen is too small
  QWidget *client = nullptr;    // in the area; the controls stand in it
  QByteArray title;
  int32_t holds = 0;
  bool modal = false;
  bool ended = false;  // its loop is to end
  bool going = false, gone = false;
  bool shown = false;  // or to be shown as soon as it has been told of its making
  bool paintPosted = false;
  QEventLoop *loop = nullptr;  // while it runs
  intptr_t result = 0;
  OrlWindow focus = nullptr;   // the control that had the focus last
  Control *writing = nullptr;  // the edit with a text aid, which the others work for
  OrlTextMetrics metrics = {};
  QSize given;                                     // of the window, by the program
  QSize baseSize;                                  // of the client area, as the template says
  double unitX = 0, unitY = 0;                     // pixels of a dialog unit
  std::vector<std::unique_ptr<Control>> controls;  // in tab order
};

// Keeps a dialog's record and widgets while its procedures run. What has gone meanwhile is deleted
// when the last hold ends, by the next round of the event loop.
struct Hold {
  Dialog *dialog;
  explicit Hold(Dialog *held) : dialog(held) { ++dialog->holds; }
  ~Hold();
  Hold(const Hold &) = delete;
  Hold &operator=(const Hold &) = delete;
};

// ---- Handles (handles.cpp)

struct Place {
  Dialog *dialog = nullptr;    // null for an unknown window
  Control *control = nullptr;  // null for a dialog
};
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

// Through the procedure of a window; 0 for one that has gone.
intptr_t Send(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam);
// True when the dialog has ended or the modal one that it stands beside: what still waits of its
// user, the clock and the post does not reach it.
bool HasEnded(const Dialog *dialog);
// After the present event, in order.
void Post(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam);
// WM_COMMAND of a control, or by the user of an id that may have none; the procedure's result.
void Notify(const Control *control, uint32_t notification);
intptr_t SendCommand(Dialog *dialog, int32_t id);
// The controls' own procedure, for all kinds.
intptr_t OwnProc(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam);

// Hands an event of the user's to the procedure of a control. When it gets through to the control's
// own procedure, `own` does what the widget does by itself; otherwise the widget does not see it.
// The control may have gone afterwards: false then.
bool Deliver(Control *control, uint32_t message, uintptr_t wParam, intptr_t lParam,
             const std::function<void()> &own);

// The events of widgets (messenger.h): what of them becomes messages. `own` is the widget's own
// handler of the event.
void KeyPressed(Control *control, QKeyEvent *event, const std::function<void()> &own);
void KeyReleased(Control *control, QKeyEvent *event, const std::function<void()> &own);
void MousePressed(Control *control, QMouseEvent *event, const std::function<void()> &own);
void MouseMoved(Control *control, QMouseEvent *event, const std::function<void()> &own);
void MouseReleased(Control *control, QMouseEvent *event, const std::function<void()> &own);
void MouseDoubleClicked(Control *control, QMouseEvent *event, const std::function<void()> &own);
void FocusCame(Control *control, const std::function<void()> &own);

// The Return key: the focused button, else the default button, else command 1, else it takes the
// row of a list as a double click does. Escape: command 2, and a side window that does not want it
// is asked to close. F6: the next window of those that stand together.
void PressReturn(Dialog *dialog);
void PressEscape(Dialog *dialog);
void GoToNextWindow(const Dialog *dialog);
// Presses a button as the user does; nothing when it is disabled.
void PressButton(Control *button);
// An arrow key in a group of option buttons: the neighbour gets the focus and is pressed.
void PressNeighbour(Control *option, bool back);

// ---- Dialogs (dialogs.cpp, layout.cpp)

// Whether one more modal dialog or box may open: not inside of too many others, and not while a row
// is drawn, as Qt could not go on with its painting afterwards. On the thread of the application.
bool CanNest();
// Null when it cannot be made.
Dialog *NewDialog(const OrlDialogTemplate *model, OrlWindow parent, OrlWindowProc proc, bool modal);
// Sends what a new dialog is sent, and shows it when it is to be shown by itself.
void OpenDialog(Dialog *dialog, intptr_t parameter);
void Destroy(Dialog *dialog);
intptr_t RunModal(Dialog *dialog);
void EndModal(Dialog *dialog, intptr_t result);
void ShowDialog(Dialog *dialog, bool shown);
// To a control, or with null to the one of the dialog that had it last.
void FocusIn(Dialog *dialog, Control *control);

// Puts a dialog beside the one that it belongs to: at its right, else at its left, else where the
// screen has room. Whether a new one would stand there without hiding anything.
void StandBeside(Dialog *dialog);
bool HasRoomBeside(const Dialog *dialog, const OrlDialogTemplate &other);

// A widget of the host's, or null: a handle that is none is never followed.
QWidget *HostWidget(OrlWindow window);
// Keeps a window above its parent, which does not own it: the parent may go first.
void StandAbove(QWidget *widget, OrlWindow parent);
void SetTimerOf(Dialog *dialog, uintptr_t timer, uint32_t milliseconds);
void KillTimerOf(Dialog *dialog, uintptr_t timer);

// A caption as it reads where '&' marks no mnemonic; "&&" is one.
QString WithoutMarks(const QString &caption);
// Names of controls for those who cannot see them, mnemonics and the order of the tab key
// (names.cpp).
void NameControls(Dialog *dialog);
// The labels that name no control tell what the dialog is about.
void DescribeDialog(Dialog *dialog);
// True when the user's focus can go there.
bool TakesFocus(const Control &control);

// No window is larger: each of its pixels takes memory.
constexpr int kLargestWindow = 10000;

// Measures the font and puts the controls where the template says, larger where a caption asks for
// it; lays them out anew in a client area of another size.
void MeasureDialog(Dialog *dialog);
void LayOut(Dialog *dialog);
// Makes the window higher where a text that cannot be scrolled has more lines than it has room for.
void FitHints(Dialog *dialog);
// Makes the window wider where its title needs it, up to twice its width.
void FitTitle(Dialog *dialog);
// Gives the client area a size, the window as much of it as the screen has room for.
void ResizeClient(Dialog *dialog, const QSize &size);
// Buttons that stand in a row or column get equal steps; lists that end beside each other end
// together (spacing.cpp).
void SpaceEvenly(Dialog *dialog);
void AlignLists(Dialog *dialog);
// Gives a dialog the size that its user has chosen in an earlier run; keeps the present one for the
// next run when the user has chosen it.
void RestoreSize(Dialog *dialog);
void KeepSize(Dialog *dialog);
// The program has moved a control.
void MoveControl(Control *control, const QRect &rect);

// ---- Controls: made as a child of the dialog's widget, record filled in but for `base`

Control *NewLines(const OrlControl &row, Dialog *dialog);   // lines_edit.cpp
Control *NewLine(const OrlControl &row, Dialog *dialog);    // line_edit.cpp
Control *NewList(const OrlControl &row, Dialog *dialog);    // list.cpp
Control *NewOption(const OrlControl &row, Dialog *dialog);  // option_button.cpp
Control *NewButton(const OrlControl &row, Dialog *dialog);  // labels.cpp
Control *NewLabel(const OrlControl &row, Dialog *dialog);
Control *NewGroup(const OrlControl &row, Dialog *dialog);

// Marks an option button, or takes its mark away.
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

// Those that wait for their user.
int32_t OpenBoxes();
int32_t ShowBox(OrlWindow parent, const char *text, const char *caption, uint32_t type);

// ---- The host beside the editor (editor_host.cpp)

const OrlEditorHost *SetEditorHost(const OrlEditorHost *host);
const OrlEditorHost *GetEditorHost();
// Asks the user of a modal dialog whether changed texts may be discarded, unless there are none or
// the host wants no question. The dialog may have gone afterwards: false then.
bool MayDiscard(Dialog *dialog);

// ---- Help while a text is written (text_help.cpp)

void SetTextAid(OrlWindow edit, const OrlTextAid *aid);
// Has the procedures of an edit look at its selection and the clipboard, as behind a key.
void TellSelection(Control *edit);
// Brings the user back to the text that the dialog is for, when it has one and they are not there.
void GoToText(Dialog *dialog);

// ---- Help (help.cpp, side_page.cpp)

// The user of a dialog wants help, at a control or, with null, at none.
void AskForHelp(Dialog *dialog, const Control *control);
void ShowPage(OrlWindow dialog, const char *title, const char *page);

// ---- The application (application.cpp)

// True when there is an application to show dialogs with on this thread: the host's, or one of our
// own, made now where a screen can be reached.
bool BeginApplication();
// Ends it when it is our own and no dialog is open any more.
void EndApplication();
// Whether there is one or could be; why not.
bool CanShow();
const char *CannotShow();

}  // namespace qt_windows

#endif
