// A stack whose first elements need no memory.
#ifndef ORLI11_EVALUATION_GROWING_STACK_H
#define ORLI11_EVALUATION_GROWING_STACK_H

#include <cassert>
#include <cstdint>
#include <cstring>
#include <utility>

#include "platform/owned.h"

template <class T, uint32_t N>
struct GrowingStack {
  T *items;
  uint32_t count;
  uint32_t capacity;
  T first[N];
  Owned<T> grown;  // the elements once `first` is too small

  GrowingStack() : items(first), count(0), capacity(N) {}
};

// Grows to at least `wanted` elements; false when out of memory. The elements may move.
template <class T, uint32_t N>
[[gnu::noinline]] bool StackGrow(GrowingStack<T, N> &stack, uint64_t wanted) {
  assert(wanted > stack.capacity);
  const uint64_t doubled = uint64_t{stack.capacity} * 2;
  const uint64_t capacity = doubled > wanted ? doubled : wanted;
  Owned<T> grown = Allocate<T>(capacity);
  if (grown == nullptr) {
    return false;
  }
  std::memcpy(static_cast<void *>(grown.get()), stack.items, stack.count * sizeof(T));
  stack.grown = std::move(grown);
  stack.items = stack.grown.get();
  stack.capacity = static_cast<uint32_t>(capacity);
  return true;
}

// Adds an uninitialised element; null when out of memory.
template <class T, uint32_t N>
T *StackPush(GrowingStack<T, N> &stack) {
  if (stack.count == stack.capacity && !StackGrow(stack, uint64_t{stack.count} + 1)) {
    return nullptr;
  }
  return &stack.items[stack.count++];
}

#endif
