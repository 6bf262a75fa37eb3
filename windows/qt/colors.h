// Colours that match the current palette, light or dark.
#ifndef ORLI11_WINDOWS_QT_COLORS_H
#define ORLI11_WINDOWS_QT_COLORS_H

#include <QColor>
#include <QPalette>

namespace qt_windows {

// A colour blended with `percent` onto a background.
inline QColor Mixed(const QColor &ground, const QColor &color, int percent) {
  const auto mix = [percent](int from, int to) { return from + (to - from) * percent / 100; };
  return {mix(ground.red(), color.red()), mix(ground.green(), color.green()),
          mix(ground.blue(), color.blue())};
}

inline bool IsDark(const QPalette &palette) {
  return palette.color(QPalette::Base).lightness() < 128;
}

// For errors, and for text in quotes. Both contrast with the background also for colour-blind
// users.
inline QColor FaultColor(const QPalette &palette) {
  return IsDark(palette) ? QColor(0xFF, 0x8A, 0x80) : QColor(0xB0, 0x00, 0x20);
}

inline QColor QuotedColor(const QPalette &palette) {
  return IsDark(palette) ? QColor(0x9C, 0xD6, 0x8C) : QColor(0x1B, 0x6B, 0x2A);
}

}  // namespace qt_windows

#endif
