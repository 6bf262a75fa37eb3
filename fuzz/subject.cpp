#include "fuzz/subject.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "closed/wren/memory.h"

extern "C" int32_t AnyRoutine(void);

namespace {

// What the host's data holds, by the first letter of an item's name.
int32_t Value(EC /*ec*/, HEXP /*exp*/, int32_t size, void **value, const char *name) {
  if (name[0] == 'M') {
    return 0;
  }
  if (size != static_cast<int32_t>(sizeof(NumberValue))) {
    return FUNStrVarResult(value, size, name[0] == 'E' ? "" : "a \x83\x7C text, caf\xC3\xA9 \xE9");
  }
  auto *number = static_cast<NumberValue *>(*value);
  if (name[0] == 'S') {
    *number = NumberValue{10, {0x07, 0xDC, 1, 31, 21, 30, 15}};
  } else if (name[0] != 'N') {
    WRENNumFromText(number, name[0] == 'A' ? "-12.5" : "7");
  }
  return 1;
}

int32_t Copy(EC /*ec*/, HEXP /*exp*/, int32_t size, void **result, const char * /*name*/,
             void **args) {
  const bool given = args != nullptr && args[0] != nullptr;
  if (size != static_cast<int32_t>(sizeof(NumberValue))) {
    return FUNStrVarResult(result, size, given ? static_cast<const char *>(args[0]) : "");
  }
  WRENNumFromInt(static_cast<NumberValue *>(*result), given ? 2 : 1);
  return 1;
}

// Names of routines that begin with a capital are known.
void *LookUp(const char *name) {
  return name[0] >= 'A' && name[0] <= 'Z' ? reinterpret_cast<void *>(AnyRoutine) : nullptr;
}

struct Row {
  int16_t kind, type, parameters;
  const char *name;
  ParamRecord parameter;
  uint16_t special, optional, flags;
};

void Add(EC ec, const Row &row) {
  ORL_EXPR_ITEM_WITH(2) record = {};
  record.item.kind = row.kind;
  record.item.dataType = row.type;
  record.item.routine =
      row.kind == ORL_FUNCTION ? reinterpret_cast<void *>(Copy) : reinterpret_cast<void *>(Value);
  std::snprintf(record.item.name, sizeof record.item.name, "%s", row.name);
  record.item.paramCount = row.parameters;
  record.item.subClass = row.special;
  record.item.optionalCount = row.optional;
  record.item.itemFlags = row.flags;
  record.parameters[0] = record.parameters[1] = row.parameter;
  Require(ORLAddExpressionItem(ec, &record.item) == 1, "an item is added");
}

}  // namespace

void Require(bool holds, const char *what) {
  if (!holds) {
    std::fprintf(stderr, "This does not hold: %s\n", what);
    std::abort();
  }
}

Settings TakeSettings(const uint8_t *data) {
  static const int32_t country = WRENSetCountry("C");
  constexpr int32_t kPages[] = {65001, 1252, 932, 65001};
  Require(country == 1 && WRENSetCodePage(kPages[data[0] & 3]) == 1, "the page is set");
  return {static_cast<uint8_t>(data[0] >> 2), data[1]};
}

void LimitHeap(const Settings &settings, bool limited) {
  TEST_FailAllocationsAfter(limited && settings.heap >= 16 ? settings.heap * 4 - 64 : -1);
}

Subject FunctionSubject(uint16_t flags, bool lookup) {
  static const Row kRows[] = {
      {ORL_FUNCTION, 0, 1, "Sum", {1, 0, 0}, 0, 0, ORL_FUNC_MODIFIER},
      {ORL_FUNCTION, 0, 1, "Count", {1, ORL_TYPE_ANY, 0}, 0, 0, ORL_FUNC_EXPRESSION},
      {ORL_FUNCTION, 0, 1, "Dist", {0, 0, 0}, 0, 0, ORL_FUNC_NEEDS_DISTINCT},
      {ORL_FUNCTION, 0, 1, "Item", {1, 0, 7}, 0, 0, 0},
      {ORL_FUNCTION, ORL_TYPE_FOLLOWS, 2, "Case", {0, ORL_TYPE_FOLLOWS, 0}, 1, 1, 0},
      {ORL_FUNCTION, ORL_TYPE_FOLLOWS, 1, "KeyFn", {0, 300, 0}, 0, 0, 0},
      {ORL_FUNCTION, 0, -1, "@PI", {0, 0, 0}, 0, 0, 0},
      {ORL_KEYWORD, 300, 0, "Net Sales", {0, 0, 0}, 2, 0, 0},
      {ORL_KEYWORD, 301, 0, "Red", {0, 0, 0}, 0, 1, 0},
  };
  Subject subject(ORLCreateEC(nullptr, lookup ? LookUp : nullptr, nullptr, flags));
  Require(FUNDefineFunctions(subject.get()) == 1, "the functions are defined");
  for (const Row &row : kRows) {
    Add(subject.get(), row);
  }
  return subject;
}

Subject ItemSubject(uint16_t flags) {
  static const Row kRows[] = {
      {ORL_INPUT, 0, 0, "Amount", {}, 7, 0, 0},   {ORL_INPUT, 0, 0, "Tax", {}, 8, 0, 0},
      {ORL_INPUT, 0, 0, "Null", {}, 0, 0, 0},     {ORL_INPUT, 0, 0, "Missing", {}, 0, 0, 0},
      {ORL_INPUT, 1, 0, "Start", {}, 0, 0, 0},    {ORL_INPUT, 1, 0, "NoDate", {}, 0, 0, 0},
      {ORL_INPUT, 2, 0, "Text", {}, 0, 0, 0},     {ORL_INPUT, 2, 0, "Empty", {}, 0, 0, 0},
      {ORL_INPUT, 3, 0, "Own type", {}, 0, 0, 0}, {ORL_INPUT, 0, 0, "\"a, b\"", {}, 0, 0, 0},
  };
  Subject subject = FunctionSubject(flags, false);
  for (const Row &row : kRows) {
    Add(subject.get(), row);
  }
  return subject;
}

void EvaluateAll(EC ec) {
  // References are computed in place, so the cost of a chain of doublings has no bound.
  constexpr int32_t kMost = 24;
  for (int32_t i = 0; i < ORLGetExpressionCount(ec) && ORLGetExpressionCount(ec) <= kMost; ++i) {
    HEXP exp = ORLHEXPFromOrdinal(ec, i);
    char buffer[sizeof(NumberValue)];
    ORLEvaluateExpression(ec, exp, sizeof buffer, buffer);
    void *block = ORLMemAlloc(sizeof(NumberValue));
    ORLEvaluateExpressionExt(ec, exp, nullptr, &block);
    ORLMemFree(block);
  }
}

std::string WriteBlock(EC ec) {
  std::string block(static_cast<size_t>(ORLGetECBlockSize(ec, 1)), '\xEE');
  block.resize(
      static_cast<size_t>(ORLGetECBlock(ec, static_cast<int32_t>(block.size()), block.data())));
  return block;
}
