// Pages of help beside a dialog.
#include <QTextBrowser>
#include <QVBoxLayout>

#include "windows/qt/state.h"
#include "windows/qt/text_map.h"

namespace qt_windows {

namespace {

constexpr OrlDialogTemplate kPage = {"", "Help", "", 8, 0, 0, 200, 180, 0, 0, nullptr};

intptr_t PageProc(OrlWindow window, uint32_t message, uintptr_t /*wParam*/, intptr_t /*lParam*/) {
  Dialog *dialog = FindDialog(window);
  if (message == ORL_WM_CLOSE && dialog != nullptr) {
    Destroy(dialog);
  }
  return 0;
}

// The help page beside a dialog, or null.
Dialog *PageOf(const Dialog *owner) {
  for (Dialog *dialog : Dialogs()) {
    if (dialog->model == &kPage && !dialog->going && dialog->parent == owner->window) {
      return dialog;
    }
  }
  return nullptr;
}

Dialog *NewPage(const Dialog *owner) {
  Dialog *page = NewDialog(&kPage, owner->window, PageProc, false);
  if (page == nullptr) {
    return nullptr;
  }
  auto *layout = new QVBoxLayout(page->client);
  layout->setContentsMargins(0, 0, 0, 0);
  auto *browser = new QTextBrowser;
  browser->setOpenLinks(false);
  browser->setFrameShape(QFrame::NoFrame);
  browser->document()->setDocumentMargin(page->metrics.height / 2.0);
  layout->addWidget(browser);
  PlaceBeside(page);
  OpenDialog(page, 0);
  return page;
}

}  // namespace

void ShowPage(OrlWindow window, const char *title, const char *text) {
  const Dialog *owner = FindDialog(window);
  if (owner == nullptr || title == nullptr || text == nullptr) {
    return;
  }
  Dialog *page = PageOf(owner);
  page = page == nullptr ? NewPage(owner) : page;
  if (page == nullptr) {
    return;
  }
  const Hold hold(page);
  auto *browser = page->client->findChild<QTextBrowser *>();
  page->title = title;
  page->widget->setWindowTitle(CaptionText(title));
  browser->setMarkdown(QString::fromUtf8(text));
  browser->setAccessibleName(CaptionText(title));
  browser->setFocus();
  ShowDialog(page, true);
}

}  // namespace qt_windows
