// Contexts of the engine to measure in.
#ifndef ORLI11_BENCH_CONTEXTS_H
#define ORLI11_BENCH_CONTEXTS_H

#include <orli11.h>

#include <string>

// The number of rows of each kind in a context. The input items are Item0, Item1 and so on, all
// Numbers of value 12.5; the functions F0, F1 ... return their one Number; the formulas Sum0, Sum1
// ... add two items.
struct ContextSize {
  int items, functions, formulas;
};

// A new context of that size, with the built-in functions and the Number items Amount (12.5) and
// Tax (0.07) in addition. Ends the program with a message on failure.
EC MakeContext(const ContextSize &size);

// Parses a formula that must be valid.
HEXP MustParse(EC ec, const std::string &text, const char *name);

// The value routines of Amount and Tax.
int32_t AmountValue(EC ec, HEXP exp, int32_t size, void **value, const char *name);
int32_t TaxValue(EC ec, HEXP exp, int32_t size, void **value, const char *name);

void AddItem(EC ec, const std::string &name, int16_t type, OrlValueProc routine);

#endif
