// The command that reads a store and lets the user repair formulas that no longer parse.
#include <cstdio>

#include "host/commands.h"
#include "host/display.h"
#include "host/store.h"
#include "orli11/windows.h"

namespace {

constexpr size_t kNoRow = static_cast<size_t>(-1);

// The state of a load.
struct Loading {
  StoreFile file;     // as it was found
  std::string bytes;  // its contents for the requested columns
  Store before;       // the columns and formulas in them
};

// Formulas that call each other in a cycle have no invalid text to repair.
bool IsCycle(const Store &store, size_t wrong) {
  const std::string called(UnknownCall(store.formulas[wrong]));
  return StoreFormula(store, called) != nullptr;
}

// Opens the editor for each formula that does not parse; returns the new bytes. False when the user
// has cancelled it.
bool Repair(const std::string &bytes, std::string &repaired) {
  const Context ec = NewContext();
  const bool good =
      ORLSetECContents(ec.get(), static_cast<int32_t>(bytes.size()), bytes.data(), 1, nullptr) == 1;
  repaired = good ? StoredForm(ec.get(), true) : std::string();
  return good;
}

// Replaces the store by the bytes unless it has changed in the meantime.
int Replace(const std::string &path, const Loading &loading, const std::string &bytes) {
  StoreFile file;
  std::string error;
  bool good = StoreFileOpen(path, kStoreChange, StoreHeadProblem, file, error);
  if (good && file.bytes != loading.file.bytes) {
    error = file.path + ": was changed by another program; load it again";
    good = false;
  }
  good = good && StoreSave(file, bytes, error);
  StoreFileClose(file);
  return good ? kExitGood : Complain(error, kExitWrong);
}

// The formulas that were repaired.
std::vector<Formula> Repaired(const Loading &loading, const Store &after) {
  std::vector<Formula> repaired;
  for (size_t i = 0; i < after.formulas.size(); ++i) {
    if (after.formulas[i].text != loading.before.formulas[i].text) {
      repaired.push_back(after.formulas[i]);
    }
  }
  return repaired;
}

// Lists formulas that still parse but have another type, since the user has not seen them.
void ReportTypes(const Loading &loading, const Store &after) {
  Store old;
  std::string unused;
  if (!StoreRead(loading.file.bytes, old, unused)) {
    return;
  }
  for (size_t i = 0; i < after.formulas.size(); ++i) {
    const Formula &formula = after.formulas[i];
    if (formula.text == old.formulas[i].text && formula.type != old.formulas[i].type) {
      Complain(loading.file.path + ": formula " + DisplayName(formula.title) + " has type " +
                   TypeName(formula.type) + " now, not " + TypeName(old.formulas[i].type),
               kExitGood);
    }
  }
}

// How many formulas there are, and for which columns.
void ReportCount(const Loading &loading, const Store &after, const Session *session) {
  const std::string columns =
      session == nullptr ? "" : ", for the columns of " + session->csv.Path();
  std::printf("%s: %zu %s%s\n", loading.file.path.c_str(), after.formulas.size(),
              after.formulas.size() == 1 ? "formula" : "formulas", columns.c_str());
}

int LoadParts(const std::string &path, Loading &loading, const Session *session) {
  std::string problem;
  size_t wrong = kNoRow;
  Store store;
  std::string bytes = loading.bytes;
  if (!StoreRead(bytes, store, problem, &wrong)) {
    problem = loading.file.path + ": " + problem;
    if (wrong == kNoRow || IsCycle(store, wrong)) {
      return Complain(problem, kExitWrong);
    }
    const char *missing = ORLWindowSystemProblem();
    if (missing != nullptr) {
      return Complain(problem + "orli: it cannot be repaired here: " + missing, kExitWrong);
    }
    if (!Repair(loading.bytes, bytes) || !StoreRead(bytes, store, problem)) {
      return Refuse(loading.file, "not repaired, and left as it was");
    }
  }
  const int status = bytes == loading.file.bytes ? kExitGood : Replace(path, loading, bytes);
  StoreReport(Repaired(loading, store), status);
  if (status == kExitGood) {
    ReportTypes(loading, store);
    ReportCount(loading, store, session);
  }
  return status;
}

int Load(const std::string &path, const Session *session) {
  Loading loading;
  std::string problem;
  const bool good = StoreFileOpen(path, kStoreRead, StoreHeadProblem, loading.file, problem);
  StoreFileClose(loading.file);
  if (!good) {
    return Complain(problem, kExitWrong);
  }
  problem = StoreDecode(loading.file.bytes, loading.before);
  if (problem.empty() && session != nullptr &&
      session->table.columns.size() > ORL_BLOCK_MOST_ROWS) {
    problem = kStoreIsFull;
  }
  if (!problem.empty()) {
    return Refuse(loading.file, problem);
  }
  loading.bytes = session == nullptr ? loading.file.bytes
                                     : StoredForm(session->ec.get(), loading.before.formulas);
  return LoadParts(path, loading, session);
}

}  // namespace

int RunLoad(const std::string &store, const DataOptions &data) {
  if (data.paths.empty()) {
    return Load(store, nullptr);
  }
  return WithSession(data, [&store](const Session &session) { return Load(store, &session); });
}
