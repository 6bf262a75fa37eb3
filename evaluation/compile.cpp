// Compiles a tree to a program, without recursion: down to each leaf and up through the parents.
#include <cassert>
#include <cstring>

#include "engine/context.h"
#include "evaluation/arithmetic.h"
#include "evaluation/growing_stack.h"
#include "evaluation/program.h"
#include "language/tree.h"

namespace {

// An argument that is being compiled: the start of the call's code and of its own.
struct OpenArgument {
  uint32_t call;
  uint32_t argument;
  uint32_t place;  // among the arguments
};

struct Compiler {
  const ExprNode *root;
  bool outOfMemory;
  uint32_t depth;  // values on the stack at this place
  uint32_t mostDepth;
  const ExprNode *constant;  // the constant part that is being compiled, or null
  uint32_t constantAt;
  GrowingStack<Word, 64> code;
  GrowingStack<OpenArgument, 8> open;
};

// Appends an instruction with its words zeroed; null when out of memory. The pointer holds until
// the next one is appended.
Word *Emit(Compiler &compiler, Operation operation, int32_t pushed) {
  const uint32_t words = InstructionLength(operation);
  const uint64_t wanted = uint64_t{compiler.code.count} + words;
  if (wanted > compiler.code.capacity && !StackGrow(compiler.code, wanted)) {
    compiler.outOfMemory = true;
    return nullptr;
  }
  Word *code = compiler.code.items + compiler.code.count;
  std::memset(code, 0, words * sizeof(Word));
  code->instruction.operation = operation;
  compiler.code.count += words;
  compiler.depth += static_cast<uint32_t>(pushed);
  if (compiler.mostDepth < compiler.depth) {
    compiler.mostDepth = compiler.depth;
  }
  return code;
}

bool HasValues(int16_t type) {
  return type >= 0 && type <= kHostType;
}

void EmitDecimal(Word *code, const Decimal &d) {
  code[kNumberLow].bits = static_cast<uint64_t>(d.coefficient);
  code[kNumberHigh].bits = static_cast<uint64_t>(d.coefficient >> 64);
  code[kNumberExponent].bits = static_cast<uint64_t>(d.exponent);
}

void EmitNumber(Compiler &compiler, const NumberValue &number) {
  Decimal d = {};
  if (!DecimalLoad(&number, &d)) {
    if (Word *code = Emit(compiler, Operation::PackedNumber, 1)) {
      std::memcpy(code + 1, &number, sizeof number);
    }
  } else if (d.exponent == 0 && d.coefficient == static_cast<int32_t>(d.coefficient)) {
    if (Word *code = Emit(compiler, Operation::SmallNumber, 1)) {
      code->instruction.operand = static_cast<int32_t>(d.coefficient);
    }
  } else if (Word *code = Emit(compiler, Operation::Number, 1)) {
    EmitDecimal(code, d);
  }
}

void EmitText(Compiler &compiler, const ExprNode *node) {
  const bool escaped = (NodeDetail(node) & 1) != 0;
  Word *code = Emit(compiler, escaped ? Operation::EscapedText : Operation::Text, 1);
  if (code != nullptr) {
    code[1].text = NodeText(node);
    if (!escaped) {
      code[2].bits = std::strlen(NodeText(node));
    }
  }
}

void EmitInput(Compiler &compiler, ExprNode *node) {
  const int16_t type = NodeType(node);
  Operation operation = Operation::OtherInput;
  switch (type) {
    case ORL_TYPE_NUMBER:
      operation = Operation::NumberInput;
      break;
    case ORL_TYPE_DATE:
      operation = Operation::DateInput;
      break;
    case ORL_TYPE_STRING:
      operation = Operation::TextInput;
      break;
    default:
      break;
  }
  const bool usable = HasValues(type);
  Word *code = Emit(compiler, usable ? operation : Operation::NoValue, 1);
  if (code != nullptr && usable) {
    code->instruction.type = static_cast<uint8_t>(type);
    code[kInputNode].node = node;
  }
}

void EmitFormula(Compiler &compiler, ExprNode *node) {
  if (Word *code = Emit(compiler, Operation::Formula, 1)) {
    code[kFormulaNode].node = node;
  }
}

bool IsNumberType(int16_t type) {
  return type == ORL_TYPE_NUMBER || type == ORL_TYPE_DATE;
}

bool IsArithmetic(const ExprNode *node) {
  const int32_t kind = NodeKindOf(node);
  return NodeType(node) == ORL_TYPE_NUMBER &&
         (kind == NODE_ADD || kind == NODE_MUL || kind == NODE_DIV ||
          (kind == NODE_SUB && NodeType(LeftOperand(node)) == ORL_TYPE_NUMBER));
}

// True when there is a rule to compute the operator for its type.
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

Operation ArithmeticOf(int32_t kind) {
  switch (kind) {
    case NODE_ADD:
      return Operation::Add;
    case NODE_SUB:
      return Operation::Subtract;
    case NODE_MUL:
      return Operation::Multiply;
    default:
      return Operation::Divide;
  }
}

void EmitOperator(Compiler &compiler, const ExprNode *node) {
  const int32_t kind = NodeKindOf(node);
  if (kind == NODE_CONCAT) {
    Emit(compiler, Operation::Concatenate, -1);
  } else if (IsArithmetic(node)) {
    Emit(compiler, ArithmeticOf(kind), -1);
  } else if (NodeType(node) == ORL_TYPE_NUMBER) {
    Emit(compiler, Operation::SubtractDates, -1);
  } else if (Word *code = Emit(compiler, Operation::MoveDate, -1)) {
    code->instruction.detail = NodeDetail(node);
    code->instruction.operand = kind;
  }
}

// ---- Constant parts ----

// The most nodes of a part that is examined, so that a long chain takes linear time.
constexpr uint32_t kMaxConstantNodes = 15;

bool IsConstantPart(ExprNode *part) {
  uint32_t nodes = 0;
  for (ExprNode *node = part; node != nullptr; node = ExprNodeNext(part, node)) {
    if (++nodes > kMaxConstantNodes || !(NodeKindOf(node) == NODE_NUMBER ||
                                         (IsOperator(NodeKindOf(node)) && IsArithmetic(node)))) {
      return false;
    }
  }
  return true;
}

// Computes the code of a constant part; false when its value is not a number.
bool ComputeConstant(const Word *code, const Word *end, Decimal *result) {
  Decimal stack[kMaxConstantNodes];
  uint32_t count = 0;
  for (; code < end; code += InstructionLength(code->instruction.operation)) {
    switch (code->instruction.operation) {
      case Operation::SmallNumber:
        stack[count++] = {code->instruction.operand, 0};
        break;
      case Operation::Number:
        stack[count++] = DecimalOfWords(code);
        break;
      case Operation::PackedNumber:
        return false;
      default:
        --count;
        if (!Compute(code->instruction.operation, &stack[count - 1], stack[count - 1],
                     stack[count])) {
          return false;
        }
    }
  }
  *result = stack[0];
  return true;
}

void BeginConstantPart(Compiler &compiler, const ExprNode *part) {
  compiler.constant = part;
  compiler.constantAt = compiler.code.count;
  Emit(compiler, Operation::Nothing, 0);
}

void EndConstantPart(Compiler &compiler) {
  Word *head = compiler.code.items + compiler.constantAt;
  const Word *end = compiler.code.items + compiler.code.count;
  Decimal value = {};
  if (ComputeConstant(head + kNumberEnd, end, &value)) {
    head->instruction.operation = Operation::Constant;
    head->instruction.operand = static_cast<int32_t>(end - head);
    EmitDecimal(head, value);
  }
  compiler.constant = nullptr;
}

// ---- Calls ----

void OpenArgumentAt(Compiler &compiler, const OpenArgument &argument) {
  OpenArgument *open = StackPush(compiler.open);
  if (open == nullptr) {
    compiler.outOfMemory = true;
  } else {
    *open = argument;
  }
}

void EmitInvoke(Compiler &compiler, uint32_t call) {
  const uint32_t arguments = compiler.code.items[call + kCallShape].call.arguments;
  if (Word *code = Emit(compiler, Operation::Invoke, -static_cast<int32_t>(arguments))) {
    Word *begin = compiler.code.items + call;
    code->instruction.operand = static_cast<int32_t>(arguments);
    code->instruction.type = begin->instruction.type;
    begin[kCallShape].call.length = compiler.code.count - call;
  }
}

// Begins a call. Returns its first argument, or null when the call is complete.
ExprNode *EmitCall(Compiler &compiler, ExprNode *node) {
  const int16_t type = NodeType(node);
  const bool usable = HasValues(type);
  Word *code = Emit(compiler, usable ? Operation::Call : Operation::NoValue, 1);
  if (code == nullptr || !usable) {
    return nullptr;
  }
  code->instruction.type = static_cast<uint8_t>(type);
  code[kCallNode].node = node;
  code[kCallShape].call.arguments = ChildCount(node);
  const uint32_t call = compiler.code.count - kCallEnd;
  ExprNode *first = FirstChild(node);
  if (first == nullptr) {
    EmitInvoke(compiler, call);
  } else {
    OpenArgumentAt(compiler, {call, call, 0});
  }
  return first;
}

// Moves from a complete argument to the next one; null after the last.
ExprNode *EmitNextArgument(Compiler &compiler, ExprNode *argument) {
  const OpenArgument done = compiler.open.items[--compiler.open.count];
  Word *begin = compiler.code.items + done.argument;
  begin->instruction.operand = static_cast<int32_t>(compiler.code.count - done.argument);
  ExprNode *next = NextSibling(argument);
  if (next == nullptr) {
    EmitInvoke(compiler, done.call);
    return nullptr;
  }
  const uint32_t at = compiler.code.count;
  if (Word *code = Emit(compiler, Operation::NextArgument, 0)) {
    code->instruction.detail = static_cast<uint16_t>(done.place + 1);
    code[kArgumentNode].node = next;
    OpenArgumentAt(compiler, {done.call, at, done.place + 1});
  }
  return next;
}

// ---- The walk ----

// Compiles a node without operands; for others returns the operand or argument to descend to, or
// null.
ExprNode *EmitNode(Compiler &compiler, ExprNode *node) {
  switch (NodeKindOf(node)) {
    case NODE_NUMBER:
      EmitNumber(compiler, NodeNumber(node));
      return nullptr;
    case NODE_STRING:
      EmitText(compiler, node);
      return nullptr;
    case NODE_DATE:
      if (Word *code = Emit(compiler, Operation::Date, 1)) {
        code[1].text = NodeText(node);
      }
      return nullptr;
    case NODE_ITEM:
      EmitInput(compiler, node);
      return nullptr;
    case NODE_FORMULA:
      EmitFormula(compiler, node);
      return nullptr;
    case NODE_CALL:
      return EmitCall(compiler, node);
    default:
      break;
  }
  if (!HasOperatorRule(node)) {
    Emit(compiler, Operation::NoValue, 1);
    return nullptr;
  }
  if (compiler.constant == nullptr && IsArithmetic(node) && IsConstantPart(node)) {
    BeginConstantPart(compiler, node);
  }
  return LeftOperand(node);
}

// Moves from a complete node to the next one to descend to; null when the tree is complete.
ExprNode *GoUp(Compiler &compiler, ExprNode *node) {
  while (!compiler.outOfMemory) {
    if (node == compiler.constant) {
      EndConstantPart(compiler);
    }
    if (node == compiler.root) {
      return nullptr;
    }
    ExprNode *parent = NodeParent(node);
    ExprNode *next = nullptr;
    if (NodeKindOf(parent) == NODE_CALL) {
      next = EmitNextArgument(compiler, node);
    } else if (IsFirstChild(node)) {
      next = RightOperand(parent);
    } else {
      EmitOperator(compiler, parent);
    }
    if (next != nullptr) {
      return next;
    }
    node = parent;
  }
  return nullptr;
}

void CompileNodes(Compiler &compiler, ExprNode *node) {
  while (node != nullptr) {
    ExprNode *below = EmitNode(compiler, node);
    if (compiler.outOfMemory) {
      return;
    }
    node = below != nullptr ? below : GoUp(compiler, node);
  }
  Emit(compiler, Operation::End, 0);
}

}  // namespace

Program *CompileTree(const ExprNode *tree) {
  assert(tree != nullptr && NodeParent(tree) == nullptr);
  Compiler compiler;
  compiler.root = tree;
  compiler.outOfMemory = false;
  compiler.depth = compiler.mostDepth = 0;
  compiler.constant = nullptr;
  compiler.constantAt = 0;
  CompileNodes(compiler, const_cast<ExprNode *>(tree));
  const uint64_t codeSize = uint64_t{compiler.code.count} * sizeof(Word);
  const uint64_t size = sizeof(Program) + codeSize;
  Program *program = compiler.outOfMemory || size > UINT32_MAX
                         ? nullptr
                         : static_cast<Program *>(WRENMemAlloc(static_cast<uint32_t>(size)));
  if (program != nullptr) {
    program->depth = compiler.mostDepth;
    program->length = compiler.code.count;
    std::memcpy(ProgramCode(program), compiler.code.items, codeSize);
  }
  return program;
}
