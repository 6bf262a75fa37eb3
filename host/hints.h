// What to write instead of an invalid formula.
#ifndef ORLI11_HOST_HINTS_H
#define ORLI11_HOST_HINTS_H

#include <orli11.h>

#include <string>
#include <vector>

// The names that a formula could have meant.
struct KnownNames {
  std::vector<std::string> columns, functions, formulas;
  std::vector<std::string> texts;  // the columns of type String
};

// The columns, functions and formulas of a context, and the names of others that are not yet
// defined in it.
KnownNames NamesOf(EC ec, const std::vector<std::string> &formulas);

// A sentence about the error in a text, without a line end; empty when there is no hint.
std::string HintFor(const std::string &text, const FormulaError &error, const KnownNames &names);

#endif
