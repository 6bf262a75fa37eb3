// Formats dates by a picture or by the country settings.
#ifndef ORLI11_CLOSED_WREN_DATE_FORMAT_H
#define ORLI11_CLOSED_WREN_DATE_FORMAT_H

#include <cstdint>
#include <string_view>

#include "wreni11.h"

// Bytes of the longest date text with its terminator.
constexpr int32_t kDateTextCapacity = 100;

enum class DateTextResult : uint8_t { Written, Refused, TooLong };

// Writes `record.output`, which must not be null; the empty text unless the result is Written.
DateTextResult WriteDateText(const FormatRecord &record);

// Name `index` of a list like those of the LocaleBlock, each name after a ";"; empty when the list
// is shorter. A null list is empty.
std::string_view NameOfList(const char *list, int32_t index);

#endif
