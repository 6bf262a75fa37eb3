// A line above the rows of a list that narrows its view: only rows that hold what is typed are
// shown. The program sees all rows.
#ifndef ORLI11_WINDOWS_QT_NARROWING_H
#define ORLI11_WINDOWS_QT_NARROWING_H

#include <QLineEdit>

#include "windows/qt/list_box.h"

namespace qt_windows {

// Belongs to the view of its list.
class Narrowing : public QLineEdit {
 public:
  Narrowing(ListBox *list, QWidget *view, std::function<void(int)> makeRoom);

  void Open();
  void Close();
  // Along the upper edge of the view.
  void Lay();

 protected:
  void keyPressEvent(QKeyEvent *event) override;

 private:
  ListBox *list_;
  std::function<void(int)> makeRoom_;
};

}  // namespace qt_windows

#endif
