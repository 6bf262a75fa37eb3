// Conversion of batches to the elements of results.
#include <bit>
#include <cstring>

#include "dates/stored_date.h"
#include "evaluation/batch.h"
#include "evaluation/batch_dates.h"
#include "evaluation/row_output.h"
#include "evaluation/scaled_integer.h"

namespace {

struct Target {
  const OrlRowResults *results;
  uint8_t *elements;
  RowBits stored;  // rows with a value
};

void MarkAll(const BatchRun &run, const Batch &batch, RowBits *stored) {
  for (uint32_t i = 0; i * 64 < run.count; ++i) {
    const uint32_t rows = run.count - i * 64;
    const uint64_t inBatch = rows >= 64 ? ~UINT64_C(0) : (UINT64_C(1) << rows) - 1;
    stored->words[i] = inBatch & ~(batch.someMissing ? batch.missing.words[i] : 0);
  }
}

// Rows without a value are filled with zero bytes.
void ClearMissing(const BatchRun &run, uint32_t size, Target &target) {
  for (uint32_t row = 0; row < run.count; ++row) {
    if (!HasBit(target.stored, row)) {
      std::memset(target.elements + size_t{row} * size, 0, size);
    }
  }
}

// Stores lanes as integers of the scale when their bound shows that they fit; false otherwise.
bool StoreScaled(const BatchRun &run, const Batch &batch, Target &target) {
  constexpr uint32_t kSafe = 62;
  const int32_t shift = target.results->scale + batch.exponent;
  if (shift < 0 || shift > 18 || batch.bound + static_cast<uint32_t>(shift * 10 / 3 + 1) > kSafe) {
    return false;
  }
  const int64_t *lanes = NarrowLanes(batch);
  if (shift == 0) {
    std::memcpy(target.elements, lanes, run.count * sizeof(int64_t));
  } else {
    const auto power = static_cast<int64_t>(kPowersOfTen64.of[shift]);
    for (uint32_t row = 0; row < run.count; ++row) {
      const int64_t lane = lanes[row] * power;
      std::memcpy(target.elements + row * sizeof lane, &lane, sizeof lane);
    }
  }
  return true;
}

// Wide lanes with more places than the scale, which are common after a division.
bool StoreRounded(const BatchRun &run, const Batch &batch, Target &target) {
  const int32_t digits = -(target.results->scale + batch.exponent);
  if (digits <= 0 || digits >= kPowers) {
    return false;
  }
  const PowerDivision by = DivisionBy(digits);
  const Int128 *lanes = WideLanes(batch);
  bool fits = true;
  for (uint32_t row = 0; fits && row < run.count; ++row) {
    const Int128 rounded = RoundedQuotient(by, lanes[row]);
    const auto element = static_cast<int64_t>(rounded);
    fits = element == rounded;
    std::memcpy(target.elements + row * sizeof element, &element, sizeof element);
  }
  return fits;
}

void StorePacked(const BatchRun &run, const Batch &batch, Target &target) {
  const int64_t *lanes = NarrowLanes(batch);
  auto *numbers = reinterpret_cast<NumberValue *>(target.elements);
  for (uint32_t row = 0; row < run.count; ++row) {
    DecimalStore(&numbers[row], {lanes[row], batch.exponent});
  }
}

// The quotient of an integer and a power of ten that doubles hold exactly is the nearest double.
bool StoreQuotients(const BatchRun &run, const Batch &batch, Target &target) {
  constexpr uint32_t kExactBound = 53;
  constexpr int32_t kExactPower = 22;
  if (batch.bound > kExactBound || -batch.exponent > kExactPower) {
    return false;
  }
  const int64_t *lanes = NarrowLanes(batch);
  const auto power = static_cast<double>(kPowersOfTen.of[-batch.exponent]);
  for (uint32_t row = 0; row < run.count; ++row) {
    const double quotient = static_cast<double>(lanes[row]) / power;
    std::memcpy(target.elements + row * sizeof quotient, &quotient, sizeof quotient);
  }
  return true;
}

// Stores lanes that all fit their elements; false where that is not certain.
bool StoreLanes(const BatchRun &run, const Batch &batch, Target &target) {
  if (batch.form == BatchForm::Wide && target.results->form == ORL_COLUMN_INT64) {
    return StoreRounded(run, batch, target);
  }
  if (batch.form != BatchForm::Narrow) {
    return false;
  }
  switch (target.results->form) {
    case ORL_COLUMN_INT64:
      return StoreScaled(run, batch, target);
    case ORL_COLUMN_DOUBLE:
      return StoreQuotients(run, batch, target);
    case ORL_COLUMN_NUMBER:
      StorePacked(run, batch, target);
      return true;
    default:
      return false;
  }
}

bool StoreInstant(uint8_t *element, int32_t form, int64_t instant) {
  if (form == ORL_COLUMN_DATE32) {
    const auto day = static_cast<int32_t>(DayOfInstant(instant));
    std::memcpy(element, &day, sizeof day);
  } else if (form == ORL_COLUMN_TIMESTAMP) {
    std::memcpy(element, &instant, sizeof instant);
  } else {
    NumberValue date;
    EncodeDate(&date, PartsOfInstant(instant));
    return StoreElement(element, form, 0, date);
  }
  return true;
}

bool StoreLane(uint8_t *element, const Target &target, const Batch &batch, uint32_t row) {
  const int32_t form = target.results->form;
  const int32_t scale = target.results->scale;
  if (form != ORL_COLUMN_INT64 && form != ORL_COLUMN_DECIMAL128) {
    return StoreNumber(element, form, scale, LaneNumber(batch, row));
  }
  // Trailing zeros do not matter.
  const Int128 lane =
      batch.form == BatchForm::Narrow ? NarrowLanes(batch)[row] : WideLanes(batch)[row];
  return StoreInteger(element, form, scale, {lane, batch.exponent});
}

void StoreEach(const BatchRun &run, const Batch &batch, uint32_t size, Target &target) {
  const int32_t form = target.results->form;
  const int32_t scale = target.results->scale;
  for (uint32_t row = 0; row < run.count; ++row) {
    uint8_t *element = target.elements + size_t{row} * size;
    bool stored = false;
    if (batch.form == BatchForm::Dates) {
      stored = !(batch.someMissing && HasBit(batch.missing, row)) &&
               StoreInstant(element, form, NarrowLanes(batch)[row]);
    } else if (batch.form == BatchForm::Values) {
      const Value &value = ValuesOf(batch)[row];
      if (IsNumber(value)) {
        stored = StoreNumber(element, form, scale, NumberOf(value));
      } else if (value.form == ValueForm::Packed) {
        NumberValue packed;
        StoreValue(&packed, value);
        stored = StoreElement(element, form, scale, packed);
      }
    } else if (IsLanes(batch) && !(batch.someMissing && HasBit(batch.missing, row))) {
      stored = StoreLane(element, target, batch, row);
    }
    target.stored.words[row / 64] |= static_cast<uint64_t>(stored) << (row % 64);
  }
}

bool StoreTexts(const BatchRun &run, RowOutput &output, const Batch &batch, Target &target) {
  const bool texts = batch.form == BatchForm::Texts;
  uint64_t total = 0;
  for (uint32_t row = 0; texts && row < run.count; ++row) {
    total += SlicesOf(batch)[row].length;
  }
  char *end = OutputText(output, total);
  if (end == nullptr) {
    return false;
  }
  for (uint32_t row = 0; row < run.count; ++row) {
    const TextSlice text = texts ? SlicesOf(batch)[row] : TextSlice{nullptr, 0};
    if (text.bytes != nullptr) {
      end = AppendText(end, text);
      output.textUsed += text.length;
      target.stored.words[row / 64] |= UINT64_C(1) << (row % 64);
    }
    const auto used = static_cast<int32_t>(output.textUsed);
    std::memcpy(target.elements + row * sizeof used, &used, sizeof used);
  }
  return true;
}

}  // namespace

bool StoreBatch(const BatchRun &run, RowOutput &output, const Batch &batch) {
  const RowPlace place = OutputPlace(output, run.first);
  if (place.elements == nullptr) {
    return false;
  }
  Target target = {output.results, place.elements, {}};
  if (output.results->form == ORL_COLUMN_TEXT) {
    if (!StoreTexts(run, output, batch, target)) {
      return false;
    }
  } else if (StoreLanes(run, batch, target)) {
    MarkAll(run, batch, &target.stored);
    if (batch.someMissing) {
      ClearMissing(run, output.elementSize, target);
    }
  } else {
    StoreEach(run, batch, output.elementSize, target);
    ClearMissing(run, output.elementSize, target);
  }
  for (uint64_t word : target.stored.words) {
    output.rowsWithValue += std::popcount(word);
  }
  if (place.valid != nullptr) {
    std::memcpy(place.valid, target.stored.words, (run.count + 7) / 8);
  }
  return true;
}
