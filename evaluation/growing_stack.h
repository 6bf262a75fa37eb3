// A stack whose first elements need no memory.
#ifndef ORLI11_EVALUATION_GROWING_STACK_H
#define ORLI11_EVALUATION_GROWING_STACK_H

#include <cstdint>
#include <cstring>

#include "wreni11.h"

template <class T, uint32_t N>
struct GrowingStack {
  T *items;
  uint32_t count;
  uint32_t room;
  T first[N];
};

template <class T, uint32_t N>
void StackBegin(GrowingStack<T, N> &stack) {
  stack.items = stack.first;
  stack.count = 0;
  stack.room = N;
}

// Makes room for `wanted` elements in all; false when out of memory. The elements move.
template <class T, uint32_t N>
[[gnu::noinline]] bool StackGrow(GrowingStack<T, N> &stack, uint64_t wanted) {
  const uint64_t doubled = uint64_t{stack.room} * 2;
  const uint64_t room = doubled > wanted ? doubled : wanted;
  const uint64_t size = room * sizeof(T);
  void *grown = size > UINT32_MAX ? nullptr : WRENMemAlloc(static_cast<uint32_t>(size));
  if (grown == nullptr) {
    return false;
  }
  std::memcpy(grown, static_cast<const void *>(stack.items), stack.count * sizeof(T));
  if (stack.items != stack.first) {
    WRENMemFree(stack.items);
  }
  stack.items = static_cast<T *>(grown);
  stack.room = static_cast<uint32_t>(room);
  return true;
}

// Adds an element, which holds nothing yet; null when out of memory.
template <class T, uint32_t N>
T *StackPush(GrowingStack<T, N> &stack) {
  if (stack.count == stack.room && !StackGrow(stack, uint64_t{stack.count} + 1)) {
    return nullptr;
  }
  return &stack.items[stack.count++];
}

template <class T, uint32_t N>
void StackEnd(GrowingStack<T, N> &stack) {
  if (stack.items != stack.first) {
    WRENMemFree(stack.items);
  }
}

#endif
