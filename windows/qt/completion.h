// Names that a text can hold, offered while one is typed: from two letters on, in a list below the
// caret that leaves the keys to the text.
#ifndef ORLI11_WINDOWS_QT_COMPLETION_H
#define ORLI11_WINDOWS_QT_COMPLETION_H

#include <QListWidget>
#include <QObject>
#include <QPlainTextEdit>
#include <QPointer>

#include "windows/qt/edit.h"
#include "windows/qt/text_scan.h"

namespace qt_windows {

// Belongs to the widget of its edit.
class Completion : public QObject {
 public:
  Completion(Edit *edit, QPlainTextEdit *lines, const OrlTextAid *aid);

  // Offers the names for the word that the caret stands behind, or takes the offer away.
  void Offer();
  void Hide();
  // Takes a key that goes through the offer; false for one that it leaves alone.
  bool TakeKey(const QKeyEvent &event);
  // The tab key, which puts in the chosen name or the first.
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
