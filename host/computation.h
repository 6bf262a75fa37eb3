// Named formulas computed row by row over files; shared by eval and report.
#ifndef ORLI11_HOST_COMPUTATION_H
#define ORLI11_HOST_COMPUTATION_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "host/batch_values.h"
#include "host/block_ring.h"
#include "host/commands.h"
#include "host/conditions.h"
#include "host/formulas.h"
#include "host/progress.h"
#include "host/session.h"
#include "host/values.h"

struct Computation {
  const RowOptions *options = nullptr;
  std::vector<Formula> formulas;
  std::vector<Formula> defined;  // all of the context, those of conditions included
  std::vector<Worker> workers;   // one for each job
  std::vector<Condition> conditions;
  bool computeStored = false;  // formulas of the store and of files are computed, before others
  bool mayBeEmpty = false;     // there is something to write without formulas
  int64_t limit = -1;          // rows to compute; -1: all
  int64_t rows = 0;            // computed and taken so far
  Session session;
  Progress progress;
};

// How a command processes the rows. False ends the run; with a message in `error` it is a
// failure.
struct RowConsumer {
  std::function<bool(std::string &error)> open;   // the columns are known; formulas may be added
  std::function<bool(std::string &error)> begin;  // the formulas are defined, no row is read
  RowMaker make;  // the values of a row are computed; on any thread, may change only the batch
  // Receives the results of a block, in the order of the rows; on one thread.
  std::function<bool(RowBatch &batch)> take;
  std::function<void(bool good)> end;  // no more rows; `good`: without a failure
};

// A value of a worker's formula could not be written: counts as missing.
inline void CountMissing(Worker &worker, size_t formula) {
  ++worker.results[formula].missing;
}

// Adds a formula, NAME=TEXT. False with a message.
bool ComputationAdd(Computation &computation, const std::string &argument, std::string &error);

// Opens the files, defines the formulas, which may call each other, and computes them for each row
// that meets the conditions. A formula that cannot have a value is rejected. Reports failures, rows
// without values, empty fields that counted as zero and the time on standard error, and returns the
// exit status. The computation cannot be reused.
int ComputationRun(Computation &computation, const RowConsumer &consumer);

#endif
