#include "windows/qt/completion.h"

#include <QScrollBar>
#include <algorithm>

#include "windows/qt/list_box.h"

namespace qt_windows {

namespace {

constexpr qsizetype kFewestLetters = 2;
constexpr size_t kMostNames = 200;
constexpr int kMostRows = 8;  // in view

}  // namespace

Completion::Completion(Edit *edit, QPlainTextEdit *lines, const OrlTextAid *aid)
    : QObject(lines), edit_(edit), lines_(lines), aid_(aid) {
  view_ = new QListWidget(edit->dialog->client);
  view_->hide();
  view_->setFocusPolicy(Qt::NoFocus);
  view_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  view_->setUniformItemSizes(true);
  view_->setAccessibleName(QStringLiteral("Names"));
  connect(view_, &QListWidget::itemClicked, this,
          [this](QListWidgetItem *item) { Take(view_->row(item)); });
  connect(lines->verticalScrollBar(), &QScrollBar::valueChanged, this, [this] { Hide(); });
  lines->installEventFilter(this);
  lines->viewport()->installEventFilter(this);
}

bool Completion::eventFilter(QObject * /*watched*/, QEvent *event) {
  const QEvent::Type type = event->type();
  if (type == QEvent::FocusOut || type == QEvent::Resize || type == QEvent::MouseButtonPress) {
    Hide();
  }
  return false;
}

void Completion::Hide() {
  if (view_ != nullptr) {
    view_->hide();
  }
}

// The rows of the lists that begin with the word, in any case; shorter ones first.
std::vector<Completion::Name> Completion::NamesFor(const QString &word) const {
  std::vector<Name> names;
  for (const int32_t *list = aid_->lists; list != nullptr && *list != 0; ++list) {
    const Control *control = ControlById(edit_->dialog, *list);
    if (control == nullptr || control->kind != ORL_CONTROL_LIST) {
      continue;
    }
    ListModel *model = static_cast<const ListBox *>(control)->model;
    for (int32_t row = 0; row < model->Count() && names.size() < kMostNames; ++row) {
      const ListRow &each = model->At(row);
      if (each.shown.startsWith(word, Qt::CaseInsensitive) &&
          (aid_->IsShown == nullptr || aid_->IsShown(*list, each.text.c_str()) != 0)) {
        names.push_back({*list, QByteArray::fromStdString(each.text), each.shown});
      }
    }
  }
  std::stable_sort(names.begin(), names.end(), [](const Name &left, const Name &right) {
    return left.shown.size() < right.shown.size();
  });
  return names;
}

void Completion::Offer() {
  const QString shown = edit_->Shown();
  const auto [anchor, caret] = edit_->Selected();
  word_ = WordAt(shown, caret);
  const QString word = shown.mid(word_.start, word_.end - word_.start);
  const bool wanted = anchor == caret && word_.end == caret && word.size() >= kFewestLetters &&
                      !word[0].isDigit() && aid_->Insert != nullptr;
  const std::vector<Name> names = wanted ? NamesFor(word) : std::vector<Name>();
  // A complete name needs no completion.
  if (names.empty() || (names.size() == 1 && names[0].shown == word)) {
    Hide();
  } else {
    Show(names);
  }
}

void Completion::Show(const std::vector<Name> &names) {
  names_ = names;
  view_->clear();
  int width = 0;
  for (const Name &name : names_) {
    view_->addItem(name.shown.left(100));
    width = std::max(width, view_->fontMetrics().horizontalAdvance(name.shown.left(100)));
  }
  view_->setCurrentRow(-1);
  const QWidget *client = edit_->dialog->client;
  const int rows = std::min(kMostRows, static_cast<int>(names_.size()));
  const int frame = 2 * view_->frameWidth();
  const QSize size(std::min(width + 40, client->width()), rows * view_->sizeHintForRow(0) + frame);
  const QRect caret = lines_->cursorRect();
  QPoint corner = lines_->viewport()->mapTo(client, caret.bottomLeft());
  if (corner.y() + size.height() > client->height()) {
    corner.setY(std::max(0, corner.y() - caret.height() - size.height()));
  }
  corner.setX(std::clamp(corner.x(), 0, std::max(0, client->width() - size.width())));
  view_->setGeometry(QRect(corner, size));
  view_->raise();
  view_->show();
}

void Completion::Take(int row) {
  if (row < 0 || row >= static_cast<int>(names_.size())) {
    return;
  }
  const Hold hold(edit_->dialog);
  const Name name = names_[static_cast<size_t>(row)];
  Hide();
  const OneChange change(edit_);
  edit_->Select({word_.start, word_.end});
  aid_->Insert(name.list, name.row.constData());
}

bool Completion::TakeKey(const QKeyEvent &event) {
  if (view_ == nullptr || !view_->isVisible()) {
    return false;
  }
  const int last = view_->count() - 1;
  const int row = view_->currentRow();
  switch (event.key()) {
    case Qt::Key_Down:
      view_->setCurrentRow(std::min(row + 1, last));
      return true;
    case Qt::Key_Up:
      view_->setCurrentRow(row < 0 ? last : std::max(row - 1, 0));
      return true;
    case Qt::Key_Escape:
      Hide();
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (row < 0) {
        Hide();  // nothing was selected: the key is for the dialog
        return false;
      }
      Take(row);
      return true;
    default:
      return false;
  }
}

bool Completion::TakeTab() {
  if (view_ == nullptr || !view_->isVisible()) {
    return false;
  }
  Take(std::max(0, view_->currentRow()));
  return true;
}

}  // namespace qt_windows
