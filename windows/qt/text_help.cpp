#include "windows/qt/text_help.h"

#include <algorithm>

#include "windows/qt/text_difference.h"

namespace qt_windows {

TextHelp::TextHelp(Edit *edit, QPlainTextEdit *lines, const OrlTextAid *aid)
    : QObject(lines),
      edit_(edit),
      aid_(aid),
      check_(new LiveCheck(edit, lines, aid)),
      completion_(new Completion(edit, lines, aid)),
      preview_(HasPreview() ? new Preview(edit, aid) : nullptr) {
  check_->checked = [this](const QByteArray &text, const OrlTextState &state) {
    if (preview_ != nullptr) {
      preview_->Follow(text, state);
    }
  };
}

const char *TextHelp::HelpPath(int32_t *context) const {
  *context = 0;
  return aid_->HelpPath == nullptr ? "" : aid_->HelpPath(context);
}

bool TextHelp::TakeTab() {
  return completion_->TakeTab();
}

void TextHelp::KeyTaken(const QKeyEvent &event) {
  const OrlEditorHost *host = GetEditorHost();
  if (host != nullptr && (host->flags & ORL_HOST_UNAIDED) != 0) {
    return;
  }
  const bool types = Types(event);
  const bool erases = event.key() == Qt::Key_Backspace || event.key() == Qt::Key_Delete;
  const bool isModifier = event.key() >= Qt::Key_Shift && event.key() <= Qt::Key_ScrollLock;
  if (types || erases) {
    completion_->Offer();
  } else if (!isModifier) {
    completion_->Hide();
  }
}

QByteArray TextHelp::FunctionAtCaret() const {
  const QString shown = edit_->Shown();
  const qsizetype caret = edit_->Selected().caret;
  const Piece word = WordAt(shown, caret);
  const QStringView call = CallAround(shown, caret).name;
  for (const QStringView name : {QStringView(shown).mid(word.start, word.end - word.start), call}) {
    if (!name.isEmpty() && !check_->SignatureOf(name).isEmpty()) {
      return BytesOfText(name, edit_->textKind);
    }
  }
  return {};
}

bool TextHelp::TakeKey(const QKeyEvent &event) {
  if (completion_->TakeKey(event)) {
    return true;
  }
  if (event.key() == Qt::Key_Space && event.modifiers() == Qt::ControlModifier) {
    SelectNextPlaceholder();
    return true;
  }
  if (event.key() == Qt::Key_F7 && preview_ != nullptr) {
    preview_->Toggle();
    return true;
  }
  return false;
}

Selection TextHelp::PlaceholderFrom(const QString &shown, qsizetype from) const {
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
  const Selection found = PlaceholderFrom(edit_->Shown(), std::max(anchor, caret));
  if (found.anchor != found.caret) {
    edit_->Select(found);
    ReportSelection(edit_);
  }
}

void TextHelp::SelectRestored(const QString &before) {
  const QString now = edit_->Shown();
  const Difference same = Compare(before, now);
  const qsizetype end = now.size() - same.suffix;
  // The restored text may begin inside the word, as its replacement had the same first letters.
  const qsizetype line = now.lastIndexOf(u' ', std::max<qsizetype>(0, same.prefix - 1));
  const Selection found = PlaceholderFrom(now, std::max<qsizetype>(0, line));
  if (same.prefix < end && found.anchor < end && found.caret > same.prefix) {
    edit_->Select(found);
  }
}

void SetTextAid(OrlWindow window, const OrlTextAid *aid) {
  Control *control = FindControl(window);
  if (control != nullptr && aid != nullptr && control->TakeTextAid(aid)) {
    control->dialog->writing = control;
    for (const int32_t *list = aid->lists; list != nullptr && *list != 0; ++list) {
      Control *rows = ControlById(control->dialog, *list);
      if (rows != nullptr) {
        rows->SetRowAid(aid);
      }
    }
  }
}

void ReportSelection(Control *edit) {
  Deliver(edit, ORL_WM_KEYDOWN, kKeyApps, 0, [] {});
}

void GoToText(Dialog *dialog) {
  Control *text = dialog->writing;
  // Code that moves the caret itself has also set the selection.
  if (text == nullptr || dialog->going || HasEnded(dialog) || text->widget->hasFocus()) {
    return;
  }
  text->widget->setFocus(Qt::OtherFocusReason);
  text->GoOn();
}

}  // namespace qt_windows
