// What the fields of a column look like, from which its type follows.
#ifndef ORLI11_HOST_COLUMN_FINDING_H
#define ORLI11_HOST_COLUMN_FINDING_H

#include <orli11.h>

#include <cstdint>
#include <string>
#include <vector>

#include "host/csv_block.h"
#include "host/data_options.h"
#include "host/field.h"

// A field that determines a type, and its position.
struct Witness {
  size_t input = 0;
  int64_t line = 0;  // 0: there is none
  std::string text;
};

// A date, and the orders in which it can be read.
struct OrderedDate {
  unsigned orders;
  Witness witness;
};

// What is known of the fields of a column, in a block or so far.
struct Finding {
  int64_t filled = 0;                 // fields that are not empty
  std::string example;                // the first of these
  NumberValue least = {}, most = {};  // of numbers or dates, when they are needed
  Witness number, date, other;        // the first of each kind
  Witness code, exponent;             // the first number of the shape of a code
  CodeShape shape = kCodeNone;        // of `code`
  unsigned orders = kOrderAny;        // those in which all numeric dates can be read
  std::vector<OrderedDate> ordered;   // the dates that left fewer `orders` possible, in order
  bool point = false;                 // a number has a decimal point
  bool offset = false;                // a date has an offset
};

// How the fields of a column are read.
struct FindingRules {
  const FieldRules *fields;
  bool bounds;    // find the least and greatest values
  bool required;  // the options name the type
  int16_t type;   // if so
};

// Adds the fields of a column in a block, up to the first that is not of a required type; returns
// its row, or the number of rows.
size_t FindingAdd(const FindingRules &rules, const CsvBlock &block, size_t column,
                  Finding &finding);

// Adds what was found in the next block.
void FindingMerge(const FindingRules &rules, const Finding &next, Finding &all);

#endif
