#include "dates/date_text.h"

#include <algorithm>
#include <iterator>

#include "dates/stored_date.h"
#include "orli11.h"

namespace {

// The three forms of a date text in the order in which they are tried, each with the number of its
// picture.
struct DateForm {
  int32_t mode;
  int32_t code;
};
constexpr DateForm kForms[kDateForms] = {
    {WREN_FMT_DATE, kDateForm},          // pictures[0]
    {WREN_FMT_DATETIME, kDateTimeForm},  // pictures[1]
    {WREN_FMT_TIME, kTimeForm},          // pictures[2]
};

// The locale's part of the format record, loaded at its first use and kept for the life of the
// process.
const LocaleBlock &LocaleOnce() {
  static const LocaleBlock block = [] {
    LocaleBlock loaded;
    WRENFmtLoadLocale(&loaded);
    return loaded;
  }();
  return block;
}

// Prepares the record to format by the picture instead of the country settings.
void UsePicture(FormatRecord &record, const char *picture) {
  const LocaleBlock &locale = LocaleOnce();
  record.picture = picture;
  record.picture2 = picture;
  record.dateOrder = locale.dateOrder;
  record.clock24 = locale.clock24;
  record.dayNames = locale.dayNames;
  record.monthNames = locale.monthNames;
  record.markers = locale.markers;
  record.useCountry = 0;
  record.pivotYear = locale.pivotYear;
  record.flags &= ~WREN_FMT_FLAG_RETRY;
}

bool ParseInMode(FormatRecord &record, int32_t mode) {
  record.mode = mode;
  return WRENFmtParseDate(&record) != 0;
}

}  // namespace

bool DateFromText(NumberValue *target, const char *text) {
  FormatRecord record;
  WRENFmtInit(&record);
  record.input = text;
  record.useCountry = 1;
  if (!ParseInMode(record, WREN_FMT_DATETIME)) {
    record.flags |= WREN_FMT_FLAG_RETRY;
    if (!ParseInMode(record, WREN_FMT_TIME)) {
      return false;
    }
  }
  EncodeDate(target, record.parts);
  return true;
}

int32_t DateRewriteText(const char *text, char *buffer, const char *picture1, const char *picture2,
                        const char *picture3) {
  const char *const pictures[] = {picture1, picture2, picture3};
  static_assert(std::size(pictures) == std::size(kForms));
  buffer[0] = 0;
  FormatRecord record;
  WRENFmtInit(&record);
  record.input = text;
  record.useCountry = 1;
  for (size_t i = 0; i < std::size(kForms); ++i) {
    if (ParseInMode(record, kForms[i].mode) == 0) {
      continue;
    }
    record.flags &= ~WREN_FMT_FLAG_SHORT;
    record.output = buffer;
    if (pictures[i] != nullptr) {
      UsePicture(record, pictures[i]);
      WRENFmtDate(&record);
    }
    return kForms[i].code;
  }
  return kNoDateForm;
}

bool DateToTextPicture(const NumberValue *date, const char *picture, char *buffer) {
  buffer[0] = 0;
  if (date->length == 0) {
    return true;
  }
  if (WRENFmtCheckDatePicture(picture) == 0) {
    return false;
  }
  FormatRecord record;
  WRENFmtInit(&record);
  record.mode = WREN_FMT_DATETIME;
  record.output = buffer;
  UsePicture(record, picture);
  DecodeDate(*date, &record.parts);
  return WRENFmtDate(&record) != 0;
}

bool DateToTextDefault(const NumberValue *date, char *buffer) {
  buffer[0] = 0;
  if (date->length == 0) {
    return true;
  }
  FormatRecord record;
  WRENFmtInit(&record);
  record.mode = WREN_FMT_DATETIME;
  record.output = buffer;
  record.useCountry = 1;
  DecodeDate(*date, &record.parts);
  return WRENFmtDate(&record) != 0;
}

int32_t DatePictureWidth(uint16_t convertFlags, const char *const pictures[kDateForms],
                         const char *const templates[kDateForms]) {
  FormatRecord record;
  WRENFmtInit(&record);
  int32_t width = 0;
  int32_t longestTemplate = 0;
  for (size_t i = 0; i < std::size(kForms); ++i) {
    if (pictures[i] != nullptr) {
      UsePicture(record, pictures[i]);
      record.mode = kForms[i].mode;
      width = WRENFmtWidth(&record, width);
    }
    longestTemplate = std::max(longestTemplate, WRENStrLen(templates[i]));
  }
  return (convertFlags & ORL_CONVERT_EXTENDED_TEXT) != 0 ? width + longestTemplate : width;
}
