#include "host/formulas.h"

#include <algorithm>

#include "host/messages.h"
#include "host/underline.h"

namespace {

constexpr std::string_view kBlanks = " \t";

bool IsQuote(char byte) {
  return byte == '"' || byte == '`';
}

std::string Trimmed(const std::string &text) {
  const size_t first = text.find_first_not_of(kBlanks);
  const size_t last = text.find_last_not_of(kBlanks);
  return first == std::string::npos ? std::string() : text.substr(first, last + 1 - first);
}

/* The "=" behind the name, looked for behind the name's quotes. */
size_t FindEquals(const std::string &argument) {
  const size_t first = argument.find_first_not_of(kBlanks);
  size_t from = 0;
  if (first != std::string::npos && IsQuote(argument[first])) {
    const size_t closing = argument.find(argument[first], first + 1);
    from = closing == std::string::npos ? 0 : closing;
  }
  return argument.find('=', from);
}

bool CheckNames(EC ec, const std::vector<Formula> &formulas, std::string &error) {
  for (size_t i = 0; i < formulas.size(); ++i) {
    const std::string &name = formulas[i].name;
    if (ORLValidName(ec, name.c_str(), nullptr) == 0) {
      error = "not a valid formula name: " + name;
      return false;
    }
    if (ORLIsExpNameUnique(ec, nullptr, name.c_str()) == 0) {
      error = "formula " + name + " has the name of a function";
      return false;
    }
    for (size_t k = 0; k < i; ++k) {
      if (formulas[k].name == name) {
        error = "two formulas have the name " + name;
        return false;
      }
    }
  }
  return true;
}

/* Tries to define a formula; false when it is wrong in a way that later formulas cannot mend. */
bool TryDefine(EC ec, Formula &formula) {
  uint16_t type = 0;
  formula.exp = ORLParseFormula(ec, nullptr, formula.text.c_str(), formula.name.c_str(),
                                &formula.problem, &type);
  formula.type = formula.exp == nullptr ? -1 : type;
  return formula.exp != nullptr || formula.problem.id == ORL_ERR_FUNC;
}

/* Whether the unknown function that a formula calls is one of those given. */
bool WaitsForAnother(const std::vector<Formula> &formulas, const Formula &formula) {
  const auto offset = static_cast<size_t>(std::max(formula.problem.offset, 0));
  const auto length = static_cast<size_t>(std::max(formula.problem.length, 0));
  std::string called = formula.text.substr(std::min(offset, formula.text.size()), length);
  called.erase(called.find_last_not_of(" (") + 1);
  return std::any_of(formulas.begin(), formulas.end(),
                     [&called](const Formula &other) { return called == other.name; });
}

bool Report(const Formula &formula, std::string &error) {
  error = "formula " + formula.title + ": " + ErrorWithPlace(formula.text, formula.problem);
  return false;
}

/* True when no formula is left undefined. Otherwise the cause is the first that calls what nobody
 * gave; without one they wait for each other. */
bool AllDefined(const std::vector<Formula> &formulas, std::string &error) {
  const Formula *waiting = nullptr;
  for (const Formula &formula : formulas) {
    if (formula.exp != nullptr) {
      continue;
    }
    if (!WaitsForAnother(formulas, formula)) {
      return Report(formula, error);
    }
    waiting = waiting == nullptr ? &formula : waiting;
  }
  if (waiting != nullptr) {
    Report(*waiting, error);
    error += "The formulas given call each other in a circle.\n";
  }
  return waiting == nullptr;
}

}  // namespace

bool FormulaFromArgument(const std::string &argument, Formula &formula, std::string &error) {
  const size_t equals = FindEquals(argument);
  if (equals == std::string::npos) {
    error = "a formula is given as NAME=TEXT, not as " + argument;
    return false;
  }
  formula.name = Trimmed(argument.substr(0, equals));
  formula.text = argument.substr(equals + 1);
  formula.title = formula.name;
  if (formula.name.size() > 2 && IsQuote(formula.name.front()) &&
      formula.name.find(formula.name.front(), 1) == formula.name.size() - 1) {
    formula.title = formula.name.substr(1, formula.name.size() - 2);
  }
  return true;
}

bool FormulasDefine(EC ec, std::vector<Formula> &formulas, std::string &error) {
  if (!CheckNames(ec, formulas, error)) {
    return false;
  }
  /* A formula can call only what is defined; so those that call a later one wait for a round. */
  for (bool moved = true; moved;) {
    moved = false;
    for (Formula &formula : formulas) {
      if (formula.exp != nullptr) {
        continue;
      }
      if (!TryDefine(ec, formula)) {
        return Report(formula, error);
      }
      moved = moved || formula.exp != nullptr;
    }
  }
  return AllDefined(formulas, error);
}

std::string ErrorWithPlace(const std::string &text, const FormulaError &error) {
  return std::string(MessageText(error.id)) + "\n" + Underline(text, error.offset, error.length);
}
