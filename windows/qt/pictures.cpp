// Pictures from bitmaps, and the drawing operations.
#include "windows/qt/pictures.h"

#include <QBuffer>
#include <QImageReader>
#include <QPainter>
#include <QStyle>
#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "windows/qt/text_map.h"

namespace qt_windows {

namespace {

// The background of the bitmaps in rows.
constexpr QRgb kRowGround = 0xFFC0C0C0;
// No row shows more of its text, however long it is.
constexpr qsizetype kMostShown = 1000;

std::vector<std::unique_ptr<Picture>> &LoadedPictures() {
  static std::vector<std::unique_ptr<Picture>> pictures;
  return pictures;
}

auto FindLoaded(const void *bitmap) {
  auto &pictures = LoadedPictures();
  return std::find_if(pictures.begin(), pictures.end(),
                      [bitmap](const auto &each) { return each.get() == bitmap; });
}

// The drawings in progress, the innermost first: a dialog that draws a row may cause others to be
// drawn.
struct Surface {
  DrawnRow *drawn;
  Surface *outer;
};
Surface *innermost = nullptr;

DrawnRow *OpenSurface(const void *surface) {
  const Surface *each = innermost;
  while (each != nullptr && each->drawn != surface) {
    each = each->outer;
  }
  return each == nullptr ? nullptr : each->drawn;
}

QRect RectOf(const OrlRect &rect) {
  // Beyond this nothing is visible, and sums do not overflow.
  const auto near = [](int32_t value) { return std::clamp(value, -1'000'000, 1'000'000); };
  return {QPoint(near(rect.left), near(rect.top)),
          QPoint(near(rect.right) - 1, near(rect.bottom) - 1)};
}

// The same colours with lightness inverted.
QImage WithLightTurned(QImage image) {
  for (int y = 0; y < image.height(); ++y) {
    auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
    for (int x = 0; x < image.width(); ++x) {
      const QColor color = QColor::fromRgba(line[x]).toHsl();
      const int light = 255 - color.lightness();
      line[x] = QColor::fromHsl(color.hslHue(), color.hslSaturation(), light, color.alpha()).rgba();
    }
  }
  return image;
}

}  // namespace

Picture PictureOf(const OrlBitmap &bitmap, QRgb transparent) {
  if (bitmap.file == nullptr || bitmap.fileSize > INT32_MAX) {
    return {};
  }
  const auto size = static_cast<qsizetype>(bitmap.fileSize);
  QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(bitmap.file), size);
  QBuffer file(&bytes);
  QImageReader reader(&file, "BMP");
  reader.setAutoDetectImageFormat(false);
  if (reader.size() != QSize(bitmap.width, bitmap.height)) {
    return {};
  }
  QImage image = reader.read().convertToFormat(QImage::Format_ARGB32);
  for (int y = 0; y < image.height(); ++y) {
    auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
    std::replace(line, line + image.width(), transparent | 0xFF000000, QRgb{0});
  }
  return {bitmap.name, image, WithLightTurned(image)};
}

const QImage &ImageOn(const QColor &ground, const Picture &picture) {
  return ground.lightness() < 128 ? picture.onDark : picture.onLight;
}

bool IsDrawing() {
  return innermost != nullptr;
}

void *LoadBitmapFile(const OrlBitmap *bitmap) {
  if (bitmap == nullptr) {
    return nullptr;
  }
  Picture picture = PictureOf(*bitmap, kRowGround);
  if (picture.onLight.isNull()) {
    return nullptr;
  }
  return LoadedPictures().emplace_back(std::make_unique<Picture>(std::move(picture))).get();
}

void DeleteBitmapHandle(void *bitmap) {
  const auto found = FindLoaded(bitmap);
  if (found != LoadedPictures().end()) {
    LoadedPictures().erase(found);
  }
}

void DrawBitmapAt(void *surface, void *bitmap, int32_t x, int32_t y) {
  DrawnRow *drawn = OpenSurface(surface);
  const auto found = FindLoaded(bitmap);
  if (drawn != nullptr && found != LoadedPictures().end()) {
    drawn->picture = **found;
    drawn->pictureAt = {x, y};
  }
}

void DrawTextIn(void *surface, const char *text, const OrlRect *rect) {
  DrawnRow *drawn = OpenSurface(surface);
  if (drawn != nullptr && rect != nullptr) {
    drawn->text = text;
    drawn->textRect = RectOf(*rect);
  }
}

void InvertIn(void *surface, const OrlRect *rect) {
  DrawnRow *drawn = OpenSurface(surface);
  if (drawn != nullptr && rect != nullptr) {
    drawn->inverted = !drawn->inverted;
    drawn->invertedRect = RectOf(*rect);
  }
}

void DrawFocusIn(void *surface, const OrlRect *rect) {
  DrawnRow *drawn = OpenSurface(surface);
  if (drawn != nullptr && rect != nullptr) {
    drawn->focused = !drawn->focused;
    drawn->focusRect = RectOf(*rect);
  }
}

void DrawItem(const Control &list, OrlDrawItem *item, DrawnRow *drawn) {
  *drawn = {};
  drawn->row = RectOf(item->rect);
  item->surface = drawn;
  Surface surface = {drawn, innermost};
  innermost = &surface;
  Send(list.dialog->window, ORL_WM_DRAWITEM, static_cast<uintptr_t>(list.id),
       reinterpret_cast<intptr_t>(item));
  innermost = surface.outer;
}

// With a font much larger than the picture was drawn for, as large as the space before the text
// allows; with one that is smaller, as high as the row.
QRect PlaceOfPicture(const DrawnRow &drawn, const QSize &size) {
  constexpr double kWorthwhile = 1.4;
  const QRect own(drawn.pictureAt, size);
  const double across = static_cast<double>(drawn.textRect.left() - own.left() - 1) / size.width();
  const double down = static_cast<double>(drawn.row.height() - 2) / size.height();
  const double factor = std::min(across, down);
  if (size.height() <= drawn.row.height() && factor < kWorthwhile) {
    return own;
  }
  QRect place(own.topLeft(), size * factor);
  place.moveTop(drawn.row.top() + (drawn.row.height() - place.height()) / 2);
  return place;
}

QRect RoomOfText(const DrawnRow &drawn, const QStyleOptionViewItem &option) {
  // The same margin as for rows whose text is drawn by the style.
  const QWidget *view = option.widget;
  const int margin = view->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, view) + 1;
  return drawn.textRect.intersected(drawn.row).adjusted(margin, 0, -margin, 0);
}

void PaintDrawnRow(QPainter *painter, const QStyleOptionViewItem &option, const DrawnRow &drawn) {
  const bool enabled = (option.state & QStyle::State_Enabled) != 0;
  const bool active = (option.state & QStyle::State_Active) != 0;
  const QPalette::ColorGroup group = !enabled ? QPalette::Disabled
                                     : active ? QPalette::Active
                                              : QPalette::Inactive;
  const QPalette &palette = option.palette;
  painter->save();
  painter->setClipRect(drawn.row);
  if (drawn.inverted) {
    painter->fillRect(drawn.invertedRect, palette.color(group, QPalette::Highlight));
  }
  if (!drawn.picture.onLight.isNull()) {
    const QImage &image = ImageOn(palette.color(group, QPalette::Base), drawn.picture);
    const QRect place = PlaceOfPicture(drawn, image.size());
    // Pixels stay square when scaled by a whole number.
    const qreal across = place.width() * painter->device()->devicePixelRatioF() / image.width();
    painter->setRenderHint(QPainter::SmoothPixmapTransform, across != std::floor(across));
    painter->setOpacity(enabled ? 1 : 0.5);
    painter->drawImage(place, image);
    painter->setOpacity(1);
  }
  const QRect room = RoomOfText(drawn, option);
  const bool light = drawn.inverted && drawn.invertedRect.intersects(room);
  painter->setPen(palette.color(group, light ? QPalette::HighlightedText : QPalette::Text));
  painter->setFont(option.font);
  const QString text = CaptionText(drawn.text.constData()).left(kMostShown);
  painter->drawText(room, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                    option.fontMetrics.elidedText(text, Qt::ElideRight, room.width()));
  if (drawn.focused) {
    QStyleOptionFocusRect focus;
    focus.QStyleOption::operator=(option);
    focus.rect = drawn.focusRect;
    focus.state |= QStyle::State_KeyboardFocusChange;
    focus.backgroundColor = palette.color(group, light ? QPalette::Highlight : QPalette::Base);
    option.widget->style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, painter,
                                          option.widget);
  }
  painter->restore();
}

}  // namespace qt_windows
