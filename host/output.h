// Rows of cells as an aligned table, as CSV, TSV or JSON.
#ifndef ORLI11_HOST_OUTPUT_H
#define ORLI11_HOST_OUTPUT_H

#include <orli11.h>

#include <string>
#include <string_view>
#include <vector>

enum OutputFormat { kOutputTable, kOutputCsv, kOutputTsv, kOutputJson, kOutputJsonl };

struct OutputColumn {
  std::string title;
  int32_t type = ORL_TYPE_STRING;  // of its values; an empty cell of another type is null in JSON
  size_t width = 0;                // of a table; found by the writer
};

// Rows are written as they arrive. A table takes the widths of its columns from the first
// kTableRows rows and buffers no more than these; a longer cell in a later row moves the rest of
// its line to the right.
struct Output {
  OutputFormat format = kOutputTable;
  std::vector<OutputColumn> columns;
  std::vector<std::vector<std::string>> held;  // rows of a table before the widths are known
  bool begun = false;                          // the titles are written
  bool any = false;                            // a row is written
};

constexpr size_t kTableRows = 1000;

// Whether the format has its own types, so that numbers must be plain.
bool IsJson(OutputFormat format);

// One row with a cell for each column. A table shows line breaks and the like by symbols of one
// column; CSV writes every byte as it is (RFC 4180, lines end with CR LF); TSV is the same with
// tabs and LF; in JSON cells of type Number are written as they are, and bytes that are not UTF-8
// as the replacement character.
void OutputRow(Output &output, const std::vector<std::string> &cells);
// The same in two steps, for all formats but tables: a row is added to a text, of any number of
// rows and on any thread, and the text is written.
void OutputAppend(const Output &output, const std::vector<std::string> &cells, std::string &text);
void OutputText(Output &output, std::string_view text);
// Writes what is still buffered.
void OutputEnd(Output &output);
// Closes standard output; false when something could not be written.
bool OutputFinish();

#endif
