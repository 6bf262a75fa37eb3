#include "host/edit_store.h"

#include "host/display.h"
#include "host/errors.h"
#include "host/store.h"

namespace {

using Texts = std::map<std::string, std::string>;  // by name

Texts TextsOf(const std::vector<Formula> &formulas) {
  Texts texts;
  for (const Formula &formula : formulas) {
    texts.emplace(formula.name, formula.text);
  }
  return texts;
}

// The text of that name, or null.
const std::string *TextOf(const std::vector<Formula> &formulas, const std::string &name) {
  for (const Formula &formula : formulas) {
    if (formula.name == name) {
      return &formula.text;
    }
  }
  return nullptr;
}

// Whether the store has a formula of that name that the user of the editor has not seen.
bool IsForeign(const EditedStore &store, const std::vector<Formula> &present,
               const std::string &name, Foreign &foreign) {
  const std::string *text = TextOf(present, name);
  const std::string *known = TextOf(store.known, name);
  const auto replaced = store.replaced.find(name);
  const bool isSeen = text == nullptr || (known != nullptr && *known == *text) ||
                      (replaced != store.replaced.end() && replaced->second == *text);
  if (!isSeen) {
    foreign = {name, *text};
  }
  return !isSeen;
}

// Applies the changes to formulas that another program has changed meanwhile.
std::vector<Formula> Changed(const std::vector<Formula> &formulas, const Changes &changes) {
  std::vector<Formula> kept;
  for (const Formula &formula : formulas) {
    if (changes.deleted.count(formula.name) == 0) {
      kept.push_back(formula);
    }
  }
  return FormulasMerged(kept, changes.stored);
}

bool AnyForeign(const EditedStore &store, const std::vector<Formula> &present,
                const Changes &changes, Foreign &foreign) {
  for (const Formula &formula : changes.stored) {
    const std::string *text = TextOf(present, formula.name);
    if ((text == nullptr || *text != formula.text) &&
        IsForeign(store, present, formula.name, foreign)) {
      return true;
    }
  }
  for (const std::string &name : changes.deleted) {
    if (IsForeign(store, present, name, foreign)) {
      return true;
    }
  }
  return false;
}

// Writes to the file, which is open and read.
bool WriteInto(EditedStore &store, const StoreFile &file, const Store &present,
               const Changes &changes, std::string &error, Foreign &foreign) {
  const bool isMine = file.bytes == store.bytes;
  if (!isMine && AnyForeign(store, present.formulas, changes, foreign)) {
    return false;
  }
  const std::vector<Formula> after = FormulasOf(store.ec);
  const std::vector<Formula> formulas = isMine ? after : Changed(present.formulas, changes);
  if (formulas.size() > ORL_BLOCK_MOST_ROWS) {
    error = file.path + ": " + kStoreIsFull;
    return false;
  }
  const std::string bytes = StoredForm(store.ec, formulas);
  if (!StoreSave(file, bytes, error)) {
    return false;
  }
  store.bytes = bytes;
  store.known = after;
  return true;
}

}  // namespace

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

std::string ChangesSummary(const Changes &changes) {
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

bool EditedStoreAccepts(const EditedStore &store, HEXP exp, const std::string &text,
                        const std::string &name, std::string &error, Foreign &foreign) {
  StoreFile file;
  Store present;
  bool good = StoreFileOpen(store.path, kStoreLook, StoreHeadProblem, file, error);
  if (good && file.exists && file.bytes != store.bytes) {
    std::string problem;
    good = StoreRead(file.bytes, present, problem);
    error = good ? "" : file.path + ": " + problem;
    const int32_t ordinal = ORLGetExpressionOrdinal(store.ec, exp);
    const std::string old =
        ordinal < 0 ? name : FormulasOf(store.ec)[static_cast<size_t>(ordinal)].name;
    const std::string *there = TextOf(present.formulas, name);
    const bool isSame = there != nullptr && *there == text;
    good = good && (isSame || !IsForeign(store, present.formulas, name, foreign)) &&
           (old == name || !IsForeign(store, present.formulas, old, foreign));
  }
  StoreFileClose(file);
  return good;
}

bool EditedStoreWrite(EditedStore &store, std::string &error, Foreign &foreign) {
  const Changes changes = ChangesBetween(store.known, FormulasOf(store.ec));
  if (changes.stored.empty() && changes.deleted.empty()) {
    return true;
  }
  StoreFile file;
  Store present;
  const bool good = StoreOpen(store.path, kStoreMayCreate, file, present, error) &&
                    WriteInto(store, file, present, changes, error, foreign);
  StoreFileClose(file);
  if (good) {
    StoreReport(changes.stored, kExitGood);
  }
  return good;
}
