// The columns of CSV files: their names in formulas and their types.
#ifndef ORLI11_HOST_COLUMNS_H
#define ORLI11_HOST_COLUMNS_H

#include <orli11.h>

#include <cstdint>
#include <string>
#include <vector>

#include "host/csv_file.h"
#include "host/progress.h"

struct Column {
  std::string header;  // as the file has it
  std::string name;    // as a formula has to write it: plain, or in quotes
  int16_t type = ORL_TYPE_STRING;
  int64_t filled = 0;                 // rows with a field that is not empty
  std::string example;                // the first of these
  NumberValue least = {}, most = {};  // of a Number or Date; null when not requested
  std::string why;                    // why it is a String, and what is unusual about its fields
  bool twoWays = false;               // its fields are written in two ways
};

struct Table {
  std::vector<Column> columns;
  int64_t rows = 0;
  std::string notUtf8;  // the place of the first row that is not text in UTF-8; empty when none
};

// Names the columns by the headers of the files; `ec` determines which names need quotes. Adds
// lines about names that had to be changed to `notes`.
void ColumnsName(const CsvFile &csv, EC ec, Table &table, std::vector<std::string> &notes);

// What to look at.
struct ScanWish {
  bool bounds = false;  // find the least and greatest values too
  int64_t most = -1;    // so many rows only, by one job; -1: all
  size_t jobs = 1;      // threads that look
};

// Reads the files once: the types follow from all rows. A column is Number or Date when each of its
// fields that is not empty is one, else String; so is one of numbers that look like codes. With a
// type in the options every field must be of that type instead. False with a message in `error`.
bool ColumnsScan(CsvFile &csv, const DataOptions &options, const ScanWish &wish, Table &table,
                 Progress &progress, std::string &error);

// False with a message for a row that has more or fewer fields than the header.
bool ColumnsFit(const CsvFile &csv, const Table &table, const CsvRow &row, std::string &error);
// The same for all rows of a block, which ends before such a row with the message as its error.
void ColumnsFit(const CsvFile &csv, const Table &table, CsvBlock &block);

// The index of a column by its header or by its name in formulas; the number of columns when there
// is none.
size_t FindByName(const std::vector<Column> &columns, const std::string &name);

// The hint about a name that no column has; empty when none is near.
std::string ColumnHint(const std::vector<Column> &columns, const std::string &name);

// The name of a data type, such as "Number".
const char *TypeName(int32_t type);

#endif
