#include "host/formulas.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <map>
#include <new>
#include <string_view>

#include "host/chars.h"
#include "host/display.h"
#include "host/hints.h"
#include "host/messages.h"
#include "host/nearest.h"
#include "host/tokens.h"
#include "host/underline.h"

namespace {

constexpr std::string_view kHintMark = "hint: ";

// The "=" after the name, searched after the name's quotes.
size_t FindEquals(const std::string &argument) {
  const size_t first = argument.find_first_not_of(" \t");
  size_t from = 0;
  if (first != std::string::npos && IsQuote(argument[first])) {
    const size_t closing = argument.find(argument[first], first + 1);
    from = closing == std::string::npos ? 0 : closing;
  }
  return argument.find('=', from);
}

// The index of each name among the formulas.
using Places = std::map<std::string_view, size_t>;

// The reason why a name is not valid for a formula.
std::string NameProblem(EC ec, const std::string &name) {
  if (name.empty()) {
    return "a formula has no name";
  }
  if (IsUnitWord(name)) {
    return DisplayName(name) + " is a date unit word; write it in double quotes";
  }
  const std::string quoted = '"' + name + '"';
  return "not a valid formula name: " + DisplayName(name) +
         (ORLValidName(ec, quoted.c_str(), nullptr) == 0
              ? std::string()
              : "\nhint: it needs double quotes: " + DisplayName(quoted));
}

bool CheckNames(EC ec, const std::vector<Formula> &formulas, Places &places, std::string &error) {
  for (size_t i = 0; i < formulas.size(); ++i) {
    const std::string &name = formulas[i].name;
    if (ORLValidName(ec, name.c_str(), nullptr) == 0) {
      error = NameProblem(ec, name);
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

// Sets handle and type of each formula from the context.
void TakeDefined(EC ec, std::vector<Formula> &formulas) {
  for (Formula &formula : formulas) {
    formula.exp = ORLHEXPFromName(ec, formula.name.c_str());
    formula.type = formula.exp == nullptr ? -1 : ORLGetExpressionDataType(ec, formula.exp);
  }
}

// The formula whose call prevents this one from being defined.
size_t Awaited(EC ec, Formula &formula, const Places &places) {
  uint16_t type = 0;
  ORLParseFormula(ec, nullptr, formula.text.c_str(), formula.name.c_str(), &formula.problem, &type);
  return places.at(UnknownCall(formula));
}

// The message for formulas that call each other in a cycle, or one that calls itself. The chain of
// waiting formulas leads from `start` into the cycle, and `start` is moved there.
std::string CycleMessage(EC ec, std::vector<Formula> &formulas, const Places &places,
                         size_t &start) {
  std::map<size_t, size_t> awaited;  // by who waits
  while (awaited.count(start) == 0) {
    start = awaited[start] = Awaited(ec, formulas[start], places);
  }
  if (awaited[start] == start) {
    return "formula " + DisplayName(formulas[start].title) + " calls itself";
  }
  std::string names = formulas[start].title;
  for (size_t i = awaited[start]; i != start; i = awaited[i]) {
    names += ", " + formulas[i].title;
  }
  return "formulas call each other in a cycle: " + DisplayName(names);
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
  formula = FormulaOf(std::string(Trimmed(std::string_view(argument).substr(0, equals))),
                      argument.substr(equals + 1));
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

bool FormulasDefine(EC ec, std::vector<Formula> &formulas, std::string &error, size_t *wrong) {
  Places places;
  if (!CheckNames(ec, formulas, places, error)) {
    return false;
  }
  std::vector<OrlFormulaText> texts;
  texts.reserve(formulas.size());
  for (const Formula &formula : formulas) {
    texts.push_back({formula.text.c_str(), formula.name.c_str()});
  }
  int32_t place = -1;
  FormulaError problem = {};
  const bool good =
      ORLParseFormulas(ec, static_cast<int32_t>(texts.size()), texts.data(), &place, &problem) == 1;
  TakeDefined(ec, formulas);
  if (good) {
    return true;
  }
  if (place < 0) {
    throw std::bad_alloc();
  }
  auto failed = static_cast<size_t>(place);
  if (problem.id == ORL_ERR_RECURSIVE) {
    error = CycleMessage(ec, formulas, places, failed);
  } else {
    formulas[failed].problem = problem;
    std::vector<Formula> others = formulas;  // it cannot call itself
    others.erase(others.begin() + place);
    error = "formula " + DisplayName(formulas[failed].title) + ": " +
            ErrorWithPlace(ec, formulas[failed].text, problem, others);
  }
  if (wrong != nullptr) {
    *wrong = failed;
  }
  return false;
}

std::string FormulaHint(const std::vector<Formula> &formulas, const std::string &name) {
  std::vector<std::string> titles;
  titles.reserve(formulas.size());
  for (const Formula &formula : formulas) {
    titles.push_back(formula.title);
  }
  return NearestHint(name, titles);
}

std::string TextColumnHint(EC ec, const Formula &formula) {
  const bool column =
      formula.type == ORL_TYPE_STRING && ORLIsExpressionSimpleInput(ec, formula.exp) != 0;
  return column ? "\nhint: `orli items` shows why " + DisplayName(formula.text) + " is a String"
                : std::string();
}

const char *FormulaKind(EC ec, HEXP exp) {
  if (ORLIsExpRange(ec, exp, 1) == 1) {
    return "set";
  }
  return ORLIsExpRange(ec, exp, 2) == 1 ? "range" : "formula";
}

std::string ErrorWithPlace(EC ec, const std::string &text, const FormulaError &error,
                           const std::vector<Formula> &formulas) {
  std::vector<std::string> names;
  names.reserve(formulas.size());
  for (const Formula &formula : formulas) {
    names.push_back(formula.name);
  }
  const std::string hint = HintFor(text, error, NamesOf(ec, names));
  return MessageText(error.id) + "\n" + Underline(text, error.offset, error.length) +
         (hint.empty() ? "" : std::string(kHintMark) + hint + "\n");
}

bool FormulasRead(const std::string &path, std::vector<Formula> &formulas, std::string &error) {
  std::ifstream stream(path);
  std::string argument;
  int64_t begun = 0;  // the line that the formula began on
  const auto finish = [&] {
    Formula formula;
    const bool good = begun == 0 || FormulaFromArgument(argument, formula, error);
    if (!good) {
      error = DisplayName(path) + ": line " + std::to_string(begun) + ": " + error;
    } else if (begun != 0) {
      formulas.push_back(formula);
    }
    begun = 0;
    return good;
  };
  int64_t number = 0;
  for (std::string line; std::getline(stream, line);) {
    ++number;
    line.erase(line.find_last_not_of(" \t\r") + 1);
    if (number == 1 && line.starts_with("\xEF\xBB\xBF")) {
      line.erase(0, 3);
    }
    if (line.empty() || line.front() == '#') {
      continue;
    }
    if (begun != 0 && (line.front() == ' ' || line.front() == '\t')) {
      argument += "\n" + line;
      continue;
    }
    if (!finish()) {
      return false;
    }
    argument = line;
    begun = number;
  }
  if (!stream.eof()) {
    error = DisplayName(path) + ": " + std::strerror(errno == 0 ? EIO : errno);
    return false;
  }
  return finish();
}
