// Parses for the engine's own use, beside the entries of orli11.h.
#ifndef ORLI11_LANGUAGE_PARSE_H
#define ORLI11_LANGUAGE_PARSE_H

#include <cstdint>

#include "engine/expressions.h"

// Gives a stored expression `text` and its tree. False, with everything
// as it was, when the text does not parse, refers to the expression itself, or would give another
// data type than the formulas that use it have seen; also when there is no memory.
bool ReparseExpression(EC ec, Expression *expression, const char *text);

// The kind (ExpressionClass) that ORLParseFormula with the same arguments would store, or -1 when
// it would fail; with why, and the data type, where there is room for them. Nothing is stored, and
// no routine of the host is called.
int32_t ClassifyText(EC ec, HEXP exp, const char *text, const char *name,
                     FormulaError *error = nullptr, uint16_t *dataType = nullptr);

#endif
