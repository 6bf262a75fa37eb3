// How often stored trees refer to each name as a formula: whether anything refers to a formula is
// known without a search.
#ifndef ORLI11_ENGINE_REFERENCES_H
#define ORLI11_ENGINE_REFERENCES_H

#include <cstdint>

#include "engine/context.h"

// The number of references in stored trees to formulas of that name; 0 for an unknown name.
uint32_t ReferenceCount(EC ec, const char *name);
uint32_t ReferenceCount(EC ec, const NameKey &name);

// Adds one reference; false, with nothing counted, when out of memory.
bool AddReference(EC ec, const char *name);

// Removes one reference. Requires a counted one. Calls the listeners when it was the last.
void RemoveReference(EC ec, const char *name);

// Removes all references, without a call of a listener.
void FreeReferences(EC ec);

// Called when the last reference to a name is removed. Listeners of a context form a stack.
struct ReferenceListener {
  void (*lastRemoved)(ReferenceListener *listener, const char *name);
  ReferenceListener *outer;
};

#endif
