// Blocks that are split in place have the rows that the CSV parser finds in them.
#include <gtest/gtest.h>
#include <unistd.h>

#include <random>
#include <string>

#include "host/csv_file.h"

namespace {

std::string Shown(const CsvBlock &block) {
  std::string text;
  for (size_t row = 0; row < block.Count(); ++row) {
    text += std::to_string(block.Row(row).line) + ":";
    for (size_t i = 0; i < block.Fields(row); ++i) {
      text += std::string("<") + block.Field(row, i) + ">";
    }
    text += "\n";
  }
  return text + block.error;
}

// Fields of all forms; those of `plain` need no parser.
std::string RandomText(std::mt19937 &random, bool plain) {
  static const char *const pieces[] = {"a", "bc", "0.5", "\xC3\xA9", " ",    "\t", ",", ",",
                                       ",", "\n", "\n",  "\r",       "\r\n", ";",  "'"};
  static const char *const quoted[] = {"\"\"",    "\"q\"", "\"a,b\"", "\"x\r\ny\nz\"", " \" \"",
                                       "\"e\"\"", "b\"",   "\"",      "\"t\" "};
  std::string text;
  for (size_t n = random() % 60; n > 0; --n) {
    const bool quotes = random() % (plain ? 8 : 30) == 0;
    if (quotes && plain) {
      text += std::string(",") + quoted[random() % 5] + ",";
    } else {
      text += quotes ? quoted[random() % 9] : pieces[random() % 15];
    }
  }
  return text;
}

TEST(CsvSplit, AgreesWithTheParser) {
  std::mt19937 random(7);
  CsvFile csv;
  csv.inputs.emplace_back().source.path = "t.csv";
  for (int i = 0; i < 20000; ++i) {
    csv.inputs[0].delimiter = ",;\t"[random() % 3];
    CsvBlock split;
    split.bytes = RandomText(random, i % 2 == 0);
    split.size = split.bytes.size();
    split.last = true;
    SCOPED_TRACE(testing::PrintToString(split.bytes));
    CsvBlock parsed = split;
    split.bytes += '\0';
    CsvSplit(csv, split);
    CsvParse(csv, parsed);
    ASSERT_EQ(Shown(split), Shown(parsed));
  }
}

// Blocks begin and end with rows, and count their lines, wherever the reads end.
TEST(CsvReader, BlocksHoldWholeRows) {
  std::mt19937 random(11);
  const std::string path = testing::TempDir() + "/orli-blocks-" + std::to_string(getpid()) + ".csv";
  for (const char *end : {"\n", "\r\n", "\r"}) {
    CsvBlock whole;
    whole.bytes = std::string("a,b") + end;
    for (int row = 0; row < 9000; ++row) {
      const std::string line(random() % 100, 'x');
      whole.bytes += row % 5 == 0 ? "\"" + line + "\n,\r\"" : line;
      whole.bytes += ',';
      whole.bytes += line;
      whole.bytes += row == 4000 ? std::string(300000, 'y') + end : end;
    }
    FILE *file = std::fopen(path.c_str(), "wb");
    std::fwrite(whole.bytes.data(), 1, whole.bytes.size(), file);
    std::fclose(file);
    DataOptions options;
    options.paths = {path, path};
    CsvFile csv;
    std::string error;
    ASSERT_TRUE(CsvOpen(options, csv, error)) << error;
    whole.size = whole.bytes.size();
    whole.header = whole.last = true;
    whole.bytes += '\0';
    CsvSplit(csv, whole);
    std::string rows[2];
    CsvReader reader(csv);
    int blocks = 0;
    for (CsvBlock block; reader.Read(block); ++blocks) {
      CsvSplit(csv, block);
      rows[block.input] += Shown(block);
    }
    EXPECT_GT(blocks, 10);
    EXPECT_TRUE(rows[0] == Shown(whole)) << testing::PrintToString(end);
    EXPECT_TRUE(rows[1] == Shown(whole)) << testing::PrintToString(end);
  }
  unlink(path.c_str());
}

}  // namespace
