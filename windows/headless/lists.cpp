// Lists: rows with texts and data, one of them current.
#include "windows/headless/state.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <span>

#include "platform/window_operations.h"

namespace headless {

namespace {

int32_t RowsInView(const Control *list) {
  return std::max(1, Height(list->rect) / list->list.rowHeight);
}

// The text of a row, for the searches that window systems share.
auto TextOfRowIn(const List &list) {
  return [rows = list.rows](int32_t row) {
    return std::span<char>(rows[row].text, std::strlen(rows[row].text));
  };
}

int32_t InsertRow(Control *control, int32_t row, const char *text) {
  List &list = control->list;
  void *rows = list.rows;
  if (!Reserve(&rows, &list.capacity, list.count + 1, sizeof(Row))) {
    return ORL_LB_ERR;
  }
  list.rows = static_cast<Row *>(rows);
  OwnedText copy = CopyOfText(text);
  if (copy == nullptr) {
    return ORL_LB_ERR;
  }
  ForgetPictures(control);
  std::copy_backward(list.rows + row, list.rows + list.count, list.rows + list.count + 1);
  list.rows[row] = {copy.release(), 0, nullptr};
  ++list.count;
  list.current += list.current >= row ? 1 : 0;
  return row;
}

int32_t DeleteRow(Control *control, int32_t row) {
  List &list = control->list;
  ForgetPictures(control);
  ReplaceBlock(list.rows[row].text);
  std::copy(list.rows + row + 1, list.rows + list.count, list.rows + row);
  --list.count;
  if (list.current == row) {
    list.current = -1;
  } else if (list.current > row) {
    --list.current;
  }
  ScrollTo(control, list.top);
  return list.count;
}

// Every change of the current row, by the user or the program.
void MakeCurrent(Control *control, int32_t row) {
  List &list = control->list;
  const int32_t before = list.current;
  if (row == before) {
    return;
  }
  list.current = row;
  if (HasFocus(control)) {
    DrawPart(control, before, ORL_DRAW_FOCUS);
  }
  DrawPart(control, before, ORL_DRAW_SELECT);
  DrawPart(control, row, ORL_DRAW_SELECT);
  if (HasFocus(control)) {
    DrawPart(control, row, ORL_DRAW_FOCUS);
  }
}

void NotifyDialog(const Control *list, uint32_t notification) {
  if ((list->style & ORL_STYLE_NOTIFY) != 0) {
    Notify(list, notification);
  }
}

void MakeCurrentByUser(Control *control, int32_t row) {
  if (HasRow(control, row) && row != control->list.current) {
    MakeCurrent(control, row);
    ScrollIntoView(control, row);
    NotifyDialog(control, ORL_LBN_SELCHANGE);
  }
}

void TakeListKey(Control *control, uintptr_t key) {
  const List &list = control->list;
  switch (key) {
    case ORL_VK_UP:
    case ORL_VK_LEFT:
      MakeCurrentByUser(control, std::max(0, list.current - 1));
      break;
    case ORL_VK_DOWN:
    case ORL_VK_RIGHT:
      MakeCurrentByUser(control, std::min(list.count - 1, list.current + 1));
      break;
    case ORL_VK_HOME:
      MakeCurrentByUser(control, 0);
      break;
    case ORL_VK_END:
      MakeCurrentByUser(control, list.count - 1);
      break;
    default:
      break;
  }
}

int32_t RowAtPoint(const Control *control, intptr_t point) {
  const auto y = static_cast<int16_t>(point >> 16 & 0xFFFF);
  const int32_t row = control->list.top + y / control->list.rowHeight;
  return y >= 0 && HasRow(control, row) ? row : -1;
}

// The messages about one row, which exists.
intptr_t RowProc(Control *control, uint32_t message, int32_t row, intptr_t lParam) {
  assert(HasRow(control, row));
  Row &entry = control->list.rows[row];
  switch (message) {
    case ORL_LB_DELETESTRING:
      return DeleteRow(control, row);
    case ORL_LB_SETCURSEL:
      MakeCurrent(control, row);
      ScrollIntoView(control, row);
      return row;
    case ORL_LB_GETTEXT:
      return lParam == 0 ? ORL_LB_ERR
                         : CopyOut(entry.text, reinterpret_cast<char *>(lParam), INT32_MAX);
    case ORL_LB_GETTEXTLEN:
      return WRENStrLen(entry.text);
    case ORL_LB_SETTOPINDEX:
      ScrollTo(control, row);
      return 0;
    case ORL_LB_GETITEMDATA:
      return entry.data;
    default:
      entry.data = lParam;
      return 1;
  }
}

}  // namespace

bool HasRow(const Control *list, int64_t row) {
  return row >= 0 && row < list->list.count;
}

void FreeRows(List *list) {
  for (int32_t row = 0; row < list->count; ++row) {
    FreePicture(list, &list->rows[row]);
    ReplaceBlock(list->rows[row].text);
  }
  ReplaceBlock(list->rows);
  list->count = 0;
}

void ScrollTo(Control *list, int32_t row) {
  const int32_t last = std::max(0, list->list.count - RowsInView(list));
  const int32_t top = std::clamp(row, 0, last);
  if (top != list->list.top) {
    list->list.top = top;
    ForgetPictures(list);
  }
}

void ScrollIntoView(Control *list, int32_t row) {
  const int32_t page = RowsInView(list);
  ScrollTo(list, std::clamp(list->list.top, row - page + 1, row));
}

intptr_t PointOfRow(const Control *list, int32_t row) {
  const int32_t height = list->list.rowHeight;
  const intptr_t y = (row - list->list.top) * height + height / 2;
  return 1 | y << 16;
}

void DrawRowsInView(Control *list) {
  list->list.dirty = false;
  const int32_t page = RowsInView(list);
  for (int32_t i = 0; i < page; ++i) {
    const int32_t row = list->list.top + i;
    if (HasRow(list, row) && list->list.rows[row].picture == nullptr) {
      DrawWhole(list, row);
    }
  }
}

intptr_t ListProc(Control *list, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  const auto row = static_cast<intptr_t>(wParam);
  const auto *text = reinterpret_cast<const char *>(lParam);
  switch (message) {
    case ORL_LB_ADDSTRING:
    case ORL_CB_ADDSTRING: {
      const bool sorted = (list->style & ORL_STYLE_SORTED) != 0;
      return InsertRow(list,
                       sorted ? SortedPosition(list->list.count, text, TextOfRowIn(list->list))
                              : list->list.count,
                       text);
    }
    case ORL_LB_INSERTSTRING:
      if (row < -1 || row > list->list.count) {
        return ORL_LB_ERR;
      }
      return InsertRow(list, row == -1 ? list->list.count : static_cast<int32_t>(row), text);
    case ORL_LB_GETCOUNT:
      return list->list.count;
    case ORL_LB_GETCURSEL:
      return list->list.current;
    case ORL_LB_FINDSTRING:
      return FindRowByPrefix(list->list.count, row, text, TextOfRowIn(list->list));
    case ORL_LB_SETCURSEL:
      if (row == -1) {
        MakeCurrent(list, -1);
        return ORL_LB_ERR;
      }
      [[fallthrough]];
    case ORL_LB_DELETESTRING:
    case ORL_LB_GETTEXT:
    case ORL_LB_GETTEXTLEN:
    case ORL_LB_SETTOPINDEX:
    case ORL_LB_GETITEMDATA:
    case ORL_LB_SETITEMDATA:
      if (!HasRow(list, row)) {
        return ORL_LB_ERR;
      }
      return RowProc(list, message, static_cast<int32_t>(row), lParam);
    case ORL_WM_SETFOCUS:
      DrawPart(list, list->list.current, ORL_DRAW_FOCUS);
      break;
    case ORL_WM_KEYDOWN:
      TakeListKey(list, wParam);
      break;
    case ORL_WM_LBUTTONDOWN:
      SetFocusTo(list->dialog, list);
      MakeCurrentByUser(list, RowAtPoint(list, lParam));
      break;
    case ORL_WM_LBUTTONDBLCLK:
      if (RowAtPoint(list, lParam) >= 0) {
        NotifyDialog(list, ORL_LBN_DBLCLK);
      }
      break;
    default:
      break;
  }
  return 0;
}

}  // namespace headless
