// Completion of names while the user types: from two letters on, in a list below the caret that
// does not take the keyboard focus.
#ifndef ORLI11_WINDOWS_QT_COMPLETION_H
#define ORLI11_WINDOWS_QT_COMPLETION_H

#include <QListWidget>
#include <QObject>
#include <QPlainTextEdit>
#include <QPointer>

#include "windows/qt/edit.h"
#include "windows/qt/text_scan.h"

namespace qt_windows {

// Owned by the widget of its edit.
class Completion : public QObject {
 public:
  Completion(Edit *edit, QPlainTextEdit *lines, const OrlTextAid *aid);

  // Shows the names for the word before the caret, or hides the list.
  void Offer();
  void Hide();
  // Handles a key that moves in the list; false for other keys.
  bool TakeKey(const QKeyEvent &event);
  // The tab key, which inserts the selected name or the first.
  bool TakeTab();

 protected:
  bool eventFilter(QObject *watched, QEvent *event) override;

 private:
  struct Name {
    int32_t list;
    QByteArray row;
    QString shown;
  };
  std::vector<Name> NamesFor(const QString &word) const;
  void Show(const std::vector<Name> &names);
  void Take(int row);

  Edit *edit_;
  QPlainTextEdit *lines_;
  const OrlTextAid *aid_;
  QPointer<QListWidget> view_;
  std::vector<Name> names_;
  Piece word_;
};

}  // namespace qt_windows

#endif
