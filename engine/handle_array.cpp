#include "engine/handle_array.h"

#include <cassert>
#include <cstring>

namespace {

struct ArrayHeader {
  uint32_t elementSize;
  int32_t count;
};
static_assert(sizeof(ArrayHeader) == 8, "elements follow eight bytes");

ArrayHeader *LockHeader(HandleArray array) {
  assert(array != nullptr);
  return static_cast<ArrayHeader *>(GlobalLock(array));
}

uint8_t *ElementAt(ArrayHeader *header, uint64_t index) {
  return reinterpret_cast<uint8_t *>(header + 1) + index * header->elementSize;
}

uint64_t BlockSize(uint32_t elementSize, uint64_t count) {
  return sizeof(ArrayHeader) + elementSize * count;
}

}  // namespace

HandleArray HandleArrayCreate(int32_t elementSize, int32_t count) {
  if (elementSize < 1 || count < 0 || static_cast<uint32_t>(count) > kMaxTableRows) {
    return nullptr;
  }
  const uint32_t width = static_cast<uint32_t>(elementSize);
  HandleArray array = GlobalAlloc(kMovableZeroed, BlockSize(width, static_cast<uint64_t>(count)));
  if (array == nullptr) {
    return nullptr;
  }
  ArrayHeader *header = LockHeader(array);
  header->elementSize = width;
  header->count = count;
  GlobalUnlock(array);
  return array;
}

void HandleArrayFree(HandleArray array) {
  GlobalFree(array);
}

void *HandleArrayLock(HandleArray array, int32_t index) {
  ArrayHeader *header = LockHeader(array);
  if (index < 0 || index >= header->count) {
    GlobalUnlock(array);
    return nullptr;
  }
  return ElementAt(header, static_cast<uint64_t>(index));
}

void HandleArrayUnlock(HandleArray array) {
  assert(array != nullptr);
  GlobalUnlock(array);
}

uint32_t HandleArrayCount(HandleArray array) {
  const ArrayHeader *header = LockHeader(array);
  const uint32_t count = static_cast<uint32_t>(header->count) & 0xFFFFU;
  const uint32_t width = header->elementSize & 0xFFFFU;
  GlobalUnlock(array);
  return count << 16 | width;
}

HandleArray HandleArrayAppend(HandleArray array) {
  ArrayHeader *header = LockHeader(array);
  const uint32_t width = header->elementSize;
  const uint32_t count = static_cast<uint32_t>(header->count);
  GlobalUnlock(array);
  if (count >= kMaxTableRows) {
    return nullptr;
  }
  HandleArray grown = GlobalReAlloc(array, GlobalSize(array) + width, kMovableZeroed);
  if (grown == nullptr) {
    return nullptr;
  }
  header = LockHeader(grown);
  ++header->count;
  std::memset(ElementAt(header, count), 0, width);
  GlobalUnlock(grown);
  return grown;
}

HandleArray HandleArrayRemove(HandleArray array, int32_t index) {
  if (array == nullptr) {
    return nullptr;
  }
  ArrayHeader *header = LockHeader(array);
  if (header->count == 0) {
    GlobalUnlock(array);
    return array;
  }
  if (index < 0 || index >= header->count) {
    index = header->count - 1;
  }
  --header->count;
  const uint64_t at = static_cast<uint64_t>(index);
  const uint64_t moved = static_cast<uint64_t>(header->count) - at;
  std::memmove(ElementAt(header, at), ElementAt(header, at + 1), moved * header->elementSize);
  const uint64_t size = BlockSize(header->elementSize, static_cast<uint64_t>(header->count));
  GlobalUnlock(array);
  return GlobalReAlloc(array, size, kMovableZeroed);
}

void *HandleArrayPointerAt(HandleArray array, uint32_t index) {
  if (array == nullptr) {
    return nullptr;
  }
  void **element = static_cast<void **>(HandleArrayLock(array, static_cast<int32_t>(index)));
  if (element == nullptr) {
    return nullptr;
  }
  void *pointer = *element;
  HandleArrayUnlock(array);
  return pointer;
}

int32_t HandleArrayFindPointer(HandleArray array, const void *pointer) {
  if (array == nullptr) {
    return -1;
  }
  uint32_t at = HandleArrayRows(array);
  void **elements = static_cast<void **>(HandleArrayLock(array, 0));
  if (elements == nullptr) {
    return -1;
  }
  while (at > 0 && elements[at - 1] != pointer) {
    --at;
  }
  HandleArrayUnlock(array);
  return static_cast<int32_t>(at) - 1;
}

bool HandleArrayAppendPointer(HandleArray *table, void *pointer) {
  HandleArray array =
      *table == nullptr ? HandleArrayCreate(sizeof(void *), 1) : HandleArrayAppend(*table);
  if (array == nullptr) {
    return false;
  }
  *table = array;
  ArrayHeader *header = LockHeader(array);
  assert(header->elementSize == sizeof(void *));
  const auto last = static_cast<uint64_t>(header->count) - 1;
  *reinterpret_cast<void **>(ElementAt(header, last)) = pointer;
  GlobalUnlock(array);
  return true;
}
