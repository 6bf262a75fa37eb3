/* The command report: rows grouped by the values of formulas, with figures of each group. */
#include <cstdio>
#include <unordered_map>

#include "host/commands.h"
#include "host/computation.h"
#include "host/display.h"
#include "host/figures.h"
#include "host/sorting.h"

namespace {

using Group = std::vector<Entry>; /* an entry for each column */

struct Report {
  const ReportOptions *options;
  Computation computation; /* a formula for each column */
  std::unordered_map<std::string, Group> groups;
  std::string key; /* of the present row; kept for its capacity */
  std::vector<size_t> sortedBy;
  Sorter sorter;
  Output output;
};

/* The value of a column in the present row, or null. */
const void *BlockOf(const Report &report, size_t column) {
  const Result &result = report.computation.results[column];
  return result.good ? result.block.get() : nullptr;
}

/* The group of the present row, which begins with its first one. */
Group &GroupOfRow(Report &report) {
  const std::vector<ReportColumn> &columns = report.options->columns;
  report.key.clear();
  for (size_t i = 0; i < columns.size(); ++i) {
    if (columns[i].figure == kReportBy) {
      AppendKey(report.computation.formulas[i].type, BlockOf(report, i), report.key);
    }
  }
  const auto [place, isNew] = report.groups.try_emplace(report.key);
  Group &group = place->second;
  if (!isNew) {
    return group;
  }
  group.resize(columns.size());
  for (size_t i = 0; i < columns.size(); ++i) {
    if (columns[i].figure == kReportBy) {
      SortValue value = SortValueOf(report.computation.formulas[i].type, BlockOf(report, i));
      group[i].number = value.number;
      group[i].text = std::move(value.text);
    }
  }
  return group;
}

void AddRow(Report &report) {
  Group &group = GroupOfRow(report);
  for (size_t i = 0; i < group.size(); ++i) {
    const ReportFigure figure = report.options->columns[i].figure;
    if (figure != kReportBy) {
      FigureAdd(figure, report.computation.formulas[i].type, BlockOf(report, i), group[i]);
    }
  }
}

/* The cells and values of one group. `missing` counts figures that no number can hold. */
Sorter::Row RowOf(const Report &report, Group &group, std::vector<int64_t> &missing) {
  const std::vector<ReportColumn> &columns = report.options->columns;
  Sorter::Row row;
  row.cells.resize(columns.size());
  row.values.resize(columns.size());
  for (size_t i = 0; i < columns.size(); ++i) {
    const ReportFigure figure = columns[i].figure;
    const int32_t type = report.output.columns[i].type;
    Entry &entry = group[i];
    if (figure == kReportBy && type == ORL_TYPE_STRING) {
      row.cells[i] = row.values[i].text = entry.text;
      continue;
    }
    const NumberValue value = FigureValue(figure, entry);
    const bool counted = figure == kReportCount || figure == kReportDistinct;
    const bool beyond = entry.values != 0 && value.length == 0;
    const bool written =
        CellFromValue(type, &value, row.cells[i], counted ? -1 : report.options->rows.decimals);
    row.values[i].number = value;
    missing[i] += beyond || !written ? 1 : 0;
  }
  return row;
}

/* Keeps of all values of a row those that the rows are sorted by. */
void KeepKeys(const Report &report, Sorter::Row &row) {
  std::vector<SortValue> keys;
  for (const size_t column : report.sortedBy) {
    keys.push_back(row.values[column]);
  }
  row.values = std::move(keys);
}

void WriteGroups(Report &report) {
  const std::vector<ReportColumn> &columns = report.options->columns;
  std::vector<int64_t> missing(columns.size());
  const size_t count = report.groups.size();
  while (!report.groups.empty()) {
    auto node = report.groups.extract(report.groups.begin());
    Sorter::Row row = RowOf(report, node.mapped(), missing);
    KeepKeys(report, row);
    report.sorter.rows.push_back(std::move(row));
  }
  SorterEnd(report.sorter, report.output);
  OutputEnd(report.output);
  for (size_t i = 0; i < columns.size(); ++i) {
    if (missing[i] != 0) {
      std::fprintf(stderr, "orli: --%s %s has no value in %lld of %zu groups\n",
                   FigureName(columns[i].figure),
                   DisplayName(report.computation.formulas[i].title).c_str(),
                   static_cast<long long>(missing[i]), count);
    }
  }
}

void AddKey(Report &report, size_t column, bool descending) {
  report.sortedBy.push_back(column);
  report.sorter.keys.push_back({report.output.columns[column].type, descending});
}

/* The keys of --sort, then the values of the groups, so that the order is always one. */
bool TakeKeys(Report &report, std::string &error) {
  const std::vector<Formula> &formulas = report.computation.formulas;
  for (const std::string &argument : report.options->rows.sort) {
    const SortArgument key = SortArgumentOf(argument);
    size_t column = 0;
    while (column < formulas.size() && formulas[column].title != key.name &&
           formulas[column].name != key.name) {
      ++column;
    }
    if (column == formulas.size()) {
      error = "--sort: the report has no column " + DisplayName(key.name);
      return false;
    }
    AddKey(report, column, key.descending);
  }
  for (size_t i = 0; i < formulas.size(); ++i) {
    if (report.options->columns[i].figure == kReportBy) {
      AddKey(report, i, false);
    }
  }
  return true;
}

bool Begin(Report &report, std::string &error) {
  bool grouped = false;
  for (size_t i = 0; i < report.options->columns.size(); ++i) {
    const Formula &formula = report.computation.formulas[i];
    const ReportFigure figure = report.options->columns[i].figure;
    if (!FigureTakes(figure, formula.type, formula.title, error)) {
      return false;
    }
    report.output.columns.push_back({formula.title, FigureType(figure, formula.type)});
    grouped = grouped || figure == kReportBy;
  }
  if (!grouped) {
    /* All rows are one group, which is there also when they are none. */
    report.groups[""].resize(report.options->columns.size());
  }
  return TakeKeys(report, error);
}

}  // namespace

int RunReport(const ReportOptions &options) {
  Report report;
  report.options = &options;
  report.output.format = options.rows.format;
  report.sorter.limit = options.rows.limit;
  report.computation.options = &options.rows;
  for (const ReportColumn &column : options.columns) {
    /* A count has a formula too, so that all names are checked alike. */
    const bool counts = column.figure == kReportCount;
    std::string error;
    if (!ComputationTake(report.computation, column.argument + (counts ? "=1" : ""), error)) {
      return Complain(error, kExitUsage);
    }
    if (counts && report.computation.formulas.back().text != "1") {
      return Complain("--count takes a name alone, not " + DisplayName(column.argument),
                      kExitUsage);
    }
  }
  RowConsumer consumer;
  consumer.begin = [&report](std::string &error) { return Begin(report, error); };
  consumer.row = [&report] {
    AddRow(report);
    return true;
  };
  consumer.end = [&report](bool good) {
    /* Figures of some of the rows would look like those of all. */
    if (good) {
      WriteGroups(report);
    }
  };
  return ComputationRun(report.computation, consumer);
}
