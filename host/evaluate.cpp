/* The command eval: formulas over the rows of a file. */
#include <cstdio>

#include "host/commands.h"
#include "host/display.h"
#include "host/formulas.h"
#include "host/progress.h"
#include "host/session.h"
#include "host/values.h"

namespace {

constexpr uint32_t kFirstBlock = 64;

/* A formula's result block, which the engine enlarges for long texts, and its failures. */
struct Result {
  void *block = nullptr;
  int64_t missing = 0; /* rows without a value */
};

struct EvalState {
  Session *session;
  const EvalOptions *options;
  std::vector<Formula> formulas;
  std::vector<Result> results;
  std::vector<std::string> cells;
  Output output;
  Progress progress;
  int64_t rows = 0;
  bool pastHeader = false;
};

bool ComputeCell(EvalState &state, size_t index) {
  const Formula &formula = state.formulas[index];
  Result &result = state.results[index];
  int32_t length = 0;
  return ORLEvaluateExpressionExt(state.session->ec, formula.exp, &length, &result.block) == 1 &&
         CellFromValue(formula.type, result.block, state.cells[index]);
}

bool ComputeRow(const CsvRow &row, void *user, std::string &error) {
  EvalState &state = *static_cast<EvalState *>(user);
  if (!state.pastHeader) {
    state.pastHeader = true;
    return true;
  }
  if (state.rows == state.options->limit) {
    return false;
  }
  /* The file was read before, but it may have changed since. */
  if (!ColumnsFit(state.session->csv, state.session->table, row, error)) {
    return false;
  }
  SessionSetRow(*state.session, row);
  for (size_t i = 0; i < state.formulas.size(); ++i) {
    if (!ComputeCell(state, i)) {
      state.cells[i].clear();
      ++state.results[i].missing;
    }
  }
  OutputRow(state.output, state.cells);
  const int64_t total =
      state.options->limit >= 0 ? state.options->limit : state.session->table.rows;
  ProgressStep(state.progress, "computing", ++state.rows, total);
  return std::ferror(stdout) == 0;
}

/* Takes the formulas from the command line. */
bool TakeArguments(EvalState &state, std::string &error) {
  for (const std::string &argument : state.options->formulas) {
    Formula formula;
    if (!FormulaFromArgument(argument, formula, error)) {
      return false;
    }
    state.formulas.push_back(formula);
  }
  return true;
}

/* Defines the formulas; each must be able to have a value. */
bool Prepare(EvalState &state, std::string &error) {
  EC ec = state.session->ec;
  if (!FormulasDefine(ec, state.formulas, error)) {
    return false;
  }
  for (const Formula &formula : state.formulas) {
    const bool set = ORLIsExpRange(ec, formula.exp, 1) == 1;
    if (set || ORLIsExpRange(ec, formula.exp, 2) == 1) {
      error = "formula " + DisplayName(formula.title) + " is a " + (set ? "set" : "range") +
              " and has no value";
      return false;
    }
    state.output.columns.push_back({formula.title, formula.type == ORL_TYPE_NUMBER});
  }
  return true;
}

bool AllocateResults(EvalState &state, std::string &error) {
  state.results.resize(state.formulas.size());
  state.cells.resize(state.formulas.size());
  for (Result &result : state.results) {
    result.block = ORLMemAlloc(kFirstBlock);
    if (result.block == nullptr) {
      error = "no memory";
      return false;
    }
  }
  return true;
}

void ReportMissing(const EvalState &state) {
  for (size_t i = 0; i < state.results.size(); ++i) {
    const int64_t missing = state.results[i].missing;
    if (missing != 0) {
      std::fprintf(stderr, "orli: formula %s has no value in %lld of %lld rows\n",
                   DisplayName(state.formulas[i].title).c_str(), static_cast<long long>(missing),
                   static_cast<long long>(state.rows));
    }
  }
}

int Evaluate(EvalState &state) {
  std::string error;
  if (!Prepare(state, error) || !AllocateResults(state, error)) {
    return Complain(error, EXIT_WRONG);
  }
  state.output.format = state.options->format;
  const bool good = CsvRead(state.session->csv, ComputeRow, &state, error);
  OutputEnd(state.output);
  /* The rows before the summary that tells about them, also when both go to one place. */
  static_cast<void>(std::fflush(stdout));
  ProgressEnd(state.progress);
  if (!good) {
    return Complain(error, EXIT_WRONG);
  }
  ReportMissing(state);
  ProgressReport(state.progress, state.rows);
  return EXIT_GOOD;
}

}  // namespace

int RunEval(const EvalOptions &options) {
  Session session;
  EvalState state{&session, &options, {}, {}, {}, {}, {}, 0, false};
  std::string error;
  if (!TakeArguments(state, error)) {
    return Complain(error, EXIT_USAGE);
  }
  ProgressStart(state.progress);
  const bool open = SessionOpen(options.data.c_str(), session, state.progress, error);
  const int status = open ? Evaluate(state) : Complain(error, EXIT_WRONG);
  for (const Result &result : state.results) {
    ORLMemFree(result.block);
  }
  SessionClose(session);
  return status;
}
