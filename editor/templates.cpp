// What a pick of a function appends to its name: parentheses with a placeholder for each
// parameter, and brackets around those that may be left out.
//
//   parameters  first optional  optional  text
//   negative    0               0         nothing
//   0           0               0         ()
//   3           0               0         ( T , T , T )
//   2           1               2         ( T [, T [, T ]])      a group that repeats
//   2           1               0         ( T , T [,Any...] )    a tail of any length
//   2           0               2         ([ T , T ] )           all or none
#include <algorithm>
#include <cassert>
#include <cstring>

#include "editor/editor.h"
#include "engine/items.h"
#include "engine/module.h"

namespace {

// Output to a buffer of `size` bytes: written as far as it fits, counted in full.
struct BoundedText {
  char *buffer;
  int32_t size;
  int32_t length;
};

void Append(BoundedText &text, const char *part) {
  const auto length = static_cast<int32_t>(std::strlen(part));
  if (text.length + length < text.size) {
    std::memcpy(text.buffer + text.length, part, static_cast<size_t>(length) + 1);
  }
  text.length += length;
}

void WriteTemplate(BoundedText &text, const ExprItem *item) {
  const int32_t declared = item->paramCount;
  const int32_t first = item->firstOptional;
  const int32_t optional = item->optionalCount;
  const int32_t places = std::max(first + optional, declared);
  if (declared >= 0) {
    Append(text, "(");
  }
  if ((item->itemFlags & ORL_FUNC_NEEDS_DISTINCT) != 0) {
    Append(text, "DISTINCT ");
  }
  if (first == 0 && optional != 0) {
    Append(text, "[");
  }
  for (int32_t i = 0; i < places; ++i) {
    Append(text, " ");
    Append(text, OrlParameterLabel(item, i));
    Append(text, " ");
    if (i < places - 1) {
      Append(text, optional != 0 && first != 0 && i >= first - 1 ? "[," : ",");
    }
  }
  if (first != 0 && optional != 0) {
    for (int32_t i = 0; i < optional; ++i) {
      Append(text, "]");
    }
  } else if (first != 0) {
    Append(text, "[");
    for (int32_t i = first; i < declared; ++i) {
      Append(text, ",");
      Append(text, moduleTexts.typeLabels[kLabelAny]);
    }
    Append(text, "...] ");
  } else if (optional != 0) {
    Append(text, "] ");
  }
  if (declared >= 0) {
    Append(text, ")");
  }
}

}  // namespace

const char *OrlTypeLabel(uint16_t dataType) {
  switch (dataType) {
    case ORL_TYPE_NUMBER:
      return moduleTexts.typeLabels[kLabelNumber];
    case ORL_TYPE_DATE:
      return moduleTexts.typeLabels[kLabelDate];
    case ORL_TYPE_STRING:
      return moduleTexts.typeLabels[kLabelString];
    case ORL_TYPE_FOLLOWS:
    case ORL_TYPE_ANY:
      return moduleTexts.typeLabels[kLabelAny];
    default:
      return moduleTexts.typeLabels[kLabelKeyword];
  }
}

const char *OrlParameterLabel(const ExprItem *item, int32_t index) {
  // A function without parentheses has one record. A group that repeats is written with the type of
  // its first parameter, or that of the last one where the host has declared none.
  const int32_t records = item->paramCount < 0 ? 1 : item->paramCount;
  if (records == 0) {
    return moduleTexts.typeLabels[kLabelAny];
  }
  const int32_t wanted = index < item->paramCount ? index : int32_t{item->firstOptional};
  return OrlTypeLabel(ItemParameters(item)[std::min(wanted, records - 1)].dataType);
}

int32_t OrlTemplateLength(const ExprItem *item) {
  BoundedText text = {nullptr, 0, 0};
  WriteTemplate(text, item);
  return text.length;
}

bool OrlBuildTemplate(char *buffer, int32_t size, const ExprItem *item) {
  assert(size > 0 && strnlen(buffer, static_cast<size_t>(size)) < static_cast<size_t>(size));
  const auto before = static_cast<int32_t>(std::strlen(buffer));
  BoundedText text = {buffer, size, before};
  WriteTemplate(text, item);
  if (text.length >= size) {
    buffer[before] = '\0';
    return false;
  }
  return true;
}
