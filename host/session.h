// A context of the engine whose input items are the columns of a table.
#ifndef ORLI11_HOST_SESSION_H
#define ORLI11_HOST_SESSION_H

#include <orli11.h>

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/columns.h"
#include "host/csv_file.h"
#include "host/null_use.h"
#include "host/progress.h"

// The value of one column in the current row, converted when the first formula needs it.
struct ColumnValue {
  bool known = false, good = false;
  bool zero = false;  // empty in the current row, and a formula counts it as zero
  int64_t zeros = 0;  // rows so far in which it was so
  NumberValue number = {};
};

struct ContextEnd {
  void operator()(EC ec) const { ORLDestroyEC(ec); }
};
using Context = std::unique_ptr<ExprContext, ContextEnd>;

// The state of the value routine; the context's user value points to it.
struct Session {
  Context ec;
  DataOptions options;
  CsvFile csv;
  Table table;
  std::vector<size_t> byName;                  // column indices sorted by name
  std::vector<ColumnValue> values;             // one for each column
  std::set<std::pair<HEXP, size_t>> zeroUses;  // columns that count as zero when empty, by index
  CsvRow row;                                  // the one that is computed
};

// Checks formulas in a session whose columns have the types of the first rows. False with a message
// for a formula that is invalid with any types.
using SessionCheck = std::function<bool(const Session &sample, std::string &error)>;

struct OpenWish {
  bool bounds = false;           // as in ScanWish
  SessionCheck check = nullptr;  // asked before long files are read to their end
  size_t jobs = 1;               // as in ScanWish
};

// Opens files, finds their columns and declares them in a new context. Reports on standard error
// what had to be changed or looks wrong. False with a message in `error`. The session must not move
// while it is open.
bool SessionOpen(const DataOptions &options, Session &session, Progress &progress,
                 std::string &error, const OpenWish &wish = {});
// Declares the columns of the session's table in its context, whose routines use the session. False
// with a message.
bool SessionDeclare(Session &session, std::string &error);
// Runs a command over the session of a file and returns the exit status.
int WithSession(const DataOptions &options, const std::function<int(Session &session)> &command,
                bool bounds = false);
// A column by its name in formulas, or null.
const Column *SessionColumn(const Session &session, const std::string &name);
// Makes a row the present one. Its bytes must exist until the formulas are computed.
void SessionSetRow(Session &session, const CsvRow &row);

// Counts empty numbers that formulas count as zero from now on.
void SessionWatchZeros(Session &session, const std::vector<ZeroUses> &uses);
// Counts those of the current row, each column once.
void SessionCountZeros(Session &session);

// The number or date of a column in the current row, null when it is empty. False when the field
// cannot be converted.
bool SessionValue(Session &session, size_t column, NumberValue &value);

// The name of the value routine of columns, by which contexts find it.
constexpr char kColumnRoutine[] = "orli column";

// A context with the host's settings, the built-in functions and those of ODBC. Throws
// std::bad_alloc.
Context NewContext();

#endif
