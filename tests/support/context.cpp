#include "support/context.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "dates/date_text.h"
#include "pavni11.h"

namespace {

ExprItem Item(int16_t kind, const char *name, int16_t type) {
  ExprItem item = {};
  item.kind = kind;
  item.dataType = type;
  std::snprintf(item.name, sizeof item.name, "%s", name);
  return item;
}

std::string DateText(const NumberValue &value) {
  if (value.length == 0) return "null";
  DateTimeParts at = {};
  PAVNNumberToDate(value.payload, value.length, &at);
  char text[96];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", at.year, at.month, at.day,
                at.hour, at.minute, at.second);
  const std::string whole = text;
  return whole.substr(0, whole.find(" 00:00:00"));
}

// What one of the copying routines yields for a buffer of just the length that it returns.
std::string Copied(EC ec, HEXP exp, int32_t length, int32_t (*copy)(EC, HEXP, int32_t, char *)) {
  std::string text(static_cast<size_t>(length) + 1, '#');
  copy(ec, exp, length + 1, text.data());
  text.pop_back();
  return text;
}

}  // namespace

int32_t HostValue(EC ec, HEXP exp, int32_t size, void **value, const char *name) {
  HostData &host = *reinterpret_cast<HostData *>(ORLGetUserLong(ec));
  host.calls.emplace_back(exp, name);
  const auto found = host.values.find(name);
  if (found == host.values.end()) return 0;
  const char *text = found->second.c_str();
  if (size != static_cast<int32_t>(sizeof(NumberValue))) return FUNStrVarResult(value, size, text);
  if (*text == '\0') return 1;
  NumberValue number = {};
  WRENNumFromText(&number, text);
  if (number.length == 0 && !DateFromText(&number, text)) return 0;
  std::memcpy(*value, &number, sizeof number);
  return 1;
}

int32_t AddFunction(EC ec, const FunctionRow &row) {
  ORL_EXPR_ITEM_WITH(8) full = {};
  full.item = Item(ORL_FUNCTION, row.name, row.type);
  full.item.routine = row.routine;
  full.item.paramCount = static_cast<int16_t>(row.parameters.size());
  full.item.firstOptional = row.firstOptional;
  full.item.optionalCount = row.optionalCount;
  full.item.itemFlags = row.itemFlags;
  std::copy(row.parameters.begin(), row.parameters.end(), full.parameters);
  return ORLAddExpressionItem(ec, &full.item);
}

int32_t AddInput(EC ec, const char *name, int16_t type, uint16_t subClass, void *routine) {
  ExprItem item = Item(ORL_INPUT, name, type);
  item.routine = routine;
  item.subClass = subClass;
  return ORLAddExpressionItem(ec, &item);
}

int32_t AddKeyword(EC ec, const char *name, int16_t type, uint16_t resultType,
                   uint16_t caseSensitive) {
  ExprItem item = Item(ORL_KEYWORD, name, type);
  item.resultType = resultType;
  item.caseSensitive = caseSensitive;
  return ORLAddExpressionItem(ec, &item);
}

OwnedContext StandardContext(uint16_t flags, HostData *host, OrlLookupProc lookup) {
  // Name, result, parameters, first optional, optional count, flags; none has a routine.
  // clang-format off
  static const std::vector<FunctionRow> functions = {
      {"Zero", 0, {}, 0, 0, 0, nullptr}, {"Half", 0, {{0, 0, 0}}, 0, 0, 0, nullptr},
      {"Text", 2, {{0, 2, 0}}, 0, 0, 0, nullptr}, {"Day", 0, {{0, 1, 0}}, 0, 0, 0, nullptr},
      {"Opt", 0, {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}, 2, 1, 0, nullptr},
      {"Tail", 0, {{0, 0, 0}, {0, 2, 0}}, 1, 0, 0, nullptr},
      {"Any", 0, {{0, 0, 0}, {0, 0, 0}}, 0, 1, 0, nullptr},
      {"Count", 0, {{1, 5, 0}}, 0, 0, ORL_FUNC_MODIFIER, nullptr},
      {"Sum", 0, {{1, 0, 0}}, 0, 0, 2, nullptr},
      {"Wrap", 0, {{0, 0, 0}}, 0, 0, ORL_FUNC_MODIFIER, nullptr},
      {"Dist", 0, {{0, 0, 0}}, 0, 0, ORL_FUNC_NEEDS_DISTINCT, nullptr},
      {"DistOpt", 0, {{0, 0, 0}}, 0, 1, ORL_FUNC_NEEDS_DISTINCT, nullptr},
      {"Item", 0, {{1, 0, 7}}, 0, 0, 0, nullptr},
      {"ItemX", 0, {{1, 0, 0}}, 0, 0, ORL_FUNC_EXPRESSION, nullptr},
      {"ItemD", 0, {{1, 0, 0}}, 0, 0, ORL_FUNC_EXPRESSION_UNLESS_DISTINCT | 1, nullptr},
      {"ItemK", 0, {{1, 300, 7}}, 0, 0, 0, nullptr},
      {"Case", 4, {{0, 4, 0}, {0, 4, 0}, {0, 4, 0}}, 1, 0, 0, nullptr},
      {"KeyFn", 4, {{0, 300, 0}}, 0, 0, 0, nullptr}, {"Follow", 4, {{0, 4, 0}}, 0, 1, 0, nullptr},
      {"@PI", 0, {}, 0, 0, 0, nullptr},
  };
  // clang-format on
  WRENSetCountry("C");
  OwnedContext context(ORLCreateEC(nullptr, lookup, nullptr, flags));
  EC ec = context.get();
  ORLSetUserLong(ec, reinterpret_cast<intptr_t>(host));
  AddInput(ec, "Amount", 0, 7);
  AddInput(ec, "Tax", 0, 8);
  AddInput(ec, "Name", 2);
  for (const char *date : {"Start", "End"}) AddInput(ec, date, 1);
  AddInput(ec, "Money", 3);
  AddInput(ec, "Edge", 255);
  AddKeyword(ec, "Net Sales", 300, 2, 0);
  AddKeyword(ec, "Red", 301, 0, 1);
  for (const FunctionRow &row : functions) AddFunction(ec, row);
  return context;
}

Parsed Parse(EC ec, const std::string &text, const char *name) {
  Parsed parsed = {};
  parsed.exp = ORLParseString(ec, text.c_str(), name, &parsed.error, &parsed.type);
  return parsed;
}

Parsed Store(EC ec, HEXP exp, const std::string &text, const char *name) {
  Parsed parsed = {};
  parsed.exp = ORLParseFormula(ec, exp, text.c_str(), name, &parsed.error, &parsed.type);
  return parsed;
}

HEXP Make(EC ec, const std::string &text, const std::string &name) {
  const Parsed parsed = Parse(ec, text, name.c_str());
  EXPECT_NE(parsed.exp, nullptr) << text.substr(0, 200) << ": " << Outcome(parsed);
  return parsed.exp;
}

std::string Outcome(const Parsed &parsed) {
  if (parsed.exp != nullptr) return "type " + std::to_string(parsed.type);
  const FormulaError &error = parsed.error;
  return std::to_string(error.id) + "@" + std::to_string(error.offset) + "+" +
         std::to_string(error.length);
}

std::string NumberText(const NumberValue &value) {
  if (value.length == 0) return "null";
  double number = 0;
  WRENNumToDouble(&value, &number);
  char text[40];
  std::snprintf(text, sizeof text, "%.15g", number);
  return text;
}

std::string Evaluate(EC ec, HEXP exp) {
  void *block = ORLMemAlloc(sizeof(NumberValue));
  int32_t length = 0;
  std::string result = "none";
  if (ORLEvaluateExpressionExt(ec, exp, &length, &block) != 0) {
    const uint16_t type = ORLGetExpressionDataType(ec, exp);
    NumberValue number = {};
    if (type != ORL_TYPE_STRING) std::memcpy(&number, block, sizeof number);
    if (type == ORL_TYPE_NUMBER) result = NumberText(number);
    if (type == ORL_TYPE_DATE) result = DateText(number);
    if (type == ORL_TYPE_STRING) result = "'" + std::string(static_cast<char *>(block)) + "'";
  }
  ORLMemFree(block);
  return result;
}

std::string NameOf(EC ec, HEXP exp) {
  return Copied(ec, exp, ORLGetExpressionNameLength(ec, exp), &ORLGetExpressionName);
}

std::string TextOf(EC ec, HEXP exp) {
  return Copied(ec, exp, ORLGetExpressionTextLength(ec, exp), &ORLGetExpressionText);
}

std::vector<std::string> ItemNames(EC ec, int32_t kind) {
  std::vector<std::string> names;
  const auto note = [](EC, const char *name, void *user) {
    static_cast<std::vector<std::string> *>(user)->emplace_back(name);
  };
  ORLEnumExpItems(ec, kind, note, &names);
  return names;
}

std::string Snapshot(EC ec) {
  std::string all;
  for (int32_t kind : {ORL_FUNCTION, ORL_INPUT, ORL_KEYWORD}) {
    for (const std::string &name : ItemNames(ec, kind)) all += name + ";";
    all += "\n";
  }
  for (int32_t i = 0; i < ORLGetExpressionCount(ec); ++i) {
    HEXP exp = ORLHEXPFromOrdinal(ec, i);
    all += NameOf(ec, exp) + ":" + std::to_string(ORLGetExpressionDataType(ec, exp)) + "=" +
           TextOf(ec, exp) + "\n";
  }
  return all;
}
