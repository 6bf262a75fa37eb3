// The command report: rows grouped by the values of formulas, with aggregates of each group.
#include <algorithm>
#include <cstdio>
#include <limits>

#include "host/commands.h"
#include "host/computation.h"
#include "host/display.h"
#include "host/figures.h"
#include "host/groups.h"
#include "host/sorting.h"

namespace {

// A column of the report: a part of the key or an aggregate, by its index among these.
struct Place {
  bool key = false;
  size_t index = 0;
};

struct Report {
  const ReportOptions *options;
  Computation computation;  // a formula for each column
  std::vector<Place> places;
  size_t keys = 0, figures = 0;
  Groups groups;
  std::vector<std::pair<size_t, bool>> sortedBy;  // columns; descending
  Output output;
};

ReportFigure FigureOf(const Report &report, size_t column) {
  return report.options->columns[column].figure;
}

int32_t TypeOf(const Report &report, size_t column) {
  return report.computation.formulas[column].type;
}

// Adds the key and the values of a row to its batch.
void MakeRow(const Report &report, Worker &worker, RowBatch &batch) {
  const size_t row = batch.ends.size();
  if (batch.values.size() < (row + 1) * report.figures) {
    batch.values.resize((row + 1) * report.figures);
  }
  for (size_t i = 0; i < report.places.size(); ++i) {
    const void *value = WorkerValue(worker, i);
    if (report.places[i].key) {
      AppendKey(TypeOf(report, i), value, batch.text);
    } else {
      batch.values[row * report.figures + report.places[i].index] =
          SortValueOf(TypeOf(report, i), value);
    }
  }
  batch.ends.push_back(batch.text.size());
}

// Adds the rows of a batch to their groups.
bool TakeBatch(Report &report, RowBatch &batch) {
  size_t begin = 0;
  for (size_t row = 0; row < batch.ends.size(); ++row) {
    const std::string_view key =
        std::string_view(batch.text).substr(begin, batch.ends[row] - begin);
    const size_t group = report.groups.Find(key);
    begin = batch.ends[row];
    for (size_t i = 0; i < report.places.size(); ++i) {
      const Place &place = report.places[i];
      if (!place.key) {
        const SortValue &value = batch.values[row * report.figures + place.index];
        const bool text = TypeOf(report, i) == ORL_TYPE_STRING;
        FigureAdd(FigureOf(report, i), TypeOf(report, i),
                  text ? static_cast<const void *>(value.text.c_str()) : &value.number,
                  report.groups.Figure(group, place.index));
      }
    }
  }
  batch.text.clear();
  batch.ends.clear();
  return true;
}

// Computes the value of each aggregate. `missing` counts those that are too large for a number.
void FinishFigures(Report &report, std::vector<int64_t> &missing) {
  for (size_t group = 0; group < report.groups.Count(); ++group) {
    for (size_t i = 0; i < report.places.size(); ++i) {
      if (!report.places[i].key) {
        Entry &entry = report.groups.Figure(group, report.places[i].index);
        entry.number = FigureValue(FigureOf(report, i), entry);
        missing[i] += entry.values != 0 && entry.number.length == 0 ? 1 : 0;
      }
    }
  }
}

// The value of a column in a group.
struct GroupValue {
  NumberValue number = {};
  const char *text = "";
};

GroupValue ValueOf(const Report &report, size_t group, size_t column) {
  const Place &place = report.places[column];
  GroupValue value;
  if (!place.key) {
    value.number = report.groups.Figure(group, place.index).number;
    return value;
  }
  std::string_view key = report.groups.Key(group);
  for (size_t i = 0; i <= column; ++i) {
    if (report.places[i].key) {
      value.text = TakeKey(TypeOf(report, i), key, value.number);
    }
  }
  return value;
}

bool IsBefore(const Report &report, size_t left, size_t right) {
  for (const auto &[column, descending] : report.sortedBy) {
    const GroupValue one = ValueOf(report, left, column);
    const GroupValue other = ValueOf(report, right, column);
    const int32_t type = report.output.columns[column].type;
    const int order = type == ORL_TYPE_STRING ? CompareTexts(one.text, other.text)
                                              : CompareValues(type, one.number, other.number);
    if (order != 0) {
      return descending ? order > 0 : order < 0;
    }
  }
  return false;
}

// A group with the double nearest to its first sort key: unless two are equal they determine the
// order of the groups.
struct OrderedGroup {
  double first = 0;
  uint32_t group = 0;
};

std::vector<OrderedGroup> OrderOf(const Report &report) {
  std::vector<OrderedGroup> order(report.groups.Count());
  const bool numbers = !report.sortedBy.empty() &&
                       report.output.columns[report.sortedBy[0].first].type == ORL_TYPE_NUMBER;
  for (size_t group = 0; group < order.size(); ++group) {
    order[group].group = static_cast<uint32_t>(group);
    if (numbers) {
      const NumberValue value = ValueOf(report, group, report.sortedBy[0].first).number;
      WRENNumToDouble(&value, &order[group].first);
      if (value.length == 0) {
        order[group].first = -std::numeric_limits<double>::infinity();
      }
    }
  }
  std::stable_sort(order.begin(), order.end(),
                   [&report](const OrderedGroup &left, const OrderedGroup &right) {
                     if (left.first != right.first) {
                       return (left.first < right.first) != report.sortedBy[0].second;
                     }
                     return IsBefore(report, left.group, right.group);
                   });
  return order;
}

void WriteGroup(Report &report, size_t group, std::vector<int64_t> &missing) {
  std::vector<std::string> cells(report.places.size());
  for (size_t i = 0; i < cells.size(); ++i) {
    const ReportFigure figure = FigureOf(report, i);
    const int32_t type = report.output.columns[i].type;
    const GroupValue value = ValueOf(report, group, i);
    const bool counted = figure == kReportCount || figure == kReportDistinct;
    const void *block =
        type == ORL_TYPE_STRING ? static_cast<const void *>(value.text) : &value.number;
    const bool written =
        CellFromValue(type, block, cells[i], counted ? -1 : report.options->rows.decimals);
    missing[i] += written ? 0 : 1;
  }
  OutputRow(report.output, cells);
}

void WriteGroups(Report &report) {
  std::vector<int64_t> missing(report.places.size());
  FinishFigures(report, missing);
  const std::vector<OrderedGroup> order = OrderOf(report);
  int64_t left = report.options->rows.limit;
  for (const OrderedGroup &next : order) {
    if (left-- == 0) {
      break;
    }
    WriteGroup(report, next.group, missing);
  }
  OutputEnd(report.output);
  for (size_t i = 0; i < missing.size(); ++i) {
    if (missing[i] != 0) {
      std::fprintf(stderr, "orli: --%s %s has no value in %lld of %zu groups\n",
                   FigureName(FigureOf(report, i)),
                   DisplayName(report.computation.formulas[i].title).c_str(),
                   static_cast<long long>(missing[i]), order.size());
    }
  }
}

// The keys of --sort, then the values of the groups, so that the order is total.
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
      const std::string problem = SortProblem(key.name);
      error = problem.empty() ? "--sort: the report has no column " + DisplayName(key.name) +
                                    FormulaHint(formulas, key.name)
                              : problem;
      return false;
    }
    report.sortedBy.emplace_back(column, key.descending);
  }
  for (size_t i = 0; i < formulas.size(); ++i) {
    if (report.places[i].key) {
      report.sortedBy.emplace_back(i, false);
    }
  }
  return true;
}

bool Begin(Report &report, std::string &error) {
  for (size_t i = 0; i < report.options->columns.size(); ++i) {
    const Formula &formula = report.computation.formulas[i];
    const ReportFigure figure = FigureOf(report, i);
    const bool key = figure == kReportBy;
    if (!FigureAccepts(figure, formula.type, formula.title, error)) {
      error += TextColumnHint(report.computation.session.ec.get(), formula);
      return false;
    }
    report.output.columns.push_back({formula.title, FigureType(figure, formula.type)});
    report.places.push_back({key, key ? report.keys++ : report.figures++});
  }
  report.groups = Groups(report.figures);
  if (report.keys == 0) {
    // All rows are one group, which exists even without rows.
    report.groups.Find({});
  }
  return TakeKeys(report, error);
}

}  // namespace

int RunReport(const ReportOptions &options) {
  Report report;
  report.options = &options;
  report.output.format = options.rows.format;
  report.computation.options = &options.rows;
  for (const ReportColumn &column : options.columns) {
    // A count also has a formula, so that all names are checked in the same way.
    const bool counts = column.figure == kReportCount;
    std::string error;
    if (!ComputationAdd(report.computation, column.argument + (counts ? "=1" : ""), error)) {
      return Complain(error, kExitUsage);
    }
    if (counts && report.computation.formulas.back().text != "1") {
      return Complain("--count takes a name alone, not " + DisplayName(column.argument),
                      kExitUsage);
    }
  }
  RowConsumer consumer;
  consumer.begin = [&report](std::string &error) { return Begin(report, error); };
  consumer.make = [&report](Worker &worker, RowBatch &batch) { MakeRow(report, worker, batch); };
  consumer.take = [&report](RowBatch &batch) { return TakeBatch(report, batch); };
  consumer.end = [&report](bool good) {
    // Aggregates of some of the rows would look like those of all.
    if (good) {
      WriteGroups(report);
    }
  };
  return ComputationRun(report.computation, consumer);
}
