#include "host/store.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <cstring>
#include <map>
#include <string_view>

#include "host/column_names.h"
#include "host/display.h"
#include "host/errors.h"

namespace {

constexpr int kUnknownVersions = 16;  // first bytes below this are versions, others foreign files

// A cursor over the bytes of a store. Reads past the end return nothing.
struct Walk {
  std::string_view bytes;
  size_t position = 0;
  bool cut = false;  // they have ended too early
};

std::string_view Take(Walk &walk, size_t count) {
  walk.cut = walk.cut || count > walk.bytes.size() - walk.position;
  const std::string_view taken =
      walk.cut ? std::string_view() : walk.bytes.substr(walk.position, count);
  walk.position += taken.size();
  return taken;
}

// Reads a string and its zero byte.
std::string TakeText(Walk &walk) {
  const size_t end = walk.bytes.find('\0', walk.position);
  walk.cut = walk.cut || end == std::string_view::npos;
  const std::string_view text = Take(walk, walk.cut ? 0 : end - walk.position);
  Take(walk, 1);
  return std::string(text);
}

// Reads a record of the stored form; zeros past the end.
template <class Record>
Record TakeRecord(Walk &walk) {
  Record record = {};
  const std::string_view bytes = Take(walk, sizeof record);
  if (!bytes.empty()) {  // no bytes have no address to copy from
    std::memcpy(&record, bytes.data(), bytes.size());
  }
  return record;
}

// The rows of the section with that tag if it is the next one.
int TakeHeader(Walk &walk, uint16_t tag) {
  Walk next = walk;
  if (TakeRecord<uint16_t>(next) != tag) {
    return 0;
  }
  walk = next;
  return TakeRecord<int16_t>(walk);
}

std::string Unknown(const std::string &what, const std::string &routine) {
  return what + " needs the routine " + DisplayName(routine) + ", which orli does not have";
}

std::string Damaged(const Walk &walk) {
  return "is damaged or cut short at byte " + std::to_string(walk.position);
}

// The error in the start of the bytes; nothing when that many columns follow.
std::string TakeStart(Walk &walk, int &columns) {
  const std::string_view first = Take(walk, 1);
  const int version = first.empty() ? -1 : static_cast<unsigned char>(first.front());
  if (version > 0 && version < kUnknownVersions && version != ORL_BLOCK_VERSION) {
    return "is stored in version " + std::to_string(version) + ", and this orli knows only " +
           std::to_string(ORL_BLOCK_VERSION);
  }
  if (version != ORL_BLOCK_VERSION) {
    return first.empty() ? "is empty, not a store of orli" : "is not a store of orli";
  }
  for (int i = 0; i < ORL_BLOCK_OPERATORS; ++i) {
    const std::string routine = TakeText(walk);
    if (!routine.empty()) {
      return Unknown("an operator", routine);
    }
  }
  columns = TakeHeader(walk, ORL_BLOCK_TAG_INPUTS);
  return walk.cut || columns <= 0 ? Damaged(walk) : std::string();  // every file has columns
}

std::string TakeColumn(Walk &walk, Column &column) {
  const auto stored = TakeRecord<OrlStoredInput>(walk);
  const std::string routine = TakeText(walk);
  const std::string_view name(stored.name, sizeof stored.name);
  column.name = name.substr(0, name.find('\0'));
  column.type = stored.dataType;
  if (walk.cut || stored.kind != ORL_INPUT || column.name.size() == name.size() ||
      column.type < ORL_TYPE_NUMBER || column.type > ORL_TYPE_STRING) {
    return Damaged(walk);
  }
  return routine == kColumnRoutine ? std::string()
                                   : Unknown("column " + DisplayName(column.name), routine);
}

// As StoreDecode, for a store that is empty.
std::string TakeApart(const std::string &bytes, Store &store) {
  Walk walk{bytes};
  int columns = 0;
  std::string problem = TakeStart(walk, columns);
  for (; problem.empty() && columns > 0; --columns) {
    problem = TakeColumn(walk, store.columns.emplace_back());
  }
  if (!problem.empty()) {
    return problem;
  }
  for (int rows = TakeHeader(walk, ORL_BLOCK_TAG_FORMULAS); rows > 0; --rows) {
    const std::string text = TakeText(walk);
    store.formulas.push_back(FormulaOf(TakeText(walk), text));
    if (walk.cut) {
      break;
    }
  }
  const bool good = !walk.cut && walk.position == bytes.size();
  return good ? std::string() : Damaged(walk);
}

// The result of a copying routine of the engine, with space for its terminator.
std::string Copy(EC ec, HEXP exp, int32_t length, decltype(ORLGetExpressionText) routine) {
  std::string copy(static_cast<size_t>(length) + 1, '\0');
  copy.resize(static_cast<size_t>(routine(ec, exp, length + 1, copy.data())));
  return copy;
}

// A new context with the contents of the bytes.
bool Load(const std::string &bytes, int32_t formulas, Store &store) {
  store.ec = NewContext();
  return ORLSetECContents(store.ec.get(), static_cast<int32_t>(bytes.size()), bytes.data(),
                          formulas, nullptr) == 1;
}

// Replaces the texts of these formulas by ones that use nothing, so that others use nothing through
// them.
void Forget(const Store &store, const std::set<std::string> &names) {
  constexpr std::array<const char *, 3> kTextOfType = {"0", "StrToDate('')", "''"};
  for (const Formula &formula : store.formulas) {
    if (names.count(formula.name) != 0) {
      uint16_t type = 0;
      ORLParseFormula(store.ec.get(), formula.exp,
                      kTextOfType.at(static_cast<size_t>(formula.type)), formula.name.c_str(),
                      nullptr, &type);
    }
  }
}

}  // namespace

std::string StoreHeadProblem(std::string_view head) {
  Walk walk{head};
  int columns = 0;
  return TakeStart(walk, columns);
}

std::string StoreDecode(const std::string &bytes, Store &store) {
  store.columns.clear();
  store.formulas.clear();
  return TakeApart(bytes, store);
}

bool StoreRead(const std::string &bytes, Store &store, std::string &problem, size_t *wrong) {
  problem = StoreDecode(bytes, store);
  if (!problem.empty()) {
    return false;
  }
  // The formulas are parsed first, since a load does not report which of them failed.
  std::vector<Formula> tried = store.formulas;
  bool good = Load(bytes, 0, store);
  if (good && !FormulasDefine(store.ec.get(), tried, problem, wrong)) {
    store.formulas = tried;
    return false;
  }
  // Anything that orli does not write would be lost when the store is next written.
  good = good && Load(bytes, 1, store) && StoredForm(store.ec.get(), true) == bytes;
  if (!good) {
    problem = "is damaged";
    return false;
  }
  for (size_t i = 0; i < store.formulas.size(); ++i) {
    Formula &formula = store.formulas[i];
    formula.exp = ORLHEXPFromOrdinal(store.ec.get(), static_cast<int32_t>(i));
    formula.type = ORLGetExpressionDataType(store.ec.get(), formula.exp);
  }
  return true;
}

bool StoreOpen(const std::string &path, StoreAccess access, StoreFile &file, Store &store,
               std::string &error) {
  if (!StoreFileOpen(path, access, StoreHeadProblem, file, error)) {
    return false;
  }
  std::string problem;
  if (file.exists && !StoreRead(file.bytes, store, problem)) {
    error = file.path + ": " + problem;
    return false;
  }
  return true;
}

int WithStore(const std::string &path, StoreAccess access,
              const std::function<int(const Store &store, const StoreFile &file)> &command) {
  StoreFile file;
  Store store;
  std::string error;
  const bool good = StoreOpen(path, access, file, store, error);
  const int status = good ? command(store, file) : Complain(error, kExitWrong);
  StoreFileClose(file);
  return status;
}

int Refuse(const StoreFile &file, const std::string &what) {
  return Complain(file.path + ": " + what, kExitWrong);
}

std::string StoredForm(EC ec, bool formulas) {
  const int32_t with = formulas ? 1 : 0;
  std::string block(static_cast<size_t>(ORLGetECBlockSize(ec, with)), '\0');
  const int32_t size = ORLGetECBlock(ec, static_cast<int32_t>(block.size()), block.data());
  block.resize(static_cast<size_t>(size));
  return block;
}

std::string StoredForm(EC ec, const std::vector<Formula> &formulas) {
  std::string bytes = StoredForm(ec, false);
  if (formulas.empty()) {
    return bytes;
  }
  const auto count = static_cast<uint16_t>(std::min<size_t>(formulas.size(), UINT16_MAX));
  for (const uint16_t part : {uint16_t{ORL_BLOCK_TAG_FORMULAS}, count}) {
    bytes += static_cast<char>(part & 0xFF);
    bytes += static_cast<char>(part >> 8);
  }
  for (const Formula &formula : formulas) {
    bytes += formula.text + '\0' + formula.name + '\0';
  }
  return bytes;
}

bool StoreSave(const StoreFile &file, const std::string &bytes, std::string &error) {
  Store unused;
  std::string problem;
  if (bytes.size() > INT32_MAX) {
    problem = "a store has at most 2 GiB";
  } else if (StoreRead(bytes, unused, problem)) {
    return StoreFileWrite(file, bytes, error);
  }
  error = file.path + ": not written, since it could not be read again: " + problem;
  return false;
}

void StoreReport(const std::vector<Formula> &formulas, int status) {
  for (const Formula &formula : formulas) {
    const std::string line = formula.name + "=" + formula.text;
    if (status == kExitGood) {
      std::puts(line.c_str());
    } else {
      Complain("not stored: " + line, status);
    }
  }
  // Written before what follows on standard error, also when both are one file.
  static_cast<void>(std::fflush(stdout));
}

const Column *StoreColumn(const Store &store, const std::string &name) {
  for (const std::string &wanted : {name, WrittenName(store.ec.get(), name)}) {
    for (const Column &column : store.columns) {
      if (column.name == wanted) {
        return &column;
      }
    }
  }
  return nullptr;
}

const Formula *StoreFormula(const Store &store, const std::string &name) {
  for (auto member : {&Formula::name, &Formula::title}) {
    for (const Formula &formula : store.formulas) {
      if (formula.*member == name) {
        return &formula;
      }
    }
  }
  return nullptr;
}

std::vector<std::string> StoreUsers(const Store &store, int32_t kind, const std::string &name) {
  std::vector<std::string> users;
  for (const Formula &formula : store.formulas) {
    if (ORLIsItemUsed(store.ec.get(), formula.exp, kind, name.c_str()) == 1) {
      users.push_back(formula.name);
    }
  }
  return users;
}

std::string NameList(const std::vector<std::string> &names) {
  std::string list;
  for (const std::string &name : names) {
    list += (list.empty() ? "" : ", ") + name;
  }
  return DisplayName(list);
}

std::vector<Formula> FormulasOf(EC ec) {
  std::vector<Formula> formulas;
  for (int32_t i = 0; i < ORLGetExpressionCount(ec); ++i) {
    HEXP exp = ORLHEXPFromOrdinal(ec, i);
    formulas.push_back(
        FormulaOf(Copy(ec, exp, ORLGetExpressionNameLength(ec, exp), ORLGetExpressionName),
                  Copy(ec, exp, ORLGetExpressionTextLength(ec, exp), ORLGetExpressionText)));
  }
  return formulas;
}

std::vector<Formula> FormulasMerged(const std::vector<Formula> &formulas,
                                    const std::vector<Formula> &wanted) {
  std::vector<Formula> merged;
  std::map<std::string, size_t> places;
  for (const std::vector<Formula> *part : {&formulas, &wanted}) {
    for (const Formula &formula : *part) {
      const auto [place, isNew] = places.emplace(formula.name, merged.size());
      if (isNew) {
        merged.push_back(FormulaOf(formula.name, formula.text));
      } else {
        merged[place->second].text = formula.text;
      }
    }
  }
  return merged;
}

bool StoreDefine(const Store &store, const StoreFile &file, const std::set<std::string> &renewed,
                 const Session &session, std::vector<Formula> &formulas, std::string &error) {
  const bool defined = FormulasDefine(session.ec.get(), formulas, error);
  // A missing column is reported rather than the error that it causes.
  const std::string misfits = StoreMisfits(store, file, session, renewed, !defined);
  if (!misfits.empty()) {
    error = misfits;
  } else if (formulas.size() > ORL_BLOCK_MOST_ROWS ||
             session.table.columns.size() > ORL_BLOCK_MOST_ROWS) {
    error = file.path + ": " + kStoreIsFull;
  } else {
    return defined;
  }
  return false;
}

std::string StoreMisfits(const Store &store, const StoreFile &file, const Session &session,
                         const std::set<std::string> &renewed, bool missing) {
  Forget(store, renewed);
  std::string misfits;
  for (const Column &column : store.columns) {
    const Column *present = SessionColumn(session, column.name);
    if (present == nullptr ? !missing : present->type == column.type) {
      continue;
    }
    const std::vector<std::string> users = StoreUsers(store, ORL_INPUT, column.name);
    if (users.empty()) {
      continue;
    }
    misfits +=
        (misfits.empty() ? "" : "\norli: ") + file.path + ": column " + DisplayName(column.name);
    misfits += present == nullptr
                   ? " is not in " + session.csv.Path()
                   : std::string(" has type ") + TypeName(present->type) + " in " +
                         session.csv.Path() + " and " + TypeName(column.type) + " in the store";
    misfits += "; it is needed by " + NameList(users);
  }
  return misfits;
}

bool StoreFormulas(const std::string &path, const Session &session, std::vector<Formula> &formulas,
                   std::string &error) {
  StoreFile file;
  Store store;
  if (StoreOpen(path, kStoreRead, file, store, error)) {
    error = StoreMisfits(store, file, session, {}, true);
    for (const Formula &formula : store.formulas) {
      formulas.push_back(FormulaOf(formula.name, formula.text));
    }
  }
  StoreFileClose(file);
  return error.empty();
}
