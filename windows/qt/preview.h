// The window beside an editor that shows what the text gives for the first rows of data.
#ifndef ORLI11_WINDOWS_QT_PREVIEW_H
#define ORLI11_WINDOWS_QT_PREVIEW_H

#include <QObject>

#include "windows/qt/state.h"

namespace qt_windows {

// Whether the host offers values, so that the window is there.
bool HasPreview();

// Belongs to the widget of the edit that it follows.
class Preview : public QObject {
 public:
  Preview(Control *edit, const OrlTextAid *aid);

  // Shows the window, or takes it away.
  void Toggle();
  // The values of a text that has been checked; empty for none.
  void Follow(const QByteArray &text, const OrlTextState &state);
  // Stores the text and goes on with another.
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
