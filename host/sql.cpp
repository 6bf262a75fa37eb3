// The command sql: formulas of a store for a database.
#include "host/sql.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string_view>
#include <unordered_map>

#include "host/display.h"
#include "host/odbc_functions.h"
#include "host/sql_text.h"
#include "host/store.h"

namespace {

// The formulas of a statement, by their index among all.
struct Plan {
  std::vector<Formula> formulas;
  std::vector<size_t> shown;
  struct Condition {
    size_t tested, bounds;
  };
  std::vector<Condition> conditions;
  Context ec;
};

// A context that only parses what databases support: formulas without the built-in functions and
// without dates moved by units.
bool MakeContext(const Table &table, Plan &plan) {
  plan.ec.reset(ORLCreateEC(nullptr, nullptr, nullptr, ORL_FLAG_RANGES | ORL_FLAG_NO_DATE_UNITS));
  EC ec = plan.ec.get();
  bool good = ec != nullptr && OdbcFunctionsDeclare(ec);
  for (const Column &column : table.columns) {
    ExprItem item = {};
    item.kind = ORL_INPUT;
    item.dataType = column.type;
    std::memcpy(item.name, column.name.c_str(), column.name.size() + 1);
    good = good && ORLAddExpressionItem(ec, &item) != 0;
  }
  // The pictures after the templates: their width includes these.
  ORLSetDateConvert(ec, "{d '%s'}", "{ts '%s'}", "{t '%s'}", 2);
  ORLSetDatePicture(ec, "yyyy-MM-dd", "yyyy-MM-dd HH:mm:ss.ffffff", "HH:mm:ss");
  return good;
}

bool FindFormula(const Plan &plan, const std::string &name, size_t &place, std::string &error) {
  const auto found = std::find_if(
      plan.formulas.begin(), plan.formulas.end(),
      [&name](const Formula &formula) { return formula.name == name || formula.title == name; });
  place = static_cast<size_t>(found - plan.formulas.begin());
  if (found == plan.formulas.end()) {
    error = "the store has no formula " + DisplayName(name) + FormulaHint(plan.formulas, name);
  }
  return error.empty();
}

// Splits TEXT=NAME; the text becomes one more formula.
bool TakeCondition(Plan &plan, const std::string &argument, std::string &error) {
  const size_t equals = argument.rfind('=');
  if (equals == std::string::npos) {
    error = "a condition is given as TEXT=NAME, not as " + DisplayName(argument);
    return false;
  }
  size_t bounds = 0;
  if (!FindFormula(plan, argument.substr(equals + 1), bounds, error)) {
    return false;
  }
  plan.conditions.push_back({plan.formulas.size(), bounds});
  const std::string name = "\"--where " + std::to_string(plan.conditions.size()) + "\"";
  plan.formulas.push_back(FormulaOf(name, argument.substr(0, equals)));
  plan.formulas.back().title = "of --where";
  return true;
}

// Values are computed by formulas and bounded by ranges and sets.
bool CheckKinds(EC ec, const Plan &plan, std::string &error) {
  const auto check = [&plan, &error, ec](size_t place, bool value) {
    const Formula &formula = plan.formulas[place];
    const std::string kind = FormulaKind(ec, formula.exp);
    if ((kind == "formula") != value) {
      error = (value ? "formula " : "") + DisplayName(formula.title) + " is a " + kind +
              (value ? " and has no value; --where takes it"
                     : "; --where takes TEXT=NAME with the name of a range or set");
    }
  };
  for (const size_t shown : plan.shown) {
    check(shown, true);
  }
  for (const auto &[tested, bounds] : plan.conditions) {
    check(tested, true);
    check(bounds, false);
    const int32_t type = plan.formulas[bounds].type;
    if (error.empty() && type != plan.formulas[tested].type) {
      error = DisplayName(plan.formulas[bounds].title) + " has type " + TypeName(type) +
              " and cannot bound a " + TypeName(plan.formulas[tested].type);
    }
  }
  return error.empty();
}

// Defines what the database can compute, in the order of the session's context, in which formulas
// follow those that they call.
void DefineForDatabase(EC session, Plan &plan) {
  std::unordered_map<HEXP, Formula *> known;
  for (Formula &formula : plan.formulas) {
    known[formula.exp] = &formula;
    formula.exp = nullptr;
  }
  for (int32_t i = 0; i < ORLGetExpressionCount(session); ++i) {
    Formula &formula = *known.at(ORLHEXPFromOrdinal(session, i));
    uint16_t type = 0;
    formula.exp = ORLParseFormula(plan.ec.get(), nullptr, formula.text.c_str(),
                                  formula.name.c_str(), &formula.problem, &type);
  }
}

// The reason why a database cannot compute a formula: an error in it or in one that it calls.
std::string Refusal(const Plan &plan, size_t place) {
  const Formula *formula = &plan.formulas[place];
  for (std::string_view called = UnknownCall(*formula); !called.empty();) {
    const auto found =
        std::find_if(plan.formulas.begin(), plan.formulas.end(),
                     [called](const Formula &other) { return other.name == called; });
    if (found == plan.formulas.end()) {
      return "formula " + DisplayName(formula->title) + " uses " + DisplayName(called) +
             ", which has no counterpart in databases";
    }
    formula = &*found;
    called = UnknownCall(*formula);
  }
  return "not for a database: formula " + DisplayName(formula->title) + ": " +
         ErrorWithPlace(plan.ec.get(), formula->text, formula->problem);
}

// An empty field counts in a formula, where a database has NULL. A column that is output unchanged
// has an empty cell either way; a condition compares it.
void WarnOfEmptyFields(const Plan &plan, const Formula &formula, const Table &table, bool shown) {
  if (shown && ORLIsExpressionSimpleInput(plan.ec.get(), formula.exp) != 0) {
    return;
  }
  for (const Column &column : table.columns) {
    if (column.filled != table.rows &&
        ORLIsItemUsed(plan.ec.get(), formula.exp, ORL_INPUT, column.name.c_str()) == 1) {
      Complain("formula " + DisplayName(formula.title) + " computes with the empty fields of " +
                   DisplayName(column.name) + ", where a database gives NULL",
               kExitGood);
    }
  }
}

bool AppendSql(const Plan &plan, size_t place, const Table &table, bool shown, std::string &sql,
               std::string &error) {
  constexpr int32_t kLongest = 1 << 28;
  const Formula &formula = plan.formulas[place];
  if (formula.exp == nullptr) {
    error = Refusal(plan, place);
    return false;
  }
  const int32_t length = ORLGetExtendedTextLength(plan.ec.get(), formula.exp, 1);
  const int32_t size = std::min(length, kLongest) + 1;
  const std::unique_ptr<char[]> extended(new char[static_cast<size_t>(size)]);
  ORLGetExtendedText(plan.ec.get(), formula.exp, size, extended.get(), 1);
  std::string problem = "is too long when the formulas that it uses stand in it";
  if (extended[0] == '\0' || !SqlFromExtended(extended.get(), table, sql, problem)) {
    error = "formula " + DisplayName(formula.title) + " " + problem;
    return false;
  }
  WarnOfEmptyFields(plan, formula, table, shown);
  return true;
}

std::string TableName(const SqlOptions &options) {
  if (options.table.empty()) {
    return SqlName(std::filesystem::path(options.data.paths[0]).stem().string());
  }
  std::string name;
  for (size_t from = 0, dot = 0; dot != std::string::npos; from = dot + 1) {
    dot = options.table.find('.', from);
    name += from == 0 ? "" : ".";
    name += SqlName(options.table.substr(from, dot - from));
  }
  return name;
}

bool Compose(const SqlOptions &options, const Table &table, const Plan &plan, SqlQuery &query,
             std::string &error) {
  std::string &sql = query.text;
  for (const size_t i : plan.shown) {
    const Formula &formula = plan.formulas[i];
    sql += query.titles.empty() ? "SELECT " : ", ";
    if (!AppendSql(plan, i, table, true, sql, error)) {
      return false;
    }
    sql += " AS " + SqlName(formula.title);
    query.titles.push_back(formula.title);
    query.types.push_back(formula.type);
  }
  sql += " FROM " + TableName(options) + " AS " + std::string(kSqlTable);
  for (size_t i = 0; i < plan.conditions.size(); ++i) {
    const auto &[tested, bounds] = plan.conditions[i];
    const bool set = ORLIsExpRange(plan.ec.get(), plan.formulas[bounds].exp, 1) == 1;
    sql += i == 0 ? " WHERE (" : " AND (";
    if (!AppendSql(plan, tested, table, false, sql, error)) {
      return false;
    }
    sql += set ? ") IN (" : ") BETWEEN ";
    if (!AppendSql(plan, bounds, table, false, sql, error)) {
      return false;
    }
    sql += set ? ")" : "";
  }
  return true;
}

}  // namespace

bool SqlBuild(const SqlOptions &options, const Session &session, SqlQuery &query,
              std::string &error) {
  Plan plan;
  if (!StoreFormulas(options.store, session, plan.formulas, error)) {
    return false;
  }
  for (const std::string &name : options.names) {
    plan.shown.push_back(0);
    if (!FindFormula(plan, name, plan.shown.back(), error)) {
      return false;
    }
  }
  for (const std::string &argument : options.conditions) {
    if (!TakeCondition(plan, argument, error)) {
      return false;
    }
  }
  if (!FormulasDefine(session.ec.get(), plan.formulas, error) ||
      !CheckKinds(session.ec.get(), plan, error)) {
    return false;
  }
  if (!MakeContext(session.table, plan)) {
    error = "out of memory";
    return false;
  }
  DefineForDatabase(session.ec.get(), plan);
  return Compose(options, session.table, plan, query, error);
}

int RunSql(const SqlOptions &options) {
  if (options.table.empty() && options.data.paths[0] == "-") {
    return Complain("a file without a name needs --table; see orli --help", kExitUsage);
  }
  return WithSession(options.data, [&options](const Session &session) {
    SqlQuery query;
    std::string error;
    if (!SqlBuild(options, session, query, error)) {
      return Complain(error, kExitWrong);
    }
    if (options.source.empty()) {
      std::puts(query.text.c_str());
      return static_cast<int>(kExitGood);
    }
    const bool good = OdbcRun(options.source, query, options.format, error);
    return good ? static_cast<int>(kExitGood) : Complain(error, kExitWrong);
  });
}
