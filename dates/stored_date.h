// Dates between their stored form and their parts.
#ifndef ORLI11_DATES_STORED_DATE_H
#define ORLI11_DATES_STORED_DATE_H

#include "closed/pavn/stored_form.h"
#include "wreni11.h"

// Takes a date apart; false, with all parts zero, for null and for a value that is no date.
inline bool DecodeDate(const NumberValue &date, DateTimeParts *parts) {
  *parts = {};
  return date.length == kStoredLength && DecodeStoredDate(date.payload, parts);
}

// Stores parts; null for those of no calendar.
inline void EncodeDate(NumberValue *result, const DateTimeParts &parts) {
  *result = NumberValue{};
  result->length = static_cast<uint8_t>(EncodeStoredDate(result->payload, parts));
}

#endif
