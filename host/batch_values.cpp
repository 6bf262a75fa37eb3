#include "host/batch_values.h"

#include <algorithm>
#include <cstring>

#include "host/field.h"

namespace {

constexpr uint32_t kFirstBlock = 64;

// The expression of the same name in a copy of its context.
HEXP ExpressionIn(EC copy, EC ec, HEXP exp) {
  std::string name(static_cast<size_t>(ORLGetExpressionNameLength(ec, exp)) + 1, '\0');
  ORLGetExpressionName(ec, exp, static_cast<int32_t>(name.size()), name.data());
  return ORLHEXPFromName(copy, name.c_str());
}

// A session over the same columns with a context of its own, which has the same formulas; null when
// out of memory.
std::unique_ptr<Session> CopySession(const Session &session, std::vector<Formula> formulas) {
  auto copy = std::make_unique<Session>();
  std::string unused;
  copy->ec = NewContext();
  copy->options = session.options;
  copy->table = session.table;
  if (!SessionDeclare(*copy, unused) || !FormulasDefine(copy->ec.get(), formulas, unused)) {
    return nullptr;
  }
  for (const auto &[exp, column] : session.zeroUses) {
    copy->zeroUses.emplace(ExpressionIn(copy->ec.get(), session.ec.get(), exp), column);
  }
  return copy;
}

// Sets the worker's formulas and conditions to those of its own context; false when the copy lacks
// one.
bool FindExpressions(Worker &worker, EC ec) {
  EC copy = worker.session->ec.get();
  bool found = true;
  const auto find = [&](HEXP &exp) {
    exp = ExpressionIn(copy, ec, exp);
    found = found && exp != nullptr;
  };
  for (Formula &formula : worker.formulas) {
    find(formula.exp);
  }
  for (Condition &condition : worker.conditions) {
    find(condition.test);
    std::for_each(condition.members.begin(), condition.members.end(), find);
  }
  return found;
}

bool IsUsed(const Worker &worker, const Column &column) {
  return std::any_of(worker.formulas.begin(), worker.formulas.end(), [&](const Formula &formula) {
    return ORLIsItemUsed(worker.session->ec.get(), formula.exp, ORL_INPUT, column.name.c_str()) !=
           0;
  });
}

// All fields as integers of one scale; false where one is empty or written in another way.
bool TakeLongs(const Session &session, const CsvBlock &block, BatchColumn &column) {
  static constexpr int64_t kPowers[] = {1, 10, 100, 1000, 10000, 100000, 1000000};
  constexpr uint8_t kMostDecimals = 6;
  constexpr int64_t kMostScaled = INT64_C(1000000000000);
  uint8_t scale = 0;
  bool large = false;
  if (session.options.rules.decimal != '\0') {
    return false;
  }
  column.longs.resize(block.Count());
  column.decimals.resize(block.Count());
  for (size_t row = 0; row < block.Count(); ++row) {
    const char *field = block.Field(row, column.index);
    if (!PlainDecimal(field, column.longs[row], column.decimals[row]) ||
        (!session.options.rules.nulls.empty() && FieldIsEmpty(session.options.rules, field))) {
      return false;
    }
    scale = std::max(scale, column.decimals[row]);
    large = large || column.longs[row] > kMostScaled || column.longs[row] < -kMostScaled;
  }
  const bool alike = std::all_of(column.decimals.begin(), column.decimals.end(),
                                 [scale](uint8_t decimals) { return decimals == scale; });
  if (!alike && (large || scale > kMostDecimals)) {
    return false;
  }
  for (size_t row = 0; !alike && row < block.Count(); ++row) {
    column.longs[row] *= kPowers[scale - column.decimals[row]];
  }
  column.column.form = ORL_COLUMN_INT64;
  column.column.scale = scale;
  column.column.values = column.longs.data();
  return true;
}

// All fields as days; false where one is not written as 2024-01-31.
bool TakeDays(const Session &session, const CsvBlock &block, BatchColumn &column) {
  if (!session.options.rules.nulls.empty() || session.options.rules.dateOrder >= 0) {
    return false;
  }
  column.days.resize(block.Count());
  for (size_t row = 0; row < block.Count(); ++row) {
    if (!DayOfPlainDate(block.Field(row, column.index), column.days[row])) {
      return false;
    }
  }
  column.column.form = ORL_COLUMN_DATE32;
  column.column.values = column.days.data();
  return true;
}

void TakeNumbers(const Session &session, const CsvBlock &block, int16_t type, BatchColumn &column) {
  const FieldRules &rules = session.options.rules;
  column.numbers.assign(block.Count(), {});
  column.valid.assign((block.Count() + 7) / 8, 0);
  for (size_t row = 0; row < block.Count(); ++row) {
    const char *field = block.Field(row, column.index);
    const bool good =
        FieldIsEmpty(rules, field) || (type == ORL_TYPE_DATE ? DateFromField : NumberFromField)(
                                          rules, field, &column.numbers[row]);
    column.valid[row / 8] |= static_cast<uint8_t>((good ? 1 : 0) << (row % 8));
  }
  column.column.form = ORL_COLUMN_NUMBER;
  column.column.values = column.numbers.data();
  column.column.valid = column.valid.data();
}

void TakeTexts(const Session &session, const CsvBlock &block, BatchColumn &column) {
  column.bytes.clear();
  column.offsets.assign(1, 0);
  for (size_t row = 0; row < block.Count(); ++row) {
    const char *field = block.Field(row, column.index);
    if (!FieldIsEmpty(session.options.rules, field)) {
      column.bytes += field;
    }
    column.offsets.push_back(static_cast<int32_t>(column.bytes.size()));
  }
  column.column.form = ORL_COLUMN_TEXT;
  column.column.values = column.bytes.data();
  column.column.offsets = column.offsets.data();
}

void TakeColumn(const Session &session, const CsvBlock &block, BatchColumn &column) {
  const Column &described = session.table.columns[column.index];
  column.column = {};
  column.column.name = described.name.c_str();
  if (described.type == ORL_TYPE_STRING) {
    TakeTexts(session, block, column);
  } else if (!(described.type == ORL_TYPE_NUMBER ? TakeLongs : TakeDays)(session, block, column)) {
    TakeNumbers(session, block, described.type, column);
  }
}

// All rows of a block at once; false when the block is too large.
bool ComputeFormulas(Worker &worker, const CsvBlock &block) {
  std::vector<OrlColumn> columns;
  for (BatchColumn &column : worker.columns) {
    TakeColumn(*worker.session, block, column);
    columns.push_back(column.column);
  }
  for (size_t i = 0; i < worker.formulas.size(); ++i) {
    FormulaValues &result = worker.results[i];
    const bool text = worker.formulas[i].type == ORL_TYPE_STRING;
    result.numbers.resize(text ? 0 : block.Count());
    result.offsets.resize(text ? block.Count() + 1 : 0);
    result.valid.resize((block.Count() + 7) / 8);
    OrlRowResults results = {text ? ORL_COLUMN_TEXT : ORL_COLUMN_NUMBER, 0,
                             text ? nullptr : result.numbers.data(), result.offsets.data(),
                             result.valid.data()};
    if (ORLEvaluateRows(worker.session->ec.get(), worker.formulas[i].exp,
                        static_cast<int64_t>(block.Count()), static_cast<int32_t>(columns.size()),
                        columns.data(), &results) < 0) {
      return false;
    }
    result.bytes.reset(text ? results.values : nullptr);
  }
  return true;
}

// Sets the values of WorkerValue to those of a row.
void TakeRow(Worker &worker, size_t row) {
  for (FormulaValues &result : worker.results) {
    result.good = (result.valid[row / 8] >> (row % 8) & 1) != 0;
    if (result.bytes != nullptr) {
      const char *bytes = static_cast<const char *>(result.bytes.get());
      result.text.assign(bytes + result.offsets[row], bytes + result.offsets[row + 1]);
    } else if (result.good) {
      std::memcpy(result.block.get(), &result.numbers[row], sizeof(NumberValue));
    }
  }
}

bool ConditionsMet(Worker &worker) {
  return std::all_of(worker.conditions.begin(), worker.conditions.end(),
                     [&worker](Condition &condition) {
                       return ConditionMet(worker.session->ec.get(), condition);
                     });
}

void ComputeRow(Worker &worker) {
  for (size_t i = 0; i < worker.formulas.size(); ++i) {
    FormulaValues &result = worker.results[i];
    result.good = Evaluate(worker.session->ec.get(), worker.formulas[i].exp, result.block);
  }
  SessionCountZeros(*worker.session);
}

}  // namespace

bool WorkerBegin(Worker &worker, Session &session, const RunFormulas &formulas, bool copy) {
  worker.own = copy ? CopySession(session, formulas.defined) : nullptr;
  worker.session = copy ? worker.own.get() : &session;
  worker.formulas = formulas.computed;
  worker.conditions = formulas.conditions;
  if (worker.session == nullptr || (copy && !FindExpressions(worker, session.ec.get()))) {
    return false;
  }
  worker.results.resize(worker.formulas.size());
  for (FormulaValues &result : worker.results) {
    result.block = NewBlock(kFirstBlock);
  }
  // Conditions are checked one row at a time, and zeros are counted when requested.
  worker.batches = worker.conditions.empty() && worker.session->zeroUses.empty();
  const std::vector<Column> &columns = worker.session->table.columns;
  for (size_t i = 0; worker.batches && i < columns.size(); ++i) {
    if (IsUsed(worker, columns[i])) {
      worker.columns.emplace_back().index = i;
    }
  }
  return true;
}

void WorkerCompute(Worker &worker, const CsvBlock &block, int64_t most, const RowMaker &make,
                   RowBatch &batch) {
  batch.computed = 0;
  const bool together = worker.batches && ComputeFormulas(worker, block);
  for (size_t row = 0; row < block.Count() && batch.computed != most; ++row) {
    SessionSetRow(*worker.session, block.Row(row));
    if (together) {
      TakeRow(worker, row);
    } else if (ConditionsMet(worker)) {
      ComputeRow(worker);
    } else {
      continue;
    }
    ++batch.computed;
    for (FormulaValues &result : worker.results) {
      result.missing += result.good ? 0 : 1;
    }
    make(worker, batch);
  }
  worker.session->row = {};
  for (FormulaValues &result : worker.results) {
    result.bytes.reset();
  }
}

const void *WorkerValue(const Worker &worker, size_t formula) {
  const FormulaValues &result = worker.results[formula];
  if (!result.good) {
    return nullptr;
  }
  return result.bytes != nullptr ? static_cast<const void *>(result.text.c_str())
                                 : result.block.get();
}
