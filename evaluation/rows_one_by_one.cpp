// Row-by-row evaluation. While it runs, items with a column have a value routine that returns its
// element.
#include <cstring>

#include "engine/context.h"
#include "engine/items.h"
#include "evaluation/evaluation.h"
#include "evaluation/row_output.h"
#include "evaluation/rows.h"
#include "platform/owned.h"

// The columns that the items of a context have while their rows are computed. A routine of the host
// may begin another computation of rows in the same context.
struct RowSource {
  const RowsCall *call;
  int64_t row;
  RowSource *before;
  bool outOfMemory;  // for a string of a column
};

namespace {

// The innermost rows that have a column for the item, or null.
RowSource *FindSource(EC ec, const ExprItem *item, const OrlColumn **column) {
  RowSource *source = item == nullptr ? nullptr : ec->rowSource;
  while (source != nullptr && (*column = ColumnOf(*source->call, item)) == nullptr) {
    source = source->before;
  }
  return source;
}

int32_t GiveText(const OrlColumn &column, RowSource &source, int32_t size, void **value) {
  const TextSlice text = ColumnText(column, source.row);
  if (text.length >= static_cast<uint32_t>(size)) {
    void *larger = WRENMemRealloc(*value, text.length + 1);
    if (larger == nullptr) {
      source.outOfMemory = true;
      return 0;
    }
    *value = larger;
  }
  std::memcpy(*value, text.bytes, text.length);
  return 1;
}

// The OrlValueProc of items with a column.
int32_t GiveElement(EC ec, HEXP /*exp*/, int32_t size, void **value, const char *name) {
  const OrlColumn *column = nullptr;
  RowSource *source = FindSource(ec, ItemFind(&ec->inputs, name), &column);
  if (source == nullptr || !ColumnHasValue(*column, source->row)) {
    return 0;
  }
  if (column->form == ORL_COLUMN_TEXT) {
    return GiveText(*column, *source, size, value);
  }
  const NumberValue number = ColumnNumber(*column, source->row);
  std::memcpy(*value, &number, sizeof number);
  return 1;
}

// Replaces the items' own routines, which `routines` keeps, by the column routine.
void BeginSource(const RowsCall &call, RowSource &source, void **routines) {
  source = {&call, 0, call.ec->rowSource, false};
  for (uint32_t i = 0; i < call.columnCount; ++i) {
    routines[i] = call.columns[i].item->routine;
    call.columns[i].item->routine = reinterpret_cast<void *>(&GiveElement);
  }
  call.ec->rowSource = &source;
  ++call.ec->generation;
}

// An item that a routine of the host has deleted meanwhile has no routine to restore.
void EndSource(const RowsCall &call, const RowSource &source, void *const *routines) {
  for (uint32_t i = 0; i < call.columnCount; ++i) {
    ExprItem *item = call.columns[i].item;
    if (HandleArrayFindPointer(call.ec->inputs.rows, item) >= 0) {
      item->routine = routines[i];
    }
  }
  call.ec->rowSource = source.before;
  ++call.ec->generation;
}

// Stores the value of a row; false when its string does not fit.
bool StoreRow(RowOutput &output, const Evaluation &run, const Value &value, uint8_t *element,
              bool *stored) {
  const int32_t form = output.results->form;
  *stored = false;
  if (form != ORL_COLUMN_TEXT) {
    if (IsNumberForm(value.form)) {
      NumberValue number;
      StoreValue(&number, value);
      *stored = StoreElement(element, form, output.results->scale, number);
    }
    return true;
  }
  if (value.form == ValueForm::Text) {
    const TextSpan span = SpanOf(value);
    char *text = OutputText(output, span.length);
    if (text == nullptr) {
      return false;
    }
    std::memcpy(text, run.texts.bytes + span.offset, span.length);
    output.textUsed += span.length;
    *stored = true;
  }
  return true;
}

bool EvaluateRow(const RowsCall &call, RowOutput &output, const RowSource &source) {
  const int64_t row = source.row;
  const int64_t inByte = row % 8;
  const RowPlace place = OutputPlace(output, row - inByte);
  if (place.elements == nullptr) {
    return false;
  }
  uint8_t *element = place.elements + inByte * output.elementSize;
  Evaluation run(call.ec, call.exp);
  const Value *value = EvaluationRun(run);
  bool stored = false;
  const bool done = !run.texts.outOfMemory && !source.outOfMemory &&
                    (value == nullptr || StoreRow(output, run, *value, element, &stored));
  if (output.results->form == ORL_COLUMN_TEXT) {
    const auto end = static_cast<int32_t>(output.textUsed);
    std::memcpy(element, &end, sizeof end);
  }
  if (stored) {
    *place.valid = static_cast<uint8_t>(*place.valid | 1 << inByte);
    ++output.rowsWithValue;
  }
  return done;
}

}  // namespace

RowsOutcome EvaluateRowByRow(const RowsCall &call, RowOutput &output) {
  const Owned<void *> routines = Allocate<void *>(call.columnCount);
  if (routines == nullptr || !OutputBegin(output, call.results, call.rows, false)) {
    return RowsOutcome::Failed;
  }
  RowSource source;
  BeginSource(call, source, routines.get());
  bool done = true;
  for (; done && source.row < call.rows; ++source.row) {
    done = EvaluateRow(call, output, source);
  }
  EndSource(call, source, routines.get());
  return done ? RowsOutcome::Done : RowsOutcome::Failed;
}
