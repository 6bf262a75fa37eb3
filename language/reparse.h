// A stored expression whose text has changed by more than its own entry.
#ifndef ORLI11_LANGUAGE_REPARSE_H
#define ORLI11_LANGUAGE_REPARSE_H

#include "engine/expressions.h"

// Gives a stored expression the tree of `text`, which is to become its text. False, with everything
// as it was, when the text does not parse, refers to the expression itself, or would give another
// data type than the formulas that use it have seen; also when there is no memory. The error of the
// calling thread's last parse stays.
bool ReparseExpression(EC ec, Expression *expression, const char *text);

#endif
