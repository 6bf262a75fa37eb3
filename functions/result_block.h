// The block into which a function routine writes its result.
#ifndef ORLI11_FUNCTIONS_RESULT_BLOCK_H
#define ORLI11_FUNCTIONS_RESULT_BLOCK_H

#include <cstdint>

#include "wreni11.h"

// Gives *result `newSize` bytes, allocating it when it is null. 1, or 0 with *result unchanged.
int32_t FUNResizeResult(void **result, uint32_t newSize);

// The bytes that n characters can take in the active code page: n, 2n or 4n. Saturates.
int32_t FUNCharBytes(int32_t n);

// The result block of a Number or Date, or null when it is too small for one.
NumberValue *NumberResult(void **result, int32_t resultSize);

// Copies the Number or Date that SelectedArgument selects to the result block, with its bytes
// unchanged; false without one.
bool SelectNumber(int32_t resultSize, void **result, void *const *args);

// The result block of a string, of at least `needed` bytes, enlarged only when `needed` is greater
// than `resultSize`. Null, with the block unchanged, when `result` is null, when `needed` does not
// fit into 31 bits or when out of memory; the routine then fails.
char *TextResult(void **result, int32_t resultSize, int64_t needed);

#endif
