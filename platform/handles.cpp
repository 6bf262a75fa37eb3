#include "platform/handles.h"

#include <cstring>

#include "platform/owned.h"

// What a handle points to. Its bytes are in a separate block that may move; the capacity beyond
// `size` is for growth.
struct MovableBlock {
  char *bytes;
  uint64_t size;
  int32_t locks;
};

namespace {

constexpr uint64_t kLargestBlock = UINT32_MAX;

// Reserves `size` bytes: grows by half, so that growing step by step moves each byte a bounded
// number of times; `size` alone when there is not enough memory for more.
bool Reserve(MovableBlock *block, uint64_t size) {
  const uint64_t capacity = WRENMemSize(block->bytes);
  if (size <= capacity) {
    return true;
  }
  uint64_t wanted = capacity + capacity / 2;
  wanted = wanted > kLargestBlock ? kLargestBlock : wanted;
  void *bytes = nullptr;
  if (wanted > size) {
    bytes = WRENMemRealloc(block->bytes, static_cast<uint32_t>(wanted));
  }
  if (bytes == nullptr) {
    bytes = WRENMemRealloc(block->bytes, static_cast<uint32_t>(size));
  }
  if (bytes == nullptr) {
    return false;
  }
  block->bytes = static_cast<char *>(bytes);
  return true;
}

}  // namespace

GlobalHandle GlobalAlloc(uint32_t /*flags*/, uint64_t size) {
  if (size > kLargestBlock) {
    return nullptr;
  }
  Owned<MovableBlock> block = Allocate<MovableBlock>();
  OwnedText bytes = Allocate<char>(size);
  if (block == nullptr || bytes == nullptr) {
    return nullptr;
  }
  block->bytes = bytes.release();
  block->size = size;
  return block.release();
}

GlobalHandle GlobalReAlloc(GlobalHandle handle, uint64_t size, uint32_t /*flags*/) {
  if (handle == nullptr || size > kLargestBlock || !Reserve(handle, size)) {
    return nullptr;
  }
  if (size > handle->size) {
    // The bytes may still hold what was there before the block was shrunk.
    std::memset(handle->bytes + handle->size, 0, size - handle->size);
  }
  handle->size = size;
  return handle;
}

void GlobalFree(GlobalHandle handle) {
  if (handle != nullptr) {
    ReplaceBlock(handle->bytes);
    const Owned<MovableBlock> ended(handle);
  }
}

void *GlobalLock(GlobalHandle handle) {
  if (handle == nullptr) {
    return nullptr;
  }
  ++handle->locks;
  return handle->bytes;
}

void GlobalUnlock(GlobalHandle handle) {
  if (handle != nullptr && handle->locks > 0) {
    --handle->locks;
  }
}

uint64_t GlobalSize(GlobalHandle handle) {
  return handle == nullptr ? 0 : handle->size;
}

int32_t TEST_GlobalLockCount(GlobalHandle handle) {
  return handle == nullptr ? 0 : handle->locks;
}
