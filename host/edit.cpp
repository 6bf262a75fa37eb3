/* The command that opens the formula editor on a store. */
#include <array>
#include <map>

#include "host/commands.h"
#include "host/display.h"
#include "host/store.h"
#include "host/value_listing.h"
#include "orli11/windows.h"

namespace {

/* What a session of the editor has changed. */
struct Changes {
  std::vector<Formula> stored; /* added, or changed */
  std::set<std::string> deleted;
};

using Texts = std::map<std::string, std::string>; /* by name */

Texts TextsOf(const std::vector<Formula> &formulas) {
  Texts texts;
  for (const Formula &formula : formulas) {
    texts.emplace(formula.name, formula.text);
  }
  return texts;
}

Changes ChangesBetween(const std::vector<Formula> &before, const std::vector<Formula> &after) {
  const Texts old = TextsOf(before);
  const Texts present = TextsOf(after);
  Changes changes;
  for (const Formula &formula : after) {
    const auto found = old.find(formula.name);
    if (found == old.end() || found->second != formula.text) {
      changes.stored.push_back(formula);
    }
  }
  for (const Formula &formula : before) {
    if (present.count(formula.name) == 0) {
      changes.deleted.insert(formula.name);
    }
  }
  return changes;
}

/* The same changes to formulas that somebody else has changed meanwhile. */
std::vector<Formula> Changed(const std::vector<Formula> &formulas, const Changes &changes) {
  std::vector<Formula> kept;
  for (const Formula &formula : formulas) {
    if (changes.deleted.count(formula.name) == 0) {
      kept.push_back(formula);
    }
  }
  return FormulasMerged(kept, changes.stored);
}

/* "stored mean, warm; deleted old" */
std::string Summary(const Changes &changes) {
  std::vector<std::string> stored;
  for (const Formula &formula : changes.stored) {
    stored.push_back(formula.name);
  }
  std::string summary = stored.empty() ? "" : "stored " + NameList(stored);
  if (!changes.deleted.empty()) {
    summary += (summary.empty() ? "deleted " : "; deleted ") +
               NameList({changes.deleted.begin(), changes.deleted.end()});
  }
  return summary;
}

/* Writes what the session has changed into the store, and tells it. */
int Save(const EditOptions &options, const Store &edited, const StoreFile &before,
         const std::vector<Formula> &after, const Changes &changes) {
  const int status =
      WithStore(options.store, STORE_MAY_CREATE, [&](const Store &present, const StoreFile &file) {
        const std::vector<Formula> formulas =
            file.bytes == before.bytes ? after : Changed(present.formulas, changes);
        if (formulas.size() > ORL_BLOCK_MOST_ROWS) {
          return Refuse(file, kStoreIsFull);
        }
        std::string error;
        return StoreSave(file, StoredForm(edited.ec.get(), formulas), error)
                   ? EXIT_GOOD
                   : Complain(error, EXIT_WRONG);
      });
  StoreTell(changes.stored, status);
  if (status == EXIT_GOOD) {
    Complain(before.path + ": " + Summary(changes), status);
  }
  return status;
}

int32_t EditorType(const std::string &kind) {
  constexpr int32_t kSet = 1;
  constexpr int32_t kRange = 2;
  return kind == "set" ? kSet : kind == "range" ? kRange : 0;
}

/* Runs the editor in the context. */
void RunEditor(const EditOptions &options, Session &session, const Store &store,
               const char *valuesItem) {
  EC ec = store.ec.get();
  ValueListing listing;
  listing.session = &session;
  ORLSetUserLong(ec, reinterpret_cast<intptr_t>(&listing));
  ORLSetListValuesCallback(ec, ListValues);
  ORLSetDelPermissionCallback(ec, [](EC, HEXP, void *) { return 1; });
  const Formula *formula = options.name.empty() ? nullptr : StoreFormula(store, options.name);
  HEXP exp = formula != nullptr ? formula->exp : nullptr;
  const std::string kind =
      options.mode.empty() && exp != nullptr ? FormulaKind(ec, exp) : options.mode;
  ORLBuildExpressionOfType(nullptr, ec, exp, 0, EditorType(kind), valuesItem);
}

/* Edits the formulas over the columns of the file, for which they must be right. */
int Edit(const EditOptions &options, Session &session, const Store &old, const StoreFile &file) {
  std::vector<Formula> before = FormulasMerged(old.formulas, {});
  std::string error;
  Store edited;
  if (!StoreDefine(old, file, {}, session, before, error) ||
      !StoreRead(StoredForm(session.ec, before), edited, error)) {
    return Complain(error, EXIT_WRONG);
  }
  const Column *column = options.values.empty() ? nullptr : StoreColumn(edited, options.values);
  if (column == nullptr && !options.values.empty()) {
    return Complain(session.csv.path + ": has no column " + DisplayName(options.values),
                    EXIT_WRONG);
  }
  RunEditor(options, session, edited, column != nullptr ? column->name.c_str() : nullptr);
  const std::vector<Formula> after = FormulasOf(edited.ec.get());
  const Changes changes = ChangesBetween(before, after);
  if (changes.stored.empty() && changes.deleted.empty()) {
    return Complain(file.path + ": nothing changed", EXIT_GOOD);
  }
  return Save(options, edited, file, after, changes);
}

}  // namespace

int RunEdit(const EditOptions &options) {
  if (options.data == "-") {
    return Complain("edit needs a file of columns that has a name", EXIT_USAGE);
  }
  StoreFile file;
  Store old;
  std::string error;
  const bool good = StoreOpen(options.store, STORE_LOOK, file, old, error);
  StoreFileClose(file);
  if (!good) {
    return Complain(error, EXIT_WRONG);
  }
  if (!options.name.empty() && StoreFormula(old, options.name) == nullptr) {
    return Refuse(file, "has no formula " + DisplayName(options.name));
  }
  const char *problem = ORLWindowSystemProblem();
  if (problem != nullptr) {
    return Complain(problem, EXIT_WRONG);
  }
  return WithSession(options.data,
                     [&](Session &session) { return Edit(options, session, old, file); });
}
