// A parse tree as text, for comparison and for reading at a failure.
#ifndef ORLI11_TESTS_SUPPORT_TREE_TEXT_H
#define ORLI11_TESTS_SUPPORT_TREE_TEXT_H

#include <string>

#include "language/tree.h"

// "+[0 4+1](1[0 0+1] 2[0 4+1])" for 1 + 2: name or sign of the node, and in brackets data type,
// offset and length. A number is its value; strings are in ' ', after ~ when they hold an
// escape; dates in # #; a call ends in its form if any and the place of its parenthesis ("^9"), a
// named formula is F! with the same. Operators show their date unit as ":2".
std::string TreeText(const ExprNode *node);

#endif
