/* row_batch.h - batches of rows: read in order, computed by any thread, consumed in order. */
#ifndef ORLI11_HOST_ROW_BATCH_H
#define ORLI11_HOST_ROW_BATCH_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/csv_file.h"
#include "host/sorting.h"

struct RowBatch {
  std::vector<CsvRow> rows; /* the first `count` are read; the others keep their memory */
  size_t count = 0;
  size_t bytes = 0; /* of their fields */

  /* The results of the rows. */
  int64_t computed = 0;            /* rows that meet the conditions */
  std::string text;                /* lines of the output, or keys of groups one after the other */
  std::vector<size_t> ends;        /* of the keys in `text` */
  std::vector<SortValue> values;   /* of the formulas, row by row; kept for their capacity */
  std::vector<Sorter::Row> sorted; /* rows to be sorted */
  std::vector<std::vector<std::string>> cells; /* rows of a table */
};

/* Computes the rows of a batch as the worker of that number, from 0 on; no two threads have the
 * same number. */
using BatchComputer = std::function<void(size_t worker, RowBatch &batch)>;
/* Consumes a computed batch, on the reading thread. False ends the run. */
using BatchTaker = std::function<bool(RowBatch &batch)>;

/* A ring of batches: as many threads as there are jobs compute filled batches, and the oldest is
 * consumed before its slot is filled again, so that memory does not grow with the files. With one
 * job, or when no thread can be started, the reading thread computes. An exception on a computing
 * thread is rethrown on the reading thread. */
class BatchRing {
 public:
  BatchRing(size_t jobs, BatchComputer compute, BatchTaker take);
  ~BatchRing();
  BatchRing(const BatchRing &) = delete;
  BatchRing &operator=(const BatchRing &) = delete;

  /* Adds a row to the batch that is being filled; false when the run should end. */
  bool Add(const CsvRow &row);
  /* Computes and consumes everything that was added; false when the run should end. */
  bool Finish();

 private:
  struct State;
  bool Submit();
  bool TakeOldest();
  std::unique_ptr<State> state_;
};

/* The processors that the program may use. */
size_t ProcessorCount();

#endif
