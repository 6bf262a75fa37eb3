/* csv_file.h - rows of CSV files with one header, one row at a time, each with its file and line.
 */
#ifndef ORLI11_HOST_CSV_FILE_H
#define ORLI11_HOST_CSV_FILE_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/byte_source.h"
#include "host/data_options.h"

struct CsvInput {
  ByteSource source;
  char delimiter = ',';
  char other = '\0'; /* another possible delimiter in the header, when none was given */
};

/* Files that are open for reading, in order, from the start as often as needed. */
struct CsvFile {
  std::vector<CsvInput> inputs;
  std::vector<std::string> header; /* the names in the first row, which all files share */

  /* The file as messages name it. */
  const std::string &Path(size_t input = 0) const { return inputs[input].source.path; }
};

/* The fields of one row. Each is stored in `bytes`, followed by a zero. */
struct CsvRow {
  std::string bytes;
  std::vector<size_t> starts;
  size_t input = 0; /* index of its file */
  int64_t line = 0; /* on which the row begins, from 1 */
};

/* Called for each row after the header, in order; false stops reading. A failure leaves a message
 * in `error`. */
using CsvRowProc = bool (*)(const CsvRow &row, void *user, std::string &error);

/* Opens the files and reads their headers, which must be the same. A byte-order mark at the start
 * of a file is skipped. False with a message in `error`. */
bool CsvOpen(const DataOptions &options, CsvFile &csv, std::string &error);

/* Reads the rows from the start. Lines without a field count as lines but are not rows. False with
 * a message in `error`, place included, when a file cannot be read, is not CSV or the row routine
 * failed. */
bool CsvRead(CsvFile &csv, CsvRowProc proc, void *user, std::string &error);

/* Reading in steps: each call of CsvReadOn passes on the rows of the next 64 KiB. False after the
 * last step, or after a failure, with a message in `error` of CsvBegin. */
struct CsvReading;
struct CsvReadingEnd {
  void operator()(CsvReading *reading) const;
};
using CsvReadingOwner = std::unique_ptr<CsvReading, CsvReadingEnd>;
/* Null with a message when it cannot begin. File, `user` and `error` must outlive the reader, and
 * the file must have no other reader meanwhile. */
CsvReadingOwner CsvBegin(CsvFile &csv, CsvRowProc proc, void *user, std::string &error);
bool CsvReadOn(CsvReading &reading);

/* The text of a field, zero-terminated; valid as long as the row. */
const char *CsvField(const CsvRow &row, size_t index);

/* "data.csv: line 3", the place of a row in messages. */
std::string CsvPlace(const CsvFile &csv, size_t input, int64_t line);

#endif
