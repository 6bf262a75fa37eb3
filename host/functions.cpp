/* The command functions: the built-in functions, as their page in the documents has them. */
#include <cstdio>

#include "host/commands.h"

namespace {

/* The list is made by the build from docs/functions.md. */
struct FunctionText {
  const char *signature, *description;
};
constexpr FunctionText kFunctions[] = {
#include "host/function_list.inc"
};

}  // namespace

/* Two lines each: signature and description side by side are wider than most terminals. */
int RunFunctions() {
  for (const FunctionText &function : kFunctions) {
    static_cast<void>(std::printf("%s\n    %s\n", function.signature, function.description));
  }
  return EXIT_GOOD;
}
