// The window beside an editor that shows the values of the text for the first rows of data.
#ifndef ORLI11_WINDOWS_QT_PREVIEW_H
#define ORLI11_WINDOWS_QT_PREVIEW_H

#include <QObject>

#include "windows/qt/state.h"

namespace qt_windows {

// Whether the host provides values, so that the window exists.
bool HasPreview();

// Owned by the widget of its edit.
class Preview : public QObject {
 public:
  Preview(Control *edit, const OrlTextAid *aid);

  // Shows or hides the window.
  void Toggle();
  // Shows the values of a checked text; empty for none.
  void Follow(const QByteArray &text, const OrlTextState &state);
  // Stores the text and starts a new one.
  void Next();

 private:
  void Open();
  void Fill();
  Dialog *Window() const;

  Control *edit_;
  const OrlTextAid *aid_;
  OrlWindow window_ = nullptr;
  QByteArray text_, told_;
  bool isGood_ = false;
};

}  // namespace qt_windows

#endif
