// Calls of value routines and function routines, with the blocks that they write into.
//
// A block of each size waits in the context for the next routine. It is taken while a routine runs,
// so that an evaluation inside the routine gets another one, and is kept for the next as long as
// the host hands the same one back.
#include <algorithm>
#include <cstring>

#include "closed/wren/block.h"
#include "engine/host_call.h"
#include "engine/items.h"
#include "evaluation/evaluation.h"
#include "language/tree.h"

namespace {

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
    WRENMemFree(block);
  }
}

// Calls `routine` with a block of the size and hands the block that the routine leaves to `accept`.
// The value is None, and `accept` is not called, when the routine fails or throws.
template <uint32_t size, class Routine, class Accept>
inline void CallWithBlock(void *&waiting, Value *value, Routine routine, Accept accept) {
  value->form = ValueForm::None;
  void *block = TakeBlock<size>(waiting);
  if (block == nullptr) {
    return;
  }
  void *filled = block;
  const int32_t done = CallHost([&] { return routine(static_cast<int32_t>(size), &filled); });
  if (done != 0 && filled != nullptr) [[likely]] {
    accept(filled);
  }
  ReleaseBlock<size>(waiting, filled);
}

// The routine may have put another block in the place of the one that it was given, of any size:
// nothing beyond it is read.
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

// A text without a terminator ends with the block's last byte.
void AcceptText(TextBuffer &texts, const void *block, Value *value) {
  const uint32_t size = BlockSize(block);
  if (size == 0) {
    return;
  }
  const void *end = std::memchr(block, 0, size);
  const char *text = static_cast<const char *>(block);
  const uint32_t length =
      end == nullptr ? size - 1 : static_cast<uint32_t>(static_cast<const char *>(end) - text);
  CopyTextInto(texts, value, text, length);
}

// A block of a host's own type, which becomes the value's.
template <class Routine>
void CallForBlock(Value *value, Routine routine) {
  value->form = ValueForm::None;
  void *block = WRENMemAlloc(kTextBlockSize);
  if (block == nullptr) {
    return;
  }
  const int32_t done =
      CallHost([&] { return routine(static_cast<int32_t>(kTextBlockSize), &block); });
  if (done != 0 && block != nullptr && BlockSize(block) != 0) {
    value->block = block;
    value->form = ValueForm::Block;
  } else {
    WRENMemFree(block);
  }
}

// Calls a routine that takes a size and a block, and takes over the value by its type.
template <class Routine>
void CallForType(Evaluation &run, int32_t type, Value *value, Routine routine) {
  switch (type) {
    case ORL_TYPE_NUMBER:
      CallWithBlock<kNumberBlockSize>(run.ec->numberBlock, value, routine,
                                      [=](const void *block) { AcceptNumber(block, value); });
      break;
    case ORL_TYPE_DATE:
      CallWithBlock<kNumberBlockSize>(run.ec->numberBlock, value, routine,
                                      [=](const void *block) { AcceptPacked(block, value); });
      break;
    case ORL_TYPE_STRING:
      CallWithBlock<kTextBlockSize>(run.ec->textBlock, value, routine, [&](const void *block) {
        AcceptText(run.texts, block, value);
      });
      break;
    default:
      CallForBlock(value, routine);
  }
}

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

// ---- Calls ----

constexpr uint32_t kFewArguments = 8;

// What a routine receives: addresses of the values, none where there is none.
struct Arguments {
  void **entries;  // one for each declared parameter; null when out of memory
  NumberValue *numbers;
  void *fewEntries[kFewArguments];
  NumberValue fewNumbers[kFewArguments];
};

void ArgumentsBegin(Arguments &arguments, uint32_t declared) {
  arguments.entries = arguments.fewEntries;
  arguments.numbers = arguments.fewNumbers;
  if (declared <= kFewArguments) {
    std::fill_n(arguments.fewEntries, kFewArguments, nullptr);
    return;
  }
  const uint32_t size = declared * static_cast<uint32_t>(sizeof(void *) + sizeof(NumberValue));
  arguments.entries = static_cast<void **>(WRENMemAlloc(size));
  if (arguments.entries != nullptr) {
    arguments.numbers = reinterpret_cast<NumberValue *>(arguments.entries + declared);
  }
}

void ArgumentsEnd(Arguments &arguments) {
  if (arguments.entries != arguments.fewEntries) {
    WRENMemFree(arguments.entries);
  }
}

// Turns a text into a block: a host may do with it what it may do with any block.
void MakeTextBlock(const TextBuffer &texts, Value *value) {
  const TextSpan span = value->text;
  void *block = WRENMemAlloc(span.length + 1);
  value->form = ValueForm::None;
  if (block != nullptr) {
    std::memcpy(block, texts.bytes + span.offset, span.length);
    value->block = block;
    value->form = ValueForm::Block;
  }
}

void *EntryOf(const TextBuffer &texts, Value *value, NumberValue *number, bool blocks) {
  if (value->form == ValueForm::Text && blocks) {
    MakeTextBlock(texts, value);
  }
  switch (value->form) {
    case ValueForm::Number:
    case ValueForm::Packed:
      StoreValue(number, *value);
      return number;
    case ValueForm::Text:
      return texts.bytes + value->text.offset;
    case ValueForm::Block:
    case ValueForm::Name:
      return value->block;
    default:
      return nullptr;
  }
}

struct RoutineCall {
  const Word *code;
  const ExprItem *row;
  bool blocks;  // texts are given in blocks; to built-in routines where they are
};

void CallRoutine(Evaluation &run, const RoutineCall &call, Value *args, uint32_t count,
                 Value *value) {
  const ExprItem *row = call.row;
  const uint32_t declared = row->paramCount < 0 ? 0 : static_cast<uint32_t>(row->paramCount);
  Arguments arguments;
  ArgumentsBegin(arguments, declared);
  if (arguments.entries != nullptr) {
    for (uint32_t i = 0; i < std::min(count, declared); i++) {
      arguments.entries[i] = EntryOf(run.texts, &args[i], &arguments.numbers[i], call.blocks);
    }
    const auto routine = reinterpret_cast<OrlFunctionProc>(row->routine);
    const char *name = NodeText(call.code[kCallNode].node);
    void **entries = count == 0 ? nullptr : arguments.entries;
    CallForType(run, call.code->instruction.type, value, [&](int32_t size, void **block) {
      return routine(run.ec, run.expression, size, block, name, entries);
    });
  }
  ArgumentsEnd(arguments);
}

// True while the context is as it was when the row of the frame was found.
bool IsUnchanged(const Evaluation &run, const Value *frame) {
  return frame->generation == static_cast<uint32_t>(run.ec->generation);
}

// After a routine has changed the context: the call keeps its row, under whatever name, unless the
// row was removed.
void CheckRow(Evaluation &run, Value *frame) {
  if (IsUnchanged(run, frame)) {
    return;
  }
  if (HandleArrayFindPointer(run.ec->functions.rows, frame->frame.row) < 0) {
    frame->frame.row = nullptr;
  }
}

// Whether arguments are given by name exactly where the row wants names: a row that has come in the
// place of another may want others.
bool TakesNamesAlike(const ExprItem *row, const Value *args, uint32_t count) {
  for (uint32_t i = 0; i < count && static_cast<int32_t>(i) < row->paramCount; i++) {
    const bool byName = ItemParameters(row)[i].mode == 1;
    if (args[i].form != ValueForm::None && byName != (args[i].form == ValueForm::Name)) {
      return false;
    }
  }
  return true;
}

// An argument by name: a copy of the node's text. A node without text leaves the entry empty.
void PushName(const ExprNode *argument, Value *value) {
  char *copy = HasText(NodeKindOf(argument)) ? CopyText(NodeText(argument)).release() : nullptr;
  value->form = ValueForm::None;
  if (copy != nullptr) {
    value->block = copy;
    value->form = ValueForm::Name;
  }
}

}  // namespace

void NumberInputValue(Evaluation &run, const Word *code, Value *value) {
  InputValue<ORL_TYPE_NUMBER>(run, code, value);
}
void DateInputValue(Evaluation &run, const Word *code, Value *value) {
  InputValue<ORL_TYPE_DATE>(run, code, value);
}
void TextInputValue(Evaluation &run, const Word *code, Value *value) {
  InputValue<ORL_TYPE_STRING>(run, code, value);
}
void OtherInputValue(Evaluation &run, const Word *code, Value *value) {
  InputValue<3>(run, code, value);
}

bool BeginCall(Evaluation &run, Word *code, Value *frame) {
  if (code[kCallRow].row == nullptr) {
    frame->form = ValueForm::None;
    return false;
  }
  frame->frame = {code, code[kCallRow].row};
  frame->generation = static_cast<uint32_t>(run.ec->generation);
  frame->textsUsed = run.texts.used;
  frame->form = ValueForm::Frame;
  return true;
}

bool WantsArgument(Evaluation &run, Value *frame, uint32_t place, const Word *code, Value *value) {
  const Word *call = frame->frame.call;
  CheckRow(run, frame);
  const ExprItem *row = frame->frame.row;
  value->form = ValueForm::None;
  if (row == nullptr || static_cast<int32_t>(place) >= row->paramCount) {
    return false;
  }
  if (ItemParameters(row)[place].mode != 1) {
    return true;
  }
  PushName(place == 0 ? FirstChild(call[kCallNode].node) : code[kArgumentNode].node, value);
  return false;
}

void InvokeCall(Evaluation &run, Value *frame, uint32_t count) {
  const Word *call = frame->frame.call;
  Value *args = frame + 1;
  const uint32_t textsUsed = frame->textsUsed;
  Value result;
  result.form = ValueForm::None;
  CheckRow(run, frame);
  const ExprItem *row = frame->frame.row;
  const BuiltIn *builtIn = IsUnchanged(run, frame) ? call[kCallBuiltIn].builtIn : nullptr;
  if (builtIn != nullptr && builtIn->inner != nullptr) {
    InnerCall inner = {run.texts, args, count, &result};
    builtIn->inner(inner);
  } else if (row != nullptr && row->routine != nullptr && TakesNamesAlike(row, args, count)) {
    CallRoutine(run, {call, row, builtIn == nullptr}, args, count, &result);
  }
  for (uint32_t i = 0; i < count; i++) {
    if (args[i].form == ValueForm::Block || args[i].form == ValueForm::Name) {
      WRENMemFree(args[i].block);
    }
  }
  if (result.form == ValueForm::Text) {
    // Down to where the arguments' texts began.
    const TextSpan span = result.text;
    if (span.offset != textsUsed) {
      MoveTextBytes(run.texts.bytes + textsUsed, run.texts.bytes + span.offset, span.length);
    }
    SetText(run.texts, &result, textsUsed, span.length);
  } else {
    run.texts.used = textsUsed;
  }
  *frame = result;
}
