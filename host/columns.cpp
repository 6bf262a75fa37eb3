#include "host/columns.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>

#include "host/display.h"
#include "host/values.h"

namespace {

constexpr size_t kLongestName = sizeof(ExprItem::name) - 1;

/* How the fields of a column look so far, beside the Column itself. */
struct ColumnFinding {
  bool seenNumber = false, seenDate = false, seenOther = false;
};

struct ScanState {
  const CsvFile *csv;
  EC ec;
  Table *table;
  Progress *progress;
  std::vector<ColumnFinding> findings;
  bool haveHeader = false;
};

/* A word of the language cannot stand for a column as it is. */
bool IsPlainName(EC ec, const std::string &header) {
  std::array<char, kLongestName + 2> unused;
  return ORLValidName(ec, header.c_str(), nullptr) == 1 &&
         ORLInputNameIsKeyword(unused.data(), header.c_str()) == 0;
}

bool CheckDuplicates(const ScanState &state, std::string &error) {
  const std::vector<Column> &columns = state.table->columns;
  std::vector<size_t> order(columns.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::stable_sort(order.begin(), order.end(), [&columns](size_t left, size_t right) {
    return columns[left].header < columns[right].header;
  });
  for (size_t i = 1; i < order.size(); ++i) {
    if (columns[order[i]].header == columns[order[i - 1]].header) {
      error = state.csv->path + ": columns " + std::to_string(order[i - 1] + 1) + " and " +
              std::to_string(order[i] + 1) +
              " have the same name: " + DisplayName(columns[order[i]].header);
      return false;
    }
  }
  return true;
}

bool TakeHeader(ScanState &state, const CsvRow &row, std::string &error) {
  for (size_t i = 0; i < row.starts.size(); ++i) {
    Column column;
    column.header = CsvField(row, i);
    const std::string problem = ColumnName(state.ec, column);
    if (!problem.empty()) {
      error = state.csv->path + ": column " + std::to_string(i + 1) + " " + problem;
      return false;
    }
    state.table->columns.push_back(std::move(column));
  }
  state.findings.resize(row.starts.size());
  state.haveHeader = true;
  return CheckDuplicates(state, error);
}

void TakeField(Column &column, ColumnFinding &finding, const char *text) {
  if (*text == '\0') {
    return;
  }
  if (column.filled++ == 0) {
    column.example = text;
  }
  if (finding.seenOther || (finding.seenNumber && finding.seenDate)) {
    return; /* a String whatever follows */
  }
  NumberValue unused;
  if (NumberFromField(text, &unused)) {
    finding.seenNumber = true;
  } else if (DateFromField(text, &unused)) {
    finding.seenDate = true;
  } else {
    finding.seenOther = true;
  }
}

bool TakeRow(const CsvRow &row, void *user, std::string &error) {
  ScanState &state = *static_cast<ScanState *>(user);
  if (!state.haveHeader) {
    return TakeHeader(state, row, error);
  }
  if (!ColumnsFit(*state.csv, *state.table, row, error)) {
    return false;
  }
  for (size_t i = 0; i < row.starts.size(); ++i) {
    TakeField(state.table->columns[i], state.findings[i], CsvField(row, i));
  }
  ProgressStep(*state.progress, "finding types", ++state.table->rows, 0);
  return true;
}

int16_t TypeOf(const ColumnFinding &finding) {
  if (finding.seenOther || finding.seenNumber == finding.seenDate) {
    return ORL_TYPE_STRING;
  }
  return finding.seenNumber ? ORL_TYPE_NUMBER : ORL_TYPE_DATE;
}

}  // namespace

std::string ColumnName(EC ec, Column &column) {
  const std::string &header = column.header;
  const bool hasQuote = header.find('"') != std::string::npos;
  if (header.empty()) {
    return "has no name in the header";
  }
  if (header.size() > kLongestName) {
    return "has a name of " + std::to_string(header.size()) + " bytes; names have at most 64";
  }
  if (IsPlainName(ec, header)) {
    column.name = header;
    return {};
  }
  const char quote = hasQuote ? '`' : '"';
  column.name = quote + header + quote;
  if (column.name.size() > kLongestName) {
    return "has a name that needs quotes and is then " + std::to_string(column.name.size()) +
           " bytes long; names have at most 64";
  }
  /* Backticks do not help every name with a double quote. */
  return ORLValidName(ec, column.name.c_str(), nullptr) == 1
             ? std::string()
             : "has a name that no formula can write: " + DisplayName(header);
}

bool ColumnsScan(CsvFile &csv, EC ec, Table &table, Progress &progress, std::string &error) {
  ScanState state{&csv, ec, &table, &progress, {}, false};
  const bool good = CsvRead(csv, TakeRow, &state, error);
  ProgressEnd(progress);
  if (!good) {
    return false;
  }
  if (!state.haveHeader) {
    error = csv.path + ": the file is empty";
    return false;
  }
  for (size_t i = 0; i < table.columns.size(); ++i) {
    table.columns[i].type = TypeOf(state.findings[i]);
  }
  return true;
}

bool ColumnsFit(const CsvFile &csv, const Table &table, const CsvRow &row, std::string &error) {
  if (row.starts.size() == table.columns.size()) {
    return true;
  }
  error = csv.path + ": line " + std::to_string(row.line) + ": " +
          std::to_string(row.starts.size()) + (row.starts.size() == 1 ? " field" : " fields") +
          ", but the header has " + std::to_string(table.columns.size());
  return false;
}

const char *TypeName(int32_t type) {
  switch (type) {
    case ORL_TYPE_NUMBER:
      return "Number";
    case ORL_TYPE_DATE:
      return "Date";
    case ORL_TYPE_STRING:
      return "String";
    default:
      return "other";
  }
}
