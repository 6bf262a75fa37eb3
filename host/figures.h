/* figures.h - what the rows of a group come to: counts, sums, means and the like. */
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

/* What the rows of a group came to so far in one figure. */
struct Entry {
  NumberValue number = {};                                   /* null before the first value */
  int64_t values = 0;                                        /* those that were not null */
  std::unique_ptr<std::vector<NumberValue>> all;             /* of a median */
  std::unique_ptr<std::unordered_set<std::string>> distinct; /* of a count of these, as bytes */
};

/* The name of a figure on the command line, without "--". */
const char *FigureName(ReportFigure figure);

/* False with a message for a formula of a type that the figure cannot have. */
bool FigureTakes(ReportFigure figure, int32_t type, const std::string &title, std::string &error);

/* The type of a figure over values of that type. */
int32_t FigureType(ReportFigure figure, int32_t type);

/* Adds the value of a row, `block`, which is null when there is none. */
void FigureAdd(ReportFigure figure, int32_t type, const void *block, Entry &entry);

/* What a figure came to: null without values, or beyond what a number holds. */
NumberValue FigureValue(ReportFigure figure, Entry &entry);

/* Bytes that are equal for equal values of a type, and for no others. */
void AppendKey(int32_t type, const void *block, std::string &key);
/* The value whose bytes a key begins with: a number or date, or a terminated text. They are taken
 * off the key. */
const char *TakeKey(int32_t type, std::string_view &key, NumberValue &number);

#endif
