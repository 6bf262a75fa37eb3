// Option buttons: a picture above a caption, painted as a button that stays down when it is
// checked.
#include <QPainter>
#include <QRadioButton>
#include <QStyleOption>
#include <algorithm>

#include "resources/bitmaps.h"
#include "windows/qt/messenger.h"
#include "windows/qt/pictures.h"
#include "windows/qt/text_map.h"

namespace qt_windows {

namespace {

constexpr int kMargin = 4;

QFont Bold(QFont font) {
  font.setBold(true);
  return font;
}

class OptionWidget : public Messenger<QRadioButton> {
 public:
  OptionWidget(Control *control, QWidget *parent) : Messenger(control, parent) {
    // A screen reader may check a button without pressing it: that counts as a press.
    connect(this, &QRadioButton::toggled, this, [this](bool checked) {
      if (checked != marked_) {
        Mark(marked_);
        // Posted: the press may open a dialog, and the screen reader must not wait for that.
        QMetaObject::invokeMethod(
            this, [this] { click(); }, Qt::QueuedConnection);
      }
    });
  }

  // The dialog unchecks the others; they are exclusive only for screen readers, which then report
  // radio buttons.
  void Mark(bool marked) {
    marked_ = marked;
    setAutoExclusive(false);
    setChecked(marked);
    setAutoExclusive(true);
  }
  void ShowPicture(const Picture &picture) {
    picture_ = picture;
    updateGeometry();
    update();
  }

  QSize sizeHint() const override {
    const QFontMetrics metrics(Bold(font()));
    const QSize caption = metrics.size(Qt::TextShowMnemonic, text());
    const int picture = picture_.onLight.isNull() ? 0 : 24;
    return {std::max(caption.width(), picture) + 2 * kMargin,
            caption.height() + picture + 2 * kMargin};
  }
  QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  // The dialog checks it, not the press.
  void nextCheckState() override {}
  bool hitButton(const QPoint &point) const override { return rect().contains(point); }

  void paintEvent(QPaintEvent * /*event*/) override {
    QPainter painter(this);
    QStyleOptionButton button;
    button.initFrom(this);
    const bool sunken = isDown() || isChecked();
    button.state |= sunken ? QStyle::State_Sunken : QStyle::State_Raised;
    button.state |= isChecked() ? QStyle::State_On : QStyle::State_Off;
    style()->drawPrimitive(QStyle::PE_PanelButtonCommand, &button, &painter, this);
    if (isChecked()) {
      PaintMark(&painter);
    }
    const QRect inner = rect().adjusted(kMargin, kMargin, -kMargin, -kMargin);
    painter.setFont(isChecked() ? Bold(font()) : font());
    const int line = painter.fontMetrics().height();
    const bool pictured = !picture_.onLight.isNull();
    const QRect caption = pictured ? inner.adjusted(0, inner.height() - line, 0, 0) : inner;
    PaintCaption(&painter, button, caption);
    if (pictured) {
      PaintPicture(&painter, inner.adjusted(0, 0, 0, -line));
    }
    if (hasFocus()) {
      PaintFocus(&painter);
    }
  }

 private:
  // A thick frame, distinguishable from a thin one without its colour.
  void PaintMark(QPainter *painter) const {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter->drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 2, 2);
    painter->restore();
  }

  void PaintCaption(QPainter *painter, const QStyleOptionButton &button, const QRect &place) const {
    const bool underlined = style()->styleHint(QStyle::SH_UnderlineShortcut, &button, this) != 0;
    const int mnemonic = underlined ? Qt::TextShowMnemonic : Qt::TextHideMnemonic;
    // A caption may extend slightly into the margin before it is truncated.
    const QRect wide = place.adjusted(1 - kMargin, 0, kMargin - 1, 0);
    const QString shown = painter->fontMetrics().elidedText(text(), Qt::ElideRight, wide.width(),
                                                            Qt::TextShowMnemonic);
    style()->drawItemText(painter, wide, Qt::AlignCenter | Qt::TextSingleLine | mnemonic, palette(),
                          isEnabled(), shown, QPalette::ButtonText);
  }

  void PaintPicture(QPainter *painter, const QRect &place) const {
    const QImage &image = ImageOn(palette().color(QPalette::Button), picture_);
    const QSize size = image.size().scaled(place.size(), Qt::KeepAspectRatio);
    if (size.isEmpty()) {
      return;
    }
    const qreal ratio = devicePixelRatioF();
    QImage scaled = image.scaled(size * ratio, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    scaled.setDevicePixelRatio(ratio);
    painter->setOpacity(isEnabled() ? 1 : 0.4);
    painter->drawImage(place.x() + (place.width() - size.width()) / 2,
                       place.y() + (place.height() - size.height()) / 2, scaled);
    painter->setOpacity(1);
  }

  void PaintFocus(QPainter *painter) const {
    QStyleOptionFocusRect focus;
    focus.initFrom(this);
    focus.rect = rect().adjusted(3, 3, -3, -3);
    focus.state |= QStyle::State_KeyboardFocusChange;
    focus.backgroundColor = palette().color(QPalette::Button);
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, painter, this);
  }

  bool marked_ = false;
  Picture picture_;
};

struct Option : Control {
  QByteArray caption;

  QByteArray Text() const override { return caption; }
  void SetText(const char *text) override;
  intptr_t OwnMessage(uint32_t /*message*/, uintptr_t /*wParam*/, intptr_t /*lParam*/) override {
    return 0;
  }
};

// The number is 0x00BBGGRR.
QRgb ColorOf(const QByteArray &number) {
  const uint value = number.toUInt(nullptr, 0);
  return qRgb(static_cast<int>(value & 0xFF), static_cast<int>(value >> 8 & 0xFF),
              static_cast<int>(value >> 16 & 0xFF));
}

void Option::SetText(const char *text) {
  caption = text;
  auto *option = static_cast<OptionWidget *>(widget);
  const QList<QByteArray> fields = caption.split('|');
  const OrlBitmap *bitmap = fields.size() == 3 ? FindBitmap(fields[1].constData()) : nullptr;
  option->ShowPicture(bitmap == nullptr ? Picture{} : PictureOf(*bitmap, ColorOf(fields[2])));
  option->setText(CaptionText(fields.size() == 3 ? fields[0].constData() : text));
}

}  // namespace

void MarkOption(Control *option, bool marked) {
  if (option != nullptr && option->kind == ORL_CONTROL_OPTION) {
    static_cast<OptionWidget *>(option->widget)->Mark(marked);
    // The tab key stops once in a group; arrow keys move inside it.
    option->widget->setFocusPolicy(marked ? Qt::StrongFocus : Qt::ClickFocus);
  }
}

Control *NewOption(const OrlControl &row, Dialog *dialog) {
  auto option = std::make_unique<Option>();
  Option *pressed = option.get();
  auto *widget = new OptionWidget(pressed, dialog->client);
  option->dialog = dialog;
  option->kind = row.kind;
  option->style = row.style;
  option->widget = widget;
  option->SetText(row.caption);
  QObject::connect(widget, &QRadioButton::clicked, widget,
                   [pressed] { Notify(pressed, ORL_BN_CLICKED); });
  return option.release();
}

}  // namespace qt_windows
