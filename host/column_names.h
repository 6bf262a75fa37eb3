// The names of columns in formulas.
#ifndef ORLI11_HOST_COLUMN_NAMES_H
#define ORLI11_HOST_COLUMN_NAMES_H

#include <orli11.h>

#include <string>
#include <vector>

// The header as formulas write it: plain, or in quotes; `ec` knows which names need them. Empty
// when formulas cannot write it.
std::string WrittenName(EC ec, const std::string &header);

// The reason why formulas cannot write a header, as the end of a sentence about a column.
std::string NameProblem(const std::string &header);

// A unique name for each header: one that formulas cannot write, that is too long, empty or used by
// an earlier column is replaced. Adds a line about each replacement to `notes`.
std::vector<std::string> NamesOfHeaders(EC ec, const std::vector<std::string> &headers,
                                        std::vector<std::string> &notes);

// Names, in a list with commas, in which a name in quotes may hold commas.
std::vector<std::string> NamesOfList(const std::string &list);

#endif
