// Blocks of rows: read in order, computed by any thread, consumed in order.
#ifndef ORLI11_HOST_BLOCK_RING_H
#define ORLI11_HOST_BLOCK_RING_H

#include <cstddef>
#include <functional>
#include <string>

#include "host/csv_file.h"

// What is done with the blocks of a file. Each is in one of a few slots, which are used again.
struct BlockWork {
  // Computes a split block. No two threads have the same worker number.
  std::function<void(size_t worker, size_t slot, CsvBlock &block)> compute;
  // Consumes the results of a block, in the order of the rows, on the reading thread. False ends
  // the run.
  std::function<bool(size_t slot)> take;
};

// The number of slots for a number of jobs.
size_t BlockSlots(size_t jobs);

// Reads the files from the start into a ring of blocks: as many threads as there are jobs split and
// compute filled blocks, and the oldest is consumed before its slot is filled again, so that memory
// does not grow with the files. With one job, or when no thread can be started, the reading thread
// computes. False with a message in `error` when a file cannot be read or a block has an error,
// after the rows before it. An exception on a computing thread is rethrown on the reading thread.
bool ReadInBlocks(CsvFile &csv, size_t jobs, const BlockWork &work, std::string &error);

// The processors that the program may use.
size_t ProcessorCount();

#endif
