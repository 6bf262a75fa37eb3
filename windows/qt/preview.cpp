#include "windows/qt/preview.h"

#include <QShortcut>
#include <QTimer>
#include <cstddef>

#include "windows/qt/text_map.h"

namespace qt_windows {

namespace {

constexpr int32_t kList = 100, kNext = 101, kTold = 102;
constexpr uint32_t kPlain = 0;
constexpr OrlControl kControls[] = {
    {kTold, ORL_CONTROL_LABEL, kPlain, "Values", 6, 4, 108, 10},
    {kList, ORL_CONTROL_LIST, kPlain, "", 5, 16, 110, 104},
    {kNext, ORL_CONTROL_BUTTON, kPlain, "&Next", 71, 125, 44, 14},
};
constexpr OrlDialogTemplate kPreview = {"", "Preview", "", 8, 0, 0, 120, 144, 0, 3, kControls};

// The preview whose window receives a message.
Preview *PreviewOf(OrlWindow window) {
  const Dialog *dialog = FindDialog(window);
  const Dialog *parent = dialog == nullptr ? nullptr : Find(dialog->parent).dialog;
  return parent == nullptr || parent->writing == nullptr ? nullptr : parent->writing->PreviewHere();
}

intptr_t PreviewProc(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t /*lParam*/) {
  Dialog *dialog = FindDialog(window);
  Preview *preview = PreviewOf(window);
  if (message == ORL_WM_CLOSE && dialog != nullptr) {
    Destroy(dialog);
  } else if (message == ORL_WM_COMMAND && wParam == kNext && preview != nullptr) {
    preview->Next();
  }
  return 0;
}

}  // namespace

bool HasPreview() {
  const OrlEditorHost *host = GetEditorHost();
  return host != nullptr && host->size > offsetof(OrlEditorHost, Preview) &&
         host->Preview != nullptr;
}

Preview::Preview(Control *edit, const OrlTextAid *aid)
    : QObject(edit->widget), edit_(edit), aid_(aid) {
  auto *next = new QShortcut(QKeySequence(Qt::ALT | Qt::Key_N), edit->dialog->widget);
  connect(next, &QShortcut::activated, this, [this] { Next(); });
  // Once the dialog is shown, and only where it hides nothing.
  QTimer::singleShot(0, this, [this] {
    const Dialog *dialog = edit_->dialog;
    if (dialog->widget->isVisible() && HasRoomBeside(dialog, kPreview)) {
      Open();
    }
  });
}

Dialog *Preview::Window() const {
  Dialog *dialog = FindDialog(window_);
  return dialog == nullptr || dialog->going ? nullptr : dialog;
}

void Preview::Toggle() {
  Dialog *present = Window();
  if (present != nullptr) {
    Destroy(present);
  } else {
    Open();
  }
}

void Preview::Open() {
  Dialog *dialog = NewDialog(&kPreview, edit_->dialog->window, PreviewProc, false);
  if (dialog == nullptr) {
    return;
  }
  const Hold hold(dialog);
  window_ = dialog->window;
  PlaceBeside(dialog);
  OpenDialog(dialog, 0);
  ShowDialog(dialog, true);
  Fill();
}

void Preview::Follow(const QByteArray &text, const OrlTextState &state) {
  text_ = text;
  isGood_ = !text.isEmpty() && state.error == 0;
  told_ = isGood_ ? QByteArray(state.message) : QByteArray("Values");
  Fill();
}

void Preview::Fill() {
  Dialog *dialog = Window();
  const OrlEditorHost *host = GetEditorHost();
  if (dialog == nullptr || !HasPreview()) {
    return;
  }
  const Hold hold(dialog);
  Control *list = ControlById(dialog, kList);
  OrlWindow rows = list->window;
  while (Send(rows, ORL_LB_DELETESTRING, 0, 0) > 0) {
  }
  ControlById(dialog, kTold)->SetText(told_.constData());
  if (isGood_) {
    host->Preview(host->user, text_.constData(), rows);
  }
}

void Preview::Next() {
  const Hold hold(edit_->dialog);
  if (aid_->Next != nullptr && !HasEnded(edit_->dialog)) {
    aid_->Next();
  }
}

}  // namespace qt_windows
