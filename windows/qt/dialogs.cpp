// Dialogs: created from templates, shown, run, destroyed.
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QDialog>
#include <QEventLoop>
#include <QKeyEvent>
#include <QScrollArea>
#include <QTimerEvent>
#include <QWindow>
#include <algorithm>
#include <unordered_map>

#include "windows/qt/state.h"
#include "windows/qt/text_map.h"

namespace qt_windows {

namespace {

constexpr int kGapBeside = 8;

// The parent widget of the controls.
class ClientWidget : public QWidget {
 public:
  ClientWidget(Dialog *dialog, std::function<void()> painted)
      : dialog_(dialog), painted_(std::move(painted)) {}

 protected:
  void paintEvent(QPaintEvent * /*event*/) override { painted_(); }
  void resizeEvent(QResizeEvent * /*event*/) override { LayoutDialog(dialog_); }

 private:
  Dialog *dialog_;
  std::function<void()> painted_;
};

class DialogWidget : public QDialog {
 public:
  explicit DialogWidget(std::unique_ptr<Dialog> dialog) : dialog_(std::move(dialog)) {
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setWindowFlag(Qt::WindowMaximizeButtonHint, true);
    setSizeGripEnabled(false);
    auto *area = new QScrollArea(this);
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidgetResizable(true);
    dialog_->area = area;
    dialog_->client = new ClientWidget(dialog_.get(), [this] { Painted(); });
    area->setWidget(dialog_->client);
    // The window's background is shown everywhere.
    area->viewport()->setAutoFillBackground(false);
    dialog_->client->setAutoFillBackground(false);
    // Programs that paste are notified once the change is over.
    const auto reportSelection = [this] {
      if (dialog_->writing != nullptr) {
        ReportSelection(dialog_->writing);
      }
    };
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, reportSelection,
            Qt::QueuedConnection);
  }

  // The widgets of the controls refer to the records: they are deleted first.
  ~DialogWidget() override {
    dialog_->going = true;
    ForgetHandles(dialog_.get());
    for (const auto &control : dialog_->controls) {
      delete control->widget;
    }
  }
  DialogWidget(const DialogWidget &) = delete;
  DialogWidget &operator=(const DialogWidget &) = delete;

  // From the program's ids to Qt's, and back.
  std::unordered_map<uintptr_t, int> timers;

  // Qt never closes a dialog by itself: the procedure decides.
  void done(int /*result*/) override {}

 protected:
  void keyPressEvent(QKeyEvent *event) override {
    if (event->key() == Qt::Key_Escape) {
      PressEscape(dialog_.get());
    } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
      PressReturn(dialog_.get());
    } else if (event->key() == Qt::Key_F6) {
      GoToNextWindow(dialog_.get());
    } else if (event->key() == Qt::Key_F1) {
      AskForHelp(dialog_.get(), nullptr);
    } else {
      event->ignore();
    }
  }

  // An application that quits closes its windows, and a window may refuse.
  void closeEvent(QCloseEvent *event) override {
    const Hold hold(dialog_.get());
    if (dialog_->modal) {
      if (MayDiscard(dialog_.get())) {
        SendCommand(dialog_.get(), ORL_ID_CANCEL);
      }
    } else {
      SendUnlessEnded(ORL_WM_CLOSE, 0);
    }
    event->setAccepted(dialog_->ended || dialog_->going);
  }

  void resizeEvent(QResizeEvent *event) override {
    QDialog::resizeEvent(event);
    dialog_->area->setGeometry(rect());
  }

  void timerEvent(QTimerEvent *event) override {
    const auto found = std::find_if(timers.begin(), timers.end(), [event](const auto &timer) {
      return timer.second == event->timerId();
    });
    if (found != timers.end()) {
      SendUnlessEnded(ORL_WM_TIMER, found->first);
    } else {
      QDialog::timerEvent(event);
    }
  }

 private:
  // Sent later: procedures must not run while Qt draws.
  void Painted() {
    if (!dialog_->paintPosted) {
      dialog_->paintPosted = true;
      const auto sendPaint = [this] {
        dialog_->paintPosted = false;
        SendUnlessEnded(ORL_WM_PAINT, 0);
      };
      QMetaObject::invokeMethod(this, sendPaint, Qt::QueuedConnection);
    }
  }

  void SendUnlessEnded(uint32_t message, uintptr_t wParam) {
    if (!HasEnded(dialog_.get())) {
      Send(dialog_->window, message, wParam, 0);
    }
  }

  std::unique_ptr<Dialog> dialog_;
};

DialogWidget *WidgetOf(const Dialog *dialog) {
  return static_cast<DialogWidget *>(dialog->widget);
}

using Maker = Control *(*)(const OrlControl &row, Dialog *dialog);
Maker MakerOf(const OrlControl &row) {
  switch (row.kind) {
    case ORL_CONTROL_EDIT:
      return (row.style & ORL_STYLE_LINES) != 0 ? NewLines : NewLine;
    case ORL_CONTROL_LIST:
      return NewList;
    case ORL_CONTROL_BUTTON:
      return NewButton;
    case ORL_CONTROL_OPTION:
      return NewOption;
    case ORL_CONTROL_GROUP:
      return NewGroup;
    default:
      return NewLabel;
  }
}

void MakeControls(Dialog *dialog) {
  const OrlDialogTemplate &model = *dialog->model;
  for (int32_t i = 0; i < model.controlCount; ++i) {
    const OrlControl &row = model.controls[i];
    Control *control = MakerOf(row)(row, dialog);
    dialog->controls.emplace_back(control);
    control->dialog = dialog;
    control->id = row.id;
    control->kind = row.kind;
    control->style = row.style;
    control->window = NewHandle(dialog, control);
    control->widget->show();  // with the dialog
  }
  // A frame is drawn behind the controls inside it.
  for (const auto &control : dialog->controls) {
    if (control->kind == ORL_CONTROL_GROUP) {
      control->widget->lower();
    }
  }
}

// At the template's position in the parent's client area; without a known parent the window manager
// chooses.
void PutIntoPlace(Dialog *dialog) {
  const Dialog *parent = Find(dialog->parent).dialog;
  if (parent != nullptr) {
    const QPoint corner = parent->client->mapToGlobal(QPoint(0, 0));
    MoveFrame(dialog, corner + QPoint(qRound(dialog->model->x * dialog->unitX),
                                      qRound(dialog->model->y * dialog->unitY)));
  }
}

// A modeless dialog that belongs to this one.
Dialog *ModelessChildOf(const Dialog *owner) {
  for (Dialog *dialog : Dialogs()) {
    if (!dialog->modal && !dialog->going && Find(dialog->parent).dialog == owner) {
      return dialog;
    }
  }
  return nullptr;
}

void EndModalsOf(const Dialog *owner) {
  for (Dialog *dialog : Dialogs()) {
    if (dialog->modal && Find(dialog->parent).dialog == owner) {
      EndModal(dialog, dialog->result);
    }
  }
}

Control *FirstTabStop(const Dialog *dialog) {
  const auto found =
      std::find_if(dialog->controls.begin(), dialog->controls.end(), [](const auto &control) {
        return TakesFocus(*control) && (control->style & ORL_STYLE_NO_TAB) == 0;
      });
  return found == dialog->controls.end() ? nullptr : found->get();
}

void MeasureLists(Dialog *dialog) {
  for (size_t i = 0; i < dialog->controls.size() && !dialog->going; ++i) {
    Control *list = dialog->controls[i].get();
    if (list->kind == ORL_CONTROL_LIST && (list->style & ORL_STYLE_OWNER_DRAW) != 0) {
      const OrlTextMetrics &metrics = dialog->metrics;
      OrlMeasureItem measure = {list->id, 0, metrics.height + metrics.externalLeading};
      Send(dialog->window, ORL_WM_MEASUREITEM, static_cast<uintptr_t>(list->id),
           reinterpret_cast<intptr_t>(&measure));
      list->SetRowHeight(std::max(1, measure.height));
    }
  }
}

}  // namespace

QWidget *HostWidget(OrlWindow window) {
  const QWidgetList widgets = QApplication::allWidgets();
  const auto found = std::find(widgets.begin(), widgets.end(), static_cast<QWidget *>(window));
  return found == widgets.end() ? nullptr : *found;
}

void MoveFrame(Dialog *dialog, const QPoint &corner) {
  dialog->widget->move(corner);
  QWindow *window = dialog->widget->windowHandle();
  if (window != nullptr && !window->isVisible()) {
    window->setFramePosition(corner);  // else the frame would come above and left of it
  }
}

bool HasRoomBeside(const Dialog *dialog, const OrlDialogTemplate &other) {
  const QRect frame = dialog->widget->frameGeometry();
  const QRect screen = dialog->widget->screen()->availableGeometry();
  const int width = qRound(other.width * dialog->unitX) + kGapBeside;
  return frame.right() + width < screen.right() || frame.left() - width > screen.left();
}

void PlaceBeside(Dialog *dialog) {
  const Dialog *parent = Find(dialog->parent).dialog;
  if (parent == nullptr) {
    return;
  }
  const QRect frame = parent->widget->frameGeometry();
  const QRect screen = parent->widget->screen()->availableGeometry();
  const QSize size = dialog->widget->size();
  int left = frame.right() + kGapBeside;
  if (left + size.width() > screen.right()) {
    left = frame.left() - size.width() - kGapBeside;
  }
  if (left < screen.left()) {
    left = screen.right() - size.width();
  }
  const int lowest = std::max(screen.top(), screen.bottom() - size.height());
  MoveFrame(dialog, {std::max(screen.left(), left), std::min(frame.top(), lowest)});
}

void KeepAbove(QWidget *widget, OrlWindow parent) {
  const Place place = Find(parent);
  const QWidget *host = place.dialog != nullptr ? place.dialog->widget : HostWidget(parent);
  widget->winId();  // makes its window
  if (host != nullptr && host->window()->windowHandle() != nullptr) {
    widget->windowHandle()->setTransientParent(host->window()->windowHandle());
  }
}

void ReleaseDialog(Dialog *dialog) {
  dialog->widget->deleteLater();
}

bool CanNest() {
  const auto modals = std::count_if(Dialogs().begin(), Dialogs().end(),
                                    [](const Dialog *dialog) { return dialog->modal; });
  return !IsDrawing() && modals + OpenBoxes() < kMostModals;
}

bool TakesFocus(const Control &control) {
  return control.kind != ORL_CONTROL_LABEL && control.kind != ORL_CONTROL_GROUP &&
         control.widget->isEnabled() && !control.widget->isHidden();
}

Dialog *NewDialog(const OrlDialogTemplate *model, OrlWindow parent, OrlWindowProc proc,
                  bool modal) {
  if (model == nullptr || proc == nullptr || model->controlCount < 0 ||
      model->controlCount > kMostControls ||
      (model->controlCount > 0 && model->controls == nullptr) || !BeginApplication() ||
      (modal && !CanNest())) {
    return nullptr;
  }
  auto record = std::make_unique<Dialog>();
  Dialog *dialog = record.get();
  dialog->model = model;
  dialog->proc = proc;
  dialog->parent = parent;
  dialog->modal = modal;
  dialog->shown = modal || model->visible != 0;
  dialog->widget = new DialogWidget(std::move(record));
  dialog->window = NewHandle(dialog, nullptr);
  dialog->title = model->title;
  dialog->widget->setWindowTitle(CaptionText(model->title));
  if (modal) {
    dialog->widget->setWindowModality(Qt::ApplicationModal);
  }
  MakeControls(dialog);
  MeasureDialog(dialog);
  NameControls(dialog);
  KeepAbove(dialog->widget, parent);
  PutIntoPlace(dialog);
  LinkDialog(dialog);
  return dialog;
}

void OpenDialog(Dialog *dialog, intptr_t parameter) {
  const Hold hold(dialog);
  Send(dialog->window, ORL_WM_SETFONT, 1, 0);
  MeasureLists(dialog);
  const Control *first = FirstTabStop(dialog);
  const intptr_t result =
      Send(dialog->window, ORL_WM_INITDIALOG,
           reinterpret_cast<uintptr_t>(first == nullptr ? nullptr : first->window), parameter);
  if (dialog->going || dialog->ended) {
    return;
  }
  for (const auto &control : dialog->controls) {
    control->MarkAsSaved();
  }
  Control *stop = FirstTabStop(dialog);
  if (stop != nullptr && (result != 0 || dialog->widget->focusWidget() == nullptr)) {
    stop->widget->setFocus(Qt::OtherFocusReason);
  }
  RestoreSize(dialog);
  if (dialog->shown) {
    dialog->widget->show();
  }
}

void ShowDialog(Dialog *dialog, bool shown) {
  dialog->shown = shown;
  // A window beside a text that is being edited does not take the focus.
  const Dialog *parent = dialog->modal ? nullptr : Find(dialog->parent).dialog;
  dialog->widget->setAttribute(Qt::WA_ShowWithoutActivating,
                               parent != nullptr && parent->writing != nullptr);
  dialog->widget->setVisible(shown);
}

void FocusIn(Dialog *dialog, Control *control) {
  Control *remembered = control != nullptr ? control : FindControl(dialog->focus);
  if (remembered != nullptr && TakesFocus(*remembered)) {
    remembered->widget->setFocus(Qt::OtherFocusReason);
  }
  if (dialog->widget->isVisible() && !dialog->widget->isActiveWindow()) {
    dialog->widget->activateWindow();
  }
}

void Destroy(Dialog *dialog) {
  if (dialog->going) {
    return;
  }
  const Hold hold(dialog);
  dialog->going = true;
  Send(dialog->window, ORL_WM_DESTROY, 0, 0);
  EndModalsOf(dialog);
  for (Dialog *other = ModelessChildOf(dialog); other != nullptr; other = ModelessChildOf(dialog)) {
    Destroy(other);
  }
  for (const auto &control : dialog->controls) {
    Send(control->window, ORL_WM_DESTROY, 0, 0);
  }
  const Dialog *parent = Find(dialog->parent).dialog;
  ForgetHandles(dialog);
  dialog->gone = true;
  const bool wasActive = dialog->widget->isActiveWindow();
  KeepSize(dialog);
  dialog->widget->hide();
  if (wasActive && parent != nullptr && parent->widget->isVisible()) {
    parent->widget->activateWindow();
  }
}

intptr_t RunModal(Dialog *dialog) {
  const Hold hold(dialog);
  QEventLoop loop;
  dialog->loop = &loop;
  if (!dialog->ended) {
    loop.exec(QEventLoop::DialogExec);
  }
  // When the application itself ends, the dialog counts as cancelled.
  dialog->loop = nullptr;
  return dialog->result;
}

void EndModal(Dialog *dialog, intptr_t result) {
  if (dialog->modal && !dialog->ended) {
    dialog->ended = true;
    dialog->result = result;
    if (dialog->loop != nullptr) {
      dialog->loop->quit();
    }
  }
}

void SetTimerOf(Dialog *dialog, uintptr_t timer, uint32_t milliseconds) {
  constexpr uint32_t kShortestPeriod = 10;
  constexpr uint32_t kLongestPeriod = 0x7FFFFFFF;
  KillTimerOf(dialog, timer);
  const auto period = static_cast<int>(std::clamp(milliseconds, kShortestPeriod, kLongestPeriod));
  WidgetOf(dialog)->timers[timer] = dialog->widget->startTimer(period);
}

void KillTimerOf(Dialog *dialog, uintptr_t timer) {
  auto &timers = WidgetOf(dialog)->timers;
  const auto found = timers.find(timer);
  if (found != timers.end()) {
    dialog->widget->killTimer(found->second);
    timers.erase(found);
  }
}

}  // namespace qt_windows
