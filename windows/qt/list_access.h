// Accessibility of lists for screen readers: a list with its rows, which can be inserted.
#ifndef ORLI11_WINDOWS_QT_LIST_ACCESS_H
#define ORLI11_WINDOWS_QT_LIST_ACCESS_H

#include "windows/qt/list_box.h"

namespace qt_windows {

// From now on the view reports its list.
void ReportList(ListBox *list, QListView *view);

// The program's description of a row, in a few lines; may be empty (list_view.cpp).
QString DescriptionOf(const ListBox *list, int32_t row);

}  // namespace qt_windows

#endif
