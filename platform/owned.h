// Owners of blocks of WRENMemAlloc. A routine that allocates a block keeps it in an owner until a
// record or the caller takes ownership; records are plain and hold addresses, which their own
// deleters free.
#ifndef ORLI11_PLATFORM_OWNED_H
#define ORLI11_PLATFORM_OWNED_H

#include <utility>

#include "closed/wren/owned.h"  // IWYU pragma: export

// A terminated string in a block.
using OwnedText = Owned<char>;

// A block with content defined by the host.
using OwnedBlock = Owned<void>;

// A copy of a string; null when out of memory.
OwnedText CopyText(const char *text);

// Replaces the block that a field owns; the former one is freed.
template <class T>
void ReplaceBlock(T *&field, Owned<T> block = nullptr) {
  const Owned<T> old(std::exchange(field, block.release()));
}

#endif
