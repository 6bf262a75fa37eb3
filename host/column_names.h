/* column_names.h - the names of columns in formulas. */
#ifndef ORLI11_HOST_COLUMN_NAMES_H
#define ORLI11_HOST_COLUMN_NAMES_H

#include <orli11.h>

#include <string>
#include <vector>

/* The header as formulas write it: plain, or in quotes; `ec` knows which names need them. Empty
 * when no formula can write it. */
std::string WrittenName(EC ec, const std::string &header);

/* Why no formula can write a header, as the end of a sentence about a column. */
std::string NameProblem(const std::string &header);

/* A name for each header, all different: one that no formula can write, that is too long, empty or
 * taken by a column before it is replaced. A line about each replacement goes to `notes`. */
std::vector<std::string> NamesOfHeaders(EC ec, const std::vector<std::string> &headers,
                                        std::vector<std::string> &notes);

/* Names, in a list with commas, in which a name in quotes may hold commas. */
std::vector<std::string> NamesOfList(const std::string &list);

#endif
