// Formulas kept in a file: a context in its stored form, whose input items are the
// columns that the formulas were written for.
#ifndef ORLI11_HOST_STORE_H
#define ORLI11_HOST_STORE_H

#include <orli11.h>
#include <orli11_block.h>

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/columns.h"
#include "host/formulas.h"
#include "host/session.h"
#include "host/store_file.h"

// A store that has been read and is valid.
struct Store {
  Context ec;
  std::vector<Column> columns;    // name and type alone
  std::vector<Formula> formulas;  // in stored order, defined in `ec`
};

constexpr char kStoreIsFull[] = "a store has at most 32767 formulas and columns each";

// The error that the first bytes of a file show for a store, or nothing.
std::string StoreHeadProblem(std::string_view head);

// Extracts the columns and formulas from the bytes of a stored context without parsing; returns the
// error in the bytes, or nothing.
std::string StoreDecode(const std::string &bytes, Store &store);

// Reads a stored context and checks all of it; false with the error. Anything that is damaged,
// foreign or no longer parses is rejected, so that writing a store never loses what was in it.
// `wrong`, when given, receives the index of a formula that does not parse, whose `problem` is then
// set in the store.
bool StoreRead(const std::string &bytes, Store &store, std::string &problem,
               size_t *wrong = nullptr);

// Opens the file at `path` and reads it; a missing one, if allowed, is an empty store. False with a
// message. StoreFileClose in any case.
bool StoreOpen(const std::string &path, StoreAccess access, StoreFile &file, Store &store,
               std::string &error);

// Runs a command over an existing store; locks it while running if the command may change it.
// Returns the exit status.
int WithStore(const std::string &path, StoreAccess access,
              const std::function<int(const Store &store, const StoreFile &file)> &command);

// Reports an error of a store or of a request to it. Returns the exit status.
int Refuse(const StoreFile &file, const std::string &what);

// The stored form of a context, with its formulas or without.
std::string StoredForm(EC ec, bool formulas);
// The same with these formulas in this order, whatever the order in the context.
std::string StoredForm(EC ec, const std::vector<Formula> &formulas);

// Replaces the file's bytes if they can be read back. False with a message.
bool StoreSave(const StoreFile &file, const std::string &bytes, std::string &error);

// Writes formulas of the user as NAME=TEXT: to standard output on success, else to standard error
// as not stored, so that they are not lost.
void StoreReport(const std::vector<Formula> &formulas, int status);

// A column or formula by its name as formulas write it, or without quotes; null when there is
// none.
const Column *StoreColumn(const Store &store, const std::string &name);
const Formula *StoreFormula(const Store &store, const std::string &name);

// Columns that formulas of the store require and the session does not have, a line each: those of
// another type and, with `missing`, those that are missing. Formulas named in `renewed` are
// ignored, since they are replaced. Empty when the formulas fit.
std::string StoreMisfits(const Store &store, const StoreFile &file, const Session &session,
                         const std::set<std::string> &renewed, bool missing);

// The formulas of a context in its order, to be defined elsewhere.
std::vector<Formula> FormulasOf(EC ec);
// The formulas with their changes, followed by the new ones, to be defined.
std::vector<Formula> FormulasMerged(const std::vector<Formula> &formulas,
                                    const std::vector<Formula> &wanted);
// Defines formulas in a session: those of the store except for the `renewed` ones. False with a
// message when they are wrong or too many, or do not fit its columns.
bool StoreDefine(const Store &store, const StoreFile &file, const std::set<std::string> &renewed,
                 const Session &session, std::vector<Formula> &formulas, std::string &error);

// The formulas of the store at `path`, to be defined in the session. False with a message, also
// when they do not fit its columns.
bool StoreFormulas(const std::string &path, const Session &session, std::vector<Formula> &formulas,
                   std::string &error);

// Names in one line, as messages show them.
std::string NameList(const std::vector<std::string> &names);
// The names of the formulas that use an item, themselves or through others.
std::vector<std::string> StoreUsers(const Store &store, int32_t kind, const std::string &name);

#endif
