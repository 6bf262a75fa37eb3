// The rows of a list, as a model for its view.
#ifndef ORLI11_WINDOWS_QT_LIST_MODEL_H
#define ORLI11_WINDOWS_QT_LIST_MODEL_H

#include <QAbstractListModel>
#include <QString>
#include <cassert>
#include <cstdint>
#include <string>
#include <vector>

namespace qt_windows {

struct ListRow {
  std::string text;
  QString shown;
  intptr_t data = 0;
  bool hidden = false;  // from the user
};

// Pointers to rows: inserting into a long list moves everything that follows.
class ListModel : public QAbstractListModel {
 public:
  using QAbstractListModel::QAbstractListModel;
  ~ListModel() override { qDeleteAll(rows_); }
  ListModel(const ListModel &) = delete;
  ListModel &operator=(const ListModel &) = delete;

  int rowCount(const QModelIndex &parent = {}) const override {
    return parent.isValid() ? 0 : Count();
  }
  QVariant data(const QModelIndex &index, int role) const override {
    const bool isText = role == Qt::DisplayRole || role == Qt::AccessibleTextRole;
    return isText && Has(index.row()) ? rows_[static_cast<size_t>(index.row())]->shown : QVariant();
  }

  // Hidden rows are not found by the user's keys either.
  Qt::ItemFlags flags(const QModelIndex &index) const override {
    const bool hidden = Has(index.row()) && rows_[static_cast<size_t>(index.row())]->hidden;
    return hidden ? Qt::NoItemFlags : QAbstractListModel::flags(index);
  }

  int32_t Count() const { return static_cast<int32_t>(rows_.size()); }
  bool Has(int64_t row) const { return row >= 0 && row < Count(); }
  // Requires that the row exists.
  ListRow &At(int32_t row) {
    assert(Has(row));
    return *rows_[static_cast<size_t>(row)];
  }

  void Insert(int32_t row, ListRow entry) {
    assert(row >= 0 && row <= Count());
    beginInsertRows({}, row, row);
    rows_.insert(rows_.begin() + row, new ListRow(std::move(entry)));
    endInsertRows();
  }
  void Remove(int32_t row) {
    assert(Has(row));
    beginRemoveRows({}, row, row);
    delete rows_[static_cast<size_t>(row)];
    rows_.erase(rows_.begin() + row);
    endRemoveRows();
  }

 private:
  std::vector<ListRow *> rows_;
};

}  // namespace qt_windows

#endif
