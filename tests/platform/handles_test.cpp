// Movable blocks: size, zeros, locks, growth and lack of memory.
#include "platform/handles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "closed/wren/memory.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes BytesOf(GlobalHandle handle) {
  const auto *bytes = static_cast<const uint8_t *>(GlobalLock(handle));
  Bytes result(bytes, bytes + GlobalSize(handle));
  GlobalUnlock(handle);
  return result;
}

TEST(HandlesTest, RandomResizesAgreeWithAModel) {
  std::mt19937 random(3303);
  const int64_t before = TEST_LiveBlocks();
  for (int round = 0; round < 200; ++round) {
    Bytes model(random() % 40);
    GlobalHandle handle = GlobalAlloc(GHND_FLAGS, model.size());
    ASSERT_NE(nullptr, handle);
    for (int step = 0; step < 60; ++step) {
      SCOPED_TRACE(testing::Message() << "round " << round << ", step " << step);
      ASSERT_EQ(model, BytesOf(handle));
      const size_t size = random() % 4 == 0 ? random() % 3000 : model.size() + random() % 30;
      auto *bytes = static_cast<uint8_t *>(GlobalLock(handle));
      std::generate_n(bytes, model.size(), [&] { return static_cast<uint8_t>(random() | 1); });
      std::copy_n(bytes, model.size(), model.begin());
      GlobalUnlock(handle);
      ASSERT_EQ(handle, GlobalReAlloc(handle, size, GHND_FLAGS));
      model.resize(size);
    }
    GlobalFree(handle);
  }
  EXPECT_EQ(before, TEST_LiveBlocks());
}

TEST(HandlesTest, GrowthByStepsMovesTheBlockRarely) {
  GlobalHandle handle = GlobalAlloc(GHND_FLAGS, 8);
  TEST_FailAllocationsAfter(60);  // each enlargement of the memory counts as one
  for (uint64_t size = 8; size <= uint64_t{8} * 65535; size += 8) {
    ASSERT_EQ(handle, GlobalReAlloc(handle, size, GHND_FLAGS)) << size;
    ASSERT_EQ(size, GlobalSize(handle));
  }
  TEST_FailAllocationsAfter(-1);
  GlobalFree(handle);
}

TEST(HandlesTest, LocksNestAndSpareUnlocksDoNothing) {
  GlobalHandle handle = GlobalAlloc(GHND_FLAGS, 4);
  GlobalUnlock(handle);
  EXPECT_EQ(0, TEST_GlobalLockCount(handle));
  void *bytes = GlobalLock(handle);
  EXPECT_EQ(bytes, GlobalLock(handle));
  EXPECT_EQ(2, TEST_GlobalLockCount(handle));
  for (const int32_t expected : {1, 0, 0}) {
    GlobalUnlock(handle);
    EXPECT_EQ(expected, TEST_GlobalLockCount(handle));
  }
  GlobalFree(handle);
}

TEST(HandlesTest, WithoutMemoryNothingChanges) {
  const int64_t before = TEST_LiveBlocks();
  for (const int64_t allowed : {0, 1}) {
    TEST_FailAllocationsAfter(allowed);
    EXPECT_EQ(nullptr, GlobalAlloc(GHND_FLAGS, 8)) << allowed;
    EXPECT_EQ(before, TEST_LiveBlocks()) << allowed;
  }
  TEST_FailAllocationsAfter(2);
  GlobalHandle handle = GlobalAlloc(GHND_FLAGS, 8);
  ASSERT_NE(nullptr, handle);
  EXPECT_EQ(nullptr, GlobalReAlloc(handle, 100000, GHND_FLAGS));
  EXPECT_EQ(Bytes(8), BytesOf(handle));
  EXPECT_EQ(handle, GlobalReAlloc(handle, 3, GHND_FLAGS)) << "a shrink needs no memory";
  EXPECT_EQ(handle, GlobalReAlloc(handle, 0, GHND_FLAGS));
  EXPECT_EQ(0U, GlobalSize(handle));
  TEST_FailAllocationsAfter(-1);
  GlobalFree(handle);
  EXPECT_EQ(before, TEST_LiveBlocks());
}

TEST(HandlesTest, SizesBeyond32BitsAndNullHandlesAreRefused) {
  EXPECT_EQ(nullptr, GlobalAlloc(GHND_FLAGS, uint64_t{1} << 32));
  EXPECT_EQ(nullptr, GlobalAlloc(GHND_FLAGS, (uint64_t{1} << 32) + 8));
  GlobalHandle handle = GlobalAlloc(GHND_FLAGS, 8);
  EXPECT_EQ(nullptr, GlobalReAlloc(handle, (uint64_t{1} << 32) + 16, GHND_FLAGS));
  EXPECT_EQ(nullptr, GlobalReAlloc(handle, UINT64_MAX, GHND_FLAGS));
  EXPECT_EQ(8U, GlobalSize(handle));
  GlobalFree(handle);
  EXPECT_EQ(nullptr, GlobalReAlloc(nullptr, 8, GHND_FLAGS));
  EXPECT_EQ(nullptr, GlobalLock(nullptr));
  EXPECT_EQ(0U, GlobalSize(nullptr));
  GlobalUnlock(nullptr);
  GlobalFree(nullptr);
}

}  // namespace
