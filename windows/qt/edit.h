// The common part of edits of one line and of several: the messages, the limit, what the user may
// enter, and the notification of changes. Their widgets differ and are accessed by virtual
// functions.
//
// Every change of the text by the user ends in Settle, which notifies the dialog once.
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
struct Selection {
  qsizetype anchor = 0, caret = 0;
};

struct Edit : Control {
  TextKind textKind = TextKind::OneLine;
  int32_t limit = 0;  // in bytes; 0: none
  bool modified = false;
  QString known;     // the text last reported to the dialog, or set by it
  QString saved;     // the text when it was last marked as saved
  int32_t busy = 0;  // inside changes that are reported as one
  QByteArray typed;  // the first bytes of a character, received by WM_CHAR

  // Of the text in the widget.
  virtual QString Shown() const = 0;
  virtual Selection Selected() const = 0;
  // Clamped to the text; brings the caret into view.
  virtual void Select(Selection selection) = 0;
  // By the program; the caret is then at the start.
  virtual void PutShown(const QString &shown) = 0;
  // Replaces the selection, as the user does.
  virtual void Insert(const QString &shown) = 0;
  // The widget's own handling of a key press or mouse event.
  virtual void OwnEvent(QEvent *event) = 0;
  virtual void ForgetUndo() {}

  bool IsReadOnly() const { return (style & ORL_STYLE_READ_ONLY) != 0; }
  void Copy() const;
  void Cut();
  void Clear();
  void Paste(const QMimeData *data);
  // Text from a key, an input method or another program: enters as much as is allowed, or nothing
  // unless all of it is.
  void Enter(const QString &entered, bool allOrNothing);
  // The part of a text that the limit and the code page allow; beeps when it is not all of it.
  QString Allowed(const QString &entered, bool *whole) const;
  // Notifies the dialog when the text differs from the last reported one.
  void Settle();

  QByteArray Text() const override { return BytesOfText(Shown(), textKind); }
  void SetText(const char *text) override;
  void MarkAsSaved() override;
  bool IsUnsaved() const override { return modified && !IsReadOnly() && Shown() != saved; }
  intptr_t OwnMessage(uint32_t message, uintptr_t wParam, intptr_t lParam) override;
};

// Changes during its lifetime are reported as one change, at its end.
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

// True for a key that enters text.
bool Types(const QKeyEvent &event);
// Runs an input method's event after applying the limit and the code page.
void TakeInputMethod(Edit *edit, QInputMethodEvent *event,
                     const std::function<void(QInputMethodEvent *)> &own);
// Shows the widget's standard menu reduced to what applies here: without inserting control
// characters, and for a read-only edit only Copy. Takes ownership of the menu.
void ShowMenu(Edit *edit, QMenu *menu, const QPoint &place);

}  // namespace qt_windows

#endif
