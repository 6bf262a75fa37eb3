// The interpreter: programs and the programs of the formulas that they refer to, on stacks of its
// own, so that neither the depth of a formula nor the length of a chain of formulas costs C stack.
#include "evaluation/arithmetic.h"
#include "evaluation/evaluation.h"
#include "evaluation/host_block.h"

namespace {

constexpr int32_t kOtherType = 3;  // of the host's own

// Enters an expression: its program, with room for its values; null where it cannot be computed.
Program *EnterExpression(Evaluation &run, Expression *expression, uint32_t values, Program *program,
                         Word *next) {
  if (expression == nullptr || expression->evaluation == &run) {  // gone, or a circle
    return nullptr;
  }
  Program *entered = BoundProgram(run.ec, expression);
  if (entered == nullptr) {
    return nullptr;
  }
  const uint64_t wanted = uint64_t{values} + entered->depth;
  run.values.count = values;
  if (wanted > run.values.room && !StackGrow(run.values, wanted)) {
    return nullptr;
  }
  FormulaFrame *frame = StackPush(run.formulas);
  if (frame == nullptr) {
    return nullptr;
  }
  *frame = {expression, expression->evaluation, program, next};
  expression->evaluation = &run;
  run.expression = expression;
  return entered;
}

FormulaFrame LeaveExpression(Evaluation &run) {
  const FormulaFrame frame = run.formulas.items[--run.formulas.count];
  frame.expression->evaluation = frame.before;
  run.expression =
      run.formulas.count == 0 ? nullptr : run.formulas.items[run.formulas.count - 1].expression;
  return frame;
}

inline bool AreNumbers(const Value &left, const Value &right) {
  return left.form == ValueForm::Number && right.form == ValueForm::Number;
}

template <Operation operation>
inline void Arithmetic(Evaluation &run, Value *left, Value *right) {
  Decimal result;
  if (AreNumbers(*left, *right) && !run.ec->hasNumberOperators &&
      Compute(operation, &result, NumberOf(*left), NumberOf(*right))) [[likely]] {
    SetNumber(left, result);
  } else {
    ComputeSlowly(run, operation, left, right);
  }
}

// Runs the program of the expression that was entered last. One more than `top` is the first free
// place of the value stack, throughout.
void RunProgram(Evaluation &run, Program *program) {
  Word *code = ProgramCode(program);
  Value *top = run.values.items - 1;
  for (;;) {
    const Instruction instruction = code->instruction;
    switch (instruction.operation) {
      case Operation::NumberInput:
        if (program->generation != run.ec->generation) [[unlikely]] {
          BindInput(run.ec, code);
        }
        InputValue<ORL_TYPE_NUMBER>(run, code, ++top);
        code += kInputEnd;
        break;
      case Operation::DateInput:
        if (program->generation != run.ec->generation) {
          BindInput(run.ec, code);
        }
        InputValue<ORL_TYPE_DATE>(run, code, ++top);
        code += kInputEnd;
        break;
      case Operation::TextInput:
        if (program->generation != run.ec->generation) {
          BindInput(run.ec, code);
        }
        InputValue<ORL_TYPE_STRING>(run, code, ++top);
        code += kInputEnd;
        break;
      case Operation::OtherInput:
        if (program->generation != run.ec->generation) {
          BindInput(run.ec, code);
        }
        InputValue<kOtherType>(run, code, ++top);
        code += kInputEnd;
        break;
      case Operation::SmallNumber:
        SetNumber(++top, {instruction.operand, 0});
        code++;
        break;
      case Operation::Number:
        SetNumber(++top, DecimalOfWords(code));
        code += kNumberEnd;
        break;
      case Operation::Constant:
        if (run.ec->hasNumberOperators) {
          code += kNumberEnd;
        } else {
          SetNumber(++top, DecimalOfWords(code));
          code += instruction.operand;
        }
        break;
      case Operation::Nothing:
        code += kNumberEnd;
        break;
      case Operation::PackedNumber:
        SetPacked(++top, code + 1);
        code += 3;
        break;
      case Operation::Add:
        --top;
        Arithmetic<Operation::Add>(run, top, top + 1);
        code++;
        break;
      case Operation::Subtract:
        --top;
        Arithmetic<Operation::Subtract>(run, top, top + 1);
        code++;
        break;
      case Operation::Multiply:
        --top;
        Arithmetic<Operation::Multiply>(run, top, top + 1);
        code++;
        break;
      case Operation::Divide:
        --top;
        Arithmetic<Operation::Divide>(run, top, top + 1);
        code++;
        break;
      case Operation::Text:
        CopyTextInto(run.texts, ++top, code[1].text, static_cast<uint32_t>(code[2].bits));
        code += 3;
        break;
      case Operation::EscapedText:
        PushEscapedText(run.texts, code[1].text, ++top);
        code += 2;
        break;
      case Operation::Concatenate:
        --top;
        Concatenate(run.texts, top, top + 1);
        code++;
        break;
      case Operation::Date:
        PushDate(code[1].text, ++top);
        code += 2;
        break;
      case Operation::MoveDate:
        --top;
        MoveDate(instruction, top, top + 1);
        code++;
        break;
      case Operation::SubtractDates:
        --top;
        SubtractDates(run.texts, top, top + 1);
        code++;
        break;
      case Operation::Call: {
        if (program->generation != run.ec->generation) {
          BindCall(run.ec, code);
        }
        Value *frame = ++top;
        const uint32_t count = code[kCallShape].call.arguments;
        if (!BeginCall(run, code, frame)) {
          code += code[kCallShape].call.length;
        } else if (count > 0 && !WantsArgument(run, frame, 0, code, top + 1)) {
          top++;
          code += instruction.operand;
        } else {
          code += kCallEnd;
        }
        break;
      }
      case Operation::NextArgument:
        if (WantsArgument(run, top - instruction.detail, instruction.detail, code, top + 1)) {
          code += kArgumentEnd;
        } else {
          top++;
          code += instruction.operand;
        }
        break;
      case Operation::Invoke:
        top -= instruction.operand;
        InvokeCall(run, top, static_cast<uint32_t>(instruction.operand));
        code++;
        break;
      case Operation::Formula: {
        if (program->generation != run.ec->generation) {
          BindFormula(run.ec, code);
        }
        const uint32_t values = static_cast<uint32_t>(++top - run.values.items);
        Program *entered = EnterExpression(run, code[kFormulaExpression].expression, values,
                                           program, code + kFormulaEnd);
        top = run.values.items + values;
        if (entered == nullptr) {
          top->form = ValueForm::None;
          code += kFormulaEnd;
        } else {
          --top;
          program = entered;
          code = ProgramCode(program);
        }
        break;
      }
      case Operation::NoValue:
        (++top)->form = ValueForm::None;
        code++;
        break;
      case Operation::End: {
        const FormulaFrame frame = LeaveExpression(run);
        if (frame.program == nullptr) {
          return;
        }
        program = frame.program;
        code = frame.next;
        break;
      }
    }
  }
}

}  // namespace

const Value *EvaluationRun(Evaluation &run, EC ec, HEXP exp) {
  run.ec = ec;
  run.expression = exp;
  TextBufferBegin(run.texts);
  StackBegin(run.values);
  StackBegin(run.formulas);
  run.values.items[0].form = ValueForm::None;
  Program *program = EnterExpression(run, exp, 0, nullptr, nullptr);
  if (program == nullptr) {
    return nullptr;
  }
  RunProgram(run, program);
  const Value *value = run.values.items;
  return value->form == ValueForm::None ? nullptr : value;
}

void EvaluationEnd(Evaluation &run) {
  DropValue(run.texts, run.values.items);
  TextBufferEnd(run.texts);
  StackEnd(run.values);
  StackEnd(run.formulas);
}
