// Lists, the rows that a dialog draws, and option buttons on Qt widgets.
#include <gtest/gtest.h>

#include <QtTest/qtestsystem.h>
#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <functional>
#include <random>

#include "orli11/qt_windows.h"
#include "resources/bitmaps.h"
#include "windows/qt/pictures.h"

namespace {

using qt_windows::DrawnRow;

constexpr int32_t kPlain = 10, kSorted = 11, kDrawn = 12, kOption = 13, kOther = 14;
constexpr OrlControl kControls[] = {
    {kPlain, ORL_CONTROL_LIST, ORL_STYLE_NOTIFY, "", 0, 0, 60, 50},
    {kSorted, ORL_CONTROL_LIST, ORL_STYLE_SORTED, "", 60, 0, 60, 50},
    {kDrawn, ORL_CONTROL_LIST, ORL_STYLE_OWNER_DRAW, "", 0, 50, 60, 50},
    {kOption, ORL_CONTROL_OPTION, ORL_STYLE_GROUP, "&Set|set|0x00c0c0c0", 60, 50, 31, 24},
    {kOther, ORL_CONTROL_OPTION, 0, "A|nothing|0", 91, 50, 31, 24},
};
constexpr OrlDialogTemplate kTemplate = {"LISTS", "Lists", "", 8, 0, 0, 130, 110, 1, 5, kControls};
constexpr int kRowHeight = 17;

constexpr int kPatience = 60'000;  // milliseconds for what comes at once on an idle machine
const OrlWindowSystem *table;
std::vector<std::string> received;  // the id and the notification of each command
std::function<void(const OrlDrawItem &)> draw;

intptr_t Procedure(OrlWindow, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  if (message == ORL_WM_COMMAND) {
    received.push_back(std::to_string(wParam & 0xFFFF) + ":" + std::to_string(wParam >> 16));
  } else if (message == ORL_WM_MEASUREITEM) {
    reinterpret_cast<OrlMeasureItem *>(lParam)->height = kRowHeight;
  } else if (message == ORL_WM_DRAWITEM && draw) {
    draw(*reinterpret_cast<const OrlDrawItem *>(lParam));
  }
  return 0;
}

class QtList : public testing::Test {
 protected:
  QtList() {
    static int count = 1;
    static char name[] = "list_test", *arguments[] = {name, nullptr};
    static const auto *const application = new QApplication(count, arguments);
    (void)application;
    table = ORLQtWindowSystem();
    draw = nullptr;
    dialog = table->CreateDialogParam(&kTemplate, nullptr, Procedure, 0);
    QApplication::processEvents();
    received.clear();
  }
  ~QtList() override {
    table->DestroyWindow(dialog);
    QApplication::processEvents();
  }

  OrlWindow Item(int32_t id) const { return table->GetDlgItem(dialog, id); }
  QWidget *WidgetOf(int32_t id) const { return qt_windows::FindControl(Item(id))->widget; }
  QWidget *ViewOf(int32_t id) const {
    return static_cast<QAbstractScrollArea *>(WidgetOf(id))->viewport();
  }
  intptr_t Message(int32_t id, uint32_t message, intptr_t wParam,
                   const void *text = nullptr) const {
    return table->SendMessage(Item(id), message, static_cast<uintptr_t>(wParam),
                              reinterpret_cast<intptr_t>(text));
  }
  std::string RowText(int32_t id, intptr_t row) const {
    std::string text(static_cast<size_t>(Message(id, ORL_LB_GETTEXTLEN, row)) + 1, '?');
    EXPECT_EQ(text.size() - 1, static_cast<size_t>(Message(id, ORL_LB_GETTEXT, row, text.data())));
    text.pop_back();
    return text;
  }
  void Fill(int32_t id, std::initializer_list<const char *> rows) const {
    for (const char *row : rows) Message(id, ORL_LB_INSERTSTRING, -1, row);
  }

  void Key(int32_t id, int key, const QString &text = {}) const {
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(WidgetOf(id), &down);
    QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QApplication::sendEvent(WidgetOf(id), &up);
  }
  void Mouse(QWidget *widget, QEvent::Type type, int y, Qt::MouseButton button = Qt::LeftButton,
             Qt::KeyboardModifiers held = Qt::NoModifier) const {
    const QPointF at(10, y);
    const bool released = type == QEvent::MouseButtonRelease;
    const bool moved = type == QEvent::MouseMove;
    QMouseEvent event(type, at, widget->mapToGlobal(at), moved ? Qt::NoButton : button,
                      released ? Qt::NoButton : button, held);
    QApplication::sendEvent(widget, &event);
  }

  OrlWindow dialog;
};

char Lower(char c) {
  return c < 'a' ? static_cast<char>(c + 'a' - 'A') : c;
}
std::string Lower(std::string text) {
  for (char &c : text) c = Lower(c);
  return text;
}

// A list as its rows and the current one: what each message must return, -1 for a row that does not
// exist.
struct PlainList {
  struct Row {
    std::string text;
    intptr_t data;
  };
  bool sorted;
  std::vector<Row> rows = {};
  intptr_t current = -1;

  intptr_t Count() const { return static_cast<intptr_t>(rows.size()); }
  bool Has(intptr_t row) const { return row >= 0 && row < Count(); }
  const Row &At(intptr_t row) const { return rows[static_cast<size_t>(row)]; }

  intptr_t Add(const std::string &text) {
    intptr_t place = Count();
    while (sorted && place > 0 && Lower(At(place - 1).text) > Lower(text)) --place;
    return Insert(place, text);
  }
  intptr_t Insert(intptr_t row, const std::string &text) {
    if (row > Count()) return -1;
    const intptr_t place = row == -1 ? Count() : row;
    rows.insert(rows.begin() + place, {text, 0});
    current += current >= place ? 1 : 0;
    return place;
  }
  intptr_t Delete(intptr_t row) {
    if (!Has(row)) return -1;
    rows.erase(rows.begin() + row);
    current = current == row ? -1 : current - (current > row ? 1 : 0);
    return Count();
  }
  intptr_t Select(intptr_t row) {
    if (Has(row) || row == -1) current = row;
    return Has(row) ? row : -1;
  }
  intptr_t Find(intptr_t previous, const std::string &prefix) const {
    const intptr_t start = Has(previous) ? previous + 1 : 0;
    for (intptr_t row = start; row < start + Count(); ++row) {
      if (Lower(At(row % Count()).text).rfind(Lower(prefix), 0) == 0) return row % Count();
    }
    return -1;
  }
  intptr_t SetData(intptr_t row, intptr_t data) {
    if (Has(row)) rows[static_cast<size_t>(row)].data = data;
    return Has(row) ? 1 : -1;
  }
};

TEST_F(QtList, MessagesAgreeWithAModel) {
  std::mt19937 random(20240607);
  const auto below = [&](intptr_t end) {
    return static_cast<intptr_t>(random() % static_cast<uint64_t>(end));
  };
  for (const int32_t id : {kPlain, kSorted}) {
    PlainList model = {id == kSorted};
    WidgetOf(id)->setFocus();
    for (int step = 0; step < 4000 && !HasFailure(); ++step) {
      const intptr_t row = below(model.Count() + 3) - 1;  // may be one that does not exist
      std::string text;
      for (intptr_t left = below(4); left > 0; --left) text += "abcABC"[below(6)];
      SCOPED_TRACE("list " + std::to_string(id) + " step " + std::to_string(step) + " row " +
                   std::to_string(row) + " of " + std::to_string(model.Count()) + " '" + text +
                   "'");
      const auto send = [&](uint32_t message, const void *data = nullptr) {
        return Message(id, message, row, data);
      };
      const bool exists = model.Has(row);
      switch (below(9)) {
        case 0: {
          const uint32_t message = below(2) == 0 ? ORL_LB_ADDSTRING : ORL_CB_ADDSTRING;
          EXPECT_EQ(model.Add(text), Message(id, message, 0, text.c_str()));
          break;
        }
        case 1:  // not in a sorted list, which must remain sorted
          if (id == kPlain) {
            EXPECT_EQ(model.Insert(row, text), send(ORL_LB_INSERTSTRING, text.c_str()));
          }
          break;
        case 2:
          EXPECT_EQ(model.Delete(row), send(ORL_LB_DELETESTRING));
          break;
        case 3:
          EXPECT_EQ(model.Select(row), send(ORL_LB_SETCURSEL));
          break;
        case 4:
          EXPECT_EQ(model.Find(row, text), send(ORL_LB_FINDSTRING, text.c_str()));
          break;
        case 5:
          EXPECT_EQ(model.SetData(row, step),
                    send(ORL_LB_SETITEMDATA, reinterpret_cast<void *>(step)));
          break;
        case 6:
          EXPECT_EQ(exists ? 0 : -1, send(ORL_LB_SETTOPINDEX));
          break;
        case 7:
          send(388);  // LB_RESETCONTENT, which no list here knows
          break;
        default:
          QApplication::processEvents();
      }
      EXPECT_EQ(model.current, Message(id, ORL_LB_GETCURSEL, 0));
      ASSERT_EQ(model.Count(), Message(id, ORL_LB_GETCOUNT, 0));
      if (model.Has(row)) {
        EXPECT_EQ(model.At(row).text, RowText(id, row));
        EXPECT_EQ(model.At(row).data, send(ORL_LB_GETITEMDATA));
      }
    }
  }
  QApplication::processEvents();
  EXPECT_TRUE(received.empty()) << received.front();
}

TEST_F(QtList, NotifiesOfTheRowThatTheUserSelects) {
  Fill(kPlain, {"ant", "bee", "Bea", "bea x"});
  QWidget *view = ViewOf(kPlain);
  const int height = static_cast<QAbstractScrollArea *>(WidgetOf(kPlain))->fontMetrics().height();
  const auto mouse = [&](QEvent::Type type, int row, Qt::MouseButton button = Qt::LeftButton,
                         Qt::KeyboardModifiers held = Qt::NoModifier) {
    return [=, this] { Mouse(view, type, row * height + height / 2, button, held); };
  };
  const auto key = [this](int number, const QString &text = {}) {
    return [=, this] { Key(kPlain, number, text); };
  };
  const auto fed = [this](uint32_t message, intptr_t wParam, intptr_t lParam = 0) {
    return [=, this] { Message(kPlain, message, wParam, reinterpret_cast<void *>(lParam)); };
  };
  constexpr auto kPress = QEvent::MouseButtonPress, kRelease = QEvent::MouseButtonRelease;
  const char *const kChange = "10:1", *const kDouble = "10:2";
  const struct {
    const char *what;
    std::function<void()> act;
    intptr_t current;
    std::vector<std::string> notifications;
  } steps[] = {
      {"focus", [this] { table->SetFocus(Item(kPlain)); }, -1, {}},
      {"down from none", key(Qt::Key_Down), 0, {kChange}},
      {"up at the top", key(Qt::Key_Up), 0, {}},
      {"type", key(Qt::Key_B, "b"), 1, {kChange}},
      {"type on", key(Qt::Key_E, "e"), 1, {}},
      {"type on", key(Qt::Key_A, "a"), 2, {kChange}},
      {"blank", key(Qt::Key_Space, " "), 2, {}},
      {"end", key(Qt::Key_End), 3, {kChange}},
      {"page up", key(Qt::Key_PageUp), 0, {kChange}},
      {"program", fed(ORL_LB_SETCURSEL, 1), 1, {}},
      {"press", mouse(kPress, 2), 2, {kChange}},
      {"drag", mouse(QEvent::MouseMove, 1), 1, {kChange}},
      {"drag below", mouse(QEvent::MouseMove, 30), 3, {kChange}},
      {"release", mouse(kRelease, 3), 3, {}},
      {"move", mouse(QEvent::MouseMove, 0), 3, {}},
      {"press again with Control", mouse(kPress, 3, Qt::LeftButton, Qt::ControlModifier), 3, {}},
      {"double", mouse(QEvent::MouseButtonDblClick, 3), 3, {kDouble}},
      {"right", mouse(kPress, 1, Qt::RightButton), 3, {}},
      {"double on another", mouse(QEvent::MouseButtonDblClick, 0), 0, {kChange, kDouble}},
      {"delete it", fed(ORL_LB_DELETESTRING, 0), -1, {}},
      {"press below", mouse(kPress, 3), -1, {}},
      {"double below", mouse(QEvent::MouseButtonDblClick, 3), -1, {}},
      {"fed press", fed(ORL_WM_LBUTTONDOWN, 0, 5 | intptr_t{height} << 16), 1, {kChange}},
      {"fed press above", fed(ORL_WM_LBUTTONDOWN, 0, 0xFFFF0005), 1, {}},
      {"screen reader",
       [this] {
         auto *list = static_cast<QAbstractItemView *>(WidgetOf(kPlain));
         list->selectionModel()->select(list->model()->index(0, 0),
                                        QItemSelectionModel::ClearAndSelect);
       },
       0,
       {kChange}},
      {"fed key", fed(ORL_WM_KEYDOWN, ORL_VK_DOWN), 1, {kChange}},
  };
  ASSERT_GT(view->height() / height, 4) << "all rows and one more are in view";
  ASSERT_EQ(0, view->height() % height) << "rows are whole";
  QApplication::setKeyboardInputInterval(3'600'000);
  for (const auto &step : steps) {
    received.clear();
    step.act();
    QApplication::processEvents();
    EXPECT_EQ(step.current, Message(kPlain, ORL_LB_GETCURSEL, 0)) << step.what;
    EXPECT_EQ(step.notifications, received) << step.what;
  }
}

TEST_F(QtList, ShowsWholeRowsAndTheCurrentOne) {
  Fill(kDrawn, {"a", "b", "c", "d"});
  Message(kDrawn, ORL_LB_SETCURSEL, 2);
  const auto *view = static_cast<QAbstractItemView *>(WidgetOf(kDrawn));
  const int frame = WidgetOf(kDrawn)->height() - ViewOf(kDrawn)->height();
  const struct {
    int height, rows;
  } moves[] = {{3 * kRowHeight, 3}, {4 * kRowHeight - 1, 3}, {0, 1}, {-9, 1}};
  for (const auto &move : moves) {
    table->MoveWindow(Item(kDrawn), 5, 6, 70, move.height);
    OrlRect rect;
    table->GetWindowRect(Item(kDrawn), &rect);
    EXPECT_EQ(frame + move.rows * kRowHeight, rect.bottom - rect.top) << move.height;
    EXPECT_EQ(70, rect.right - rect.left);
    EXPECT_TRUE(view->viewport()->rect().contains(view->visualRect(view->currentIndex())))
        << move.height;
  }
}

// The colour at the right end of a row that is in view, beyond its text.
QColor ColorOfRow(QWidget *view, const QPalette &palette, int row) {
  view->parentWidget()->setPalette(palette);
  const QImage shown = view->grab().toImage();
  return shown.pixelColor(view->width() - 9, row * kRowHeight + 5);  // beside text and frame
}

// But for the frame of the focus, which shines through.
bool IsNear(const QColor &left, const QColor &right) {
  return std::abs(left.red() - right.red()) + std::abs(left.green() - right.green()) +
             std::abs(left.blue() - right.blue()) <
         60;
}

TEST_F(QtList, RowsShowWhatTheDialogDraws) {
  void *bitmap = table->LoadBitmap(FindBitmap("RANGEL"));
  ASSERT_NE(nullptr, bitmap);
  const OrlRect text = {20, 0, 400, kRowHeight};
  int drawings = 0;
  OrlDrawItem last = {};
  draw = [&](const OrlDrawItem &item) {
    ++drawings;
    last = item;
    OrlRect rect = {text.left, item.rect.top, item.rect.right, item.rect.bottom};
    table->DrawBitmap(item.surface, bitmap, 1, item.rect.top + 2);
    table->DrawBitmap(item.surface, &drawings, 7, 7);  // no bitmap
    table->DrawText(item.surface, RowText(kDrawn, item.row).c_str(), &rect);
    if ((item.state & ORL_STATE_SELECTED) != 0) table->InvertRect(item.surface, &rect);
    if ((item.state & ORL_STATE_FOCUS) != 0) table->DrawFocusRect(item.surface, &item.rect);
  };
  for (int row = 0; row < 1000; ++row) Message(kDrawn, ORL_LB_INSERTSTRING, -1, "row");
  Message(kDrawn, ORL_LB_SETITEMDATA, 1, reinterpret_cast<void *>(77));
  Message(kDrawn, ORL_LB_SETCURSEL, 1);
  QWidget *view = ViewOf(kDrawn);
  EXPECT_EQ(0, drawings);
  for (QPalette palette : {QPalette(Qt::white), QPalette(QColor(50, 50, 50))}) {
    drawings = 0;
    palette.setColor(QPalette::Highlight, Qt::green);
    // The full colour is for the list that has the focus.
    const QColor base = palette.color(QPalette::Base);
    const QColor pale = ColorOfRow(view, palette, 1);
    EXPECT_NE(base, pale);
    EXPECT_FALSE(IsNear(Qt::green, pale));
    EXPECT_EQ(base, ColorOfRow(view, palette, 0));
    EXPECT_EQ(2 * (view->height() / kRowHeight), drawings) << "rows in view, twice";
    view->setFocus();
    ASSERT_TRUE(QTest::qWaitFor([view] { return view->hasFocus(); }, kPatience));
    EXPECT_TRUE(IsNear(Qt::green, ColorOfRow(view, palette, 1)));
    QApplication::focusWidget()->clearFocus();
  }

  qt_windows::Control *list = qt_windows::FindControl(Item(kDrawn));
  DrawnRow drawn;
  ASSERT_TRUE(DrawRowOf(list, 1, ORL_DRAW_ENTIRE, ORL_STATE_SELECTED | ORL_STATE_FOCUS, &drawn));
  EXPECT_EQ(77, last.data);
  EXPECT_EQ(Item(kDrawn), last.list);
  EXPECT_EQ(QRect(0, kRowHeight, view->width(), kRowHeight), drawn.row);
  EXPECT_EQ("rangel", drawn.picture.name.toLower());
  EXPECT_EQ(QPoint(1, kRowHeight + 2), drawn.pictureAt);
  EXPECT_EQ("row", drawn.text);
  EXPECT_TRUE(drawn.inverted && drawn.focused);
  EXPECT_EQ(drawn.textRect, drawn.invertedRect);
  table->InvertRect(last.surface, &text);  // its drawing is over
  EXPECT_EQ(drawn.textRect, drawn.invertedRect);
  EXPECT_FALSE(DrawRowOf(list, 1000, ORL_DRAW_ENTIRE, 0, &drawn));
  EXPECT_FALSE(DrawRowOf(list, -1, ORL_DRAW_FOCUS, 0, &drawn)) << "not empty";
  table->DeleteBitmap(bitmap);
}

TEST_F(QtList, DrawingOpensNoDialogAndMayDeleteRows) {
  for (int row = 0; row < 1000; ++row) Message(kDrawn, ORL_LB_INSERTSTRING, -1, "row");
  QApplication::processEvents();
  QWidget *view = ViewOf(kDrawn);
  int drawings = 0;
  intptr_t answers = 0;
  draw = [&](const OrlDrawItem &) {
    ++drawings;
    answers += table->MessageBox(dialog, "text", "caption", ORL_MB_OK);
    answers += table->DialogBoxParam(&kTemplate, dialog, Procedure, 0) + 1;
  };
  view->grab();
  EXPECT_GT(drawings, 0);
  EXPECT_EQ(0, answers);
  draw = [&](const OrlDrawItem &) {
    while (Message(kDrawn, ORL_LB_DELETESTRING, 0) > 0) {
    }
  };
  view->grab();
  EXPECT_EQ(0, Message(kDrawn, ORL_LB_GETCOUNT, 0));
}

// Whole in the rows of a small font, larger in those of a large one.
TEST_F(QtList, PicturesOfRowsFollowTheFont) {
  QImage image(14, 10, QImage::Format_ARGB32);
  image.fill(Qt::gray);
  for (int x = 0; x < image.width(); ++x) {
    image.setPixelColor(x, 0, Qt::red);
    image.setPixelColor(x, 9, Qt::blue);
  }
  const std::pair<int, int> rows[] = {{6, 4}, {10, 10}, {14, 10}, {30, 21}};
  for (const auto &[height, expected] : rows) {
    DrawnRow drawn;
    drawn.row = QRect(0, 0, 60, height);
    drawn.picture = {"", image, image};
    drawn.pictureAt = QPoint(1, (height - image.height()) / 2);
    drawn.textRect = QRect(32, 0, 20, height);
    QStyleOptionViewItem option;
    option.widget = ViewOf(kDrawn);
    option.state = QStyle::State_Enabled;
    QImage painted(drawn.row.size(), QImage::Format_ARGB32);
    painted.fill(Qt::white);
    QPainter painter(&painted);
    PaintDrawnRow(&painter, option, drawn);
    std::vector<QColor> column;
    for (int y = 0; y < height; ++y) {
      if (painted.pixelColor(4, y) != Qt::white) column.push_back(painted.pixelColor(4, y));
    }
    ASSERT_EQ(expected, column.size()) << height;
    EXPECT_GT(column.front().red(), column.front().blue()) << height;
    EXPECT_LT(column.back().red(), column.back().blue()) << height;
  }
}

TEST_F(QtList, OnlyCompleteBitmapsLoad) {
  const OrlBitmap good = *FindBitmap("setl");
  const struct {
    const char *what;
    OrlBitmap bitmap;
  } rows[] = {
      {"other width", {"", good.file, good.fileSize, good.width + 1, good.height}},
      {"other height", {"", good.file, good.fileSize, good.width, -good.height}},
      {"half a header", {"", good.file, 30, good.width, good.height}},
      {"nothing", {"", good.file, 0, good.width, good.height}},
      {"no file", {"", nullptr, good.fileSize, good.width, good.height}},
      {"no BMP", {"", good.file + 1, good.fileSize - 1, good.width, good.height}},
  };
  for (const auto &row : rows) EXPECT_EQ(nullptr, table->LoadBitmap(&row.bitmap)) << row.what;
  const qt_windows::Picture picture = qt_windows::PictureOf(good, qRgb(0xC0, 0xC0, 0xC0));
  EXPECT_EQ(0, picture.onLight.pixelColor(0, 0).alpha());
  EXPECT_EQ(QColor(0, 0, 128), picture.onLight.pixelColor(3, 0));
  EXPECT_GT(picture.onDark.pixelColor(3, 0).lightness(), 150);
}

TEST_F(QtList, OptionsAreMarkedByTheDialogAlone) {
  auto *option = static_cast<QAbstractButton *>(WidgetOf(kOption));
  const QImage plain = option->grab().toImage();
  Mouse(option, QEvent::MouseButtonPress, 3);
  Mouse(option, QEvent::MouseButtonRelease, 3);
  Key(kOption, Qt::Key_Space, " ");
  option->toggle();  // by a screen reader, which does not wait
  EXPECT_EQ(2U, received.size());
  QApplication::processEvents();
  EXPECT_EQ((std::vector<std::string>{"13:0", "13:0", "13:0"}), received);
  EXPECT_FALSE(option->isChecked());

  table->CheckRadioButton(dialog, kOption, kOther, kOption);
  EXPECT_TRUE(option->isChecked());
  EXPECT_NE(plain, option->grab().toImage());
  table->CheckRadioButton(dialog, kOption, kOther, kOther);
  EXPECT_FALSE(option->isChecked());
  EXPECT_TRUE(static_cast<QAbstractButton *>(WidgetOf(kOther))->isChecked());
  EXPECT_EQ(3U, received.size());

  const struct {
    const char *caption, *shown;
  } rows[] = {{"&Set|set|0x00c0c0c0", "&Set"},
              {"A|nothing|0", "A"},
              {"One|two", "One|two"},
              {"", ""},
              {"|||", "|||"},
              {"||", ""}};
  for (const auto &row : rows) {
    table->SetWindowText(Item(kOption), row.caption);
    char text[30];
    table->GetWindowText(Item(kOption), text, sizeof(text));
    EXPECT_STREQ(row.caption, text);
    EXPECT_EQ(row.shown, option->text().toStdString()) << row.caption;
    option->grab();
  }
}

}  // namespace
