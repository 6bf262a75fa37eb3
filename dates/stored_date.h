// Dates between their stored form and their parts.
#ifndef ORLI11_DATES_STORED_DATE_H
#define ORLI11_DATES_STORED_DATE_H

#include "closed/pavn/stored_form.h"
#include "wreni11.h"

// Decodes a date; false, with all parts zero, for null and for a value that is not a date.
inline bool DecodeDate(const NumberValue &date, DateTimeParts *parts) {
  if (date.length != kStoredLength) {
    *parts = {};
    return false;
  }
  StoredDate stored = {};
  std::memcpy(&stored.date, date.payload, sizeof stored.date);
  std::memcpy(&stored.time, date.payload + sizeof stored.date, sizeof stored.time);
  return DecodeStoredDate(stored, parts);
}

// Encodes parts; null when they are not a date of the calendar.
inline void EncodeDate(NumberValue *result, const DateTimeParts &parts) {
  StoredDate stored = {};
  result->length = static_cast<uint8_t>(EncodeStoredDate(&stored, parts));
  std::memcpy(result->payload, &stored.date, sizeof stored.date);
  std::memcpy(result->payload + sizeof stored.date, &stored.time, sizeof stored.time);
}

#endif
