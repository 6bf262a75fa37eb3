// The evaluator: typed tree to value.
#ifndef ORLI11_EVALUATION_EVALUATOR_H
#define ORLI11_EVALUATION_EVALUATOR_H

#include <cstdint>

#include "orli11.h"

// What a node came to. Number and Date stand in the value itself, everything else in a block.
enum class ValueForm : uint8_t {
  None,     // the node cannot be computed; not the same as a null number
  Number,   // a NumberValue
  Text,     // a block of the engine, `length` bytes and a terminator in it
  Literal,  // text of the tree, which stays the tree's
  Opaque    // a block that the engine only hands on
};

struct Value {
  NumberValue number;
  ValueForm form;
  uint32_t length;
  char *text;
};

// Copies a string literal without its escapes: a doubled quote and a quote behind a backslash
// become one quote. `target` has room for the source. Returns the bytes written without the
// terminator.
uint32_t UnescapeString(char *target, const char *source);

#endif
