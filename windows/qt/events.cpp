// Events: widget events become messages, and those that reach a control's own procedure are passed
// to its widget.
#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QApplication>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <algorithm>
#include <utility>

#include "windows/qt/state.h"
#include "windows/qt/text_map.h"

namespace qt_windows {

namespace {

// The user event that is passing through the procedures; the innermost one.
struct Pending {
  Control *control;
  uint32_t message;
  const std::function<void()> *own;
  Pending *outer;
};
Pending *pending = nullptr;

// Messages posted until the end of the present event.
class PostedEvent : public QEvent {
 public:
  static constexpr Type kType = static_cast<Type>(QEvent::User + 1);
  PostedEvent(OrlWindow to, uint32_t what, uintptr_t first, intptr_t second)
      : QEvent(kType), window(to), message(what), wParam(first), lParam(second) {}
  OrlWindow window;
  uint32_t message;
  uintptr_t wParam;
  intptr_t lParam;
};

class PostedEventReceiver : public QObject {
 protected:
  bool event(QEvent *event) override {
    if (event->type() != PostedEvent::kType) {
      return QObject::event(event);
    }
    const auto *posted = static_cast<const PostedEvent *>(event);
    const Place place = Find(posted->window);
    if (place.dialog != nullptr && !HasEnded(place.dialog)) {
      Send(posted->window, posted->message, posted->wParam, posted->lParam);
    }
    return true;
  }
};

const std::function<void()> kNothing = [] {};

struct KeyRow {
  int key;  // Qt::Key
  uint32_t number;
};
constexpr KeyRow kKeys[] = {
    {Qt::Key_Tab, ORL_VK_TAB},       {Qt::Key_Backtab, ORL_VK_TAB},
    {Qt::Key_Return, ORL_VK_RETURN}, {Qt::Key_Enter, ORL_VK_RETURN},
    {Qt::Key_Escape, ORL_VK_ESCAPE}, {Qt::Key_Backspace, ORL_VK_BACK},
    {Qt::Key_Delete, ORL_VK_DELETE}, {Qt::Key_Home, ORL_VK_HOME},
    {Qt::Key_End, ORL_VK_END},       {Qt::Key_Left, ORL_VK_LEFT},
    {Qt::Key_Up, ORL_VK_UP},         {Qt::Key_Right, ORL_VK_RIGHT},
    {Qt::Key_Down, ORL_VK_DOWN},     {Qt::Key_Space, ORL_VK_SPACE},
};

uint32_t KeyOf(const QKeyEvent &event) {
  const int key = event.key();
  const auto *row = std::find_if(std::begin(kKeys), std::end(kKeys),
                                 [key](const KeyRow &each) { return each.key == key; });
  if (row != std::end(kKeys)) {
    return row->number;
  }
  const bool plain =
      (key >= Qt::Key_0 && key <= Qt::Key_9) || (key >= Qt::Key_A && key <= Qt::Key_Z);
  return plain ? static_cast<uint32_t>(key) : kKeyWithoutNumber;
}

bool IsArrow(uint32_t key) {
  return key >= ORL_VK_LEFT && key <= ORL_VK_DOWN;
}

bool HasLines(const Control *control) {
  return control->kind == ORL_CONTROL_EDIT && (control->style & ORL_STYLE_LINES) != 0;
}

// What a key types: a character, Backspace, or Control and Return for a line break. Keys that are
// pressed with Control or Alt are commands, unless the keyboard produces a character with them.
QString TypedBy(const QKeyEvent &event, uint32_t key) {
  const Qt::KeyboardModifiers held =
      event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
  if (key == ORL_VK_RETURN) {
    return held == Qt::ControlModifier ? QStringLiteral("\n") : QString();
  }
  const QString text = event.text();
  const bool command = held != Qt::NoModifier && held != (Qt::ControlModifier | Qt::AltModifier);
  if (command || text.isEmpty()) {
    return {};
  }
  return text == QLatin1String("\b") || text.at(0) >= QLatin1Char(' ') ? text : QString();
}

// Alt and a letter that is not a mnemonic: widgets would type the letter.
bool IsLostMnemonic(const QKeyEvent &event, const QString &typed) {
  return typed.isEmpty() && (event.modifiers() & Qt::AltModifier) != 0 && !event.text().isEmpty() &&
         event.text().at(0) > QLatin1Char(' ');
}

bool TakesCharacters(const Control *control) {
  return control->kind == ORL_CONTROL_EDIT || control->kind == ORL_CONTROL_LIST;
}

// A read-only text can still be scrolled by keys.
void ScrollByKey(const Control &control, int key) {
  constexpr std::pair<int, QAbstractSlider::SliderAction> kActions[] = {
      {Qt::Key_Up, QAbstractSlider::SliderSingleStepSub},
      {Qt::Key_Down, QAbstractSlider::SliderSingleStepAdd},
      {Qt::Key_PageUp, QAbstractSlider::SliderPageStepSub},
      {Qt::Key_PageDown, QAbstractSlider::SliderPageStepAdd},
      {Qt::Key_Home, QAbstractSlider::SliderToMinimum},
      {Qt::Key_End, QAbstractSlider::SliderToMaximum},
  };
  const auto *area = qobject_cast<const QAbstractScrollArea *>(control.widget);
  if (area == nullptr || (control.style & ORL_STYLE_READ_ONLY) == 0) {
    return;
  }
  for (const auto &[wanted, action] : kActions) {
    if (wanted == key) {
      area->verticalScrollBar()->triggerAction(action);
    }
  }
}

// The bytes of the typed character, one at a time; the last one enters it.
void DeliverCharacters(Control *control, const QString &typed, const std::function<void()> &own) {
  const QByteArray bytes = TypedBytes(typed);
  if (bytes.isEmpty()) {
    QApplication::beep();
  }
  for (qsizetype i = 0; i < bytes.size(); ++i) {
    const bool last = i + 1 == bytes.size();
    if (!Deliver(control, ORL_WM_CHAR, static_cast<uint8_t>(bytes[i]), 0, last ? own : kNothing)) {
      return;
    }
  }
}

intptr_t PointOf(const QMouseEvent &event) {
  const QPoint point = event.position().toPoint();
  return static_cast<intptr_t>(point.x() & 0xFFFF) | static_cast<intptr_t>(point.y() & 0xFFFF)
                                                         << 16;
}

OrlWindow lastFocused = nullptr;  // the control that last had the focus, in any dialog

Control *FocusedControl(const Dialog *dialog) {
  Control *control = FindControl(dialog->focus);
  return control != nullptr && control->widget->hasFocus() ? control : nullptr;
}

}  // namespace

intptr_t Send(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  // Exceptions of a host's procedure must not pass through Qt's frames.
  try {
    return SendToPlace<Hold>(Find(window), OwnProc, window, message, wParam, lParam);
  } catch (...) {
    return 0;
  }
}

void Post(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  static thread_local PostedEventReceiver receiver;  // each thread has its own dialogs
  if (Find(window).dialog != nullptr) {
    QCoreApplication::postEvent(&receiver, new PostedEvent(window, message, wParam, lParam));
  }
}

bool HasEnded(const Dialog *dialog) {
  while (dialog != nullptr && !dialog->modal) {
    dialog = Find(dialog->parent).dialog;
  }
  return dialog != nullptr && dialog->ended;
}

void Notify(const Control *control, uint32_t notification) {
  // Text changes may come from the program.
  if (notification != ORL_EN_CHANGE && HasEnded(control->dialog)) {
    return;
  }
  Send(control->dialog->window, ORL_WM_COMMAND,
       static_cast<uint16_t>(control->id) | uintptr_t{notification} << 16,
       reinterpret_cast<intptr_t>(control->window));
}

intptr_t SendCommand(Dialog *dialog, int32_t id) {
  if (HasEnded(dialog)) {
    return 1;
  }
  const Control *control = ControlById(dialog, id);
  return Send(dialog->window, ORL_WM_COMMAND, static_cast<uint16_t>(id),
              reinterpret_cast<intptr_t>(control == nullptr ? nullptr : control->window));
}

intptr_t OwnProc(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  Control *control = FindControl(window);
  if (control == nullptr) {
    return 0;
  }
  const Hold hold(control->dialog);
  if (pending != nullptr && pending->control == control && pending->message == message &&
      pending->own != nullptr) {
    const std::function<void()> *own = pending->own;
    pending->own = nullptr;  // once
    (*own)();
    return 0;
  }
  return control->OwnMessage(message, wParam, lParam);
}

bool Deliver(Control *control, uint32_t message, uintptr_t wParam, intptr_t lParam,
             const std::function<void()> &own) {
  OrlWindow window = control->window;
  if (FindControl(window) != control || HasEnded(control->dialog)) {
    return false;
  }
  const Hold hold(control->dialog);
  Pending event = {control, message, &own, pending};
  pending = &event;
  Send(window, message, wParam, lParam);
  pending = event.outer;
  return FindControl(window) == control && !HasEnded(control->dialog);
}

void KeyPressed(Control *control, QKeyEvent *event, const std::function<void()> &own) {
  if (control->dialog->going) {
    return;
  }
  const Hold hold(control->dialog);
  event->accept();
  const uint32_t key = KeyOf(*event);
  const QString typed = TypedBy(*event, key);
  if (IsLostMnemonic(*event, typed)) {
    event->ignore();
  } else if (event->key() == Qt::Key_F6) {
    GoToNextWindow(control->dialog);
  } else if (event->key() == Qt::Key_F1) {
    AskForHelp(control->dialog, control);
  } else if (key == ORL_VK_ESCAPE) {
    PressEscape(control->dialog);
  } else if (key == ORL_VK_RETURN && !HasLines(control)) {
    PressReturn(control->dialog);
  } else if (key == ORL_VK_RETURN && typed.isEmpty()) {
    Deliver(control, ORL_WM_KEYDOWN, key, 0, [control] { PressReturn(control->dialog); });
  } else if (control->kind == ORL_CONTROL_OPTION && IsArrow(key)) {
    PressNeighbour(control, key == ORL_VK_LEFT || key == ORL_VK_UP);
  } else if (typed.isEmpty() || !TakesCharacters(control)) {
    bool reached = false;
    const auto note = [&reached, &own] {
      reached = true;
      own();
    };
    if (Deliver(control, ORL_WM_KEYDOWN, key, 0, note) && !reached) {
      ScrollByKey(*control, event->key());
    }
  } else if (Deliver(control, ORL_WM_KEYDOWN, key, 0, kNothing)) {
    DeliverCharacters(control, typed, own);
  }
}

void KeyReleased(Control *control, QKeyEvent *event, const std::function<void()> &own) {
  if (event->isAutoRepeat()) {
    own();
  } else {
    Deliver(control, ORL_WM_KEYUP, KeyOf(*event), 0, own);
  }
}

void MousePressed(Control *control, QMouseEvent *event, const std::function<void()> &own) {
  if (event->button() == Qt::LeftButton) {
    Deliver(control, ORL_WM_LBUTTONDOWN, 0, PointOf(*event), own);
  } else {
    own();
  }
}

void MouseMoved(Control *control, QMouseEvent *event, const std::function<void()> &own) {
  const auto cursor = reinterpret_cast<uintptr_t>(control->window);
  if (Deliver(control, ORL_WM_SETCURSOR, cursor, 0, kNothing)) {
    Deliver(control, ORL_WM_MOUSEMOVE, 0, PointOf(*event), own);
  }
}

void MouseReleased(Control *control, QMouseEvent *event, const std::function<void()> &own) {
  if (event->button() == Qt::LeftButton) {
    Deliver(control, ORL_WM_LBUTTONUP, 0, PointOf(*event), own);
  } else {
    own();
  }
}

void MouseDoubleClicked(Control *control, QMouseEvent *event, const std::function<void()> &own) {
  if (event->button() == Qt::LeftButton) {
    Deliver(control, ORL_WM_LBUTTONDBLCLK, 0, PointOf(*event), own);
  } else if (event->button() == Qt::RightButton) {
    Deliver(control, ORL_WM_RBUTTONDBLCLK, 0, PointOf(*event), kNothing);
  }
}

void FocusCame(Control *control, const std::function<void()> &own) {
  // Qt sends artificial focus events to the button that should look like the default one.
  if (!control->widget->hasFocus() || FindControl(control->window) != control) {
    own();
    return;
  }
  OrlWindow before =
      lastFocused == control->window || FindControl(lastFocused) == nullptr ? nullptr : lastFocused;
  lastFocused = control->window;
  control->dialog->focus = control->window;
  control->dialog->area->ensureWidgetVisible(control->widget);
  Deliver(control, ORL_WM_SETFOCUS, reinterpret_cast<uintptr_t>(before), 0, own);
}

void PressButton(Control *button) {
  if (button->widget->isEnabled() && !button->widget->isHidden()) {
    static_cast<QAbstractButton *>(button->widget)->click();
  }
}

void PressReturn(Dialog *dialog) {
  Control *focus = FocusedControl(dialog);
  Control *button = focus;
  if (button == nullptr || button->kind != ORL_CONTROL_BUTTON) {
    const auto &controls = dialog->controls;
    const auto found = std::find_if(controls.begin(), controls.end(), [](const auto &each) {
      return each->kind == ORL_CONTROL_BUTTON && (each->style & ORL_STYLE_DEFAULT) != 0;
    });
    button = found == controls.end() ? nullptr : found->get();
  }
  if (button != nullptr) {
    PressButton(button);
    return;
  }
  // No button to press and no handler: in a list the key picks the row.
  const Hold hold(dialog);
  const bool takes =
      focus != nullptr && focus->kind == ORL_CONTROL_LIST && (focus->style & ORL_STYLE_NOTIFY) != 0;
  if (SendCommand(dialog, ORL_ID_OK) == 0 && takes && !dialog->going) {
    Notify(focus, ORL_LBN_DBLCLK);
  }
}

void GoToNextWindow(const Dialog *dialog) {
  const auto &dialogs = Dialogs();
  const auto belongs = [dialog](const Dialog *other) {
    return other->shown &&
           (other->window == dialog->window || other->window == dialog->parent ||
            other->parent == dialog->window || (!dialog->modal && other->parent == dialog->parent));
  };
  const auto self = std::find(dialogs.begin(), dialogs.end(), dialog);
  if (self == dialogs.end()) {
    return;
  }
  auto next = std::find_if(self + 1, dialogs.end(), belongs);
  next = next == dialogs.end() ? std::find_if(dialogs.begin(), self, belongs) : next;
  if (next != self) {
    FocusIn(*next, nullptr);
  }
}

void PressEscape(Dialog *dialog) {
  const Control *cancel = ControlById(dialog, ORL_ID_CANCEL);
  if (cancel != nullptr && !cancel->widget->isEnabled()) {
    return;
  }
  const Hold hold(dialog);
  if (!MayDiscard(dialog)) {
    return;
  }
  if (SendCommand(dialog, ORL_ID_CANCEL) == 0 && !dialog->modal) {
    Send(dialog->window, ORL_WM_CLOSE, 0, 0);
  }
}

void PressNeighbour(Control *option, bool back) {
  const auto &controls = option->dialog->controls;
  const auto isOther = [](const auto &control) { return control->kind != ORL_CONTROL_OPTION; };
  const auto self = std::find_if(controls.begin(), controls.end(),
                                 [option](const auto &each) { return each.get() == option; });
  // The group: the options around this one, up to the start of another group.
  auto first = self;
  while (first != controls.begin() && ((*first)->style & ORL_STYLE_GROUP) == 0 &&
         !isOther(*(first - 1))) {
    --first;
  }
  auto end = self + 1;
  while (end != controls.end() && !isOther(*end) && ((*end)->style & ORL_STYLE_GROUP) == 0) {
    ++end;
  }
  auto next = self;
  do {
    next = back ? (next == first ? end : next) - 1 : (next + 1 == end ? first : next + 1);
  } while (next != self && !((*next)->widget->isEnabled() && !(*next)->widget->isHidden()));
  if (next != self) {
    Control *neighbour = next->get();
    neighbour->widget->setFocus(Qt::OtherFocusReason);
    PressButton(neighbour);
  }
}

}  // namespace qt_windows
