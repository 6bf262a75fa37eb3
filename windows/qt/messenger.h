// Widgets whose events are passed to the procedure of their control first.
#ifndef ORLI11_WINDOWS_QT_MESSENGER_H
#define ORLI11_WINDOWS_QT_MESSENGER_H

#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>

#include "windows/qt/state.h"

namespace qt_windows {

template <class Widget>
class Messenger : public Widget {
 public:
  Messenger(Control *control, QWidget *parent) : Widget(parent), control_(control) {}

  // The widget's own handling of a key press or mouse event.
  void OwnEvent(QEvent *event) {
    switch (event->type()) {
      case QEvent::KeyPress:
        Widget::keyPressEvent(static_cast<QKeyEvent *>(event));
        break;
      case QEvent::MouseButtonPress:
        Widget::mousePressEvent(static_cast<QMouseEvent *>(event));
        break;
      case QEvent::MouseMove:
        Widget::mouseMoveEvent(static_cast<QMouseEvent *>(event));
        break;
      case QEvent::MouseButtonRelease:
        Widget::mouseReleaseEvent(static_cast<QMouseEvent *>(event));
        break;
      case QEvent::MouseButtonDblClick:
        Widget::mouseDoubleClickEvent(static_cast<QMouseEvent *>(event));
        break;
      default:
        break;
    }
  }

 protected:
  void keyPressEvent(QKeyEvent *event) override {
    KeyPressed(control_, event, [this, event] { Widget::keyPressEvent(event); });
  }
  void keyReleaseEvent(QKeyEvent *event) override {
    KeyReleased(control_, event, [this, event] { Widget::keyReleaseEvent(event); });
  }
  void mousePressEvent(QMouseEvent *event) override {
    MousePressed(control_, event, [this, event] { Widget::mousePressEvent(event); });
  }
  void mouseMoveEvent(QMouseEvent *event) override {
    MouseMoved(control_, event, [this, event] { Widget::mouseMoveEvent(event); });
  }
  void mouseReleaseEvent(QMouseEvent *event) override {
    MouseReleased(control_, event, [this, event] { Widget::mouseReleaseEvent(event); });
  }
  void mouseDoubleClickEvent(QMouseEvent *event) override {
    MouseDoubleClicked(control_, event, [this, event] { Widget::mouseDoubleClickEvent(event); });
  }
  void focusInEvent(QFocusEvent *event) override {
    FocusCame(control_, [this, event] { Widget::focusInEvent(event); });
  }

 private:
  Control *control_;
};

}  // namespace qt_windows

#endif
