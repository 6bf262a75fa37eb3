// Stored formulas as one statement for a database.
#ifndef ORLI11_HOST_SQL_H
#define ORLI11_HOST_SQL_H

#include <string>
#include <vector>

#include "host/commands.h"
#include "host/session.h"

struct SqlQuery {
  std::string text;
  std::vector<std::string> titles;  // of its columns
  std::vector<int32_t> types;       // of their values
};

// The statement for the columns of the session's file. False with a message for formulas that a
// database cannot compute, or would compute differently.
bool SqlBuild(const SqlOptions &options, const Session &session, SqlQuery &query,
              std::string &error);

// Executes the statement on a database and writes its rows in the format of formulas. `source` is a
// data source of ODBC or a connection string. False with a message.
bool OdbcRun(const std::string &source, const SqlQuery &query, OutputFormat format,
             std::string &error);

#endif
