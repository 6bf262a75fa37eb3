#include "engine/name_index.h"

#include <sys/random.h>

#include <cassert>
#include <cstring>

#include "orli11.h"
#include "platform/owned.h"
#include "platform/text.h"

namespace {

constexpr uint64_t kFirstBuckets = 16;
constexpr uint64_t kMostPerBucket = 2;  // entries on average
// A longer text is in no index that ignores case.
constexpr size_t kFoldedSize = sizeof ExprItem::name;

// Names are untrusted input, so each process seeds the hash differently: names cannot be prepared
// that all hash to one bucket.
struct HashKey {
  uint64_t multiplier, start;
};

HashKey hashKey = {0x9E3779B97F4A7C15ULL, 0xD1B54A32D192ED03ULL};

uint64_t MixHash(uint64_t hash, uint64_t word) {
  __extension__ typedef unsigned __int128 Wide;
  const Wide product = static_cast<Wide>(hash ^ word) * hashKey.multiplier;
  return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64);
}

inline uint64_t WordAt(const char *text) {
  uint64_t word = 0;
  std::memcpy(&word, text, sizeof word);
  return word;
}

// Packs fewer than eight bytes into a number that is unique among byte strings of that size.
inline uint64_t FewBytes(const char *text, size_t size) {
  if (size >= sizeof(uint32_t)) {
    uint32_t first = 0;
    uint32_t last = 0;
    std::memcpy(&first, text, sizeof first);
    std::memcpy(&last, text + size - sizeof last, sizeof last);
    return uint64_t{first} << 32 | last;
  }
  const auto byte = [=](size_t at) { return uint64_t{static_cast<uint8_t>(text[at])}; };
  return size == 0 ? 0 : byte(0) << 16 | byte(size / 2) << 8 | byte(size - 1);
}

uint32_t HashBytes(const char *text, size_t size) {
  uint64_t hash = MixHash(hashKey.start, size);
  for (; size >= sizeof(uint64_t); size -= sizeof(uint64_t)) {
    hash = MixHash(hash, WordAt(text)) + sizeof(uint64_t);
    text += sizeof(uint64_t);
  }
  hash = MixHash(hash, FewBytes(text, size));
  return static_cast<uint32_t>(hash ^ hash >> 32);
}

bool SameBytes(const char *left, const char *right, size_t size) {
  for (; size >= sizeof(uint64_t); size -= sizeof(uint64_t)) {
    if (WordAt(left) != WordAt(right)) {
      return false;
    }
    left += sizeof(uint64_t);
    right += sizeof(uint64_t);
  }
  return FewBytes(left, size) == FewBytes(right, size);
}

// Upper case first, then lower case: folds together what either mapping alone would keep apart.
bool FoldName(std::string_view name, char (&folded)[kFoldedSize]) {
  if (name.size() >= kFoldedSize) {
    return false;
  }
  std::memcpy(folded, name.data(), name.size());
  folded[name.size()] = '\0';
  WRENStrUpper(folded);
  WRENStrLower(folded);
  return true;
}

uint32_t HashName(const NameIndex &index, std::string_view name) {
  char folded[kFoldedSize];
  if (index.ignoreCase && FoldName(name, folded)) {
    name = folded;
  }
  return HashBytes(name.data(), name.size());
}

bool SameNameInAnyCase(const char *left, std::string_view right) {
  char copy[kFoldedSize];
  if (right.size() >= kFoldedSize) {
    return false;
  }
  std::memcpy(copy, right.data(), right.size());
  copy[right.size()] = '\0';
  return lstrcmpiA(left, copy) == 0;
}

bool SameName(const NameIndex &index, const NameEntry &entry, std::string_view name) {
  return index.ignoreCase
             ? SameNameInAnyCase(entry.name, name)
             : entry.length == name.size() && SameBytes(entry.name, name.data(), name.size());
}

std::string_view NameOf(const NameEntry &entry) {
  return {entry.name, entry.length};
}

NameEntry **BucketOf(NameIndex &index, uint32_t hash) {
  return index.buckets == nullptr ? &index.single : &index.buckets[hash & (index.bucketCount - 1)];
}

NameEntry *FindName(NameIndex &index, std::string_view name, uint32_t hash) {
  NameEntry *entry = *BucketOf(index, hash);
  while (entry != nullptr && (entry->hash != hash || !SameName(index, *entry, name))) {
    entry = entry->next;
  }
  return entry;
}

// Puts the entry in the place of `old` in its bucket; null removes `old`.
void ReplaceInBucket(NameIndex &index, NameEntry *old, NameEntry *entry) {
  NameEntry **link = BucketOf(index, old->hash);
  while (*link != old) {
    assert(*link != nullptr);
    link = &(*link)->next;
  }
  if (entry == nullptr) {
    *link = old->next;
  } else {
    entry->next = old->next;
    *link = entry;
  }
}

void Insert(NameIndex &index, NameEntry &entry) {
  entry.next = entry.nextSame = nullptr;
  entry.prevSame = &entry;
  NameEntry *first = FindName(index, NameOf(entry), entry.hash);
  if (first == nullptr) {
    NameEntry **bucket = BucketOf(index, entry.hash);
    entry.next = *bucket;
    *bucket = &entry;
    return;
  }
  NameEntry *before = first->prevSame;  // a new row is nearly always added at an end
  if (entry.order < first->order) {
    entry.nextSame = first;
    entry.prevSame = before;
    first->prevSame = &entry;
    ReplaceInBucket(index, first, &entry);
    return;
  }
  while (before->order > entry.order) {
    before = before->prevSame;
  }
  entry.prevSame = before;
  entry.nextSame = before->nextSame;
  (entry.nextSame == nullptr ? first : entry.nextSame)->prevSame = &entry;
  before->nextSame = &entry;
}

void TakeOut(NameIndex &index, NameEntry &entry) {
  NameEntry *before = entry.prevSame;
  NameEntry *after = entry.nextSame;
  if (before->nextSame ==
      nullptr) {  // only the last entry has no successor, so `entry` is the first of its name
    if (after != nullptr) {
      after->prevSame = before;
    }
    ReplaceInBucket(index, &entry, after);
    return;
  }
  before->nextSame = after;
  (after != nullptr ? after : FindName(index, NameOf(entry), entry.hash))->prevSame = before;
}

// Hashes the new name of the entry.
void SetName(const NameIndex &index, NameEntry &entry, const char *name) {
  entry.name = name;
  entry.length = static_cast<uint32_t>(std::strlen(name));
  entry.hash = HashName(index, NameOf(entry));
}

// Chains all entries through `next` and leaves the buckets empty.
NameEntry *TakeAll(NameIndex &index) {
  NameEntry *all = nullptr;
  const uint64_t count = index.buckets == nullptr ? 1 : index.bucketCount;
  NameEntry **buckets = index.buckets == nullptr ? &index.single : index.buckets;
  for (uint64_t i = 0; i < count; ++i) {
    NameEntry *first = buckets[i];
    buckets[i] = nullptr;
    while (first != nullptr) {
      NameEntry *nextName = first->next;
      for (NameEntry *entry = first; entry != nullptr; entry = entry->nextSame) {
        entry->next = all;
        all = entry;
      }
      first = nextName;
    }
  }
  return all;
}

void PutAll(NameIndex &index, NameEntry *all, bool hashAgain) {
  while (all != nullptr) {
    NameEntry *next = all->next;
    if (hashAgain) {
      all->hash = HashName(index, NameOf(*all));
    }
    Insert(index, *all);
    all = next;
  }
}

void Grow(NameIndex &index) {
  if (index.entryCount < index.bucketCount * kMostPerBucket) {
    return;
  }
  const uint64_t count = index.bucketCount == 0 ? kFirstBuckets : index.bucketCount * 2;
  Owned<NameEntry *> buckets = Allocate<NameEntry *>(count);
  if (buckets == nullptr) {
    return;  // longer chains, the same results
  }
  NameEntry *all = TakeAll(index);
  ReplaceBlock(index.buckets, std::move(buckets));
  index.bucketCount = count;
  PutAll(index, all, false);
}

// Case follows the code page: after a change of it the names are hashed again.
void FollowCodePage(NameIndex &index) {
  if (!index.ignoreCase) {
    return;
  }
  const int32_t codePage = ActiveCodePage();
  if (codePage != index.codePage) {
    index.codePage = codePage;
    PutAll(index, TakeAll(index), true);
  }
}

}  // namespace

void NameIndexSeed() {
  HashKey random = {0, 0};
  if (getrandom(&random, sizeof random, GRND_NONBLOCK) == static_cast<ssize_t>(sizeof random)) {
    hashKey = random;
    hashKey.multiplier |= 1;
  }
}

NameKey KeyOfName(std::string_view name) {
  return {name, HashBytes(name.data(), name.size())};
}

void NameEntrySet(NameEntry &entry, const char *name, const NameKey &key) {
  assert(name != nullptr && key.name == name);
  entry.name = name;
  entry.length = static_cast<uint32_t>(key.name.size());
  entry.hash = key.hash;
}

void NameIndexAppend(NameIndex &index, NameEntry &entry, const char *name) {
  assert(name != nullptr);
  FollowCodePage(index);
  SetName(index, entry, name);
  NameIndexAppend(index, entry);
}

void NameIndexAppend(NameIndex &index, NameEntry &entry) {
  Grow(index);
  entry.order = ++index.lastOrder;
  Insert(index, entry);
  ++index.entryCount;
}

void NameIndexRemove(NameIndex &index, NameEntry &entry) {
  assert(index.entryCount > 0 && entry.prevSame != nullptr);
  FollowCodePage(index);
  TakeOut(index, entry);
  --index.entryCount;
}

void NameIndexMoveToEnd(NameIndex &index, NameEntry &entry) {
  assert(index.entryCount > 0 && entry.prevSame != nullptr);
  FollowCodePage(index);
  const bool alone = NameIsAlone(entry);
  if (!alone) {
    TakeOut(index, entry);
  }
  entry.order = ++index.lastOrder;
  if (!alone) {
    Insert(index, entry);
  }
}

void NameIndexRename(NameIndex &index, NameEntry &entry, const char *name) {
  assert(index.entryCount > 0 && entry.prevSame != nullptr && name != nullptr);
  FollowCodePage(index);
  TakeOut(index, entry);
  SetName(index, entry, name);
  Insert(index, entry);
}

NameEntry *NameIndexFirst(NameIndex &index, std::string_view name) {
  if (index.entryCount == 0) {
    return nullptr;
  }
  if (!index.ignoreCase) [[likely]] {
    return FindName(index, name, HashBytes(name.data(), name.size()));
  }
  FollowCodePage(index);
  return FindName(index, name, HashName(index, name));
}

NameEntry *NameIndexFirst(NameIndex &index, const NameKey &key) {
  assert(!index.ignoreCase);
  return index.entryCount == 0 ? nullptr : FindName(index, key.name, key.hash);
}

NameEntry *NameIndexFirst(NameIndex &index, const char *name) {
  return name == nullptr || index.entryCount == 0 ? nullptr
                                                  : NameIndexFirst(index, std::string_view(name));
}

NameEntry *NameIndexTakeAll(NameIndex &index) {
  index.entryCount = 0;
  return TakeAll(index);
}

void NameIndexFree(NameIndex &index) {
  ReplaceBlock(index.buckets);
  index = NameIndex{};
}
