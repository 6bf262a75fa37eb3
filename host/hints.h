// What to write instead of an invalid formula.
#ifndef ORLI11_HOST_HINTS_H
#define ORLI11_HOST_HINTS_H

#include <orli11.h>

#include <string>

#include "host/invalid_formula.h"

// A sentence about the error in a text, without a line end; empty when there is no hint.
std::string HintFor(const std::string &text, const FormulaError &error, const KnownNames &names);

#endif
