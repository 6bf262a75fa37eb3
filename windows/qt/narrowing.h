// A filter line above the rows of a list: only rows that contain the typed text are shown. The
// program still sees all rows.
#ifndef ORLI11_WINDOWS_QT_NARROWING_H
#define ORLI11_WINDOWS_QT_NARROWING_H

#include <QLineEdit>

#include "windows/qt/list_box.h"

namespace qt_windows {

// Owned by the view of its list.
class Narrowing : public QLineEdit {
 public:
  Narrowing(ListBox *list, QWidget *view, std::function<void(int)> makeRoom);

  void Open();
  void Close();
  // Places it along the upper edge of the view.
  void UpdateGeometryInView();

 protected:
  void keyPressEvent(QKeyEvent *event) override;

 private:
  ListBox *list_;
  std::function<void(int)> makeRoom_;
};

}  // namespace qt_windows

#endif
