// The commands that keep formulas in a file: define, list, show, delete, uses.
#include <cstdio>

#include "host/commands.h"
#include "host/display.h"
#include "host/store.h"

namespace {

int NoFormula(const Store &store, const StoreFile &file, const std::string &name) {
  return Refuse(file, "has no formula " + DisplayName(name) + FormulaHint(store.formulas, name));
}

int Save(const StoreFile &file, const std::string &bytes) {
  std::string error;
  return StoreSave(file, bytes, error) ? kExitGood : Complain(error, kExitWrong);
}

// Defines the formulas in a session with their columns, and saves both.
int Define(const std::vector<Formula> &wanted, Session &session, const Store &store,
           const StoreFile &file) {
  std::set<std::string> names;
  for (const Formula &formula : wanted) {
    if (!names.insert(formula.name).second) {
      return Complain("two formulas have the name " + DisplayName(formula.name), kExitWrong);
    }
  }
  std::vector<Formula> merged = FormulasMerged(store.formulas, wanted);
  std::string error;
  if (!StoreDefine(store, file, names, session, merged, error)) {
    return Complain(error, kExitWrong);
  }
  return Save(file, StoredForm(session.ec.get(), merged));
}

}  // namespace

int RunDefine(const std::string &store, const DataOptions &data,
              const std::vector<std::string> &formulas,
              const std::vector<std::string> &formulaFiles) {
  std::vector<Formula> wanted;
  std::string error;
  for (const std::string &path : formulaFiles) {
    if (!FormulasRead(path, wanted, error)) {
      return Complain(error, kExitWrong);
    }
  }
  for (const std::string &argument : formulas) {
    if (!FormulaFromArgument(argument, wanted.emplace_back(), error)) {
      return Complain(error, kExitUsage);
    }
  }
  return WithSession(data, [&](Session &session) {
    // The store is read after the data, which may take long.
    return WithStore(store, kStoreMayCreate, [&](const Store &old, const StoreFile &file) {
      return Define(wanted, session, old, file);
    });
  });
}

int RunList(const std::string &store, OutputFormat format) {
  return WithStore(store, kStoreRead, [format](const Store &opened, const StoreFile &) {
    Output output;
    output.format = format;
    output.columns = {{"name"}, {"kind"}, {"type"}, {"text"}};
    for (const Formula &formula : opened.formulas) {
      OutputRow(output, {formula.name, FormulaKind(opened.ec.get(), formula.exp),
                         TypeName(formula.type), formula.text});
    }
    OutputEnd(output);
    return static_cast<int>(kExitGood);
  });
}

int RunShow(const std::string &store, const std::string &name) {
  return WithStore(store, kStoreRead, [&name](const Store &opened, const StoreFile &file) {
    const Formula *formula = StoreFormula(opened, name);
    if (formula == nullptr) {
      return NoFormula(opened, file, name);
    }
    std::puts(formula->text.c_str());
    return static_cast<int>(kExitGood);
  });
}

int RunDelete(const std::string &store, const std::string &name) {
  return WithStore(store, kStoreChange, [&name](const Store &opened, const StoreFile &file) {
    const Formula *formula = StoreFormula(opened, name);
    if (formula == nullptr) {
      return NoFormula(opened, file, name);
    }
    const std::vector<std::string> users = StoreUsers(opened, ORL_FORMULA, formula->name);
    if (ORLDestroyEXP(opened.ec.get(), formula->exp) == 0) {
      return Refuse(file,
                    "formula " + DisplayName(formula->name) + " is used by " + NameList(users));
    }
    return Save(file, StoredForm(opened.ec.get(), true));
  });
}

int RunUses(const std::string &store, const std::string &name) {
  return WithStore(store, kStoreRead, [&name](const Store &opened, const StoreFile &file) {
    const Column *column = StoreColumn(opened, name);
    const Formula *formula = StoreFormula(opened, name);
    const bool isFunction = ORLIsExpNameUnique(opened.ec.get(), nullptr, name.c_str()) == 0;
    if (column == nullptr && formula == nullptr && !isFunction) {
      const std::string hint = ColumnHint(opened.columns, name);
      return Refuse(file, "there is no column, function or formula " + DisplayName(name) +
                              (hint.empty() ? FormulaHint(opened.formulas, name) : hint));
    }
    const std::string wanted[] = {name, column != nullptr ? column->name : "",
                                  formula != nullptr ? formula->name : ""};
    for (const Formula &user : opened.formulas) {
      bool uses = false;
      for (const int32_t kind : {ORL_FUNCTION, ORL_INPUT, ORL_FORMULA}) {
        uses = uses || ORLIsItemUsed(opened.ec.get(), user.exp, kind, wanted[kind].c_str()) == 1;
      }
      if (uses) {
        std::puts(user.name.c_str());
      }
    }
    return static_cast<int>(kExitGood);
  });
}
