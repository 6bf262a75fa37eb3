// The interpreter: programs and the programs of the formulas that they refer to, on stacks of its
// own, so that neither the depth of a formula nor the length of a chain of formulas uses C stack.
#include <cassert>

#include "evaluation/arithmetic.h"
#include "evaluation/evaluation.h"
#include "evaluation/host_block.h"

namespace {

// Enters a formula that the program of another one refers to; null where it cannot be computed.
Program *EnterFormula(Evaluation &run, Expression *expression, uint32_t values, Program *caller,
                      Word *next) {
  if (expression == nullptr || expression->evaluation == &run) {  // gone, or a cycle
    return nullptr;
  }
  Program *entered = BoundProgram(run.ec, expression);
  FormulaFrame *frame = entered == nullptr || !ReserveValues(run, values, entered)
                            ? nullptr
                            : StackPush(run.formulas);
  if (frame == nullptr) {
    run.texts.outOfMemory = true;
    return nullptr;
  }
  *frame = {expression, expression->evaluation, run.expression, caller, next};
  expression->evaluation = &run;
  run.expression = expression;
  return entered;
}

// False where the result is not narrow, and for quotients.
template <Operation operation>
inline bool ComputeNarrow(NarrowDecimal *result, NarrowDecimal left, NarrowDecimal right) {
  switch (operation) {
    case Operation::Add:
      return NarrowAdd(result, left, right);
    case Operation::Subtract:
      return NarrowSubtract(result, left, right);
    case Operation::Multiply:
      return NarrowMultiply(result, left, right);
    default:
      return false;
  }
}

template <Operation operation>
inline void Arithmetic(Evaluation &run, Value *left, Value *right) {
  if (run.ec->hasNumberOperators) {
    ComputeSlowly(run, operation, left, right);
    return;
  }
  NarrowDecimal result;
  if (left->form == ValueForm::Narrow && right->form == ValueForm::Narrow &&
      ComputeNarrow<operation>(&result, NarrowOf(*left), NarrowOf(*right))) [[likely]] {
    SetNarrow(left, result);
    return;
  }
  if constexpr (operation == Operation::Divide) {
    Decimal quotient;
    if (IsNumber(*left) && IsNumber(*right) &&
        ComputeQuotient(&quotient, NumberOf(*left), NumberOf(*right))) [[likely]] {
      SetNumber(left, quotient);
      return;
    }
  }
  ComputeSlowly(run, operation, left, right);
}

// Out of line, so that the registers of the interpreter remain for numbers.
template <int32_t type>
[[gnu::noinline]] void InputOf(Evaluation &run, const Word *code, Value *value) {
  InputValue<type>(run, code, value);
}

// Where the interpreter is. `top` + 1 is the first free place of the value stack.
struct Position {
  Program *program;
  Word *code;
  Value *top;
};

// Binds the names of one instruction again when the context has changed since the program's names
// were bound.
template <void (*Bind)(EC, Word *)>
[[gnu::always_inline]] inline void BindIfStale(const Position &at, EC ec) {
  if (at.program->generation != ec->generation) [[unlikely]] {
    Bind(ec, at.code);
  }
}

// Pushes the frame of a call and continues with its first argument, which may be passed by name, or
// after the call when there is no routine to call.
[[gnu::always_inline]] inline void RunCall(Evaluation &run, Position &at) {
  Value *frame = ++at.top;
  if (at.code->instruction.detail != 0) [[likely]] {
    PushFrame(run, at.code, frame);
    at.code += kCallEnd;
    return;
  }
  const uint32_t count = at.code[kCallShape].call.arguments;
  if (!BeginCall(run, at.code, frame)) {
    at.code += at.code[kCallShape].call.length;
  } else if (count > 0 && !WantsArgument(run, frame, 0, at.code, at.top + 1)) {
    ++at.top;
    at.code += at.code->instruction.operand;
  } else {
    at.code += kCallEnd;
  }
}

[[gnu::always_inline]] inline void RunNextArgument(Evaluation &run, Position &at) {
  const Instruction &instruction = at.code->instruction;
  Value *frame = at.top - instruction.detail;
  const bool wanted = IsUnchanged(run, frame) && frame->frame.call->instruction.detail != 0;
  if (wanted || WantsArgument(run, frame, instruction.detail, at.code, at.top + 1)) {
    at.code += kArgumentEnd;
  } else {
    ++at.top;
    at.code += instruction.operand;
  }
}

[[gnu::always_inline]] inline void RunInvoke(Evaluation &run, Position &at) {
  const auto count = static_cast<uint32_t>(at.code->instruction.operand);
  Value *frame = at.top -= count;
  const InnerRoutine inner = InnerRoutineOf(run, frame);
  if (inner != nullptr) {
    const uint32_t textsUsed = frame->textsUsed;
    frame->arguments = count;
    inner({run.texts, frame});
    PlaceResult(run.texts, frame, textsUsed);
  } else {
    InvokeCall(run, frame, count);
  }
  ++at.code;
}

// Continues with the program of the formula, or after the instruction when the formula has no
// value.
[[gnu::always_inline]] inline void RunFormulaOf(Evaluation &run, Position &at) {
  const auto values = static_cast<uint32_t>(at.top + 1 - run.values.items);
  Word *next = at.code + kFormulaEnd;
  Program *entered =
      EnterFormula(run, at.code[kFormulaExpression].expression, values, at.program, next);
  at.top = run.values.items + values - 1;  // the stack may have moved
  if (entered == nullptr) {
    (++at.top)->form = ValueForm::None;
    at.code = next;
  } else {
    at.program = entered;
    at.code = ProgramCode(entered);
  }
}

// Returns to the program that the one at its end was entered from.
[[gnu::always_inline]] inline void LeaveFormula(Evaluation &run, Position &at) {
  const FormulaFrame &frame = run.formulas.items[--run.formulas.count];
  frame.expression->evaluation = frame.before;
  run.expression = frame.caller;
  at.program = frame.program;
  at.code = frame.next;
}

}  // namespace

void RunProgram(Evaluation &run, Program *program) {
  ExprContext *const ec = run.ec;
  Position at = {program, ProgramCode(program), run.values.items - 1};
  for (;;) {
    assert(at.top - run.values.items < int64_t{run.values.capacity});
    const Instruction &instruction = at.code->instruction;
    switch (instruction.operation) {
      case Operation::NumberInput:
        BindIfStale<BindInput>(at, ec);
        InputValue<ORL_TYPE_NUMBER>(run, at.code, ++at.top);
        at.code += kInputEnd;
        continue;
      case Operation::DateInput:
        BindIfStale<BindInput>(at, ec);
        InputValue<ORL_TYPE_DATE>(run, at.code, ++at.top);
        at.code += kInputEnd;
        continue;
      case Operation::TextInput:
        BindIfStale<BindInput>(at, ec);
        InputOf<ORL_TYPE_STRING>(run, at.code, ++at.top);
        at.code += kInputEnd;
        continue;
      case Operation::OtherInput:
        BindIfStale<BindInput>(at, ec);
        InputOf<kHostType>(run, at.code, ++at.top);
        at.code += kInputEnd;
        continue;
      case Operation::SmallNumber:
        SetNarrow(++at.top, {instruction.operand, 0});
        ++at.code;
        continue;
      case Operation::Number:
        SetNumber(++at.top, DecimalOfWords(at.code));
        at.code += kNumberEnd;
        continue;
      case Operation::Constant:
        if (ec->hasNumberOperators) {
          at.code += kNumberEnd;
        } else {
          SetNumber(++at.top, DecimalOfWords(at.code));
          at.code += instruction.operand;
        }
        continue;
      case Operation::Nothing:
        at.code += kNumberEnd;
        continue;
      case Operation::PackedNumber:
        SetPacked(++at.top, at.code + 1);
        at.code += 3;
        continue;
      case Operation::Add:
        --at.top;
        Arithmetic<Operation::Add>(run, at.top, at.top + 1);
        ++at.code;
        continue;
      case Operation::Subtract:
        --at.top;
        Arithmetic<Operation::Subtract>(run, at.top, at.top + 1);
        ++at.code;
        continue;
      case Operation::Multiply:
        --at.top;
        Arithmetic<Operation::Multiply>(run, at.top, at.top + 1);
        ++at.code;
        continue;
      case Operation::Divide:
        --at.top;
        Arithmetic<Operation::Divide>(run, at.top, at.top + 1);
        ++at.code;
        continue;
      case Operation::Text:
        CopyTextInto(run.texts, ++at.top, at.code[1].text, static_cast<uint32_t>(at.code[2].bits));
        at.code += 3;
        continue;
      case Operation::EscapedText:
        PushEscapedText(run.texts, at.code[1].text, ++at.top);
        at.code += 2;
        continue;
      case Operation::Concatenate:
        --at.top;
        Concatenate(run.texts, at.top, at.top + 1);
        ++at.code;
        continue;
      case Operation::Date:
        PushDate(at.code[1].text, ++at.top);
        at.code += 2;
        continue;
      case Operation::MoveDate:
        --at.top;
        MoveDate(instruction, at.top, at.top + 1);
        ++at.code;
        continue;
      case Operation::SubtractDates:
        --at.top;
        SubtractDates(run.texts, at.top, at.top + 1);
        ++at.code;
        continue;
      case Operation::Call:
        BindIfStale<BindCall>(at, ec);
        RunCall(run, at);
        continue;
      case Operation::NextArgument:
        RunNextArgument(run, at);
        continue;
      case Operation::Invoke:
        RunInvoke(run, at);
        continue;
      case Operation::Formula:
        BindIfStale<BindFormula>(at, ec);
        RunFormulaOf(run, at);
        continue;
      case Operation::NoValue:
        (++at.top)->form = ValueForm::None;
        ++at.code;
        continue;
      case Operation::End:
        if (run.formulas.count == 0) {
          return;
        }
        LeaveFormula(run, at);
        continue;
    }
    // Every case continues; this omits the range check of the jump table.
    __builtin_unreachable();
  }
}
