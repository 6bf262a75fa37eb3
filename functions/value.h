// The values of an evaluation, and the bytes of its strings.
#ifndef ORLI11_FUNCTIONS_VALUE_H
#define ORLI11_FUNCTIONS_VALUE_H

#include <bit>
#include <cassert>
#include <cstdint>
#include <cstring>

#include "closed/wren/decimal.h"
#include "orli11.h"
#include "platform/copy_bytes.h"
#include "platform/owned.h"

enum class ValueForm : uint8_t {
  None,    // the node cannot be computed; not the same as a null number
  Narrow,  // a number whose coefficient fits 64 bits
  Wide,    // a number whose coefficient does not
  Packed,  // a NumberValue kept packed: dates, nulls, and bytes that are not a number
  Text,    // a string in the text buffer
  Block,   // a heap block that the value owns and the engine only passes on
  Name,    // the same, with the name of an argument by name
  Frame    // the call whose arguments follow on the stack
};

// The payload of a NumberValue, in the pieces in which numbers are stored: loading a value in one
// piece that was just stored in several stalls the processor.
struct PackedNumber {
  uint64_t low;   // payload bytes 4 to 11
  uint32_t head;  // payload bytes 0 to 3
  uint8_t length;
};

struct TextSpan {
  uint32_t offset;  // in the text buffer
  uint32_t length;  // without the terminator that follows
};

union Word;

struct CallFrame {
  Word *call;
  ExprItem *row;  // as resolved before the arguments; null when it was removed meanwhile
};

struct Value {
  union {
    int64_t narrow;
    Int128 wide;
    PackedNumber packed;
    TextSpan text;
    void *block;
    CallFrame frame;
  };
  union {
    int32_t exponent;    // Narrow, Wide
    uint32_t arguments;  // Frame: values that follow, once they are all there
  };
  uint32_t textsUsed;   // Frame: length of the text buffer before the arguments
  uint32_t generation;  // Frame: of the context when the row was found, its lower half
  ValueForm form;
};

// In the pieces in which spans are stored.
inline TextSpan SpanOf(const Value &value) {
  return {value.text.offset, value.text.length};
}

inline bool IsNumber(const Value &value) {
  return value.form == ValueForm::Narrow || value.form == ValueForm::Wide;
}
inline NarrowDecimal NarrowOf(const Value &value) {
  return {value.narrow, value.exponent};
}
inline Decimal NumberOf(const Value &value) {
  return {value.form == ValueForm::Narrow ? value.narrow : value.wide, value.exponent};
}
// The integer part, which saturates; 0 for values that are not a number.
inline int32_t IntegerOf(const Value &value) {
  const auto small = static_cast<int32_t>(value.narrow);
  if (value.form == ValueForm::Narrow && value.exponent == 0 && small == value.narrow) [[likely]] {
    return small;
  }
  return IsNumber(value) ? DecimalToInt(NumberOf(value)) : 0;
}
inline void SetNarrow(Value *value, NarrowDecimal number) {
  value->narrow = number.coefficient;
  value->exponent = number.exponent;
  value->form = ValueForm::Narrow;
}
inline void SetNumber(Value *value, const Decimal &number) {
  if (DecimalIsNarrow(number)) {
    SetNarrow(value, DecimalNarrow(number));
    return;
  }
  value->wide = number.coefficient;
  value->exponent = number.exponent;
  value->form = ValueForm::Wide;
}
inline void SetNull(Value *value) {
  value->packed = {};
  value->form = ValueForm::Packed;
}
inline void SetPacked(Value *value, const void *number) {
  const uint8_t *bytes = static_cast<const uint8_t *>(number);
  value->packed.length = bytes[0];
  std::memcpy(&value->packed.head, bytes + 1, sizeof value->packed.head);
  std::memcpy(&value->packed.low, bytes + 5, sizeof value->packed.low);
  value->form = ValueForm::Packed;
}
// A number is kept unpacked, everything else packed; the bytes can be restored from either form.
void SetWideFrom(Value *value, const void *number);
inline void SetNumberFrom(Value *value, const void *number) {
  const uint8_t *bytes = static_cast<const uint8_t *>(number);
  uint32_t head = 0;
  uint64_t low = 0;
  std::memcpy(&head, bytes + 1, sizeof head);
  std::memcpy(&low, bytes + 5, sizeof low);
  NarrowDecimal d;
  if (bytes[0] == kNumberLength && DecimalUnpackNarrow(head, low, &d)) [[likely]] {
    SetNarrow(value, d);
  } else {
    SetWideFrom(value, number);
  }
}

// Restores the NumberValue of a number or Packed.
inline void StoreValue(NumberValue *target, const Value &value) {
  if (value.form == ValueForm::Narrow) {
    DecimalStoreNarrow(target, NarrowOf(value));
    return;
  }
  if (value.form == ValueForm::Wide) {
    DecimalStore(target, NumberOf(value));
    return;
  }
  target->length = value.packed.length;
  std::memcpy(target->payload, &value.packed.head, sizeof value.packed.head);
  std::memcpy(target->payload + 4, &value.packed.low, sizeof value.packed.low);
}

inline bool IsNumberForm(ValueForm form) {
  return form >= ValueForm::Narrow && form <= ValueForm::Packed;
}
inline bool IsNullNumber(const Value &value) {
  return value.form == ValueForm::Packed && value.packed.length == 0;
}

// The strings of the values on the stack, one directly after the other, without terminators:
// strings to be concatenated are adjacent already. The bytes move when the buffer grows.
struct TextBuffer {
  char *bytes;
  uint32_t used;
  uint32_t size;
  bool outOfMemory;  // since the evaluation began: here, for a block or for a program
  alignas(16) char first[496];
  OwnedText grown;  // the bytes once `first` is too small

  TextBuffer() : bytes(first), used(0), size(sizeof first), outOfMemory(false) {}
};

// Bytes after the last string, for a terminator and for copies that round up to words.
constexpr uint32_t kTextSlack = 16;

// Grows the buffer to `size` bytes and slack; false when out of memory, with the buffer unchanged.
bool TextBufferGrow(TextBuffer &texts, uint64_t size);

// Ensures space for `bytes` bytes at an offset.
inline bool TextReserve(TextBuffer &texts, uint32_t offset, uint64_t bytes) {
  const uint64_t wanted = offset + bytes;
  return wanted + kTextSlack <= texts.size || TextBufferGrow(texts, wanted);
}

// Makes the bytes at an offset, up to `length`, the value's string and the last one in the buffer.
inline void SetText(TextBuffer &texts, Value *value, uint32_t offset, uint32_t length) {
  // Stored in one piece: combining two in a vector register takes longer.
  const uint64_t span = uint64_t{length} << 32 | offset;
  texts.used = offset + length;
  std::memcpy(&value->text, &span, sizeof value->text);
  value->form = ValueForm::Text;
}

// Eight bytes of a string at once.
constexpr uint64_t kOnes = UINT64_C(0x0101010101010101);
constexpr uint64_t kHighBits = kOnes << 7;

inline uint64_t LoadWord(const char *bytes) {
  uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

// Sets the high bit of the first zero byte; later bytes may be marked too, earlier ones never.
inline uint64_t ZeroBytes(uint64_t word) {
  return (word - kOnes) & ~word & kHighBits;
}
// The place of the first byte with a mark; `marks` is not 0.
inline uint32_t FirstMarked(uint64_t marks) {
  assert(marks != 0);
  return static_cast<uint32_t>(std::countr_zero(marks)) / 8;
}

// Makes a copy of `length` bytes the value's string, as the last one in the buffer. `source` is not
// in the buffer. None when out of memory.
inline void CopyTextInto(TextBuffer &texts, Value *value, const char *source, uint32_t length) {
  const uint32_t offset = texts.used;
  if (!TextReserve(texts, offset, length)) {
    value->form = ValueForm::None;
    return;
  }
  CopyBytes(texts.bytes + offset, source, length);
  SetText(texts, value, offset, length);
}

// The last string in the buffer, terminated.
inline char *TerminatedText(TextBuffer &texts, const TextSpan &span) {
  char *text = texts.bytes + span.offset;
  text[span.length] = '\0';
  return text;
}

// Moves a string in the buffer down by `gap` bytes to `target`. Where the strings of arguments
// begin, bytes were stored in words: a load across two of them would stall on both stores.
inline void MoveTextDown(char *target, uint32_t gap, uint32_t length) {
  constexpr uint32_t kFewBytes = 32;
  if (length > kFewBytes || gap >= 8) {
    std::memmove(target, target + gap, length);
    return;
  }
  uint64_t word = LoadWord(target);
  for (uint32_t at = 0; at < length; at += 8) {
    const uint64_t next = LoadWord(target + at + 8);
    const uint64_t moved = word >> gap * 8 | next << 1 << (63 - gap * 8);
    std::memcpy(target + at, &moved, sizeof moved);
    word = next;
  }
}

inline void FreeBlockOf(const Value &value) {
  if (value.form == ValueForm::Block || value.form == ValueForm::Name) {
    const OwnedBlock block(value.block);
  }
}

// Frees what the value on top of the stack owns.
inline void DropValue(TextBuffer &texts, Value *value) {
  if (value->form == ValueForm::Text) {
    texts.used = value->text.offset;
  }
  FreeBlockOf(*value);
  value->form = ValueForm::None;
}

#endif
