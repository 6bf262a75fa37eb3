// Lists: rows with texts and data, one of them current.
#include <QScopedValueRollback>
#include <QSignalBlocker>
#include <algorithm>
#include <cstring>
#include <span>

#include "platform/window_operations.h"
#include "windows/qt/list_box.h"
#include "windows/qt/pictures.h"
#include "windows/qt/text_map.h"
#include "wreni11.h"

namespace qt_windows {

namespace {

// The text of a row, for the searches that window systems share.
auto TextOfRowIn(ListModel *model) {
  return [model](int32_t row) { return std::span<char>(model->At(row).text); };
}

int32_t InsertRow(ListBox *list, int32_t row, const char *text) {
  const QScopedValueRollback<bool> guard(list->changesItself, true);
  const char *copied = text == nullptr ? "" : text;
  list->model->Insert(row, {copied, CaptionText(copied), 0, false});
  if (!list->part.isEmpty()) {
    ShowRows(list);
  }
  return row;
}

int32_t DeleteRow(ListBox *list, int32_t row) {
  const QScopedValueRollback<bool> guard(list->changesItself, true);
  QItemSelectionModel *selection = list->view->selectionModel();
  // The view is laid out again anyway, and would do so for each change of the focus.
  const QSignalBlocker quiet(selection);
  // The view would select a neighbour of a removed row that had the focus.
  if (selection->currentIndex().row() == row) {
    selection->setCurrentIndex({}, QItemSelectionModel::NoUpdate);
  }
  list->model->Remove(row);
  if (!selection->currentIndex().isValid()) {
    selection->setCurrentIndex(list->model->index(0, 0), QItemSelectionModel::NoUpdate);
  }
  return list->model->Count();
}

// The messages about one row, which exists.
intptr_t TakeRowMessage(ListBox *list, uint32_t message, int32_t row, intptr_t lParam) {
  ListRow &entry = list->model->At(row);
  switch (message) {
    case ORL_LB_DELETESTRING:
      return DeleteRow(list, row);
    case ORL_LB_SETCURSEL:
      MakeCurrent(list, row);
      list->view->scrollTo(list->model->index(row, 0));
      return row;
    case ORL_LB_GETTEXT:
      if (lParam == 0) {
        return ORL_LB_ERR;
      }
      std::memcpy(reinterpret_cast<char *>(lParam), entry.text.c_str(), entry.text.size() + 1);
      return static_cast<intptr_t>(entry.text.size());
    case ORL_LB_GETTEXTLEN:
      return static_cast<intptr_t>(entry.text.size());
    case ORL_LB_SETTOPINDEX:
      list->view->scrollTo(list->model->index(row, 0), QAbstractItemView::PositionAtTop);
      return 0;
    case ORL_LB_GETITEMDATA:
      return entry.data;
    case ORL_LB_SETITEMDATA:
      entry.data = lParam;
      return 1;
    default:
      return 0;  // not one of ours
  }
}

intptr_t TakeListMessage(ListBox *list, uint32_t message, intptr_t row, intptr_t lParam) {
  ListModel *model = list->model;
  const auto *text = reinterpret_cast<const char *>(lParam);
  switch (message) {
    case ORL_LB_ADDSTRING:
    case ORL_CB_ADDSTRING: {
      const bool sorted = (list->style & ORL_STYLE_SORTED) != 0;
      return InsertRow(
          list, sorted ? SortedPosition(model->Count(), text, TextOfRowIn(model)) : model->Count(),
          text);
    }
    case ORL_LB_INSERTSTRING:
      if (row < -1 || row > model->Count()) {
        return ORL_LB_ERR;
      }
      return InsertRow(list, row == -1 ? model->Count() : static_cast<int32_t>(row), text);
    case ORL_LB_GETCOUNT:
      return model->Count();
    case ORL_LB_GETCURSEL:
      return CurrentRow(list);
    case ORL_LB_FINDSTRING:
      return FindRowByPrefix(model->Count(), row, text, TextOfRowIn(model));
    case ORL_LB_SETCURSEL:
      if (row == -1) {
        MakeCurrent(list, -1);
        return ORL_LB_ERR;
      }
      [[fallthrough]];
    default:
      if (!model->Has(row)) {
        return ORL_LB_ERR;
      }
      return TakeRowMessage(list, message, static_cast<int32_t>(row), lParam);
  }
}

}  // namespace

bool IsOwnerDrawn(const ListBox *list) {
  return (list->style & ORL_STYLE_OWNER_DRAW) != 0;
}

int32_t HeightOfRow(const ListBox *list) {
  return std::max(1, list->rowHeight > 0 ? list->rowHeight : list->view->fontMetrics().height());
}

int32_t CurrentRow(const ListBox *list) {
  const QItemSelection selected = list->view->selectionModel()->selection();
  return selected.isEmpty() ? -1 : selected.constFirst().top();
}

void MakeCurrent(ListBox *list, int32_t row) {
  const QScopedValueRollback<bool> guard(list->changesItself, true);
  QItemSelectionModel *selection = list->view->selectionModel();
  const QModelIndex index = list->model->index(std::max(row, 0), 0);
  selection->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
  if (row < 0) {
    selection->clearSelection();
  } else {
    selection->select(index, QItemSelectionModel::ClearAndSelect);
  }
}

intptr_t ListBox::OwnMessage(uint32_t message, uintptr_t wParam, intptr_t lParam) {
  const bool isList = message >= ORL_LB_ADDSTRING && message <= ORL_LB_SETITEMDATA;
  if (isList || message == ORL_CB_ADDSTRING) {
    return TakeListMessage(this, message, static_cast<intptr_t>(wParam), lParam);
  }
  const Hold hold(dialog);
  TakeEvent(this, message, wParam, lParam);
  return 0;
}

// The height of whole rows, at least one.
void ListBox::Place(const QRect &rect) {
  const int rowHeightNow = HeightOfRow(this);
  const int frame = 2 * view->frameWidth();
  // The frame's line may overlap: programs compute whole rows without a frame.
  const int rows = std::max(1, rect.height() / rowHeightNow);
  const QModelIndex current = model->index(CurrentRow(this), 0);
  const bool isShown = view->viewport()->rect().intersects(view->visualRect(current));
  view->setGeometry(rect.x(), rect.y(), rect.width(), rows * rowHeightNow + frame);
  if (isShown) {
    view->scrollTo(current);
  }
}

void ListBox::SetRowAid(const OrlTextAid *rowAid) {
  aid = rowAid;
  ShowRows(this);
}

bool IsRowShown(const ListBox *list, int32_t row) {
  return !list->model->At(row).hidden;
}

void ShowRows(ListBox *list) {
  const auto isWanted = [list](const ListRow &row) {
    return (list->part.isEmpty() || row.shown.contains(list->part, Qt::CaseInsensitive)) &&
           (list->aid == nullptr || list->aid->IsShown == nullptr ||
            list->aid->IsShown(list->id, row.text.c_str()) != 0);
  };
  for (int32_t row = 0; row < list->model->Count(); ++row) {
    ListRow &each = list->model->At(row);
    const bool isHidden = !isWanted(each);
    if (isHidden != each.hidden) {
      each.hidden = isHidden;
      list->view->setRowHidden(row, isHidden);
    }
  }
}

void ListBox::SetRowHeight(int32_t pixels) {
  constexpr int32_t kMost = 1000;
  rowHeight = std::clamp(pixels, 1, kMost);
  view->doItemsLayout();
}

bool DrawRowOf(Control *list, int32_t row, uint32_t action, uint32_t state, DrawnRow *drawn) {
  if (list == nullptr || list->kind != ORL_CONTROL_LIST) {
    return false;
  }
  auto *box = static_cast<ListBox *>(list);
  if (!IsOwnerDrawn(box) || (row == -1 ? box->model->Count() != 0 : !box->model->Has(row))) {
    return false;
  }
  QRect rect(0, 0, box->view->viewport()->width(), HeightOfRow(box));
  if (row >= 0) {
    rect.moveTop(box->view->visualRect(box->model->index(row, 0)).top());
  }
  OrlDrawItem item = {};
  item.control = list->id;
  item.row = row;
  item.action = action;
  item.state = state;
  item.list = list->window;
  item.rect = {rect.left(), rect.top(), rect.left() + rect.width(), rect.top() + rect.height()};
  item.data = row < 0 ? 0 : box->model->At(row).data;
  DrawItem(*list, &item, drawn);
  return true;
}

Control *NewList(const OrlControl &row, Dialog *dialog) {
  auto list = std::make_unique<ListBox>();
  list->dialog = dialog;
  list->kind = row.kind;
  list->style = row.style;
  list->caption = row.caption;
  list->view = NewListView(list.get(), dialog->client);
  list->widget = list->view;
  list->model = new ListModel(list->view);
  list->view->setModel(list->model);
  return list.release();
}

}  // namespace qt_windows
