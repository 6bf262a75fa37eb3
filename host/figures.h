// Aggregates of the rows of a group: counts, sums, means and the like.
#ifndef ORLI11_HOST_FIGURES_H
#define ORLI11_HOST_FIGURES_H

#include <orli11.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "host/commands.h"

// The state of one aggregate of a group.
struct Entry {
  NumberValue number = {};                                    // null before the first value
  int64_t values = 0;                                         // those that were not null
  std::unique_ptr<std::vector<NumberValue>> all;              // of a median
  std::unique_ptr<std::unordered_set<std::string>> distinct;  // of a count of these, as bytes
};

// The name of an aggregate on the command line, without "--".
const char *FigureName(ReportFigure figure);

// False with a message for a formula of a type that the aggregate does not accept.
bool FigureAccepts(ReportFigure figure, int32_t type, const std::string &title, std::string &error);

// The result type of an aggregate over values of that type.
int32_t FigureType(ReportFigure figure, int32_t type);

// Adds the value of a row, `block`, which is null when there is none.
void FigureAdd(ReportFigure figure, int32_t type, const void *block, Entry &entry);

// The result of an aggregate: null without values, or when it is too large for a number.
NumberValue FigureValue(ReportFigure figure, Entry &entry);

// Bytes that are equal exactly for equal values of a type.
void AppendKey(int32_t type, const void *block, std::string &key);
// The value at the start of a key: a number or date, or a terminated string. Removes its bytes from
// the key.
const char *TakeKey(int32_t type, std::string_view &key, NumberValue &number);

#endif
