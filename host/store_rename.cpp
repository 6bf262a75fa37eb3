// The command rename: renames a column in the formulas of a store.
//
// The engine replaces words, whatever they mean. So the column is first given a unique name: where
// that replaces anything but the column, the formula no longer parses or no longer computes the
// same. Only then is it given the new name.
#include <algorithm>
#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "host/column_names.h"
#include "host/commands.h"
#include "host/display.h"
#include "host/store.h"
#include "host/underline.h"

namespace {

// The characters of a word.
constexpr char kNameQuote = '"';
constexpr char kTextQuote = '\'';

// Names of the column.
struct Renaming {
  std::string before, after;
};

// The result of a rename.
struct Outcome {
  std::string bytes;  // the store's new ones
  Store store;        // as they read
  std::string problem;
  size_t wrong = static_cast<size_t>(-1);  // the formula that cannot be changed, if any
};

// True when a word of the text would change that cannot be the column: another column whose name
// differs only in case, or one after an opening quote that the new name might close.
bool ChangesOthers(const std::string &text, const Renaming &names,
                   const std::set<std::string> &columns) {
  const bool closes = names.after.find(kTextQuote) != std::string::npos;
  const char *opening = closes ? std::find(text.data(), text.data() + text.size(), kTextQuote)
                               : text.data() + text.size();
  std::vector<char> room(text.size() + 1);
  for (const char *at = text.c_str(); *at != '\0';) {
    at += WRENStrTokenize(room.data(), at, ORL_WORD_DELIMITERS, ORL_WORD_DELIMITERS, 0, kNameQuote,
                          0);
    const std::string word(room.data());
    if (WRENStrEqualNoCase(word.c_str(), names.before.c_str()) == 1 &&
        (at > opening || (word != names.before && columns.count(word) != 0))) {
      return true;
    }
  }
  return false;
}

// A name that is not a word of the store, nor part of a number or date.
std::string UnusedName(const std::string &bytes) {
  std::set<std::string> used;
  for (size_t at = bytes.find('_'); at != std::string::npos; at = bytes.find('_', at + 1)) {
    used.insert(bytes.substr(at, bytes.find_first_not_of("0123456789", at + 1) - at));
  }
  int number = 0;
  while (used.count("_" + std::to_string(number)) != 0) {
    ++number;
  }
  return "_" + std::to_string(number);
}

// For each formula whether it uses the column, itself or through others.
std::vector<bool> UsersOf(const Store &store, const std::string &column) {
  std::vector<bool> users;
  for (const Formula &formula : store.formulas) {
    users.push_back(ORLIsItemUsed(store.ec.get(), formula.exp, ORL_INPUT, column.c_str()) == 1);
  }
  return users;
}

// Renames in the store's context and reads the result; false when a formula does not parse, has
// another type or no longer uses the column as before.
bool Follow(const Store &store, const Renaming &names, Outcome &outcome) {
  EC ec = store.ec.get();
  const std::vector<bool> before = UsersOf(store, names.before);
  ORLRenameExpressionItem(ec, ORL_INPUT, names.before.c_str(), names.after.c_str());
  outcome.bytes = StoredForm(ec, true);
  if (!StoreRead(outcome.bytes, outcome.store, outcome.problem, &outcome.wrong)) {
    return false;
  }
  const std::vector<bool> after = UsersOf(outcome.store, names.after);
  for (size_t i = 0; i < before.size(); ++i) {
    if (after[i] != before[i] || outcome.store.formulas[i].type != store.formulas[i].type) {
      outcome.wrong = i;
      return false;
    }
  }
  return true;
}

bool Rename(const Store &store, const StoreFile &file, const Renaming &names, Outcome &outcome) {
  std::set<std::string> columns;
  for (const Column &column : store.columns) {
    columns.insert(column.name);
  }
  for (size_t i = 0; i < store.formulas.size(); ++i) {
    if (ChangesOthers(store.formulas[i].text, names, columns)) {
      outcome.wrong = i;
      return false;
    }
  }
  const std::string between = UnusedName(file.bytes);
  Outcome first;
  if (!Follow(store, {names.before, between}, first)) {
    outcome.problem = first.problem;
    outcome.wrong = first.wrong;
    return false;
  }
  return Follow(first.store, {between, names.after}, outcome);
}

// Renames, saves, and writes the formulas that have changed.
int RenameAndSave(const Store &store, const StoreFile &file, const Renaming &names) {
  Outcome outcome;
  if (!Rename(store, file, names, outcome)) {
    if (outcome.wrong >= store.formulas.size()) {
      return Refuse(file, "not written, since it could not be read again: " + outcome.problem);
    }
    const Formula &wrong = store.formulas[outcome.wrong];
    return Refuse(file, "rename cannot follow in formula " + DisplayName(wrong.title) +
                            "; define it anew\n" + Underline(wrong.text, 0, 0));
  }
  std::string error;
  if (!StoreFileWrite(file, outcome.bytes, error)) {
    return Complain(error, kExitWrong);
  }
  for (size_t i = 0; i < store.formulas.size(); ++i) {
    const Formula &formula = outcome.store.formulas[i];
    if (formula.text != store.formulas[i].text) {
      std::printf("%s=%s\n", formula.name.c_str(), formula.text.c_str());
    }
  }
  return kExitGood;
}

}  // namespace

int RunRename(const std::string &store, const std::string &from, const std::string &to) {
  return WithStore(store, kStoreChange, [&](const Store &opened, const StoreFile &file) {
    const Column *column = StoreColumn(opened, from);
    if (column == nullptr) {
      return Refuse(file, "has no column " + DisplayName(from) + ColumnHint(opened.columns, from));
    }
    const std::string header = FormulaOf(to, "").title;
    const std::string renamed = WrittenName(opened.ec.get(), header);
    if (renamed.empty()) {
      return Refuse(file, "the new column " + NameProblem(header));
    }
    if (StoreColumn(opened, renamed) != nullptr) {
      return Refuse(file, "has a column " + DisplayName(renamed) + " already");
    }
    return RenameAndSave(opened, file, {column->name, renamed});
  });
}
