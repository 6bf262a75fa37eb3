// Heap blocks with a 16-byte header, and a pool of freed small blocks for each thread.
//
//   block     | size (4) | capacity (4) | next (8) | bytes, aligned to 16 ...
//                                                  ^ what the caller holds
//
// Every block comes from the C heap by itself, so the pool is no more than a cache: a block of up
// to POOLED_SIZE bytes that is freed goes to the list of its capacity in the pool of the freeing
// thread, and the next request for that capacity on this thread takes it from there. A value of 13
// bytes so costs a few nanoseconds instead of a call of the heap. The lists are short, and they go
// back to the heap when the thread ends. Sanitizers see every block, without a pool.
#include "closed/wren/memory.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

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

struct Block {
  uint32_t size;      // what the caller asked for
  uint32_t capacity;  // what is there behind the header
  Block *next;        // in a list of the pool
};
static_assert(sizeof(Block) == 16 && alignof(std::max_align_t) == 16);

constexpr uint32_t UNIT = 16;          // capacities of pooled blocks are multiples of it
constexpr uint32_t POOLED_SIZE = 256;  // the largest block that is pooled
constexpr uint32_t CLASSES = POOLED_SIZE / UNIT;
constexpr uint16_t POOLED_BLOCKS = 64;  // blocks in one list; 256 * 64 * 17 / 2 bytes at most

enum class PoolState : uint8_t { New, Open, Closed };

struct Pool {
  Block *lists[CLASSES];
  uint16_t counts[CLASSES];
  PoolState state;
  int64_t liveBlocks;
  int64_t allowed;  // allocations that may still succeed; negative: all
};

// Plain data without a constructor, at a fixed offset from the thread's base: no guard and no call
// stands between a routine and its pool.
constinit thread_local Pool pool
    __attribute__((tls_model("initial-exec"))) = {{}, {}, PoolState::New, 0, -1};

void *BytesOf(Block *block) {
  return block + 1;
}

Block *BlockOf(void *bytes) {
  return static_cast<Block *>(bytes) - 1;
}

// The list of blocks for `size` bytes; size 0 shares the first one.
uint32_t ClassOf(uint32_t size) {
  return size == 0 ? 0 : (size - 1) / UNIT;
}

bool IsPooled(uint32_t size) {
  return WREN_POOL != 0 && size <= POOLED_SIZE;
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
// thread, find it closed and go to the heap at once.
struct PoolRelease {
  bool armed = false;
  ~PoolRelease() {
    pool.state = PoolState::Closed;
    for (Block *&list : pool.lists) {
      while (list != nullptr) {
        Block *next = list->next;
        std::free(list);
        list = next;
      }
    }
  }
};

// True when freed blocks may be kept; the first question of a thread arranges for their release.
bool OpenPool() {
  static thread_local PoolRelease release;
  if (pool.state == PoolState::New) {
    release.armed = true;
    pool.state = PoolState::Open;
  }
  return pool.state == PoolState::Open;
}

// Takes a block for `size` bytes from the pool, its bytes not yet zeroed; null when there is none.
Block *TakePooled(uint32_t size) {
  const uint32_t index = ClassOf(size);
  Block *block = pool.lists[index];
  if (block == nullptr) {
    return nullptr;
  }
  pool.lists[index] = block->next;
  --pool.counts[index];
  return block;
}

// Puts a block of a pooled capacity into the pool; false when its list is full.
bool KeepPooled(Block *block) {
  const uint32_t index = ClassOf(block->capacity);
  if (pool.counts[index] == POOLED_BLOCKS || (pool.state != PoolState::Open && !OpenPool())) {
    return false;
  }
  block->next = pool.lists[index];
  pool.lists[index] = block;
  ++pool.counts[index];
  return true;
}

void ReleaseBlock(Block *block) {
  if (!IsPooled(block->capacity) || !KeepPooled(block)) {
    std::free(block);
  }
}

// A zeroed block for `size` bytes, or null. Neither counted nor limited.
Block *ObtainBlock(uint32_t size) {
  uint32_t capacity = size;
  if (IsPooled(size)) {
    capacity = (ClassOf(size) + 1) * UNIT;
    if (Block *block = TakePooled(size)) {
      if (capacity == UNIT) {  // the size of a value, by far the most frequent
        std::memset(BytesOf(block), 0, UNIT);
      } else {
        std::memset(BytesOf(block), 0, capacity);
      }
      block->size = size;
      return block;
    }
  }
  auto *block = static_cast<Block *>(std::calloc(1, sizeof(Block) + size_t{capacity}));
  if (block != nullptr) {
    block->size = size;
    block->capacity = capacity;
  }
  return block;
}

// A block with the bytes of `old`, of `size` bytes, for sizes that `old` has no room for.
Block *EnlargeBlock(Block *old, uint32_t size) {
  if (!IsPooled(old->capacity) && !IsPooled(size)) {
    // The heap may extend the block where it stands.
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

// Gives memory of a large block back when less than half of it is still wanted. A heap that cannot
// do so leaves the block as it is.
Block *ShrinkBlock(Block *block, uint32_t size) {
  block->size = size;
  if (IsPooled(block->capacity) || size >= block->capacity / 2) {
    return block;
  }
  const uint32_t capacity = IsPooled(size) ? POOLED_SIZE + 1 : size;  // it stays out of the pool
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
  return pool.liveBlocks;
}

extern "C" void *WRENMemAlloc(uint32_t size) {
  if (!MayAllocate()) {
    return nullptr;
  }
  Block *block = ObtainBlock(size);
  if (block == nullptr) {
    return nullptr;
  }
  ++pool.liveBlocks;
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
    --pool.liveBlocks;
    ReleaseBlock(BlockOf(block));
  }
}

extern "C" uint32_t WRENMemSize(const void *block) {
  return block == nullptr ? 0 : (static_cast<const Block *>(block) - 1)->size;
}
