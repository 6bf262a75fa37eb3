// Reading a stored context.
#ifndef ORLI11_PERSISTENCE_BLOCK_READER_H
#define ORLI11_PERSISTENCE_BLOCK_READER_H

#include <cstdint>

#include "orli11.h"
#include "persistence/repair.h"

// ORLSetECContents. `dialogs` ask the user.
bool ReadContext(EC ec, int32_t size, const void *block, bool loadFormulas, OrlErrorProc errorProc,
                 const LoadDialogs &dialogs);

#endif
