// The command eval: formulas over the rows of files.
#include <algorithm>
#include <cstdio>
#include <numeric>

#include "host/commands.h"
#include "host/computation.h"
#include "host/display.h"
#include "host/field.h"
#include "host/sorting.h"

namespace {

struct Evaluation {
  const EvalOptions *options;
  Computation computation;
  std::vector<size_t> kept;  // columns that are written, by index
  std::vector<size_t> keys;  // formulas that the rows are sorted by
  Sorter sorter;
  Output output;
};

bool HasFormula(const Evaluation &evaluation, const std::string &title) {
  const std::vector<Formula> &formulas = evaluation.computation.formulas;
  return std::any_of(formulas.begin(), formulas.end(),
                     [&title](const Formula &formula) { return formula.title == title; });
}

std::string TitleOf(const Column &column) {
  return FormulaOf(column.name, "").title;
}

// The columns of --keep.
bool TakeKept(Evaluation &evaluation, std::string &error) {
  const Table &table = evaluation.computation.session.table;
  for (const std::string &name : evaluation.options->keep) {
    if (name == "all") {
      evaluation.kept.resize(table.columns.size());
      std::iota(evaluation.kept.begin(), evaluation.kept.end(), size_t{0});
      return true;
    }
    const size_t index = FindByName(table.columns, name);
    if (index == table.columns.size()) {
      error = "--keep: there is no column " + DisplayName(name) + ColumnHint(table.columns, name);
      return false;
    }
    evaluation.kept.push_back(index);
  }
  return true;
}

// The keys of --sort: a formula of the run, a column, or a text of its own.
bool TakeKeys(Evaluation &evaluation, std::string &error) {
  Computation &computation = evaluation.computation;
  for (const std::string &argument : evaluation.options->rows.sort) {
    const SortArgument key = SortArgumentOf(argument);
    const std::vector<Column> &columns = computation.session.table.columns;
    const size_t column = FindByName(columns, key.name);
    bool known = column != columns.size();
    std::string text = known ? columns[column].name : key.name;
    for (const Formula &formula : computation.formulas) {
      const bool named = formula.title == key.name || formula.name == key.name;
      text = named ? formula.text : text;
      known = known || named;
    }
    error = known ? "" : SortProblem(key.name);
    if (!error.empty()) {
      return false;
    }
    const std::string number = std::to_string(evaluation.sorter.keys.size() + 1);
    computation.formulas.push_back(FormulaOf("\"--sort " + number + "\"", text));
    computation.formulas.back().title = "of --sort";
    computation.formulas.back().shown = false;
    evaluation.sorter.keys.push_back({ORL_TYPE_NUMBER, key.descending});
  }
  return true;
}

// Names the columns of the output. A formula replaces a kept column of the same name.
void Begin(Evaluation &evaluation) {
  const Computation &computation = evaluation.computation;
  Output &output = evaluation.output;
  const std::vector<Column> &columns = computation.session.table.columns;
  evaluation.kept.erase(
      std::remove_if(evaluation.kept.begin(), evaluation.kept.end(),
                     [&](size_t i) { return HasFormula(evaluation, TitleOf(columns[i])); }),
      evaluation.kept.end());
  for (const size_t i : evaluation.kept) {
    output.columns.push_back({TitleOf(columns[i]), columns[i].type});
  }
  for (size_t i = 0; i < computation.formulas.size(); ++i) {
    const Formula &formula = computation.formulas[i];
    if (formula.shown) {
      output.columns.push_back({formula.title, formula.type});
    } else {
      evaluation.sorter.keys[evaluation.keys.size()].type = formula.type;
      evaluation.keys.push_back(i);
    }
  }
}

// A kept field as in the file, or its value where the output format has types.
bool KeptCell(const Evaluation &evaluation, Session &session, size_t index, std::string &cell) {
  const Column &column = session.table.columns[index];
  if (!IsJson(evaluation.output.format) || column.type == ORL_TYPE_STRING) {
    const char *field = CsvField(session.row, index);
    const bool empty =
        IsJson(evaluation.output.format) && FieldIsEmpty(session.options.rules, field);
    cell = empty ? "" : field;
    return true;
  }
  NumberValue value;
  return SessionValue(session, index, value) && CellFromValue(column.type, &value, cell);
}

// The cells of the current row. A value without text is missing like one that was not computed.
void MakeCells(const Evaluation &evaluation, Worker &worker, std::vector<std::string> &cells) {
  const std::vector<Formula> &formulas = evaluation.computation.formulas;
  cells.resize(evaluation.output.columns.size());
  size_t place = 0;
  for (const size_t index : evaluation.kept) {
    std::string &cell = cells[place++];
    if (!KeptCell(evaluation, *worker.session, index, cell)) {
      cell.clear();
    }
  }
  for (size_t i = 0; i < formulas.size(); ++i) {
    if (!formulas[i].shown) {
      continue;
    }
    std::string &cell = cells[place++];
    const void *value = WorkerValue(worker, i);
    cell.clear();
    if (value != nullptr &&
        !CellFromValue(formulas[i].type, value, cell, evaluation.options->rows.decimals)) {
      cell.clear();
      CountMissing(worker, i);
    }
  }
}

void MakeRow(const Evaluation &evaluation, Worker &worker, RowBatch &batch) {
  if (!evaluation.keys.empty()) {
    Sorter::Row &row = batch.sorted.emplace_back();
    MakeCells(evaluation, worker, row.cells);
    for (const size_t i : evaluation.keys) {
      row.values.push_back(
          SortValueOf(evaluation.computation.formulas[i].type, WorkerValue(worker, i)));
    }
  } else if (evaluation.output.format == kOutputTable) {
    MakeCells(evaluation, worker, batch.cells.emplace_back());
  } else {
    thread_local std::vector<std::string> cells;
    MakeCells(evaluation, worker, cells);
    OutputAppend(evaluation.output, cells, batch.text);
  }
}

// Writes the results of a batch, or keeps them to be sorted.
bool TakeBatch(Evaluation &evaluation, RowBatch &batch) {
  for (Sorter::Row &row : batch.sorted) {
    evaluation.sorter.rows.push_back(std::move(row));
  }
  for (const std::vector<std::string> &cells : batch.cells) {
    OutputRow(evaluation.output, cells);
  }
  if (!batch.text.empty()) {
    OutputText(evaluation.output, batch.text);
  }
  batch.sorted.clear();
  batch.cells.clear();
  batch.text.clear();
  return std::ferror(stdout) == 0;
}

}  // namespace

int RunEval(const EvalOptions &options) {
  Evaluation evaluation;
  evaluation.options = &options;
  evaluation.output.format = options.rows.format;
  evaluation.sorter.limit = options.rows.limit;
  Computation &computation = evaluation.computation;
  computation.options = &options.rows;
  computation.limit = options.rows.sort.empty() ? options.rows.limit : -1;
  computation.computeStored = true;
  computation.mayBeEmpty = !options.keep.empty();
  for (const std::string &argument : options.formulas) {
    std::string error;
    if (!ComputationAdd(computation, argument, error)) {
      return Complain(error, kExitUsage);
    }
  }
  RowConsumer consumer;
  consumer.open = [&evaluation](std::string &error) {
    return TakeKeys(evaluation, error) && TakeKept(evaluation, error);
  };
  consumer.begin = [&evaluation](std::string & /*error*/) {
    Begin(evaluation);
    return true;
  };
  consumer.make = [&evaluation](Worker &worker, RowBatch &batch) {
    MakeRow(evaluation, worker, batch);
  };
  consumer.take = [&evaluation](RowBatch &batch) { return TakeBatch(evaluation, batch); };
  consumer.end = [&evaluation](bool good) {
    if (good) {
      SorterEnd(evaluation.sorter, evaluation.output);
    }
    OutputEnd(evaluation.output);
  };
  return ComputationRun(computation, consumer);
}
