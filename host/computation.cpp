#include "host/computation.h"

#include <algorithm>
#include <cstdio>

#include "host/display.h"
#include "host/null_use.h"
#include "host/pictures.h"
#include "host/store.h"

namespace {

// The formulas that those of the command line may call: of the store, then of files.
bool TakeOthers(const RowOptions &options, const Session &session, std::vector<Formula> &all,
                std::string &error) {
  if (!options.store.empty() && !StoreFormulas(options.store, session, all, error)) {
    return false;
  }
  return std::all_of(options.formulaFiles.begin(), options.formulaFiles.end(),
                     [&](const std::string &path) { return FormulasRead(path, all, error); });
}

bool TakeConditions(Computation &computation, std::vector<Formula> &all, std::string &error) {
  for (const std::string &argument : computation.options->conditions) {
    if (!ConditionParse(argument, all, computation.conditions.emplace_back(), error)) {
      return false;
    }
  }
  return true;
}

// Selects the formulas to be computed; those from `own` on are the command's.
bool Keep(Computation &computation, const std::vector<Formula> &all, size_t own, size_t conditions,
          std::string &error) {
  EC ec = computation.session.ec.get();
  computation.formulas.clear();
  for (size_t i = 0; i < conditions; ++i) {
    const std::string kind = FormulaKind(ec, all[i].exp);
    if (i >= own && kind != "formula") {
      error =
          "formula " + DisplayName(all[i].title) + " is a " + kind + " and has no value" +
          (kind == "set" ? "\nhint: a comma outside of parentheses makes a set; decimals have a "
                           "point, groups of digits no sign"
                         : "");
      return false;
    }
    if (i >= own || (computation.computeStored && kind == "formula")) {
      computation.formulas.push_back(all[i]);
    }
  }
  const bool none = computation.formulas.empty() && !computation.mayBeEmpty;
  if (none) {
    const RowOptions &options = *computation.options;
    const std::string &source = options.store.empty() ? options.formulaFiles[0] : options.store;
    error = DisplayName(source) + ": holds no formula that has a value";
  }
  return !none;
}

void ReportPictures(const std::vector<Formula> &formulas) {
  for (const Formula &formula : formulas) {
    for (const std::string &problem : PictureProblems(formula.text)) {
      Complain("formula " + DisplayName(formula.title) + ": " + problem, kExitGood);
    }
  }
}

// Defines the formulas of the command and all that they may call. Each of the command's must be
// able to have a value; ranges and sets of the store are passed over.
bool Define(Computation &computation, std::string &error) {
  EC ec = computation.session.ec.get();
  std::vector<Formula> all;
  if (!TakeOthers(*computation.options, computation.session, all, error)) {
    return false;
  }
  const size_t own = all.size();
  all.insert(all.end(), computation.formulas.begin(), computation.formulas.end());
  const size_t conditions = all.size();
  if (!TakeConditions(computation, all, error) || !FormulasDefine(ec, all, error) ||
      !Keep(computation, all, own, conditions, error)) {
    return false;
  }
  for (Condition &condition : computation.conditions) {
    if (!ConditionFinish(ec, all, condition, error)) {
      return false;
    }
  }
  computation.defined = all;
  ReportPictures(computation.formulas);
  SessionWatchZeros(computation.session, ZeroUsesOf(all));
  return true;
}

// Whether an error in a formula is one for any types of columns.
bool IsOfAnyType(int32_t id) {
  constexpr int32_t kErrors[] = {ORL_ERR_VAR,         ORL_ERR_FUNC,       ORL_ERR_SYNTAX,
                                 ORL_ERR_UNKNOWNCHAR, ORL_ERR_NUMPARMSHI, ORL_ERR_NUMPARMSLO,
                                 ORL_ERR_INVALIDDATE, ORL_ERR_EXPPARMS};
  return std::find(std::begin(kErrors), std::end(kErrors), id) != std::end(kErrors);
}

// The SessionCheck of a run: names and syntax.
bool CheckFormulas(const Computation &computation, const Session &sample, std::string &error) {
  std::vector<Formula> all;
  std::vector<Condition> conditions;
  std::string problem;
  size_t wrong = 0;
  if (!TakeOthers(*computation.options, sample, all, problem)) {
    return true;
  }
  all.insert(all.end(), computation.formulas.begin(), computation.formulas.end());
  for (const std::string &argument : computation.options->conditions) {
    if (!ConditionParse(argument, all, conditions.emplace_back(), problem)) {
      return true;
    }
  }
  if (!FormulasDefine(sample.ec.get(), all, problem, &wrong) &&
      IsOfAnyType(all[wrong].problem.id)) {
    error = problem;
    return false;
  }
  return true;
}

void ReportMissing(const Computation &computation) {
  for (size_t i = 0; i < computation.formulas.size(); ++i) {
    int64_t missing = 0;
    for (const Worker &worker : computation.workers) {
      missing += worker.results[i].missing;
    }
    if (missing != 0) {
      std::fprintf(stderr, "orli: formula %s has no value in %lld of %lld rows\n",
                   DisplayName(computation.formulas[i].title).c_str(),
                   static_cast<long long>(missing), static_cast<long long>(computation.rows));
    }
  }
}

// Reports how many empty fields counted as zero: "2 empty values counted as zero: 2 of amount".
void ReportZeros(const Computation &computation) {
  int64_t all = 0;
  std::string columns;
  for (size_t i = 0; i < computation.session.values.size(); ++i) {
    int64_t zeros = 0;
    for (const Worker &worker : computation.workers) {
      zeros += worker.session->values[i].zeros;
    }
    if (zeros != 0) {
      columns += (all == 0 ? "" : ", ") + std::to_string(zeros) + " of " +
                 DisplayName(computation.session.table.columns[i].name);
      all += zeros;
    }
  }
  if (all != 0) {
    Complain(std::to_string(all) + (all == 1 ? " empty value" : " empty values") +
                 " counted as zero: " + columns,
             kExitGood);
  }
}

// Reports conditions that no row can meet, as their ranges are written from high to low.
void ReportReversed(const Computation &computation) {
  for (size_t i = 0; i < computation.conditions.size(); ++i) {
    int64_t rows = 0;
    int64_t reversed = 0;
    for (const Worker &worker : computation.workers) {
      rows += worker.conditions[i].rows;
      reversed += worker.conditions[i].reversed;
    }
    if (rows != 0 && reversed == rows) {
      Complain("--where " + DisplayName(computation.options->conditions[i]) +
                   ": selects nothing, as the range begins above its end",
               kExitGood);
    }
  }
}

// As many as were asked for, or as there are processors.
size_t JobsOf(const Computation &computation) {
  const int64_t jobs = computation.options->jobs;
  return jobs > 0 ? static_cast<size_t>(jobs) : ProcessorCount();
}

// One for each job. With a limit the rows to compute are known only one by one.
bool BeginWorkers(Computation &computation) {
  const size_t count = computation.limit >= 0 ? 1 : JobsOf(computation);
  const RunFormulas formulas = {computation.defined, computation.formulas, computation.conditions};
  computation.workers.resize(count);
  for (size_t i = 0; i < count; ++i) {
    if (!WorkerBegin(computation.workers[i], computation.session, formulas, i != 0)) {
      return false;
    }
  }
  return true;
}

bool ReadAll(Computation &computation, const RowConsumer &consumer, std::string &error) {
  Session &session = computation.session;
  const size_t jobs = computation.workers.size();
  std::vector<RowBatch> batches(BlockSlots(jobs));
  BlockWork work;
  work.compute = [&](size_t worker, size_t slot, CsvBlock &block) {
    // The file was read before, but it may have changed since.
    ColumnsFit(session.csv, session.table, block);
    const int64_t left = computation.limit >= 0 ? computation.limit - computation.rows : -1;
    WorkerCompute(computation.workers[worker], block, left, consumer.make, batches[slot]);
  };
  work.take = [&](size_t slot) {
    computation.rows += batches[slot].computed;
    const int64_t total = computation.limit >= 0 ? computation.limit : session.table.rows;
    ProgressStep(computation.progress, "computing", computation.rows, total);
    return consumer.take(batches[slot]) && computation.rows != computation.limit;
  };
  return ReadInBlocks(session.csv, jobs, work, error);
}

int ComputeRows(Computation &computation, const RowConsumer &consumer) {
  std::string error;
  if ((consumer.open && !consumer.open(error)) || !Define(computation, error) ||
      !consumer.begin(error)) {
    return Complain(error, kExitWrong);
  }
  if (!BeginWorkers(computation)) {
    return Complain("out of memory", kExitWrong);
  }
  const bool good = ReadAll(computation, consumer, error);
  consumer.end(good);
  // Writes the rows before their summary, also when both are written to one place.
  static_cast<void>(std::fflush(stdout));
  ProgressEnd(computation.progress);
  if (!good) {
    return Complain(error, kExitWrong);
  }
  ReportReversed(computation);
  ReportMissing(computation);
  ReportZeros(computation);
  ProgressReport(computation.progress, computation.rows);
  return kExitGood;
}

}  // namespace

bool ComputationAdd(Computation &computation, const std::string &argument, std::string &error) {
  Formula formula;
  const bool good = FormulaFromArgument(argument, formula, error);
  if (good) {
    computation.formulas.push_back(formula);
  }
  return good;
}

int ComputationRun(Computation &computation, const RowConsumer &consumer) {
  std::string error;
  ProgressStart(computation.progress);
  const auto check = [&computation](const Session &sample, std::string &problem) {
    return CheckFormulas(computation, sample, problem);
  };
  const OpenWish wish = {false, check, JobsOf(computation)};
  const bool open = SessionOpen(computation.options->data, computation.session,
                                computation.progress, error, wish);
  return open ? ComputeRows(computation, consumer) : Complain(error, kExitWrong);
}
