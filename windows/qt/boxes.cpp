// Question boxes.
#include <QApplication>
#include <QMessageBox>
#include <QScopedValueRollback>
#include <algorithm>

#include "windows/qt/state.h"
#include "windows/qt/text_map.h"

namespace qt_windows {

namespace {

int32_t openBoxes = 0;

struct BoxButton {
  int32_t answer;
  QMessageBox::StandardButton button;
};
constexpr BoxButton kOk = {ORL_ID_OK, QMessageBox::Ok};
constexpr BoxButton kCancel = {ORL_ID_CANCEL, QMessageBox::Cancel};
constexpr BoxButton kYes = {ORL_IDYES, QMessageBox::Yes};
constexpr BoxButton kNo = {ORL_IDNO, QMessageBox::No};

// The buttons of a type in their order; the last one is the answer for Escape.
std::vector<BoxButton> ButtonsOf(uint32_t type) {
  switch (type & 15) {
    case ORL_MB_YESNO:
      return {kYes, kNo};
    case ORL_MB_YESNOCANCEL:
      return {kYes, kNo, kCancel};
    default:
      return {kOk};
  }
}

QString BoxText(const char *text) {
  QString shown = ShownText(text, TextKind::Lines);
  return shown.replace(QChar::ParagraphSeparator, '\n').replace(QChar::LineSeparator, '\n');
}

QMessageBox::Icon IconOf(uint32_t type) {
  constexpr uint32_t kIcons = 0xF0;
  return (type & kIcons) == ORL_MB_ICONSTOP       ? QMessageBox::Critical
         : (type & kIcons) == ORL_MB_ICONQUESTION ? QMessageBox::Question
                                                  : QMessageBox::NoIcon;
}

}  // namespace

int32_t OpenBoxes() {
  return openBoxes;
}

int32_t ShowBox(OrlWindow parent, const char *text, const char *caption, uint32_t type) {
  if (!BeginApplication() || !CanNest()) {
    return 0;
  }
  const std::vector<BoxButton> buttons = ButtonsOf(type);
  const size_t first = (type & ORL_MB_DEFBUTTON2) != 0 && buttons.size() > 1 ? 1 : 0;
  int pressed = 0;
  {
    QMessageBox box;
    box.setWindowTitle(CaptionText(caption));
    box.setTextFormat(Qt::PlainText);
    box.setText(BoxText(text));
    box.setIcon(IconOf(type));
    for (const BoxButton &each : buttons) {
      box.addButton(each.button);
    }
    box.setDefaultButton(buttons[first].button);
    box.setEscapeButton(buttons.back().button);
    box.setWindowModality(Qt::ApplicationModal);
    const Dialog *dialog = Find(parent).dialog;
    if (dialog != nullptr) {
      box.setFont(dialog->widget->font());
    }
    KeepAbove(&box, parent);
    const QScopedValueRollback<int32_t> one(openBoxes, openBoxes + 1);
    pressed = box.exec();
  }
  EndApplication();
  const auto found = std::find_if(buttons.begin(), buttons.end(),
                                  [pressed](const auto &each) { return each.button == pressed; });
  return found == buttons.end() ? buttons.back().answer : found->answer;
}

}  // namespace qt_windows
