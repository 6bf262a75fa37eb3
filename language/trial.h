// What a text is, or would be.
#ifndef ORLI11_LANGUAGE_TRIAL_H
#define ORLI11_LANGUAGE_TRIAL_H

#include "engine/expressions.h"

// The kind of a text by the root of its tree: 0 formula, 1 range, 2 set (ExpressionClass).
int32_t KindOfTree(const ExprNode *root);

// The kind that ORLParseFormula with the same arguments would store, or -1 when it would fail.
// Nothing is stored, and the host hears nothing.
int32_t TrialKind(EC ec, HEXP exp, const char *text, const char *name);

#endif
