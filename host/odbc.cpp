// Executes a statement on a database, through the ODBC driver manager.
#include <sql.h>
#include <sqlext.h>

#include <array>
#include <charconv>
#include <cmath>
#include <memory>

#include "host/display.h"
#include "host/field.h"
#include "host/sql.h"
#include "host/values.h"

namespace {

constexpr size_t kLongestCell = size_t{16} << 20;

using Handle = std::unique_ptr<void, void (*)(SQLHANDLE)>;

void FreeEnvironment(SQLHANDLE environment) {
  SQLFreeHandle(SQL_HANDLE_ENV, environment);
}
void FreeConnection(SQLHANDLE connection) {
  SQLDisconnect(connection);  // also one that was never allocated
  SQLFreeHandle(SQL_HANDLE_DBC, connection);
}
void FreeStatement(SQLHANDLE statement) {
  SQLFreeHandle(SQL_HANDLE_STMT, statement);
}

// Null when out of memory.
Handle NewHandle(SQLSMALLINT kind, SQLHANDLE parent, void (*release)(SQLHANDLE)) {
  SQLHANDLE handle = SQL_NULL_HANDLE;
  return {SQL_SUCCEEDED(SQLAllocHandle(kind, parent, &handle)) ? handle : nullptr, release};
}

// The first line of a driver's message.
std::string Diagnosis(SQLSMALLINT kind, SQLHANDLE handle) {
  std::array<SQLCHAR, 6> state = {};
  std::array<SQLCHAR, 1024> text = {};
  SQLINTEGER number = 0;
  SQLSMALLINT length = 0;
  if (!SQL_SUCCEEDED(SQLGetDiagRec(kind, handle, 1, state.data(), &number, text.data(),
                                   static_cast<SQLSMALLINT>(text.size()), &length))) {
    return "the database gives no reason for its failure";
  }
  const std::string message = reinterpret_cast<const char *>(text.data());
  return std::string("SQLSTATE ") + reinterpret_cast<const char *>(state.data()) + ": " +
         DisplayName(message.substr(0, message.find_first_of("\r\n")));
}

SQLCHAR *Bytes(const std::string &text) {
  return reinterpret_cast<SQLCHAR *>(const_cast<char *>(text.c_str()));
}

bool Connect(const std::string &source, SQLHANDLE connection, std::string &error) {
  const std::string text = source.find('=') == std::string::npos ? "DSN=" + source : source;
  const SQLRETURN result = SQLDriverConnect(connection, nullptr, Bytes(text), SQL_NTS, nullptr, 0,
                                            nullptr, SQL_DRIVER_NOPROMPT);
  error = SQL_SUCCEEDED(result) ? "" : Diagnosis(SQL_HANDLE_DBC, connection);
  return error.empty();
}

// The whole text of a column of the current row, read in pieces; NULL is the empty text.
bool GetCell(SQLHANDLE statement, size_t column, std::string &cell, std::string &error) {
  std::array<char, 4096> piece;
  cell.clear();
  for (;;) {
    SQLLEN length = SQL_NULL_DATA;
    const SQLRETURN result =
        SQLGetData(statement, static_cast<SQLUSMALLINT>(column + 1), SQL_C_CHAR, piece.data(),
                   static_cast<SQLLEN>(piece.size()), &length);
    if (result == SQL_NO_DATA || (SQL_SUCCEEDED(result) && length == SQL_NULL_DATA)) {
      return true;
    }
    if (!SQL_SUCCEEDED(result)) {
      error = Diagnosis(SQL_HANDLE_STMT, statement);
      return false;
    }
    cell += piece.data();
    if (length >= 0 && static_cast<size_t>(length) < piece.size()) {
      return true;
    }
    if (cell.size() > kLongestCell) {
      error = "the database sent a text of more than 16 MiB";
      return false;
    }
  }
}

// Whether two texts are the same number in the digits of a double: the smallest numbers of
// databases are too small for NumberValue, which then keeps fewer digits or none.
bool SameNumber(const std::string &one, const std::string &other) {
  constexpr double kPrecision = 1e-13;
  double first = 0;
  double second = 0;
  const auto read = [](const std::string &text, double &number) {
    return std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc{};
  };
  return read(one, first) && read(other, second) &&
         std::abs(first - second) <= std::abs(first) * kPrecision;
}

// Numbers and dates in the form of formulas; anything else unchanged.
void Normalize(int32_t type, std::string &cell) {
  NumberValue value = {};
  const bool known = type == ORL_TYPE_NUMBER ? NumberFromField({}, cell.c_str(), &value)
                                             : DateFromField({}, cell.c_str(), &value);
  std::string text;
  if (known && CellFromValue(type, &value, text) &&
      (type != ORL_TYPE_NUMBER || SameNumber(cell, text))) {
    cell = text;
  }
}

bool WriteRows(SQLHANDLE statement, const SqlQuery &query, Output &output, std::string &error) {
  std::vector<std::string> cells(query.titles.size());
  SQLRETURN result = SQL_SUCCESS;
  while (SQL_SUCCEEDED(result = SQLFetch(statement))) {
    for (size_t i = 0; i < cells.size(); ++i) {
      if (!GetCell(statement, i, cells[i], error)) {
        return false;
      }
      if (query.types[i] != ORL_TYPE_STRING && !cells[i].empty()) {
        Normalize(query.types[i], cells[i]);
      }
    }
    OutputRow(output, cells);
  }
  error = result == SQL_NO_DATA ? "" : Diagnosis(SQL_HANDLE_STMT, statement);
  return error.empty();
}

}  // namespace

bool OdbcRun(const std::string &source, const SqlQuery &query, OutputFormat format,
             std::string &error) {
  error = "out of memory for ODBC";
  const Handle environment = NewHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, FreeEnvironment);
  SQLSetEnvAttr(environment.get(), SQL_ATTR_ODBC_VERSION,
                reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
  const Handle connection = NewHandle(SQL_HANDLE_DBC, environment.get(), FreeConnection);
  if (connection == nullptr || !Connect(source, connection.get(), error)) {
    return false;
  }
  const Handle statement = NewHandle(SQL_HANDLE_STMT, connection.get(), FreeStatement);
  if (statement == nullptr) {
    error = Diagnosis(SQL_HANDLE_DBC, connection.get());
    return false;
  }
  if (!SQL_SUCCEEDED(SQLExecDirect(statement.get(), Bytes(query.text), SQL_NTS))) {
    error = Diagnosis(SQL_HANDLE_STMT, statement.get());
    return false;
  }
  Output output;
  output.format = format;
  for (size_t i = 0; i < query.titles.size(); ++i) {
    output.columns.push_back({query.titles[i], query.types[i] == ORL_TYPE_NUMBER});
  }
  const bool good = WriteRows(statement.get(), query, output, error);
  OutputEnd(output);
  return good;
}
