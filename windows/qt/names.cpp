// Labels of other controls: mnemonics, and names for screen readers.
#include <QLabel>

#include "windows/qt/state.h"
#include "windows/qt/text_map.h"

namespace qt_windows {

namespace {

// A caption without its mnemonic mark; names in capitals with underscores in normal spelling.
QString SpokenName(const QByteArray &caption) {
  QString name = WithoutMarks(CaptionText(caption.constData()));
  if (name.contains('_')) {
    name = name.toLower().replace('_', ' ');
    name[0] = name[0].toUpper();
  }
  return name;
}

bool IsNamedByLabel(const Control &control) {
  return control.kind == ORL_CONTROL_EDIT || control.kind == ORL_CONTROL_LIST ||
         control.kind == ORL_CONTROL_OPTION;
}

// The control that a label belongs to: the next one, when its kind needs a label.
Control *LabelledBy(const Dialog *dialog, size_t label) {
  const size_t next = label + 1;
  Control *control = next < dialog->controls.size() ? dialog->controls[next].get() : nullptr;
  return control != nullptr && IsNamedByLabel(*control) ? control : nullptr;
}

}  // namespace

QString WithoutMarks(const QString &caption) {
  QString plain;
  plain.reserve(caption.size());
  for (qsizetype i = 0; i < caption.size(); ++i) {
    i += caption[i] == u'&' ? 1 : 0;
    if (i < caption.size()) {
      plain.append(caption[i]);
    }
  }
  return plain;
}

void NameControls(Dialog *dialog) {
  QWidget *before = nullptr;
  for (size_t i = 0; i < dialog->controls.size(); ++i) {
    Control *control = dialog->controls[i].get();
    if (control->kind == ORL_CONTROL_LABEL) {
      Control *named = LabelledBy(dialog, i);
      if (named != nullptr) {
        static_cast<QLabel *>(control->widget)->setBuddy(named->widget);
        control->SetText(control->Text().constData());  // whose mark becomes a mnemonic
      }
      if (control->base.isEmpty()) {
        control->widget->hide();  // it only provides the name
      }
      if (named != nullptr && named->kind != ORL_CONTROL_OPTION) {
        named->widget->setAccessibleName(SpokenName(control->Text()));
      }
      continue;
    }
    if (control->kind == ORL_CONTROL_EDIT && control->widget->accessibleName().isEmpty()) {
      control->widget->setAccessibleName(dialog->widget->windowTitle());
    }
    if ((control->style & ORL_STYLE_NO_TAB) != 0) {
      control->widget->setFocusPolicy(Qt::ClickFocus);
    } else if (control->kind != ORL_CONTROL_GROUP) {
      if (before != nullptr) {
        QWidget::setTabOrder(before, control->widget);
      }
      before = control->widget;
    }
  }
  DescribeDialog(dialog);
}

void DescribeDialog(Dialog *dialog) {
  QStringList texts;
  for (size_t i = 0; i < dialog->controls.size(); ++i) {
    const Control &control = *dialog->controls[i];
    const QByteArray text = control.Text();
    if (control.kind == ORL_CONTROL_LABEL && !text.isEmpty() && LabelledBy(dialog, i) == nullptr) {
      texts.push_back(WithoutMarks(CaptionText(text.constData())));
    }
  }
  dialog->widget->setAccessibleDescription(texts.join(' '));
}

}  // namespace qt_windows
