// Blocks of rows of a CSV file: read by one thread, split into fields by any.
#ifndef ORLI11_HOST_CSV_BLOCK_H
#define ORLI11_HOST_CSV_BLOCK_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct CsvFile;

// The fields of one row, in the bytes of a block or a copy that must outlive it. Each field is
// followed by a zero.
struct CsvRow {
  const char *bytes = nullptr;  // null: no row
  const uint32_t *starts = nullptr;
  size_t fields = 0;
  size_t input = 0;  // index of its file
  int64_t line = 0;  // on which the row begins, from 1
};

// The text of a field, zero-terminated; valid as long as the row.
inline const char *CsvField(const CsvRow &row, size_t index) {
  return row.bytes + row.starts[index];
}

// A row with memory of its own.
struct CsvRowCopy {
  std::string bytes;
  std::vector<uint32_t> starts;
  size_t input = 0;
  int64_t line = 0;

  explicit CsvRowCopy(const CsvRow &row);
  CsvRow Row() const { return {bytes.data(), starts.data(), starts.size(), input, line}; }
};

// Whole rows of one file. The reader sets the bytes and their origin, CsvSplit the rows. A block
// that is filled again keeps its memory.
struct CsvBlock {
  std::string bytes;    // as they were read; after CsvSplit the fields
  size_t size = 0;      // of what was read; there is room for another byte
  size_t input = 0;     // index of the file
  int64_t line = 1;     // on which the block begins
  bool header = false;  // its first row is the header of the file, which is not counted
  bool last = false;    // of its file

  struct Start {
    uint32_t field;  // the first of the row, an index of `starts`
    uint32_t line;   // lines of the block before the row
  };
  std::vector<uint32_t> starts;  // of the fields, in `bytes`
  std::vector<Start> rows;       // and the end of the last one
  std::string error;             // that ends reading after these rows; empty: none

  size_t Count() const { return rows.size() - 1; }
  size_t Fields(size_t row) const { return rows[row + 1].field - rows[row].field; }
  const char *Field(size_t row, size_t index) const {
    return bytes.data() + starts[rows[row].field + index];
  }
  // Ends the block before a row, with that error.
  void Fail(size_t row, const std::string &message) {
    rows.resize(row + 1);
    error = message;
  }
  CsvRow Row(size_t row) const {
    return {bytes.data(), starts.data() + rows[row].field, Fields(row), input,
            line + rows[row].line};
  }
};

// Splits a block into rows and fields. Lines without a field count as lines but are not rows. An
// error in the block ends it, with the place in the message.
void CsvSplit(const CsvFile &csv, CsvBlock &block);

// The same by the CSV parser, which knows all forms of fields. CsvSplit calls it for a block that
// has other fields than plain ones and those enclosed in quotes without a quote inside.
void CsvParse(const CsvFile &csv, CsvBlock &block);

// Line breaks: "\n", "\r" and the pair of both count one each.
int64_t CsvLineBreaks(const char *bytes, size_t size);

// A field larger than this means a missing closing quote.
constexpr size_t kLongestField = size_t{16} << 20;

#endif
