#include "host/conditions.h"

#include <algorithm>
#include <cstring>

#include "host/chars.h"
#include "host/columns.h"
#include "host/display.h"
#include "host/tokens.h"

namespace {

// The operators of a condition outside strings and quoted names.
struct Signs {
  size_t equals = std::string::npos;  // the last "="
  const char *hint = "";              // about what other languages write
};

constexpr char kFormsHint[] =
    "\nhint: write 'a=5' for a value, 'a=1 AND 5' for a range, and \"b='x', 'y'\" for a set";
constexpr char kCompareHint[] =
    "\nhint: there are no comparisons: 'a=1 AND 5' takes a from 1 to 5, and "
    "'NumberIFF(a - 5, 0, 0, 1)=1' what is greater than 5";
constexpr char kEqualsHint[] = "\nhint: write one equal sign";
constexpr char kDateHint[] = "\nhint: a date has no quotes: 2024-01-31";

Signs FindSigns(const std::string &argument) {
  Signs signs;
  const Token *before = nullptr;
  const std::vector<Token> tokens = Tokens(argument);
  for (const Token &token : tokens) {
    const bool sign = token.kind == kTokenOther;
    if (sign && std::string_view("<>!").find(token.text) != std::string_view::npos) {
      signs.hint = kCompareHint;
    } else if (sign && token.text == "=") {
      signs.equals = token.offset;
      if (before != nullptr && before->text == "=" && before->offset + 1 == token.offset) {
        signs.hint = kEqualsHint;
      }
    }
    before = &token;
  }
  if (signs.equals == std::string::npos && *signs.hint == '\0') {
    signs.hint = kFormsHint;
  }
  return signs;
}

// Adds a formula under a unique name.
size_t Add(std::vector<Formula> &formulas, const std::string &text) {
  formulas.push_back(FormulaOf("\"--where " + std::to_string(formulas.size()) + "\"", text));
  formulas.back().title = "of --where";
  formulas.back().shown = false;
  return formulas.size() - 1;
}

struct Value {
  NumberValue number = {};
  std::string text;
  bool good = false;  // it exists and is not null
};

Value ValueOf(EC ec, int32_t type, HEXP exp) {
  thread_local Block block = NewBlock(sizeof(NumberValue));
  Value value;
  if (!Evaluate(ec, exp, block)) {
    return value;
  }
  if (type == ORL_TYPE_STRING) {
    value.text = static_cast<const char *>(block.get());
    value.good = true;
  } else {
    std::memcpy(&value.number, block.get(), sizeof value.number);
    value.good = value.number.length != 0;
  }
  return value;
}

int Compare(int32_t type, const Value &left, const Value &right) {
  return type == ORL_TYPE_STRING ? CompareTexts(left.text.c_str(), right.text.c_str())
                                 : CompareValues(type, left.number, right.number);
}

}  // namespace

bool ConditionParse(const std::string &argument, std::vector<Formula> &formulas,
                    Condition &condition, std::string &error) {
  const Signs signs = FindSigns(argument);
  const size_t equals = signs.equals;
  if (*signs.hint != '\0') {
    error = "a condition is given as TEXT=RANGE, TEXT=SET or TEXT=VALUE, not as " +
            DisplayName(argument) + signs.hint;
    return false;
  }
  std::string bounds(Trimmed(std::string_view(argument).substr(equals + 1)));
  const auto named =
      std::find_if(formulas.begin(), formulas.end(), [&bounds](const Formula &formula) {
        return formula.name == bounds || formula.title == bounds;
      });
  if (named != formulas.end() && MembersOf(named->text).size() > 1) {
    bounds = named->text;
  }
  condition.tested = Add(formulas, argument.substr(0, equals));
  condition.bounds = Add(formulas, bounds);
  condition.first = formulas.size();
  for (const std::string &member : MembersOf(bounds)) {
    Add(formulas, member);
    ++condition.count;
  }
  return true;
}

bool ConditionFinish(EC ec, const std::vector<Formula> &formulas, Condition &condition,
                     std::string &error) {
  const Formula &tested = formulas[condition.tested];
  const Formula &bounds = formulas[condition.bounds];
  const std::string kind = FormulaKind(ec, bounds.exp);
  if (std::string(FormulaKind(ec, tested.exp)) != "formula") {
    error = "--where: " + DisplayName(tested.text) + " has no value";
  } else if (tested.type != bounds.type) {
    error = "--where: " + DisplayName(tested.text) + " is a " + TypeName(tested.type) + ", but " +
            DisplayName(bounds.text) + " a " + TypeName(bounds.type);
    error += tested.type == ORL_TYPE_DATE && bounds.type == ORL_TYPE_STRING
                 ? kDateHint
                 : TextColumnHint(ec, tested);
  } else if ((kind == "formula") != (condition.count == 1)) {
    error = "--where: not a range, set or value: " + DisplayName(bounds.text);
  }
  condition.range = kind == "range";
  condition.type = tested.type;
  condition.test = tested.exp;
  for (size_t i = 0; i < condition.count; ++i) {
    condition.members.push_back(formulas[condition.first + i].exp);
  }
  return error.empty();
}

bool ConditionMet(EC ec, Condition &condition) {
  const Value tested = ValueOf(ec, condition.type, condition.test);
  if (!tested.good) {
    return false;
  }
  if (condition.range) {
    const Value low = ValueOf(ec, condition.type, condition.members[0]);
    const Value high = ValueOf(ec, condition.type, condition.members[1]);
    if (!low.good || !high.good) {
      return false;
    }
    const bool met =
        Compare(condition.type, low, tested) <= 0 && Compare(condition.type, tested, high) <= 0;
    ++condition.rows;
    condition.reversed += !met && Compare(condition.type, low, high) > 0 ? 1 : 0;
    return met;
  }
  return std::any_of(condition.members.begin(), condition.members.end(), [&](HEXP exp) {
    const Value member = ValueOf(ec, condition.type, exp);
    return member.good && Compare(condition.type, tested, member) == 0;
  });
}
