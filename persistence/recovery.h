// The repair of stored formulas that no longer parse: what the reader and the formula editor share.
#ifndef ORLI11_PERSISTENCE_RECOVERY_H
#define ORLI11_PERSISTENCE_RECOVERY_H

#include "orli11.h"
#include "persistence/pending_names.h"

struct RecoveryState {
  bool active;       // the editor runs for a formula that failed
  const char *text;  // that formula, and its name
  const char *name;
  FormulaError error;     // what was wrong with it
  PendingNames *pending;  // the names of the formulas in the block that is being read
  // Made by the editor when the corrected text waits for a formula still to come: the text, its
  // zero byte, the name, its zero byte, in a block of WRENMemAlloc. The reader takes it over.
  char *deferred;
};

// The calling thread's state.
RecoveryState &CurrentRecovery();

// The formula of the block being read that is named by the word at which a parse failed with
// ORL_ERR_FUNC, or null. The error's span is a name with its opening parenthesis.
PendingRow *AwaitedRow(const RecoveryState &recovery, const char *text, const FormulaError &error);

inline bool IsForwardReference(const RecoveryState &recovery, const char *text,
                               const FormulaError &error) {
  return AwaitedRow(recovery, text, error) != nullptr;
}

// Opens the editor on a formula that failed with `error`. The name stands behind the text's zero
// byte. Returns what the editor stored, or null; then `deferred` of the state may be set, and
// belongs to the caller.
HEXP RepairFormula(EC ec, const char *text, const FormulaError &error);

#endif
