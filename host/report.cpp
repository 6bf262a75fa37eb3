/* The command report: rows grouped by the values of formulas, with figures of each group. */
#include <pavni11.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <tuple>
#include <unordered_map>

#include "host/commands.h"
#include "host/computation.h"
#include "host/display.h"
#include "host/values.h"

namespace {

/* What stands in one column of a group: its own value, or what the rows came to so far. */
struct Entry {
  std::string text;        /* of type String */
  NumberValue number = {}; /* of the other types; null before the first value of a figure */
  int64_t values = 0;      /* of a figure: those that were not null */
};

using Group = std::vector<Entry>; /* an entry for each column */

struct Report {
  const ReportOptions *options;
  Computation computation; /* a formula for each column */
  std::unordered_map<std::string, Group> groups;
  std::string key; /* of the present row; kept for its room */
};

/* How the command line calls a figure. */
const char *FigureName(ReportFigure figure) {
  constexpr std::array<const char *, 6> kNames = {"by",   "count", "sum",
                                                  "mean", "least", "greatest"};
  return kNames.at(static_cast<size_t>(figure));
}

/* A figure can only be of some types. */
bool CheckFigures(const Report &report, std::string &error) {
  for (size_t i = 0; i < report.options->columns.size(); ++i) {
    const ReportFigure figure = report.options->columns[i].figure;
    const Formula &formula = report.computation.formulas[i];
    const bool ordered = figure == REPORT_LEAST || figure == REPORT_GREATEST;
    const bool added = figure == REPORT_SUM || figure == REPORT_MEAN;
    if ((ordered && formula.type == ORL_TYPE_STRING) ||
        (added && formula.type != ORL_TYPE_NUMBER)) {
      error = std::string("--") + FigureName(figure) + " needs a Number" +
              (ordered ? " or a Date" : "") + ", but " + DisplayName(formula.title) + " is a " +
              TypeName(formula.type);
      return false;
    }
  }
  return true;
}

NumberValue NumberOf(const Result &result) {
  NumberValue value = {};
  if (result.good) {
    std::memcpy(&value, result.block, sizeof value);
  }
  return value;
}

/* The order of numbers or dates; null stands first. */
int CompareValues(int32_t type, const NumberValue &left, const NumberValue &right) {
  if (type == ORL_TYPE_NUMBER) {
    return WRENNumCompare(&left, &right);
  }
  std::array<DateTimeParts, 2> parts = {};
  PAVNNumberToDate(left.payload, left.length, &parts[0]);
  PAVNNumberToDate(right.payload, right.length, &parts[1]);
  const auto fields = [](const DateTimeParts &date) {
    return std::tie(date.year, date.month, date.day, date.hour, date.minute, date.second,
                    date.fraction);
  };
  return static_cast<int>(fields(parts[1]) < fields(parts[0])) -
         static_cast<int>(fields(parts[0]) < fields(parts[1]));
}

/* Writes the bytes that tell the group of the present row: equal values have equal bytes, a text
 * ends with its terminator. */
void MakeKey(Report &report) {
  report.key.clear();
  for (size_t i = 0; i < report.options->columns.size(); ++i) {
    if (report.options->columns[i].figure != REPORT_BY) {
      continue;
    }
    const Result &result = report.computation.results[i];
    if (report.computation.formulas[i].type == ORL_TYPE_STRING) {
      report.key += result.good ? static_cast<const char *>(result.block) : "";
      report.key += '\0';
    } else {
      const NumberValue value = NumberOf(result);
      report.key += static_cast<char>(value.length);
      report.key.append(reinterpret_cast<const char *>(value.payload), value.length);
    }
  }
}

void AddToFigure(ReportFigure figure, int32_t type, const NumberValue &value, Entry &entry) {
  if (value.length == 0) {
    return;
  }
  const int order = entry.values == 0 ? 0 : CompareValues(type, value, entry.number);
  if (entry.values++ == 0 || (figure == REPORT_LEAST && order < 0) ||
      (figure == REPORT_GREATEST && order > 0)) {
    entry.number = value;
  } else if (figure == REPORT_SUM || figure == REPORT_MEAN) {
    WRENNumAdd(&entry.number, &entry.number, &value);
  }
}

/* The group of the present row, which begins with its first one. */
Group &GroupOfRow(Report &report) {
  MakeKey(report);
  const auto [place, isNew] = report.groups.try_emplace(report.key);
  Group &group = place->second;
  if (!isNew) {
    return group;
  }
  group.resize(report.options->columns.size());
  for (size_t i = 0; i < group.size(); ++i) {
    const Result &result = report.computation.results[i];
    if (report.options->columns[i].figure != REPORT_BY) {
      continue;
    }
    if (report.computation.formulas[i].type != ORL_TYPE_STRING) {
      group[i].number = NumberOf(result);
    } else if (result.good) {
      group[i].text = static_cast<const char *>(result.block);
    }
  }
  return group;
}

void AddRow(Report &report) {
  Group &group = GroupOfRow(report);
  for (size_t i = 0; i < group.size(); ++i) {
    const ReportFigure figure = report.options->columns[i].figure;
    if (figure == REPORT_COUNT) {
      ++group[i].values;
    } else if (figure != REPORT_BY) {
      AddToFigure(figure, report.computation.formulas[i].type,
                  NumberOf(report.computation.results[i]), group[i]);
    }
  }
}

/* The groups in the order of their values, the first column first. Texts stand as the function
 * StrCompare orders them. */
std::vector<Group *> SortedGroups(Report &report) {
  std::vector<Group *> sorted;
  for (auto &[key, group] : report.groups) {
    sorted.push_back(&group);
  }
  const std::unique_ptr<void, void (*)(void *)> block(ORLMemAlloc(sizeof(NumberValue)), ORLMemFree);
  const auto compareTexts = [&block](std::string &left, std::string &right) {
    void *result = block.get();
    std::array<void *, 2> arguments = {left.data(), right.data()};
    FUNStrCompare(nullptr, nullptr, sizeof(NumberValue), &result, "StrCompare", arguments.data());
    return WRENNumToInt(static_cast<const NumberValue *>(result));
  };
  std::sort(sorted.begin(), sorted.end(), [&](Group *left, Group *right) {
    int order = 0;
    for (size_t i = 0; i < left->size() && order == 0; ++i) {
      if (report.options->columns[i].figure == REPORT_BY) {
        const int32_t type = report.computation.formulas[i].type;
        Entry &one = (*left)[i];
        Entry &other = (*right)[i];
        order = type == ORL_TYPE_STRING ? compareTexts(one.text, other.text)
                                        : CompareValues(type, one.number, other.number);
      }
    }
    return order < 0;
  });
  return sorted;
}

/* What a figure of a group came to: null without values, or beyond what a number holds. */
NumberValue FigureValue(ReportFigure figure, const Entry &entry) {
  NumberValue value = entry.number;
  NumberValue count;
  WRENNumFromLong(&count, entry.values);
  if (figure == REPORT_COUNT) {
    value = count;
  } else if (figure == REPORT_MEAN && entry.values != 0) {
    WRENNumDiv(&value, &value, &count);
  }
  return value;
}

void WriteGroups(Report &report, Output &output) {
  const std::vector<ReportColumn> &columns = report.options->columns;
  std::vector<int64_t> missing(columns.size());
  for (const Group *group : SortedGroups(report)) {
    std::vector<std::string> cells(columns.size());
    for (size_t i = 0; i < columns.size(); ++i) {
      const ReportFigure figure = columns[i].figure;
      const int32_t type = report.computation.formulas[i].type;
      const Entry &entry = (*group)[i];
      if (figure == REPORT_BY && type == ORL_TYPE_STRING) {
        cells[i] = entry.text;
        continue;
      }
      const NumberValue value = FigureValue(figure, entry);
      const bool beyond = entry.values != 0 && value.length == 0;
      missing[i] += beyond || !CellFromValue(type, &value, cells[i]) ? 1 : 0;
    }
    OutputRow(output, cells);
  }
  OutputEnd(output);
  for (size_t i = 0; i < columns.size(); ++i) {
    if (missing[i] != 0) {
      std::fprintf(stderr, "orli: --%s %s has no value in %lld of %zu groups\n",
                   FigureName(columns[i].figure),
                   DisplayName(report.computation.formulas[i].title).c_str(),
                   static_cast<long long>(missing[i]), report.groups.size());
    }
  }
}

bool Begin(Report &report, Output &output, std::string &error) {
  bool grouped = false;
  for (size_t i = 0; i < report.options->columns.size(); ++i) {
    const Formula &formula = report.computation.formulas[i];
    output.columns.push_back({formula.title, formula.type == ORL_TYPE_NUMBER});
    grouped = grouped || report.options->columns[i].figure == REPORT_BY;
  }
  if (!grouped) {
    /* All rows are one group, which is there also when they are none. */
    report.groups[""].resize(report.options->columns.size());
  }
  return CheckFigures(report, error);
}

}  // namespace

int RunReport(const ReportOptions &options) {
  Report report;
  report.options = &options;
  report.computation.store = options.store;
  for (const ReportColumn &column : options.columns) {
    /* A count has a formula too, so that all names are checked alike. */
    const bool counts = column.figure == REPORT_COUNT;
    std::string error;
    if (!ComputationTake(report.computation, column.argument + (counts ? "=1" : ""), error)) {
      return Complain(error, EXIT_USAGE);
    }
    if (counts && report.computation.formulas.back().text != "1") {
      return Complain("--count takes a name alone, not " + DisplayName(column.argument),
                      EXIT_USAGE);
    }
  }
  Output output;
  output.format = options.format;
  RowConsumer consumer;
  consumer.begin = [&](std::string &error) { return Begin(report, output, error); };
  consumer.row = [&report] {
    AddRow(report);
    return true;
  };
  consumer.end = [&](bool good) {
    /* Figures of some of the rows would look like those of all. */
    if (good) {
      WriteGroups(report, output);
    }
  };
  return ComputationRun(report.computation, options.data, consumer);
}
