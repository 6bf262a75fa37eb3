// Heap blocks with a 16-byte header, and a pool of freed small blocks for each thread.
//
//   block     | size (4) | capacity (4) | next (8) | bytes, aligned to 16 ...
//                                                  ^ what the caller holds
//
// Every block is allocated from the C heap, so the pool is only a cache: a freed block of up to
// kPooledSize bytes is added to the list of its capacity in the pool of the freeing thread, and the
// next request for that capacity on this thread reuses it. So a value of 13 bytes costs a few
// nanoseconds instead of a call of the heap. The lists are short, and they are returned to the heap
// when the thread ends. A pool is opened once its release at thread end is registered, which may
// need memory; until then blocks are freed directly. In sanitizer builds there is no pool, so that
// sanitizers see every block.
#include "closed/wren/memory.h"

#include <pthread.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "closed/wren/block.h"
#include "wreni11.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define WREN_POOL 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
#define WREN_POOL 0
#endif
#endif
#ifndef WREN_POOL
#define WREN_POOL 1
#endif

namespace {

constexpr uint32_t kUnitBytes = 16;    // capacities of pooled blocks are multiples of it
constexpr uint32_t kPooledSize = 256;  // the largest block that is pooled
constexpr uint32_t kClasses = kPooledSize / kUnitBytes;
constexpr size_t kSmallBytes = 1024;
constexpr uint32_t kPooledBlocks = 64;  // blocks in one list; 256 * 64 * 17 / 2 bytes at most

struct Pool {
  Block *lists[kClasses];
  uint32_t longest;  // blocks that a list may hold: 0 before the pool opens and at thread end
  bool closed;       // the thread is ending
  int64_t given;     // blocks that the thread has allocated
  int64_t freed;     // blocks that it has freed
  int64_t allowed;   // allocations that may still succeed; negative: all
};

// Plain data without a constructor, at a fixed offset from the thread's base: access needs no guard
// and no call.
constinit thread_local Pool pool = {{}, 0, false, 0, 0, -1};

void *BytesOf(Block *block) {
  return block + 1;
}

Block *BlockOf(void *bytes) {
  return static_cast<Block *>(bytes) - 1;
}

// The list of blocks for `size` bytes; size 0 uses the first one.
uint32_t ClassOf(uint32_t size) {
  return size == 0 ? 0 : (size - 1) / kUnitBytes;
}

bool IsPooled(uint32_t size) {
  return WREN_POOL != 0 && size <= kPooledSize;
}

// Counts one allocation against the limit of the tests; false when it has to fail.
bool MayAllocate() {
  if (pool.allowed < 0) [[likely]] {
    return true;
  }
  if (pool.allowed == 0) {
    return false;
  }
  --pool.allowed;
  return true;
}

// Empties the pool when the thread ends. Blocks that are freed later, by other destructors of the
// thread, find it closed and are freed directly.
void ReleasePool(void * /*pool*/) {
  pool.closed = true;
  pool.longest = 0;
  for (Block *&list : pool.lists) {
    while (list != nullptr) {
      Block *next = list->next;
      std::free(list);
      list = next;
    }
  }
}

// With the key, ReleasePool is called at the end of each thread that stores a value under it.
// Storing reports failure, whereas registering the destructor of a thread_local object ends the
// process when out of memory.
pthread_key_t releaseKey;
bool hasReleaseKey;

__attribute__((constructor(101))) void CreateReleaseKey() {
  hasReleaseKey = pthread_key_create(&releaseKey, &ReleasePool) == 0;
}

// Frees a block that does not fit into its list. The first block of a thread that gets here opens
// the pool for later ones and registers its release.
[[gnu::cold, gnu::noinline]] void FreeUnpooled(Block *block) {
  if (WREN_POOL != 0 && pool.longest == 0 && !pool.closed && hasReleaseKey &&
      pthread_setspecific(releaseKey, &pool) == 0) {
    pool.longest = kPooledBlocks;
  }
  std::free(block);
}

// Zeroes `capacity` bytes, a multiple of kUnitBytes above 0. Most blocks have one unit or a few.
void ClearUnits(void *bytes, uint32_t capacity) {
  auto *unit = static_cast<char *>(bytes);
  if (capacity > 4 * kUnitBytes) {
    std::memset(unit, 0, capacity);
    return;
  }
  std::memset(unit, 0, kUnitBytes);
  for (uint32_t at = kUnitBytes; at < capacity; at += kUnitBytes) {
    std::memset(unit + at, 0, kUnitBytes);
  }
}

// Adds a block to the list of its capacity, or frees it.
void ReleaseBlock(Block *block) {
  if (!IsPooled(block->capacity)) {
    std::free(block);
    return;
  }
  Block *&list = pool.lists[ClassOf(block->capacity)];
  const uint32_t length = list == nullptr ? 1 : list->size + 1;
  if (length > pool.longest) [[unlikely]] {
    FreeUnpooled(block);
    return;
  }
  block->size = length;
  block->next = list;
  list = block;
}

// A zeroed block of `capacity` bytes from the heap, or null.
[[gnu::noinline]] Block *ObtainFromHeap(uint32_t size, uint32_t capacity) {
  const size_t bytes = sizeof(Block) + size_t{capacity};
  // Not calloc for small blocks: the C library's per-thread cache serves only malloc.
  const bool isSmall = bytes <= kSmallBytes;
  auto *block = static_cast<Block *>(isSmall ? std::malloc(bytes) : std::calloc(1, bytes));
  if (block == nullptr) {
    return nullptr;
  }
  block->size = size;
  block->capacity = capacity;
  if (isSmall) {
    std::memset(block + 1, 0, capacity);
  }
  return block;
}

// A zeroed block for `size` bytes, or null. Neither counted nor limited.
Block *ObtainBlock(uint32_t size) {
  if (!IsPooled(size)) {
    return ObtainFromHeap(size, size);
  }
  const uint32_t index = ClassOf(size);
  const uint32_t capacity = (index + 1) * kUnitBytes;
  Block *block = pool.lists[index];
  if (block == nullptr) {
    return ObtainFromHeap(size, capacity);
  }
  pool.lists[index] = block->next;
  ClearUnits(BytesOf(block), capacity);
  block->size = size;
  return block;
}

// A block with the bytes of `old`, of `size` bytes, for sizes that do not fit into `old`.
Block *EnlargeBlock(Block *old, uint32_t size) {
  if (!IsPooled(old->capacity) && !IsPooled(size)) {
    // The heap may extend the block in place.
    auto *block = static_cast<Block *>(std::realloc(old, sizeof(Block) + size_t{size}));
    if (block != nullptr) {
      std::memset(static_cast<char *>(BytesOf(block)) + block->size, 0, size - block->size);
      block->size = size;
      block->capacity = size;
    }
    return block;
  }
  Block *block = ObtainBlock(size);
  if (block != nullptr) {
    std::memcpy(BytesOf(block), BytesOf(old), old->size);
    ReleaseBlock(old);
  }
  return block;
}

// Shrinks a large block when less than half of it is still used. A heap that cannot do so leaves
// the block unchanged.
Block *ShrinkBlock(Block *block, uint32_t size) {
  block->size = size;
  if (IsPooled(block->capacity) || size >= block->capacity / 2) {
    return block;
  }
  const uint32_t capacity = IsPooled(size) ? kPooledSize + 1 : size;  // it stays out of the pool
  auto *smaller = static_cast<Block *>(std::realloc(block, sizeof(Block) + size_t{capacity}));
  if (smaller == nullptr) {
    return block;
  }
  smaller->capacity = capacity;
  return smaller;
}

}  // namespace

void TEST_FailAllocationsAfter(int64_t count) {
  pool.allowed = count;
}

int64_t TEST_LiveBlocks() {
  return pool.given - pool.freed;
}

extern "C" void *WRENMemAlloc(uint32_t size) {
  if (!MayAllocate()) {
    return nullptr;
  }
  Block *block = ObtainBlock(size);
  if (block == nullptr) {
    return nullptr;
  }
  ++pool.given;
  return BytesOf(block);
}

extern "C" void *WRENMemRealloc(void *block, uint32_t size) {
  if (block == nullptr) {
    return WRENMemAlloc(size);
  }
  Block *old = BlockOf(block);
  if (size <= old->size) {
    return BytesOf(ShrinkBlock(old, size));
  }
  if (!MayAllocate()) {
    return nullptr;
  }
  if (size <= old->capacity) {
    std::memset(static_cast<char *>(block) + old->size, 0, size - old->size);
    old->size = size;
    return block;
  }
  Block *larger = EnlargeBlock(old, size);
  return larger == nullptr ? nullptr : BytesOf(larger);
}

extern "C" void WRENMemFree(void *block) {
  if (block != nullptr) {
    ++pool.freed;
    ReleaseBlock(BlockOf(block));
  }
}

extern "C" uint32_t WRENMemSize(const void *block) {
  return block == nullptr ? 0 : BlockSize(block);
}
