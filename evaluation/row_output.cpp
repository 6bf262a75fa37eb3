#include "evaluation/row_output.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "evaluation/rows.h"
#include "platform/owned.h"

namespace {

int64_t RowsOfChunk(const RowOutput &output, int64_t chunk) {
  return std::min(kChunkRows, output.rows - chunk * kChunkRows);
}

int64_t BytesOfBits(int64_t rows) {
  return (rows + 7) / 8;
}

// The last chunk ends with the last row.
uint8_t *NewChunk(const RowOutput &output, int64_t chunk) {
  const int64_t rows = RowsOfChunk(output, chunk);
  return static_cast<uint8_t *>(
      WRENMemAlloc(static_cast<uint32_t>(rows * output.elementSize + BytesOfBits(rows))));
}

void PublishChunk(const RowOutput &output, int64_t chunk) {
  const OrlRowResults &results = *output.results;
  const int64_t first = chunk * kChunkRows;
  const int64_t rows = RowsOfChunk(output, chunk);
  const uint8_t *elements = output.chunks.get()[chunk];
  const auto size = static_cast<size_t>(rows * output.elementSize);
  void *target = results.form == ORL_COLUMN_TEXT
                     ? static_cast<void *>(results.offsets + first + 1)
                     : static_cast<uint8_t *>(results.values) + first * output.elementSize;
  std::memcpy(target, elements, size);
  if (results.valid != nullptr) {
    std::memcpy(results.valid + first / 8, elements + size, static_cast<size_t>(BytesOfBits(rows)));
  }
}

// The block of the strings in its final size.
char *FinishText(RowOutput &output) {
  if (output.text == nullptr) {
    return static_cast<char *>(WRENMemAlloc(1));
  }
  return static_cast<char *>(WRENMemRealloc(output.text.get(), output.textUsed));
}

}  // namespace

RowOutput::~RowOutput() {
  for (uint32_t i = 0; i < chunkCount; ++i) {
    const Owned<uint8_t> chunk(chunks.get()[i]);
  }
}

bool OutputBegin(RowOutput &output, OrlRowResults *results, int64_t rows, bool direct) {
  assert(output.results == nullptr);
  output.results = results;
  output.rows = rows;
  output.elementSize = ElementSize(results->form);
  if (direct || rows == 0) {
    return true;
  }
  const int64_t count = (rows + kChunkRows - 1) / kChunkRows;
  output.chunks = Allocate<uint8_t *>(static_cast<uint64_t>(count));
  output.chunkCount = output.chunks == nullptr ? 0 : static_cast<uint32_t>(count);
  return output.chunks != nullptr;
}

RowPlace OutputPlace(RowOutput &output, int64_t row) {
  assert(row >= 0 && row < output.rows);
  if (output.chunks == nullptr) {
    OrlRowResults &results = *output.results;
    return {static_cast<uint8_t *>(results.values) + row * output.elementSize,
            results.valid == nullptr ? nullptr : results.valid + row / 8};
  }
  const int64_t chunk = row / kChunkRows;
  const int64_t inChunk = row % kChunkRows;
  uint8_t *&elements = output.chunks.get()[chunk];
  if (elements == nullptr) {
    elements = NewChunk(output, chunk);
    if (elements == nullptr) {
      return {};
    }
  }
  return {elements + inChunk * output.elementSize,
          elements + RowsOfChunk(output, chunk) * output.elementSize + inChunk / 8};
}

char *OutputText(RowOutput &output, uint64_t length) {
  constexpr uint64_t kFirstSize = 4096;
  const uint64_t wanted = output.textUsed + length;
  if (wanted > INT32_MAX) {
    return nullptr;
  }
  const uint64_t size = WRENMemSize(output.text.get());
  if (wanted > size || output.text == nullptr) {
    const uint64_t larger = std::max({wanted, size * 2, kFirstSize});
    const auto bytes = static_cast<uint32_t>(std::min<uint64_t>(larger, INT32_MAX));
    auto *grown = static_cast<char *>(WRENMemRealloc(output.text.get(), bytes));
    if (grown == nullptr) {
      return nullptr;
    }
    static_cast<void>(output.text.release());  // it has moved
    output.text.reset(grown);
  }
  return output.text.get() + output.textUsed;
}

bool OutputPublish(RowOutput &output) {
  OrlRowResults &results = *output.results;
  if (results.form == ORL_COLUMN_TEXT) {
    char *text = FinishText(output);
    if (text == nullptr) {
      return false;
    }
    results.values = text;
    results.offsets[0] = 0;
    static_cast<void>(output.text.release());  // the host owns it
  }
  for (uint32_t i = 0; i < output.chunkCount; ++i) {
    PublishChunk(output, i);
  }
  return true;
}
