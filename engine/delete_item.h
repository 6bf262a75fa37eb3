// What the guarded delete of an item has to hear of while it runs.
#ifndef ORLI11_ENGINE_DELETE_ITEM_H
#define ORLI11_ENGINE_DELETE_ITEM_H

#include "engine/context.h"

// No stored expression refers to a formula of this name any more.
void DeleteRunUnmentioned(DeleteRun *run, const char *name);

#endif
