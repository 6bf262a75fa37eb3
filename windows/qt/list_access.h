// What screen readers are told of lists: a list with its rows, which can be put in.
#ifndef ORLI11_WINDOWS_QT_LIST_ACCESS_H
#define ORLI11_WINDOWS_QT_LIST_ACCESS_H

#include "windows/qt/list_box.h"

namespace qt_windows {

// From now on the view tells of its list.
void TellOfList(ListBox *list, QListView *view);

// What the program tells of a row, in a few lines; empty for nothing (list_view.cpp).
QString DescriptionOf(const ListBox *list, int32_t row);

}  // namespace qt_windows

#endif
