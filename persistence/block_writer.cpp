// The writer of EC blocks: always the latest version.
#include <algorithm>
#include <cstring>

#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/items.h"
#include "persistence/block_format.h"

namespace {

// The filled part of the host's buffer. What does not fit is omitted and sets `overflow`.
struct BlockTarget {
  uint8_t *buffer;
  int64_t capacity;
  int64_t position;
  bool overflow;
};

int64_t TextSize(const char *text) {
  return text == nullptr ? 1 : static_cast<int64_t>(std::strlen(text)) + 1;
}

bool Fits(BlockTarget &target, int64_t size) {
  const bool fits = target.position + size <= target.capacity;
  target.overflow = target.overflow || !fits;
  return fits;
}

void PutBytes(BlockTarget &target, const void *bytes, int64_t size) {
  std::memcpy(target.buffer + target.position, bytes, static_cast<size_t>(size));
  target.position += size;
}

void PutText(BlockTarget &target, const char *text) {
  PutBytes(target, text == nullptr ? "" : text, TextSize(text));
}

// The number of elements that hold a row; a failed load may have left an empty one.
template <typename Row, typename Visit>
void ForEachRow(HandleArray table, Visit visit) {
  for (uint32_t i = 0; i < HandleArrayRows(table); ++i) {
    const Row *row = static_cast<const Row *>(HandleArrayPointerAt(table, i));
    if (row != nullptr) {
      visit(*row);
    }
  }
}

template <typename Row>
uint16_t CountRows(HandleArray table) {
  uint16_t count = 0;
  ForEachRow<Row>(table, [&count](const Row &) { ++count; });
  return count;
}

template <typename Visit>
void ForEachOperatorName(EC ec, Visit visit) {
  for (const OperatorSlots &group : ec->operators) {
    for (const char *name : group.names) {
      visit(name);
    }
  }
}

int64_t SizeOf(const ExprItem &row) {
  return int64_t{sizeof(OrlStoredInput)} + TextSize(row.routineName);
}

int64_t SizeOf(const Expression &row) {
  return TextSize(row.text) + TextSize(row.entry.name);
}

// A header is never the end of a block, so one byte must fit after it.
bool PutHeader(BlockTarget &target, uint16_t tag, uint16_t count) {
  if (!Fits(target, ORL_BLOCK_HEADER_SIZE + 1)) {
    return false;
  }
  const uint16_t header[] = {tag, count};
  static_assert(sizeof header == ORL_BLOCK_HEADER_SIZE);
  PutBytes(target, header, sizeof header);
  return true;
}

void PutInput(BlockTarget &target, const ExprItem &row) {
  OrlStoredInput stored = {row.kind,     row.dataType,      {0, 0},       {}, row.paramCount,
                           row.subClass, row.optionalCount, row.itemFlags};
  std::memcpy(stored.name, row.name, sizeof stored.name);
  PutBytes(target, &stored, sizeof stored);
  PutText(target, row.routineName);
}

// Rows after one that did not fit are still tried.
void PutInputs(BlockTarget &target, HandleArray inputs) {
  const uint16_t count = CountRows<ExprItem>(inputs);
  if (count == 0 || target.overflow || !PutHeader(target, ORL_BLOCK_TAG_INPUTS, count)) {
    return;
  }
  ForEachRow<ExprItem>(inputs, [&target](const ExprItem &row) {
    if (Fits(target, SizeOf(row))) {
      PutInput(target, row);
    }
  });
}

// Writing ends at the first row that does not fit.
void PutFormulas(BlockTarget &target, HandleArray expressions) {
  const uint16_t count = CountRows<Expression>(expressions);
  if (count == 0 || target.overflow || !PutHeader(target, ORL_BLOCK_TAG_FORMULAS, count)) {
    return;
  }
  ForEachRow<Expression>(expressions, [&target](const Expression &row) {
    if (!target.overflow && Fits(target, SizeOf(row))) {
      PutText(target, row.text);
      PutText(target, row.entry.name);
    }
  });
}

}  // namespace

int32_t ORLGetECBlockSize(EC ec, int32_t includeFormulas) {
  int64_t size = 1;
  if (ec != nullptr) {
    ForEachOperatorName(ec, [&size](const char *name) { size += TextSize(name); });
    if (ec->inputs.rows != nullptr) {
      size += ORL_BLOCK_HEADER_SIZE;
      ForEachRow<ExprItem>(ec->inputs.rows, [&size](const ExprItem &row) { size += SizeOf(row); });
    }
    if (HandleArrayRows(ec->expressions) != 0 && includeFormulas != 0) {
      size += ORL_BLOCK_HEADER_SIZE;
      ForEachRow<Expression>(ec->expressions,
                             [&size](const Expression &row) { size += SizeOf(row); });
    }
  }
  return static_cast<int32_t>(std::min<int64_t>(size, INT32_MAX));
}

int32_t ORLGetECBlock(EC ec, int32_t capacity, void *buffer) {
  if (buffer == nullptr) {
    return 0;
  }
  BlockTarget target = {static_cast<uint8_t *>(buffer), capacity, 0, false};
  const uint8_t version = kVersion3;
  PutBytes(target, &version, sizeof version);  // whatever the capacity
  if (ec != nullptr) {
    ForEachOperatorName(ec, [&target](const char *name) {
      if (Fits(target, TextSize(name))) {
        PutText(target, name);
      }
    });
    PutInputs(target, ec->inputs.rows);
    PutFormulas(target, ec->expressions);
  }
  return static_cast<int32_t>(target.position);
}
