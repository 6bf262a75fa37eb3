#include "functions/value.h"

namespace {

// A block of at least `wanted` bytes with the used bytes copied; null when out of memory.
char *LargerBuffer(TextBuffer &texts, uint64_t wanted, uint64_t size) {
  if (size < wanted || size > UINT32_MAX) {
    return nullptr;
  }
  if (texts.grown != nullptr) {
    return static_cast<char *>(WRENMemRealloc(texts.grown.get(), static_cast<uint32_t>(size)));
  }
  char *bytes = static_cast<char *>(WRENMemAlloc(static_cast<uint32_t>(size)));
  if (bytes != nullptr) {
    std::memcpy(bytes, texts.first, texts.used);
  }
  return bytes;
}

}  // namespace

void SetWideFrom(Value *value, const void *number) {
  SetPacked(value, number);
  Decimal d;
  if (value->packed.length == kNumberLength &&
      DecimalUnpack(value->packed.head, value->packed.low, &d)) {
    SetNumber(value, d);
  }
}

bool TextBufferGrow(TextBuffer &texts, uint64_t size) {
  const uint64_t wanted = size + kTextSlack;
  // Grows geometrically, so that a long chain takes linear time; when out of memory for that, to
  // the least size.
  char *bytes = LargerBuffer(texts, wanted, wanted + wanted / 2);
  if (bytes == nullptr) {
    bytes = LargerBuffer(texts, wanted, wanted);
  }
  if (bytes == nullptr) {
    texts.outOfMemory = true;
    return false;
  }
  static_cast<void>(texts.grown.release());  // it has moved
  texts.grown.reset(bytes);
  texts.bytes = bytes;
  texts.size = WRENMemSize(bytes);
  return true;
}
