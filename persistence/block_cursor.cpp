#include "persistence/block_cursor.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "persistence/block_format.h"

const char *TakeBytes(BlockCursor &cursor, int64_t count, BlockEnd end) {
  assert(count >= 0 && cursor.position <= cursor.size);
  const int64_t after = cursor.position + count;
  if (!cursor.ok || after > cursor.size || (after == cursor.size && end == BlockEnd::Refused)) {
    cursor.ok = false;
    return nullptr;
  }
  const char *taken = cursor.bytes + cursor.position;
  cursor.position = after;
  return taken;
}

const char *TakeText(BlockCursor &cursor, BlockEnd end) {
  const char *text = cursor.bytes + cursor.position;
  const int64_t left = cursor.size - cursor.position;
  const void *zero = left > 0 ? std::memchr(text, 0, static_cast<size_t>(left)) : nullptr;
  if (zero == nullptr) {
    cursor.ok = false;
    return nullptr;
  }
  return TakeBytes(cursor, static_cast<const char *>(zero) - text + 1, end);
}

bool TakeFormulaRow(BlockCursor &cursor, const char **text, const char **name) {
  *text = TakeText(cursor, BlockEnd::Allowed);
  *name = *text != nullptr ? TakeText(cursor, BlockEnd::Allowed) : nullptr;
  return *name != nullptr;
}

int32_t PeekTag(const BlockCursor &cursor) {
  uint16_t tag = 0;
  if (cursor.size - cursor.position < static_cast<int64_t>(sizeof tag)) {
    return -1;
  }
  std::memcpy(&tag, cursor.bytes + cursor.position, sizeof tag);
  return tag;
}

int32_t TakeSectionHeader(BlockCursor &cursor) {
  const char *header = TakeBytes(cursor, ORL_BLOCK_HEADER_SIZE, BlockEnd::Refused);
  int16_t count = 0;
  if (header != nullptr) {
    std::memcpy(&count, header + sizeof(uint16_t), sizeof count);
  }
  return std::max<int32_t>(count, 0);
}
