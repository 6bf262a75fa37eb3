// Reading a block from its start to its end. Nothing after its last byte is ever read.
#ifndef ORLI11_PERSISTENCE_BLOCK_CURSOR_H
#define ORLI11_PERSISTENCE_BLOCK_CURSOR_H

#include <cstdint>

struct BlockCursor {
  const char *bytes;
  int64_t size;
  int64_t position;  // bytes used so far
  bool ok;           // cleared for good when the block is too short
};

// Whether the block may end after the bytes that are read.
enum class BlockEnd : uint8_t { Refused, Allowed };

// Reads that many bytes; null, with ok cleared, when the block is too short.
const char *TakeBytes(BlockCursor &cursor, int64_t count, BlockEnd end);

// Reads a terminated string, in place. Null, with ok cleared, when it does not end inside the
// block.
const char *TakeText(BlockCursor &cursor, BlockEnd end);

// Reads a formula row: its text, then its name. False, with ok cleared, when it does not end inside
// the block.
bool TakeFormulaRow(BlockCursor &cursor, const char **text, const char **name);

// The 16 bits at the cursor, which is not moved; -1 when fewer are left.
int32_t PeekTag(const BlockCursor &cursor);

// Reads tag and count of a section. A count below 1 means no rows.
int32_t TakeSectionHeader(BlockCursor &cursor);

#endif
