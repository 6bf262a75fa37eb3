/* csv_file.h - rows of a CSV file, one at a time, with the line each begins on. */
#ifndef ORLI11_HOST_CSV_FILE_H
#define ORLI11_HOST_CSV_FILE_H

#include <cstdint>
#include <cstdio>
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

/* The text of a field, zero-terminated; valid as long as the row. */
const char *CsvField(const CsvRow &row, size_t index);

#endif
