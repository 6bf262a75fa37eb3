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

/* Whether the unknown function of an error is a formula that itself could not be defined: then they
 * wait for each other. */
bool WaitsForAnother(const std::vector<Formula> &formulas, const Formula &formula,
                     const FormulaError &error) {
  const auto offset = static_cast<size_t>(std::max(error.offset, 0));
  if (error.id != ORL_ERR_FUNC || offset > formula.text.size()) {
    return false;
  }
  const std::string called = formula.text.substr(offset, static_cast<size_t>(error.length));
  return std::any_of(formulas.begin(), formulas.end(), [&called](const Formula &other) {
    return other.exp == nullptr &&
           (called == other.name || called.rfind(other.name + "(", 0) == 0 ||
            called.rfind(other.name + " ", 0) == 0);
  });
}

bool Report(const std::vector<Formula> &formulas, const Formula &formula,
            const FormulaError &problem, std::string &error) {
  error = "formula " + formula.title + ": " + ErrorWithPlace(formula.text, problem);
  if (WaitsForAnother(formulas, formula, problem)) {
    error += "The formulas given call each other in a circle.\n";
  }
  return false;
}

/* Defines one formula; true also when it calls a function that may come later. */
bool TryDefine(EC ec, Formula &formula, FormulaError &problem) {
  uint16_t type = 0;
  formula.exp =
      ORLParseFormula(ec, nullptr, formula.text.c_str(), formula.name.c_str(), &problem, &type);
  formula.type = formula.exp == nullptr ? -1 : type;
  return formula.exp != nullptr || problem.id == ORL_ERR_FUNC;
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
    const Formula *waiting = nullptr;
    FormulaError first = {};
    for (Formula &formula : formulas) {
      FormulaError problem = {};
      if (formula.exp != nullptr) {
        continue;
      }
      if (!TryDefine(ec, formula, problem)) {
        return Report(formulas, formula, problem, error);
      }
      moved = moved || formula.exp != nullptr;
      if (formula.exp == nullptr && waiting == nullptr) {
        waiting = &formula;
        first = problem;
      }
    }
    if (!moved && waiting != nullptr) {
      return Report(formulas, *waiting, first, error);
    }
  }
  return true;
}

std::string ErrorWithPlace(const std::string &text, const FormulaError &error) {
  return std::string(MessageText(error.id)) + "\n" + Underline(text, error.offset, error.length);
}
