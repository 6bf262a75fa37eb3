// Pictures, and what a dialog draws into the rows of its lists: drawing is recorded first and
// painted later with the colours of the palette.
#ifndef ORLI11_WINDOWS_QT_PICTURES_H
#define ORLI11_WINDOWS_QT_PICTURES_H

#include <QByteArray>
#include <QImage>
#include <QRect>
#include <QString>
#include <QStyleOptionViewItem>

#include "windows/qt/state.h"

class QPainter;

namespace qt_windows {

// A picture with a transparent background, in its own colours and with inverted lightness; images
// are null when there is none.
struct Picture {
  QByteArray name;
  QImage onLight, onDark;
};

// A bitmap's picture, with one colour made transparent. Without images when the file is not a BMP
// file of the declared size.
Picture PictureOf(const OrlBitmap &bitmap, QRgb transparent);
// The image that is visible on this background.
const QImage &ImageOn(const QColor &ground, const Picture &picture);

// What a dialog has drawn for a row. Drawing twice replaces the first, except for inversions and
// focus rectangles, which cancel each other.
struct DrawnRow {
  QRect row;
  Picture picture;
  QPoint pictureAt;
  QByteArray text;
  QRect textRect;
  bool inverted = false;
  QRect invertedRect;
  bool focused = false;
  QRect focusRect;
};

// Sends WM_DRAWITEM to the dialog of a list for an item whose surface is set.
void DrawItem(const Control &list, OrlDrawItem *item, DrawnRow *drawn);
// Makes it draw a visible row of an owner-drawn list, or -1 for an empty list, with an action
// (ORL_DRAW_...) and state (ORL_STATE_...). False when that list or row does not exist. (list.cpp)
bool DrawRowOf(Control *list, int32_t row, uint32_t action, uint32_t state, DrawnRow *drawn);

// The part of a drawn row's rectangle that is available to its text.
QRect RoomOfText(const DrawnRow &drawn, const QStyleOptionViewItem &option);
void PaintDrawnRow(QPainter *painter, const QStyleOptionViewItem &option, const DrawnRow &drawn);

}  // namespace qt_windows

#endif
