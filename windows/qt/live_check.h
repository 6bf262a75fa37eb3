// Says what a save would say of a text while it is written: a while after the last key its faulty
// bytes are underlined, and a strip below it tells the message or the type of the value, and the
// arguments of the call that the caret is in. Brackets that belong together are marked, texts in
// quotes coloured.
#ifndef ORLI11_WINDOWS_QT_LIVE_CHECK_H
#define ORLI11_WINDOWS_QT_LIVE_CHECK_H

#include <QObject>
#include <QPlainTextEdit>
#include <QTextCursor>
#include <QTimer>
#include <functional>

#include "windows/qt/edit.h"

namespace qt_windows {

// Belongs to the widget of its edit.
class LiveCheck : public QObject {
 public:
  LiveCheck(Edit *edit, QPlainTextEdit *lines, const OrlTextAid *aid);

  // What is told; it stands at the lower end of the edit.
  QWidget *Strip() const;
  // Called with each text that has been checked, and whether it is good.
  std::function<void(const QByteArray &text, const OrlTextState &state)> checked;
  // The functions' list, whose rows tell of arguments.
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
