/* The command functions: the built-in functions with their signatures.
 *
 * The engine tells the names of its functions and no more, but it checks calls: sample calls with
 * one item of each type show the number and types of the arguments. A call that is understood and
 * gives no value has no routine behind it. */
#include <algorithm>
#include <cstring>

#include "host/columns.h"
#include "host/commands.h"
#include "host/session.h"
#include "host/values.h"

namespace {

constexpr size_t kMostArguments = 16;
constexpr int kMostTrials = 4 * static_cast<int>(kMostArguments);

/* The item that stands for each type in a sample call, and its value. One byte each, so that the
 * place of an argument follows from its index. */
struct Sample {
  int16_t type;
  char item;
  const char *value;
};
constexpr Sample kSamples[] = {
    {ORL_TYPE_NUMBER, 'n', "1"}, {ORL_TYPE_DATE, 'd', "2000-01-01"}, {ORL_TYPE_STRING, 's', "1"}};

struct Signature {
  std::vector<int> arguments; /* indices into kSamples */
  bool known = false, available = false;
  int32_t result = -1;
};

int32_t SampleValue(EC /*ec*/, HEXP /*exp*/, int32_t size, void **value, const char *name) {
  for (const Sample &sample : kSamples) {
    if (sample.item != *name) {
      continue;
    }
    NumberValue *number = static_cast<NumberValue *>(*value);
    switch (sample.type) {
      case ORL_TYPE_NUMBER:
        return NumberFromField(sample.value, number) ? 1 : 0;
      case ORL_TYPE_DATE:
        return DateFromField(sample.value, number) ? 1 : 0;
      default:
        return FUNStrVarResult(value, size, sample.value);
    }
  }
  return 0;
}

bool AddSamples(EC ec) {
  return std::all_of(std::begin(kSamples), std::end(kSamples), [ec](const Sample &sample) {
    ExprItem item = {};
    item.kind = ORL_INPUT;
    item.dataType = sample.type;
    item.routine = reinterpret_cast<void *>(SampleValue);
    item.name[0] = sample.item;
    return ORLAddExpressionItem(ec, &item) == 1;
  });
}

std::string SampleCall(const std::string &name, const std::vector<int> &arguments) {
  std::string text = name + "(";
  for (size_t i = 0; i < arguments.size(); ++i) {
    text.append(i == 0 ? "" : ",").push_back(kSamples[arguments[i]].item);
  }
  return text + ")";
}

/* Learns from the error of a sample call; false when it says nothing about the arguments. */
bool Learn(const std::string &name, const FormulaError &error, std::vector<int> &arguments) {
  if (error.id == ORL_ERR_NUMPARMSLO && arguments.size() < kMostArguments) {
    arguments.push_back(0);
    return true;
  }
  const auto first = static_cast<int32_t>(name.size()) + 1;
  const int32_t index = (error.offset - first) / 2;
  if (error.offset < first || index >= static_cast<int32_t>(arguments.size())) {
    return false;
  }
  int &argument = arguments[static_cast<size_t>(index)];
  switch (error.id) {
    case ORL_ERR_PARMDATE:
      argument = 1;
      return true;
    case ORL_ERR_PARMSTR:
      argument = 2;
      return true;
    default:
      return false;
  }
}

bool HasValue(EC ec, HEXP exp) {
  void *block = ORLMemAlloc(sizeof(NumberValue));
  int32_t length = 0;
  const bool has = block != nullptr && ORLEvaluateExpressionExt(ec, exp, &length, &block) == 1;
  ORLMemFree(block);
  return has;
}

Signature FindSignature(EC ec, const std::string &name) {
  Signature signature;
  for (int trial = 0; trial < kMostTrials; ++trial) {
    FormulaError error = {};
    uint16_t type = 0;
    const std::string text = SampleCall(name, signature.arguments);
    HEXP exp = ORLParseString(ec, text.c_str(), nullptr, &error, &type);
    if (exp != nullptr) {
      signature.known = true;
      signature.result = type;
      signature.available = HasValue(ec, exp);
      ORLDestroyEXP(ec, exp);
      break;
    }
    if (!Learn(name, error, signature.arguments)) {
      break;
    }
  }
  return signature;
}

void CollectName(EC /*ec*/, const char *name, void *user) {
  static_cast<std::vector<std::string> *>(user)->emplace_back(name);
}

std::vector<std::string> FunctionRow(EC ec, const std::string &name) {
  const Signature signature = FindSignature(ec, name);
  if (!signature.known) {
    return {name, "", "signature not known"};
  }
  std::string call = name + "(";
  for (size_t i = 0; i < signature.arguments.size(); ++i) {
    call.append(i == 0 ? "" : ", ").append(TypeName(kSamples[signature.arguments[i]].type));
  }
  return {call + ")", TypeName(signature.result), signature.available ? "" : "not available"};
}

}  // namespace

int RunFunctions() {
  EC ec = NewContext();
  if (ec == nullptr || !AddSamples(ec)) {
    ORLDestroyEC(ec);
    return Complain("no memory", EXIT_WRONG);
  }
  std::vector<std::string> names;
  ORLEnumExpItems(ec, ORL_FUNCTION, CollectName, &names);
  Output output;
  output.columns = {{"function"}, {"result"}, {"note"}};
  for (const std::string &name : names) {
    OutputRow(output, FunctionRow(ec, name));
  }
  OutputEnd(output);
  ORLDestroyEC(ec);
  return EXIT_GOOD;
}
