// The string table of the module.
#ifndef ORLI11_PLATFORM_STRINGS_H
#define ORLI11_PLATFORM_STRINGS_H

#include <cstdint>

// Copies row `id` into `buffer` of `size` bytes, truncated to fit and terminated. Returns the bytes
// copied without the terminator; 0, with the buffer untouched, when there is no such row.
int32_t LoadStringA(const void *module, uint32_t id, char *buffer, int32_t size);

#endif
