#include "bench/contexts.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

NumberValue NumberOf(const char *text) {
  NumberValue number;
  WRENNumFromText(&number, text);
  return number;
}

int32_t Same(EC /*ec*/, HEXP /*exp*/, int32_t /*resultSize*/, void **result, const char * /*name*/,
             void **args) {
  std::memcpy(*result, args[0], sizeof(NumberValue));
  return 1;
}

void AddFunction(EC ec, const std::string &name) {
  ORL_EXPR_ITEM_WITH(1) row = {};
  row.item.kind = ORL_FUNCTION;
  row.item.dataType = ORL_TYPE_NUMBER;
  row.item.routine = reinterpret_cast<void *>(Same);
  row.item.paramCount = 1;
  std::memcpy(row.item.name, name.c_str(), name.size() + 1);
  if (ORLAddExpressionItem(ec, &row.item) == 0) {
    std::fprintf(stderr, "cannot add %s\n", name.c_str());
    std::exit(1);
  }
}

}  // namespace

int32_t AmountValue(EC /*ec*/, HEXP /*exp*/, int32_t /*size*/, void **value,
                    const char * /*name*/) {
  static const NumberValue amount = NumberOf("12.5");
  std::memcpy(*value, &amount, sizeof amount);
  return 1;
}

int32_t TaxValue(EC /*ec*/, HEXP /*exp*/, int32_t /*size*/, void **value, const char * /*name*/) {
  static const NumberValue tax = NumberOf("0.07");
  std::memcpy(*value, &tax, sizeof tax);
  return 1;
}

void AddItem(EC ec, const std::string &name, int16_t type, OrlValueProc routine) {
  ExprItem item = {};
  item.kind = ORL_INPUT;
  item.dataType = type;
  item.routine = reinterpret_cast<void *>(routine);
  std::memcpy(item.name, name.c_str(), name.size() + 1);
  if (ORLAddExpressionItem(ec, &item) == 0) {
    std::fprintf(stderr, "cannot add %s\n", name.c_str());
    std::exit(1);
  }
}

HEXP MustParse(EC ec, const std::string &text, const char *name) {
  FormulaError error = {};
  uint16_t type = 0;
  HEXP exp = ORLParseFormula(ec, nullptr, text.c_str(), name, &error, &type);
  if (exp == nullptr) {
    std::fprintf(stderr, "message %d at %d in %.80s\n", error.id, error.offset, text.c_str());
    std::exit(1);
  }
  return exp;
}

EC MakeContext(const ContextSize &size) {
  EC ec = ORLCreateEC(nullptr, nullptr, nullptr, 0);
  if (ec == nullptr || FUNDefineFunctions(ec) == 0) {
    std::fputs("no context\n", stderr);
    std::exit(1);
  }
  AddItem(ec, "Amount", ORL_TYPE_NUMBER, AmountValue);
  AddItem(ec, "Tax", ORL_TYPE_NUMBER, TaxValue);
  for (int i = 0; i < size.items; ++i) {
    AddItem(ec, "Item" + std::to_string(i), ORL_TYPE_NUMBER, AmountValue);
  }
  for (int i = 0; i < size.functions; ++i) {
    AddFunction(ec, "F" + std::to_string(i));
  }
  for (int i = 0; i < size.formulas; ++i) {
    MustParse(ec, "Amount + Tax", ("Sum" + std::to_string(i)).c_str());
  }
  return ec;
}
