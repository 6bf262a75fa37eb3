// A batch of rows: the values of one part of a formula for up to kBatchRows rows at a time.
//
// Numbers of one scale are lanes: integers that share an exponent, of 64 bits or, where products or
// long constants need it, of 128. A bound on the magnitudes of a batch shows before an operation
// whether its results fit, so that the loop over the rows needs no check. Everything else (numbers
// of several scales, nulls, dates) is an array of the interpreter's values, and strings are slices
// of columns, of literals and of an arena.
#ifndef ORLI11_EVALUATION_BATCH_H
#define ORLI11_EVALUATION_BATCH_H

#include <cstdint>
#include <cstring>

#include "evaluation/evaluation.h"
#include "evaluation/rows.h"

// The most rows of a batch. Batches begin at multiples of 8.
constexpr uint32_t kBatchRows = 1024;
constexpr uint32_t kLeastBatchRows = 8;

enum class BatchForm : uint8_t {
  Narrow,  // int64_t lanes
  Wide,    // Int128 lanes of at most 26 significant digits, with zeros after them
  Dates,   // int64_t, instants of the calendar; see batch_dates.h
  Values,  // Value: Narrow, Wide, Packed or None
  Texts    // TextSlice; null bytes where there is no value
};

// One bit for each row.
struct RowBits {
  uint64_t words[kBatchRows / 64];
};

inline bool HasBit(const RowBits &bits, uint32_t row) {
  return (bits.words[row / 64] >> (row % 64) & 1) != 0;
}

struct Batch {
  BatchForm form;
  bool single;       // all rows have the value of the first
  bool someMissing;  // lanes, dates: `missing` holds, else every row has a value
  bool ascii;        // texts: all are known to be ASCII
  int32_t exponent;  // lanes: of all rows, not above 0
  uint32_t bound;    // lanes: no magnitude is above 2^bound
  const void *data;  // in `own`, or of a column or another batch
  void *own;         // capacity for a Value per row
  Word *call;        // of a frame, which waits for its arguments
  RowBits missing;   // rows without a value
};

// The strings that a batch creates.
struct ArenaBlock {
  ArenaBlock *next;
  uint32_t used, size;
};
struct TextArena {
  ArenaBlock *blocks;  // the last one first
  uint64_t bytes;
};

// Space for a string; null when out of memory.
char *ArenaText(TextArena &arena, uint32_t length);
// Frees all strings. One block of the usual size is kept for the next batch.
void ArenaReset(TextArena &arena);
void ArenaFree(TextArena &arena);

// A batch that is being computed.
struct BatchRun {
  const RowsCall *call;
  int64_t first = 0;
  uint32_t count = 0;
  bool outOfMemory = false;
  TextArena arena = {};
  Evaluation inner;  // for functions and operators that are called row by row

  explicit BatchRun(const RowsCall *of) : call(of), inner(of->ec, of->exp) {}
  ~BatchRun() { ArenaFree(arena); }
  BatchRun(const BatchRun &) = delete;
  BatchRun &operator=(const BatchRun &) = delete;
};

// Whether the batch has created so much text that it should have fewer rows. Steps may stop then,
// since the batch starts over.
inline bool ArenaIsFull(const BatchRun &run) {
  constexpr uint64_t kMostBytes = UINT64_C(4) << 20;
  return run.arena.bytes > kMostBytes && run.count > kLeastBatchRows;
}
// Space for the strings that a step creates for all rows; null when they fill the arena, and when
// out of memory.
char *ArenaTexts(BatchRun &run, uint64_t length);

// ---- Elements ----

inline const int64_t *NarrowLanes(const Batch &batch) {
  return static_cast<const int64_t *>(batch.data);
}
inline const Int128 *WideLanes(const Batch &batch) {
  return static_cast<const Int128 *>(batch.data);
}
inline const Value *ValuesOf(const Batch &batch) {
  return static_cast<const Value *>(batch.data);
}
inline const TextSlice *SlicesOf(const Batch &batch) {
  return static_cast<const TextSlice *>(batch.data);
}
inline uint32_t RowsOf(const BatchRun &run, const Batch &batch) {
  return batch.single ? 1 : run.count;
}
inline bool IsLanes(const Batch &batch) {
  return batch.form == BatchForm::Narrow || batch.form == BatchForm::Wide;
}

// Sets the batch's elements to its own memory and returns it.
template <class T>
T *OwnElements(Batch &batch, BatchForm form) {
  batch.form = form;
  batch.ascii = false;
  batch.data = batch.own;
  return static_cast<T *>(batch.own);
}

// Whether all bytes are ASCII, which is the same in every code page.
bool IsAscii(const char *bytes, uint64_t length);

// Copies strings that are mostly short; returns the position after the copy.
inline char *AppendText(char *target, const TextSlice &text) {
  const uint32_t length = text.length;
  uint64_t first = 0;
  uint64_t last = 0;
  if (length > 16) {
    std::memcpy(target, text.bytes, length);
  } else if (length >= 8) {
    std::memcpy(&first, text.bytes, sizeof first);
    std::memcpy(&last, text.bytes + length - sizeof last, sizeof last);
    std::memcpy(target, &first, sizeof first);
    std::memcpy(target + length - sizeof last, &last, sizeof last);
  } else if (length >= 4) {
    std::memcpy(&first, text.bytes, 4);
    std::memcpy(&last, text.bytes + length - 4, 4);
    std::memcpy(target, &first, 4);
    std::memcpy(target + length - 4, &last, 4);
  } else if (length > 0) {
    target[0] = text.bytes[0];
    target[length / 2] = text.bytes[length / 2];
    target[length - 1] = text.bytes[length - 1];
  }
  return target + length;
}

// ---- Making batches; `own` is unchanged ----

void SetSingleNumber(Batch *batch, const Decimal &number);
void SetSingleValue(Batch *batch, const Value &value);
void SetSingleInstant(Batch *batch, int64_t instant);
void SetSingleText(Batch *batch, const char *bytes, uint32_t length);
void SetNoValues(Batch *batch);

// The elements of the batch's rows of a column, for an item of the type.
void LoadColumn(const BatchRun &run, const OrlColumn &column, int32_t type, Batch *batch);

// The smallest bound that holds for some lanes.
uint32_t BoundOf(const int64_t *lanes, uint32_t count);
uint32_t BoundOf(const Int128 *lanes, uint32_t count);

// Sets the batch's elements to `count` lanes in its own memory.
void SetNarrowLanes(Batch *batch, uint32_t count, int32_t exponent);
// Marks the rows of `left` that are missing in `right` as missing too.
void MergeMissing(Batch *left, const Batch &right);

// Converts lanes and dates to values; a batch of values is unchanged, and a batch of strings
// becomes all missing.
void MakeValues(const BatchRun &run, Batch *batch);
// One element for each row, where all rows shared one.
void MakeRows(const BatchRun &run, Batch *batch);
// A row's lane as a number.
Decimal LaneNumber(const Batch &batch, uint32_t row);

// ---- Steps: the result replaces the left batch ----

void BatchArithmetic(BatchRun &run, Operation operation, Batch *left, Batch *right);
void BatchMoveDate(const BatchRun &run, const Instruction &instruction, Batch *left, Batch *right);
void BatchSubtractDates(BatchRun &run, Batch *left, Batch *right);
void BatchConcatenate(BatchRun &run, Batch *left, Batch *right);
// A call of a built-in function: the result replaces the frame, which the arguments follow.
void BatchCall(BatchRun &run, Word *code, Batch *frame, uint32_t count);

// ---- Results ----

struct RowOutput;

// Writes the batch to the results of its rows. False when out of memory, or when the strings
// together are too long.
bool StoreBatch(const BatchRun &run, RowOutput &output, const Batch &batch);

#endif
