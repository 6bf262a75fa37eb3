// The block into which a function routine writes its result.
#ifndef ORLI11_FUNCTIONS_RESULT_BLOCK_H
#define ORLI11_FUNCTIONS_RESULT_BLOCK_H

#include <cstdint>

// Gives *result `newSize` bytes, allocating it when it is null. 1, or 0 with *result as it was.
int32_t FUNResizeResult(void **result, uint32_t newSize);

// The bytes that n characters can take in the active code page: n, 2n or 4n.
int32_t FUNCharBytes(int32_t n);

#endif
