// A line on the terminal with the progress of a long run.
#ifndef ORLI11_HOST_PROGRESS_H
#define ORLI11_HOST_PROGRESS_H

#include <chrono>
#include <cstdint>

struct Progress {
  bool on = false;     // standard error is a terminal, and the output is not
  bool shown = false;  // a line is shown
  std::chrono::steady_clock::time_point start, last;
};

void ProgressStart(Progress &progress);
// After each block of rows; `total` is 0 where it is not known.
void ProgressStep(Progress &progress, const char *what, int64_t rows, int64_t total);
// Removes the line.
void ProgressEnd(Progress &progress);
// Reports on standard error the rows computed, the seconds since the start and the rows per second.
void ProgressReport(const Progress &progress, int64_t rows);

#endif
