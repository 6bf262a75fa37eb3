// Dates as values of formulas.
#ifndef ORLI11_FUNCTIONS_DATE_VALUE_H
#define ORLI11_FUNCTIONS_DATE_VALUE_H

#include "dates/stored_date.h"
#include "functions/value.h"

// Decodes a date; false, with all parts zero, for every other value.
inline bool DateOf(const Value &value, DateTimeParts *parts) {
  if (value.form != ValueForm::Packed || value.packed.length != kStoredLength) {
    *parts = {};
    return false;
  }
  return DecodeStoredDate({value.packed.head, value.packed.low}, parts);
}

// Null for parts that are not in the calendar.
inline void SetDate(Value *value, const DateTimeParts &parts) {
  StoredDate stored = {};
  value->packed.length = static_cast<uint8_t>(EncodeStoredDate(&stored, parts));
  value->packed.head = stored.date;
  value->packed.low = stored.time;
  value->form = ValueForm::Packed;
}

#endif
