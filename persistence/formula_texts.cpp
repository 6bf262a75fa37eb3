// Formulas that a host passes as texts, in any order: read like a block of formulas alone, without
// repair by a user.
#include <algorithm>
#include <cstring>

#include "persistence/formula_loader.h"

namespace {

// The reason why the load ended.
struct Refusal {
  const char *rows;  // the formulas of the block
  int32_t wrong;     // one of them, or -1
  FormulaError error;
};

const char *TextOrEmpty(const char *text) {
  return text == nullptr ? "" : text;
}

// A formula row is a text and a name, each with its zero byte.
void Refuse(Refusal &refusal, const char *text, const FormulaError &error) {
  refusal.wrong = static_cast<int32_t>(std::count(refusal.rows, text, '\0') / 2);
  refusal.error = error;
}

HEXP RefuseFormula(EC /*ec*/, FormulaRepair &repair, void *data) {
  Refuse(*static_cast<Refusal *>(data), repair.text, repair.error);
  return nullptr;
}

void RefuseRest(EC /*ec*/, const char *text, const FormulaError &error, void *data) {
  Refuse(*static_cast<Refusal *>(data), text, error);
}

// The rows of a block; null when out of memory. `size` receives their bytes.
OwnedText FormulaRows(const OrlFormulaText *formulas, int32_t count, int64_t &size) {
  size = 0;
  for (int32_t i = 0; i < count; ++i) {
    size += static_cast<int64_t>(std::strlen(TextOrEmpty(formulas[i].text))) + 1;
    size += static_cast<int64_t>(std::strlen(TextOrEmpty(formulas[i].name))) + 1;
  }
  OwnedText rows = Allocate<char>(static_cast<uint64_t>(size));
  char *at = rows.get();
  for (int32_t i = 0; rows != nullptr && i < count; ++i) {
    at = stpcpy(at, TextOrEmpty(formulas[i].text)) + 1;
    at = stpcpy(at, TextOrEmpty(formulas[i].name)) + 1;
  }
  return rows;
}

// The first formula whose name the context does not have.
int32_t FirstMissing(EC ec, const OrlFormulaText *formulas, int32_t count) {
  int32_t missing = 0;
  while (missing < count && (TextOrEmpty(formulas[missing].name)[0] == '\0' ||
                             ORLHEXPFromName(ec, formulas[missing].name) != nullptr)) {
    ++missing;
  }
  return missing == count ? -1 : missing;
}

FormulaError ParseAll(EC ec, const OrlFormulaText *formulas, int32_t count, int32_t &wrong) {
  int64_t size = 0;
  const OwnedText rows = FormulaRows(formulas, count, size);
  if (rows == nullptr) {
    return {ORL_ERR_MEMORY, 0, 0};
  }
  Refusal refusal = {rows.get(), -1, {ORL_ERR_MEMORY, 0, 0}};
  BlockCursor cursor = {rows.get(), size, 0, true};
  const LoadDialogs dialogs = {&RefuseFormula, &RefuseRest, &refusal};
  switch (LoadFormulas(ec, cursor, count, LoadOrder::Parsed, nullptr, dialogs)) {
    case LoadEnd::Complete:
      return {};
    case LoadEnd::Cycle:
      wrong = FirstMissing(ec, formulas, count);
      return {ORL_ERR_RECURSIVE, 0, 0};
    default:
      wrong = refusal.wrong;
      return refusal.error;
  }
}

}  // namespace

int32_t ORLParseFormulas(EC ec, int32_t count, const OrlFormulaText *formulas, int32_t *wrong,
                         FormulaError *error) {
  int32_t place = -1;
  FormulaError found = {ORL_ERR_GENERAL, 0, 0};
  if (ec != nullptr && (formulas != nullptr || count <= 0)) {
    found = count <= 0 ? FormulaError{} : ParseAll(ec, formulas, count, place);
  }
  if (wrong != nullptr) {
    *wrong = place;
  }
  if (error != nullptr && found.id != 0) {
    *error = found;
  }
  return found.id == 0 ? 1 : 0;
}
