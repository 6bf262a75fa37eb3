#include "host/output.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string_view>

#include "host/display.h"

namespace {

constexpr size_t kGap = 2; /* blanks between the columns of a table */

void Put(std::string_view text) {
  static_cast<void>(std::fwrite(text.data(), 1, text.size(), stdout));
}

void PutCsvCell(const std::string &cell) {
  if (cell.find_first_of(",\"\r\n") == std::string::npos &&
      (cell.empty() || (cell.front() != ' ' && cell.back() != ' '))) {
    Put(cell);
    return;
  }
  std::string quoted = "\"";
  for (const char byte : cell) {
    quoted.append(byte == '"' ? 2 : 1, byte);
  }
  Put(quoted + "\"");
}

void PutCsvRow(const std::vector<std::string> &cells) {
  for (size_t i = 0; i < cells.size(); ++i) {
    Put(i == 0 ? "" : ",");
    PutCsvCell(cells[i]);
  }
  /* A line without a byte would be no row to a reader. */
  Put(cells.size() == 1 && cells[0].empty() ? "\"\"\r\n" : "\r\n");
}

void PutTableRow(const Output &output, const std::vector<std::string> &cells) {
  std::string line;
  for (size_t i = 0; i < cells.size(); ++i) {
    const OutputColumn &column = output.columns[i];
    size_t width = 0;
    const std::string shown = DisplayLine(cells[i], static_cast<size_t>(-1) / 2, width);
    /* One very long cell would make blanks, only to be taken off again, of all rows. */
    const bool filled = column.width > width && (column.alignRight || i + 1 < cells.size());
    const std::string fill(filled ? column.width - width : 0, ' ');
    line.append(i == 0 ? 0 : kGap, ' ');
    line += column.alignRight ? fill + shown : shown + fill;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  Put(line + "\n");
}

void BeginTable(Output &output) {
  std::vector<std::string> titles;
  std::vector<std::string> rules;
  for (size_t i = 0; i < output.columns.size(); ++i) {
    OutputColumn &column = output.columns[i];
    size_t width = 0;
    static_cast<void>(DisplayLine(column.title, static_cast<size_t>(-1) / 2, width));
    column.width = std::max(column.width, width);
    for (const std::vector<std::string> &row : output.held) {
      static_cast<void>(DisplayLine(row[i], static_cast<size_t>(-1) / 2, width));
      column.width = std::max(column.width, width);
    }
    titles.push_back(column.title);
    rules.emplace_back(column.width, '-');
  }
  PutTableRow(output, titles);
  PutTableRow(output, rules);
  for (const std::vector<std::string> &row : output.held) {
    PutTableRow(output, row);
  }
  output.held.clear();
  output.held.shrink_to_fit();
}

void Begin(Output &output) {
  if (output.begun) {
    return;
  }
  output.begun = true;
  if (output.format == OUTPUT_TABLE) {
    BeginTable(output);
    return;
  }
  std::vector<std::string> titles;
  for (const OutputColumn &column : output.columns) {
    titles.push_back(column.title);
  }
  PutCsvRow(titles);
}

}  // namespace

void OutputRow(Output &output, const std::vector<std::string> &cells) {
  if (output.format == OUTPUT_TABLE && !output.begun) {
    output.held.push_back(cells);
    if (output.held.size() == kTableRows) {
      Begin(output);
    }
    return;
  }
  Begin(output);
  if (output.format == OUTPUT_TABLE) {
    PutTableRow(output, cells);
  } else {
    PutCsvRow(cells);
  }
}

void OutputEnd(Output &output) {
  Begin(output);
}

bool OutputFinish() {
  const bool failed = std::ferror(stdout) != 0;
  return std::fclose(stdout) == 0 && !failed;
}
