/* columns.h - the columns of a CSV file: their names in formulas and their types. */
#ifndef ORLI11_HOST_COLUMNS_H
#define ORLI11_HOST_COLUMNS_H

#include <orli11.h>

#include <cstdint>
#include <string>
#include <vector>

#include "host/csv_file.h"
#include "host/progress.h"

struct Column {
  std::string header; /* as the file has it */
  std::string name;   /* as a formula has to write it: plain, or in quotes */
  int16_t type = ORL_TYPE_STRING;
  int64_t filled = 0;  /* rows with a field that is not empty */
  std::string example; /* the first of these */
};

struct Table {
  std::vector<Column> columns;
  int64_t rows = 0;
};

/* Gives the column of a header the name that formulas write; `ec` says which names need quotes. The
 * result is empty, or tells what is wrong with the header. */
std::string ColumnName(EC ec, Column &column);

/* Reads the whole file once: the header gives the names, all rows together the types. A column is
 * Number or Date when each of its fields that is not empty is one, else String. `ec` says which
 * names need quotes. False with a message in `error`. */
bool ColumnsScan(CsvFile &csv, EC ec, Table &table, Progress &progress, std::string &error);

/* False with a message for a row that has more or fewer fields than the header. */
bool ColumnsFit(const CsvFile &csv, const Table &table, const CsvRow &row, std::string &error);

/* The word for a data type, as in "Number". */
const char *TypeName(int32_t type);

#endif
