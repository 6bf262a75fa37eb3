// A second parser of the formula language, for comparison: recursive descent over tokens that are
// given, with the type rules written out once more.
#ifndef ORLI11_TESTS_LANGUAGE_PARSER_REFERENCE_H
#define ORLI11_TESTS_LANGUAGE_PARSER_REFERENCE_H

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

// The tokens of a text in the form in which it is written: "a", ".5", "'x'", "f(", "+", "DAYS".
// They stand in the text with one tab between them.
std::string JoinTokens(const std::vector<std::string> &tokens);

struct ReferenceFunction {
  int type;
  std::vector<int> parameters;
  int firstOptional, optionalCount, flags;
  bool byName;
  int subClass;
};

struct ReferenceContext {
  uint16_t flags;
  std::map<std::string, int> items;       // input items and keywords, with their types
  std::map<std::string, int> subClasses;  // of the input items
  std::map<std::string, ReferenceFunction> functions;
  std::map<std::string, int> formulas;              // -1: a range or set
  std::set<std::pair<std::string, int>> callbacks;  // operator and type that have a host routine
};

// The tree in the form of TreeText, or "id@offset+length"; a syntax error is "109" alone.
std::string ReferenceParse(const ReferenceContext &context, const std::vector<std::string> &tokens);

#endif
