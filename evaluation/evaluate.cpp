// The evaluation entries: they copy values to the host's memory.
#include <algorithm>
#include <cstring>

#include "engine/expressions.h"
#include "evaluation/evaluation.h"
#include "language/tree.h"

namespace {

bool IsEvaluable(EC ec, HEXP exp) {
  return ec != nullptr && exp != nullptr && exp->tree != nullptr;
}

// With size 0 the buffer receives the size that the string needs. A string that does not fit is
// cut, without a terminator.
int32_t DeliverText(const Evaluation &run, const Value &value, int32_t size, void *buffer) {
  const uint32_t length = value.text.length;
  if (size == 0) {
    const auto needed = static_cast<int32_t>(length + 1);
    std::memcpy(buffer, &needed, sizeof needed);
    return 1;
  }
  if (size < 0) {
    return 0;
  }
  const auto capacity = static_cast<uint32_t>(size);
  char *target = static_cast<char *>(buffer);
  CopyBytes(target, run.texts.bytes + value.text.offset, std::min(length, capacity));
  if (length < capacity) {
    target[length] = '\0';
  }
  return 1;
}

int32_t Deliver(Evaluation &run, const Value &value, int32_t size, void *buffer) {
  if (IsNumberForm(value.form)) {
    StoreValue(static_cast<NumberValue *>(buffer), value);
    return 1;
  }
  return value.form == ValueForm::Text ? DeliverText(run, value, size, buffer) : 0;
}

// The host's block with at least `size` bytes, or null.
void *BlockFor(void *block, uint32_t size) {
  if (block == nullptr) {
    return ORLMemAlloc(size);
  }
  return ORLMemSize(block) < size ? ORLMemRealloc(block, size) : block;
}

int32_t DeliverBlock(Evaluation &run, const Value &value, int32_t *length, void **buffer) {
  if (IsNumberForm(value.form)) {
    if (*buffer == nullptr) {
      return 0;
    }
    StoreValue(static_cast<NumberValue *>(*buffer), value);
    return 1;
  }
  if (value.form != ValueForm::Text) {
    return 0;
  }
  const uint32_t needed = value.text.length + 1;
  void *block = BlockFor(*buffer, needed + 1);
  if (block == nullptr) {
    return 0;
  }
  std::memcpy(block, TerminatedText(run.texts, value.text), needed);
  *buffer = block;
  if (length != nullptr) {
    *length = static_cast<uint16_t>(needed);
  }
  return 1;
}

// Computes the expression and passes the value to `deliver` while the evaluation still owns it.
template <class Delivery>
int32_t EvaluateFor(EC ec, HEXP exp, Delivery deliver) {
  Evaluation run(ec, exp);
  const Value *value = EvaluationRun(run);
  return value == nullptr ? 0 : deliver(run, *value);
}

}  // namespace

int32_t ORLEvaluateExpression(EC ec, HEXP exp, int32_t size, void *buffer) {
  if (!IsEvaluable(ec, exp) || buffer == nullptr) {
    return 0;
  }
  return EvaluateFor(ec, exp, [=](Evaluation &run, const Value &value) {
    return Deliver(run, value, size, buffer);
  });
}

int32_t ORLEvaluateExpressionExt(EC ec, HEXP exp, int32_t *length, void **buffer) {
  if (!IsEvaluable(ec, exp) || buffer == nullptr) {
    return 0;
  }
  return EvaluateFor(ec, exp, [=](Evaluation &run, const Value &value) {
    return DeliverBlock(run, value, length, buffer);
  });
}
