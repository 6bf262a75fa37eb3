// The view of a list: input of the user, and drawing of the rows.
#include <QHelpEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyledItemDelegate>
#include <QToolTip>
#include <algorithm>

#include "windows/qt/colors.h"
#include "windows/qt/list_access.h"
#include "windows/qt/list_box.h"
#include "windows/qt/messenger.h"
#include "windows/qt/narrowing.h"
#include "windows/qt/pictures.h"
#include "windows/qt/text_map.h"

namespace qt_windows {

namespace {

constexpr qsizetype kMostTipLines = 10;

// ---- User input

void NotifyIfAsked(const ListBox *list, uint32_t notification) {
  if ((list->style & ORL_STYLE_NOTIFY) != 0) {
    Notify(list, notification);
  }
}

void MakeCurrentByUser(ListBox *list, int32_t row) {
  if (list->model->Has(row) && row != CurrentRow(list)) {
    MakeCurrent(list, row);
    list->view->scrollTo(list->model->index(row, 0));
    NotifyIfAsked(list, ORL_LBN_SELCHANGE);
  }
}

int32_t RowsInView(const ListBox *list) {
  return std::max(1, list->view->viewport()->height() / HeightOfRow(list));
}

// Keys that move the current row.
struct MoveRow {
  int key;  // Qt::Key
  uint32_t number;
  int32_t rows, pages;
};
constexpr int32_t kToTheEnd = INT32_MAX;
// clang-format off
constexpr MoveRow kMoves[] = {
    {Qt::Key_Up,       ORL_VK_UP,    -1,         0},
    {Qt::Key_Left,     ORL_VK_LEFT,  -1,         0},
    {Qt::Key_Down,     ORL_VK_DOWN,  +1,         0},
    {Qt::Key_Right,    ORL_VK_RIGHT, +1,         0},
    {Qt::Key_Home,     ORL_VK_HOME,  -kToTheEnd, 0},
    {Qt::Key_End,      ORL_VK_END,   +kToTheEnd, 0},
    {Qt::Key_PageUp,   kKeyPageUp,    0,        -1},
    {Qt::Key_PageDown, kKeyPageDown,  0,        +1},
};
// clang-format on

// The visible row at `row`, or the next one in a direction; else in the other direction.
int32_t ShownRow(const ListBox *list, int32_t row, int32_t step) {
  const int32_t count = list->model->Count();
  for (const int32_t direction : {step, -step}) {
    for (int32_t at = row; at >= 0 && at < count; at += direction) {
      if (IsRowShown(list, at)) {
        return at;
      }
    }
  }
  return -1;
}

void Move(ListBox *list, const MoveRow &move) {
  const int64_t page = std::max(1, RowsInView(list) - 1);
  const int64_t row = CurrentRow(list) + int64_t{move.rows} + move.pages * page;
  const int32_t last = list->model->Count() - 1;
  const auto place = static_cast<int32_t>(std::clamp<int64_t>(row, 0, std::max(0, last)));
  MakeCurrentByUser(list, ShownRow(list, place, move.rows + move.pages < 0 ? -1 : 1));
}

// Moves to the next row that begins with the typed text. The blank is left to the dialog.
void TypeAhead(ListBox *list, const QString &typed) {
  if (typed.isEmpty() || !typed.at(0).isPrint() || typed.at(0).isSpace()) {
    return;
  }
  const int32_t before = CurrentRow(list);
  if (before < 0) {
    list->view->selectionModel()->setCurrentIndex({}, QItemSelectionModel::NoUpdate);
  }
  {
    const QScopedValueRollback<bool> guard(list->changesItself, true);
    list->view->keyboardSearch(typed);
  }
  const int32_t found = CurrentRow(list);
  MakeCurrent(list, found);
  if (found != before) {
    list->view->scrollTo(list->model->index(found, 0));
    NotifyIfAsked(list, ORL_LBN_SELCHANGE);
  }
}

void TakeKey(ListBox *list, const QKeyEvent &event) {
  const auto *move =
      std::find_if(std::begin(kMoves), std::end(kMoves),
                   [&event](const MoveRow &each) { return each.key == event.key(); });
  if (move != std::end(kMoves)) {
    Move(list, *move);
  } else {
    TypeAhead(list, event.text());
  }
}

// Below the last row, and above the list, there is none.
int32_t RowAt(const ListBox *list, int y) {
  return y < 0 ? -1 : list->view->indexAt({list->view->viewport()->width() / 2, y}).row();
}

void Press(ListBox *list, int y) {
  const int32_t row = RowAt(list, y);
  list->dragging = row >= 0;
  MakeCurrentByUser(list, row);
}

// The current row follows the pressed mouse; beyond the edges it moves one row at a time.
void Drag(ListBox *list, int y) {
  if (!list->dragging) {
    return;
  }
  const int height = list->view->viewport()->height();
  const int last = list->model->Count() - 1;
  int32_t row = RowAt(list, std::clamp(y, 0, std::max(0, height - 1)));
  if (row < 0) {
    row = last;
  } else if (y < 0 || y >= height) {
    row = ShownRow(list, std::clamp(row + (y < 0 ? -1 : 1), 0, last), y < 0 ? -1 : 1);
  }
  MakeCurrentByUser(list, row);
}

void DoubleClick(ListBox *list, int y, bool selects) {
  OrlWindow window = list->window;
  const int32_t row = RowAt(list, y);
  if (selects) {
    MakeCurrentByUser(list, row);
  }
  if (row >= 0 && FindControl(window) == list) {
    NotifyIfAsked(list, ORL_LBN_DBLCLK);
  }
}

// ---- The widgets

class RowDelegate : public QStyledItemDelegate {
 public:
  RowDelegate(ListBox *list, QObject *parent) : QStyledItemDelegate(parent), list_(list) {}

  // Rows are as wide as the view.
  QSize sizeHint(const QStyleOptionViewItem & /*option*/,
                 const QModelIndex & /*index*/) const override {
    return {1, HeightOfRow(list_)};
  }

  void paint(QPainter *painter, const QStyleOptionViewItem &option,
             const QModelIndex &index) const override {
    if (IsOwnerDrawn(list_)) {
      PaintOwnerDrawn(painter, option, index.row(), ORL_DRAW_ENTIRE);
    } else {
      QStyledItemDelegate::paint(painter, option, index);
    }
  }

  void PaintOwnerDrawn(QPainter *painter, QStyleOptionViewItem option, int32_t row,
                       uint32_t action) const {
    const bool selected = (option.state & QStyle::State_Selected) != 0;
    const bool focused = (option.state & QStyle::State_HasFocus) != 0;
    DrawnRow drawn;
    if (DrawRowOf(list_, row, action,
                  (selected ? +ORL_STATE_SELECTED : 0U) | (focused ? +ORL_STATE_FOCUS : 0U),
                  &drawn)) {
      option.widget = list_->view;
      PaintDrawnRow(painter, option, drawn);
    }
  }

  // The description of a row, else the whole text of a row that is truncated.
  bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                 const QModelIndex &index) override {
    const QString known = DescriptionOf(list_, index.row());
    if (event->type() == QEvent::ToolTip && !known.isEmpty()) {
      QToolTip::showText(event->globalPos(), PlainTip(known), view);
      return true;
    }
    const QString text = index.data().toString().left(kMostShown);
    if (event->type() != QEvent::ToolTip || text.isEmpty() ||
        option.fontMetrics.horizontalAdvance(text) <= Room(option, index)) {
      return QStyledItemDelegate::helpEvent(event, view, option, index);
    }
    QToolTip::showText(event->globalPos(), PlainTip(text), view);
    return true;
  }

 protected:
  void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    option->text.truncate(kMostShown);
  }

 private:
  // No row shows more of its text, however long it is.
  static constexpr qsizetype kMostShown = 1000;

  int Room(QStyleOptionViewItem option, const QModelIndex &index) const {
    option.widget = list_->view;
    if (IsOwnerDrawn(list_)) {
      DrawnRow drawn;
      DrawRowOf(list_, index.row(), ORL_DRAW_ENTIRE, 0, &drawn);
      return RoomOfText(drawn, option).width();
    }
    initStyleOption(&option, index);
    const QStyle *style = list_->view->style();
    const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, list_->view) + 1;
    return style->subElementRect(QStyle::SE_ItemViewItemText, &option, list_->view).width() -
           2 * margin;
  }

  ListBox *list_;
};

class ListView : public Messenger<QListView> {
 public:
  ListView(ListBox *list, QWidget *parent) : Messenger(list, parent), list_(list) {
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setUniformItemSizes(true);
    setVerticalScrollMode(ScrollPerItem);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAutoScroll(false);
    narrowing_ =
        new Narrowing(list, this, [this](int height) { setViewportMargins(0, height, 0, 0); });
  }

 protected:
  void keyPressEvent(QKeyEvent *event) override {
    if (event->matches(QKeySequence::Find)) {
      narrowing_->Open();
    } else if (event->key() == Qt::Key_Escape && narrowing_->isVisible()) {
      narrowing_->Close();
    } else {
      KeyPressed(list_, event, [this, event] { TakeKey(list_, *event); });
    }
  }
  void resizeEvent(QResizeEvent *event) override {
    Messenger::resizeEvent(event);
    narrowing_->UpdateGeometryInView();
  }
  void mousePressEvent(QMouseEvent *event) override {
    MousePressed(list_, event, [this, event] {
      if (event->button() == Qt::LeftButton) {
        Press(list_, qRound(event->position().y()));
      }
    });
  }
  void mouseMoveEvent(QMouseEvent *event) override {
    MouseMoved(list_, event, [this, event] {
      if ((event->buttons() & Qt::LeftButton) != 0) {
        Drag(list_, qRound(event->position().y()));
      }
    });
  }
  void mouseReleaseEvent(QMouseEvent *event) override {
    MouseReleased(list_, event, [this] { list_->dragging = false; });
  }
  void mouseDoubleClickEvent(QMouseEvent *event) override {
    MouseDoubleClicked(list_, event,
                       [this, event] { DoubleClick(list_, qRound(event->position().y()), true); });
  }

  // Not from this file: a change by a screen reader, reported afterwards.
  void selectionChanged(const QItemSelection &now, const QItemSelection &before) override {
    QListView::selectionChanged(now, before);
    const bool notifies = (list_->style & ORL_STYLE_NOTIFY) != 0;
    if (notifies && !list_->changesItself && !(now.isEmpty() && before.isEmpty())) {
      Post(list_->dialog->window, ORL_WM_COMMAND,
           static_cast<uint16_t>(list_->id) | uintptr_t{ORL_LBN_SELCHANGE} << 16,
           reinterpret_cast<intptr_t>(list_->window));
    }
  }

  // The frame's line is included.
  bool event(QEvent *event) override {
    const bool taken = Messenger::event(event);
    if (event->type() == QEvent::Paint && hasFocus()) {
      QPainter painter(this);
      painter.setPen(palette().color(QPalette::Highlight));
      painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
    return taken;
  }

  void paintEvent(QPaintEvent *event) override {
    QListView::paintEvent(event);
    if (list_->model->Count() == 0 && hasFocus()) {
      PaintEmpty();
    }
    if (hasFocus()) {
      PaintFrame();
    }
  }

  // The list with the focus stands out: its current row has the full colour, and a frame is drawn
  // around it.
  void initViewItemOption(QStyleOptionViewItem *option) const override {
    QListView::initViewItemOption(option);
    constexpr int kPale = 30;  // percent
    if (!hasFocus()) {
      option->state &= ~QStyle::State_Active;
      const QColor ground = palette().color(QPalette::Active, QPalette::Base);
      option->palette.setColor(
          QPalette::Inactive, QPalette::Highlight,
          Mixed(ground, palette().color(QPalette::Active, QPalette::Highlight), kPale));
      option->palette.setColor(QPalette::Inactive, QPalette::HighlightedText,
                               palette().color(QPalette::Active, QPalette::Text));
    }
  }

  void scrollContentsBy(int across, int down) override {
    QListView::scrollContentsBy(across, down);
    viewport()->update();  // with the frame
  }

  void focusInEvent(QFocusEvent *event) override {
    Messenger::focusInEvent(event);
    update();
    viewport()->update();
  }

  void focusOutEvent(QFocusEvent *event) override {
    Messenger::focusOutEvent(event);
    update();
    viewport()->update();
  }

 private:
  void PaintFrame() {
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Highlight));
    painter.drawRect(viewport()->rect().adjusted(0, 0, -1, -1));
  }

  // There is no row for the focus.
  void PaintEmpty() {
    QPainter painter(viewport());
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.state |= QStyle::State_HasFocus;
    option.rect = {0, 0, viewport()->width(), HeightOfRow(list_)};
    if (IsOwnerDrawn(list_)) {
      static_cast<const RowDelegate *>(itemDelegate())
          ->PaintOwnerDrawn(&painter, option, -1, ORL_DRAW_FOCUS);
      return;
    }
    QStyleOptionFocusRect focus;
    focus.QStyleOption::operator=(option);
    focus.state |= QStyle::State_KeyboardFocusChange;
    focus.backgroundColor = palette().color(QPalette::Base);
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, this);
  }

  ListBox *list_;
  Narrowing *narrowing_ = nullptr;
};

}  // namespace

QString DescriptionOf(const ListBox *list, int32_t row) {
  char description[1024] = "";
  if (list->aid == nullptr || list->aid->Describe == nullptr || !list->model->Has(row) ||
      list->aid->Describe(list->id, list->model->At(row).text.c_str(), description,
                          sizeof description) == 0) {
    return {};
  }
  QStringList lines;
  for (const QByteArray &line : QByteArray(description).split('\n')) {
    lines.push_back(CaptionText(line.constData()));
  }
  return lines.mid(0, kMostTipLines).join(u'\n');
}

void FocusShownRow(ListBox *list) {
  const int32_t row = CurrentRow(list);
  const int32_t shown = ShownRow(list, 0, 1);
  if (shown >= 0 && (row < 0 ? !list->part.isEmpty() : !IsRowShown(list, row))) {
    MakeCurrentByUser(list, shown);
  }
}

QListView *NewListView(ListBox *list, QWidget *parent) {
  auto *view = new ListView(list, parent);
  ReportList(list, view);
  view->setItemDelegate(new RowDelegate(list, view));
  return view;
}

void TakeEvent(ListBox *list, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  const int y = static_cast<int16_t>(lParam >> 16 & 0xFFFF);
  switch (message) {
    case ORL_WM_KEYDOWN: {
      const auto *move =
          std::find_if(std::begin(kMoves), std::end(kMoves),
                       [wParam](const MoveRow &each) { return each.number == wParam; });
      if (move != std::end(kMoves)) {
        Move(list, *move);
      }
      break;
    }
    case ORL_WM_CHAR:
      if (wParam < 0x80) {
        TypeAhead(list, QChar(static_cast<char16_t>(wParam)));
      }
      break;
    case ORL_WM_LBUTTONDOWN: {
      OrlWindow window = list->window;
      FocusIn(list->dialog, list);
      if (FindControl(window) == list) {
        MakeCurrentByUser(list, RowAt(list, y));
      }
      break;
    }
    case ORL_WM_LBUTTONDBLCLK:
      DoubleClick(list, y, false);
      break;
    default:
      break;
  }
}

}  // namespace qt_windows
