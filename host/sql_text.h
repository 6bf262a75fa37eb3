// Formulas as SQL.
#ifndef ORLI11_HOST_SQL_TEXT_H
#define ORLI11_HOST_SQL_TEXT_H

#include <string>
#include <string_view>

#include "host/columns.h"

// A name in double quotes, which SQL accepts for any name.
std::string SqlName(std::string_view name);

// The qualifier of columns in a statement: SQLite treats a quoted name that is not a column as a
// string.
constexpr std::string_view kSqlTable = "t";

// Converts the extended text of a formula, with its marks, to SQL: columns by their headers, in
// quotes; "/" as a division with decimals for all types; no minus signs that would begin a comment.
// False with the rest of a sentence about the formula in `problem`, for anything that a database
// would interpret differently.
bool SqlFromExtended(std::string_view extended, const Table &table, std::string &sql,
                     std::string &problem);

#endif
