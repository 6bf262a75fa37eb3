/* sql_text.h - formulas in the words of a database. */
#ifndef ORLI11_HOST_SQL_TEXT_H
#define ORLI11_HOST_SQL_TEXT_H

#include <string>
#include <string_view>

#include "host/columns.h"

/* A name in double quotes, as SQL takes any name. */
std::string SqlName(std::string_view name);

/* What columns belong to in a statement: SQLite takes a quoted name that is no column for a text.
 */
constexpr std::string_view kSqlTable = "t";

/* Turns the extended text of a formula, with its marks, into SQL: columns by their headers, in
 * quotes; "/" as a division with decimals, whatever the types; no minus signs that would begin a
 * comment. False with the rest of a sentence about the formula in `problem`, for what would mean
 * something else to a database. */
bool SqlFromExtended(std::string_view extended, const Table &table, std::string &sql,
                     std::string &problem);

#endif
