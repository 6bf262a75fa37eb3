// Layout of controls: in dialog units of the actual font, and in enlarged windows.
//
// A window that is larger than its template gives the extra space to controls that can use it. On
// each axis some intervals of the template grow: those that lists share and, vertically, edits that
// scroll. Controls beyond such an interval move with its end; lists, edits and centred labels that
// span it grow with it. Frames and rows of option buttons move as one.
#include <QFontMetricsF>
#include <QScreen>
#include <QStyle>
#include <QVarLengthArray>
#include <algorithm>
#include <cmath>

#include "windows/qt/state.h"
#include "windows/qt/text_map.h"

namespace qt_windows {

namespace {

// From `from` to `to`, exclusive.
struct Interval {
  int from, to;
};
using Intervals = QVarLengthArray<Interval, 8>;

Interval Across(const QRect &rect) {
  return {rect.x(), rect.x() + rect.width()};
}

Interval Down(const QRect &rect) {
  return {rect.y(), rect.y() + rect.height()};
}

bool Scrolls(const Control &control) {
  return control.kind == ORL_CONTROL_EDIT && (control.style & ORL_STYLE_SCROLL_BAR) != 0;
}

// The intersection of overlapping ones.
Intervals Shared(Intervals intervals) {
  std::sort(intervals.begin(), intervals.end(),
            [](const Interval &left, const Interval &right) { return left.from < right.from; });
  Intervals shared;
  for (const Interval &each : intervals) {
    if (!shared.isEmpty() && each.from < shared.back().to) {
      shared.back() = {each.from, std::min(each.to, shared.back().to)};
    } else {
      shared.push_back(each);
    }
  }
  return shared;
}

// One axis of a window: what grows in it, and by how much.
struct Axis {
  Intervals growing;
  int total;  // of what grows
  int extra;  // pixels that the window has more than its template

  // The position to which a position of the template has moved.
  int Moved(int place) const {
    int before = 0;
    for (const Interval &each : growing) {
      before += std::clamp(place, each.from, each.to) - each.from;
    }
    return total == 0
               ? place
               : place +
                     static_cast<int>(std::llround(static_cast<double>(extra) * before / total));
  }
};

Axis NewAxis(Intervals growing, int extra) {
  int total = 0;
  for (const Interval &each : growing) {
    total += each.to - each.from;
  }
  return {std::move(growing), total, std::max(0, extra)};
}

Axis AxisAcross(const Dialog &dialog, int extra) {
  Intervals intervals;
  for (const bool lists : {true, false}) {
    for (const auto &control : dialog.controls) {
      if (lists ? IsList(*control) : intervals.isEmpty() && Scrolls(*control)) {
        intervals.push_back(Across(control->base));
      }
    }
    if (!intervals.isEmpty()) {
      break;
    }
  }
  return NewAxis(Shared(intervals), extra);
}

Axis AxisDown(const Dialog &dialog, int extra) {
  Intervals intervals;
  for (const auto &control : dialog.controls) {
    if (IsList(*control) || Scrolls(*control)) {
      intervals.push_back(Down(control->base));
    }
  }
  return NewAxis(Shared(intervals), extra);
}

// Both axes of the window at its present size.
struct Axes {
  Axis across, down;
};

Axes AxesOf(const Dialog &dialog) {
  const QSize extra = dialog.client->size() - dialog.baseSize;
  return {AxisAcross(dialog, extra.width()), AxisDown(dialog, extra.height())};
}

// What a control that does not grow moves with: the frame around it, its neighbours in a row of
// option buttons, or itself.
QRect MovesWith(const Dialog &dialog, const Control &self) {
  QRect group = self.base;
  for (const auto &control : dialog.controls) {
    const bool frame = control->kind == ORL_CONTROL_GROUP && self.kind != ORL_CONTROL_GROUP &&
                       control->base.contains(self.base.center());
    if (frame) {
      return control->base;
    }
    if (self.kind == ORL_CONTROL_OPTION && control->kind == ORL_CONTROL_OPTION &&
        control->base.top() == self.base.top()) {
      group = group.united(control->base);
    }
  }
  return group;
}

bool GrowsAcross(const Control &control) {
  return IsList(control) || control.kind == ORL_CONTROL_EDIT ||
         (control.kind == ORL_CONTROL_LABEL && (control.style & ORL_STYLE_CENTERED) != 0);
}

QRect PlaceOf(const Control &control, const Axis &across, const Axis &down) {
  const QRect &base = control.base;
  QRect place = base;
  const QRect anchor = MovesWith(*control.dialog, control);
  if (GrowsAcross(control)) {
    place.setLeft(across.Moved(base.left()));
    place.setWidth(across.Moved(base.left() + base.width()) - place.left());
  } else {
    const int middle = anchor.left() + anchor.width() / 2;
    place.moveLeft(base.left() + across.Moved(middle) - middle);
  }
  if (IsList(control) || Scrolls(control)) {
    place.setTop(down.Moved(base.top()));
    place.setHeight(down.Moved(base.top() + base.height()) - place.top());
  } else {
    place.moveTop(base.top() + down.Moved(anchor.top()) - anchor.top());
  }
  return place;
}

// ---- The template in pixels

// The pixels of width that a caption needs on its control; 0 for one that may be truncated or
// wrapped.
double NeededWidth(const Control &control, const OrlControl &row, const QFontMetricsF &font) {
  constexpr double kButtonMargins = 14;
  const bool oneLine = row.height <= 10;
  const QString caption = CaptionText(row.caption);
  if (control.kind == ORL_CONTROL_BUTTON || (control.kind == ORL_CONTROL_LABEL && oneLine)) {
    const double margins = control.kind == ORL_CONTROL_BUTTON ? kButtonMargins : 2;
    const QSizeF size = font.size(Qt::TextShowMnemonic, caption);
    return row.width == 0 || caption.isEmpty() ? 0 : size.width() + margins;
  }
  return 0;
}

// A quarter of the average width, an eighth of the height of the font. Captions that are wider in
// this font than in the template's own make all units wider, by up to half.
void ChooseUnits(Dialog *dialog) {
  constexpr double kWidest = 1.5;
  const QFont font = dialog->widget->font();
  const QFontMetricsF metrics(font);
  const QString letters = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
  const double average = metrics.horizontalAdvance(letters) / static_cast<double>(letters.size());
  dialog->metrics = {qRound(metrics.height()), qRound(metrics.leading()), qRound(average)};
  dialog->unitY = metrics.height() / 8;
  dialog->unitX = average / 4;
  const double limit = dialog->unitX * kWidest;
  for (size_t i = 0; i < dialog->controls.size(); ++i) {
    const OrlControl &row = dialog->model->controls[i];
    const double needed = NeededWidth(*dialog->controls[i], row, metrics);
    if (needed > 0) {
      dialog->unitX = std::min(limit, std::max(dialog->unitX, needed / row.width));
    }
  }
}

// For the client area of a window, without frame and title.
QSize RoomOnScreen(const Dialog &dialog) {
  const QScreen *screen = dialog.widget->screen();
  const QSize frame(10, 2 * dialog.metrics.height);
  return screen == nullptr ? QSize(kLargestWindow, kLargestWindow)
                           : screen->availableGeometry().size() - frame;
}

// A window that is larger than the screen gets a smaller font, down to a readable size.
void ChooseFont(Dialog *dialog) {
  constexpr double kSmallest = 6;
  constexpr double kStep = 0.5;
  const OrlDialogTemplate &model = *dialog->model;
  const Dialog *parent = Find(dialog->parent).dialog;
  if (parent != nullptr) {
    dialog->widget->setFont(parent->widget->font());  // one for all windows of a run
  }
  ChooseUnits(dialog);
  QFont font = dialog->widget->font();
  const QScreen *screen = dialog->widget->screen();
  const auto isTooLarge = [dialog, &model, screen] {
    // Frame and caption, and a hint that needs one more line.
    const int margin = 3 * dialog->metrics.height;
    const QSize room = screen->availableGeometry().size() - QSize(10, margin);
    return model.width * dialog->unitX > room.width() ||
           model.height * dialog->unitY > room.height();
  };
  while (screen != nullptr && isTooLarge() && font.pointSizeF() - kStep >= kSmallest) {
    font.setPointSizeF(font.pointSizeF() - kStep);
    dialog->widget->setFont(font);
    ChooseUnits(dialog);
  }
}

// A list that overlaps a frame in the template ends above it, and so do those beside it.
void TrimLists(Dialog *dialog) {
  constexpr int kGap = 6;
  for (const auto &list : dialog->controls) {
    for (const auto &frame : dialog->controls) {
      const bool under = IsList(*list) && frame->kind == ORL_CONTROL_GROUP &&
                         list->base.intersects(frame->base) && list->base.top() < frame->base.top();
      if (!under) {
        continue;
      }
      for (const auto &other : dialog->controls) {
        if (other != list && IsList(*other) && other->base.bottom() == list->base.bottom()) {
          other->base.setBottom(frame->base.top() - kGap);
        }
      }
      list->base.setBottom(frame->base.top() - kGap);
    }
  }
}

// A text that can be neither changed nor scrolled.
bool IsHint(const Control &control) {
  return control.kind == ORL_CONTROL_EDIT && (control.style & ORL_STYLE_READ_ONLY) != 0 &&
         (control.style & ORL_STYLE_LINES) != 0 && !Scrolls(control);
}

int HeightOfHint(const Control &hint) {
  constexpr int kMargins = 12;
  const QFontMetrics metrics(hint.widget->font());
  const QRect room(0, 0, std::max(1, hint.widget->width() - kMargins), QWIDGETSIZE_MAX);
  const QByteArray text = hint.Text();
  return metrics.boundingRect(room, Qt::TextWordWrap, CaptionText(text.constData())).height() +
         kMargins;
}

}  // namespace

void FitHints(Dialog *dialog) {
  for (const auto &control : dialog->controls) {
    const int height = IsHint(*control) ? HeightOfHint(*control) : 0;
    const int lacking = control->base.top() + height - dialog->baseSize.height();
    if (lacking > 0) {
      control->base.setHeight(height);
      dialog->baseSize.rheight() += lacking;
      ResizeClient(dialog, dialog->client->size() + QSize(0, lacking));
    }
  }
}

void FitTitle(Dialog *dialog) {
  constexpr int kFrame = 120;  // what the frame adds to a title
  const int text = dialog->widget->fontMetrics().horizontalAdvance(dialog->widget->windowTitle());
  const int needed = std::min(text + kFrame, 2 * dialog->baseSize.width());
  if (needed <= dialog->widget->width()) {
    return;
  }
  ResizeClient(dialog, {needed, dialog->client->height()});
  // What was on the screen stays there.
  const QRect screen = dialog->widget->screen()->availableGeometry();
  const int beyond = dialog->widget->frameGeometry().right() - screen.right();
  if (beyond > 0) {
    dialog->widget->move(std::max(screen.left(), dialog->widget->x() - beyond),
                         dialog->widget->y());
  }
}

void MeasureDialog(Dialog *dialog) {
  ChooseFont(dialog);
  const OrlDialogTemplate &model = *dialog->model;
  const auto pixelsX = [dialog](int units) { return qRound(units * dialog->unitX); };
  const auto pixelsY = [dialog](int units) { return qRound(units * dialog->unitY); };
  for (size_t i = 0; i < dialog->controls.size(); ++i) {
    const OrlControl &row = model.controls[i];
    dialog->controls[i]->base =
        QRect(pixelsX(row.x), pixelsY(row.y), pixelsX(row.width), pixelsY(row.height));
  }
  SpaceEvenly(dialog);
  TrimLists(dialog);
  const QSize largest(kLargestWindow, kLargestWindow);
  dialog->baseSize = QSize(pixelsX(model.width), pixelsY(model.height)).boundedTo(largest);
  ResizeClient(dialog, dialog->baseSize);
}

void ResizeClient(Dialog *dialog, const QSize &size) {
  const QSize room = RoomOnScreen(*dialog);
  const int bar = dialog->widget->style()->pixelMetric(QStyle::PM_ScrollBarExtent);
  const auto fitted = [&](QSize wanted) {
    // A scroll bar on one axis takes space on the other.
    if (wanted.height() > room.height()) {
      wanted.rwidth() += bar;
    }
    if (wanted.width() > room.width()) {
      wanted.rheight() += bar;
    }
    return wanted.boundedTo(room);
  };
  dialog->client->setMinimumSize(dialog->baseSize);
  dialog->widget->setMinimumSize(fitted(dialog->baseSize));
  dialog->given = fitted(size.expandedTo(dialog->baseSize));
  dialog->widget->resize(dialog->given);
  dialog->client->resize(size.expandedTo(dialog->baseSize));
  LayoutDialog(dialog);
}

void LayoutDialog(Dialog *dialog) {
  const Axes axes = AxesOf(*dialog);
  for (const auto &control : dialog->controls) {
    control->Place(PlaceOf(*control, axes.across, axes.down));
  }
  AlignLists(dialog);
}

void MoveControl(Control *control, const QRect &rect) {
  // In an enlarged window the template position moves by the control's distance from its intended
  // place: a list may have reduced itself to whole rows.
  const Axes axes = AxesOf(*control->dialog);
  const QRect before = PlaceOf(*control, axes.across, axes.down);
  const QRect moved(control->base.topLeft() + rect.topLeft() - before.topLeft(),
                    control->base.size() + rect.size() - before.size());
  control->base = moved.size().isValid() ? moved : QRect(moved.topLeft(), QSize(0, 0));
  control->Place(rect);
  AlignLists(control->dialog);
}

}  // namespace qt_windows
