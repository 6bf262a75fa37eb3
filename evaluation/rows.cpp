// The entry of ORLEvaluateRows: checks the arguments and chooses how the rows are computed.
#include "evaluation/rows.h"

#include <algorithm>

#include "engine/expressions.h"
#include "engine/items.h"
#include "evaluation/row_output.h"
#include "platform/owned.h"

namespace {

constexpr int32_t kMostScale = 37;

bool FitsType(int32_t form, int32_t scale, int32_t type) {
  switch (form) {
    case ORL_COLUMN_NUMBER:
      return type == ORL_TYPE_NUMBER || type == ORL_TYPE_DATE;
    case ORL_COLUMN_INT64:
    case ORL_COLUMN_DECIMAL128:
      return type == ORL_TYPE_NUMBER && scale >= 0 && scale <= kMostScale;
    case ORL_COLUMN_DOUBLE:
      return type == ORL_TYPE_NUMBER;
    case ORL_COLUMN_DATE32:
    case ORL_COLUMN_TIMESTAMP:
      return type == ORL_TYPE_DATE;
    case ORL_COLUMN_TEXT:
      return type == ORL_TYPE_STRING;
    default:
      return false;
  }
}

// Whether the offsets of a column's strings ascend.
bool OffsetsAscend(const int32_t *offsets, int64_t rows) {
  int32_t descents = offsets[0] < 0 ? 1 : 0;
  for (int64_t row = 0; row < rows; ++row) {
    descents |= offsets[row + 1] < offsets[row] ? 1 : 0;
  }
  return descents == 0;
}

bool HasBuffers(const OrlColumn &column, int64_t rows) {
  if (column.form != ORL_COLUMN_TEXT) {
    return column.values != nullptr || rows == 0;
  }
  return column.offsets != nullptr && OffsetsAscend(column.offsets, rows) &&
         (column.values != nullptr || column.offsets[rows] == column.offsets[0]);
}

bool HasBuffers(const OrlRowResults &results, int64_t rows) {
  return results.form == ORL_COLUMN_TEXT ? results.values == nullptr && results.offsets != nullptr
                                         : results.values != nullptr || rows == 0;
}

// Finds the items of the columns; false when a column has no item, an item of another type, or the
// item of another column.
bool BindColumns(EC ec, int64_t rows, const OrlColumn *columns, BoundColumn *bound,
                 uint32_t count) {
  for (uint32_t i = 0; i < count; ++i) {
    const OrlColumn &column = columns[i];
    ExprItem *item = column.name == nullptr ? nullptr : ItemFind(&ec->inputs, column.name);
    if (item == nullptr || !FitsType(column.form, column.scale, item->dataType) ||
        !HasBuffers(column, rows)) {
      return false;
    }
    bound[i] = {item, &column};
  }
  const auto before = [](const BoundColumn &a, const BoundColumn &b) { return a.item < b.item; };
  const auto same = [](const BoundColumn &a, const BoundColumn &b) { return a.item == b.item; };
  std::sort(bound, bound + count, before);
  return std::adjacent_find(bound, bound + count, same) == bound + count;
}

RowsOutcome Evaluate(const RowsCall &call, RowOutput &output) {
  const RowsOutcome outcome = EvaluateInBatches(call, output);
  return outcome == RowsOutcome::NotSuitable ? EvaluateRowByRow(call, output) : outcome;
}

}  // namespace

int64_t ORLEvaluateRows(EC ec, HEXP exp, int64_t rows, int32_t columnCount,
                        const OrlColumn *columns, OrlRowResults *results) {
  if (ec == nullptr || exp == nullptr || exp->tree == nullptr || rows < 0 || columnCount < 0 ||
      (columns == nullptr && columnCount > 0) || results == nullptr ||
      !FitsType(results->form, results->scale, exp->dataType) || !HasBuffers(*results, rows)) {
    return -1;
  }
  const auto count = static_cast<uint32_t>(columnCount);
  const Owned<BoundColumn> bound = Allocate<BoundColumn>(count);
  if (bound == nullptr || !BindColumns(ec, rows, columns, bound.get(), count)) {
    return -1;
  }
  const RowsCall call = {ec, exp, rows, bound.get(), count, results};
  RowOutput output;
  const bool done = Evaluate(call, output) == RowsOutcome::Done && OutputPublish(output);
  return done ? output.rowsWithValue : -1;
}
