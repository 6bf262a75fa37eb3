// The built-in functions as the evaluator calls them.
#ifndef ORLI11_FUNCTIONS_BUILT_IN_H
#define ORLI11_FUNCTIONS_BUILT_IN_H

#include "functions/value.h"
#include "orli11.h"

// A call on values, without blocks.
struct InnerCall {
  TextBuffer &texts;  // the arguments' texts are its last ones
  Value *frame;

  uint32_t Count() const { return frame->arguments; }
  const Value *Arguments() const { return frame + 1; }
  // A string result is stored where the arguments' strings are.
  Value *Result() const { return frame; }
};

// Computes what the routine of the same function computes; leaves None when out of memory.
using InnerRoutine = void (*)(InnerCall call);

struct BuiltIn {
  const char *name;  // the routine's full name
  OrlFunctionProc routine;
  int16_t dataType;    // of the result
  InnerRoutine inner;  // null: the routine is called, with the addresses of values
};

// The built-in function of a routine, or null.
const BuiltIn *BuiltInOf(const void *routine);

#endif
