#include "host/formulas.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <map>
#include <string_view>

#include "host/display.h"
#include "host/hints.h"
#include "host/messages.h"
#include "host/tokens.h"
#include "host/underline.h"

namespace {

/* ASCII bytes that no name without quotes holds. */
constexpr std::string_view kBesideNames = "\t\n\r !\"%&'()*+,-./:;<=>?[\\]^`{|}~";
constexpr size_t kNobody = static_cast<size_t>(-1);
constexpr std::string_view kHintMark = "hint: ";
/* How often a text is parsed for calls that come too early before it is only looked through. */
constexpr int kMostTries = 16;

bool IsQuote(char byte) {
  return byte == '"' || byte == '`';
}

/* The "=" behind the name, looked for behind the name's quotes. */
size_t FindEquals(const std::string &argument) {
  const size_t first = argument.find_first_not_of(" \t");
  size_t from = 0;
  if (first != std::string::npos && IsQuote(argument[first])) {
    const size_t closing = argument.find(argument[first], first + 1);
    from = closing == std::string::npos ? 0 : closing;
  }
  return argument.find('=', from);
}

/* Where each name stands among the formulas. */
using Places = std::map<std::string_view, size_t>;

/* Why a name is none that a formula can have. */
std::string NameProblem(EC ec, const std::string &name) {
  if (name.empty()) {
    return "a formula has no name";
  }
  std::array<char, sizeof(ExprItem::name) + 1> unused;
  const bool isUnit = name.size() < sizeof(ExprItem::name) &&
                      ORLInputNameIsKeyword(unused.data(), name.c_str()) == 1;
  if (isUnit) {
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

/* A formula on its way to be defined. */
struct Pending {
  size_t awaited = kNobody;    /* the formula whose call came too early */
  size_t behind = 0;           /* where the text goes on behind that call */
  int tries = 0;               /* how often it was parsed */
  bool passedOver = false;     /* it waits for a call that was only found by looking */
  std::vector<size_t> waiting; /* the formulas that wait for this one */
};

struct Definition {
  EC ec;
  std::vector<Formula> &formulas;
  Places places;
  std::vector<Pending> pending; /* one for each formula */
  bool looking = true;          /* after some tries a text is only looked through */
};

/* The formula of that name when it is not yet defined, else kNobody. */
size_t UndefinedOf(const Definition &definition, std::string_view name) {
  const auto found = definition.places.find(name);
  const bool awaited =
      found != definition.places.end() && definition.formulas[found->second].exp == nullptr;
  return awaited ? found->second : kNobody;
}

/* The next formula not yet defined that the text seems to call, from the last such call on. A "name
 * (" within quotes is taken for a call too. */
size_t NextAwaited(const Definition &definition, const Formula &formula, Pending &pending) {
  const std::string_view text = formula.text;
  for (size_t open = text.find('(', pending.behind); open != std::string_view::npos;
       open = text.find('(', open + 1)) {
    std::string_view called = text.substr(pending.behind, open - pending.behind);
    called = called.substr(0, called.find_last_not_of(' ') + 1);
    called.remove_prefix(called.find_last_of(kBesideNames) + 1);
    pending.behind = open + 1;
    const size_t awaited = UndefinedOf(definition, called);
    if (awaited != kNobody) {
      return awaited;
    }
  }
  return kNobody;
}

/* Parses a formula and finds what it waits for when a call in it comes too early. False when it has
 * another error, which no later formula mends. */
bool TryDefine(Definition &definition, size_t place) {
  Formula &formula = definition.formulas[place];
  Pending &pending = definition.pending[place];
  uint16_t type = 0;
  formula.exp = ORLParseFormula(definition.ec, nullptr, formula.text.c_str(), formula.name.c_str(),
                                &formula.problem, &type);
  formula.type = formula.exp == nullptr ? -1 : type;
  if (formula.exp != nullptr) {
    return true;
  }
  ++pending.tries;
  pending.passedOver = false;
  pending.awaited = UndefinedOf(definition, UnknownCall(formula));
  pending.behind = static_cast<size_t>(formula.problem.offset);
  pending.behind += static_cast<size_t>(formula.problem.length);
  return pending.awaited != kNobody;
}

/* Defines a formula, and those that have waited for it. A formula that calls very many others would
 * be parsed again for each, so after some tries it waits until all are there that it seems to call.
 * The place of a formula with an error that no later one mends, else kNobody. */
size_t DefineFrom(Definition &definition, size_t first) {
  std::vector<size_t> ready = {first};
  while (!ready.empty()) {
    const size_t i = ready.back();
    Pending &pending = definition.pending[i];
    ready.pop_back();
    if (definition.formulas[i].exp != nullptr) {
      continue;
    }
    const size_t another = definition.looking && pending.tries >= kMostTries
                               ? NextAwaited(definition, definition.formulas[i], pending)
                               : kNobody;
    if (another != kNobody) {
      pending.awaited = another;
      pending.passedOver = true;
    } else if (!TryDefine(definition, i)) {
      return i;
    }
    if (definition.formulas[i].exp != nullptr) {
      ready.insert(ready.end(), pending.waiting.begin(), pending.waiting.end());
    } else {
      definition.pending[pending.awaited].waiting.push_back(i);
    }
  }
  return kNobody;
}

/* Defines all that can be. As DefineFrom. */
size_t DefineAll(Definition &definition) {
  size_t wrong = kNobody;
  for (size_t i = 0; i < definition.formulas.size() && wrong == kNobody; ++i) {
    wrong = DefineFrom(definition, i);
  }
  /* What seemed to be a call may be none, and another error may stand ahead of it. */
  definition.looking = false;
  for (size_t i = 0; i < definition.formulas.size() && wrong == kNobody; ++i) {
    wrong = definition.pending[i].passedOver ? DefineFrom(definition, i) : kNobody;
  }
  return wrong;
}

/* The words for formulas that call each other in a circle, or one that calls itself. Who waits for
 * whom leads from `start` into the circle, and `start` is moved there. */
std::string CircleMessage(const Definition &definition, size_t &start) {
  const std::vector<Formula> &formulas = definition.formulas;
  const std::vector<Pending> &pending = definition.pending;
  for (size_t steps = 0; steps < formulas.size(); ++steps) {
    start = pending[start].awaited;
  }
  if (pending[start].awaited == start) {
    return "formula " + DisplayName(formulas[start].title) + " calls itself";
  }
  std::string names = formulas[start].title;
  for (size_t i = pending[start].awaited; i != start; i = pending[i].awaited) {
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

bool FormulasDefine(EC ec, std::vector<Formula> &formulas, std::string &error, size_t *wrong) {
  Definition definition{ec, formulas, {}, {}};
  if (!CheckNames(ec, formulas, definition.places, error)) {
    return false;
  }
  /* A formula can call only what is defined. One that calls another too early is tried again when
   * that one is there. */
  definition.pending.resize(formulas.size());
  size_t failed = DefineAll(definition);
  if (failed != kNobody) {
    error = "formula " + DisplayName(formulas[failed].title) + ": " +
            ErrorWithPlace(ec, formulas[failed].text, formulas[failed].problem, formulas);
  }
  for (size_t i = 0; i < formulas.size() && failed == kNobody; ++i) {
    if (formulas[i].exp == nullptr) {
      failed = i;
      error = CircleMessage(definition, failed);
    }
  }
  if (wrong != nullptr && failed != kNobody) {
    *wrong = failed;
  }
  return failed == kNobody;
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
  int64_t begun = 0; /* the line that the formula began on */
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
