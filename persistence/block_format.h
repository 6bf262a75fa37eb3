// The stored form of a context: what the reader needs besides the public layout of version 3.
#ifndef ORLI11_PERSISTENCE_BLOCK_FORMAT_H
#define ORLI11_PERSISTENCE_BLOCK_FORMAT_H

#include <cstdint>

#include "orli11.h"
#include "orli11_block.h"

enum BlockVersion : uint8_t {
  kVersion0 = 0,  // has no version byte: its first operator text is empty
  kVersion1 = 1,
  kVersion2 = 2,
  kVersion3 = ORL_BLOCK_VERSION  // the one that is written
};

constexpr uint16_t kTagFunctions = 251;  // of a section that version 0 alone has

#pragma pack(push, 1)
// An input row of version 1. Version 0 stores it up to and including `paramCount`, and function
// rows in that same layout.
struct StoredOldInput {
  int16_t kind;
  int16_t dataType;
  uint32_t ignored[2];
  char name[40];
  int16_t paramCount;
  uint16_t subClass;
  uint16_t optionalCount;
  uint16_t itemFlags;
};
#pragma pack(pop)

constexpr int32_t kOldestInputSize = 54;
constexpr int32_t kStoredParameterSize = 6;

static_assert(sizeof(OrlStoredInput) == 85 && sizeof OrlStoredInput::name == sizeof ExprItem::name);
static_assert(sizeof(StoredOldInput) == 60);

#endif
