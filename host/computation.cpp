#include "host/computation.h"

#include <cstdio>

#include "host/commands.h"
#include "host/display.h"
#include "host/store.h"

namespace {

constexpr uint32_t kFirstBlock = 64;

struct RowReader {
  Computation *computation;
  const RowConsumer *consumer;
  bool pastHeader = false;
};

bool ComputeRow(const CsvRow &row, void *user, std::string &error) {
  RowReader &reader = *static_cast<RowReader *>(user);
  Computation &computation = *reader.computation;
  Session &session = computation.session;
  if (!reader.pastHeader) {
    reader.pastHeader = true;
    return true;
  }
  if (computation.rows == computation.limit) {
    return false;
  }
  /* The file was read before, but it may have changed since. */
  if (!ColumnsFit(session.csv, session.table, row, error)) {
    return false;
  }
  SessionSetRow(session, row);
  for (size_t i = 0; i < computation.formulas.size(); ++i) {
    Result &result = computation.results[i];
    int32_t length = 0;
    result.good = ORLEvaluateExpressionExt(session.ec, computation.formulas[i].exp, &length,
                                           &result.block) == 1;
    result.missing += result.good ? 0 : 1;
  }
  const int64_t total = computation.limit >= 0 ? computation.limit : session.table.rows;
  ProgressStep(computation.progress, "computing", ++computation.rows, total);
  return reader.consumer->row();
}

/* Defines the formulas and those of the store, and keeps what is to be computed. Each must be able
 * to have a value; ranges and sets of the store are passed over. */
bool Define(Computation &computation, std::string &error) {
  EC ec = computation.session.ec;
  std::vector<Formula> all;
  if (!computation.store.empty() &&
      !StoreFormulas(computation.store, computation.session, all, error)) {
    return false;
  }
  const size_t stored = all.size();
  all.insert(all.end(), computation.formulas.begin(), computation.formulas.end());
  if (!FormulasDefine(ec, all, error)) {
    return false;
  }
  computation.formulas.clear();
  for (size_t i = 0; i < all.size(); ++i) {
    const std::string kind = FormulaKind(ec, all[i].exp);
    if (i >= stored && kind != "formula") {
      error = "formula " + DisplayName(all[i].title) + " is a " + kind + " and has no value";
      return false;
    }
    if (i >= stored || (computation.computeStored && kind == "formula")) {
      computation.formulas.push_back(all[i]);
    }
  }
  if (computation.formulas.empty()) {
    error = DisplayName(computation.store) + ": holds no formula that has a value";
  }
  return !computation.formulas.empty();
}

bool AllocateResults(Computation &computation, std::string &error) {
  computation.results.resize(computation.formulas.size());
  for (Result &result : computation.results) {
    result.block = ORLMemAlloc(kFirstBlock);
    if (result.block == nullptr) {
      error = "no memory";
      return false;
    }
  }
  return true;
}

void ReportMissing(const Computation &computation) {
  for (size_t i = 0; i < computation.results.size(); ++i) {
    const int64_t missing = computation.results[i].missing;
    if (missing != 0) {
      std::fprintf(stderr, "orli: formula %s has no value in %lld of %lld rows\n",
                   DisplayName(computation.formulas[i].title).c_str(),
                   static_cast<long long>(missing), static_cast<long long>(computation.rows));
    }
  }
}

int ComputeRows(Computation &computation, const RowConsumer &consumer) {
  std::string error;
  if (!Define(computation, error) || !AllocateResults(computation, error) ||
      !consumer.begin(error)) {
    return Complain(error, EXIT_WRONG);
  }
  RowReader reader{&computation, &consumer};
  const bool good = CsvRead(computation.session.csv, ComputeRow, &reader, error);
  consumer.end(good);
  /* The rows before the summary that tells about them, also when both go to one place. */
  static_cast<void>(std::fflush(stdout));
  ProgressEnd(computation.progress);
  if (!good) {
    return Complain(error, EXIT_WRONG);
  }
  ReportMissing(computation);
  ProgressReport(computation.progress, computation.rows);
  return EXIT_GOOD;
}

}  // namespace

bool ComputationTake(Computation &computation, const std::string &argument, std::string &error) {
  Formula formula;
  const bool good = FormulaFromArgument(argument, formula, error);
  if (good) {
    computation.formulas.push_back(formula);
  }
  return good;
}

int ComputationRun(Computation &computation, const std::string &data, const RowConsumer &consumer) {
  std::string error;
  ProgressStart(computation.progress);
  const bool open = SessionOpen(data.c_str(), computation.session, computation.progress, error);
  const int status = open ? ComputeRows(computation, consumer) : Complain(error, EXIT_WRONG);
  for (const Result &result : computation.results) {
    ORLMemFree(result.block);
  }
  SessionClose(computation.session);
  return status;
}
