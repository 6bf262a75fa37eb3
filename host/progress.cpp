#include "host/progress.h"

#include <unistd.h>

#include <cinttypes>
#include <cstdio>

namespace {

// The line is written at most five times a second.
constexpr std::chrono::milliseconds kTimeBetween(200);

}  // namespace

void ProgressStart(Progress &progress) {
  progress.on = isatty(STDERR_FILENO) == 1 && isatty(STDOUT_FILENO) == 0;
  progress.start = std::chrono::steady_clock::now();
  progress.last = progress.start;
}

void ProgressStep(Progress &progress, const char *what, int64_t rows, int64_t total) {
  if (!progress.on) {
    return;
  }
  const auto now = std::chrono::steady_clock::now();
  if (now - progress.last < kTimeBetween) {
    return;
  }
  progress.last = now;
  progress.shown = true;
  if (total > 0) {
    std::fprintf(stderr, "\r%s: row %" PRId64 " of %" PRId64 " (%" PRId64 " %%)", what, rows, total,
                 rows * 100 / total);
  } else {
    std::fprintf(stderr, "\r%s: row %" PRId64, what, rows);
  }
}

void ProgressEnd(Progress &progress) {
  if (progress.shown) {
    std::fputs("\r\033[K", stderr);
  }
  progress.shown = false;
}

void ProgressReport(const Progress &progress, int64_t rows) {
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - progress.start;
  const double seconds = time.count();
  std::fprintf(stderr, "%" PRId64 " %s in %.3f s", rows, rows == 1 ? "row" : "rows", seconds);
  if (seconds > 0) {
    std::fprintf(stderr, ", %.0f rows per second", static_cast<double>(rows) / seconds);
  }
  std::fputc('\n', stderr);
}
