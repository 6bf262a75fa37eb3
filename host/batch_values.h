// Formulas over the rows of a batch: one worker with a context of its own.
#ifndef ORLI11_HOST_BATCH_VALUES_H
#define ORLI11_HOST_BATCH_VALUES_H

#include <orli11.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/block_ring.h"
#include "host/conditions.h"
#include "host/formulas.h"
#include "host/session.h"
#include "host/sorting.h"
#include "host/values.h"

// The results of the rows of a block.
struct RowBatch {
  int64_t computed = 0;             // rows that meet the conditions
  std::string text;                 // lines of the output, or keys of groups one after the other
  std::vector<size_t> ends;         // of the keys in `text`
  std::vector<SortValue> values;    // of the formulas, row by row; kept for their capacity
  std::vector<Sorter::Row> sorted;  // rows that are to be put in an order
  std::vector<std::vector<std::string>> cells;  // rows of a table
};

// A column of a block as ORLEvaluateRows takes it.
struct BatchColumn {
  size_t index = 0;
  OrlColumn column = {};
  std::vector<int64_t> longs;
  std::vector<uint8_t> decimals;  // of `longs`, before they have one scale
  std::vector<int32_t> days;
  std::vector<NumberValue> numbers;
  std::string bytes;
  std::vector<int32_t> offsets;
  std::vector<uint8_t> valid;
};

// The values of a formula.
struct FormulaValues {
  Block block;                       // in one row
  bool good = false;                 // there is one
  int64_t missing = 0;               // rows so far without one
  std::vector<NumberValue> numbers;  // in the rows of a block
  std::string text;                  // of the present row of the block, terminated
  Block bytes;
  std::vector<int32_t> offsets;
  std::vector<uint8_t> valid;
};

struct Worker {
  Session *session = nullptr;    // of the run, or `own`
  std::unique_ptr<Session> own;  // with a copy of the context and the columns, without files
  std::vector<Formula> formulas;
  std::vector<Condition> conditions;
  std::vector<FormulaValues> results;  // one for each formula
  std::vector<BatchColumn> columns;    // those that the formulas may use
  bool batches = false;                // formulas are computed for a block at once
};

// The formulas of a run: `defined` are all in the context, `computed` those with values.
struct RunFormulas {
  std::vector<Formula> defined, computed;
  std::vector<Condition> conditions;
};

// The first worker of a run works in its session, others in a copy. False when out of memory.
bool WorkerBegin(Worker &worker, Session &session, const RunFormulas &formulas, bool copy);

// Called for each row that meets the conditions: `worker` has the row in its session, and its
// values in WorkerValue.
using RowMaker = std::function<void(Worker &worker, RowBatch &batch)>;

// Computes the formulas for the rows of a block, at most for `most` of those that meet the
// conditions; -1: for all.
void WorkerCompute(Worker &worker, const CsvBlock &block, int64_t most, const RowMaker &make,
                   RowBatch &batch);

// The value of a formula in the current row: a NumberValue or a terminated string; null when there
// is none. It is valid until the next row.
const void *WorkerValue(const Worker &worker, size_t formula);

#endif
