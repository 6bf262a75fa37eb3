// Calls of every exported routine of the loaded libraries, with the data that they need.
#ifndef ORLI11_TESTS_ENGINE_EXPORTED_CALLS_H
#define ORLI11_TESTS_ENGINE_EXPORTED_CALLS_H

#include <sys/mman.h>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

// Allocations that still succeed on this thread; negative: all.
extern thread_local int64_t allocationsAllowed;

using Routine = std::function<int64_t()>;

// Zeroed memory that child processes write to as well.
template <class T>
T *SharedWithChildren(size_t count) {
  return static_cast<T *>(
      mmap(nullptr, count * sizeof(T), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
}

// The names in the export lists of the libraries.
const std::vector<std::string> &Names();
// For each of them whether some call has looked it up.
bool *Called();
// Prepares the data of the calls. Fails the test if the libraries cannot do so.
void Prepare();
// The calls by name. Each returns 0 or -ORL_ERR_MEMORY for a failure.
std::vector<std::pair<std::string, Routine>> AllCalls();

#endif
