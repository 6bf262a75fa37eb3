// The built-in functions with a batch form, and the batch forms of those on dates.
#include "evaluation/batch_functions.h"

#include "evaluation/batch_dates.h"
#include "functions/inner_routines.h"

namespace {

// A part of a missing date is null, which no lane can represent.
template <class Number>
bool EachDate(BatchRun &run, Batch *frame, uint32_t count, Number number) {
  const Batch &dates = frame[1];
  if (count != 1 || dates.form != BatchForm::Dates || dates.someMissing) {
    return false;
  }
  const uint32_t rows = RowsOf(run, dates);
  const int64_t *instants = NarrowLanes(dates);
  auto *numbers = static_cast<int64_t *>(frame->own);
  for (uint32_t row = 0; row < rows; ++row) {
    numbers[row] = number(instants[row]);
  }
  SetNarrowLanes(frame, rows, 0);
  frame->someMissing = false;
  frame->single = dates.single;
  return true;
}

template <uint32_t CalendarDay::*part>
bool EachDay(BatchRun &run, Batch *frame, uint32_t count) {
  return EachDate(run, frame, count,
                  [](int64_t instant) { return CalendarDayOf(DayOfInstant(instant)).*part; });
}

bool EachQuarter(BatchRun &run, Batch *frame, uint32_t count) {
  return EachDate(run, frame, count, [](int64_t instant) {
    return (CalendarDayOf(DayOfInstant(instant)).month + 2) / 3;
  });
}

template <int64_t length, int64_t most>
bool EachTime(BatchRun &run, Batch *frame, uint32_t count) {
  return EachDate(run, frame, count, [](int64_t instant) {
    return (instant - DayOfInstant(instant) * kMicrosecondsOfDay) / length % most;
  });
}

struct FunctionRow {
  InnerRoutine inner;
  BatchRoutine routine;
};

constexpr FunctionRow kFunctions[] = {
    {InnerDateYear, EachDay<&CalendarDay::year>},
    {InnerDateMonth, EachDay<&CalendarDay::month>},
    {InnerDateDay, EachDay<&CalendarDay::day>},
    {InnerDateQuarter, EachQuarter},
    {InnerDateHour, EachTime<INT64_C(3600000000), 24>},
    {InnerDateMinute, EachTime<60000000, 60>},
    {InnerDateSecond, EachTime<1000000, 60>},
    {InnerStrLeft, BatchStrLeft},
    {InnerStrRight, BatchStrRight},
    {InnerStrMid, BatchStrMid},
    {InnerStrLength, BatchStrLength},
    {InnerStrTrim, BatchStrTrim},
    {InnerStrLTrim, BatchStrLTrim},
    {InnerStrRTrim, BatchStrRTrim},
    {InnerStrUpper, BatchStrUpper},
    {InnerStrLower, BatchStrLower},
};

}  // namespace

BatchRoutine BatchRoutineOf(const BuiltIn *builtIn) {
  for (const FunctionRow &row : kFunctions) {
    if (row.inner == builtIn->inner) {
      return row.routine;
    }
  }
  return nullptr;
}
