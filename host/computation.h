/* computation.h - named formulas computed row by row over files; what eval and report share. */
#ifndef ORLI11_HOST_COMPUTATION_H
#define ORLI11_HOST_COMPUTATION_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "host/commands.h"
#include "host/conditions.h"
#include "host/formulas.h"
#include "host/progress.h"
#include "host/session.h"
#include "host/values.h"

/* What a formula gave in the present row. */
struct Result {
  Block block;         /* the value; the engine enlarges it for long strings */
  bool good = false;   /* there is one */
  int64_t missing = 0; /* rows so far without one */
};

struct Computation {
  const RowOptions *options = nullptr;
  std::vector<Formula> formulas;
  std::vector<Result> results; /* one for each formula */
  std::vector<Condition> conditions;
  bool computeStored = false; /* formulas of the store and of files are computed, before others */
  bool mayBeEmpty = false;    /* there is something to write without formulas */
  int64_t limit = -1;         /* rows to compute; -1: all */
  int64_t rows = 0;           /* computed so far */
  Session session;
  Progress progress;
};

/* What a command does with the rows. False ends the run, with a message in `error` as a failure. */
struct RowConsumer {
  std::function<bool(std::string &error)> open;  /* the columns are known; formulas may be added */
  std::function<bool(std::string &error)> begin; /* the formulas are defined, no row is read */
  std::function<bool()> row;                     /* the results of a row are there */
  std::function<void(bool good)> end;            /* no more rows; not good after a failure */
};

/* Takes one more formula, NAME=TEXT. False with a message. */
bool ComputationTake(Computation &computation, const std::string &argument, std::string &error);

/* Opens the files, defines the formulas, which may call each other, and computes them for each row
 * that meets the conditions. A formula that can have no value is refused. Tells failures, rows
 * without values, empty fields that counted as zero and the time on standard error, and returns the
 * exit status. The computation is used up. */
int ComputationRun(Computation &computation, const RowConsumer &consumer);

#endif
