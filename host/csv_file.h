// Rows of CSV files with one header, one row at a time, each with its file and line.
#ifndef ORLI11_HOST_CSV_FILE_H
#define ORLI11_HOST_CSV_FILE_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/byte_source.h"
#include "host/csv_block.h"
#include "host/data_options.h"

struct CsvInput {
  ByteSource source;
  char delimiter = ',';
  char other = '\0';  // another possible delimiter in the header, when none was given
};

// Files that are open for reading, in order, from the start as often as needed.
struct CsvFile {
  std::vector<CsvInput> inputs;
  std::vector<std::string> header;  // the names in the first row, which all files share

  // The file as messages name it.
  const std::string &Path(size_t input = 0) const { return inputs[input].source.path; }
};

// Reads the files one after the other, from one of them on, in blocks of whole rows.
class CsvReader {
 public:
  explicit CsvReader(CsvFile &csv, size_t input = 0) : csv_(&csv), input_(input) {}

  // Fills a block, which is to be split. False after the last one. A failure is an error of the
  // block and ends the reading.
  bool Read(CsvBlock &block);

 private:
  void Fill(CsvBlock &block);
  bool FillMore(CsvBlock &block, size_t &used);

  CsvFile *csv_;
  size_t input_;
  bool begun_ = false;  // a block of the input has been read
  int64_t line_ = 1;    // of the next block
  std::string rest_;    // what was read of the row after the last block
};

// Called for each row after the header, in order; false stops reading. A failure leaves a message
// in `error`.
using CsvRowProc = bool (*)(const CsvRow &row, void *user, std::string &error);

// Opens the files and reads their headers, which must be the same. A byte-order mark at the start
// of a file is skipped. False with a message in `error`.
bool CsvOpen(const DataOptions &options, CsvFile &csv, std::string &error);

// Reads the rows from the start. Lines without a field count as lines but are not rows. False with
// a message in `error`, place included, when a file cannot be read, is not CSV or the row routine
// failed.
bool CsvRead(CsvFile &csv, CsvRowProc proc, void *user, std::string &error);

// A reading in steps: each call of CsvReadOn passes on the rows of the next block. False when it
// was the last, also by a failure, which `error` of CsvBegin then holds.
struct CsvReading;
struct CsvReadingEnd {
  void operator()(CsvReading *reading) const;
};
using CsvReadingOwner = std::unique_ptr<CsvReading, CsvReadingEnd>;
// File, `user` and `error` must outlive the reading, and the file has no other reading meanwhile.
CsvReadingOwner CsvBegin(CsvFile &csv, CsvRowProc proc, void *user, std::string &error);
bool CsvReadOn(CsvReading &reading);

// "data.csv: line 3", the place of a row in messages.
inline std::string CsvPlace(const CsvFile &csv, size_t input, int64_t line) {
  return csv.Path(input) + ": line " + std::to_string(line);
}

#endif
