/* csv_file.h - rows of a CSV file, one at a time, with the line each begins on. */
#ifndef ORLI11_HOST_CSV_FILE_H
#define ORLI11_HOST_CSV_FILE_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

/* A file that is open for reading, from the start as often as wanted. */
struct CsvFile {
  std::string path; /* as messages name it */
  FILE *file = nullptr;
};

/* The fields of one row. Each stands in `bytes` with a zero behind it. */
struct CsvRow {
  std::string bytes;
  std::vector<size_t> starts;
  int64_t line = 0; /* on which the row begins, from 1 */
};

/* Called for each row in order, the header included; false stops the reading. A failure is told by
 * a message in `error`. */
using CsvRowProc = bool (*)(const CsvRow &row, void *user, std::string &error);

/* Opens a file by name, or standard input for "-". What cannot be read twice (a pipe) is first
 * copied to a temporary file. False with a message in `error`. CsvClose in any case. */
bool CsvOpen(const char *path, CsvFile &csv, std::string &error);
void CsvClose(CsvFile &csv);

/* Reads the file from its start. Lines without a field count as lines but make no row. False with a
 * message in `error`, place included, when the file cannot be read, is not CSV or the row routine
 * failed. */
bool CsvRead(CsvFile &csv, CsvRowProc proc, void *user, std::string &error);

/* A reading that takes its time: each call of CsvReadOn hands on the rows of the next 64 KiB. False
 * when it was the last, also by a failure, which `error` of CsvBegin tells. */
struct CsvReading;
struct CsvReadingEnd {
  void operator()(CsvReading *reading) const;
};
using CsvReadingOwner = std::unique_ptr<CsvReading, CsvReadingEnd>;
/* Null with a message when there is no memory. File, `user` and `error` must stay as long as the
 * reading, and the file has no other reading meanwhile. */
CsvReadingOwner CsvBegin(CsvFile &csv, CsvRowProc proc, void *user, std::string &error);
bool CsvReadOn(CsvReading &reading);

/* The text of a field, zero-terminated; valid as long as the row. */
const char *CsvField(const CsvRow &row, size_t index);

#endif
