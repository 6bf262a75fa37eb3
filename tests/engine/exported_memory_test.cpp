// The libraries in a host that loads them late: each exported routine is the first that a new
// thread calls, and each allocation in it fails once, whoever makes it. The process continues, and
// the result is the usual one or the documented failure.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <thread>

#include "orli11.h"
#include "tests/engine/exported_calls.h"

thread_local int64_t allocationsAllowed = -1;

namespace {

thread_local bool refused;

bool MayAllocate() {
  if (allocationsAllowed < 0) return true;
  if (allocationsAllowed == 0) {
    refused = true;
    errno = ENOMEM;
    return false;
  }
  --allocationsAllowed;
  return true;
}

}  // namespace

// The allocator of the whole process, the loader and the C library's own calls included.
extern "C" {
void *__libc_malloc(size_t size);                      // NOLINT
void *__libc_calloc(size_t count, size_t size);        // NOLINT
void *__libc_realloc(void *block, size_t size);        // NOLINT
void *__libc_memalign(size_t alignment, size_t size);  // NOLINT
__attribute__((visibility("default"))) void *malloc(size_t size) {
  return MayAllocate() ? __libc_malloc(size) : nullptr;
}
__attribute__((visibility("default"))) void *calloc(size_t count, size_t size) {
  return MayAllocate() ? __libc_calloc(count, size) : nullptr;
}
__attribute__((visibility("default"))) void *realloc(void *block, size_t size) {
  return MayAllocate() ? __libc_realloc(block, size) : nullptr;
}
__attribute__((visibility("default"))) void *memalign(size_t alignment, size_t size) {
  return MayAllocate() ? __libc_memalign(alignment, size) : nullptr;
}
__attribute__((visibility("default"))) void *aligned_alloc(size_t alignment, size_t size) {
  return memalign(alignment, size);
}
}

namespace {

struct Outcome {
  int64_t result;
  bool refused;
};

// One call on a new thread of a new process, with the n-th allocation failing. Returns how the
// process ended: empty for a result, otherwise the reason.
std::string CallInProcess(const Routine &call, int64_t n, Outcome *outcome) {
  static auto *const shared = SharedWithChildren<Outcome>(1);
  const bool failedBefore = testing::Test::HasFailure();
  const pid_t child = fork();
  if (child == 0) {
    std::thread([&] {
      allocationsAllowed = n;
      const int64_t result = call();
      allocationsAllowed = -1;
      *shared = {result, refused};
    }).join();
    _exit(testing::Test::HasFailure() && !failedBefore ? 1 : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  *outcome = *shared;
  return status == 0           ? ""
         : WIFSIGNALED(status) ? "ended by signal " + std::to_string(WTERMSIG(status))
                               : "wrong in itself";
}

TEST(ExportedMemory, NoAllocationThatFailsEndsTheProcess) {
  for (const char *variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) unsetenv(variable);
  ASSERT_NO_FATAL_FAILURE(Prepare());
  std::fill_n(Called(), Names().size(), false);
  const auto calls = AllCalls();
  for (const auto &[name, call] : calls) {
    Outcome usual = {};
    ASSERT_EQ(CallInProcess(call, -1, &usual), "") << name;
    Outcome outcome = {0, true};
    for (int64_t n = 0; outcome.refused && n < 1000; ++n) {
      const std::string ended = CallInProcess(call, n, &outcome);
      EXPECT_EQ(ended, "") << name << ", allocation " << n;
      EXPECT_TRUE(outcome.result == usual.result || outcome.result == 0 ||
                  outcome.result == -ORL_ERR_MEMORY)
          << name << ", allocation " << n << ": " << outcome.result << " for " << usual.result;
    }
    EXPECT_FALSE(outcome.refused) << name << " never succeeds";
  }
  for (size_t i = 0; i < Names().size(); ++i) {
    const bool headless = Names()[i].compare(0, 11, "ORLHeadless") == 0;
    EXPECT_TRUE(Called()[i] || headless) << Names()[i] << " was not called";
  }
}

}  // namespace
