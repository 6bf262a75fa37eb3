// The formulas of a block, parsed again from their texts.
#ifndef ORLI11_PERSISTENCE_FORMULA_LOADER_H
#define ORLI11_PERSISTENCE_FORMULA_LOADER_H

#include "orli11.h"
#include "persistence/block_cursor.h"
#include "persistence/repair.h"

enum class LoadEnd : uint8_t { Complete, Cycle, Failed };

enum class LoadOrder : uint8_t { Stored, Parsed };

// Read `count` rows of versions 2 and 3: a formula may refer to one stored after it, and one that
// does not parse is passed to the user. Afterwards the expressions are in stored order, or in the
// order of parsing. Returns Cycle when only formulas that refer to each other in a cycle are left.
LoadEnd LoadFormulas(EC ec, BlockCursor &cursor, int32_t count, LoadOrder order,
                     OrlErrorProc errorProc, const LoadDialogs &dialogs);

// Read `count` rows of versions 0 and 1, in order. In version 0 names that are date units, and with
// `renaming` such words in all texts, get the prefix "_".
bool LoadOldFormulas(EC ec, BlockCursor &cursor, int32_t count, bool version0, bool renaming,
                     OrlErrorProc errorProc);

#endif
