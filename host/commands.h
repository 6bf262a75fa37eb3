// What orli can do. Each command writes its output to standard output, each error as
// one line that begins with "orli:" to standard error, and returns the exit status.
#ifndef ORLI11_HOST_COMMANDS_H
#define ORLI11_HOST_COMMANDS_H

#include <cstdint>
#include <string>
#include <vector>

#include "host/data_options.h"
#include "host/errors.h"
#include "host/output.h"

// The rows that a command selects, the formulas that it knows, and the format of its output.
struct RowOptions {
  DataOptions data;
  std::string store;                      // a file of formulas; empty: none
  std::vector<std::string> formulaFiles;  // with lines NAME=TEXT
  std::vector<std::string> conditions;    // TEXT=BOUNDS; all of them must be met
  std::vector<std::string> sort;          // NAME, NAME:asc or NAME:desc
  int64_t limit = -1;                     // rows to write; -1: all
  int decimals = -1;                      // of the numbers; -1: as many as they have
  int64_t jobs = 0;                       // threads that compute; 0: one for each processor
  OutputFormat format = kOutputTable;
};

struct CheckOptions {
  DataOptions data;
  std::string store, text;
  std::vector<std::string> formulaFiles;
};

struct EvalOptions {
  RowOptions rows;
  std::vector<std::string> formulas;  // NAME=TEXT
  std::vector<std::string> keep;      // "all" or names of columns
};

// The content of a report's column: the groups' own values or an aggregate of their rows.
enum ReportFigure {
  kReportBy,
  kReportCount,
  kReportSum,
  kReportMean,
  kReportMedian,
  kReportLeast,
  kReportGreatest,
  kReportDistinct
};

struct ReportColumn {
  ReportFigure figure = kReportBy;
  std::string argument;  // NAME=TEXT; NAME for kReportCount
};

struct ReportOptions {
  RowOptions rows;
  std::vector<ReportColumn> columns;
};

// The columns of files: name, type, filled and empty rows, least and greatest value, example, and
// why a column is a String.
int RunItems(const DataOptions &data, OutputFormat format);
// The functions: signature and description; or everything about the one of that name.
int RunFunctions(const std::string &name);
// The type of a formula, or its error with the place underlined.
int RunCheck(const CheckOptions &options);
// Formulas computed for each row, those of the store first.
int RunEval(const EvalOptions &options);
// Rows grouped by the values of formulas, a row for each group in the order of these values. Null
// values do not count in an aggregate; one without values is an empty cell.
int RunReport(const ReportOptions &options);

// Adds formulas to a store, or changes them, for the columns of a file.
int RunDefine(const std::string &store, const DataOptions &data,
              const std::vector<std::string> &formulas,
              const std::vector<std::string> &formulaFiles);
// The formulas of a store: name, kind, type, text.
int RunList(const std::string &store, OutputFormat format);
// The text of a formula.
int RunShow(const std::string &store, const std::string &name);
// Removes a formula from a store, unless others use it.
int RunDelete(const std::string &store, const std::string &name);
// Renames a column; writes the formulas whose texts have changed.
int RunRename(const std::string &store, const std::string &from, const std::string &to);
// The names of the formulas that use a column, function or formula.
int RunUses(const std::string &store, const std::string &name);

struct EditOptions {
  std::string store;
  DataOptions data;
  std::string name;    // of the formula to be edited; empty: a new one
  std::string mode;    // "formula", "range" or "set"; empty: as the formula is
  std::string values;  // the column whose values are listed at the start; empty: none
  bool sql = false;    // list the functions for databases too
};

// Opens the formula editor on a store, over the columns of a file.
int RunEdit(const EditOptions &options);
// Reads a store, for the columns of a file unless `data` has none; opens the editor for each
// formula that does not parse.
int RunLoad(const std::string &store, const DataOptions &data);

struct SqlOptions {
  std::string store;
  DataOptions data;
  std::vector<std::string> names;       // of the formulas to be computed
  std::vector<std::string> conditions;  // TEXT=NAME
  std::string table;                    // empty: named like the file
  std::string source;                   // of the rows; empty: the statement is written
  OutputFormat format = kOutputTable;
};

// The statement that computes formulas of a store in a database, or its result.
int RunSql(const SqlOptions &options);

#endif
