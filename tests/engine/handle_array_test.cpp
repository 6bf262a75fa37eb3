// The growable table: counts, locks, growth and removal.
#include "engine/handle_array.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "closed/wren/memory.h"
#include "orli11.h"

namespace {

uint32_t ValueAt(HandleArray array, int32_t index) {
  uint32_t value = 0;
  std::memcpy(&value, HandleArrayLock(array, index), sizeof value);
  HandleArrayUnlock(array);
  return value;
}

void SetValue(HandleArray array, int32_t index, uint32_t value) {
  std::memcpy(HandleArrayLock(array, index), &value, sizeof value);
  HandleArrayUnlock(array);
}

TEST(HandleArray, Create) {
  struct Row {
    int32_t size, count;
    bool made;
  };
  for (const Row &row : {Row{4, 0, true}, Row{4, 3, true}, Row{12, 1, true}, Row{0, 1, false},
                         Row{-4, 1, false}, Row{4, -1, false}, Row{4, 65535, true},
                         Row{4, 65536, false}, Row{INT32_MAX, INT32_MAX, false}}) {
    HandleArray array = HandleArrayCreate(row.size, row.count);
    EXPECT_EQ(array != nullptr, row.made) << row.size << " x " << row.count;
    if (array == nullptr) continue;
    EXPECT_EQ(HandleArrayCount(array),
              static_cast<uint32_t>(row.count) << 16 | static_cast<uint32_t>(row.size));
    EXPECT_EQ(TEST_GlobalLockCount(array), 0);
    for (int32_t i = 0; i < row.count && row.size == 4; ++i) ASSERT_EQ(ValueAt(array, i), 0u);
    HandleArrayFree(array);
  }
  EXPECT_EQ(HandleArrayRows(nullptr), 0u);
}

TEST(HandleArray, LocksNestAndRefusalsLeaveNone) {
  HandleArray array = HandleArrayCreate(4, 3);
  EXPECT_EQ(HandleArrayCount(array), 196612u);
  for (int32_t index : {-1, 3, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(HandleArrayLock(array, index), nullptr) << index;
    EXPECT_EQ(TEST_GlobalLockCount(array), 0) << index;
  }
  auto *first = static_cast<unsigned char *>(HandleArrayLock(array, 0));
  EXPECT_EQ(HandleArrayLock(array, 2), first + 8);
  EXPECT_EQ(TEST_GlobalLockCount(array), 2);
  HandleArrayUnlock(array);
  HandleArrayUnlock(array);
  HandleArrayUnlock(array);  // one too many has no effect
  EXPECT_EQ(TEST_GlobalLockCount(array), 0);
  HandleArrayFree(array);

  HandleArray empty = HandleArrayCreate(4, 0);
  EXPECT_EQ(HandleArrayLock(empty, 0), nullptr);
  HandleArrayUnlock(empty);
  EXPECT_EQ(TEST_GlobalLockCount(empty), 0);
  HandleArrayFree(empty);
}

TEST(HandleArray, FullTableRefusesAppend) {
  HandleArray array = HandleArrayCreate(4, 65534);
  array = HandleArrayAppend(array);
  ASSERT_NE(array, nullptr);
  SetValue(array, 65534, 7);
  EXPECT_EQ(HandleArrayAppend(array), nullptr);
  EXPECT_EQ(HandleArrayRows(array), 65535u);
  EXPECT_EQ(ValueAt(array, 65534), 7u);
  HandleArrayFree(array);
}

TEST(HandleArray, NoMemoryLeavesTheTable) {
  HandleArray array = HandleArrayCreate(4, 1);
  SetValue(array, 0, 5);
  // Growth may have room in reserve, so append until memory is asked for.
  TEST_FailAllocationsAfter(0);
  EXPECT_EQ(HandleArrayCreate(4, 1), nullptr);
  uint32_t rows = 1;
  while (rows < 10000 && HandleArrayAppend(array) != nullptr) ++rows;
  TEST_FailAllocationsAfter(-1);
  EXPECT_LT(rows, 10000u);
  EXPECT_EQ(HandleArrayRows(array), rows);
  EXPECT_EQ(ValueAt(array, 0), 5u);
  HandleArrayFree(array);
}

// Random appends and removals against a vector; every index kind, growth from empty included.
TEST(HandleArray, AgainstVector) {
  std::mt19937 random(11);
  HandleArray array = HandleArrayCreate(4, 0);
  std::vector<uint32_t> model;
  for (int step = 0; step < 20000; ++step) {
    if (random() % 9 < 5) {
      array = HandleArrayAppend(array);
      ASSERT_NE(array, nullptr);
      const auto last = static_cast<int32_t>(model.size());
      ASSERT_EQ(ValueAt(array, last), 0u) << "new element at step " << step;
      model.push_back(static_cast<uint32_t>(random()));
      SetValue(array, last, model.back());
    } else if (!model.empty()) {
      const auto size = static_cast<int32_t>(model.size());
      const int32_t index = static_cast<int32_t>(random() % (model.size() + 4)) - 2;
      ASSERT_EQ(HandleArrayRemove(array, index), array);
      model.erase(model.begin() + (index < 0 || index >= size ? size - 1 : index));
    }
    ASSERT_EQ(HandleArrayRows(array), model.size());
    if (!model.empty()) {
      const auto probe = static_cast<int32_t>(random() % model.size());
      ASSERT_EQ(ValueAt(array, probe), model[static_cast<size_t>(probe)]) << "step " << step;
    }
  }
  EXPECT_EQ(HandleArrayRemove(nullptr, 0), nullptr);
  HandleArrayFree(array);
}

TEST(Memory, ExportedRoutines) {
  EXPECT_EQ(ORLMemRealloc(nullptr, 8), nullptr);
  EXPECT_EQ(ORLMemSize(nullptr), 0u);
  ORLMemFree(nullptr);
  auto *block = static_cast<unsigned char *>(ORLMemAlloc(5));
  for (int i = 0; i < 5; ++i) EXPECT_EQ(block[i], 0);
  std::memset(block, 0xee, 5);
  block = static_cast<unsigned char *>(ORLMemRealloc(block, 5000));
  EXPECT_EQ(block[4], 0xee);
  EXPECT_EQ(block[5], 0);
  EXPECT_EQ(ORLMemSize(block), 5000u);
  WRENMemFree(block);  // both families share their blocks
}

}  // namespace
