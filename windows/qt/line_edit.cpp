// Edits of one line. The widget's own input and copying are replaced by the common routines.
#include <QAction>
#include <QClipboard>
#include <QDropEvent>
#include <QGuiApplication>
#include <QLineEdit>
#include <climits>

#include "windows/qt/edit.h"

namespace qt_windows {

namespace {

const QMimeData *Clipboard(QClipboard::Mode mode = QClipboard::Clipboard) {
  return QGuiApplication::clipboard()->mimeData(mode);
}

struct ClipboardRow {
  QKeySequence::StandardKey key;
  const char *caption;  // in the standard menu, which names no actions
  const char *name;     // as the menu of an edit of several lines has it
  void (*run)(Edit *edit);
};
constexpr ClipboardRow kClipboardRows[] = {
    {QKeySequence::Copy, "&Copy", "edit-copy", [](Edit *edit) { edit->Copy(); }},
    {QKeySequence::Cut, "Cu&t", "edit-cut", [](Edit *edit) { edit->Cut(); }},
    {QKeySequence::Paste, "&Paste", "edit-paste", [](Edit *edit) { edit->Paste(Clipboard()); }},
};

class LineWidget : public Messenger<QLineEdit> {
 public:
  LineWidget(Edit *edit, QWidget *parent) : Messenger(edit, parent), edit_(edit) {}

 protected:
  void keyPressEvent(QKeyEvent *event) override {
    KeyPressed(edit_, event, [this, event] { Press(event); });
  }
  void mouseReleaseEvent(QMouseEvent *event) override {
    if (event->button() != Qt::MiddleButton) {
      Messenger::mouseReleaseEvent(event);
    } else if (QGuiApplication::clipboard()->supportsSelection()) {
      deselect();
      edit_->Paste(Clipboard(QClipboard::Selection));
    }
  }
  void inputMethodEvent(QInputMethodEvent *event) override {
    TakeInputMethod(edit_, event,
                    [this](QInputMethodEvent *allowed) { QLineEdit::inputMethodEvent(allowed); });
  }
  void dropEvent(QDropEvent *event) override {
    if (!edit_->IsReadOnly()) {
      event->acceptProposedAction();
      setCursorPosition(cursorPositionAt(event->position().toPoint()));
      edit_->Paste(event->mimeData());
    }
  }
  void contextMenuEvent(QContextMenuEvent *event) override {
    QMenu *menu = createStandardContextMenu();
    for (QAction *action : menu->actions()) {
      Redirect(action);
    }
    ShowMenu(edit_, menu, event->globalPos());
  }

 private:
  // The standard menu's clipboard commands use the common routines.
  void Redirect(QAction *action) {
    const QString caption = action->text().section(u'\t', 0, 0);  // before the shortcut
    for (const ClipboardRow &row : kClipboardRows) {
      if (caption == QLineEdit::tr(row.caption)) {
        action->setObjectName(QLatin1String(row.name));
        QObject::disconnect(action, nullptr, this, nullptr);
        QObject::connect(action, &QAction::triggered, this, [this, &row] { row.run(edit_); });
      }
    }
  }

  void Press(QKeyEvent *event) {
    for (const ClipboardRow &row : kClipboardRows) {
      if (event->matches(row.key)) {
        row.run(edit_);
        return;
      }
    }
    if (Types(*event)) {
      edit_->Enter(event->text(), true);
    } else {
      const OneChange change(edit_);
      OwnEvent(event);
    }
  }

  Edit *edit_;
};

struct LineEdit : Edit {
  LineWidget *line = nullptr;

  QString Shown() const override { return line->text(); }

  Selection Selected() const override {
    const int caret = line->cursorPosition();
    if (!line->hasSelectedText()) {
      return {caret, caret};
    }
    const int start = line->selectionStart();
    return {caret == start ? line->selectionEnd() : start, caret};
  }

  void Select(Selection selection) override {
    line->setSelection(static_cast<int>(selection.anchor),
                       static_cast<int>(selection.caret - selection.anchor));
  }

  void PutShown(const QString &shown) override {
    line->setText(shown);
    line->setCursorPosition(0);
  }

  void Insert(const QString &shown) override { line->insert(shown); }
  void OwnEvent(QEvent *event) override { line->OwnEvent(event); }
};

}  // namespace

Control *NewLine(const OrlControl &row, Dialog *dialog) {
  auto edit = std::make_unique<LineEdit>();
  edit->style = row.style;
  edit->line = new LineWidget(edit.get(), dialog->client);
  edit->widget = edit->line;
  edit->line->setMaxLength(INT_MAX);
  edit->line->setReadOnly(edit->IsReadOnly());
  edit->PutShown(ShownText(row.caption, edit->textKind));
  edit->known = edit->Shown();
  QObject::connect(edit->line, &QLineEdit::textChanged, edit->line,
                   [changed = edit.get()] { changed->Settle(); });
  return edit.release();
}

}  // namespace qt_windows
