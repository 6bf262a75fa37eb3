#include "windows/qt/list_access.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QPointer>
#include <map>

namespace qt_windows {

namespace {

class ListAccess;

constexpr char kListProperty[] = "list";

// The record of the list that a view shows, or null. A view is deleted before its record.
ListBox *ListOfView(const QObject *view) {
  return static_cast<ListBox *>(view->property(kListProperty).value<void *>());
}

// A row. It reports what is at its index at the moment.
class RowAccess : public QAccessibleInterface, public QAccessibleActionInterface {
 public:
  RowAccess(QListView *view, int row) : view_(view), row_(row) {}

  bool isValid() const override { return List() != nullptr && List()->model->Has(row_); }
  QObject *object() const override { return nullptr; }
  QAccessibleInterface *childAt(int /*x*/, int /*y*/) const override { return nullptr; }
  QAccessibleInterface *parent() const override {
    return QAccessible::queryAccessibleInterface(view_);
  }
  QAccessibleInterface *child(int /*index*/) const override { return nullptr; }
  int childCount() const override { return 0; }
  int indexOfChild(const QAccessibleInterface * /*child*/) const override { return -1; }
  void setText(QAccessible::Text /*kind*/, const QString & /*text*/) override {}
  QAccessible::Role role() const override { return QAccessible::ListItem; }
  int Row() const { return row_; }

  QString text(QAccessible::Text kind) const override {
    if (!isValid()) {
      return {};
    }
    return kind == QAccessible::Name          ? List()->model->At(row_).shown
           : kind == QAccessible::Description ? DescriptionOf(List(), row_)
                                              : QString();
  }

  QRect rect() const override {
    if (!isValid()) {
      return {};
    }
    const QRect place = view_->visualRect(List()->model->index(row_, 0));
    return {view_->viewport()->mapToGlobal(place.topLeft()), place.size()};
  }

  QAccessible::State state() const override {
    QAccessible::State flags;
    flags.selectable = flags.focusable = 1;
    flags.invalid = isValid() ? 0 : 1;
    if (isValid()) {
      flags.invisible = IsRowShown(List(), row_) ? 0 : 1;
      flags.selected = CurrentRow(List()) == row_ ? 1 : 0;
      flags.focused = view_->hasFocus() && view_->currentIndex().row() == row_ ? 1 : 0;
      flags.offscreen =
          view_->viewport()->rect().intersects(view_->visualRect(List()->model->index(row_, 0)))
              ? 0
              : 1;
    }
    return flags;
  }

  void *interface_cast(QAccessible::InterfaceType type) override {
    return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface *>(this)
                                                : nullptr;
  }

  // ---- Actions: as a double click, and as a click

  QStringList actionNames() const override {
    return {Insert(), QAccessibleActionInterface::setFocusAction()};
  }
  QString localizedActionDescription(const QString &name) const override {
    return name == Insert() ? QStringLiteral("Puts the row into the text") : QString();
  }
  QStringList keyBindingsForAction(const QString &name) const override {
    return name == Insert() ? QStringList(QStringLiteral("Space")) : QStringList();
  }
  // Posted: it may open a dialog, and the screen reader must not wait for that.
  void doAction(const QString &name) override {
    if (!isValid()) {
      return;
    }
    OrlWindow window = List()->window;
    const int row = row_;
    const bool inserts = name == Insert();
    QMetaObject::invokeMethod(
        view_, [window, row, inserts] { Act(window, row, inserts); }, Qt::QueuedConnection);
  }

 private:
  static QString Insert() { return QStringLiteral("Insert"); }

  static void Act(OrlWindow window, int row, bool inserts) {
    auto *list = static_cast<ListBox *>(FindControl(window));
    if (list == nullptr || !list->model->Has(row) || !list->widget->isEnabled()) {
      return;
    }
    const Hold hold(list->dialog);
    list->view->setFocus(Qt::OtherFocusReason);
    if (CurrentRow(list) != row) {
      MakeCurrent(list, row);
      Notify(list, ORL_LBN_SELCHANGE);
    }
    if (inserts && FindControl(window) == list) {
      Notify(list, ORL_LBN_DBLCLK);
    }
  }

  ListBox *List() const { return view_ == nullptr ? nullptr : ListOfView(view_); }

  QPointer<QListView> view_;
  int row_;
};

class ListAccess : public QAccessibleWidget {
 public:
  explicit ListAccess(QListView *view) : QAccessibleWidget(view, QAccessible::List), view_(view) {}
  ~ListAccess() override {
    for (const auto &[row, id] : rows_) {
      QAccessible::deleteAccessibleInterface(id);
    }
  }
  ListAccess(const ListAccess &) = delete;
  ListAccess &operator=(const ListAccess &) = delete;

  int childCount() const override {
    return view_->model() == nullptr ? 0 : view_->model()->rowCount();
  }

  // Rows are requested by number; each reports its index as long as the list exists.
  QAccessibleInterface *child(int index) const override {
    if (index < 0 || index >= childCount()) {
      return nullptr;
    }
    const auto found = rows_.find(index);
    if (found != rows_.end()) {
      return QAccessible::accessibleInterface(found->second);
    }
    auto *row = new RowAccess(view_, index);
    rows_[index] = QAccessible::registerAccessibleInterface(row);
    return row;
  }

  int indexOfChild(const QAccessibleInterface *child) const override {
    const auto *row = dynamic_cast<const RowAccess *>(child);
    return row == nullptr ? -1 : row->Row();
  }

  QAccessibleInterface *childAt(int x, int y) const override {
    return child(view_->indexAt(view_->viewport()->mapFromGlobal(QPoint(x, y))).row());
  }

  QAccessibleInterface *focusChild() const override {
    return view_->hasFocus() ? child(view_->currentIndex().row()) : nullptr;
  }

 private:
  QListView *view_;
  mutable std::map<int, QAccessible::Id> rows_;
};

QAccessibleInterface *NewAccess(const QString & /*className*/, QObject *object) {
  auto *view = qobject_cast<QListView *>(object);
  return view != nullptr && ListOfView(view) != nullptr ? new ListAccess(view) : nullptr;
}

}  // namespace

void ReportList(ListBox *list, QListView *view) {
  static bool isInstalled = false;
  view->setProperty(kListProperty, QVariant::fromValue<void *>(list));
  if (!isInstalled) {
    isInstalled = true;
    QAccessible::installFactory(NewAccess);
  }
}

}  // namespace qt_windows
