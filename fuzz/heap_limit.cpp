// The heap of the fuzz targets has no block above a mebibyte: a formula may request gigabytes;
// running out of memory is worth testing, while filling them only takes time.
#include <cstddef>

namespace {
constexpr size_t kLargestBlock = 1 << 20;
}

extern "C" {
// The linker redirects all calls of calloc and realloc here, and __real_ to the heap's own.
// NOLINTBEGIN(bugprone-reserved-identifier)
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *block, size_t size);

void *__wrap_calloc(size_t count, size_t size) {
  return size != 0 && count > kLargestBlock / size ? nullptr : __real_calloc(count, size);
}

void *__wrap_realloc(void *block, size_t size) {
  return size > kLargestBlock ? nullptr : __real_realloc(block, size);
}
// NOLINTEND(bugprone-reserved-identifier)
}
