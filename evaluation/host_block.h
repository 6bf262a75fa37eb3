// The blocks that the host's routines write into, and the value routines of input items.
//
// The context caches one block per size. A call takes it, so a nested evaluation allocates its own,
// and puts it back unless the host changed its size.
#ifndef ORLI11_EVALUATION_HOST_BLOCK_H
#define ORLI11_EVALUATION_HOST_BLOCK_H

#include <cstring>

#include "closed/wren/block.h"
#include "engine/host_call.h"
#include "evaluation/evaluation.h"

constexpr uint32_t kNumberBlockSize = sizeof(NumberValue);
constexpr uint32_t kTextBlockSize = 50;

// A zeroed block of the size; null when out of memory.
template <uint32_t size>
inline void *TakeBlock(void *&waiting) {
  void *block = waiting;
  if (block == nullptr) [[unlikely]] {
    return WRENMemAlloc(size);
  }
  waiting = nullptr;
  std::memset(block, 0, size);
  return block;
}

template <uint32_t size>
inline void ReleaseBlock(void *&waiting, void *block) {
  if (waiting == nullptr && block != nullptr && BlockSize(block) == size) [[likely]] {
    waiting = block;
  } else {
    const OwnedBlock ended(block);
  }
}

// Calls `routine` with a block of the size and passes the block that the routine leaves to
// `accept`. The value is None, and `accept` is not called, when the routine fails or throws.
template <uint32_t size, class Routine, class Accept>
inline void CallWithBlock(TextBuffer &texts, void *&waiting, Value *value, Routine routine,
                          Accept accept) {
  void *block = TakeBlock<size>(waiting);
  value->form = ValueForm::None;
  if (block == nullptr) [[unlikely]] {
    texts.outOfMemory = true;
    return;
  }
  void *filled = block;
  const int32_t done = CallHost([&] { return routine(static_cast<int32_t>(size), &filled); });
  if (done != 0 && filled != nullptr) [[likely]] {
    accept(filled);
  }
  ReleaseBlock<size>(waiting, filled);
}

// The routine may have replaced the block by another one of any size: nothing beyond its end is
// read.
inline void AcceptNumber(const void *block, Value *value) {
  if (BlockSize(block) >= kNumberBlockSize) {
    SetNumberFrom(value, block);
  }
}

inline void AcceptPacked(const void *block, Value *value) {
  if (BlockSize(block) >= kNumberBlockSize) {
    SetPacked(value, block);
  }
}

// Copies a text of at most `size` bytes, up to its terminator. Returns its length; without a
// terminator it ends before the last byte.
inline uint32_t CopyTerminated(char *target, const char *source, uint32_t size) {
  uint32_t at = 0;
  // Two words at once: whether a text has 7 bytes or 8 cannot be predicted.
  for (; at + 16 <= size; at += 16) {
    const uint64_t first = LoadWord(source + at);
    const uint64_t second = LoadWord(source + at + 8);
    std::memcpy(target + at, &first, sizeof first);
    std::memcpy(target + at + 8, &second, sizeof second);
    const uint64_t zeros = ZeroBytes(first);
    const uint64_t more = ZeroBytes(second);
    if ((zeros | more) != 0) {
      return at + (zeros != 0 ? FirstMarked(zeros) : 8 + FirstMarked(more));
    }
  }
  for (; at < size; ++at) {
    target[at] = source[at];
    if (source[at] == '\0') {
      return at;
    }
  }
  return size - 1;
}

// A block of any size.
void AcceptLongText(TextBuffer &texts, const char *block, uint32_t size, Value *value);

// A text without a terminator ends before the block's last byte.
inline void AcceptText(TextBuffer &texts, const void *block, Value *value) {
  const uint32_t size = BlockSize(block);
  const char *text = static_cast<const char *>(block);
  const uint64_t end = uint64_t{texts.used} + kTextBlockSize + kTextSlack;
  if (size == kTextBlockSize && end <= texts.size) [[likely]] {
    const uint32_t length = CopyTerminated(texts.bytes + texts.used, text, kTextBlockSize);
    SetText(texts, value, texts.used, length);
  } else {
    AcceptLongText(texts, text, size, value);
  }
}

// A block of a host's own type, which the value then owns.
template <class Routine>
void CallForBlock(Value *value, Routine routine) {
  value->form = ValueForm::None;
  void *filled = WRENMemAlloc(kTextBlockSize);
  if (filled == nullptr) {
    return;
  }
  const int32_t done =
      CallHost([&] { return routine(static_cast<int32_t>(kTextBlockSize), &filled); });
  OwnedBlock block(filled);
  if (done != 0 && block != nullptr && BlockSize(block.get()) != 0) {
    value->block = block.release();
    value->form = ValueForm::Block;
  }
}

// Calls a routine that receives a size and a block, and stores the value by its type.
template <class Routine>
inline void CallForType(Evaluation &run, int32_t type, Value *value, Routine routine) {
  switch (type) {
    case ORL_TYPE_NUMBER:
      CallWithBlock<kNumberBlockSize>(run.texts, run.ec->numberBlock, value, routine,
                                      [=](const void *block) { AcceptNumber(block, value); });
      break;
    case ORL_TYPE_DATE:
      CallWithBlock<kNumberBlockSize>(run.texts, run.ec->numberBlock, value, routine,
                                      [=](const void *block) { AcceptPacked(block, value); });
      break;
    case ORL_TYPE_STRING:
      CallWithBlock<kTextBlockSize>(
          run.texts, run.ec->textBlock, value, routine,
          [&](const void *block) { AcceptText(run.texts, block, value); });
      break;
    default:
      CallForBlock(value, routine);
  }
}

// Sets the value of an input item; None when it has none.
template <int32_t type>
inline void InputValue(Evaluation &run, const Word *code, Value *value) {
  const auto routine = reinterpret_cast<OrlValueProc>(code[kInputRoutine].routine);
  if (routine == nullptr) {
    value->form = ValueForm::None;
    return;
  }
  const char *name = code[kInputName].text;
  CallForType(run, type, value, [&](int32_t size, void **block) {
    return routine(run.ec, run.expression, size, block, name);
  });
}

#endif
