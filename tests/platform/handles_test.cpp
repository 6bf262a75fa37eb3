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
  GlobalUnlock(handle);
  return {bytes, bytes + GlobalSize(handle)};
}

TEST(HandlesTest, RandomResizesAgreeWithAModel) {
  std::mt19937 random(3303);
  const int64_t before = TEST_LiveBlocks();
  for (int round = 0; round < 200; ++round) {
    Bytes model(random() % 40);
    GlobalHandle handle = GlobalAlloc(kMovableZeroed, model.size());
    for (int step = 0; step < 60; ++step) {
      ASSERT_EQ(model, BytesOf(handle)) << "round " << round << ", step " << step;
      std::generate(model.begin(), model.end(), [&] { return static_cast<uint8_t>(random() | 1); });
      std::copy(model.begin(), model.end(), static_cast<uint8_t *>(GlobalLock(handle)));
      GlobalUnlock(handle);
      model.resize(random() % 4 == 0 ? random() % 3000 : model.size() + random() % 30);
      ASSERT_EQ(handle, GlobalReAlloc(handle, model.size(), kMovableZeroed));
    }
    GlobalFree(handle);
  }
  EXPECT_EQ(before, TEST_LiveBlocks());
}

TEST(HandlesTest, GrowthByStepsMovesTheBlockRarely) {
  GlobalHandle handle = GlobalAlloc(kMovableZeroed, 8);
  TEST_FailAllocationsAfter(60);  // each enlargement of the memory counts as one
  for (uint64_t size = 8; size <= uint64_t{8} * 65535; size += 8) {
    ASSERT_EQ(handle, GlobalReAlloc(handle, size, kMovableZeroed)) << size;
  }
  TEST_FailAllocationsAfter(-1);
  GlobalFree(handle);
}

TEST(HandlesTest, LocksNestAndSpareUnlocksDoNothing) {
  GlobalHandle handle = GlobalAlloc(kMovableZeroed, 4);
  GlobalUnlock(handle);
  EXPECT_EQ(GlobalLock(handle), GlobalLock(handle));
  for (const int32_t expected : {2, 1, 0, 0}) {
    EXPECT_EQ(expected, TEST_GlobalLockCount(handle));
    GlobalUnlock(handle);
  }
  GlobalFree(handle);
}

TEST(HandlesTest, RefusalsChangeNothing) {
  const int64_t before = TEST_LiveBlocks();
  for (const int64_t allowed : {0, 1}) {
    TEST_FailAllocationsAfter(allowed);
    EXPECT_EQ(nullptr, GlobalAlloc(kMovableZeroed, 8)) << allowed;
    EXPECT_EQ(before, TEST_LiveBlocks()) << allowed;
  }
  TEST_FailAllocationsAfter(2);
  GlobalHandle handle = GlobalAlloc(kMovableZeroed, 8);
  EXPECT_EQ(nullptr, GlobalReAlloc(handle, 100000, kMovableZeroed));
  EXPECT_EQ(Bytes(8), BytesOf(handle));
  for (const uint64_t size : {3U, 0U}) {
    EXPECT_EQ(handle, GlobalReAlloc(handle, size, kMovableZeroed)) << "a shrink needs no memory";
    EXPECT_EQ(size, GlobalSize(handle));
  }
  TEST_FailAllocationsAfter(-1);
  constexpr uint64_t kBeyond = uint64_t{1} << 32;
  for (const uint64_t size : {kBeyond, kBeyond + 8, UINT64_MAX}) {
    EXPECT_EQ(nullptr, GlobalAlloc(kMovableZeroed, size)) << size;
    EXPECT_EQ(nullptr, GlobalReAlloc(handle, size, kMovableZeroed)) << size;
  }
  GlobalFree(handle);
  EXPECT_EQ(before, TEST_LiveBlocks());
  EXPECT_EQ(nullptr, GlobalReAlloc(nullptr, 8, kMovableZeroed));
  EXPECT_EQ(nullptr, GlobalLock(nullptr));
  EXPECT_EQ(0U, GlobalSize(nullptr));
  GlobalUnlock(nullptr);
  GlobalFree(nullptr);
}

}  // namespace
