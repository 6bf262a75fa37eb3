// The formulas of versions 0 and 1: parsed in order, and the first that fails ends the load.
#include <cstring>

#include "engine/host_call.h"
#include "language/recursion.h"
#include "persistence/formula_loader.h"
#include "persistence/keyword_words.h"
#include "wreni11.h"

namespace {

// What is parsed for a row: the stored texts, or changed copies.
struct OldFormula {
  const char *text;
  const char *name;
  OwnedText ownText;
  OwnedText ownName;
};

// Changes name and text of version 0 where they need it; false when out of memory.
bool ChangeWords(OldFormula &formula, bool &renaming) {
  formula.ownName = Allocate<char>(std::strlen(formula.name), 2);
  if (formula.ownName == nullptr) {
    return false;
  }
  renaming = ORLInputNameIsKeyword(formula.ownName.get(), formula.name) != 0 || renaming;
  if (!renaming) {
    return true;
  }
  formula.ownText = RenameKeywordWords(formula.text);
  formula.text = formula.ownText.get();
  formula.name = formula.ownName.get();
  return formula.text != nullptr;
}

bool ParseOld(EC ec, const OldFormula &formula, const char *storedText, int64_t &steps,
              OrlErrorProc errorProc) {
  const SearchLimit limit(ec, &steps);
  FormulaError error = {};
  uint16_t dataType = 0;
  if (ORLParseString(ec, formula.text, formula.name, &error, &dataType) != nullptr) {
    return true;
  }
  if (errorProc != nullptr) {
    CallHost([&] { errorProc(ec, storedText, &error); });
  }
  return false;
}

}  // namespace

bool LoadOldFormulas(EC ec, BlockCursor &cursor, int32_t count, bool version0, bool renaming,
                     OrlErrorProc errorProc) {
  bool ok = true;
  int64_t steps = kMostSearchSteps;
  for (int32_t i = 0; i < count && ok; ++i) {
    const char *text = nullptr;
    const char *name = nullptr;
    if (!TakeFormulaRow(cursor, &text, &name)) {
      return false;
    }
    OldFormula formula = {text, name, nullptr, nullptr};
    ok = (!version0 || ChangeWords(formula, renaming)) &&
         ParseOld(ec, formula, text, steps, errorProc);
  }
  return ok;
}
