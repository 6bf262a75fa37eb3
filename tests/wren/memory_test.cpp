// Heap blocks: what they hold, what failure leaves, and what threads do with them.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "closed/wren/memory.h"
#include "wreni11.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes BytesOf(const void *block, size_t size) {
  const auto *bytes = static_cast<const uint8_t *>(block);
  return {bytes, bytes + size};
}

TEST(MemoryTest, BlocksAreZeroAlignedAndOfTheirSizeAlsoWhenReused) {
  for (int round = 0; round < 3; ++round) {
    for (uint32_t size = 0; size <= 600; ++size) {
      void *block = WRENMemAlloc(size);
      ASSERT_NE(nullptr, block) << size;
      EXPECT_EQ(0U, reinterpret_cast<uintptr_t>(block) % 16) << size;
      EXPECT_EQ(size, WRENMemSize(block));
      EXPECT_EQ(Bytes(size, 0), BytesOf(block, size)) << size << " in round " << round;
      std::memset(block, 0xA5, size);
      WRENMemFree(block);
    }
  }
  WRENMemFree(nullptr);
  EXPECT_EQ(0U, WRENMemSize(nullptr));
}

TEST(MemoryTest, RandomResizesAgreeWithAModel) {
  struct Pair {
    void *block = nullptr;
    Bytes model;
  };
  std::mt19937 random(2202);
  const int64_t before = TEST_LiveBlocks();
  std::vector<Pair> pairs(40);
  for (int step = 0; step < 40000; ++step) {
    Pair &pair = pairs[random() % pairs.size()];
    if (random() % 8 == 0) {
      WRENMemFree(pair.block);
      pair = {};
      continue;
    }
    const uint32_t limit = random() % 16 == 0 ? 100000 : random() % 4 == 0 ? 600 : 70;
    const uint32_t size = static_cast<uint32_t>(random()) % limit;
    pair.block = WRENMemRealloc(pair.block, size);
    ASSERT_NE(nullptr, pair.block);
    pair.model.resize(size);
    ASSERT_EQ(pair.model, BytesOf(pair.block, size)) << "step " << step << ", size " << size;
    ASSERT_EQ(size, WRENMemSize(pair.block));
    std::generate(pair.model.begin(), pair.model.end(),
                  [&] { return static_cast<uint8_t>(random()); });
    std::copy(pair.model.begin(), pair.model.end(), static_cast<uint8_t *>(pair.block));
  }
  for (const Pair &pair : pairs) {
    WRENMemFree(pair.block);
  }
  EXPECT_EQ(before, TEST_LiveBlocks());
}

TEST(MemoryTest, TheLargestSizeIsNoOverflow) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizer needs too much memory of its own";
#endif
  auto *block = static_cast<char *>(WRENMemAlloc(UINT32_MAX));
  if (block == nullptr) {
    GTEST_SKIP() << "4 GB are not to be had here";
  }
  EXPECT_EQ(UINT32_MAX, WRENMemSize(block));
  block[UINT32_MAX - 1] = 'x';
  EXPECT_EQ('x', block[UINT32_MAX - 1]);
  WRENMemFree(block);
}

TEST(MemoryTest, AFailureLeavesTheBlockAsItWas) {
  const int64_t before = TEST_LiveBlocks();
  for (const uint32_t size : {0U, 5U, 16U, 200U, 256U, 257U, 5000U}) {
    SCOPED_TRACE(size);
    TEST_FailAllocationsAfter(1);
    void *block = WRENMemAlloc(size);
    ASSERT_NE(nullptr, block);
    EXPECT_EQ(nullptr, WRENMemAlloc(size));
    std::memset(block, 0x5A, size);
    for (const uint32_t larger : {size + 1, size + 16, size + 100000}) {
      EXPECT_EQ(nullptr, WRENMemRealloc(block, larger)) << larger;
      EXPECT_EQ(size, WRENMemSize(block));
      EXPECT_EQ(Bytes(size, 0x5A), BytesOf(block, size));
    }
    block = WRENMemRealloc(block, size / 3);
    ASSERT_NE(nullptr, block) << "a shrink needs no memory";
    EXPECT_EQ(Bytes(size / 3, 0x5A), BytesOf(block, size / 3));
    EXPECT_EQ(before + 1, TEST_LiveBlocks());
    TEST_FailAllocationsAfter(-1);
    WRENMemFree(block);
  }
  EXPECT_EQ(before, TEST_LiveBlocks());
}

// Blocks pass from thread to thread and are freed by whoever has them last.
TEST(MemoryTest, BlocksMayBeFreedOnAnotherThread) {
  constexpr uint32_t COUNT = 500;
  for (int round = 0; round < 20; ++round) {
    std::vector<void *> blocks(COUNT);
    int64_t liveThere = 0;
    std::thread([&] {
      for (uint32_t index = 0; index < COUNT; ++index) {
        blocks[index] = WRENMemAlloc(index);
        std::memset(blocks[index], 0xC3, index);
      }
      liveThere = TEST_LiveBlocks();
    }).join();
    EXPECT_EQ(COUNT, liveThere);
    const int64_t before = TEST_LiveBlocks();
    for (uint32_t index = 0; index < COUNT; ++index) {
      EXPECT_EQ(Bytes(index, 0xC3), BytesOf(blocks[index], index));
      WRENMemFree(blocks[index]);
    }
    EXPECT_EQ(before - COUNT, TEST_LiveBlocks());
  }
}

TEST(MemoryTest, AThreadTakesNothingWithItWhenItEnds) {
  mallopt(M_ARENA_MAX, 1);  // so that one count covers all threads
  const auto run = [](int threads) {
    for (int count = 0; count < threads; ++count) {
      std::thread([] {
        std::vector<void *> blocks;
        for (uint32_t index = 0; index < 2000; ++index) {
          blocks.push_back(WRENMemAlloc(index % 256));
        }
        for (void *block : blocks) {
          WRENMemFree(block);
        }
      }).join();
    }
    return mallinfo2().uordblks;
  };
  const size_t before = run(3);
  EXPECT_LT(run(100), before + 1000000) << "one pool holds some 140000 bytes";
}

}  // namespace
