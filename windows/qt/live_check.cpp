#include "windows/qt/live_check.h"

#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <algorithm>

#include "windows/qt/colors.h"
#include "windows/qt/text_map.h"
#include "windows/qt/text_scan.h"

namespace qt_windows {

namespace {

constexpr int kDelay = 400;  // milliseconds after the last key

// The positions of the arguments in a signature: between its first bracket and the commas after it.
Piece ArgumentOf(QStringView signature, int argument) {
  qsizetype start = signature.indexOf(u'(') + 1;
  if (start == 0) {
    return {};
  }
  int number = 0;
  for (qsizetype at = start; at <= signature.size(); ++at) {
    const QChar here = at < signature.size() ? signature[at] : QChar(u')');
    if (here == u',' || here == u')') {
      if (number == argument || (here == u')' && number > 0 && signature.contains(u"..."))) {
        return {start, at};
      }
      ++number;
      start = at + 1;
    }
    if (here == u')') {
      break;
    }
  }
  return {};
}

QTextEdit::ExtraSelection MarkOf(const QPlainTextEdit *lines, Piece place) {
  QTextEdit::ExtraSelection selection;
  selection.cursor = QTextCursor(lines->document());
  selection.cursor.setPosition(static_cast<int>(place.start));
  selection.cursor.setPosition(static_cast<int>(place.end), QTextCursor::KeepAnchor);
  return selection;
}

}  // namespace

// A separate line at the bottom of the text.
class LiveCheck::StripWidget : public QWidget {
 public:
  explicit StripWidget(QPlainTextEdit *lines) : QWidget(lines) { setCursor(Qt::ArrowCursor); }

  QString signature, message;
  Piece argument;
  bool isFault = false;

  QSize sizeHint() const override { return {1, fontMetrics().height() + 3}; }

 protected:
  void paintEvent(QPaintEvent * /*event*/) override {
    constexpr int kMargin = 4;
    constexpr int kGap = 12;
    QPainter painter(this);
    painter.fillRect(rect(),
                     Mixed(palette().color(QPalette::Base), palette().color(QPalette::Text), 6));
    // The visible part of it in a window that scrolls.
    QRect place = rect() & visibleRegion().boundingRect();
    place.adjust(kMargin, 1, -kMargin, 0);
    const int wanted = fontMetrics().horizontalAdvance(message);
    Parts parts = WholeSignature();
    parts = WidthOf(parts) + kGap + wanted <= place.width() ? parts : BriefSignature();
    const int most =
        std::min(place.width(), std::max(place.width() / 2, place.width() - WidthOf(parts) - kGap));
    const QString elided = fontMetrics().elidedText(message, Qt::ElideRight, most);
    painter.setPen(isFault ? FaultColor(palette()) : palette().color(QPalette::Text));
    painter.drawText(place, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, elided);
    place.setRight(place.right() - fontMetrics().horizontalAdvance(elided) - kGap);
    painter.setPen(palette().color(QPalette::Text));
    PaintSignature(&painter, place, parts);
  }

 private:
  // A signature, divided at the current argument, which is shown in bold.
  struct Parts {
    QString before, present, after;
  };

  Parts WholeSignature() const {
    return {signature.left(argument.start),
            signature.mid(argument.start, argument.end - argument.start),
            signature.mid(argument.end)};
  }
  // The same with the current argument alone.
  Parts BriefSignature() const {
    if (argument.IsEmpty()) {
      return WholeSignature();
    }
    const Parts whole = WholeSignature();
    const qsizetype first = signature.indexOf(u'(') + 1;
    const bool isLast = whole.after.startsWith(u')');
    return {
        signature.left(first) + (argument.start > first ? QStringLiteral("\u2026, ") : QString()),
        whole.present.trimmed(), isLast ? QStringLiteral(")") : QStringLiteral(", \u2026)")};
  }

  QFont Bold() const {
    QFont bold = font();
    bold.setBold(true);
    return bold;
  }
  int WidthOf(const Parts &parts) const {
    return fontMetrics().horizontalAdvance(parts.before + parts.after) +
           QFontMetrics(Bold()).horizontalAdvance(parts.present);
  }

  // Scrolls the current argument into view.
  void PaintSignature(QPainter *painter, QRect place, const Parts &parts) const {
    const int lead = fontMetrics().horizontalAdvance(parts.before);
    const int width = QFontMetrics(Bold()).horizontalAdvance(parts.present);
    painter->setClipRect(place);
    place.translate(std::min(0, place.width() - lead - width), 0);
    const int flags = Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextDontClip;
    painter->drawText(place, flags, parts.before);
    painter->setFont(Bold());
    painter->drawText(place.translated(lead, 0), flags, parts.present);
    painter->setFont(font());
    painter->drawText(place.translated(lead + width, 0), flags, parts.after);
  }
};

LiveCheck::LiveCheck(Edit *edit, QPlainTextEdit *lines, const OrlTextAid *aid)
    : QObject(lines), edit_(edit), lines_(lines), aid_(aid), strip_(new StripWidget(lines)) {
  later_.setSingleShot(true);
  later_.setInterval(kDelay);
  soon_.setSingleShot(true);
  soon_.setInterval(0);
  const auto refresh = [this] { soon_.start(); };
  connect(&later_, &QTimer::timeout, this, [this] { Check(); });
  connect(&soon_, &QTimer::timeout, this, [this] { Refresh(); });
  connect(lines, &QPlainTextEdit::textChanged, &later_, [this] { later_.start(); });
  connect(lines, &QPlainTextEdit::textChanged, this, refresh);
  connect(lines, &QPlainTextEdit::cursorPositionChanged, this, refresh);
  connect(lines->verticalScrollBar(), &QScrollBar::valueChanged, this, refresh);
  connect(edit->dialog->area->horizontalScrollBar(), &QScrollBar::valueChanged, strip_,
          [this] { strip_->update(); });
  lines->installEventFilter(this);
  strip_->show();
  later_.start();
  soon_.start();
}

QWidget *LiveCheck::Strip() const {
  return strip_;
}

bool LiveCheck::eventFilter(QObject * /*watched*/, QEvent *event) {
  if (event->type() == QEvent::Resize || event->type() == QEvent::PaletteChange) {
    soon_.start();
  }
  return false;
}

bool LiveCheck::IsPlaceholder(const QByteArray &text, const OrlTextState &state) const {
  int32_t start = 0;
  int32_t end = 0;
  return aid_->FindPlaceholder != nullptr &&
         aid_->FindPlaceholder(text.constData(), state.start, &start, &end) != 0 &&
         start <= state.start && state.end <= end;
}

void LiveCheck::Check() {
  if (aid_->Check == nullptr || FindControl(edit_->window) != edit_) {
    return;
  }
  const Hold hold(edit_->dialog);
  const QString shown = edit_->Shown();
  const QByteArray text = BytesOfText(shown, edit_->textKind);
  OrlTextState state = {};
  const bool isThere = aid_->Check(text.constData(), &state) != 0;
  const bool isOpen = isThere && state.error != 0 && IsPlaceholder(text, state);
  fault_ = QTextCursor();
  if (isThere && state.error != 0 && !isOpen) {
    // An error at a position has no bytes: the character before it is marked.
    Piece fault = {PositionOfByte(shown, state.start, edit_->textKind),
                   PositionOfByte(shown, state.end, edit_->textKind)};
    fault.start -= fault.IsEmpty() && fault.start > 0 ? 1 : 0;
    fault_ = MarkOf(lines_, fault).cursor;
  }
  strip_->isFault = isThere && state.error != 0 && !isOpen;
  strip_->message = !isThere ? QString()
                    : isOpen ? QStringLiteral("to be filled in")
                             : CaptionText(state.message);
  strip_->setToolTip(PlainTip(strip_->message));
  strip_->setAccessibleDescription(strip_->message);
  lines_->setAccessibleDescription(strip_->message);
  Refresh();
  if (checked) {
    checked(isThere ? text : QByteArray(), state);
  }
}

QString LiveCheck::SignatureOf(QStringView function) const {
  char description[512] = "";
  const QByteArray name = BytesOfText(function, TextKind::OneLine);
  for (const int32_t *list = aid_->lists; list != nullptr && *list != 0; ++list) {
    if (aid_->Describe != nullptr &&
        aid_->Describe(*list, name.constData(), description, sizeof description) != 0) {
      QString line = CaptionText(QByteArray(description).split('\n').first().constData());
      if (line.startsWith(function.toString() + u'(')) {
        return line;
      }
    }
  }
  return {};
}

void LiveCheck::Refresh() {
  const QString shown = edit_->Shown();
  const qsizetype caret = edit_->Selected().caret;
  const Call call = CallAround(shown, caret);
  strip_->signature = call.name.isEmpty() ? QString() : SignatureOf(call.name);
  strip_->argument = ArgumentOf(strip_->signature, call.argument);
  strip_->setAccessibleName(strip_->signature);
  strip_->update();
  Mark();
}

void LiveCheck::Mark() {
  const QString shown = edit_->Shown();
  const QPalette palette = lines_->palette();
  const QRect view = lines_->viewport()->rect();
  // Only what is visible: marks take time wherever they are.
  const Piece part = {lines_->cursorForPosition(view.topLeft()).position(),
                      lines_->cursorForPosition(view.bottomRight()).position() + 1};
  QList<QTextEdit::ExtraSelection> marks;
  for (const Piece &quoted : QuotedBetween(shown, part)) {
    marks.push_back(MarkOf(lines_, {std::max(quoted.start, part.start),
                                    std::min({quoted.end, part.end, shown.size()})}));
    marks.back().format.setForeground(QuotedColor(palette));
  }
  const BracketPair brackets = BracketsAt(shown, edit_->Selected().caret);
  for (const qsizetype place : {brackets.open, brackets.close}) {
    if (place >= 0) {
      marks.push_back(MarkOf(lines_, {place, place + 1}));
      const QColor mark = palette.color(QPalette::Active, QPalette::Highlight);
      marks.back().format.setBackground(Mixed(palette.color(QPalette::Base), mark, 45));
    }
  }
  if (!fault_.isNull() && fault_.hasSelection()) {
    QTextEdit::ExtraSelection fault;
    fault.cursor = fault_;
    fault.format.setUnderlineStyle(QTextCharFormat::WaveUnderline);
    fault.format.setUnderlineColor(FaultColor(palette));
    marks.push_back(fault);
  }
  lines_->setExtraSelections(marks);
}

}  // namespace qt_windows
