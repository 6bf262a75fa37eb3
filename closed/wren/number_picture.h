// Numbers under a picture.
#ifndef ORLI11_CLOSED_WREN_NUMBER_PICTURE_H
#define ORLI11_CLOSED_WREN_NUMBER_PICTURE_H

#include <cstdint>

#include "closed/wren/country.h"
#include "wreni11.h"

// Writes the record's number under its number picture into `output`: 1, or 0 with the empty text
// when the picture is bad or the text too long.
int32_t WriteByNumberPicture(const FormatRecord &record, const Country &country);

#endif
