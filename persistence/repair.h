// The repair of a stored formula that no longer parses: what the reader of a block and the editor,
// in which the user corrects the formula, pass to each other.
#ifndef ORLI11_PERSISTENCE_REPAIR_H
#define ORLI11_PERSISTENCE_REPAIR_H

#include "orli11.h"
#include "persistence/pending_names.h"
#include "platform/owned.h"

struct FormulaRepair {
  const char *text;  // the formula that failed, and its name
  const char *name;
  FormulaError error;     // what is wrong with it
  PendingNames *pending;  // the names of the formulas in the block that is being read
  // Set when the corrected text calls a formula that has not been read yet: the text, its zero
  // byte, the name, its zero byte.
  OwnedText deferred;
};

// The steps of a load that need a user. Both routines receive `data`.
struct LoadDialogs {
  // Returns the expression that was stored instead, or null; then `deferred` may be set.
  HEXP (*repair)(EC ec, FormulaRepair &repair, void *data);
  // Shows why the load ended, when the host has no routine for it.
  void (*showError)(EC ec, const char *text, const FormulaError &error, void *data);
  void *data;
};

// The formula of the block being read that is named by the word at which a parse failed with
// ORL_ERR_FUNC, or null. The error's span is a name with its opening parenthesis.
PendingRow *ForwardReference(PendingNames &names, const char *text, const FormulaError &error);

#endif
