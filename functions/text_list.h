// Strings as comma-separated lists of fields: no quoting, and blanks belong to the field.
#ifndef ORLI11_FUNCTIONS_TEXT_LIST_H
#define ORLI11_FUNCTIONS_TEXT_LIST_H

#include <cstdint>

// One field of a list, in place.
struct ListField {
  const char *text;
  int64_t bytes;
};

// The field with this index, counted from 0; an empty one when the list has no such field.
ListField ListFieldAt(const char *list, int64_t index);

// The index of the first field that is `text`, or -1. The empty list has one empty field.
int64_t ListIndexOf(const char *list, const char *text);

#endif
