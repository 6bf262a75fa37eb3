// The stored form of a context as its host sees it: sizes, capacities, what a load brings back.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/context.h"

namespace {

std::string BlockOf(EC ec) {
  std::string block(static_cast<size_t>(ORLGetECBlockSize(ec, 1)), '\xEE');
  block.resize(
      static_cast<size_t>(ORLGetECBlock(ec, static_cast<int32_t>(block.size()), block.data())));
  return block;
}

TEST(Block, LoadsWhatWasWritten) {
  const OwnedContext context(ORLCreateEC(nullptr, nullptr, nullptr, 0));
  EC ec = context.get();
  AddInput(ec, "Amount", 0);
  Make(ec, "2", "B");
  Make(ec, "Amount*2", "Net");
  Make(ec, "Net()+B()", "A");
  const std::string block = BlockOf(ec);
  const OwnedContext other(ORLCreateEC(nullptr, nullptr, nullptr, 0));
  EXPECT_EQ(
      ORLSetECContents(other.get(), static_cast<int32_t>(block.size()), block.data(), 1, nullptr),
      1);
  EXPECT_EQ(Snapshot(other.get()), Snapshot(ec));
}

TEST(Block, LongChain) {
  std::string block(21, 0);
  block[0] = 3;
  const int n = 32767;
  block += std::string("\xFC\x00", 2);
  block += std::string("\xFF\x7F", 2);
  for (int i = 0; i < n; i++) {
    block += i + 1 < n ? "F" + std::to_string(i + 1) + "()" : "1";
    block += '\0';
    block += "F" + std::to_string(i);
    block += '\0';
  }
  const OwnedContext other(ORLCreateEC(nullptr, nullptr, nullptr, 0));
  EXPECT_EQ(
      ORLSetECContents(other.get(), static_cast<int32_t>(block.size()), block.data(), 1, nullptr),
      1);
  EXPECT_EQ(ORLGetExpressionCount(other.get()), n);
  EXPECT_EQ(NameOf(other.get(), ORLHEXPFromOrdinal(other.get(), 5)), "F5");
}

}  // namespace
