// Expression records: stored formulas, ranges and sets.
#ifndef ORLI11_ENGINE_EXPRESSIONS_H
#define ORLI11_ENGINE_EXPRESSIONS_H

#include <cstdint>

#include "engine/context.h"
#include "orli11.h"

struct ExprNode;
struct Evaluation;
struct Program;

// What a walk through named formulas records about an expression that it has entered.
enum class WalkState : uint8_t { Open, No, Yes };

// The record is the first part of a block that holds tree, text and name after it; a tree that
// refers to formulas is preceded by the place in the order of expressions:
//
//   | Expression | OrderPlace | tree | text | name |
//
// After the formula changes they are in the block of another record, whose address then follows
// this record; or the text is in a block of its own.
struct Expression {
  NameEntry entry;  // in the context's expressionNames, with the name

  ExprNode *tree;
  Program *program;  // owned, the tree's compiled form; null until the first evaluation

  // The evaluation that is inside this expression, to detect cycles.
  const Evaluation *evaluation;

  char *text;  // as the host gave it
  int32_t textLength;
  uint16_t dataType;  // of the root at the time of the parse
  bool refersToFormulas : 1;
  bool hasContent : 1;  // tree, text and name are in the block of another record
  bool ownsText : 1;
  bool ownsNames : 1;  // nodes of the tree may have names in blocks of their own

  // The last walk through named formulas that entered this expression, and its return path.
  WalkState walkState;
  uint32_t walkNumber;
  int32_t
      walkPlace;  // extended_text.cpp: offset copied so far; in the length walk, the growth so far
  uint32_t walkReturn;  // node of the caller's tree
  uint32_t deleteRun;   // the guarded delete that has deferred the expression, or 0
  Expression *walkCaller;
};
static_assert(sizeof(Expression) == 112);  // one per stored formula: keep it small

// Bytes of a generated name: a base text of the module, a number of 16 bits and the terminator.
constexpr int32_t kGeneratedNameSize = 128 + 8;

// Writes the generated name of a new expression of the class and returns its key. When all numbers
// are taken, empties the buffer and returns the key of the empty name.
NameKey GeneratedName(EC ec, ExpressionClass which, char (&buffer)[kGeneratedNameSize]);

// The data type of the first expression of that name, or -1.
int32_t ExpressionDataType(EC ec, const char *name);

// Begins a walk: returns a number that no expression carries.
uint32_t NextWalkNumber(EC ec);

// A stored expression that host routines may delete in the meantime. Its address may then be reused
// by another one, but its serial number is not.
struct ExpressionRef {
  HEXP exp;
  uint64_t serial;
};
ExpressionRef RefTo(HEXP exp);  // null is accepted
// True while that very expression is in the context; false for null.
bool IsStored(EC ec, const ExpressionRef &ref);

#endif
