/* hints.h - what to write instead of a formula that is wrong. */
#ifndef ORLI11_HOST_HINTS_H
#define ORLI11_HOST_HINTS_H

#include <orli11.h>

#include <string>
#include <vector>

/* The names that a formula could have meant. */
struct KnownNames {
  std::vector<std::string> columns, functions, formulas;
  std::vector<std::string> texts; /* the columns of type String */
};

/* The columns and functions of a context and its formulas, with the names of others that are not
 * yet defined in it. */
KnownNames NamesOf(EC ec, const std::vector<std::string> &formulas);

/* A sentence about what is wrong with a text, without a line end; empty when nothing is known. */
std::string HintFor(const std::string &text, const FormulaError &error, const KnownNames &names);

#endif
