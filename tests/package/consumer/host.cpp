// A host in C++20, without a cast that its compiler would warn about.
#include <orli11.h>

#include <array>
#include <cstring>
#include <iostream>
#include <memory>

namespace {

struct Destroy {
  void operator()(EC ec) const { ORLDestroyEC(ec); }
};
using Context = std::unique_ptr<std::remove_pointer_t<EC>, Destroy>;

int32_t Price(EC, HEXP, int32_t, void **value, const char *) {
  WRENNumFromText(static_cast<NumberValue *>(*value), "0.1");
  return 1;
}

int32_t Doubled(EC, HEXP, int32_t, void **result, const char *, void **args) {
  const auto *number = static_cast<const NumberValue *>(args[0]);
  WRENNumAdd(static_cast<NumberValue *>(*result), number, number);
  return number != nullptr;
}

void *RoutineOf(const char *name) {
  return std::strcmp(name, "Price") == 0 ? reinterpret_cast<void *>(Price) : nullptr;
}

}  // namespace

int main() {
  const Context context(ORLCreateEC(nullptr, RoutineOf, nullptr, 0));
  ExprItem item{};
  item.kind = ORL_INPUT;
  item.dataType = ORL_TYPE_NUMBER;
  item.routineName = "Price";
  std::strcpy(item.name, "Price");
  ORLAddExpressionItem(context.get(), &item);

  ORL_EXPR_ITEM_WITH(1) function{};
  function.item.kind = ORL_FUNCTION;
  function.item.dataType = ORL_TYPE_NUMBER;
  function.item.routine = reinterpret_cast<void *>(Doubled);
  function.item.paramCount = 1;
  function.parameters[0].dataType = ORL_TYPE_NUMBER;
  std::strcpy(function.item.name, "Doubled");
  ORLAddExpressionItem(context.get(), &function.item);

  uint16_t type = 0;
  NumberValue value{};
  HEXP exp = ORLParseString(context.get(), "Doubled(Price) + 0.1", nullptr, nullptr, &type);
  if (ORLEvaluateExpression(context.get(), exp, sizeof value, &value) == 1) {
    std::array<char, 200> text{};
    WRENNumToText(&value, static_cast<int32_t>(text.size()), text.data());
    std::cout << text.data() << "\n";
  }
}
