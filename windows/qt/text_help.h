// Help while the user types, for an edit with a text aid.
#ifndef ORLI11_WINDOWS_QT_TEXT_HELP_H
#define ORLI11_WINDOWS_QT_TEXT_HELP_H

#include <QObject>
#include <QPlainTextEdit>

#include "windows/qt/completion.h"
#include "windows/qt/edit.h"
#include "windows/qt/live_check.h"
#include "windows/qt/preview.h"

namespace qt_windows {

// Owned by the widget of its edit.
class TextHelp : public QObject {
 public:
  TextHelp(Edit *edit, QPlainTextEdit *lines, const OrlTextAid *aid);

  // Handles a key before all others; false for keys that it ignores.
  bool TakeKey(const QKeyEvent &event);
  bool TakeTab();
  // Called when the key has been handled.
  void KeyTaken(const QKeyEvent &event);
  // Selects the first placeholder after the selection, else the first of all.
  void SelectNextPlaceholder();
  // Selects the placeholder that undo has restored, if any.
  void SelectRestored(const QString &before);

  LiveCheck *Check() const { return check_; }
  // Null when the host provides no values.
  Preview *PreviewHere() const { return preview_; }
  const char *HelpPath(int32_t *context) const;
  // The function whose name or call the caret is in; empty for none.
  QByteArray FunctionAtCaret() const;

 private:
  // The first placeholder from a position on, or an empty span.
  Selection PlaceholderFrom(const QString &shown, qsizetype from) const;

  Edit *edit_;
  const OrlTextAid *aid_;
  LiveCheck *check_;
  Completion *completion_;
  Preview *preview_;
};

}  // namespace qt_windows

#endif
