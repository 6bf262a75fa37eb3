// Buttons, labels and frames.
#include <QGroupBox>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QRegion>
#include <QStyle>

#include "windows/qt/messenger.h"
#include "windows/qt/text_map.h"

namespace qt_windows {

namespace {

struct Captioned : Control {
  QByteArray caption;

  QByteArray Text() const override { return caption; }
  void SetText(const char *text) override {
    caption = text;
    Show(CaptionText(text));
  }
  intptr_t OwnMessage(uint32_t /*message*/, uintptr_t /*wParam*/, intptr_t /*lParam*/) override {
    return 0;
  }
  virtual void Show(const QString &text) = 0;
};

// ---- Buttons

// A mnemonic presses at once: Qt would animate the press first, and keys typed after it would be
// handled before it.
class ButtonWidget : public Messenger<QPushButton> {
 public:
  using Messenger::Messenger;

 protected:
  bool event(QEvent *event) override {
    if (event->type() == QEvent::Shortcut && !static_cast<QShortcutEvent *>(event)->isAmbiguous()) {
      click();
      return true;
    }
    return Messenger::event(event);
  }
};

struct Button : Captioned {
  void Show(const QString &text) override {
    static_cast<QPushButton *>(widget)->setText(text);
    widget->setAccessibleName(NameOfSign(text));
  }

 private:
  // Spoken names of signs, for screen readers; empty for words.
  static QString NameOfSign(const QString &caption) {
    constexpr std::pair<const char *, const char *> kSigns[] = {
        {"+", "plus"},         {"-", "minus"},  {"*", "times"},           {"/", "divided by"},
        {"||", "joined with"}, {"%", "modulo"}, {"(...)", "in brackets"}, {".", "point"}};
    for (const auto &[sign, name] : kSigns) {
      if (caption == QLatin1String(sign)) {
        return QString::fromLatin1(name);
      }
    }
    return {};
  }
};

// ---- Labels

class LabelWidget : public QLabel {
 public:
  using QLabel::QLabel;

  // A mnemonic is shown when the label belongs to another control, which is known before it is
  // shown.
  void ShowCaption(const QString &caption) {
    caption_ = caption;
    setText(buddy() == nullptr ? WithoutMarks(caption) : caption);
  }

 protected:
  bool event(QEvent *event) override {
    if (event->type() == QEvent::Show) {
      ShowCaption(caption_);
    }
    // The mnemonic moves the focus to its control and presses nothing.
    if (event->type() == QEvent::Shortcut && buddy() != nullptr) {
      window()->setAttribute(Qt::WA_KeyboardFocusChange);
      TabStop(buddy())->setFocus(Qt::ShortcutFocusReason);
      return true;
    }
    return QLabel::event(event);
  }

 private:
  // In a group of buttons, the one that the tab key reaches.
  static QWidget *TabStop(QWidget *first) {
    QWidget *each = first;
    while (each->focusPolicy() == Qt::ClickFocus && each->nextInFocusChain() != first) {
      each = each->nextInFocusChain();
    }
    return each->focusPolicy() == Qt::ClickFocus ? first : each;
  }

  QString caption_;
};

struct Label : Captioned {
  void Show(const QString &text) override { static_cast<LabelWidget *>(widget)->ShowCaption(text); }

  // A label higher than one line wraps.
  void Place(const QRect &rect) override {
    auto *label = static_cast<LabelWidget *>(widget);
    const bool lines = rect.height() >= 2 * label->fontMetrics().height();
    const bool centered = (style & ORL_STYLE_CENTERED) != 0;
    label->setWordWrap(lines);
    label->setAlignment((centered ? Qt::AlignHCenter : Qt::AlignLeft) |
                        (lines ? Qt::AlignTop : Qt::AlignVCenter));
    label->setGeometry(rect);
  }
};

// ---- Frames

// The caption is drawn on the frame's line, as the templates expect: styles that put it above would
// draw the line through the topmost controls.
class GroupWidget : public QGroupBox {
 public:
  using QGroupBox::QGroupBox;

 protected:
  void paintEvent(QPaintEvent * /*event*/) override {
    constexpr int kIndent = 8;
    constexpr int kGap = 4;
    QPainter painter(this);
    const int height = fontMetrics().height();
    QColor line = palette().color(QPalette::WindowText);
    line.setAlphaF(0.3F);
    // Drawn as four filled rectangles: a line would lose sides at fractional scale factors.
    const QRect frame = rect().adjusted(0, height / 2, 0, 0);
    const QRect inner = frame.adjusted(1, 1, -1, -1);
    for (const QRect &side : QRegion(frame).subtracted(inner)) {
      painter.fillRect(side, line);
    }
    QRect caption(kIndent, 0, fontMetrics().horizontalAdvance(title()) + 2 * kGap, height);
    caption = caption.intersected(rect());
    painter.fillRect(caption, palette().brush(QPalette::Window));
    style()->drawItemText(&painter, caption, Qt::AlignCenter | Qt::TextSingleLine, palette(),
                          isEnabled(), title(), QPalette::WindowText);
  }
};

struct Group : Captioned {
  void Show(const QString &text) override {
    static_cast<QGroupBox *>(widget)->setTitle(WithoutMarks(text));
  }
};

void FillIn(Control *control, const OrlControl &row, Dialog *dialog, QWidget *widget) {
  control->dialog = dialog;
  control->kind = row.kind;
  control->style = row.style;
  control->widget = widget;
  control->SetText(row.caption);
}

}  // namespace

Control *NewButton(const OrlControl &row, Dialog *dialog) {
  auto button = std::make_unique<Button>();
  Button *pressed = button.get();
  auto *widget = new ButtonWidget(pressed, dialog->client);
  FillIn(pressed, row, dialog, widget);
  widget->setAutoDefault(true);
  widget->setDefault((row.style & ORL_STYLE_DEFAULT) != 0);
  QObject::connect(widget, &QPushButton::clicked, widget, [pressed] {
    const Hold hold(pressed->dialog);
    if (pressed->id != ORL_ID_CANCEL || MayDiscard(pressed->dialog)) {
      Notify(pressed, ORL_BN_CLICKED);
    }
    GoToText(pressed->dialog);
  });
  return button.release();
}

Control *NewLabel(const OrlControl &row, Dialog *dialog) {
  auto label = std::make_unique<Label>();
  auto *widget = new LabelWidget(dialog->client);
  widget->setTextFormat(Qt::PlainText);
  FillIn(label.get(), row, dialog, widget);
  return label.release();
}

// The controls inside the frame are its siblings, and are reached through it.
Control *NewGroup(const OrlControl &row, Dialog *dialog) {
  auto group = std::make_unique<Group>();
  auto *widget = new GroupWidget(dialog->client);
  widget->setAttribute(Qt::WA_TransparentForMouseEvents);
  FillIn(group.get(), row, dialog, widget);
  return group.release();
}

}  // namespace qt_windows
