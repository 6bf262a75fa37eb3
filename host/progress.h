/* progress.h - a line on the terminal that tells how far a long run is. */
#ifndef ORLI11_HOST_PROGRESS_H
#define ORLI11_HOST_PROGRESS_H

#include <chrono>
#include <cstdint>

struct Progress {
  bool on = false;    /* standard error is a terminal, and the output goes elsewhere */
  bool shown = false; /* a line stands there now */
  std::chrono::steady_clock::time_point start, last;
};

void ProgressStart(Progress &progress);
/* After each row; `total` is 0 where it is not known. */
void ProgressStep(Progress &progress, const char *what, int64_t rows, int64_t total);
/* Takes the line away. */
void ProgressEnd(Progress &progress);
/* Tells on standard error the rows computed, the seconds since the start and the rows per second.
 */
void ProgressReport(const Progress &progress, int64_t rows);

#endif
