// Sorting rows of the output before they are written.
#ifndef ORLI11_HOST_SORTING_H
#define ORLI11_HOST_SORTING_H

#include <orli11.h>

#include <cstdint>
#include <string>
#include <vector>

#include "host/output.h"

// A key on the command line: NAME, NAME:asc or NAME:desc.
struct SortArgument {
  std::string name;
  bool descending = false;
};
SortArgument SortArgumentOf(const std::string &argument);
// What is wrong with a key whose name nothing has: an unknown order, or several names. Empty when
// neither is the case.
std::string SortProblem(const std::string &name);

struct SortKey {
  int32_t type = ORL_TYPE_NUMBER;
  bool descending = false;
};

// The value of a row for one key: a string, number or date.
struct SortValue {
  NumberValue number = {};
  std::string text;
};
// `block` is the value of an expression of that type, or null when it has none.
SortValue SortValueOf(int32_t type, const void *block);

// The rows, all kept in memory until they are written.
struct Sorter {
  struct Row {
    std::vector<std::string> cells;
    std::vector<SortValue> values;  // one for each key
  };
  std::vector<SortKey> keys;
  int64_t limit = -1;  // rows to write; -1: all
  std::vector<Row> rows;
};

// Writes the rows in the order of the first key, then of the next; equal ones keep their order.
void SorterEnd(Sorter &sorter, Output &output);

#endif
