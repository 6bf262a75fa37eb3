// Random contexts in blocks of every version, made and read by an independent writer and reader;
// and blocks that are truncated or damaged.
#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <sstream>

#include "block_support.h"
#include "closed/wren/memory.h"
#include "wren/text_model.h"

namespace {

const std::string kScript = "python3 -B tests/persistence/block_format.py ";

std::string OutputOf(const std::string &command) {
  std::string output;
  for (const std::string &piece : LinesOf(command)) output += piece;
  return output;
}

struct Case {
  int32_t version = 0;
  int16_t reportAverage = 0;
  std::string block, expected, values;
};

const std::vector<Case> &Cases() {
  static const std::vector<Case> cases = [] {
    std::vector<Case> all;
    std::istringstream stream(OutputOf(kScript + "cases 1200"));
    for (Case made; stream >> made.version >> made.reportAverage >> made.block >> made.expected;) {
      std::getline(stream >> std::ws, made.values);
      made.block = Unhex(made.block);
      all.push_back(made);
    }
    EXPECT_EQ(all.size(), 1200U);
    return all;
  }();
  return cases;
}

std::string ValuesOf(EC ec) {
  std::string values;
  for (int32_t i = 0; i < ORLGetExpressionCount(ec); ++i) {
    HEXP exp = ORLHEXPFromOrdinal(ec, i);
    const bool set = ORLIsExpRange(ec, exp, 1) != 0, range = ORLIsExpRange(ec, exp, 2) != 0;
    values += (set ? "set" : range ? "range" : Evaluate(ec, exp)) + "|";
  }
  return values.empty() ? "|" : values;
}

TEST(BlockRandom, OtherToolsReadAndWriteTheSame) {
  const std::string path =
      testing::TempDir() + "orli11-blocks-" + std::to_string(std::random_device()());
  std::ofstream blocks(path);
  std::string states;
  for (const Case &made : Cases()) {
    SCOPED_TRACE("version " + std::to_string(made.version) + ": " + Hex(made.block));
    const OwnedContext ec = ContextFor({.reportAverage = made.reportAverage});
    ASSERT_EQ(Load(ec.get(), made.block), 1) << hostLog;
    const std::string block = Hex(BlockOf(ec.get()));
    ASSERT_EQ(block, made.expected);
    ASSERT_EQ(ValuesOf(ec.get()), made.values);
    blocks << block << "\n";
    states += StateOf(ec.get()) + "\n";
  }
  blocks.close();
  EXPECT_EQ(OutputOf(kScript + "show <" + path), states);
  std::remove(path.c_str());
}

// Holds for any bytes: a result, no leak, and what was read can be copied, computed, written and
// read again.
void TakeAnyBlock(const std::string &block) {
  SCOPED_TRACE("block " + Hex(block));
  const int64_t before = TEST_LiveBlocks();
  {
    const OwnedContext ec = ContextFor({}), again = ContextFor({});
    const int32_t result = Load(ec.get(), block);
    const std::string state = StateOf(ec.get()), written = BlockOf(ec.get());
    const OwnedContext copy(ORLCopyEC(ec.get()));
    if (result != 0) {
      EXPECT_EQ(result, 1);
      EXPECT_EQ(Load(again.get(), written), 1);
      EXPECT_EQ(StateOf(again.get()), state);
      EXPECT_EQ(Snapshot(again.get()), Snapshot(ec.get()));
      EXPECT_EQ(Hex(BlockOf(again.get())), Hex(written));
    }
    // Only without operators: damage may have moved the name of a routine of another kind there.
    if (!state.starts_with("op")) ValuesOf(ec.get());
    EXPECT_EQ(StateOf(ec.get()), state);
  }
  ASSERT_EQ(TEST_LiveBlocks(), before);
}

// Some blocks of each version with inputs and formulas.
std::vector<std::string> Samples(size_t each) {
  std::vector<std::string> all;
  size_t taken[4] = {};
  for (const Case &made : Cases()) {
    const bool fit = made.block.size() > 300 && made.block.size() < 1500 && made.values.size() > 20;
    if (fit && taken[made.version]++ < each) all.push_back(made.block);
  }
  EXPECT_EQ(all.size(), 4 * each);
  return all;
}

TEST(BlockRandom, EveryPrefixOfABlock) {
  for (const std::string &block : Samples(3)) {
    for (size_t size = 0; size <= block.size(); ++size) TakeAnyBlock(block.substr(0, size));
  }
}

// One kind of damage: bytes changed, inserted, removed, copied from another block; tags and counts.
void Damage(std::string &block, const std::string &other, std::mt19937 &random) {
  const auto below = [&random](size_t end) { return random() % end; };
  const size_t at = below(block.size()), from = below(other.size()), pick = below(20);
  const char byte = pick < 10 ? "\0\x01\x7F\x80\xFF()'\"S"[pick] : static_cast<char>(below(256));
  const size_t tag = block.find(pick % 2 != 0 ? '\xFA' : '\xFC');
  switch (below(7)) {
    case 0:
      block[at] = byte;
      break;
    case 1:
      block[at] = static_cast<char>(block[at] ^ (1 << below(8)));
      break;
    case 2:
      block.insert(at, below(9), byte);
      break;
    case 3:
      block.erase(at, below(9));
      break;
    case 4:
      block.replace(at, below(200), other, from, below(200));
      break;
    case 5:
      block = block.substr(0, at) + other.substr(from);
      break;
    default:
      if (tag < block.size() - 3) block[tag + 2 + below(2)] = byte;
  }
}

TEST(BlockRandom, DamagedBlocks) {
  std::mt19937 random(20240609);
  const std::vector<std::string> samples = Samples(12);
  for (int i = 0; i < 20000 && !HasFailure(); ++i) {
    std::string block = samples[random() % samples.size()];
    const std::string &other = samples[random() % samples.size()];
    for (size_t n = random() % 3 + 1; n != 0 && block.size() > 3; --n) Damage(block, other, random);
    TakeAnyBlock(block);
  }
}

}  // namespace
