#include "host/formulas.h"

#include <algorithm>
#include <map>
#include <string_view>

#include "host/display.h"
#include "host/messages.h"
#include "host/underline.h"

namespace {

constexpr std::string_view kBlanks = " \t";
constexpr size_t kNobody = static_cast<size_t>(-1);

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

/* Where each name stands among the formulas. */
using Places = std::map<std::string_view, size_t>;

bool CheckNames(EC ec, const std::vector<Formula> &formulas, Places &places, std::string &error) {
  for (size_t i = 0; i < formulas.size(); ++i) {
    const std::string &name = formulas[i].name;
    if (ORLValidName(ec, name.c_str(), nullptr) == 0) {
      error = "not a valid formula name: " + DisplayName(name);
      return false;
    }
    if (ORLIsExpNameUnique(ec, nullptr, name.c_str()) == 0) {
      error = "formula " + DisplayName(name) + " has the name of a function";
      return false;
    }
    if (!places.emplace(name, i).second) {
      error = "two formulas have the name " + DisplayName(name);
      return false;
    }
  }
  return true;
}

void TryDefine(EC ec, Formula &formula) {
  uint16_t type = 0;
  formula.exp = ORLParseFormula(ec, nullptr, formula.text.c_str(), formula.name.c_str(),
                                &formula.problem, &type);
  formula.type = formula.exp == nullptr ? -1 : type;
}

/* The formula not yet defined whose call is the error of another; kNobody when the error is of a
 * kind that no later formula mends. */
size_t AwaitedBy(const Formula &formula, const std::vector<Formula> &formulas,
                 const Places &places) {
  const auto found = places.find(UnknownCall(formula));
  const bool awaited = found != places.end() && formulas[found->second].exp == nullptr;
  return awaited ? found->second : kNobody;
}

/* The words for formulas that call each other in a circle, or one that calls itself. `awaited` has
 * for each formula the one that it waits for; `start` leads into the circle. */
std::string CircleMessage(const std::vector<Formula> &formulas, const std::vector<size_t> &awaited,
                          size_t start) {
  for (size_t steps = 0; steps < formulas.size(); ++steps) {
    start = awaited[start];
  }
  if (awaited[start] == start) {
    return "formula " + DisplayName(formulas[start].title) + " calls itself";
  }
  std::string names = formulas[start].title;
  for (size_t i = awaited[start]; i != start; i = awaited[i]) {
    names += ", " + formulas[i].title;
  }
  return "formulas call each other in a circle: " + DisplayName(names);
}

}  // namespace

Formula FormulaOf(const std::string &name, const std::string &text) {
  Formula formula;
  formula.name = name;
  formula.text = text;
  formula.title = name;
  if (name.size() > 2 && IsQuote(name.front()) && name.find(name.front(), 1) == name.size() - 1) {
    formula.title = name.substr(1, name.size() - 2);
  }
  return formula;
}

bool FormulaFromArgument(const std::string &argument, Formula &formula, std::string &error) {
  const size_t equals = FindEquals(argument);
  if (equals == std::string::npos) {
    error = "a formula is given as NAME=TEXT, not as " + DisplayName(argument);
    return false;
  }
  formula = FormulaOf(Trimmed(argument.substr(0, equals)), argument.substr(equals + 1));
  return true;
}

std::string_view UnknownCall(const Formula &formula) {
  if (formula.problem.id != ORL_ERR_FUNC) {
    return {};
  }
  const auto offset = static_cast<size_t>(std::max(formula.problem.offset, 0));
  const auto length = static_cast<size_t>(std::max(formula.problem.length, 0));
  std::string_view called(formula.text);
  called = called.substr(std::min(offset, called.size()), length);
  return called.substr(0, called.find_last_not_of(" (") + 1);
}

bool FormulasDefine(EC ec, std::vector<Formula> &formulas, std::string &error) {
  Places places;
  if (!CheckNames(ec, formulas, places, error)) {
    return false;
  }
  /* A formula can call only what is defined. One that calls another too early is tried again when
   * that one is there. */
  std::vector<size_t> awaited(formulas.size(), kNobody);
  std::vector<std::vector<size_t>> waiting(formulas.size());
  for (size_t first = 0; first < formulas.size(); ++first) {
    std::vector<size_t> ready = {first};
    while (!ready.empty()) {
      const size_t i = ready.back();
      Formula &formula = formulas[i];
      ready.pop_back();
      TryDefine(ec, formula);
      if (formula.exp != nullptr) {
        ready.insert(ready.end(), waiting[i].begin(), waiting[i].end());
        continue;
      }
      awaited[i] = AwaitedBy(formula, formulas, places);
      if (awaited[i] == kNobody) {
        error = "formula " + DisplayName(formula.title) + ": " +
                ErrorWithPlace(formula.text, formula.problem);
        return false;
      }
      waiting[awaited[i]].push_back(i);
    }
  }
  for (size_t i = 0; i < formulas.size(); ++i) {
    if (formulas[i].exp == nullptr) {
      error = CircleMessage(formulas, awaited, i);
      return false;
    }
  }
  return true;
}

const char *FormulaKind(EC ec, HEXP exp) {
  if (ORLIsExpRange(ec, exp, 1) == 1) {
    return "set";
  }
  return ORLIsExpRange(ec, exp, 2) == 1 ? "range" : "formula";
}

std::string ErrorWithPlace(const std::string &text, const FormulaError &error) {
  return std::string(MessageText(error.id)) + "\n" + Underline(text, error.offset, error.length);
}
