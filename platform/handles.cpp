#include "platform/handles.h"

#include <cstring>

#include "wreni11.h"

// The block behind a handle. Its bytes stand in a block of their own that may move; what that block
// has beyond `size` is room to grow.
struct MovableBlock {
  void *bytes;
  uint64_t size;
  int32_t locks;
};

namespace {

constexpr uint64_t kLargestBlock = UINT32_MAX;

// Makes room for `size` bytes: for half as much again as there was, so that growing step by step
// moves each byte a bounded number of times; for `size` alone when there is no memory for more.
bool MakeRoom(MovableBlock *block, uint64_t size) {
  const uint64_t room = WRENMemSize(block->bytes);
  if (size <= room) {
    return true;
  }
  uint64_t wanted = room + room / 2;
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
  block->bytes = bytes;
  return true;
}

}  // namespace

GlobalHandle GlobalAlloc(uint32_t /*flags*/, uint64_t size) {
  if (size > kLargestBlock) {
    return nullptr;
  }
  auto *block = static_cast<MovableBlock *>(WRENMemAlloc(sizeof(MovableBlock)));
  if (block == nullptr) {
    return nullptr;
  }
  block->bytes = WRENMemAlloc(static_cast<uint32_t>(size));
  if (block->bytes == nullptr) {
    WRENMemFree(block);
    return nullptr;
  }
  block->size = size;
  return block;
}

GlobalHandle GlobalReAlloc(GlobalHandle handle, uint64_t size, uint32_t /*flags*/) {
  if (handle == nullptr || size > kLargestBlock || !MakeRoom(handle, size)) {
    return nullptr;
  }
  if (size > handle->size) {
    // The room may hold what stood there before the block was made smaller.
    std::memset(static_cast<char *>(handle->bytes) + handle->size, 0, size - handle->size);
  }
  handle->size = size;
  return handle;
}

void GlobalFree(GlobalHandle handle) {
  if (handle != nullptr) {
    WRENMemFree(handle->bytes);
    WRENMemFree(handle);
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
