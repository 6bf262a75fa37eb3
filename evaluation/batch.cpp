// Batches of one value, conversions between the forms of a batch, and the strings that a batch
// creates.
#include "evaluation/batch.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "dates/stored_date.h"
#include "evaluation/batch_dates.h"
#include "platform/owned.h"

namespace {

constexpr uint32_t kArenaBlock = 64 * 1024;

void FreeBlocks(ArenaBlock *block) {
  while (block != nullptr) {
    const Owned<ArenaBlock> ended(block);
    block = block->next;
  }
}

template <class T>
void Repeat(Batch *batch, uint32_t count) {
  const T value = *static_cast<const T *>(batch->data);
  batch->data = batch->own;
  std::fill_n(static_cast<T *>(batch->own), count, value);
}

}  // namespace

char *ArenaText(TextArena &arena, uint32_t length) {
  ArenaBlock *block = arena.blocks;
  if (block == nullptr || length > block->size - block->used) {
    const uint64_t size = std::max<uint64_t>(length, kArenaBlock);
    block = size + sizeof(ArenaBlock) > UINT32_MAX
                ? nullptr
                : static_cast<ArenaBlock *>(
                      WRENMemAlloc(static_cast<uint32_t>(size + sizeof(ArenaBlock))));
    if (block == nullptr) {
      return nullptr;
    }
    *block = {arena.blocks, 0, static_cast<uint32_t>(size)};
    arena.blocks = block;
  }
  char *text = reinterpret_cast<char *>(block + 1) + block->used;
  block->used += length;
  arena.bytes += length;
  return text;
}

char *ArenaTexts(BatchRun &run, uint64_t length) {
  run.arena.bytes += length;
  if (ArenaIsFull(run)) {
    return nullptr;
  }
  run.arena.bytes -= length;
  char *texts = length > UINT32_MAX ? nullptr : ArenaText(run.arena, static_cast<uint32_t>(length));
  run.outOfMemory = run.outOfMemory || texts == nullptr;
  return texts;
}

void ArenaReset(TextArena &arena) {
  ArenaBlock *block = arena.blocks;
  arena.bytes = 0;
  if (block == nullptr) {
    return;
  }
  if (block->size > kArenaBlock) {
    ArenaFree(arena);
    return;
  }
  FreeBlocks(block->next);
  *block = {nullptr, 0, block->size};
}

void ArenaFree(TextArena &arena) {
  FreeBlocks(arena.blocks);
  arena = {};
}

bool IsAscii(const char *bytes, uint64_t length) {
  uint64_t all = 0;
  uint64_t word = 0;
  for (; length >= sizeof word; length -= sizeof word, bytes += sizeof word) {
    std::memcpy(&word, bytes, sizeof word);
    all |= word;
  }
  for (uint64_t i = 0; i < length; ++i) {
    all |= static_cast<uint8_t>(bytes[i]);
  }
  return (all & UINT64_C(0x8080808080808080)) == 0;
}

void SetSingleNumber(Batch *batch, const Decimal &number) {
  Value value;
  SetNumber(&value, number);
  if (number.exponent > 0) {
    SetSingleValue(batch, value);
    return;
  }
  batch->single = true;
  batch->someMissing = false;
  batch->exponent = number.exponent;
  if (value.form == ValueForm::Narrow) {
    *OwnElements<int64_t>(*batch, BatchForm::Narrow) = value.narrow;
    batch->bound = BoundOf(NarrowLanes(*batch), 1);
  } else {
    *OwnElements<Int128>(*batch, BatchForm::Wide) = value.wide;
    batch->bound = BoundOf(WideLanes(*batch), 1);
  }
}

void SetSingleValue(Batch *batch, const Value &value) {
  batch->single = true;
  *OwnElements<Value>(*batch, BatchForm::Values) = value;
}

void SetSingleInstant(Batch *batch, int64_t instant) {
  batch->single = true;
  batch->someMissing = false;
  *OwnElements<int64_t>(*batch, BatchForm::Dates) = instant;
}

void SetSingleText(Batch *batch, const char *bytes, uint32_t length) {
  batch->single = true;
  *OwnElements<TextSlice>(*batch, BatchForm::Texts) = {bytes, length};
  batch->ascii = IsAscii(bytes, length);
}

void SetNoValues(Batch *batch) {
  Value none;
  none.form = ValueForm::None;
  SetSingleValue(batch, none);
}

uint32_t BoundOf(const int64_t *lanes, uint32_t count) {
  uint64_t all = 0;
  for (uint32_t row = 0; row < count; ++row) {
    all |= static_cast<uint64_t>(lanes[row] ^ (lanes[row] >> 63));
  }
  return 64 - static_cast<uint32_t>(std::countl_zero(all));
}

uint32_t BoundOf(const Int128 *lanes, uint32_t count) {
  Uint128 all = 0;
  for (uint32_t row = 0; row < count; ++row) {
    all |= static_cast<Uint128>(lanes[row] ^ (lanes[row] >> 127));
  }
  const auto high = static_cast<uint64_t>(all >> 64);
  const int zeros =
      high != 0 ? std::countl_zero(high) : 64 + std::countl_zero(static_cast<uint64_t>(all));
  return 128 - static_cast<uint32_t>(zeros);
}

Decimal LaneNumber(const Batch &batch, uint32_t row) {
  Decimal d = {batch.form == BatchForm::Narrow ? NarrowLanes(batch)[row] : WideLanes(batch)[row],
               batch.exponent};
  while (!DecimalFits(d.coefficient)) {
    d.coefficient /= 10;  // a zero after the digits
    ++d.exponent;
  }
  return d;
}

void SetNarrowLanes(Batch *batch, uint32_t count, int32_t exponent) {
  batch->form = BatchForm::Narrow;
  batch->data = batch->own;
  batch->exponent = exponent;
  batch->bound = BoundOf(NarrowLanes(*batch), count);
}

void MergeMissing(Batch *left, const Batch &right) {
  if (!right.someMissing) {
    return;
  }
  if (!left->someMissing) {
    left->missing = right.missing;
    left->someMissing = true;
    return;
  }
  for (uint32_t i = 0; i < std::size(left->missing.words); ++i) {
    left->missing.words[i] |= right.missing.words[i];
  }
}

// From the last row to the first, since values are larger than the lanes that they replace.
void MakeValues(const BatchRun &run, Batch *batch) {
  if (batch->form == BatchForm::Values) {
    return;
  }
  if (batch->form == BatchForm::Texts) {
    SetNoValues(batch);
    return;
  }
  const Batch lanes = *batch;
  Value *values = OwnElements<Value>(*batch, BatchForm::Values);
  for (uint32_t row = RowsOf(run, lanes); row-- > 0;) {
    Value value;
    if (lanes.form == BatchForm::Dates) {
      NumberValue date;
      EncodeDate(&date, PartsOfInstant(NarrowLanes(lanes)[row]));
      SetPacked(&value, &date);
    } else {
      SetNumber(&value, LaneNumber(lanes, row));
    }
    if (lanes.someMissing && HasBit(lanes.missing, row)) {
      value.form = ValueForm::None;
    }
    std::memcpy(static_cast<void *>(values + row), &value, sizeof value);
  }
}

void MakeRows(const BatchRun &run, Batch *batch) {
  if (!batch->single) {
    return;
  }
  switch (batch->form) {
    case BatchForm::Narrow:
    case BatchForm::Dates:
      Repeat<int64_t>(batch, run.count);
      break;
    case BatchForm::Wide:
      Repeat<Int128>(batch, run.count);
      break;
    case BatchForm::Values:
      Repeat<Value>(batch, run.count);
      break;
    case BatchForm::Texts:
      Repeat<TextSlice>(batch, run.count);
      break;
  }
  batch->single = false;
}
