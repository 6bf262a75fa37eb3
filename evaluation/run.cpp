// The interpreter: programs and the programs of the formulas that they refer to, on stacks of its
// own, so that neither the depth of a formula nor the length of a chain of formulas uses C stack.
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

}  // namespace

// Throughout, `top` + 1 is the first free place of the value stack.
void RunProgram(Evaluation &run, Program *program) {
  ExprContext *const ec = run.ec;
  Word *code = ProgramCode(program);
  Value *top = run.values.items - 1;
  for (;;) {
    const Instruction &instruction = code->instruction;
    switch (instruction.operation) {
      case Operation::NumberInput:
        if (program->generation != ec->generation) [[unlikely]] {
          BindInput(ec, code);
        }
        InputValue<ORL_TYPE_NUMBER>(run, code, ++top);
        code += kInputEnd;
        continue;
      case Operation::DateInput:
        if (program->generation != ec->generation) {
          BindInput(ec, code);
        }
        InputValue<ORL_TYPE_DATE>(run, code, ++top);
        code += kInputEnd;
        continue;
      case Operation::TextInput:
        if (program->generation != ec->generation) {
          BindInput(ec, code);
        }
        InputOf<ORL_TYPE_STRING>(run, code, ++top);
        code += kInputEnd;
        continue;
      case Operation::OtherInput:
        if (program->generation != ec->generation) {
          BindInput(ec, code);
        }
        InputOf<kHostType>(run, code, ++top);
        code += kInputEnd;
        continue;
      case Operation::SmallNumber:
        SetNarrow(++top, {instruction.operand, 0});
        ++code;
        continue;
      case Operation::Number:
        SetNumber(++top, DecimalOfWords(code));
        code += kNumberEnd;
        continue;
      case Operation::Constant:
        if (ec->hasNumberOperators) {
          code += kNumberEnd;
        } else {
          SetNumber(++top, DecimalOfWords(code));
          code += instruction.operand;
        }
        continue;
      case Operation::Nothing:
        code += kNumberEnd;
        continue;
      case Operation::PackedNumber:
        SetPacked(++top, code + 1);
        code += 3;
        continue;
      case Operation::Add:
        --top;
        Arithmetic<Operation::Add>(run, top, top + 1);
        ++code;
        continue;
      case Operation::Subtract:
        --top;
        Arithmetic<Operation::Subtract>(run, top, top + 1);
        ++code;
        continue;
      case Operation::Multiply:
        --top;
        Arithmetic<Operation::Multiply>(run, top, top + 1);
        ++code;
        continue;
      case Operation::Divide:
        --top;
        Arithmetic<Operation::Divide>(run, top, top + 1);
        ++code;
        continue;
      case Operation::Text:
        CopyTextInto(run.texts, ++top, code[1].text, static_cast<uint32_t>(code[2].bits));
        code += 3;
        continue;
      case Operation::EscapedText:
        PushEscapedText(run.texts, code[1].text, ++top);
        code += 2;
        continue;
      case Operation::Concatenate:
        --top;
        Concatenate(run.texts, top, top + 1);
        ++code;
        continue;
      case Operation::Date:
        PushDate(code[1].text, ++top);
        code += 2;
        continue;
      case Operation::MoveDate:
        --top;
        MoveDate(instruction, top, top + 1);
        ++code;
        continue;
      case Operation::SubtractDates:
        --top;
        SubtractDates(run.texts, top, top + 1);
        ++code;
        continue;
      case Operation::Call: {
        if (program->generation != ec->generation) {
          BindCall(ec, code);
        }
        Value *frame = ++top;
        if (instruction.detail != 0) [[likely]] {
          PushFrame(run, code, frame);
          code += kCallEnd;
          continue;
        }
        const uint32_t count = code[kCallShape].call.arguments;
        if (!BeginCall(run, code, frame)) {
          code += code[kCallShape].call.length;
        } else if (count > 0 && !WantsArgument(run, frame, 0, code, top + 1)) {
          ++top;
          code += instruction.operand;
        } else {
          code += kCallEnd;
        }
        continue;
      }
      case Operation::NextArgument: {
        Value *frame = top - instruction.detail;
        const bool wanted = IsUnchanged(run, frame) && frame->frame.call->instruction.detail != 0;
        if (wanted || WantsArgument(run, frame, instruction.detail, code, top + 1)) {
          code += kArgumentEnd;
        } else {
          ++top;
          code += instruction.operand;
        }
        continue;
      }
      case Operation::Invoke: {
        const auto count = static_cast<uint32_t>(instruction.operand);
        top -= count;
        const InnerRoutine inner = InnerRoutineOf(run, top);
        if (inner != nullptr) {
          const uint32_t textsUsed = top->textsUsed;
          top->arguments = count;
          inner({run.texts, top});
          PlaceResult(run.texts, top, textsUsed);
        } else {
          InvokeCall(run, top, count);
        }
        ++code;
        continue;
      }
      case Operation::Formula: {
        if (program->generation != ec->generation) {
          BindFormula(ec, code);
        }
        const uint32_t values = static_cast<uint32_t>(++top - run.values.items);
        Program *entered = EnterFormula(run, code[kFormulaExpression].expression, values, program,
                                        code + kFormulaEnd);
        top = run.values.items + values;
        if (entered == nullptr) {
          top->form = ValueForm::None;
          code += kFormulaEnd;
        } else {
          --top;
          program = entered;
          code = ProgramCode(program);
        }
        continue;
      }
      case Operation::NoValue:
        (++top)->form = ValueForm::None;
        ++code;
        continue;
      case Operation::End: {
        if (run.formulas.count == 0) {
          return;
        }
        const FormulaFrame &frame = run.formulas.items[--run.formulas.count];
        frame.expression->evaluation = frame.before;
        run.expression = frame.caller;
        program = frame.program;
        code = frame.next;
        continue;
      }
    }
    __builtin_unreachable();
  }
}
