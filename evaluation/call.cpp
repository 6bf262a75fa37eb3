// Calls of functions, the host's and the built-in ones.
#include <algorithm>
#include <cassert>
#include <cstring>

#include "engine/items.h"
#include "evaluation/evaluation.h"
#include "evaluation/host_block.h"
#include "language/tree.h"

namespace {

// ---- Calls ----

constexpr uint32_t kFewArguments = 8;

// Space for the arguments of a routine: one of each for each declared parameter.
struct Arguments {
  void **entries;        // addresses of the values, null for missing ones; null at first
  NumberValue *numbers;  // what the entries of numbers point to
};

// Turns a string into a block, which a host may resize or replace like any other.
void MakeTextBlock(const TextBuffer &texts, Value *value) {
  const TextSpan span = SpanOf(*value);
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
    case ValueForm::Narrow:
    case ValueForm::Wide:
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

// Terminates each string among the arguments; false when out of memory. From last to first, since
// each string moves up by the terminators before it.
bool TerminateTexts(TextBuffer &texts, Value *args, uint32_t count) {
  const auto isText = [](const Value &value) { return value.form == ValueForm::Text; };
  const auto number = static_cast<uint32_t>(std::count_if(args, args + count, isText));
  if (!TextReserve(texts, texts.used, number)) {
    return false;
  }
  texts.used += number;
  uint32_t end = texts.used;
  for (uint32_t i = count; i-- > 0;) {
    Value &value = args[i];
    if (isText(value)) {
      const TextSpan span = SpanOf(value);
      const uint32_t offset = end - 1 - span.length;
      std::memmove(texts.bytes + offset, texts.bytes + span.offset, span.length);
      texts.bytes[end - 1] = '\0';
      value.text.offset = offset;
      end = offset;
    }
  }
  return true;
}

struct RoutineCall {
  const Word *code;
  const ExprItem *row;
  bool blocks;  // strings are passed in blocks; to built-in routines in place
};

uint32_t DeclaredArguments(const ExprItem *row) {
  return row->paramCount < 0 ? 0 : static_cast<uint32_t>(row->paramCount);
}

void CallWithArguments(Evaluation &run, const RoutineCall &call, Value *args, uint32_t count,
                       Value *value, const Arguments &arguments) {
  if (!call.blocks && !TerminateTexts(run.texts, args, count)) {
    return;
  }
  const uint32_t given = std::min(count, DeclaredArguments(call.row));
  for (uint32_t i = 0; i < given; ++i) {
    arguments.entries[i] = EntryOf(run.texts, &args[i], &arguments.numbers[i], call.blocks);
  }
  const auto routine = reinterpret_cast<OrlFunctionProc>(call.row->routine);
  const char *name = NodeText(call.code[kCallNode].node);
  void **entries = count == 0 ? nullptr : arguments.entries;
  CallForType(run, call.code->instruction.type, value, [&](int32_t size, void **block) {
    return routine(run.ec, run.expression, size, block, name, entries);
  });
}

void CallWithManyArguments(Evaluation &run, const RoutineCall &call, Value *args, uint32_t count,
                           Value *value) {
  const uint32_t declared = DeclaredArguments(call.row);
  const Owned<void *> entries =
      Allocate<void *>(declared, declared * uint64_t{sizeof(NumberValue)});
  if (entries != nullptr) {
    auto *numbers = reinterpret_cast<NumberValue *>(entries.get() + declared);
    CallWithArguments(run, call, args, count, value, {entries.get(), numbers});
  }
}

void CallRoutine(Evaluation &run, const RoutineCall &call, Value *args, uint32_t count,
                 Value *value) {
  if (DeclaredArguments(call.row) > kFewArguments) {
    CallWithManyArguments(run, call, args, count, value);
    return;
  }
  void *entries[kFewArguments] = {};  // a routine may read more than its row declares
  NumberValue numbers[kFewArguments];
  CallWithArguments(run, call, args, count, value, {entries, numbers});
}

// After a routine has changed the context: the call keeps its row, even renamed, unless the row was
// removed.
void CheckRow(Evaluation &run, Value *frame) {
  if (IsUnchanged(run, frame)) {
    return;
  }
  if (HandleArrayFindPointer(run.ec->functions.rows, frame->frame.row) < 0) {
    frame->frame.row = nullptr;
  }
}

// Whether arguments are passed by name exactly where the row declares them so: a row that has
// replaced another may differ.
bool NamesMatch(const ExprItem *row, const Value *args, uint32_t count) {
  for (uint32_t i = 0; i < count && static_cast<int32_t>(i) < row->paramCount; ++i) {
    const bool byName = IsByName(ItemParameters(row)[i]);
    if (args[i].form != ValueForm::None && byName != (args[i].form == ValueForm::Name)) {
      return false;
    }
  }
  return true;
}

// An argument by name: a copy of the node's text. For a node without text the entry stays empty.
void PushName(const ExprNode *argument, Value *value) {
  char *copy = HasText(NodeKindOf(argument)) ? CopyText(NodeText(argument)).release() : nullptr;
  value->form = ValueForm::None;
  if (copy != nullptr) {
    value->block = copy;
    value->form = ValueForm::Name;
  }
}

}  // namespace

bool BeginCall(Evaluation &run, Word *code, Value *frame) {
  if (code[kCallRow].row == nullptr) {
    frame->form = ValueForm::None;
    return false;
  }
  PushFrame(run, code, frame);
  return true;
}

bool WantsArgument(Evaluation &run, Value *frame, uint32_t place, const Word *code, Value *value) {
  assert(frame->form == ValueForm::Frame);
  const Word *call = frame->frame.call;
  CheckRow(run, frame);
  const ExprItem *row = frame->frame.row;
  value->form = ValueForm::None;
  if (row == nullptr || static_cast<int32_t>(place) >= row->paramCount) {
    return false;
  }
  if (!IsByName(ItemParameters(row)[place])) {
    return true;
  }
  PushName(place == 0 ? FirstChild(call[kCallNode].node) : code[kArgumentNode].node, value);
  return false;
}

void InvokeCall(Evaluation &run, Value *frame, uint32_t count) {
  assert(frame->form == ValueForm::Frame);
  const Word *call = frame->frame.call;
  Value *args = frame + 1;
  const uint32_t textsUsed = frame->textsUsed;
  const bool unchanged = IsUnchanged(run, frame);
  const bool byValue = unchanged && call->instruction.detail != 0;
  CheckRow(run, frame);
  const ExprItem *row = frame->frame.row;
  const BuiltIn *builtIn = unchanged ? call[kCallBuiltIn].builtIn : nullptr;
  Value *result = frame;
  result->form = ValueForm::None;
  if (builtIn != nullptr && builtIn->inner != nullptr) {
    frame->arguments = count;
    builtIn->inner({run.texts, frame});
  } else if (row != nullptr && row->routine != nullptr &&
             (byValue || NamesMatch(row, args, count))) {
    CallRoutine(run, {call, row, builtIn == nullptr}, args, count, result);
  }
  for (uint32_t i = 0; i < count; ++i) {
    FreeBlockOf(args[i]);
  }
  PlaceResult(run.texts, result, textsUsed);
}
