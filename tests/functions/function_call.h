// Calls of the built-in functions as the evaluator makes them, every block of exactly its size.
#ifndef ORLI11_TESTS_FUNCTIONS_FUNCTION_CALL_H
#define ORLI11_TESTS_FUNCTIONS_FUNCTION_CALL_H

#include <memory>
#include <string>
#include <vector>

#include "orli11.h"

struct BuiltInFunction {
  std::string name;  // as formulas write it
  OrlFunctionProc routine;
  std::string types;  // n, d or t: of the result, then of each parameter
};

// The rows of the string table in their order.
const std::vector<BuiltInFunction> &FunctionRows();
const BuiltInFunction &FunctionRowOf(const std::string &name);

// A copy on the heap of exactly the right size, so that a sanitizer detects access past the end.
std::unique_ptr<char[]> ExactCopy(const std::string &bytes);

// The bytes of a value in the notation of Call().
std::string BytesOf(const std::string &value);

// Computes a function. Values are written "n:1.5", "d:2012-01-31 10:30:15", "t:text", the first two
// also with "null"; an argument "-" is a null entry, and without arguments there is no array.
std::string Call(const std::string &name, const std::vector<std::string> &args);

// A value as Call() returns it: a Number as its double and its bytes.
std::string Canonical(const std::string &value);

#endif
