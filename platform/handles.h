// Movable memory: blocks with a handle, and with an address only while they are locked.
#ifndef ORLI11_PLATFORM_HANDLES_H
#define ORLI11_PLATFORM_HANDLES_H

#include <cstdint>

struct MovableBlock;
using GlobalHandle = MovableBlock *;

// The flags of a movable block whose new bytes are zero; no others are used here.
constexpr uint32_t kMovableZeroed = 66;

// A block of `size` zeroed bytes without a lock, or null when out of memory.
GlobalHandle GlobalAlloc(uint32_t flags, uint64_t size);

// Resizes a block; new bytes are zero. The handle stays the same. Null when out of memory, with the
// block unchanged. Shrinking always succeeds. Growing step by step takes amortised constant time.
GlobalHandle GlobalReAlloc(GlobalHandle handle, uint64_t size, uint32_t flags);

void GlobalFree(GlobalHandle handle);

// Locks nest; the address is valid until the last lock is released.
void *GlobalLock(GlobalHandle handle);
// Releases one lock; without a lock it has no effect.
void GlobalUnlock(GlobalHandle handle);

// The block's size in bytes, as last requested.
uint64_t GlobalSize(GlobalHandle handle);

// Number of locks held, for tests.
int32_t TEST_GlobalLockCount(GlobalHandle handle);

#endif
