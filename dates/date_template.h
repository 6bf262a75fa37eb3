// Date conversion templates: a text with one "%s" for the date; "%%" is a percent sign.
#ifndef ORLI11_DATES_DATE_TEMPLATE_H
#define ORLI11_DATES_DATE_TEMPLATE_H

#include <cstdint>
#include <cstring>

#include "dates/date_text.h"

// The one of a context's three templates for a form of date text, or null.
inline const char *TemplateOfForm(const char *const templates[kDateForms], int32_t form) {
  return form == kDateForm       ? templates[0]
         : form == kDateTimeForm ? templates[1]
         : form == kTimeForm     ? templates[2]
                                 : nullptr;
}

// Passes the parts of a template, filled with a date, to `put` (text, length) in order. Only the
// first "%s" is filled; every other byte is copied.
template <typename Put>
void FillDateTemplate(const char *text, const char *date, Put put) {
  bool filled = false;
  while (*text != '\0') {
    const size_t plain = std::strcspn(text, "%");
    if (plain != 0) {
      put(text, static_cast<int64_t>(plain));
      text += plain;
    } else if (!filled && text[1] == 's') {
      put(date, static_cast<int64_t>(std::strlen(date)));
      filled = true;
      text += 2;
    } else {
      put("%", 1);
      text += text[1] == '%' ? 2 : 1;
    }
  }
}

#endif
