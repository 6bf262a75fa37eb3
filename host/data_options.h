// Options of the command line for reading data files.
#ifndef ORLI11_HOST_DATA_OPTIONS_H
#define ORLI11_HOST_DATA_OPTIONS_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// How fields become values.
struct FieldRules {
  char decimal = '\0';             // the decimal separator, '.' or ','; 0: a point, no groups
  int32_t dateOrder = -1;          // 0 month-day-year, 1 day-month-year, 2 year-month-day
                                   // -1: the country's
  std::vector<std::string> nulls;  // fields that count as empty
};

struct DataOptions {
  std::vector<std::string> paths;  // files in the order of their rows; "-" is standard input
  char delimiter = '\0';           // between fields; 0: found in the header
  FieldRules rules;
  std::vector<std::pair<std::string, int16_t>> types;  // of columns whose type is not inferred
};

#endif
