// Formatting and parsing numbers by given country settings.
#ifndef ORLI11_CLOSED_WREN_NUMBER_FORMAT_H
#define ORLI11_CLOSED_WREN_NUMBER_FORMAT_H

#include <cstdint>

#include "closed/wren/country.h"
#include "wreni11.h"

// As WRENFmtNumber and WRENFmtParseNumber, using `country` where the record refers to the country
// settings. The record is not null.
int32_t FormatNumberBy(FormatRecord *record, const Country &country);
int32_t ParseNumberBy(FormatRecord *record, const Country &country);

#endif
