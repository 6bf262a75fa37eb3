// The store of an open editor: what its user saves, renames or deletes is written at
// once.
#ifndef ORLI11_HOST_EDIT_STORE_H
#define ORLI11_HOST_EDIT_STORE_H

#include <orli11.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "host/formulas.h"

// The changes between two states of formulas.
struct Changes {
  std::vector<Formula> stored;  // added, or with another text
  std::set<std::string> deleted;
};
Changes ChangesBetween(const std::vector<Formula> &before, const std::vector<Formula> &after);
// "stored mean, warm; deleted old"
std::string ChangesSummary(const Changes &changes);

struct EditedStore {
  std::string path;
  EC ec = nullptr;                              // that the editor works on
  std::string bytes;                            // of the file, as last read or written
  std::vector<Formula> known;                   // what the editor's user has seen stored
  std::map<std::string, std::string> replaced;  // texts of others that the user agreed to replace
};

// A formula of the store that another program has stored or changed in the meantime.
struct Foreign {
  std::string name, text;
};

// Whether a formula can be stored under a name: the file can be changed, and holds nothing under it
// (or under the present name of `exp`, which may be null) that the user has not seen. False with
// either a message or the foreign formula.
bool EditedStoreAccepts(const EditedStore &store, HEXP exp, const std::string &text,
                        const std::string &name, std::string &error, Foreign &foreign);
// Writes what has changed in the editor since the last time, and lists the formulas on standard
// output. What other programs have written meanwhile is kept. False as above; then the next call
// tries again.
bool EditedStoreWrite(EditedStore &store, std::string &error, Foreign &foreign);

#endif
