#include "support/context.h"

#include <cstdio>
#include <cstring>

#include "functions/date_text.h"
#include "pavni11.h"

namespace {

constexpr uint16_t kByName = 1;

// The functions of the standard context: name, result, parameters, first optional, optional count,
// flags. What is not null in the routine column computes.
const std::vector<FunctionRow> &StandardFunctions() {
  static const std::vector<FunctionRow> rows = {
      {"Zero", 0, {}, 0, 0, 0, nullptr},
      {"Half", 0, {{0, 0, 0}}, 0, 0, 0, nullptr},
      {"Text", 2, {{0, 2, 0}}, 0, 0, 0, nullptr},
      {"Day", 0, {{0, 1, 0}}, 0, 0, 0, nullptr},
      {"Opt", 0, {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}, 2, 1, 0, nullptr},
      {"Tail", 0, {{0, 0, 0}, {0, 2, 0}}, 1, 0, 0, nullptr},
      {"Any", 0, {{0, 0, 0}, {0, 0, 0}}, 0, 1, 0, nullptr},
      {"Count", 0, {{kByName, 5, 0}}, 0, 0, ORL_FUNC_MODIFIER, nullptr},
      {"Sum", 0, {{kByName, 0, 0}}, 0, 0, 2, nullptr},
      {"Wrap", 0, {{0, 0, 0}}, 0, 0, ORL_FUNC_MODIFIER, nullptr},
      {"Dist", 0, {{0, 0, 0}}, 0, 0, ORL_FUNC_NEEDS_DISTINCT, nullptr},
      {"DistOpt", 0, {{0, 0, 0}}, 0, 1, ORL_FUNC_NEEDS_DISTINCT, nullptr},
      {"Item", 0, {{kByName, 0, 7}}, 0, 0, 0, nullptr},
      {"ItemX", 0, {{kByName, 0, 0}}, 0, 0, ORL_FUNC_EXPRESSION, nullptr},
      {"ItemD", 0, {{kByName, 0, 0}}, 0, 0, ORL_FUNC_EXPRESSION_UNLESS_DISTINCT | 1, nullptr},
      {"ItemK", 0, {{kByName, 300, 7}}, 0, 0, 0, nullptr},
      {"Case", 4, {{0, 4, 0}, {0, 4, 0}, {0, 4, 0}}, 1, 0, 0, nullptr},
      {"KeyFn", 4, {{0, 300, 0}}, 0, 0, 0, nullptr},
      {"Follow", 4, {{0, 4, 0}}, 0, 1, 0, nullptr},
      {"@PI", 0, {}, 0, 0, 0, nullptr},
  };
  return rows;
}

void Store13(void **value, const NumberValue &number) {
  std::memcpy(*value, &number, sizeof number);
}

}  // namespace

HostData &HostOf(EC ec) {
  return *reinterpret_cast<HostData *>(ORLGetUserLong(ec));
}

int32_t HostValue(EC ec, HEXP exp, int32_t size, void **value, const char *name) {
  HostData &host = HostOf(ec);
  host.calls.emplace_back(exp, name);
  const auto found = host.values.find(name);
  if (found == host.values.end()) return 0;
  const std::string &text = found->second;
  if (size != static_cast<int32_t>(sizeof(NumberValue))) {
    return FUNStrVarResult(value, size, text.c_str());
  }
  if (text.empty()) return 1;
  NumberValue number = NumberOf(text.c_str());
  if (number.length == 0 && DateFromText(&number, text.c_str()) == 0) return 0;
  Store13(value, number);
  return 1;
}

int32_t AddFunction(EC ec, const FunctionRow &row) {
  const size_t parameterBytes = row.parameters.size() * sizeof(ParamRecord);
  std::vector<unsigned char> bytes(sizeof(ExprItem) + parameterBytes);
  ExprItem item = {};
  item.kind = ORL_FUNCTION;
  item.dataType = row.type;
  item.routine = row.routine;
  std::snprintf(item.name, sizeof item.name, "%s", row.name);
  item.paramCount = static_cast<int16_t>(row.parameters.size());
  item.firstOptional = row.firstOptional;
  item.optionalCount = row.optionalCount;
  item.itemFlags = row.itemFlags;
  std::memcpy(bytes.data(), &item, sizeof item);
  if (parameterBytes != 0) {
    std::memcpy(bytes.data() + sizeof item, row.parameters.data(), parameterBytes);
  }
  return ORLAddExpressionItem(ec, reinterpret_cast<const ExprItem *>(bytes.data()));
}

int32_t AddInput(EC ec, const char *name, int16_t type, uint16_t subClass, void *routine) {
  ExprItem item = {};
  item.kind = ORL_INPUT;
  item.dataType = type;
  item.routine = routine;
  std::snprintf(item.name, sizeof item.name, "%s", name);
  item.subClass = subClass;
  return ORLAddExpressionItem(ec, &item);
}

int32_t AddKeyword(EC ec, const char *name, int16_t type, uint16_t resultType,
                   uint16_t caseSensitive) {
  ExprItem item = {};
  item.kind = ORL_KEYWORD;
  item.dataType = type;
  std::snprintf(item.name, sizeof item.name, "%s", name);
  item.resultType = resultType;
  item.caseSensitive = caseSensitive;
  return ORLAddExpressionItem(ec, &item);
}

OwnedContext StandardContext(uint16_t flags, HostData *host, OrlLookupProc lookup) {
  WRENSetCountry("C");
  OwnedContext context(ORLCreateEC(nullptr, lookup, nullptr, flags));
  EC ec = context.get();
  ORLSetUserLong(ec, reinterpret_cast<intptr_t>(host));
  AddInput(ec, "Amount", 0, 7);
  AddInput(ec, "Tax", 0, 8);
  AddInput(ec, "Name", 2);
  AddInput(ec, "Start", 1);
  AddInput(ec, "End", 1);
  AddInput(ec, "Money", 3);
  AddInput(ec, "Edge", 255);
  AddKeyword(ec, "Net Sales", 300, 2, 0);
  AddKeyword(ec, "Red", 301, 0, 1);
  for (const FunctionRow &row : StandardFunctions()) AddFunction(ec, row);
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

std::string Outcome(const Parsed &parsed) {
  if (parsed.exp != nullptr) return "type " + std::to_string(parsed.type);
  const FormulaError &error = parsed.error;
  return std::to_string(error.id) + "@" + std::to_string(error.offset) + "+" +
         std::to_string(error.length);
}

NumberValue NumberOf(const char *text) {
  NumberValue number = {};
  WRENNumFromText(&number, text);
  return number;
}

std::string NumberText(const NumberValue &value) {
  if (value.length == 0) return "null";
  double number = 0;
  WRENNumToDouble(&value, &number);
  char text[40];
  std::snprintf(text, sizeof text, "%.15g", number);
  return text;
}

std::string DateText(const NumberValue &value) {
  if (value.length == 0) return "null";
  DateTimeParts parts = {};
  PAVNNumberToDate(value.payload, value.length, &parts);
  char text[96];
  const int dateLength =
      std::snprintf(text, sizeof text, "%04d-%02d-%02d", parts.year, parts.month, parts.day);
  if (parts.hour != 0 || parts.minute != 0 || parts.second != 0) {
    std::snprintf(text + dateLength, sizeof text - static_cast<size_t>(dateLength),
                  " %02d:%02d:%02d", parts.hour, parts.minute, parts.second);
  }
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
  std::vector<char> buffer(static_cast<size_t>(ORLGetExpressionNameLength(ec, exp)) + 1);
  ORLGetExpressionName(ec, exp, static_cast<int32_t>(buffer.size()), buffer.data());
  return buffer.data();
}

std::string TextOf(EC ec, HEXP exp) {
  std::vector<char> buffer(static_cast<size_t>(ORLGetExpressionTextLength(ec, exp)) + 1);
  ORLGetExpressionText(ec, exp, static_cast<int32_t>(buffer.size()), buffer.data());
  return buffer.data();
}

std::vector<std::string> ItemNames(EC ec, int32_t kind) {
  std::vector<std::string> names;
  ORLEnumExpItems(
      ec, kind,
      [](EC, const char *name, void *user) {
        static_cast<std::vector<std::string> *>(user)->emplace_back(name);
      },
      &names);
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
