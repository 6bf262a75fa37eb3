#include "host/session.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#include "host/commands.h"
#include "host/odbc_functions.h"
#include "host/values.h"

namespace {

const Column *FindColumn(const Session &session, const char *name, size_t &index) {
  const std::vector<Column> &columns = session.table.columns;
  const auto found = std::lower_bound(
      session.byName.begin(), session.byName.end(), name,
      [&columns](size_t i, const char *wanted) { return columns[i].name.compare(wanted) < 0; });
  if (found == session.byName.end() || columns[*found].name != name) {
    return nullptr;
  }
  index = *found;
  return &columns[index];
}

/* Converts the field, or gives the null value for an empty one. */
void Convert(const Column &column, const char *field, ColumnValue &value) {
  value.known = true;
  if (*field == '\0') {
    WRENNumSetNull(&value.number);
    value.good = true;
  } else if (column.type == ORL_TYPE_DATE) {
    value.good = DateFromField(field, &value.number);
  } else {
    value.good = NumberFromField(field, &value.number);
  }
}

/* The value routine of all columns. */
int32_t ValueOfColumn(EC ec, HEXP /*exp*/, int32_t size, void **value, const char *name) {
  Session *session = reinterpret_cast<Session *>(ORLGetUserLong(ec));
  size_t index = 0;
  const Column *column = FindColumn(*session, name, index);
  if (column == nullptr || session->row == nullptr) {
    return 0;
  }
  const char *field = CsvField(*session->row, index);
  if (column->type == ORL_TYPE_STRING) {
    return FUNStrVarResult(value, size, field);
  }
  ColumnValue &known = session->values[index];
  if (!known.known) {
    Convert(*column, field, known);
  }
  if (known.good) {
    std::memcpy(*value, &known.number, sizeof known.number);
  }
  return known.good ? 1 : 0;
}

void *LookUp(const char *routineName) {
  return std::strcmp(routineName, kColumnRoutine) == 0 ? reinterpret_cast<void *>(ValueOfColumn)
                                                       : nullptr;
}

bool DeclareColumns(Session &session, std::string &error) {
  const std::vector<Column> &columns = session.table.columns;
  std::string routineName = kColumnRoutine;
  for (const Column &column : columns) {
    ExprItem item = {};
    item.kind = ORL_INPUT;
    item.dataType = column.type;
    item.routineName = routineName.data();
    std::memcpy(item.name, column.name.c_str(), column.name.size() + 1);
    if (ORLAddExpressionItem(session.ec, &item) == 0) {
      error = session.csv.path + ": too many columns, or no memory";
      return false;
    }
  }
  session.byName.resize(columns.size());
  std::iota(session.byName.begin(), session.byName.end(), size_t{0});
  std::sort(session.byName.begin(), session.byName.end(), [&columns](size_t left, size_t right) {
    return columns[left].name < columns[right].name;
  });
  session.values.resize(columns.size());
  return true;
}

}  // namespace

EC NewContext() {
  EC ec = ORLCreateEC(nullptr, LookUp, nullptr, ORL_FLAG_RANGES | ORL_FLAG_LIST_ALL);
  if (ec != nullptr && (FUNDefineFunctions(ec) == 0 || !OdbcFunctionsDeclare(ec))) {
    ORLDestroyEC(ec);
    return nullptr;
  }
  return ec;
}

bool SessionOpen(const char *path, Session &session, Progress &progress, std::string &error) {
  session.ec = NewContext();
  if (session.ec == nullptr) {
    error = "no memory";
    return false;
  }
  ORLSetUserLong(session.ec, reinterpret_cast<intptr_t>(&session));
  return CsvOpen(path, session.csv, error) &&
         ColumnsScan(session.csv, session.ec, session.table, progress, error) &&
         DeclareColumns(session, error);
}

int WithSession(const std::string &data, const std::function<int(Session &session)> &command) {
  Session session;
  Progress progress;
  std::string error;
  ProgressStart(progress);
  const bool open = SessionOpen(data.c_str(), session, progress, error);
  const int status = open ? command(session) : Complain(error, EXIT_WRONG);
  SessionClose(session);
  return status;
}

void SessionClose(Session &session) {
  ORLDestroyEC(session.ec);
  session.ec = nullptr;
  CsvClose(session.csv);
}

const Column *SessionColumn(const Session &session, const std::string &name) {
  size_t index = 0;
  return FindColumn(session, name.c_str(), index);
}

void SessionSetRow(Session &session, const CsvRow &row) {
  session.row = &row;
  for (ColumnValue &value : session.values) {
    value.known = false;
  }
}
