// Lists: their record, and the routines that the rows (list.cpp) and the view (list_view.cpp)
// share.
//
// The current row is the selected one. The view's own current index is only the position of the
// focus, which the view moves by itself.
#ifndef ORLI11_WINDOWS_QT_LIST_BOX_H
#define ORLI11_WINDOWS_QT_LIST_BOX_H

#include <QListView>

#include "windows/qt/list_model.h"
#include "windows/qt/state.h"

namespace qt_windows {

struct ListBox : Control {
  QListView *view = nullptr;
  ListModel *model = nullptr;
  QByteArray caption;
  int32_t rowHeight = 0;            // requested by the dialog; 0: that of the font
  bool dragging = false;            // the user has pressed a row
  bool changesItself = false;       // the selection is being changed by the routines of the list
  const OrlTextAid *aid = nullptr;  // of its rows, or null
  QString part;                     // that rows must contain to be shown

  QByteArray Text() const override { return caption; }
  void SetText(const char *text) override { caption = text; }
  intptr_t OwnMessage(uint32_t message, uintptr_t wParam, intptr_t lParam) override;
  void Place(const QRect &rect) override;
  void SetRowHeight(int32_t pixels) override;
  void SetRowAid(const OrlTextAid *rowAid) override;
};

bool IsOwnerDrawn(const ListBox *list);
int32_t HeightOfRow(const ListBox *list);
// -1 for none.
int32_t CurrentRow(const ListBox *list);
// Without notification. Without a current row, -1, the focus is on the first.
void MakeCurrent(ListBox *list, int32_t row);

// Shows the rows that neither the host nor the user's filter hides.
void ShowRows(ListBox *list);
bool IsRowShown(const ListBox *list, int32_t row);
// When the current row is hidden, makes the first visible one current, as the user does.
void FocusShownRow(ListBox *list);

// Keys that have no name in orli11/windows.h.
constexpr uint32_t kKeyPageUp = 33;
constexpr uint32_t kKeyPageDown = 34;

// Creates the view of a list; its record is complete except for the view and the model. Owned by
// the parent.
QListView *NewListView(ListBox *list, QWidget *parent);
// Handles an event sent by a procedure like one of the user.
void TakeEvent(ListBox *list, uint32_t message, uintptr_t wParam, intptr_t lParam);

}  // namespace qt_windows

#endif
