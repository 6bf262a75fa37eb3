// The command functions: the functions that formulas can call, from their pages.
#include <orli11.h>

#include <cstdio>
#include <string_view>

#include "host/commands.h"
#include "host/display.h"
#include "host/function_texts.h"
#include "host/hints.h"

namespace {

constexpr FunctionText kFunctions[] = {
#include "host/function_list.inc"
};

constexpr char kForDatabases[] = "[databases]";

std::string_view NameOf(const FunctionText &function) {
  const std::string_view signature = function.signature;
  return signature.substr(0, signature.find('('));
}

void PutHead(const FunctionText &function, const char *indent) {
  static_cast<void>(
      std::printf("%s%s%s\n%s%s\n", function.signature, function.forDatabases ? "  " : "",
                  function.forDatabases ? kForDatabases : "", indent, function.description));
}

// Two lines each: signature and description side by side are wider than most terminals.
int List() {
  for (const FunctionText &function : kFunctions) {
    PutHead(function, "    ");
  }
  std::printf(
      "\nFunctions marked %s are computed by databases too: see orli sql.\n"
      "orli functions NAME describes one, with examples.\n",
      kForDatabases);
  return kExitGood;
}

}  // namespace

const FunctionText *FindFunctionText(std::string_view name) {
  for (const FunctionText &function : kFunctions) {
    if (NameOf(function) == name) {
      return &function;
    }
  }
  return nullptr;
}

int RunFunctions(const std::string &name) {
  if (name.empty()) {
    return List();
  }
  KnownNames names;
  const FunctionText *found = FindFunctionText(name);
  if (found != nullptr) {
    PutHead(*found, "\n");
    std::printf("\n%s", found->rest);
    return kExitGood;
  }
  for (const FunctionText &function : kFunctions) {
    names.functions.emplace_back(NameOf(function));
  }
  const FormulaError unknown = {ORL_ERR_FUNC, 0, static_cast<int32_t>(name.size())};
  const std::string hint = HintFor(name, unknown, names);
  return Complain(
      "there is no function " + DisplayName(name) + (hint.empty() ? "" : "\nhint: " + hint),
      kExitWrong);
}
