/* output.h - rows of cells as an aligned table or as CSV. */
#ifndef ORLI11_HOST_OUTPUT_H
#define ORLI11_HOST_OUTPUT_H

#include <string>
#include <vector>

enum OutputFormat { OUTPUT_TABLE, OUTPUT_CSV };

struct OutputColumn {
  std::string title;
  bool alignRight = false;
  size_t width = 0; /* of a table; found by the writer */
};

/* Rows go out as they come. A table finds the widths of its columns in the first kTableRows rows
 * and holds no more than these; a longer cell that comes later pushes its own line to the right. */
struct Output {
  OutputFormat format = OUTPUT_TABLE;
  std::vector<OutputColumn> columns;
  std::vector<std::vector<std::string>> held; /* rows of a table before the widths are known */
  bool begun = false;                         /* the titles are out */
};

constexpr size_t kTableRows = 1000;

/* One row with a cell for each column. A table shows line breaks and the like by pictures of one
 * column, CSV writes every byte as it is (RFC 4180, lines end with CR LF). */
void OutputRow(Output &output, const std::vector<std::string> &cells);
/* Writes what is still held. */
void OutputEnd(Output &output);
/* Closes standard output; false when something could not be written. */
bool OutputFinish();

#endif
