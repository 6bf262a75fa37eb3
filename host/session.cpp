#include "host/session.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <new>
#include <numeric>

#include "host/display.h"
#include "host/errors.h"
#include "host/field.h"
#include "host/odbc_functions.h"

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

// Converts the field, or gives the null value for an empty one.
void Convert(const FieldRules &rules, const Column &column, const char *field, ColumnValue &value) {
  value.known = true;
  if (FieldIsEmpty(rules, field)) {
    WRENNumSetNull(&value.number);
    value.good = true;
  } else if (column.type == ORL_TYPE_DATE) {
    value.good = DateFromField(rules, field, &value.number);
  } else {
    value.good = NumberFromField(rules, field, &value.number);
  }
}

// The value routine of all columns.
int32_t ValueOfColumn(EC ec, HEXP exp, int32_t size, void **value, const char *name) {
  Session *session = reinterpret_cast<Session *>(ORLGetUserLong(ec));
  size_t index = 0;
  const Column *column = FindColumn(*session, name, index);
  if (column == nullptr || session->row.bytes == nullptr) {
    return 0;
  }
  const char *field = CsvField(session->row, index);
  if (column->type == ORL_TYPE_STRING) {
    return FUNStrVarResult(value, size, FieldIsEmpty(session->options.rules, field) ? "" : field);
  }
  ColumnValue &known = session->values[index];
  if (!known.known) {
    Convert(session->options.rules, *column, field, known);
  }
  if (known.good && known.number.length == 0 && column->type == ORL_TYPE_NUMBER &&
      session->zeroUses.count({exp, index}) != 0) {
    known.zero = true;
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

// Warns once when the environment names a locale that is not installed: the settings of the United
// States are then used instead, which read other dates.
void CheckLocale() {
  locale_t locale = newlocale(LC_TIME_MASK | LC_NUMERIC_MASK | LC_MONETARY_MASK, "", nullptr);
  if (locale != nullptr) {
    freelocale(locale);
    return;
  }
  for (const char *variable : {"LC_ALL", "LC_TIME", "LC_NUMERIC", "LC_MONETARY", "LANG"}) {
    const char *name = std::getenv(variable);
    if (name != nullptr && *name != '\0') {
      Complain("the locale " + DisplayName(name) + " of " + variable +
                   " is not installed; dates and numbers are read as in the United States",
               kExitGood);
      return;
    }
  }
}

// Reports columns that are Strings because their fields are written in two ways.
void ReportTwoForms(const Session &session) {
  for (const Column &column : session.table.columns) {
    if (column.twoWays) {
      Complain(session.csv.Path() + ": column " + DisplayName(column.name) +
                   " is written in two ways: " + column.why,
               kExitGood);
    }
  }
}

// Calls `check` when there are more than a few rows; errors in the rows are reported when all are
// read.
bool CheckFirstRows(Session &session, Progress &progress, const SessionCheck &check,
                    std::string &error) {
  constexpr int64_t kFewRows = 1000;
  Session sample;
  sample.ec = NewContext();
  sample.options = session.options;
  sample.table = session.table;
  for (const CsvInput &input : session.csv.inputs) {  // messages name the files
    sample.csv.inputs.emplace_back().source.path = input.source.path;
  }
  std::string unused;
  return !ColumnsScan(session.csv, session.options, {false, kFewRows, 1}, sample.table, progress,
                      unused) ||
         sample.table.rows < kFewRows || !SessionDeclare(sample, unused) || check(sample, error);
}

}  // namespace

Context NewContext() {
  Context ec(ORLCreateEC(nullptr, LookUp, nullptr, ORL_FLAG_RANGES | ORL_FLAG_LIST_ALL));
  if (ec == nullptr || FUNDefineFunctions(ec.get()) == 0 || !OdbcFunctionsDeclare(ec.get())) {
    throw std::bad_alloc();
  }
  return ec;
}

bool SessionDeclare(Session &session, std::string &error) {
  ORLSetUserLong(session.ec.get(), reinterpret_cast<intptr_t>(&session));
  const std::vector<Column> &columns = session.table.columns;
  for (const Column &column : columns) {
    ExprItem item = {};
    item.kind = ORL_INPUT;
    item.dataType = column.type;
    item.routineName = kColumnRoutine;
    std::memcpy(item.name, column.name.c_str(), column.name.size() + 1);
    if (ORLAddExpressionItem(session.ec.get(), &item) == 0) {
      error = session.csv.Path() + ": too many columns, or out of memory";
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

bool SessionOpen(const DataOptions &options, Session &session, Progress &progress,
                 std::string &error, const OpenWish &wish) {
  session.ec = NewContext();
  session.options = options;
  CheckLocale();
  if (!CsvOpen(options, session.csv, error)) {
    return false;
  }
  std::vector<std::string> notes;
  ColumnsName(session.csv, session.ec.get(), session.table, notes);
  for (const std::string &note : notes) {
    Complain(session.csv.Path() + ": " + note, kExitGood);
  }
  if (wish.check && !CheckFirstRows(session, progress, wish.check, error)) {
    return false;
  }
  const ScanWish scan = {wish.bounds, -1, wish.jobs};
  if (!ColumnsScan(session.csv, options, scan, session.table, progress, error) ||
      !SessionDeclare(session, error)) {
    return false;
  }
  if (!session.table.notUtf8.empty()) {
    Complain(session.table.notUtf8 +
                 " is not UTF-8; if it is from Windows, iconv -f WINDOWS-1252 -t UTF-8 converts "
                 "the file",
             kExitGood);
  }
  ReportTwoForms(session);
  return true;
}

int WithSession(const DataOptions &options, const std::function<int(Session &session)> &command,
                bool bounds) {
  Session session;
  Progress progress;
  std::string error;
  ProgressStart(progress);
  const OpenWish wish = {bounds, nullptr, 1};
  return SessionOpen(options, session, progress, error, wish) ? command(session)
                                                              : Complain(error, kExitWrong);
}

const Column *SessionColumn(const Session &session, const std::string &name) {
  size_t index = 0;
  return FindColumn(session, name.c_str(), index);
}

void SessionSetRow(Session &session, const CsvRow &row) {
  session.row = row;
  for (ColumnValue &value : session.values) {
    value.known = value.zero = false;
  }
}

void SessionWatchZeros(Session &session, const std::vector<ZeroUses> &uses) {
  for (const ZeroUses &formula : uses) {
    for (const std::string &name : formula.names) {
      size_t index = 0;
      const Column *column = FindColumn(session, name.c_str(), index);
      if (column != nullptr && column->type == ORL_TYPE_NUMBER &&
          column->filled != session.table.rows) {
        session.zeroUses.emplace(formula.exp, index);
      }
    }
  }
}

void SessionCountZeros(Session &session) {
  for (ColumnValue &value : session.values) {
    value.zeros += value.zero ? 1 : 0;
  }
}

bool SessionValue(Session &session, size_t column, NumberValue &value) {
  ColumnValue &known = session.values[column];
  if (!known.known) {
    Convert(session.options.rules, session.table.columns[column], CsvField(session.row, column),
            known);
  }
  value = known.number;
  return known.good;
}
