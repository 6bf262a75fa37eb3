// Parse routines for the engine's own use, besides the entries of orli11.h.
#ifndef ORLI11_LANGUAGE_PARSE_H
#define ORLI11_LANGUAGE_PARSE_H

#include <cstdint>

#include "engine/expressions.h"

// Replaces the text and tree of a stored expression. False, with everything unchanged, when the
// text does not parse, refers to the expression itself, or has another data type than the formulas
// that use the expression were parsed with; also when out of memory.
bool ReparseExpression(EC ec, Expression *expression, const char *text);

// The kind (ExpressionClass) that ORLParseFormula with the same arguments would store, or -1 when
// it would fail; with the error and the data type in the out-parameters that are not null. Nothing
// is stored, and no host routine is called.
int32_t ClassifyText(EC ec, HEXP exp, const char *text, const char *name,
                     FormulaError *error = nullptr, uint16_t *dataType = nullptr);

#endif
