#include "windows/qt/narrowing.h"

#include <QKeyEvent>

namespace qt_windows {

Narrowing::Narrowing(ListBox *list, QWidget *view, std::function<void(int)> makeRoom)
    : QLineEdit(view), list_(list), makeRoom_(std::move(makeRoom)) {
  hide();
  setMaxLength(64);
  setPlaceholderText(QStringLiteral("part of a name"));
  setAccessibleName(QStringLiteral("Part of a name"));
  setContextMenuPolicy(Qt::NoContextMenu);
  connect(this, &QLineEdit::textChanged, this, [this](const QString &text) {
    list_->part = text;
    ShowRows(list_);
    FocusShownRow(list_);
  });
}

void Narrowing::Open() {
  show();
  makeRoom_(sizeHint().height());
  UpdateGeometryInView();
  setFocus(Qt::OtherFocusReason);
  selectAll();
}

void Narrowing::Close() {
  const bool hadFocus = hasFocus();
  clear();
  hide();
  makeRoom_(0);
  if (hadFocus) {
    list_->view->setFocus(Qt::OtherFocusReason);
  }
}

void Narrowing::UpdateGeometryInView() {
  const QRect inner = list_->view->viewport()->geometry();
  const int height = sizeHint().height();
  setGeometry(inner.x(), inner.y() - height, inner.width(), height);
}

// Up and down move in the list, Return picks the row as a double click does.
void Narrowing::keyPressEvent(QKeyEvent *event) {
  const Hold hold(list_->dialog);
  switch (event->key()) {
    case Qt::Key_Escape:
      Close();
      break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (CurrentRow(list_) >= 0 && IsRowShown(list_, CurrentRow(list_))) {
        Notify(list_, ORL_LBN_DBLCLK);
        Close();
      }
      break;
    case Qt::Key_Up:
      TakeEvent(list_, ORL_WM_KEYDOWN, ORL_VK_UP, 0);
      break;
    case Qt::Key_Down:
      TakeEvent(list_, ORL_WM_KEYDOWN, ORL_VK_DOWN, 0);
      break;
    default:
      QLineEdit::keyPressEvent(event);
  }
}

}  // namespace qt_windows
