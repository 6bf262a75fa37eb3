// Binds the names of a program to what they refer to.
#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/items.h"
#include "evaluation/program.h"
#include "language/tree.h"
#include "language/types.h"

namespace {

// True when the evaluator may call the built-in function on values: the row declares it with its
// own types.
bool TakesValues(const ExprItem *row, const BuiltIn *builtIn, int16_t type) {
  if (builtIn == nullptr || builtIn->dataType != type) {
    return false;
  }
  for (int32_t i = 0; i < row->paramCount; ++i) {
    if (ItemParameters(row)[i].mode != kParamByValue) {
      return false;
    }
  }
  return true;
}

// True when each argument is declared, and none by name.
bool WantsAllValues(const ExprItem *row, uint32_t arguments) {
  for (int32_t i = 0; i < row->paramCount; ++i) {
    if (IsByName(ItemParameters(row)[i])) {
      return false;
    }
  }
  return static_cast<int64_t>(arguments) <= row->paramCount;
}

// True when each argument is declared, and of a type whose values hold no block.
bool TakesPlainValues(const ExprItem *row, uint32_t arguments) {
  for (int32_t i = 0; i < row->paramCount; ++i) {
    const uint16_t type = ItemParameters(row)[i].dataType;
    if (type != ORL_TYPE_NUMBER && type != ORL_TYPE_DATE && type != ORL_TYPE_STRING) {
      return false;
    }
  }
  return static_cast<int64_t>(arguments) <= row->paramCount;
}

void BindAll(EC ec, Program *program) {
  Word *code = ProgramCode(program);
  const Word *end = code + program->length;
  while (code < end) {
    switch (code->instruction.operation) {
      case Operation::NumberInput:
      case Operation::DateInput:
      case Operation::TextInput:
      case Operation::OtherInput:
        BindInput(ec, code);
        break;
      case Operation::Formula:
        BindFormula(ec, code);
        break;
      case Operation::Call:
        BindCall(ec, code);
        break;
      default:
        break;
    }
    code += InstructionLength(code->instruction.operation);
  }
  program->context = ec;
  program->generation = ec->generation;
}

}  // namespace

void BindInput(EC ec, Word *code) {
  const char *name = NodeText(code[kInputNode].node);
  const ExprItem *row = ItemFind(&ec->inputs, name);
  const bool usable = row != nullptr && row->dataType == code->instruction.type;
  code[kInputRoutine].routine = usable ? row->routine : nullptr;
  code[kInputName].text = name;
}

void BindFormula(EC ec, Word *code) {
  const ExprNode *node = code[kFormulaNode].node;
  Expression *target = ORLHEXPFromName(ec, NodeText(node));
  const bool usable =
      target != nullptr && target->tree != nullptr && NodeType(target->tree) == NodeType(node);
  code[kFormulaExpression].expression = usable ? target : nullptr;
}

// The tree keeps the types that it was parsed with. A row that was removed and added again may have
// others; its routine would then misinterpret its arguments.
void BindCall(EC ec, Word *code) {
  const ExprNode *node = code[kCallNode].node;
  const int16_t type = NodeType(node);
  ExprItem *row = ItemFind(&ec->functions, NodeText(node));
  const bool usable = row != nullptr && row->routine != nullptr &&
                      (row->dataType == type || row->dataType == ORL_TYPE_FOLLOWS) &&
                      TypeArgumentsFit(node, row);
  code[kCallRow].row = usable ? row : nullptr;
  code->instruction.detail = usable && WantsAllValues(row, code[kCallShape].call.arguments) ? 1 : 0;
  const BuiltIn *builtIn = usable ? BuiltInOf(row->routine) : nullptr;
  const bool onValues = usable && TakesValues(row, builtIn, type);
  const uint32_t arguments = code[kCallShape].call.arguments;
  code[kCallBuiltIn].builtIn = onValues ? builtIn : nullptr;
  code[kCallInner].inner = onValues && TakesPlainValues(row, arguments) ? builtIn->inner : nullptr;
}

Program *BindProgram(EC ec, Expression *expression) {
  Program *program = expression->program;
  if (program == nullptr) {
    program = expression->program = CompileTree(expression->tree);
    if (program == nullptr) {
      return nullptr;
    }
  }
  BindAll(ec, program);
  return program;
}
