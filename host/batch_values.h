/* batch_values.h - formulas over the rows of a batch: one worker with a context of its own. */
#ifndef ORLI11_HOST_BATCH_VALUES_H
#define ORLI11_HOST_BATCH_VALUES_H

#include <orli11.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/conditions.h"
#include "host/formulas.h"
#include "host/row_batch.h"
#include "host/session.h"
#include "host/values.h"

/* A column of a batch as ORLEvaluateRows takes it. */
struct BatchColumn {
  size_t index = 0;
  OrlColumn column = {};
  std::vector<int64_t> longs;
  std::vector<uint8_t> decimals; /* of `longs`, before they have one scale */
  std::vector<int32_t> days;
  std::vector<NumberValue> numbers;
  std::string bytes;
  std::vector<int32_t> offsets;
  std::vector<uint8_t> valid;
};

/* The values of a formula. */
struct FormulaValues {
  Block block;                      /* in one row */
  bool good = false;                /* there is one */
  int64_t missing = 0;              /* rows so far without one */
  std::vector<NumberValue> numbers; /* in the rows of a batch */
  std::string text;                 /* of the current row of the batch, terminated */
  Block bytes;
  std::vector<int32_t> offsets;
  std::vector<uint8_t> valid;
};

struct Worker {
  Session *session = nullptr;   /* of the run, or `own` */
  std::unique_ptr<Session> own; /* with a copy of the context and the columns, without files */
  std::vector<Formula> formulas;
  std::vector<Condition> conditions;
  std::vector<FormulaValues> results; /* one for each formula */
  std::vector<BatchColumn> columns;   /* those that the formulas may use */
  bool batches = false;               /* formulas are computed for a batch at once */
};

/* The formulas of a run: `defined` are all in the context, `computed` those with values. */
struct RunFormulas {
  std::vector<Formula> defined, computed;
  std::vector<Condition> conditions;
};

/* The first worker of a run works in its session, others in a copy. False when out of memory. */
bool WorkerBegin(Worker &worker, Session &session, const RunFormulas &formulas, bool copy);

/* Called for each row that meets the conditions: `worker` has the row in its session, and its
 * values in WorkerValue. */
using RowMaker = std::function<void(Worker &worker, const CsvRow &row, RowBatch &batch)>;

/* Computes the formulas for the rows of a batch, for at most `most` of those that meet the
 * conditions; -1: for all. */
void WorkerCompute(Worker &worker, RowBatch &batch, int64_t most, const RowMaker &make);

/* The value of a formula in the current row: a NumberValue or a terminated string; null when there
 * is none. It is valid until the next row. */
const void *WorkerValue(const Worker &worker, size_t formula);

#endif
