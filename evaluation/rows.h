// Evaluation over columns: declarations that the parts of ORLEvaluateRows share.
#ifndef ORLI11_EVALUATION_ROWS_H
#define ORLI11_EVALUATION_ROWS_H

#include <cstdint>

#include "functions/value.h"
#include "orli11.h"

// A column and the input item whose values it holds.
struct BoundColumn {
  ExprItem *item;
  const OrlColumn *column;
};

// One call of ORLEvaluateRows with valid arguments.
struct RowsCall {
  EC ec;
  HEXP exp;
  int64_t rows;
  BoundColumn *columns;  // sorted by the items' addresses, one for each item
  uint32_t columnCount;
  OrlRowResults *results;
};

// The column of an item, or null.
const OrlColumn *ColumnOf(const RowsCall &call, const ExprItem *item);

inline bool ColumnHasValue(const OrlColumn &column, int64_t row) {
  return column.valid == nullptr || (column.valid[row / 8] >> (row % 8) & 1) != 0;
}

// The element of a Number or Date column as a host would return it. What a value cannot represent
// is null: doubles that are not finite, days outside the calendar.
NumberValue ColumnNumber(const OrlColumn &column, int64_t row);

// The element of a TEXT column, up to its first zero byte.
struct TextSlice {
  const char *bytes;
  uint32_t length;
};
TextSlice ColumnText(const OrlColumn &column, int64_t row);

// ---- Dates as Arrow has them ----

constexpr int64_t kEpochDayNumber = 2440588;  // of 1970-01-01
constexpr int64_t kMicrosecondsOfDay = INT64_C(86400000000);

// Null for days beyond the calendar. `microseconds` are those of the day.
NumberValue DateOfDays(int64_t daysSinceEpoch, int64_t microseconds);
int64_t DaysSinceEpoch(const DateTimeParts &parts);
int64_t MicrosecondsOfDay(const DateTimeParts &parts);

// Bytes of one element of a form.
uint32_t ElementSize(int32_t form);

// Writes a Number or Date into an element of a form; false, with nothing written, when the form
// cannot hold it.
bool StoreElement(void *element, int32_t form, int32_t scale, const NumberValue &value);

// The same for a number.
bool StoreNumber(void *element, int32_t form, int32_t scale, const Decimal &number);

// The same for INT64 and DECIMAL128, and a coefficient of any length.
bool StoreInteger(void *element, int32_t form, int32_t scale, const Decimal &d);

// ---- Evaluation strategies; each calls OutputBegin ----

struct RowOutput;

enum class RowsOutcome : uint8_t {
  Done,
  Failed,      // out of memory, or the strings are too long
  NotSuitable  // not a formula for this way; nothing was called or written
};

// A batch of rows at a time: for formulas that call no host routine.
RowsOutcome EvaluateInBatches(const RowsCall &call, RowOutput &output);

// Row by row, as ORLEvaluateExpression, with value routines that return the elements of the
// columns. Works for any formula.
RowsOutcome EvaluateRowByRow(const RowsCall &call, RowOutput &output);

#endif
