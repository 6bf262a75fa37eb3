#include "host/output.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string_view>

#include "host/color.h"
#include "host/display.h"

namespace {

constexpr size_t kGap = 2;  // blanks between the columns of a table

void Put(std::string_view text) {
  static_cast<void>(std::fwrite(text.data(), 1, text.size(), stdout));
}

bool NeedsQuotes(const std::string &cell, char delimiter) {
  const auto isSpecial = [delimiter](char byte) {
    return byte == '"' || byte == '\r' || byte == '\n' || byte == delimiter;
  };
  return !cell.empty() && (cell.front() == ' ' || cell.back() == ' ' ||
                           std::any_of(cell.begin(), cell.end(), isSpecial));
}

void AppendCsvCell(const std::string &cell, char delimiter, std::string &line) {
  if (!NeedsQuotes(cell, delimiter)) {
    line += cell;
    return;
  }
  line += '"';
  for (const char byte : cell) {
    line.append(byte == '"' ? 2 : 1, byte);
  }
  line += '"';
}

void AppendCsvRow(OutputFormat format, const std::vector<std::string> &cells, std::string &line) {
  const char delimiter = format == kOutputTsv ? '\t' : ',';
  for (size_t i = 0; i < cells.size(); ++i) {
    if (i != 0) {
      line += delimiter;
    }
    AppendCsvCell(cells[i], delimiter, line);
  }
  // Readers would not treat an empty line as a row.
  line += cells.size() == 1 && cells[0].empty() ? "\"\"" : "";
  line += format == kOutputTsv ? "\n" : "\r\n";
}

void AppendJsonString(std::string_view text, std::string &line) {
  constexpr std::string_view kHex = "0123456789abcdef";
  line += '"';
  while (!text.empty()) {
    const char byte = text.front();
    if (byte >= 0 && (byte < ' ' || byte == '"' || byte == '\\')) {
      const size_t place = std::string_view("\b\t\n\f\r\"\\").find(byte);
      line += '\\';
      if (place != std::string_view::npos) {
        line += std::string_view("btnfr\"\\")[place];
      } else {
        line += "u00";
        line += kHex[static_cast<size_t>(byte) / 16];
        line += kHex[static_cast<size_t>(byte) % 16];
      }
      text.remove_prefix(1);
    } else if (byte >= 0) {
      line += byte;
      text.remove_prefix(1);
    } else {
      const size_t bytes = DisplayCharacterBytes(text);
      line += bytes == 0 ? kReplacement : text.substr(0, bytes);
      text.remove_prefix(std::max<size_t>(bytes, 1));
    }
  }
  line += '"';
}

// In an array each row begins with its separator from the previous one.
constexpr std::string_view kJsonPart = ",\n";

void AppendJsonRow(const Output &output, const std::vector<std::string> &cells, std::string &line) {
  line += output.format == kOutputJson ? kJsonPart : "";
  line += '{';
  for (size_t i = 0; i < cells.size(); ++i) {
    const OutputColumn &column = output.columns[i];
    line += i == 0 ? "" : ", ";
    AppendJsonString(column.title, line);
    line += ": ";
    if (column.type == ORL_TYPE_STRING || (column.type == ORL_TYPE_DATE && !cells[i].empty())) {
      AppendJsonString(cells[i], line);
    } else {
      line += cells[i].empty() ? "null" : cells[i];
    }
  }
  line += output.format == kOutputJson ? "}" : "}\n";
}

void PutTableRow(const Output &output, const std::vector<std::string> &cells,
                 std::string_view color = {}) {
  std::string line;
  for (size_t i = 0; i < cells.size(); ++i) {
    const OutputColumn &column = output.columns[i];
    const bool right = column.type == ORL_TYPE_NUMBER;
    size_t width = 0;
    const std::string shown = DisplayLine(cells[i], static_cast<size_t>(-1) / 2, width);
    // One very long cell would pad all rows with blanks that are then removed again.
    const bool filled = column.width > width && (right || i + 1 < cells.size());
    const std::string fill(filled ? column.width - width : 0, ' ');
    line.append(i == 0 ? 0 : kGap, ' ');
    line += right ? fill + shown : shown + fill;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  Put(color.empty() ? line + "\n" : std::string(color) + line + kNoColor + "\n");
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
  PutTableRow(output, titles, ColorOn(stdout) ? kBold : "");
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
  if (output.format == kOutputTable) {
    BeginTable(output);
  } else if (output.format == kOutputJson) {
    Put("[\n");
  } else if (output.format != kOutputJsonl) {
    std::vector<std::string> titles;
    for (const OutputColumn &column : output.columns) {
      titles.push_back(column.title);
    }
    std::string line;
    AppendCsvRow(output.format, titles, line);
    Put(line);
  }
}

}  // namespace

bool IsJson(OutputFormat format) {
  return format == kOutputJson || format == kOutputJsonl;
}

void OutputRow(Output &output, const std::vector<std::string> &cells) {
  if (output.format == kOutputTable && !output.begun) {
    output.held.push_back(cells);
    if (output.held.size() == kTableRows) {
      Begin(output);
    }
    return;
  }
  Begin(output);
  if (output.format == kOutputTable) {
    PutTableRow(output, cells);
    return;
  }
  std::string line;
  OutputAppend(output, cells, line);
  OutputText(output, line);
}

void OutputAppend(const Output &output, const std::vector<std::string> &cells, std::string &text) {
  if (IsJson(output.format)) {
    AppendJsonRow(output, cells, text);
  } else {
    AppendCsvRow(output.format, cells, text);
  }
}

void OutputText(Output &output, std::string_view text) {
  Begin(output);
  if (output.format == kOutputJson && !output.any && !text.empty()) {
    text.remove_prefix(kJsonPart.size());
  }
  output.any = output.any || !text.empty();
  Put(text);
}

void OutputEnd(Output &output) {
  Begin(output);
  if (output.format == kOutputJson) {
    Put(output.any ? "\n]\n" : "]\n");
  }
}

bool OutputFinish() {
  const bool failed = std::ferror(stdout) != 0;
  return std::fclose(stdout) == 0 && !failed;
}
