// Shared by the engine's tests: a small host with its data, contexts, and readable outcomes.
#ifndef ORLI11_TESTS_SUPPORT_CONTEXT_H
#define ORLI11_TESTS_SUPPORT_CONTEXT_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "orli11.h"

struct ContextDeleter {
  void operator()(EC ec) const { ORLDestroyEC(ec); }
};
using OwnedContext = std::unique_ptr<ExprContext, ContextDeleter>;

// The host's data. Its address is the user value of the context; HostValue finds it there.
struct HostData {
  std::map<std::string, std::string> values;        // item name to its text; none: failure
  std::vector<std::pair<HEXP, std::string>> calls;  // what HostValue was asked for
};

// An OrlValueProc: a Number or Date from the item's text in HostData ("" gives null), or the text.
int32_t HostValue(EC ec, HEXP exp, int32_t size, void **value, const char *name);

template <typename Routine>
void *Address(Routine routine) {
  return reinterpret_cast<void *>(routine);
}

struct FunctionRow {
  const char *name;
  int16_t type;
  std::vector<ParamRecord> parameters;  // mode, dataType, subClass; at most eight
  uint16_t firstOptional, optionalCount, itemFlags;
  void *routine;
};
int32_t AddFunction(EC ec, const FunctionRow &row);
int32_t AddInput(EC ec, const char *name, int16_t type, uint16_t subClass = 0,
                 void *routine = Address(&HostValue));
int32_t AddKeyword(EC ec, const char *name, int16_t type, uint16_t resultType,
                   uint16_t caseSensitive);

// A context with the standard items and functions of context.cpp and no expressions.
OwnedContext StandardContext(uint16_t flags, HostData *host = nullptr,
                             OrlLookupProc lookup = nullptr);

// The same with its host's data, to be used as the context itself.
struct HostedContext {
  HostData host;
  OwnedContext owned;
  explicit HostedContext(uint16_t flags = 0, OrlLookupProc lookup = nullptr)
      : owned(StandardContext(flags, &host, lookup)) {}
  operator EC() const { return owned.get(); }
};

struct Parsed {
  HEXP exp;
  FormulaError error;
  uint16_t type;
};
Parsed Parse(EC ec, const std::string &text, const char *name = nullptr);
// ORLParseFormula on `exp`.
Parsed Store(EC ec, HEXP exp, const std::string &text, const char *name);
// Parse of a text that must succeed.
HEXP Make(EC ec, const std::string &text, const std::string &name = "");

// "type 0" for a success, "109@3+1" for message 109 at offset 3 with length 1.
std::string Outcome(const Parsed &parsed);

// A value as text: a plain number, "2012-01-31" or "2012-01-31 10:30:00", "'text'", "null", or
// "none" when there is no value.
std::string NumberText(const NumberValue &value);
std::string Evaluate(EC ec, HEXP exp);

std::string NameOf(EC ec, HEXP exp);
std::string TextOf(EC ec, HEXP exp);

// The names of the items of a kind in order.
std::vector<std::string> ItemNames(EC ec, int32_t kind);

// Everything that a host can see of a context: items, and expressions with name, type and text.
std::string Snapshot(EC ec);

#endif
