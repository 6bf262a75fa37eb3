// Batches from columns: numbers become lanes when all of them share a scale.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "evaluation/batch.h"
#include "evaluation/batch_dates.h"

namespace {

template <class T>
const T *ElementsOf(const BatchRun &run, const OrlColumn &column) {
  return static_cast<const T *>(column.values) + run.first;
}

// The rows of the batch without a value, from the validity bits.
void LoadMissing(const BatchRun &run, const OrlColumn &column, Batch *batch) {
  batch->someMissing = false;
  if (column.valid == nullptr) {
    return;
  }
  batch->missing = {};
  const uint32_t bytes = (run.count + 7) / 8;
  std::memcpy(batch->missing.words, column.valid + run.first / 8, bytes);
  uint64_t any = 0;
  for (uint32_t i = 0; i < (run.count + 63) / 64; ++i) {
    const uint32_t rows = std::min(run.count - i * 64, 64U);
    const uint64_t inBatch = rows == 64 ? ~UINT64_C(0) : (UINT64_C(1) << rows) - 1;
    batch->missing.words[i] = ~batch->missing.words[i] & inBatch;
    any |= batch->missing.words[i];
  }
  batch->someMissing = any != 0;
}

void LoadInt64(const BatchRun &run, const OrlColumn &column, Batch *batch) {
  batch->form = BatchForm::Narrow;
  batch->data = ElementsOf<int64_t>(run, column);
  batch->exponent = -column.scale;
  batch->bound = BoundOf(NarrowLanes(*batch), run.count);
  LoadMissing(run, column, batch);
}

// Each element by itself, as a host's routine would return it.
void LoadEach(const BatchRun &run, const OrlColumn &column, Batch *batch, bool dates) {
  Value *values = OwnElements<Value>(*batch, BatchForm::Values);
  for (uint32_t row = 0; row < run.count; ++row) {
    const int64_t at = run.first + row;
    values[row].form = ValueForm::None;
    if (ColumnHasValue(column, at)) {
      const NumberValue number = ColumnNumber(column, at);
      if (dates) {
        SetPacked(&values[row], &number);
      } else {
        SetNumberFrom(&values[row], &number);
      }
    }
  }
}

// False where an element has more than 26 digits.
bool LoadDecimal128(const BatchRun &run, const OrlColumn &column, Batch *batch) {
  const char *elements = static_cast<const char *>(column.values) + run.first * 16;
  Int128 *lanes = static_cast<Int128 *>(batch->own);
  bool fits = true;
  std::memcpy(lanes, elements, run.count * sizeof(Int128));
  for (uint32_t row = 0; row < run.count; ++row) {
    fits = fits && DecimalFits(lanes[row]);
  }
  if (!fits) {
    return false;
  }
  const uint32_t bound = BoundOf(lanes, run.count);
  if (bound < 64) {
    auto *narrow = static_cast<char *>(batch->own);
    for (uint32_t row = 0; row < run.count; ++row) {
      int64_t lane = 0;
      std::memcpy(&lane, narrow + row * sizeof(Int128), sizeof lane);
      std::memcpy(narrow + row * sizeof lane, &lane, sizeof lane);
    }
  }
  batch->form = bound < 64 ? BatchForm::Narrow : BatchForm::Wide;
  batch->data = batch->own;
  batch->exponent = -column.scale;
  batch->bound = bound;
  LoadMissing(run, column, batch);
  return true;
}

// Sets lanes to the decimals with `scale` places that read back as the same doubles; false where
// one needs more places or digits. No two decimals of up to 15 digits read back as the same double,
// so it is the shortest.
bool LoadDoubles(const double *elements, uint32_t count, int32_t scale, int64_t *lanes) {
  constexpr double kMost = 1e15;
  const auto power = static_cast<double>(kPowersOfTen64.of[scale]);
  bool exact = true;
  for (uint32_t row = 0; row < count; ++row) {
    const double scaled = elements[row] * power;
    const bool small = scaled > -kMost && scaled < kMost;
    const int64_t lane = small ? static_cast<int64_t>(scaled + std::copysign(0.5, scaled)) : 0;
    exact = exact && small && static_cast<double>(lane) / power == elements[row];
    lanes[row] = lane;
  }
  return exact;
}

bool LoadDouble(const BatchRun &run, const OrlColumn &column, Batch *batch) {
  constexpr int32_t kScales[] = {0, 2, 4, 6};
  const double *elements = ElementsOf<double>(run, column);
  auto *lanes = static_cast<int64_t *>(batch->own);
  for (int32_t scale : kScales) {
    // A few rows rule out most scales.
    constexpr uint32_t kFew = 16;
    if (LoadDoubles(elements, std::min(run.count, kFew), scale, lanes) &&
        LoadDoubles(elements, run.count, scale, lanes)) {
      batch->form = BatchForm::Narrow;
      batch->data = lanes;
      batch->exponent = -scale;
      batch->bound = BoundOf(lanes, run.count);
      LoadMissing(run, column, batch);
      return true;
    }
  }
  return false;
}

// Brings numbers of several exponents to the least one; false where a value then does not fit 64
// bits.
bool LoadNumbers(const BatchRun &run, const OrlColumn &column, Batch *batch) {
  const NumberValue *elements = ElementsOf<NumberValue>(run, column);
  auto *lanes = static_cast<int64_t *>(batch->own);
  int32_t least = 0;
  LoadMissing(run, column, batch);
  const auto missing = [&](uint32_t row) {
    return batch->someMissing && HasBit(batch->missing, row);
  };
  const auto unpack = [&](uint32_t row, NarrowDecimal *d) {
    uint32_t head = 0;
    uint64_t low = 0;
    std::memcpy(&head, elements[row].payload, sizeof head);
    std::memcpy(&low, elements[row].payload + 4, sizeof low);
    return elements[row].length == kNumberLength && DecimalUnpackNarrow(head, low, d);
  };
  for (uint32_t row = 0; row < run.count; ++row) {
    NarrowDecimal d;
    if (missing(row)) {
      continue;
    }
    if (!unpack(row, &d)) {
      return false;
    }
    least = std::min(least, d.exponent);
  }
  if (least < -18) {
    return false;
  }
  bool fits = true;
  for (uint32_t row = 0; row < run.count; ++row) {
    NarrowDecimal d = {};
    if (!missing(row)) {
      unpack(row, &d);
    }
    const auto power = static_cast<int64_t>(kPowersOfTen64.of[d.exponent - least]);
    fits = fits && !__builtin_mul_overflow(d.coefficient, power, &lanes[row]);
  }
  if (!fits) {
    return false;
  }
  batch->form = BatchForm::Narrow;
  batch->data = lanes;
  batch->exponent = least;
  batch->bound = BoundOf(lanes, run.count);
  return true;
}

// False where a day is outside the calendar.
bool LoadDates(const BatchRun &run, const OrlColumn &column, Batch *batch) {
  auto *instants = static_cast<int64_t *>(batch->own);
  bool inCalendar = true;
  LoadMissing(run, column, batch);
  for (uint32_t row = 0; row < run.count; ++row) {
    const bool missing = batch->someMissing && HasBit(batch->missing, row);
    int64_t instant = 0;
    if (!missing && column.form == ORL_COLUMN_TIMESTAMP) {
      instant = ElementsOf<int64_t>(run, column)[row];
    } else if (!missing) {
      const int64_t day = ElementsOf<int32_t>(run, column)[row];
      inCalendar = inCalendar && IsCalendarDay(day);
      instant = IsCalendarDay(day) ? day * kMicrosecondsOfDay : 0;
    }
    inCalendar = inCalendar && IsCalendarInstant(instant);
    instants[row] = instant;
  }
  batch->form = BatchForm::Dates;
  batch->data = batch->own;
  return inCalendar;
}

void LoadTexts(const BatchRun &run, const OrlColumn &column, Batch *batch) {
  auto *slices = OwnElements<TextSlice>(*batch, BatchForm::Texts);
  const char *bytes = static_cast<const char *>(column.values);
  const int32_t *offsets = column.offsets + run.first;
  const auto all = static_cast<size_t>(offsets[run.count] - offsets[0]);
  const bool zeros = all != 0 && std::memchr(bytes + offsets[0], 0, all) != nullptr;
  batch->ascii = IsAscii(bytes + offsets[0], all);
  for (uint32_t row = 0; row < run.count; ++row) {
    const int64_t at = run.first + row;
    if (!ColumnHasValue(column, at)) {
      slices[row] = {nullptr, 0};
    } else if (zeros || offsets[row] == offsets[row + 1]) {
      slices[row] = ColumnText(column, at);
    } else {
      slices[row] = {bytes + offsets[row], static_cast<uint32_t>(offsets[row + 1] - offsets[row])};
    }
  }
}

bool LoadLanes(const BatchRun &run, const OrlColumn &column, Batch *batch, bool dates) {
  switch (column.form) {
    case ORL_COLUMN_INT64:
      LoadInt64(run, column, batch);
      return true;
    case ORL_COLUMN_DECIMAL128:
      return LoadDecimal128(run, column, batch);
    case ORL_COLUMN_DOUBLE:
      return LoadDouble(run, column, batch);
    case ORL_COLUMN_NUMBER:
      return !dates && LoadNumbers(run, column, batch);
    default:
      return LoadDates(run, column, batch);
  }
}

}  // namespace

void LoadColumn(const BatchRun &run, const OrlColumn &column, int32_t type, Batch *batch) {
  const bool dates = type == ORL_TYPE_DATE;
  batch->single = false;
  if (column.form == ORL_COLUMN_TEXT) {
    LoadTexts(run, column, batch);
  } else if (!LoadLanes(run, column, batch, dates)) {
    LoadEach(run, column, batch, dates);
  }
}
