// A name index finds "the first row of that name in table order" in expected constant time.
//
// It is a hash table whose entries are the first part of the rows that they index, so that removing
// a row never needs memory. Rows of one name are chained in table order, after the first of them:
//
//   bucket -> Tax -> Rate -> .        chains of different names (next)
//              |
//             Tax -> Tax              more rows of the same name (nextSame)
//
// If a larger bucket array cannot be allocated, the current one is kept: longer chains, same
// results.
#ifndef ORLI11_ENGINE_NAME_INDEX_H
#define ORLI11_ENGINE_NAME_INDEX_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

struct NameEntry {
  const char *name;  // the row's own text
  uint32_t hash;
  uint32_t length;
  uint64_t order;       // position among all rows of the table, ascending
  NameEntry *next;      // first of another name in the bucket
  NameEntry *nextSame;  // next row of the same name; null after the last
  NameEntry *prevSame;  // the one before; of the first row: the last
};

// The row that begins with an entry, or null for null.
template <class Row>
Row *RowOfEntry(NameEntry *entry) {
  static_assert(offsetof(Row, entry) == 0 && std::is_standard_layout_v<Row>);
  return reinterpret_cast<Row *>(entry);
}

struct NameIndex {
  NameEntry **buckets;  // null: the one bucket below
  NameEntry *single;
  uint64_t bucketCount;
  uint64_t entryCount;
  uint64_t lastOrder;
  bool ignoreCase;   // names that differ in case alone are chained
  int32_t codePage;  // the code page under which the hashes were computed
};

// A name and its hash, for several lookups in indexes that do not ignore case.
struct NameKey {
  std::string_view name;
  uint32_t hash;
};
NameKey KeyOfName(std::string_view name);
inline NameKey KeyOfEntry(const NameEntry &entry) {
  return {{entry.name, entry.length}, entry.hash};
}

// True for an entry in an index that has no other entry of its name.
inline bool NameIsAlone(const NameEntry &entry) {
  return entry.prevSame == &entry;
}

// Seeds the hash for this process; called once, before any index exists.
void NameIndexSeed();

// Adds a row after all rows that were added before.
void NameIndexAppend(NameIndex &index, NameEntry &entry, const char *name);
// The same for an entry that has its name already; see NameEntrySet.
void NameIndexAppend(NameIndex &index, NameEntry &entry);
// Sets the name of an entry that is in no index; `key` is the key of that name.
void NameEntrySet(NameEntry &entry, const char *name, const NameKey &key);

// Removes a row, which must be in the index.
void NameIndexRemove(NameIndex &index, NameEntry &entry);

// Puts a row, which must be in the index, after all others.
void NameIndexMoveToEnd(NameIndex &index, NameEntry &entry);

// Renames a row, which must be in the index; it keeps its position in the table.
void NameIndexRename(NameIndex &index, NameEntry &entry, const char *name);

// The first entry of the name, or null; its `nextSame` leads to more of that name. With ignoreCase
// the entries are those that are equal but for case.
NameEntry *NameIndexFirst(NameIndex &index, std::string_view name);
// The same for a name that may be null, and for a key.
NameEntry *NameIndexFirst(NameIndex &index, const char *name);
NameEntry *NameIndexFirst(NameIndex &index, const NameKey &key);

// Empties the index and returns its entries, in any order, chained through `next`.
NameEntry *NameIndexTakeAll(NameIndex &index);

// Frees the buckets; the entries belong to the rows.
void NameIndexFree(NameIndex &index);

#endif
