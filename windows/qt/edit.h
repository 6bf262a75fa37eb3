// What edits of one line and of several have in common: the messages, the limit, what the user may
// enter, and telling the dialog of changes. Their widgets differ, and stand behind the virtual
// routines.
//
// Whatever changes the text by the user's hand ends in Settle, which tells the dialog once.
#ifndef ORLI11_WINDOWS_QT_EDIT_H
#define ORLI11_WINDOWS_QT_EDIT_H

#include <QContextMenuEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>

#include "windows/qt/messenger.h"
#include "windows/qt/text_map.h"

namespace qt_windows {

constexpr uint32_t kKeyApps = 93;  // the context menu's

// A selection in units of UTF-16, the caret being at its second end.
struct Stretch {
  qsizetype anchor = 0, caret = 0;
};

struct Edit : Control {
  TextKind textKind = TextKind::OneLine;
  int32_t limit = 0;  // in bytes; 0: none
  bool modified = false;
  QString known;     // what the dialog has been told of, or has put there
  QString saved;     // what it held when it was last taken for saved
  int32_t busy = 0;  // inside of changes that are told as one
  QByteArray typed;  // the beginning of a character that WM_CHAR has brought

  // Of the widget's text as it stands there.
  virtual QString Shown() const = 0;
  virtual Stretch Selected() const = 0;
  // Within the text; brings the caret into view.
  virtual void Select(Stretch stretch) = 0;
  // By the program, with the caret at the beginning afterwards.
  virtual void PutShown(const QString &shown) = 0;
  // In place of the selection, as the user does.
  virtual void Insert(const QString &shown) = 0;
  // What the widget's class does with the press of a key or an event of the mouse.
  virtual void OwnEvent(QEvent *event) = 0;
  virtual void ForgetUndo() {}

  bool IsReadOnly() const { return (style & ORL_STYLE_READ_ONLY) != 0; }
  void Copy() const;
  void Cut();
  void Clear();
  void Paste(const QMimeData *data);
  // What a key types, or an input method, or another program hands over: as much as may be entered
  // of it, or nothing unless it is all.
  void Enter(const QString &entered, bool allOrNothing);
  // The part of a text that the limit and the code page let in; beeps when it is not the whole.
  QString Allowed(const QString &entered, bool *whole) const;
  // Tells the dialog when the text is not the one it knows.
  void Settle();

  QByteArray Text() const override { return BytesOfText(Shown(), textKind); }
  void SetText(const char *text) override;
  void TakeAsSaved() override;
  bool IsUnsaved() const override { return modified && !IsReadOnly() && Shown() != saved; }
  intptr_t OwnMessage(uint32_t message, uintptr_t wParam, intptr_t lParam) override;
};

// What is done while it lives is told as one change, at its end.
struct OneChange {
  Edit *edit;
  explicit OneChange(Edit *changed) : edit(changed) { ++edit->busy; }
  ~OneChange();
  OneChange(const OneChange &) = delete;
  OneChange &operator=(const OneChange &) = delete;
};

// The selected text for the clipboard: plain text for other programs, and the bytes.
QMimeData *CopyOf(QStringView shown, TextKind kind);
bool HoldsText(const QMimeData *data);

// True for a key whose text an edit enters.
bool Types(const QKeyEvent &event);
// Runs an input method's event, having let the limit and the code page have their say.
void TakeInputMethod(Edit *edit, QInputMethodEvent *event,
                     const std::function<void(QInputMethodEvent *)> &own);
// Shows the widget's standard menu with what is of use here: without inserting of control
// characters, and for an edit that only shows its text Copy alone. Takes the menu.
void ShowMenu(Edit *edit, QMenu *menu, const QPoint &place);

}  // namespace qt_windows

#endif
