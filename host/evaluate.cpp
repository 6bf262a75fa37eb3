/* The command eval: formulas over the rows of a file. */
#include <cstdio>

#include "host/commands.h"
#include "host/computation.h"
#include "host/values.h"

namespace {

/* Writes the present row. A value that has no text is missing like one that has not come about. */
void WriteRow(Computation &computation, std::vector<std::string> &cells, Output &output) {
  for (size_t i = 0; i < cells.size(); ++i) {
    Result &result = computation.results[i];
    if (!result.good) {
      cells[i].clear();
    } else if (!CellFromValue(computation.formulas[i].type, result.block, cells[i])) {
      cells[i].clear();
      ++result.missing;
    }
  }
  OutputRow(output, cells);
}

}  // namespace

int RunEval(const EvalOptions &options) {
  Computation computation;
  computation.limit = options.limit;
  computation.store = options.store;
  computation.computeStored = true;
  for (const std::string &argument : options.formulas) {
    std::string error;
    if (!ComputationTake(computation, argument, error)) {
      return Complain(error, EXIT_USAGE);
    }
  }
  Output output;
  output.format = options.format;
  std::vector<std::string> cells;
  RowConsumer consumer;
  consumer.begin = [&computation, &output, &cells](std::string & /*error*/) {
    cells.resize(computation.formulas.size());
    for (const Formula &formula : computation.formulas) {
      output.columns.push_back({formula.title, formula.type == ORL_TYPE_NUMBER});
    }
    return true;
  };
  consumer.row = [&computation, &output, &cells] {
    WriteRow(computation, cells, output);
    return std::ferror(stdout) == 0;
  };
  consumer.end = [&output](bool /*good*/) { OutputEnd(output); };
  return ComputationRun(computation, options.data, consumer);
}
