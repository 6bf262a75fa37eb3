// Memory blocks passed between engine and host.
#include "orli11.h"

void *ORLMemAlloc(uint32_t size) {
  return WRENMemAlloc(size);
}

void *ORLMemRealloc(void *block, uint32_t size) {
  return block == nullptr ? nullptr : WRENMemRealloc(block, size);
}

void ORLMemFree(void *block) {
  if (block != nullptr) {
    WRENMemFree(block);
  }
}

uint32_t ORLMemSize(const void *block) {
  return block == nullptr ? 0 : WRENMemSize(block);
}
