// Heap blocks: contents, failures, and use by threads.
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

Bytes BytesOf(const void *block) {
  const auto *bytes = static_cast<const uint8_t *>(block);
  return {bytes, bytes + WRENMemSize(block)};
}

TEST(MemoryTest, RandomResizesAgreeWithAModel) {
  std::mt19937 random(2202);
  const int64_t before = TEST_LiveBlocks();
  std::vector<std::pair<void *, Bytes>> pairs(40);
  for (int step = 0; step < 40000; ++step) {
    auto &[block, model] = pairs[random() % pairs.size()];
    if (random() % 4 == 0) {
      WRENMemFree(block);
      block = nullptr;
      model.clear();
    }
    const uint32_t limit = random() % 16 == 0 ? 100000 : random() % 4 == 0 ? 600 : 70;
    const uint32_t size = static_cast<uint32_t>(random()) % limit;
    const bool fresh = block == nullptr && random() % 2 == 0;
    block = fresh ? WRENMemAlloc(size) : WRENMemRealloc(block, size);
    ASSERT_EQ(0U, reinterpret_cast<uintptr_t>(block) % 16);
    model.resize(size);
    ASSERT_EQ(model, BytesOf(block)) << "step " << step << ", size " << size;
    std::generate(model.begin(), model.end(), [&] { return static_cast<uint8_t>(random()); });
    std::copy(model.begin(), model.end(), static_cast<uint8_t *>(block));
  }
  for (const auto &pair : pairs) WRENMemFree(pair.first);
  WRENMemFree(nullptr);
  EXPECT_EQ(before, TEST_LiveBlocks());
  EXPECT_EQ(0U, WRENMemSize(nullptr));
}

TEST(MemoryTest, LargestSizeDoesNotOverflow) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizer needs too much memory of its own";
#endif
  auto *block = static_cast<char *>(WRENMemAlloc(UINT32_MAX));
  if (block == nullptr) GTEST_SKIP() << "cannot allocate 4 GB on this machine";
  EXPECT_EQ(UINT32_MAX, WRENMemSize(block));
  block[UINT32_MAX - 1] = 'x';
  WRENMemFree(block);
}

TEST(MemoryTest, AFailureLeavesTheBlockAsItWas) {
  const int64_t before = TEST_LiveBlocks();
  for (const uint32_t size : {0U, 5U, 16U, 200U, 256U, 257U, 5000U}) {
    TEST_FailAllocationsAfter(1);
    void *block = WRENMemAlloc(size);
    ASSERT_NE(nullptr, block);
    EXPECT_EQ(nullptr, WRENMemAlloc(size));
    std::memset(block, 0x5A, size);
    for (const uint32_t larger : {size + 1, size + 16, size + 100000}) {
      EXPECT_EQ(nullptr, WRENMemRealloc(block, larger)) << larger;
      EXPECT_EQ(Bytes(size, 0x5A), BytesOf(block));
    }
    block = WRENMemRealloc(block, size / 3);
    ASSERT_NE(nullptr, block) << "a shrink needs no memory: " << size;
    EXPECT_EQ(Bytes(size / 3, 0x5A), BytesOf(block));
    TEST_FailAllocationsAfter(-1);
    WRENMemFree(block);
  }
  EXPECT_EQ(before, TEST_LiveBlocks());
}

// Blocks pass from thread to thread; the last one frees them. A thread that ends frees its pool.
TEST(MemoryTest, BlocksOutliveTheirThreadAndPoolsDoNot) {
  mallopt(M_ARENA_MAX, 1);  // so that one count covers all threads
  const auto run = [](int threads) {
    for (; threads > 0; --threads) {
      std::vector<void *> blocks(2000);
      const int64_t before = TEST_LiveBlocks();
      std::thread([&blocks] {
        for (size_t index = 0; index < blocks.size(); ++index) {
          blocks[index] = WRENMemAlloc(static_cast<uint32_t>(index % 300));
          std::memset(blocks[index], 0xC3, index % 300);
        }
        for (size_t index = 0; index < 1500; ++index) WRENMemFree(blocks[index]);
        EXPECT_EQ(500, TEST_LiveBlocks());
      }).join();
      for (size_t index = 1500; index < blocks.size(); ++index) {
        EXPECT_EQ(Bytes(index % 300, 0xC3), BytesOf(blocks[index]));
        WRENMemFree(blocks[index]);
      }
      EXPECT_EQ(before - 500, TEST_LiveBlocks());
    }
    return mallinfo2().uordblks;
  };
  const size_t before = run(3);
  EXPECT_LT(run(100), before + 1000000) << "one pool holds some 140000 bytes";
}

}  // namespace
