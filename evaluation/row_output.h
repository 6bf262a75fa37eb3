// The destination of the results of rows: blocks of the engine first, since a failure must leave
// the host's memory unchanged; or the host's memory directly when nothing can fail any more.
#ifndef ORLI11_EVALUATION_ROW_OUTPUT_H
#define ORLI11_EVALUATION_ROW_OUTPUT_H

#include <cstdint>

#include "orli11.h"
#include "platform/owned.h"

// Rows of one block of the engine.
constexpr int64_t kChunkRows = 65536;

struct RowOutput {
  OrlRowResults *results = nullptr;
  int64_t rows = 0;
  int64_t rowsWithValue = 0;
  uint32_t elementSize = 0;  // TEXT: of the end offset of a row's string
  Owned<uint8_t *> chunks;   // each owned: elements and then bits; null for direct results
  uint32_t chunkCount = 0;
  OwnedText text;  // until it is published
  uint32_t textUsed = 0;

  RowOutput() = default;
  ~RowOutput();
  RowOutput(const RowOutput &) = delete;
  RowOutput &operator=(const RowOutput &) = delete;
};

// Prepares an output, once. With `direct` the results are written to the host's memory at once.
// False when out of memory.
bool OutputBegin(RowOutput &output, OrlRowResults *results, int64_t rows, bool direct);

// The destination of the results of some rows, from a row that is a multiple of 8 to the end of its
// chunk.
struct RowPlace {
  uint8_t *elements;
  uint8_t *valid;  // null when the host does not want it
};
// Null elements when out of memory.
RowPlace OutputPlace(RowOutput &output, int64_t row);

// TEXT: space for `length` bytes after the previous strings; null when out of memory and when the
// strings together exceed 2^31 - 1 bytes. The bytes are added by raising textUsed.
char *OutputText(RowOutput &output, uint64_t length);

// Copies the results to the host. False when out of memory, with nothing copied.
bool OutputPublish(RowOutput &output);

#endif
