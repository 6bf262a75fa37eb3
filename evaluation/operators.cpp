// Operators beyond the arithmetic of two numbers.
#include <cstring>

#include "dates/date_arithmetic.h"
#include "dates/date_text.h"
#include "engine/host_call.h"
#include "evaluation/arithmetic.h"
#include "evaluation/evaluation.h"
#include "evaluation/host_block.h"
#include "functions/date_value.h"
#include "platform/text.h"

namespace {

OperatorGroup GroupOf(Operation operation) {
  switch (operation) {
    case Operation::Add:
      return kGroupAdd;
    case Operation::Subtract:
      return kGroupSub;
    case Operation::Multiply:
      return kGroupMul;
    default:
      return kGroupDiv;
  }
}

void CallOperator(Evaluation &run, OrlOperatorProc callback, Value *left, const Value *right) {
  constexpr int32_t kSize = sizeof(NumberValue);
  NumberValue leftNumber;
  NumberValue rightNumber;
  NumberValue result = {};
  StoreValue(&leftNumber, *left);
  StoreValue(&rightNumber, *right);
  CallHost([&] {
    return callback(run.ec, run.expression, ORL_TYPE_NUMBER, kSize, &leftNumber, kSize,
                    &rightNumber, kSize, &result);
  });
  SetNumberFrom(left, &result);
}

// A null counts as zero; false for bytes that are not a number.
bool OperandOf(const Value &value, Decimal *d) {
  *d = IsNumber(value) ? NumberOf(value) : Decimal{};
  return IsNumber(value) || IsNullNumber(value);
}

}  // namespace

void DropOperands(TextBuffer &texts, Value *left, Value *right) {
  DropValue(texts, right);
  DropValue(texts, left);
}

void ComputeSlowly(Evaluation &run, Operation operation, Value *left, Value *right) {
  if (!IsNumberForm(left->form) || !IsNumberForm(right->form)) {
    DropOperands(run.texts, left, right);
    return;
  }
  const OrlOperatorProc callback = run.ec->operators[GroupOf(operation)].procs[0];
  if (callback != nullptr) {
    CallOperator(run, callback, left, right);
    return;
  }
  Decimal a;
  Decimal b;
  const bool haveA = OperandOf(*left, &a);
  const bool haveB = OperandOf(*right, &b);
  // A quotient with a zero operand is zero, whatever the other one is.
  const bool zero = operation == Operation::Divide &&
                    ((haveA && a.coefficient == 0) || (haveB && b.coefficient == 0));
  if (zero) {
    SetNumber(left, {});
  } else if (haveA && haveB && Compute(operation, &a, a, b)) {
    SetNumber(left, a);
  } else {
    SetNull(left);
  }
}

void MoveDate(const Instruction &instruction, Value *left, const Value *right) {
  if (!IsNumberForm(left->form) || !IsNumberForm(right->form)) {
    left->form = ValueForm::None;
    return;
  }
  DateTimeParts parts;
  const int64_t n = IntegerOf(*right);
  if (DateOf(*left, &parts) &&
      MoveParts(&parts, instruction.operand == '+' ? n : -n, instruction.detail)) {
    SetDate(left, parts);
  } else {
    SetNull(left);
  }
}

void SubtractDates(TextBuffer &texts, Value *left, Value *right) {
  if (!IsNumberForm(left->form) || !IsNumberForm(right->form)) {
    DropOperands(texts, left, right);  // among them a date minus a text
    return;
  }
  DateTimeParts leftParts;
  DateTimeParts rightParts;
  if (DateOf(*left, &leftParts) && DateOf(*right, &rightParts)) {
    SetNarrow(left, {DayNumberOf(leftParts) - DayNumberOf(rightParts), 0});
  } else {
    SetNull(left);
  }
}

void AcceptLongText(TextBuffer &texts, const char *block, uint32_t size, Value *value) {
  if (size == 0) {
    return;
  }
  const void *end = std::memchr(block, 0, size);
  const uint32_t length =
      end == nullptr ? size - 1 : static_cast<uint32_t>(static_cast<const char *>(end) - block);
  CopyTextInto(texts, value, block, length);
}

uint32_t UnescapeString(char *target, const char *source) {
  char *end = target;
  while (*source != '\0') {
    if (source[0] == '\\' && source[1] == '\'') {
      ++source;
    }
    if (source[0] == '\'' && source[1] == '\'') {
      ++source;
    }
    const char *next = CharNextA(source);
    while (source < next) {
      *end++ = *source++;
    }
  }
  *end = '\0';
  return static_cast<uint32_t>(end - target);
}

void PushEscapedText(TextBuffer &texts, const char *text, Value *value) {
  const uint32_t offset = texts.used;
  value->form = ValueForm::None;
  if (TextReserve(texts, offset, std::strlen(text))) {
    SetText(texts, value, offset, UnescapeString(texts.bytes + offset, text));
  }
}

void PushDate(const char *text, Value *value) {
  NumberValue date = {};
  if (!DateFromText(&date, text)) {
    WRENNumSetNull(&date);
  }
  SetPacked(value, &date);
}
