#include "windows/qt/text_help.h"

#include <algorithm>

#include "windows/qt/text_difference.h"

namespace qt_windows {

TextHelp::TextHelp(Edit *edit, QPlainTextEdit *lines, const OrlTextAid *aid)
    : QObject(lines), edit_(edit), lines_(lines), aid_(aid) {}

bool TextHelp::TakeKey(const QKeyEvent &event) {
  if (event.key() == Qt::Key_Space && event.modifiers() == Qt::ControlModifier) {
    SelectNextPlaceholder();
    return true;
  }
  return false;
}

Stretch TextHelp::PlaceholderFrom(const QString &shown, qsizetype from) const {
  int32_t start = 0;
  int32_t end = 0;
  const TextKind kind = edit_->textKind;
  if (aid_->FindPlaceholder == nullptr ||
      aid_->FindPlaceholder(BytesOfText(shown, kind).constData(), ByteOfPosition(shown, from, kind),
                            &start, &end) == 0) {
    return {};
  }
  return {PositionOfByte(shown, start, kind), PositionOfByte(shown, end, kind)};
}

void TextHelp::SelectNextPlaceholder() {
  const auto [anchor, caret] = edit_->Selected();
  const Stretch found = PlaceholderFrom(edit_->Shown(), std::max(anchor, caret));
  if (found.anchor != found.caret) {
    edit_->Select(found);
    TellSelection(edit_);
  }
}

void TextHelp::SelectRestored(const QString &before) {
  const QString now = edit_->Shown();
  const Difference same = Compare(before, now);
  const qsizetype end = now.size() - same.suffix;
  // What came back may begin inside of the word, as the word in its place began alike.
  const qsizetype line = now.lastIndexOf(u' ', std::max<qsizetype>(0, same.prefix - 1));
  const Stretch found = PlaceholderFrom(now, std::max<qsizetype>(0, line));
  if (same.prefix < end && found.anchor < end && found.caret > same.prefix) {
    edit_->Select(found);
  }
}

void SetTextAid(OrlWindow window, const OrlTextAid *aid) {
  Control *control = FindControl(window);
  if (control != nullptr && aid != nullptr && control->TakeTextAid(aid)) {
    control->dialog->writing = control;
  }
}

void TellSelection(Control *edit) {
  Deliver(edit, ORL_WM_KEYDOWN, kKeyApps, 0, [] {});
}

void GoToText(Dialog *dialog) {
  Control *text = dialog->writing;
  // What has brought the caret there itself has also said what is selected.
  if (text == nullptr || dialog->going || HasEnded(dialog) || text->widget->hasFocus()) {
    return;
  }
  text->widget->setFocus(Qt::OtherFocusReason);
  text->GoOn();
}

}  // namespace qt_windows
