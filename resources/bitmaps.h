// The bitmaps: pictures of the mode buttons, and the small ones of the rows of formulas. Their
// background is the light grey that the captions of the buttons call transparent.
#ifndef ORLI11_RESOURCES_BITMAPS_H
#define ORLI11_RESOURCES_BITMAPS_H

#include "orli11/windows.h"

constexpr char kBitmapFormulaRow[] = "formulal";
constexpr char kBitmapRangeRow[] = "rangel";
constexpr char kBitmapSetRow[] = "setl";

// The bitmap of this name in any case, null when there is none. Valid as long as the module is
// loaded.
const OrlBitmap *FindBitmap(const char *name);

#endif
