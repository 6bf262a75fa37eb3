// Help while a text is written, for an edit whose program has handed in a text aid.
#ifndef ORLI11_WINDOWS_QT_TEXT_HELP_H
#define ORLI11_WINDOWS_QT_TEXT_HELP_H

#include <QObject>
#include <QPlainTextEdit>

#include "windows/qt/completion.h"
#include "windows/qt/edit.h"
#include "windows/qt/live_check.h"
#include "windows/qt/preview.h"

namespace qt_windows {

// Belongs to the widget of its edit.
class TextHelp : public QObject {
 public:
  TextHelp(Edit *edit, QPlainTextEdit *lines, const OrlTextAid *aid);

  // Takes a key ahead of everybody else; false for one that it leaves alone.
  bool TakeKey(const QKeyEvent &event);
  bool TakeTab();
  // The key has been handled.
  void KeyTaken(const QKeyEvent &event);
  // Selects the first placeholder behind the selection, else the first of all.
  void SelectNextPlaceholder();
  // Selects the placeholder that undoing has brought back, when there is one.
  void SelectRestored(const QString &before);

  LiveCheck *Check() const { return check_; }
  // Null where the host offers no values.
  Preview *PreviewHere() const { return preview_; }
  const char *HelpPath(int32_t *context) const;
  // The function that the caret stands in or is inside the call of; empty for none.
  QByteArray FunctionAtCaret() const;

 private:
  // The first placeholder from a place on, or an empty stretch.
  Stretch PlaceholderFrom(const QString &shown, qsizetype from) const;

  Edit *edit_;
  const OrlTextAid *aid_;
  LiveCheck *check_;
  Completion *completion_;
  Preview *preview_;
};

}  // namespace qt_windows

#endif
