#include "windows/qt/edit.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/text.h"
#include "wreni11.h"

namespace qt_windows {

namespace {

constexpr uint32_t kKeyProcess = 229;  // an input method has handled the key

// Control characters of WM_CHAR that are commands.
constexpr uint8_t kCharCopy = 3, kCharPaste = 22, kCharCut = 24, kCharDelete = 127;

// The bytes themselves, in addition to the plain text; those of another code page are ignored.
QString BytesFormat() {
  return QStringLiteral("application/x-orli11-text-%1").arg(ActiveCodePage());
}

// The part of a text, kept as bytes, that fits.
QString Kept(const QByteArray &bytes, TextKind kind, int32_t limit, bool *whole) {
  QByteArray taken = bytes.left(static_cast<qsizetype>(std::strlen(bytes.constData())));
  if (kind == TextKind::OneLine) {
    taken.truncate(static_cast<qsizetype>(std::strcspn(taken.constData(), "\r\n")));
  }
  QString shown = ShownText(taken.constData(), kind);
  *whole = taken.size() == bytes.size();
  if (limit >= 0 && taken.size() > limit) {
    shown.truncate(PositionOfByte(shown, limit, kind));
    *whole = false;
  }
  return shown;
}

QString SelectedText(const Edit &edit) {
  const auto [anchor, caret] = edit.Selected();
  return edit.Shown().mid(std::min(anchor, caret), std::abs(caret - anchor));
}

// The bytes that may still be entered when the selection is replaced; -1 for any number.
int32_t BytesLeft(const Edit &edit) {
  if (edit.limit <= 0) {
    return -1;
  }
  const qsizetype kept = edit.Text().size() - BytesOfText(SelectedText(edit), edit.textKind).size();
  return static_cast<int32_t>(std::max<qsizetype>(0, edit.limit - kept));
}

void Put(Edit *edit, const QString &shown) {
  const OneChange change(edit);
  edit->Insert(shown);
}

// ---- The selection ----

intptr_t GetSelection(const Edit &edit, uintptr_t wParam, intptr_t lParam) {
  const QString shown = edit.Shown();
  const auto [anchor, caret] = edit.Selected();
  const int32_t start = ByteOfPosition(shown, std::min(anchor, caret), edit.textKind);
  const int32_t end = ByteOfPosition(shown, std::max(anchor, caret), edit.textKind);
  if (wParam != 0) {
    *reinterpret_cast<int32_t *>(wParam) = start;
  }
  if (lParam != 0) {
    *reinterpret_cast<int32_t *>(lParam) = end;
  }
  return end > 0xFFFF ? -1 : start | static_cast<intptr_t>(end) << 16;
}

void SetSelection(Edit *edit, uintptr_t wParam, intptr_t lParam) {
  const auto start = static_cast<int32_t>(wParam);
  const auto end = static_cast<int32_t>(lParam);
  edit->typed.clear();
  if (start < 0) {
    const qsizetype caret = edit->Selected().caret;
    edit->Select({caret, caret});
    return;
  }
  const QString shown = edit->Shown();
  const qsizetype caret = end < 0 ? shown.size() : PositionOfByte(shown, end, edit->textKind);
  edit->Select({PositionOfByte(shown, start, edit->textKind), caret});
}

// ---- Events sent by the program ----

void PressKey(Edit *edit, int key) {
  const OneChange change(edit);
  QKeyEvent event(QEvent::KeyPress, key, QGuiApplication::keyboardModifiers());
  edit->OwnEvent(&event);
}

void PressKeyOfProgram(Edit *edit, uintptr_t key) {
  const struct {
    uintptr_t number;
    int key;
  } rows[] = {
      {ORL_VK_HOME, Qt::Key_Home},     {ORL_VK_END, Qt::Key_End},     {ORL_VK_LEFT, Qt::Key_Left},
      {ORL_VK_UP, Qt::Key_Up},         {ORL_VK_RIGHT, Qt::Key_Right}, {ORL_VK_DOWN, Qt::Key_Down},
      {ORL_VK_DELETE, Qt::Key_Delete},
  };
  edit->typed.clear();
  const bool breaks = (QGuiApplication::keyboardModifiers() & Qt::ControlModifier) != 0;
  if (key == ORL_VK_RETURN && edit->textKind == TextKind::Lines && !breaks) {
    PressReturn(edit->dialog);
  }
  for (const auto &row : rows) {
    if (row.number == key) {
      PressKey(edit, row.key);
    }
  }
}

void TypeByte(Edit *edit, uint8_t byte) {
  const bool continues = byte >= 0x80 && byte < 0xC0;
  if (ActiveCodePage() == kCodePageUtf8 && !continues) {
    edit->typed.clear();  // the rest of that character never arrived
  }
  edit->typed.append(static_cast<char>(byte));
  if (edit->typed.size() < CharacterBytes(static_cast<uint8_t>(edit->typed[0]))) {
    return;
  }
  const QByteArray bytes = std::exchange(edit->typed, {});
  const int32_t limit = BytesLeft(*edit);
  if (limit >= 0 && bytes.size() > limit) {
    QApplication::beep();
    return;
  }
  Put(edit, ShownText(bytes.constData(), edit->textKind));
}

void TypeByteOfProgram(Edit *edit, uintptr_t code) {
  const auto byte = static_cast<uint8_t>(code);
  if (edit->IsReadOnly()) {
    return;
  }
  if (byte != 0 && (!edit->typed.isEmpty() || (byte >= ' ' && byte != kCharDelete))) {
    TypeByte(edit, byte);
    return;
  }
  switch (byte) {
    case kCharCopy:
      edit->Copy();
      break;
    case kCharPaste:
      edit->Paste(QGuiApplication::clipboard()->mimeData());
      break;
    case kCharCut:
      edit->Cut();
      break;
    case '\b':
      PressKey(edit, Qt::Key_Backspace);
      break;
    case '\t':
    case '\n':
      if (edit->textKind == TextKind::Lines) {
        edit->Enter(QString(QChar(byte)), true);
      }
      break;
    default:
      break;
  }
}

void MoveMouse(Edit *edit, QEvent::Type type, intptr_t point) {
  const QPoint place(static_cast<int16_t>(point & 0xFFFF), static_cast<int16_t>(point >> 16));
  const bool moves = type == QEvent::MouseMove;
  const Qt::MouseButtons held = moves ? QGuiApplication::mouseButtons()
                                : type == QEvent::MouseButtonRelease ? Qt::NoButton
                                                                     : Qt::LeftButton;
  QMouseEvent event(type, place, edit->widget->mapToGlobal(place),
                    moves ? Qt::NoButton : Qt::LeftButton, held,
                    QGuiApplication::keyboardModifiers());
  const OneChange change(edit);
  edit->OwnEvent(&event);
}

}  // namespace

OneChange::~OneChange() {
  --edit->busy;
  edit->Settle();
}

void Edit::Settle() {
  if (busy > 0) {
    return;
  }
  QString now = Shown();
  if (now != known) {
    known = now;
    modified = true;
    Notify(this, ORL_EN_CHANGE);
  }
}

void Edit::SetText(const char *text) {
  ++busy;
  PutShown(ShownText(text, textKind));
  --busy;
  known = Shown();
  modified = false;
  typed.clear();
  if (textKind == TextKind::OneLine) {
    Notify(this, ORL_EN_CHANGE);
  }
}

void Edit::MarkAsSaved() {
  saved = Shown();
  ForgetUndo();
}

QString Edit::Allowed(const QString &entered, bool *whole) const {
  *whole = true;
  QString allowed = EnterableText(entered, textKind, BytesLeft(*this), whole);
  if (!*whole) {
    QApplication::beep();
  }
  return allowed;
}

void Edit::Enter(const QString &entered, bool allOrNothing) {
  bool whole = true;
  const QString shown = Allowed(entered, &whole);
  if (!IsReadOnly() && !shown.isEmpty() && (whole || !allOrNothing)) {
    Put(this, shown);
  }
}

void Edit::Copy() const {
  const QString selected = SelectedText(*this);
  if (!selected.isEmpty()) {
    QGuiApplication::clipboard()->setMimeData(CopyOf(selected, textKind));
  }
}

void Edit::Cut() {
  Copy();
  Clear();
}

void Edit::Clear() {
  const auto [anchor, caret] = Selected();
  if (anchor != caret && !IsReadOnly()) {
    Put(this, {});
  }
}

void Edit::Paste(const QMimeData *data) {
  if (IsReadOnly() || !HoldsText(data)) {
    return;
  }
  if (!data->hasFormat(BytesFormat())) {
    Enter(data->text(), false);
    return;
  }
  bool whole = true;
  const QString shown = Kept(data->data(BytesFormat()), textKind, BytesLeft(*this), &whole);
  if (!whole) {
    QApplication::beep();
  }
  if (!shown.isEmpty()) {
    Put(this, shown);
  }
}

intptr_t Edit::OwnMessage(uint32_t message, uintptr_t wParam, intptr_t lParam) {
  const Hold hold(dialog);
  switch (message) {
    case ORL_EM_GETSEL:
      return GetSelection(*this, wParam, lParam);
    case ORL_EM_SETSEL:
      SetSelection(this, wParam, lParam);
      break;
    case ORL_EM_GETMODIFY:
      return modified ? 1 : 0;
    case ORL_EM_SETMODIFY:
      modified = wParam != 0;
      if (!modified) {
        MarkAsSaved();
      }
      break;
    case ORL_EM_LIMITTEXT:
      limit = wParam > INT32_MAX ? 0 : static_cast<int32_t>(wParam);
      break;
    case ORL_WM_CUT:
      Cut();
      break;
    case ORL_WM_COPY:
      Copy();
      break;
    case ORL_WM_PASTE:
      Paste(QGuiApplication::clipboard()->mimeData());
      break;
    case ORL_WM_CLEAR:
      Clear();
      break;
    case ORL_WM_CHAR:
      TypeByteOfProgram(this, wParam);
      break;
    case ORL_WM_KEYDOWN:
      PressKeyOfProgram(this, wParam);
      break;
    case ORL_WM_MOUSEMOVE:
      MoveMouse(this, QEvent::MouseMove, lParam);
      break;
    case ORL_WM_LBUTTONDOWN:
      MoveMouse(this, QEvent::MouseButtonPress, lParam);
      break;
    case ORL_WM_LBUTTONUP:
      MoveMouse(this, QEvent::MouseButtonRelease, lParam);
      break;
    case ORL_WM_LBUTTONDBLCLK:
      MoveMouse(this, QEvent::MouseButtonDblClick, lParam);
      break;
    default:
      break;
  }
  return 0;
}

QMimeData *CopyOf(QStringView shown, TextKind kind) {
  auto *data = new QMimeData;
  data->setText(HarmlessText(shown));
  data->setData(BytesFormat(), BytesOfText(shown, kind));
  return data;
}

bool HoldsText(const QMimeData *data) {
  return data != nullptr && (data->hasText() || data->hasFormat(BytesFormat()));
}

bool Types(const QKeyEvent &event) {
  const QString text = event.text();
  const Qt::KeyboardModifiers held =
      event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
  // Some keyboards produce characters with Control and Alt.
  const bool command = held != Qt::NoModifier && held != (Qt::ControlModifier | Qt::AltModifier);
  return !command && !text.isEmpty() && text[0] >= u' ' && text[0] != QChar(kCharDelete);
}

void TakeInputMethod(Edit *edit, QInputMethodEvent *event,
                     const std::function<void(QInputMethodEvent *)> &own) {
  if (edit->IsReadOnly()) {
    event->ignore();
    return;
  }
  event->accept();
  Deliver(edit, ORL_WM_KEYDOWN, kKeyProcess, 0, [edit, event, &own] {
    const OneChange change(edit);
    QInputMethodEvent allowed(event->preeditString(), event->attributes());
    bool whole = true;
    allowed.setCommitString(edit->Allowed(event->commitString(), &whole), event->replacementStart(),
                            event->replacementLength());
    own(&allowed);
  });
}

void ShowMenu(Edit *edit, QMenu *menu, const QPoint &place) {
  for (QAction *action : menu->actions()) {
    const bool isCopy = action->objectName() == QLatin1String("edit-copy");
    if (action->menu() != nullptr || (edit->IsReadOnly() && !isCopy)) {
      menu->removeAction(action);
    }
  }
  // The dialog's procedure is notified as of a key, once it is done.
  QObject::connect(
      menu, &QMenu::triggered, edit->widget, [edit] { ReportSelection(edit); },
      Qt::QueuedConnection);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->popup(place);
}

}  // namespace qt_windows
