// Formatting numbers by a picture.
#ifndef ORLI11_CLOSED_WREN_NUMBER_PICTURE_H
#define ORLI11_CLOSED_WREN_NUMBER_PICTURE_H

#include <cstdint>

#include "closed/wren/country.h"
#include "wreni11.h"

// Writes the record's number under its number picture into `output`: 1, or 0 with the empty string
// when the picture is bad or the output too long.
int32_t WriteByNumberPicture(const FormatRecord &record, const Country &country);

#endif
