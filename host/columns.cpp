#include "host/columns.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "host/block_ring.h"
#include "host/chars.h"
#include "host/column_finding.h"
#include "host/column_names.h"
#include "host/display.h"
#include "host/field.h"
#include "host/formulas.h"
#include "host/nearest.h"
#include "host/tokens.h"
#include "host/values.h"

namespace {

constexpr size_t kLongestShown = 40;  // of those that a reason shows

// What is found in a block.
struct BlockFinding {
  std::vector<Finding> columns;
  int64_t rows = 0;
  std::string notUtf8;  // the place of the first row that is not text in UTF-8
};

struct ScanState {
  const CsvFile *csv;
  const DataOptions *options;
  Table *table;
  Progress *progress;
  int64_t most;                     // rows; -1: all
  std::vector<FindingRules> rules;  // of each column
  std::vector<Finding> findings;
  std::vector<BlockFinding> blocks;  // one for each slot
};

std::string Shown(const std::string &text) {
  size_t width = 0;
  return "'" + DisplayLine(text, kLongestShown, width) + "'";
}

// The first row that is not text in UTF-8.
std::string FindNotUtf8(const CsvFile &csv, const CsvBlock &block) {
  if (IsUtf8({block.bytes.data(), block.size})) {
    return {};
  }
  for (size_t row = 0; row < block.Count(); ++row) {
    for (size_t i = 0; i < block.Fields(row); ++i) {
      if (!IsUtf8(block.Field(row, i))) {
        return CsvPlace(csv, block.input, block.Row(row).line);
      }
    }
  }
  return {};
}

void ScanBlock(const ScanState &state, CsvBlock &block, BlockFinding &found) {
  ColumnsFit(*state.csv, *state.table, block);
  if (state.most >= 0) {  // one job
    const auto left = static_cast<size_t>(state.most - state.table->rows);
    block.Fail(std::min(left, block.Count()), left > block.Count() ? block.error : "");
  }
  found.columns.assign(state.rules.size(), {});
  for (size_t i = 0; i < state.rules.size(); ++i) {
    const size_t row = FindingAdd(state.rules[i], block, i, found.columns[i]);
    if (row != block.Count()) {
      const Column &column = state.table->columns[i];
      block.Fail(row, CsvPlace(*state.csv, block.input, block.Row(row).line) + ": column " +
                          DisplayName(column.name) + ": " + Shown(block.Field(row, i)) +
                          " is not a " + TypeName(column.type));
    }
  }
  found.rows = static_cast<int64_t>(block.Count());
  found.notUtf8 = FindNotUtf8(*state.csv, block);
}

// False when there are enough rows.
bool TakeBlock(ScanState &state, const BlockFinding &found) {
  Table &table = *state.table;
  table.rows += found.rows;
  if (table.notUtf8.empty()) {
    table.notUtf8 = found.notUtf8;
  }
  for (size_t i = 0; i < state.findings.size(); ++i) {
    FindingMerge(state.rules[i], found.columns[i], state.findings[i]);
  }
  ProgressStep(*state.progress, "finding types", table.rows, 0);
  return table.rows != state.most;
}

// "500,001"
std::string Grouped(int64_t number) {
  std::string digits = std::to_string(number);
  for (size_t place = digits.size(); place > 3; place -= 3) {
    digits.insert(place - 3, ",");
  }
  return digits;
}

// "line 500,001: 'oops'", with the file when there are several.
std::string Located(const ScanState &state, const Witness &witness) {
  const bool several = state.csv->inputs.size() > 1;
  return (several ? state.csv->Path(witness.input) + " " : std::string()) + "line " +
         Grouped(witness.line) + ": " + Shown(witness.text);
}

// The order in which three numbers are a date; null when there is none.
const char *OrderOf(const FieldRules &rules, const std::string &text) {
  constexpr std::array<const char *, 3> kOrders = {"mdy", "dmy", "ymd"};
  FieldRules other = rules;
  NumberValue unused;
  for (const size_t order : {2U, 1U, 0U}) {
    other.dateOrder = static_cast<int32_t>(order);
    const bool yearFirst = YearIsFirst(text);
    if ((order == 2) == yearFirst && DateFromField(other, text.c_str(), &unused)) {
      return kOrders.at(order);
    }
  }
  return nullptr;
}

// How the field that made the column a String could become a number or date.
std::string OtherReason(const ScanState &state, Column &column, const Finding &finding) {
  const FieldRules &rules = state.options->rules;
  const std::string &text = finding.other.text;
  std::string reason = Located(state, finding.other);
  FieldRules other = rules;
  other.decimal = rules.decimal == ',' ? '\0' : ',';
  NumberValue unused;
  if (NumberFromField(other, text.c_str(), &unused)) {
    column.twoWays = finding.number.line != 0 && (rules.decimal == ',' || finding.point);
    return column.twoWays
               ? Located(state, finding.number) + " and " + reason + " have different decimal signs"
               : reason + " is a number with --decimal " + (other.decimal == ',' ? "," : ".");
  }
  const unsigned orders = DateOrdersOf(text);
  if (!finding.ordered.empty() && orders != 0 && (orders & finding.orders) == 0) {
    column.twoWays = true;
    return Located(state, finding.ordered.back().witness) + " and " + reason +
           " have day and month in different orders";
  }
  const char *order = OrderOf(rules, text);
  if (order == nullptr) {
    return reason;
  }
  // The month is never first in dates with points.
  const bool either =
      (orders & kOrderDmy) != 0 && (orders & kOrderMdy) != 0 && text.find('.') == std::string::npos;
  return reason + " is a date with --date-order " + (either ? "dmy or mdy" : order);
}

// What is odd about the fields of a Date.
std::string DateNote(const ScanState &state, const Finding &finding) {
  if (finding.offset) {
    return "times with an offset are converted to UTC";
  }
  const bool either = !finding.ordered.empty() && (finding.orders & kOrderMdy) != 0 &&
                      (finding.orders & kOrderDmy) != 0;
  if (!either || state.options->rules.dateOrder >= 0) {
    return {};
  }
  return Located(state, finding.ordered.back().witness) + " is read as " +
         (CountryDateOrder() == 1 ? "day, month, year; --date-order mdy has the month first"
                                  : "month, day, year; --date-order dmy has the day first");
}

// Determines the type of a column after all its fields, and explains why it is a String.
void Decide(const ScanState &state, bool required, const Finding &finding, Column &column) {
  constexpr const char *kShapes[] = {"", " has leading zeros", " has a plus sign", ""};
  column.filled = finding.filled;
  column.example = finding.example;
  column.least = finding.least;
  column.most = finding.most;
  if (required) {
    return;
  }
  column.type = ORL_TYPE_STRING;
  if (finding.other.line != 0) {
    column.why = OtherReason(state, column, finding);
  } else if (finding.number.line != 0 && finding.date.line != 0) {
    column.why = Located(state, finding.number) + " is a number, " + Located(state, finding.date) +
                 " is a date";
  } else if (finding.date.line != 0) {
    column.type = ORL_TYPE_DATE;
    column.why = DateNote(state, finding);
  } else if (finding.code.line != 0) {
    column.why = Located(state, finding.code) + kShapes[finding.shape];
  } else if (finding.exponent.line != 0 && !finding.point) {
    column.why = Located(state, finding.exponent) + " looks like a code";
  } else if (finding.number.line != 0) {
    column.type = ORL_TYPE_NUMBER;
  } else {
    column.why = "all fields are empty";
  }
  if (column.type == ORL_TYPE_STRING) {
    column.least = column.most = {};
  }
}

// Applies the types of the options.
bool Demand(ScanState &state, std::string &error) {
  for (const auto &[name, type] : state.options->types) {
    const size_t index = FindByName(state.table->columns, name);
    if (index == state.table->columns.size()) {
      error = state.csv->Path() + ": --type: there is no column " + DisplayName(name) +
              ColumnHint(state.table->columns, name);
      return false;
    }
    Column &column = state.table->columns[index];
    FindingRules &rules = state.rules[index];
    if (rules.required && column.type != type) {
      error = "--type: column " + DisplayName(name) + " is given two types";
      return false;
    }
    column.type = type;
    rules.required = true;
    rules.type = type;
  }
  return true;
}

}  // namespace

void ColumnsName(const CsvFile &csv, EC ec, Table &table, std::vector<std::string> &notes) {
  const std::vector<std::string> names = NamesOfHeaders(ec, csv.header, notes);
  table.columns.resize(names.size());
  for (size_t i = 0; i < names.size(); ++i) {
    table.columns[i].header = csv.header[i];
    table.columns[i].name = names[i];
    if (!IsUtf8(csv.header[i])) {
      table.notUtf8 = csv.Path() + ": the header";
    }
  }
}

bool ColumnsScan(CsvFile &csv, const DataOptions &options, const ScanWish &wish, Table &table,
                 Progress &progress, std::string &error) {
  const size_t count = table.columns.size();
  const FindingRules rules = {&options.rules, wish.bounds, false, ORL_TYPE_STRING};
  ScanState state{&csv, &options, &table, &progress, wish.most, {}, {}, {}};
  state.rules.assign(count, rules);
  state.findings.resize(count);
  state.blocks.resize(BlockSlots(wish.jobs));
  if (!Demand(state, error)) {
    return false;
  }
  BlockWork work;
  work.compute = [&state](size_t /*worker*/, size_t slot, CsvBlock &block) {
    ScanBlock(state, block, state.blocks[slot]);
  };
  work.take = [&state](size_t slot) { return TakeBlock(state, state.blocks[slot]); };
  const bool good = ReadInBlocks(csv, wish.jobs, work, error);
  ProgressEnd(progress);
  for (size_t i = 0; good && i < count; ++i) {
    Decide(state, state.rules[i].required, state.findings[i], table.columns[i]);
  }
  return good;
}

bool ColumnsFit(const CsvFile &csv, const Table &table, const CsvRow &row, std::string &error) {
  if (row.fields == table.columns.size()) {
    return true;
  }
  error = CsvPlace(csv, row.input, row.line) + ": " + std::to_string(row.fields) +
          (row.fields == 1 ? " field" : " fields") + ", but the header has " +
          std::to_string(table.columns.size());
  const char other = csv.inputs[row.input].other;
  if (other != '\0') {
    error += std::string("\nhint: the header also has ") +
             (other == '\t' ? "tabs: try --delimiter tab" : "semicolons: try --delimiter ';'");
  }
  return false;
}

void ColumnsFit(const CsvFile &csv, const Table &table, CsvBlock &block) {
  std::string error;
  for (size_t row = 0; row < block.Count(); ++row) {
    if (block.Fields(row) != table.columns.size() &&
        !ColumnsFit(csv, table, block.Row(row), error)) {
      block.Fail(row, error);
    }
  }
}

size_t FindByName(const std::vector<Column> &columns, const std::string &name) {
  for (auto member : {&Column::name, &Column::header}) {
    for (size_t i = 0; i < columns.size(); ++i) {
      if (columns[i].*member == name) {
        return i;
      }
    }
  }
  return columns.size();
}

std::string ColumnHint(const std::vector<Column> &columns, const std::string &name) {
  std::vector<std::string> names;
  names.reserve(columns.size());
  for (const Column &column : columns) {
    names.push_back(FormulaOf(column.name, "").title);
  }
  return NearestHint(Trimmed(name), names);
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
