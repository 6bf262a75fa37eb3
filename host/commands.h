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
  std::string data, store;
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
  std::string data, store;
  std::vector<ReportColumn> columns;
  OutputFormat format = OUTPUT_TABLE;
};

/* The columns of a file: name, type, filled rows, example. */
int RunItems(const std::string &data);
/* The functions: signature and description. */
int RunFunctions();
/* The type of a formula, or its error with the place underlined. It may call those of a store; an
 * empty `store` is none, also in the options of the next two. */
int RunCheck(const std::string &data, const std::string &store, const std::string &text);
/* Formulas computed for each row, those of the store first. */
int RunEval(const EvalOptions &options);
/* Rows grouped by the values of formulas, a row for each group in the order of these values. Null
 * values do not count in a figure; one without values is an empty cell. */
int RunReport(const ReportOptions &options);

/* Adds formulas to a store, or changes them, for the columns of a file. */
int RunDefine(const std::string &store, const std::string &data,
              const std::vector<std::string> &formulas);
/* The formulas of a store: name, kind, type, text. */
int RunList(const std::string &store, OutputFormat format);
/* The text of a formula. */
int RunShow(const std::string &store, const std::string &name);
/* Takes a formula out of a store, unless others use it. */
int RunDelete(const std::string &store, const std::string &name);
/* Gives a column another name; writes the formulas whose texts have followed. */
int RunRename(const std::string &store, const std::string &from, const std::string &to);
/* The names of the formulas that use a column, function or formula. */
int RunUses(const std::string &store, const std::string &name);

struct EditOptions {
  std::string store, data;
  std::string name;   /* of the formula to be edited; empty: a new one */
  std::string mode;   /* "formula", "range" or "set"; empty: as the formula is */
  std::string values; /* the column whose values are listed at once; empty: none */
};

/* Opens the formula editor on a store, over the columns of a file. */
int RunEdit(const EditOptions &options);
/* Reads a store, for the columns of a file unless `data` is empty; opens the editor for each
 * formula that does not parse. */
int RunLoad(const std::string &store, const std::string &data);

struct SqlOptions {
  std::string store, data;
  std::vector<std::string> names;      /* of the formulas to be computed */
  std::vector<std::string> conditions; /* TEXT=NAME */
  std::string table;                   /* empty: named like the file */
  std::string source;                  /* of the rows; empty: the statement is written */
  OutputFormat format = OUTPUT_TABLE;
};

/* The statement by which a database computes formulas of a store, or what it computes. */
int RunSql(const SqlOptions &options);

/* Writes an error and returns `status`. */
int Complain(const std::string &message, int status);

#endif
