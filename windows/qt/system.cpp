// The table of operations.
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QMimeData>
#include <QScreen>
#include <algorithm>
#include <cstring>

#include "orli11/qt_windows.h"
#include "windows/qt/state.h"
#include "windows/qt/text_map.h"

namespace qt_windows {

namespace {

struct Routines {
  using Hold = qt_windows::Hold;
  static constexpr auto kFind = Find;
  static constexpr auto kControlById = ControlById;
  static constexpr auto kOwnProc = OwnProc;
  static constexpr auto kSetTimer = SetTimerOf;
  static constexpr auto kKillTimer = KillTimerOf;
};
using Common = WindowOperations<Routines>;

bool HasApplication() {
  return qobject_cast<QApplication *>(QCoreApplication::instance()) != nullptr;
}

intptr_t DialogBoxParam(const OrlDialogTemplate *model, OrlWindow parent, OrlWindowProc proc,
                        intptr_t parameter) {
  Dialog *dialog = NewDialog(model, parent, proc, true);
  if (dialog == nullptr) {
    return -1;
  }
  intptr_t result = 0;
  {
    const Hold hold(dialog);
    OpenDialog(dialog, parameter);
    result = RunModal(dialog);
    Destroy(dialog);
  }
  EndApplication();
  return result;
}

void EndDialog(OrlWindow window, intptr_t result) {
  Dialog *dialog = FindDialog(window);
  if (dialog != nullptr) {
    EndModal(dialog, result);
  }
}

OrlWindow CreateDialogParam(const OrlDialogTemplate *model, OrlWindow parent, OrlWindowProc proc,
                            intptr_t parameter) {
  // It needs an event loop: that of a modal dialog, or of the host's application.
  Dialog *dialog = HasApplication() ? NewDialog(model, parent, proc, false) : nullptr;
  if (dialog == nullptr) {
    return nullptr;
  }
  const Hold hold(dialog);
  OpenDialog(dialog, parameter);
  return dialog->going ? nullptr : dialog->window;
}

void DestroyWindow(OrlWindow window) {
  Dialog *dialog = FindDialog(window);
  if (dialog != nullptr && dialog->modal) {
    EndModal(dialog, 0);
  } else if (dialog != nullptr) {
    Destroy(dialog);
  }
}

void SetWindowText(OrlWindow window, const char *text) {
  const Place place = Find(window);
  if (place.dialog == nullptr) {
    return;
  }
  const Hold hold(place.dialog);
  if (place.control == nullptr) {
    place.dialog->title = text;
    place.dialog->widget->setWindowTitle(CaptionText(text));
    FitTitle(place.dialog);
    return;
  }
  place.control->SetText(text);
  if (place.control->kind == ORL_CONTROL_LABEL) {
    DescribeDialog(place.dialog);
  }
  if ((place.control->style & ORL_STYLE_READ_ONLY) != 0) {
    FitHints(place.dialog);
  }
}

QByteArray TextOf(OrlWindow window) {
  const Place place = Find(window);
  if (place.dialog == nullptr) {
    return {};
  }
  return place.control == nullptr ? place.dialog->title : place.control->Text();
}

int32_t GetWindowText(OrlWindow window, char *buffer, int32_t size) {
  if (buffer == nullptr || size <= 0) {
    return 0;
  }
  const QByteArray text = TextOf(window);
  const auto count = std::min(static_cast<qsizetype>(size) - 1, text.size());
  std::memcpy(buffer, text.constData(), static_cast<size_t>(count));
  buffer[count] = 0;
  return static_cast<int32_t>(count);
}

int32_t GetWindowTextLength(OrlWindow window) {
  return static_cast<int32_t>(TextOf(window).size());
}

// A dialog with the modal one on top, or belonging to it.
bool IsInFront(const Dialog *dialog) {
  const Dialog *top = TopModal();
  while (dialog != nullptr && dialog != top && !dialog->modal) {
    dialog = Find(dialog->parent).dialog;
  }
  return top == nullptr || dialog == top;
}

void EnableWindow(OrlWindow window, int32_t enabled) {
  const Place place = Find(window);
  if (place.dialog != nullptr) {
    const Hold hold(place.dialog);
    QWidget *widget = place.control == nullptr ? place.dialog->widget : place.control->widget;
    if (enabled == 0 && widget->hasFocus() && place.control != place.dialog->writing) {
      GoToText(place.dialog);
    }
    widget->setEnabled(enabled != 0);
  }
}

int32_t IsWindowEnabled(OrlWindow window) {
  const Place place = Find(window);
  if (place.control != nullptr) {
    return place.control->widget->isEnabledTo(place.dialog->widget) ? 1 : 0;
  }
  return place.dialog != nullptr && place.dialog->widget->isEnabled() && IsInFront(place.dialog)
             ? 1
             : 0;
}

void ShowWindow(OrlWindow window, int32_t shown) {
  const Place place = Find(window);
  if (place.dialog == nullptr) {
    return;
  }
  const Hold hold(place.dialog);
  if (place.control == nullptr) {
    ShowDialog(place.dialog, shown != 0);
  } else {
    place.control->widget->setVisible(shown != 0);
  }
}

int32_t IsWindowVisible(OrlWindow window) {
  const Place place = Find(window);
  return place.dialog != nullptr && place.dialog->shown &&
                 (place.control == nullptr || !place.control->widget->isHidden())
             ? 1
             : 0;
}

void SetFocus(OrlWindow window) {
  const Place place = Find(window);
  if (place.dialog != nullptr) {
    const Hold hold(place.dialog);
    FocusIn(place.dialog, place.control);
  }
}

OrlRect RectOf(const QRect &rect) {
  return {rect.x(), rect.y(), rect.x() + rect.width(), rect.y() + rect.height()};
}

void GetWindowRect(OrlWindow window, OrlRect *rect) {
  const Place place = Find(window);
  if (rect == nullptr) {
    return;
  }
  *rect = {};
  if (place.control != nullptr) {
    const QWidget *widget = place.control->widget;
    *rect = RectOf(QRect(widget->mapToGlobal(QPoint(0, 0)), widget->size()));
  } else if (place.dialog != nullptr) {
    *rect = RectOf(place.dialog->widget->frameGeometry());
  }
}

void GetClientRect(OrlWindow window, OrlRect *rect) {
  const Place place = Find(window);
  if (rect != nullptr) {
    *rect = place.control != nullptr  ? RectOf(place.control->widget->rect())
            : place.dialog != nullptr ? RectOf(place.dialog->client->rect())
                                      : OrlRect{};
  }
}

void ScreenToClient(OrlWindow window, int32_t *x, int32_t *y) {
  const Place place = Find(window);
  if (place.dialog == nullptr) {
    return;
  }
  const QWidget *widget = place.control != nullptr ? place.control->widget : place.dialog->client;
  const QPoint corner = widget->mapToGlobal(QPoint(0, 0));
  if (x != nullptr) {
    *x = static_cast<int32_t>(int64_t{*x} - corner.x());
  }
  if (y != nullptr) {
    *y = static_cast<int32_t>(int64_t{*y} - corner.y());
  }
}

void MoveWindow(OrlWindow window, int32_t x, int32_t y, int32_t width, int32_t height) {
  const Place place = Find(window);
  if (place.dialog == nullptr) {
    return;
  }
  const Hold hold(place.dialog);
  // Beyond this there is nothing, and sums do not overflow.
  const QSize size(std::clamp(width, 0, QWIDGETSIZE_MAX), std::clamp(height, 0, QWIDGETSIZE_MAX));
  const QPoint corner(std::clamp(x, -QWIDGETSIZE_MAX, QWIDGETSIZE_MAX),
                      std::clamp(y, -QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
  if (place.control != nullptr) {
    MoveControl(place.control, QRect(corner, size));
    return;
  }
  QWidget *widget = place.dialog->widget;
  const QSize frame = widget->frameGeometry().size() - widget->size();
  MoveFrame(place.dialog, corner);
  const QSize inside = (size - frame).boundedTo({kLargestWindow, kLargestWindow});
  place.dialog->given = inside;
  widget->resize(inside);
  place.dialog->client->resize(inside.expandedTo(place.dialog->baseSize));
}

int32_t GetSystemMetrics(int32_t index) {
  const QScreen *screen = HasApplication() ? QGuiApplication::primaryScreen() : nullptr;
  if (screen == nullptr) {
    return 0;
  }
  const QRect room = screen->availableGeometry();
  return index == ORL_SM_CXFULLSCREEN   ? room.x() + room.width()
         : index == ORL_SM_CYFULLSCREEN ? room.y() + room.height()
                                        : 0;
}

void GetTextMetrics(OrlWindow window, OrlTextMetrics *metrics) {
  const Dialog *dialog = Find(window).dialog;
  if (metrics != nullptr) {
    *metrics = dialog == nullptr ? OrlTextMetrics{} : dialog->metrics;
  }
}

// Also to a combo box of the host, for the one message that it supports.
intptr_t SendMessage(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  if (message == ORL_CB_ADDSTRING && HasApplication() && Find(window).dialog == nullptr) {
    auto *combo = qobject_cast<QComboBox *>(HostWidget(window));
    if (combo != nullptr) {
      combo->addItem(CaptionText(reinterpret_cast<const char *>(lParam)));
      return combo->count() - 1;
    }
  }
  return Send(window, message, wParam, lParam);
}

void CheckRadioButton(OrlWindow window, int32_t first, int32_t last, int32_t id) {
  const Dialog *dialog = FindDialog(window);
  if (dialog == nullptr) {
    return;
  }
  for (const auto &control : dialog->controls) {
    if (control->kind == ORL_CONTROL_OPTION && control->id >= first && control->id <= last) {
      MarkOption(control.get(), control->id == id);
    }
  }
}

void MessageBeep(uint32_t /*type*/) {
  if (HasApplication()) {
    QApplication::beep();
  }
}

int32_t IsClipboardTextAvailable() {
  const QMimeData *data = HasApplication() ? QGuiApplication::clipboard()->mimeData() : nullptr;
  return data != nullptr && data->hasText() ? 1 : 0;
}

// The same operation as noexcept.
template <auto Routine>
struct Safe;
template <class Result, class... Arguments, Result (*Routine)(Arguments...)>
struct Safe<Routine> {
  static Result Call(Arguments... arguments) noexcept {
    try {
      return Routine(arguments...);
    } catch (...) {
      return Result();
    }
  }
};

const OrlWindowSystem kSystem = {sizeof(OrlWindowSystem),
                                 Safe<DialogBoxParam>::Call,
                                 Safe<EndDialog>::Call,
                                 Safe<CreateDialogParam>::Call,
                                 Safe<DestroyWindow>::Call,
                                 Safe<Common::GetDlgItem>::Call,
                                 Safe<Common::GetDlgCtrlID>::Call,
                                 Safe<Common::GetParent>::Call,
                                 Safe<SetWindowText>::Call,
                                 Safe<GetWindowText>::Call,
                                 Safe<GetWindowTextLength>::Call,
                                 Safe<EnableWindow>::Call,
                                 Safe<IsWindowEnabled>::Call,
                                 Safe<ShowWindow>::Call,
                                 Safe<IsWindowVisible>::Call,
                                 Safe<SetFocus>::Call,
                                 Safe<GetWindowRect>::Call,
                                 Safe<GetClientRect>::Call,
                                 Safe<ScreenToClient>::Call,
                                 Safe<MoveWindow>::Call,
                                 Safe<GetSystemMetrics>::Call,
                                 Safe<GetTextMetrics>::Call,
                                 Safe<Common::SetWindowProc>::Call,
                                 Safe<Common::CallWindowProc>::Call,
                                 Safe<SendMessage>::Call,
                                 Safe<Post>::Call,
                                 Safe<Common::SetTimer>::Call,
                                 Safe<Common::KillTimer>::Call,
                                 Safe<CheckRadioButton>::Call,
                                 Safe<ShowBox>::Call,
                                 Safe<MessageBeep>::Call,
                                 Safe<IsClipboardTextAvailable>::Call,
                                 Safe<LoadBitmapFile>::Call,
                                 Safe<DeleteBitmapHandle>::Call,
                                 Safe<DrawBitmapAt>::Call,
                                 Safe<DrawTextIn>::Call,
                                 Safe<InvertIn>::Call,
                                 Safe<DrawFocusIn>::Call,
                                 Safe<SetEditorHost>::Call,
                                 Safe<GetEditorHost>::Call,
                                 Safe<SetTextAid>::Call,
                                 Safe<ShowPage>::Call};

}  // namespace

}  // namespace qt_windows

const OrlWindowSystem *ORLQtWindowSystem(void) {
  try {
    return qt_windows::CanShow() ? &qt_windows::kSystem : nullptr;
  } catch (...) {
    return nullptr;
  }
}

const char *ORLQtWindowSystemProblem(void) {
  return qt_windows::CannotShow();
}
