// The compiled form of an expression: a flat program in postfix order.
//
// A program is one heap block. It is compiled from the tree when the expression is evaluated for
// the first time, is owned by the expression and freed with its tree. Instructions are sequences of
// words; the first holds the opcode, and names are bound: the words after it hold what the name
// refers to, valid while the context's generation is that of the program.
#ifndef ORLI11_EVALUATION_PROGRAM_H
#define ORLI11_EVALUATION_PROGRAM_H

#include <cstdint>

#include "functions/built_in.h"
#include "orli11.h"

struct ExprNode;
struct Expression;

enum class Operation : uint8_t {
  End,           // the value on top of the stack is the program's
  NoValue,       // push None: a node that has no value
  SmallNumber,   // push the 32-bit operand
  Number,        // push a number: coefficient (2 words), exponent
  PackedNumber,  // push 13 bytes (2 words)
  Constant,      // push a folded constant (words as Number) and skip `operand` words; with operator
                 // callbacks, run the skipped code instead
  Text,          // push a string: address, length
  EscapedText,   // push a string without its escapes: address
  Date,          // push the date of a literal: address
  NumberInput,   // push the value of an input item: node, routine, name
  DateInput,
  TextInput,
  OtherInput,
  Formula,  // push the value of a named formula: node, expression
  Call,     // resolve a function: node, row, built-in routine, its inner routine, arguments and
            // length; `detail`: 1 when every argument is wanted, by value
  NextArgument,  // words: node; `detail`: index of the argument. In Call and NextArgument `operand`
                 // is how far to jump when the argument is not evaluated
  Invoke,        // call the function with the `operand` values on top of its frame
  Add,           // ORDER ARITHMETIC
  Subtract,
  Multiply,
  Divide,
  MoveDate,  // `detail`: the unit, `operand`: '+' or '-'
  SubtractDates,
  Concatenate,
  Nothing  // no operation: where a Constant would be, with its length, when the part cannot be
           // folded
};

struct Instruction {
  Operation operation;
  uint8_t type;  // of the node
  uint16_t detail;
  int32_t operand;
};

union Word {
  Instruction instruction;
  uint64_t bits;
  const char *text;
  ExprNode *node;
  ExprItem *row;
  void *routine;
  const BuiltIn *builtIn;
  InnerRoutine inner;
  Expression *expression;
  struct {
    uint32_t arguments;  // values that are pushed for the call
    uint32_t length;     // words from the Call to after its Invoke
  } call;
};
static_assert(sizeof(Word) == 8);

// Words after the first one of an instruction.
enum InputWord { kInputNode = 1, kInputRoutine, kInputName, kInputEnd };
enum FormulaWord { kFormulaNode = 1, kFormulaExpression, kFormulaEnd };
// kCallInner: the inner routine of a built-in function that takes all arguments as values and owns
// no memory; null for all others.
enum CallWord { kCallNode = 1, kCallRow, kCallBuiltIn, kCallInner, kCallShape, kCallEnd };
enum ArgumentWord { kArgumentNode = 1, kArgumentEnd };
enum NumberWord { kNumberLow = 1, kNumberHigh, kNumberExponent, kNumberEnd };

struct Program {
  EC context;           // whose names the program is bound to
  uint64_t generation;  // of the context when all names were bound
  uint32_t depth;       // values that it pushes at most
  uint32_t length;      // words of code, which follow
};

inline Word *ProgramCode(Program *program) {
  return reinterpret_cast<Word *>(program + 1);
}

// Compiles the tree of an expression unless that is done already, and binds the names; null when
// out of memory.
Program *BindProgram(EC ec, Expression *expression);

// Compiles a tree; null when out of memory. The caller owns the block.
Program *CompileTree(const ExprNode *tree);

// Bind the name of one instruction to what it refers to now.
void BindInput(EC ec, Word *code);
void BindFormula(EC ec, Word *code);
void BindCall(EC ec, Word *code);

// Words of an instruction.
inline uint32_t InstructionLength(Operation operation) {
  switch (operation) {
    case Operation::Number:
    case Operation::Constant:
    case Operation::Nothing:
      return kNumberEnd;
    case Operation::PackedNumber:
    case Operation::Text:
      return 3;
    case Operation::EscapedText:
    case Operation::Date:
      return 2;
    case Operation::NumberInput:
    case Operation::DateInput:
    case Operation::TextInput:
    case Operation::OtherInput:
      return kInputEnd;
    case Operation::Formula:
      return kFormulaEnd;
    case Operation::Call:
      return kCallEnd;
    case Operation::NextArgument:
      return kArgumentEnd;
    default:
      return 1;
  }
}

// Copies a string literal without its escapes: a doubled quote and a quote after a backslash become
// one quote. `target` is at least as large as the source. Returns the bytes written without the
// terminator.
uint32_t UnescapeString(char *target, const char *source);

#endif
