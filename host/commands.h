/* commands.h - what orli can do. Each command writes its answer to standard output, each error as
 * one line that begins with "orli:" to standard error, and returns the exit status. */
#ifndef ORLI11_HOST_COMMANDS_H
#define ORLI11_HOST_COMMANDS_H

#include <cstdint>
#include <string>
#include <vector>

#include "host/output.h"

enum ExitStatus {
  EXIT_GOOD = 0,
  EXIT_WRONG = 1, /* the data or a formula is wrong, or the output cannot be written */
  EXIT_USAGE = 2  /* the command line is wrong */
};

struct EvalOptions {
  std::string data;
  std::vector<std::string> formulas; /* NAME=TEXT */
  int64_t limit = -1;                /* rows to compute; -1: all */
  OutputFormat format = OUTPUT_TABLE;
};

/* What a column of a report holds: the groups' own values or a figure of their rows. */
enum ReportFigure {
  REPORT_BY,
  REPORT_COUNT,
  REPORT_SUM,
  REPORT_MEAN,
  REPORT_LEAST,
  REPORT_GREATEST
};

struct ReportColumn {
  ReportFigure figure = REPORT_BY;
  std::string argument; /* NAME=TEXT; NAME for REPORT_COUNT */
};

struct ReportOptions {
  std::string data;
  std::vector<ReportColumn> columns;
  OutputFormat format = OUTPUT_TABLE;
};

/* The columns of a file: name, type, filled rows, example. */
int RunItems(const std::string &data);
/* The functions: signature and description. */
int RunFunctions();
/* The type of a formula, or its error with the place underlined. */
int RunCheck(const std::string &data, const std::string &text);
/* Formulas computed for each row. */
int RunEval(const EvalOptions &options);
/* Rows grouped by the values of formulas, a row for each group in the order of these values. Null
 * values do not count in a figure; one without values is an empty cell. */
int RunReport(const ReportOptions &options);

/* Writes an error and returns `status`. */
int Complain(const std::string &message, int status);

#endif
