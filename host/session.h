/* session.h - a context of the engine whose input items are the columns of a table. */
#ifndef ORLI11_HOST_SESSION_H
#define ORLI11_HOST_SESSION_H

#include <orli11.h>

#include <functional>
#include <string>
#include <vector>

#include "host/columns.h"
#include "host/csv_file.h"
#include "host/progress.h"

/* The value of one column in the present row, converted when the first formula asks for it. */
struct ColumnValue {
  bool known = false, good = false;
  NumberValue number = {};
};

/* What the value routine works on; the context's user value points to it. */
struct Session {
  EC ec = nullptr;
  CsvFile csv;
  Table table;
  std::vector<size_t> byName;      /* column indices in the order of their names */
  std::vector<ColumnValue> values; /* one for each column */
  const CsvRow *row = nullptr;     /* the row being computed */
};

/* Opens a file, finds its columns and declares them in a new context. False with a message in
 * `error`. SessionClose in any case. The session must not move while it is open. */
bool SessionOpen(const char *path, Session &session, Progress &progress, std::string &error);
void SessionClose(Session &session);
/* Runs a command over the session of a file and returns the exit status. */
int WithSession(const std::string &data, const std::function<int(Session &session)> &command);
/* A column by the name that formulas write, or null. */
const Column *SessionColumn(const Session &session, const std::string &name);
/* Makes a row the present one. It must stay until the formulas are computed. */
void SessionSetRow(Session &session, const CsvRow &row);

/* The name of the routine that gives the values of columns, which contexts know. */
constexpr char kColumnRoutine[] = "orli column";

/* A context with the host's settings, the built-in functions and those of ODBC, or null without
 * memory. */
EC NewContext();

#endif
