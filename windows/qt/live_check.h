// Live check of a text while the user types: shortly after the last key the error span is
// underlined, and a strip below shows the message or the type of the value, and the arguments of
// the call that the caret is in. Matching brackets are marked, quoted text is coloured.
#ifndef ORLI11_WINDOWS_QT_LIVE_CHECK_H
#define ORLI11_WINDOWS_QT_LIVE_CHECK_H

#include <QObject>
#include <QPlainTextEdit>
#include <QTextCursor>
#include <QTimer>
#include <functional>

#include "windows/qt/edit.h"

namespace qt_windows {

// Owned by the widget of its edit.
class LiveCheck : public QObject {
 public:
  LiveCheck(Edit *edit, QPlainTextEdit *lines, const OrlTextAid *aid);

  // The strip at the bottom of the edit.
  QWidget *Strip() const;
  // Called with each checked text, and whether it is valid.
  std::function<void(const QByteArray &text, const OrlTextState &state)> checked;
  // The list of functions, whose rows describe the arguments.
  QString SignatureOf(QStringView function) const;

 protected:
  bool eventFilter(QObject *watched, QEvent *event) override;

 private:
  class StripWidget;

  void Check();
  void Refresh();
  bool IsPlaceholder(const QByteArray &text, const OrlTextState &state) const;
  void Mark();

  Edit *edit_;
  QPlainTextEdit *lines_;
  const OrlTextAid *aid_;
  StripWidget *strip_;
  QTimer later_, soon_;
  QTextCursor fault_;  // null without one
};

}  // namespace qt_windows

#endif
