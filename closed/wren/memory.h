// Test hooks of the memory routines.
#ifndef ORLI11_CLOSED_WREN_MEMORY_H
#define ORLI11_CLOSED_WREN_MEMORY_H

#include <cstdint>

// Makes every allocation of the calling thread after the next `count` ones fail until it is called
// again; a negative count lets all succeed. An enlargement counts as an allocation.
void TEST_FailAllocationsAfter(int64_t count);

// Blocks that the calling thread has allocated minus those it has freed.
int64_t TEST_LiveBlocks();

#endif
