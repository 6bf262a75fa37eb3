// Handle arrays: the one growable table of the engine.
#ifndef ORLI11_ENGINE_HANDLE_ARRAY_H
#define ORLI11_ENGINE_HANDLE_ARRAY_H

#include <cstdint>

#include "platform/handles.h"

// A handle to a block that holds the element size, the element count and the elements. Null means
// that the table does not exist yet; count 0 is an empty table as well.
using HandleArray = GlobalHandle;

// Counts are returned in 16 bits; appending beyond this fails.
constexpr uint32_t kMaxTableRows = 65535;

// A table of `count` zeroed elements, or null for an element size below 1, a negative count, more
// than kMaxTableRows elements, or when out of memory.
HandleArray HandleArrayCreate(int32_t elementSize, int32_t count);

// Frees the block; what the elements point to is the caller's. Null is accepted.
void HandleArrayFree(HandleArray array);

// All routines below require a non-null handle unless their comment says otherwise.

// Locks the block and returns the address of an element; null, with no lock held, when the index is
// not in the table. Every result but null needs one HandleArrayUnlock.
void *HandleArrayLock(HandleArray array, int32_t index);
void HandleArrayUnlock(HandleArray array);

// The count in the upper 16 bits, the element size in the lower 16.
uint32_t HandleArrayCount(HandleArray array);

// Adds a zeroed element at the end and returns the handle to use from then on; null when the table
// is full or when out of memory, with the table unchanged.
HandleArray HandleArrayAppend(HandleArray array);

// Removes an element and returns the same handle; an index outside the table removes the last
// element. Null for a null handle.
HandleArray HandleArrayRemove(HandleArray array, int32_t index);

// The number of elements; 0 for a null handle.
inline uint32_t HandleArrayRows(HandleArray array) {
  return array == nullptr ? 0 : HandleArrayCount(array) >> 16;
}

// The pointer at an index of a table of pointers, or null.
void *HandleArrayPointerAt(HandleArray array, uint32_t index);

// The index of a pointer in a table of pointers, or -1. Searches from the end, where tables grow
// and shrink most.
int32_t HandleArrayFindPointer(HandleArray array, const void *pointer);

// Appends a pointer to the table in `*table`, creating it when it is null. False when the table is
// full or when out of memory, with the table unchanged.
bool HandleArrayAppendPointer(HandleArray *table, void *pointer);

#endif
