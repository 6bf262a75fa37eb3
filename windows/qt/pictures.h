// Pictures, and what a dialog draws into the rows of its lists: it is noted first and painted with
// the colours of the palette afterwards.
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

// A picture whose ground is transparent, as it is and with light for dark colours; images are null
// when there is none.
struct Picture {
  QByteArray name;
  QImage onLight, onDark;
};

// A bitmap's picture, with one colour made transparent. Without images when the file is no BMP file
// of the size that it is told to have.
Picture PictureOf(const OrlBitmap &bitmap, QRgb transparent);
// The image that can be seen on this ground.
const QImage &ImageOn(const QColor &ground, const Picture &picture);

// What a dialog has drawn for a row. What it draws twice counts the last time, but for inversions
// and focus rectangles, which take each other back.
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

// Has the dialog of a list draw an item, whose surface is filled in, with WM_DRAWITEM.
void DrawItem(const Control &list, OrlDrawItem *item, DrawnRow *drawn);
// Has it draw a row of an owner-drawn list that is in view, or -1 for an empty list, with an action
// (ORL_DRAW_...) and state (ORL_STATE_...). False when that list or row is not there. (list.cpp)
bool DrawRowOf(Control *list, int32_t row, uint32_t action, uint32_t state, DrawnRow *drawn);

// The part of a drawn row's rectangle that its text has for itself.
QRect RoomOfText(const DrawnRow &drawn, const QStyleOptionViewItem &option);
void PaintDrawnRow(QPainter *painter, const QStyleOptionViewItem &option, const DrawnRow &drawn);

}  // namespace qt_windows

#endif
