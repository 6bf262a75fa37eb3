// The stored form of a context: constants and layouts. docs/block-format.md tells it in words.
#ifndef ORLI11_PERSISTENCE_BLOCK_FORMAT_H
#define ORLI11_PERSISTENCE_BLOCK_FORMAT_H

#include <cstdint>

#include "orli11.h"

enum BlockVersion : uint8_t {
  kVersion0 = 0,  // has no version byte: its first operator text is empty
  kVersion1 = 1,
  kVersion2 = 2,
  kVersion3 = 3  // the one that is written
};

enum SectionTag : uint16_t {
  kTagInputs = 250,
  kTagFunctions = 251,  // in version 0 alone
  kTagFormulas = 252
};

constexpr int32_t kSectionHeaderSize = 4;  // tag and count, 16 bits each

// An input row as versions 2 and 3 store it. The fields are little-endian, like the machines that
// this library is for; the two addresses of the live record are 32 bits of zero here.
#pragma pack(push, 1)
struct StoredInput {
  int16_t kind;
  int16_t dataType;
  uint32_t routineName;
  uint32_t routine;
  char name[sizeof ExprItem::name];
  int16_t paramCount;
  uint16_t subClass;
  uint16_t optionalCount;
  uint16_t itemFlags;
};

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

static_assert(sizeof(StoredInput) == 85);
static_assert(sizeof(StoredOldInput) == 60);

#endif
