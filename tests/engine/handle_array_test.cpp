// The growable table: counts, locks, growth and removal.
#include "engine/handle_array.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "closed/wren/memory.h"
#include "orli11.h"

namespace {

// The element at an index, with a lock for this moment only.
uint32_t &At(HandleArray array, size_t index) {
  void *element = HandleArrayLock(array, static_cast<int32_t>(index));
  HandleArrayUnlock(array);
  return *static_cast<uint32_t *>(element);
}

TEST(HandleArray, Create) {
  struct Row {
    int32_t size, count;
    uint32_t reported;  // 0: refused
  };
  for (const Row &row :
       {Row{4, 0, 4}, Row{4, 3, 196612}, Row{12, 1, 65548}, Row{0, 1, 0}, Row{-4, 1, 0},
        Row{4, -1, 0}, Row{4, 65535, 0xffff0004}, Row{4, 65536, 0}, Row{INT32_MAX, INT32_MAX, 0}}) {
    HandleArray array = HandleArrayCreate(row.size, row.count);
    EXPECT_EQ(array == nullptr ? 0 : HandleArrayCount(array), row.reported)
        << row.size << " x " << row.count;
    HandleArrayFree(array);
  }
}

TEST(HandleArray, LocksNestAndRefusalsLeaveNone) {
  HandleArray array = HandleArrayCreate(4, 3);
  for (int32_t index : {-1, 3, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(HandleArrayLock(array, index), nullptr) << index;
    EXPECT_EQ(TEST_GlobalLockCount(array), 0) << index;
  }
  auto *first = static_cast<unsigned char *>(HandleArrayLock(array, 0));
  EXPECT_EQ(HandleArrayLock(array, 2), first + 8);
  for (const int32_t locks : {2, 1, 0, 0}) {  // one unlock too many has no effect
    EXPECT_EQ(TEST_GlobalLockCount(array), locks);
    HandleArrayUnlock(array);
  }
  HandleArrayFree(array);
}

TEST(HandleArray, NoRowBeyondTheLimitOrWithoutMemory) {
  HandleArray array = HandleArrayCreate(4, 1);
  At(array, 0) = 5;
  // Growth may reserve space, so append until memory is allocated.
  TEST_FailAllocationsAfter(0);
  EXPECT_EQ(HandleArrayCreate(4, 1), nullptr);
  uint32_t rows = 1;
  while (rows < 10000 && HandleArrayAppend(array) != nullptr) ++rows;
  TEST_FailAllocationsAfter(-1);
  EXPECT_LT(rows, 10000u);
  EXPECT_EQ(HandleArrayRows(array), rows);
  for (; rows < 65535; ++rows) ASSERT_EQ(HandleArrayAppend(array), array);
  EXPECT_EQ(HandleArrayAppend(array), nullptr);
  EXPECT_EQ(HandleArrayRows(array), 65535u);
  EXPECT_EQ(At(array, 0), 5u);
  HandleArrayFree(array);
}

// Random appends and removals against a vector; every index kind, growth from empty included.
TEST(HandleArray, AgainstVector) {
  std::mt19937 random(11);
  HandleArray array = HandleArrayCreate(4, 0);
  std::vector<uint32_t> model;
  for (int step = 0; step < 20000; ++step) {
    const size_t size = model.size();
    if (random() % 9 < 5) {
      array = HandleArrayAppend(array);
      ASSERT_EQ(At(array, size), 0u) << "new element at step " << step;
      model.push_back(static_cast<uint32_t>(random()));
      At(array, size) = model.back();
    } else if (size != 0) {  // an index outside the table removes the last
      const size_t index = random() % (size + 4) - 2;
      ASSERT_EQ(HandleArrayRemove(array, static_cast<int32_t>(index)), array);
      model.erase(model.begin() + static_cast<int32_t>(std::min(index, size - 1)));
    }
    ASSERT_EQ(HandleArrayRows(array), model.size());
    const size_t probe = model.empty() ? 0 : random() % model.size();
    ASSERT_TRUE(model.empty() || At(array, probe) == model[probe]) << "step " << step;
  }
  EXPECT_EQ(HandleArrayRemove(nullptr, 0), nullptr);
  EXPECT_EQ(HandleArrayRows(nullptr), 0u);
  HandleArrayFree(array);
}

TEST(HandleArray, MemoryRoutines) {
  EXPECT_EQ(ORLMemRealloc(nullptr, 8), nullptr);
  EXPECT_EQ(ORLMemSize(nullptr), 0u);
  void *block = ORLMemRealloc(ORLMemAlloc(5), 5000);
  EXPECT_EQ(ORLMemSize(block), 5000u);
  WRENMemFree(block);  // both families share their blocks
}

}  // namespace
