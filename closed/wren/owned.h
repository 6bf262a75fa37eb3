// Owners of blocks of WRENMemAlloc.
#ifndef ORLI11_CLOSED_WREN_OWNED_H
#define ORLI11_CLOSED_WREN_OWNED_H

#include <cstdint>
#include <memory>
#include <type_traits>

#include "wreni11.h"

struct FreeBlock {
  template <class T>
  void operator()(T *block) const {
    static_assert(std::is_void_v<T> || std::is_trivially_destructible_v<T>,
                  "a block is freed without a destructor");
    WRENMemFree(const_cast<std::remove_const_t<T> *>(block));
  }
};

// A block that holds one T or several. Records that own further blocks have deleters of their own.
template <class T>
using Owned = std::unique_ptr<T, FreeBlock>;

// A zeroed block for `count` of T and `extra` bytes after them; null when out of memory, and for
// more than the largest block.
template <class T>
Owned<T> Allocate(uint64_t count = 1, uint64_t extra = 0) {
  constexpr uint64_t kSize = sizeof(T);  // NOLINT(bugprone-sizeof-expression): T may be a pointer
  if (extra > UINT32_MAX || count > (UINT32_MAX - extra) / kSize) {
    return nullptr;
  }
  return Owned<T>(static_cast<T *>(WRENMemAlloc(static_cast<uint32_t>(count * kSize + extra))));
}

#endif
