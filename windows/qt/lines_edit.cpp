// Edits of several lines.
//
// Text set by the program can be undone by the user, as picking from the lists sets the whole text
// each time: only the difference is replaced, in one step.
#include <QDropEvent>
#include <QPalette>
#include <QPlainTextEdit>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextOption>
#include <algorithm>
#include <cstdlib>

#include "windows/qt/edit.h"
#include "windows/qt/text_difference.h"
#include "windows/qt/text_help.h"

namespace qt_windows {

namespace {

class LinesWidget : public Messenger<QPlainTextEdit> {
 public:
  LinesWidget(Edit *edit, QWidget *parent) : Messenger(edit, parent), edit_(edit) {}

  TextHelp *help = nullptr;  // of an edit with a text aid

  // The selection looks the same without the focus.
  void KeepSelection() {
    if ((edit_->style & ORL_STYLE_KEEP_SELECTION) == 0) {
      return;
    }
    QPalette colors = palette();
    bool differs = false;
    for (const QPalette::ColorRole role : {QPalette::Highlight, QPalette::HighlightedText}) {
      const QColor wanted = colors.color(QPalette::Active, role);
      differs = differs || colors.color(QPalette::Inactive, role) != wanted;
      colors.setColor(QPalette::Inactive, role, wanted);
    }
    if (differs) {
      setPalette(colors);
    }
  }

  // Space below the text for information about it.
  void MakeRoom() {
    setViewportMargins(0, 0, 0, help->Check()->Strip()->sizeHint().height());
    PlaceStrip();
  }

 protected:
  void resizeEvent(QResizeEvent *event) override {
    Messenger::resizeEvent(event);
    PlaceStrip();
  }
  bool focusNextPrevChild(bool next) override {
    return (next && help != nullptr && help->TakeTab()) || Messenger::focusNextPrevChild(next);
  }
  void keyPressEvent(QKeyEvent *event) override {
    if (help != nullptr && help->TakeKey(*event)) {
      event->accept();
      return;
    }
    const Hold hold(edit_->dialog);
    KeyPressed(edit_, event, [this, event] { Press(event); });
    if (help != nullptr && FindControl(edit_->window) == edit_) {
      help->KeyTaken(*event);
    }
  }
  void inputMethodEvent(QInputMethodEvent *event) override {
    TakeInputMethod(edit_, event, [this](QInputMethodEvent *allowed) {
      QPlainTextEdit::inputMethodEvent(allowed);
    });
  }
  void dropEvent(QDropEvent *event) override {
    const auto place = event->position().toPoint();
    const intptr_t point = (place.x() & 0xFFFF) | static_cast<intptr_t>(place.y() & 0xFFFF) << 16;
    Deliver(edit_, ORL_WM_LBUTTONUP, 0, point, [this, event] {
      const OneChange change(edit_);
      QPlainTextEdit::dropEvent(event);
    });
  }
  void contextMenuEvent(QContextMenuEvent *event) override {
    ShowMenu(edit_, createStandardContextMenu(), event->globalPos());
  }
  void changeEvent(QEvent *event) override {
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
      KeepSelection();
    }
  }

  // For the clipboard, and for dragging.
  QMimeData *createMimeDataFromSelection() const override {
    const QTextCursor cursor = textCursor();
    const qsizetype start = cursor.selectionStart();
    return CopyOf(edit_->Shown().mid(start, cursor.selectionEnd() - start), TextKind::Lines);
  }
  bool canInsertFromMimeData(const QMimeData *offered) const override { return HoldsText(offered); }
  void insertFromMimeData(const QMimeData *inserted) override { edit_->Paste(inserted); }

 private:
  void PlaceStrip() {
    if (help != nullptr) {
      const QRect inner = viewport()->geometry();
      QWidget *strip = help->Check()->Strip();
      strip->setGeometry(inner.x(), inner.bottom() + 1, inner.width(), strip->sizeHint().height());
    }
  }

  void Press(QKeyEvent *event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn) {
      edit_->Enter(QStringLiteral("\n"), true);
    } else if (Types(*event)) {
      edit_->Enter(event->text(), true);
    } else {
      const bool isUndo = help != nullptr && event->matches(QKeySequence::Undo);
      const QString before = isUndo ? edit_->Shown() : QString();
      const OneChange change(edit_);
      OwnEvent(event);
      if (isUndo) {
        help->SelectRestored(before);
      }
    }
  }

  Edit *edit_;
};

// Longer words are broken anywhere from the start: Qt would search for the end of the word for each
// of its lines. A no-break blank is part of a word.
constexpr qsizetype kLongWord = 500;

bool HasLongWord(QStringView shown) {
  constexpr QStringView kBreaks = u" \t\u2028\u2029";
  qsizetype start = 0;
  for (qsizetype at = 0; at < shown.size(); ++at) {
    if (kBreaks.contains(shown[at])) {
      start = at + 1;
    } else if (at - start >= kLongWord) {
      return true;
    }
  }
  return false;
}

struct LinesEdit : Edit {
  LinesWidget *lines = nullptr;

  QString Shown() const override { return lines->document()->toRawText(); }

  Selection Selected() const override {
    const QTextCursor cursor = lines->textCursor();
    return {cursor.anchor(), cursor.position()};
  }

  void Select(Selection selection) override {
    QTextCursor cursor = lines->textCursor();
    cursor.setPosition(static_cast<int>(selection.anchor));
    cursor.setPosition(static_cast<int>(selection.caret), QTextCursor::KeepAnchor);
    lines->setTextCursor(cursor);
    lines->ensureCursorVisible();
  }

  // Before a change that may be large.
  void WrapBefore(QStringView shown) const {
    if (HasLongWord(shown)) {
      WrapFor(shown);
    }
  }

  // After a change.
  void WrapFor(QStringView shown) const {
    lines->setWordWrapMode(HasLongWord(shown) ? QTextOption::WrapAnywhere
                                              : QTextOption::WrapAtWordBoundaryOrAnywhere);
  }

  void PutShown(const QString &shown) override {
    WrapBefore(shown);
    const QString before = Shown();
    const auto [prefix, suffix] = Compare(before, shown);
    QTextCursor cursor(lines->document());
    if (prefix + suffix < std::max(before.size(), shown.size())) {
      // Undo moves the caret to the start of the edit block.
      cursor.setPosition(static_cast<int>(before.size() - suffix));
      cursor.beginEditBlock();
      cursor.setPosition(static_cast<int>(prefix));
      cursor.setPosition(static_cast<int>(before.size() - suffix), QTextCursor::KeepAnchor);
      cursor.insertText(shown.mid(prefix, shown.size() - suffix - prefix));
      cursor.endEditBlock();
    }
    cursor.setPosition(0);
    lines->setTextCursor(cursor);
  }

  void Insert(const QString &shown) override {
    const auto [anchor, caret] = Selected();
    WrapBefore(Shown().replace(std::min(anchor, caret), std::abs(caret - anchor), shown));
    QTextCursor cursor = lines->textCursor();
    cursor.insertText(shown);
    lines->setTextCursor(cursor);
    lines->ensureCursorVisible();
  }

  void OwnEvent(QEvent *event) override { lines->OwnEvent(event); }
  void ForgetUndo() override { lines->document()->clearUndoRedoStacks(); }

  bool TakeTextAid(const OrlTextAid *aid) override {
    if (!IsReadOnly() && lines->help == nullptr) {
      lines->help = new TextHelp(this, lines, aid);
      lines->MakeRoom();
    }
    return lines->help != nullptr;
  }

  QByteArray FunctionAtCaret() const override {
    return lines->help == nullptr ? QByteArray() : lines->help->FunctionAtCaret();
  }
  Preview *PreviewHere() const override {
    return lines->help == nullptr ? nullptr : lines->help->PreviewHere();
  }
  const char *HelpPath(int32_t *context) const override {
    return lines->help == nullptr ? Control::HelpPath(context) : lines->help->HelpPath(context);
  }

  void GoOn() override {
    const auto [anchor, caret] = Selected();
    if (anchor == caret && lines->help != nullptr) {
      lines->help->SelectNextPlaceholder();
    }
  }
};

}  // namespace

Control *NewLines(const OrlControl &row, Dialog *dialog) {
  auto edit = std::make_unique<LinesEdit>();
  edit->textKind = TextKind::Lines;
  edit->style = row.style;
  auto *lines = new LinesWidget(edit.get(), dialog->client);
  edit->widget = edit->lines = lines;
  const bool scrolls = (row.style & ORL_STYLE_SCROLL_BAR) != 0;
  lines->setVerticalScrollBarPolicy(scrolls ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
  lines->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  lines->setTabChangesFocus(true);
  lines->setReadOnly(edit->IsReadOnly());
  lines->setUndoRedoEnabled(!edit->IsReadOnly());
  lines->KeepSelection();
  // A text that can be neither changed nor scrolled looks like a part of the window.
  if (edit->IsReadOnly() && (row.style & ORL_STYLE_SCROLL_BAR) == 0) {
    lines->viewport()->setBackgroundRole(QPalette::Window);
  }
  edit->PutShown(ShownText(row.caption, edit->textKind));
  edit->known = edit->Shown();
  edit->ForgetUndo();
  QObject::connect(lines, &QPlainTextEdit::textChanged, lines, [changed = edit.get()] {
    changed->WrapFor(changed->Shown());
    changed->Settle();
  });
  return edit.release();
}

}  // namespace qt_windows
