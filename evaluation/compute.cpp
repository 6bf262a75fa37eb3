// What a single node comes to: literals, input items, operators and calls.
#include <cstring>

#include "engine/host_call.h"
#include "engine/items.h"
#include "evaluation/date_arithmetic.h"
#include "evaluation/evaluation.h"
#include "functions/date_text.h"
#include "language/types.h"
#include "platform/text.h"

namespace {

using NumberOperation = void (*)(NumberValue *, const NumberValue *, const NumberValue *);

bool IsNumberType(int16_t type) {
  return type == ORL_TYPE_NUMBER || type == ORL_TYPE_DATE;
}

// ---- The blocks of routines ----

void *TakeBlock(Evaluation &run, int16_t type) {
  if (!IsNumberType(type)) {
    return WRENMemAlloc(kTextBlockSize);
  }
  void *block = run.spare;
  if (block == nullptr) {
    return WRENMemAlloc(kNumberBlockSize);
  }
  run.spare = nullptr;
  std::memset(block, 0, kNumberBlockSize);
  return block;
}

// Makes the block that a routine has filled the value. The routine may have put another block in
// its place, of any size: nothing beyond it is read.
void AcceptBlock(Evaluation &run, int16_t type, void *block, Value *value) {
  const uint32_t size = WRENMemSize(block);
  if (IsNumberType(type)) {
    if (size >= kNumberBlockSize) {
      CopyNumber(&value->number, block);
      value->form = ValueForm::Number;
    }
    if (size == kNumberBlockSize && run.spare == nullptr) {
      run.spare = block;
    } else {
      WRENMemFree(block);
    }
    return;
  }
  if (size == 0) {
    WRENMemFree(block);
    return;
  }
  value->text = static_cast<char *>(block);
  if (type != ORL_TYPE_STRING) {
    value->form = ValueForm::Opaque;
    return;
  }
  value->form = ValueForm::Text;
  const void *end = std::memchr(block, 0, size);
  value->length = end == nullptr
                      ? size - 1
                      : static_cast<uint32_t>(static_cast<const char *>(end) - value->text);
  value->text[value->length] = '\0';
}

// ---- Leaves ----

void InputValue(Evaluation &run, ExprNode *node, Value *value) {
  const int16_t type = NodeType(node);
  NodeBinding binding = BindingOf(node);
  if (binding.at != run.ec->generation) {
    ExprItem *row = ItemFind(&run.ec->inputs, NodeText(node));
    const bool usable = row != nullptr && row->routine != nullptr && row->dataType == type &&
                        type >= 0 && type <= 3;
    binding = {usable ? row->routine : nullptr, run.ec->generation};
    Bind(node, binding);
  }
  if (binding.row == nullptr) {
    return;
  }
  void *block = TakeBlock(run, type);
  if (block == nullptr) {
    return;
  }
  const OrlValueProc routine = reinterpret_cast<OrlValueProc>(binding.row);
  const uint32_t size = IsNumberType(type) ? kNumberBlockSize : kTextBlockSize;
  void *filled = block;
  const int32_t done = CallHost([&] {
    return routine(run.ec, run.expression, static_cast<int32_t>(size), &filled, NodeText(node));
  });
  if (done != 0 && filled != nullptr) {
    AcceptBlock(run, type, filled, value);
  } else {
    WRENMemFree(filled);
  }
}

void LiteralText(const ExprNode *node, Value *value) {
  const char *text = NodeText(node);
  if ((NodeDetail(node) & 1) == 0) {
    value->text = const_cast<char *>(text);
    value->length = static_cast<uint32_t>(std::strlen(text));
    value->form = ValueForm::Literal;
    return;
  }
  value->text = CopyText(text).release();
  if (value->text != nullptr) {
    value->length = UnescapeString(value->text, text);
    value->form = ValueForm::Text;
  }
}

// ---- Operators ----

// A division by zero is no error and gives zero.
void Divide(NumberValue *result, const NumberValue *left, const NumberValue *right) {
  if (WRENNumIsZero(left) != 0 || WRENNumIsZero(right) != 0) {
    WRENNumSetZero(result);
  } else {
    WRENNumDiv(result, left, right);
  }
}

NumberOperation OperationOf(int32_t kind) {
  switch (kind) {
    case NODE_ADD:
      return WRENNumAdd;
    case NODE_SUB:
      return WRENNumSub;
    case NODE_MUL:
      return WRENNumMul;
    default:
      return Divide;
  }
}

void NumberArithmetic(Evaluation &run, const ExprNode *node, Value *left, Value *right) {
  const OrlOperatorProc callback = run.ec->operators[OperatorGroupOf(NodeKindOf(node))].procs[0];
  if (callback != nullptr) {
    NumberValue result = {};
    constexpr int32_t kSize = sizeof(NumberValue);
    CallHost([&] {
      return callback(run.ec, run.expression, ORL_TYPE_NUMBER, kSize, &left->number, kSize,
                      &right->number, kSize, &result);
    });
    left->number = result;
    return;
  }
  if (left->number.length == 0) {
    WRENNumSetZero(&left->number);
  }
  if (right->number.length == 0) {
    WRENNumSetZero(&right->number);
  }
  OperationOf(NodeKindOf(node))(&left->number, &left->number, &right->number);
}

void MoveDate(const ExprNode *node, Value *left, Value *right) {
  if (right->number.length == 0) {
    WRENNumSetZero(&right->number);
  }
  NumberValue result;
  DateArithmetic(&result, &left->number, &right->number, NodeKindOf(node), NodeDetail(node));
  left->number = result;
}

void SubtractDates(Value *left, const Value *right) {
  NumberValue result = {};
  DateDifference(&result, &left->number, &right->number);
  left->number = result;
}

// Appends to the left text, whose block grows geometrically: a long chain costs linear time.
void Concatenate(Value *left, const Value *right) {
  const uint64_t length = uint64_t{left->length} + right->length;
  const bool owned = left->form == ValueForm::Text;
  char *block = owned ? left->text : nullptr;
  if (length >= INT32_MAX) {
    block = nullptr;
  } else if (!owned || WRENMemSize(block) <= length) {
    const uint64_t wanted = owned ? length + length / 2 + 1 : length + 1;
    const uint32_t size = static_cast<uint32_t>(wanted);
    block = static_cast<char *>(owned ? WRENMemRealloc(block, size) : WRENMemAlloc(size));
    if (block != nullptr && !owned) {
      std::memcpy(block, left->text, left->length);
    }
  }
  if (block == nullptr) {
    ValueFree(*left);
    return;
  }
  std::memcpy(block + left->length, right->text, right->length);
  block[length] = '\0';
  left->text = block;
  left->length = static_cast<uint32_t>(length);
  left->form = ValueForm::Text;
}

// ---- Calls ----

constexpr uint32_t kFewArguments = 8;

// The entry of a routine's argument array. A literal is handed over as a copy: the tree keeps its
// own text out of the host's reach.
void *ArgumentOf(Value *value) {
  switch (value->form) {
    case ValueForm::None:
      return nullptr;
    case ValueForm::Number:
      return &value->number;
    case ValueForm::Literal:
      value->text = CopyText(value->text).release();
      value->form = value->text == nullptr ? ValueForm::None : ValueForm::Text;
      return value->text;
    default:
      return value->text;
  }
}

void CallRoutine(Evaluation &run, const CallFrame &call, void **args, Value *value) {
  const int16_t type = NodeType(call.node);
  void *block = TakeBlock(run, type);
  if (block == nullptr) {
    return;
  }
  const OrlFunctionProc routine = reinterpret_cast<OrlFunctionProc>(call.row->routine);
  const uint32_t size = IsNumberType(type) ? kNumberBlockSize : kTextBlockSize;
  void *filled = block;
  const int32_t done = CallHost([&] {
    return routine(run.ec, run.expression, static_cast<int32_t>(size), &filled, NodeText(call.node),
                   args);
  });
  if (done != 0 && filled != nullptr) {
    AcceptBlock(run, type, filled, value);
  } else {
    WRENMemFree(filled);
  }
}

}  // namespace

uint32_t UnescapeString(char *target, const char *source) {
  char *end = target;
  while (*source != '\0') {
    if (source[0] == '\\' && source[1] == '\'') {
      source++;
    }
    if (source[0] == '\'' && source[1] == '\'') {
      source++;
    }
    const char *next = CharNextA(source);
    while (source < next) {
      *end++ = *source++;
    }
  }
  *end = '\0';
  return static_cast<uint32_t>(end - target);
}

void ComputeLeaf(Evaluation &run, ExprNode *node, Value *value) {
  switch (NodeKindOf(node)) {
    case NODE_NUMBER:
      CopyNumber(&value->number, NodeNumber(node));
      value->form = ValueForm::Number;
      break;
    case NODE_DATE:
      WRENNumSetNull(&value->number);
      if (DateFromText(&value->number, NodeText(node)) == 0) {
        WRENNumSetNull(&value->number);
      }
      value->form = ValueForm::Number;
      break;
    case NODE_STRING:
      LiteralText(node, value);
      break;
    default:
      InputValue(run, node, value);
  }
}

bool HasOperatorRule(const ExprNode *node) {
  switch (NodeKindOf(node)) {
    case NODE_ADD:
    case NODE_SUB:
      return IsNumberType(NodeType(node));
    case NODE_MUL:
    case NODE_DIV:
      return NodeType(node) == ORL_TYPE_NUMBER;
    case NODE_CONCAT:
      return NodeType(node) == ORL_TYPE_STRING;
    default:
      return false;
  }
}

void ComputeOperator(Evaluation &run, const ExprNode *node, Value *left, Value *right) {
  if (left->form == ValueForm::None || right->form == ValueForm::None) {
    ValueFree(*left);
    return;
  }
  if (NodeKindOf(node) == NODE_CONCAT) {
    Concatenate(left, right);
  } else if (NodeType(node) == ORL_TYPE_DATE) {
    MoveDate(node, left, right);
  } else if (NodeType(LeftOperand(node)) == ORL_TYPE_NUMBER) {
    NumberArithmetic(run, node, left, right);
  } else if (right->form == ValueForm::Number) {
    SubtractDates(left, right);
  } else {
    ValueFree(*left);  // a date minus a text: there is no rule for it
  }
}

void ComputeCall(Evaluation &run, const CallFrame &call, Value *arguments, Value *value) {
  void *few[kFewArguments] = {};
  void **args = few;
  const uint32_t declared =
      call.row->paramCount < 0 ? 0 : static_cast<uint32_t>(call.row->paramCount);
  if (declared > kFewArguments) {
    args = static_cast<void **>(WRENMemAlloc(declared * static_cast<uint32_t>(sizeof(void *))));
    if (args == nullptr) {
      return;
    }
  }
  for (uint32_t i = 0; i < call.done; i++) {
    args[i] = ArgumentOf(&arguments[i]);
  }
  CallRoutine(run, call, ChildCount(call.node) == 0 ? nullptr : args, value);
  if (args != few) {
    WRENMemFree(args);
  }
}
