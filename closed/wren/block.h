// The header of a heap block, for code that reads the sizes of many blocks.
#ifndef ORLI11_CLOSED_WREN_BLOCK_H
#define ORLI11_CLOSED_WREN_BLOCK_H

#include <cassert>
#include <cstddef>
#include <cstdint>

struct Block {
  uint32_t size;      // the requested size; in a pool the length of its list
  uint32_t capacity;  // of the bytes after the header
  Block *next;        // in a list of the pool
};
static_assert(sizeof(Block) == 16 && alignof(std::max_align_t) == 16);

// WRENMemSize of a block that is not null.
inline uint32_t BlockSize(const void *bytes) {
  assert(bytes != nullptr);
  return (static_cast<const Block *>(bytes) - 1)->size;
}

#endif
