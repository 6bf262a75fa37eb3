// Movable memory: blocks with a handle, and with an address only while they are locked.
#ifndef ORLI11_PLATFORM_HANDLES_H
#define ORLI11_PLATFORM_HANDLES_H

#include <cstdint>

struct MovableBlock;
using GlobalHandle = MovableBlock *;

// Movable, with bytes that come new zeroed; the only way in which blocks are asked for here.
constexpr uint32_t kMovableZeroed = 66;

// A block of `size` zeroed bytes without a lock, or null when out of memory.
GlobalHandle GlobalAlloc(uint32_t flags, uint64_t size);

// Resizes a block; bytes that come new are zero. The handle stays the same. Null when there is no
// memory, with the block as it was. A shrink always succeeds. Growth one step at a time costs
// amortised constant time.
GlobalHandle GlobalReAlloc(GlobalHandle handle, uint64_t size, uint32_t flags);

void GlobalFree(GlobalHandle handle);

// Locks nest; the address is valid until the last lock is undone.
void *GlobalLock(GlobalHandle handle);
// Undoes one lock; without a lock it has no effect.
void GlobalUnlock(GlobalHandle handle);

// The size that the block was last given, in bytes.
uint64_t GlobalSize(GlobalHandle handle);

// Locks held, for the tests.
int32_t TEST_GlobalLockCount(GlobalHandle handle);

#endif
