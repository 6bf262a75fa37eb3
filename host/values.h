// The engine's values as text, and their order.
#ifndef ORLI11_HOST_VALUES_H
#define ORLI11_HOST_VALUES_H

#include <orli11.h>

#include <memory>
#include <string>

// A block of the engine, freed with its owner.
struct BlockEnd {
  void operator()(void *block) const { ORLMemFree(block); }
};
using Block = std::unique_ptr<void, BlockEnd>;

// A new block of that size. Throws std::bad_alloc.
Block NewBlock(uint32_t size);

// Computes an expression into the block, which the engine enlarges for long strings. False when it
// has no value.
bool Evaluate(EC ec, HEXP exp, Block &block);

// The text of a computed value of type Number, Date or String: plain decimal digits (with an
// exponent where they are more than 99), an ISO date with the time when it is not midnight, the
// string itself. With `decimals` of 0 or more numbers have that many decimals. Null values yield
// the empty text. False when the engine cannot write the value.
bool CellFromValue(int32_t type, const void *value, std::string &cell, int decimals = -1);

// The order of two numbers or dates: below 0, 0 or above 0. Null comes first.
int CompareValues(int32_t type, const NumberValue &left, const NumberValue &right);
// The order of two strings, as by the function StrCompare.
int CompareTexts(const char *left, const char *right);

#endif
