#include "engine/references.h"

#include <cassert>
#include <cstring>

namespace {

struct NameReferences {
  NameEntry entry;
  uint32_t count;
  char name[1];  // allocated to the length of the name
};

template <class Name>
NameReferences *ReferencesTo(EC ec, const Name &name) {
  NameEntry *entry = NameIndexFirst(ec->references, name);
  return RowOfEntry<NameReferences>(entry);
}

}  // namespace

uint32_t ReferenceCount(EC ec, const char *name) {
  const NameReferences *references = ReferencesTo(ec, name);
  return references == nullptr ? 0 : references->count;
}

uint32_t ReferenceCount(EC ec, const NameKey &name) {
  const NameReferences *references = ReferencesTo(ec, name);
  return references == nullptr ? 0 : references->count;
}

bool AddReference(EC ec, const char *name) {
  NameReferences *references = ReferencesTo(ec, name);
  if (references == nullptr) {
    const size_t length = std::strlen(name);
    references = Allocate<NameReferences>(1, length).release();
    if (references == nullptr) {
      return false;
    }
    std::memcpy(references->name, name, length + 1);
    NameIndexAppend(ec->references, references->entry, references->name);
  }
  ++references->count;
  return true;
}

void RemoveReference(EC ec, const char *name) {
  NameReferences *references = ReferencesTo(ec, name);
  assert(references != nullptr && references->count > 0);
  if (--references->count > 0) {
    return;
  }
  const Owned<NameReferences> ended(references);
  NameIndexRemove(ec->references, references->entry);
  for (ReferenceListener *listener = ec->listener; listener != nullptr;
       listener = listener->outer) {
    listener->lastRemoved(listener, references->name);
  }
}

void FreeReferences(EC ec) {
  for (NameEntry *entry = NameIndexTakeAll(ec->references); entry != nullptr;) {
    const Owned<NameReferences> ended(RowOfEntry<NameReferences>(entry));
    entry = entry->next;
  }
  NameIndexFree(ec->references);
}
