// The built-in functions under calls that no formula makes, and at the limits of their arguments.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "closed/wren/memory.h"
#include "functions/result_block.h"
#include "support/cases.h"
#include "tests/dates/date_support.h"
#include "tests/functions/function_call.h"
#include "tests/wren/text_model.h"

namespace {

struct HostileCall {
  const BuiltInFunction *row;
  int32_t page;
  std::vector<std::string> bytes;  // of each argument; empty for a null entry
  std::vector<std::unique_ptr<char[]>> owned;
  std::vector<void *> entries;
  bool withArgs, withResult, failing;
  void *block;
  uint32_t size;  // of the block before the call
};

NumberValue ValueOf(const void *bytes) {
  NumberValue value = {};
  if (bytes != nullptr) memcpy(&value, bytes, sizeof value);
  return value;
}

// Numbers, dates and foreign bytes, each also where the others are expected. No count lies between
// a thousand and what fits into no block, or texts of gigabytes would be made.
std::string RandomValue(std::mt19937 &random) {
  static const char *const values[] = {
      "n:0",  "n:1",  "n:-1", "n:2",  "n:0.5",  "n:-0.5",  "n:3",          "n:2147483647",
      "n:10", "n:49", "n:50", "n:97", "n:300",  "n:1e100", "n:-1e100",     "n:-2147483648",
      "n:-7", "n:98", "n:51", "n:4",  "n:null", "n:1.9",   "d:2012-02-29", "d:0001-01-01"};
  std::string bytes = BytesOf(values[random() % std::size(values)]);
  if (random() % 4 == 0) {
    bytes[0] = "\0\1\7\12\13\14\15\377"[random() % 8];
    std::generate_n(bytes.begin() + 1, random() % 13, std::ref(random));
    const NumberValue value = ValueOf(bytes.data());
    const int32_t count = WRENNumToInt(&value);
    if (count > 1000 && count < INT32_MAX) bytes[0] = 7;
  }
  return bytes;
}

bool IsValidText(const std::string &text, int32_t page) {
  const Chars chars = SplitChars(text, page);
  return std::all_of(chars.begin(), chars.end(), [page](const std::string &each) {
    const auto first = static_cast<uint8_t>(each[0]);
    const auto last = static_cast<uint8_t>(each.back());
    if (page == 1252 || first < 0x80) return true;
    if (page == 932 && each.size() == 1) return first > 0xA0 && first < 0xE0;
    return page == 932 ? last >= 0x40 && last != 0x7F && last < 0xFD : each.size() > 1;
  });
}

// Lists, pictures, dates, numbers and noise, at times cut within a character or very long.
std::string RandomArgumentText(std::mt19937 &random, int32_t page) {
  static const char *const starts[] = {"",    "", "a,B,,z",  "yyyy-MM-dd ",   "#,##0.00;(0);",
                                       "h '", "", "1,234.5", "Jan 31, 2012 ", "   "};
  std::string text = RandomText(random, page, 12);
  while (random() % 8 != 0 && !IsValidText(text, page)) text = RandomText(random, page, 12);
  text.insert(0, starts[random() % std::size(starts)]);
  if (random() % 8 == 0 && !text.empty()) text.pop_back();
  const std::string piece = random() % 300 == 0 ? text : "";
  while (!piece.empty() && text.size() < 100000) text += piece;
  return text + '\0';
}

HostileCall RandomCall(const BuiltInFunction &row, std::mt19937 &random) {
  HostileCall call = {};
  call.row = &row;
  call.page = kCodePages[random() % 3];
  for (size_t i = 1; i < row.types.size(); ++i) {
    const std::string bytes =
        row.types[i] == 't' ? RandomArgumentText(random, call.page) : RandomValue(random);
    call.bytes.push_back(random() % 12 == 0 ? "" : bytes);
    call.owned.push_back(call.bytes.back().empty() ? nullptr : ExactCopy(bytes));
    call.entries.push_back(call.owned.back().get());
  }
  call.withArgs = random() % 16 != 0;
  call.withResult = random() % 32 != 0;
  call.failing = random() % 4 == 0;
  call.size = row.types[0] == 't' ? 50 : 13;
  if (random() % 4 == 0) call.size = static_cast<uint32_t>(random() % 20);
  call.block = random() % 16 == 0 ? nullptr : WRENMemAlloc(call.size);
  call.size = WRENMemSize(call.block);
  if (call.size > 0) memset(call.block, 0x7E, call.size);
  return call;
}

int32_t Compute(HostileCall &call, int32_t resultSize) {
  WRENSetCodePage(call.page);
  TEST_FailAllocationsAfter(call.failing ? 0 : -1);
  const int32_t done =
      call.row->routine(nullptr, nullptr, resultSize, call.withResult ? &call.block : nullptr,
                        call.row->name.c_str(), call.withArgs ? call.entries.data() : nullptr);
  TEST_FailAllocationsAfter(-1);
  return done;
}

// The block has the size of the text that is given, or with some functions at most that of what is
// taken, terminators included; but never less than it had.
void ExpectSize(const HostileCall &call, const std::string &result) {
  static const std::set<std::string> bySource = {"StrLeft",  "StrRight", "StrMid",    "StrTrim",
                                                 "StrLTrim", "StrRTrim", "StrReplace"};
  const bool atMost = bySource.contains(call.row->name);
  size_t size = result.size() + 1;
  for (size_t i = 0; i < call.bytes.size() && call.withArgs; ++i) {
    if (atMost && call.row->types[i + 1] == 't') size += call.bytes[i].size();
    if (call.row->name == "StrPad" && i == 1) {
      const NumberValue count = ValueOf(call.entries[i]);
      size = static_cast<size_t>(std::max(FUNCharBytes(WRENNumToInt(&count)), 0)) + 1;
    }
  }
  const size_t promised = std::max<size_t>(call.size, size);
  const size_t given = WRENMemSize(call.block);
  EXPECT_TRUE(atMost ? call.size <= given && given <= promised : given == promised)
      << given << " bytes, not " << promised;
}

// A string ends within its block, and valid arguments yield a valid string: no character was split.
// True when that was checked.
bool CheckText(const HostileCall &call) {
  const void *end = memchr(call.block, 0, WRENMemSize(call.block));
  EXPECT_TRUE(call.withResult && end != nullptr);
  if (end == nullptr) return false;
  const std::string result = static_cast<char *>(call.block);
  ExpectSize(call, result);
  constexpr size_t kMost = 5000;  // the model is slow
  bool valid = result.size() < kMost;
  for (size_t i = 0; i < call.bytes.size() && valid; ++i) {
    valid = call.row->types[i + 1] != 't' ||
            (call.bytes[i].size() < kMost && IsValidText(call.bytes[i], call.page));
  }
  EXPECT_TRUE(!valid || IsValidText(result, call.page)) << Shown(result);
  return valid && !result.empty();
}

// A value is null, a number or a date in canonical form, or a selected argument.
void CheckValue(const HostileCall &call) {
  const NumberValue value = ValueOf(call.block);
  const NumberValue zero = Number(0);
  NumberValue again = value.length == 10 ? Stored(Iso(value)) : value;
  if (value.length == 12) WRENNumAdd(&again, &value, &zero);
  const std::string bytes(static_cast<char *>(call.block), sizeof value);
  const std::string &name = call.row->name;
  const bool chosen = name.ends_with("IFF") || name == "NumberAbsolute" || name == "Power";
  const std::set<int> lengths = {0, call.row->types[0] == 'd' ? 10 : 12};
  EXPECT_TRUE((chosen && std::count(call.bytes.begin(), call.bytes.end(), bytes) > 0) ||
              (lengths.contains(value.length) && memcmp(&value, &again, sizeof value) == 0))
      << Shown(bytes);
}

// A text may fail when memory does, then the block must grow in another attempt; else only for a
// count that fits into no block, which is the last argument of its function.
bool MayRefuse(HostileCall &call, int32_t resultSize) {
  static const std::set<std::string> counting = {"StrSpaces", "StrPad", "StrRepeat"};
  if (!call.withResult) return true;
  const bool failed = call.failing;
  call.failing = false;
  if (failed && Compute(call, resultSize) == 1) return WRENMemSize(call.block) > call.size;
  const NumberValue count = ValueOf(call.entries.back());
  return counting.contains(call.row->name) && WRENNumToInt(&count) == INT32_MAX;
}

TEST(HostileCalls, NeitherCrashNorPassTheirBlocks) {
  const PlainSettings settings;
  std::mt19937 random(46);
  int wholeTexts = 0;
  const std::vector<BuiltInFunction> &functions = FunctionRows();
  for (size_t i = 0; i < functions.size() * 1000; ++i) {
    const int64_t blocks = TEST_LiveBlocks();
    HostileCall call = RandomCall(functions[i % functions.size()], random);
    std::string trace = call.row->name + " in " + std::to_string(call.page);
    for (const std::string &bytes : call.bytes) trace += " " + Shown(bytes.substr(0, 60));
    SCOPED_TRACE(trace);
    void *const block = call.block;
    const auto resultSize = static_cast<int32_t>(random() % 8 == 0 ? 0 : call.size);
    const int32_t done = Compute(call, resultSize);
    for (size_t k = 0; k < call.bytes.size(); ++k) {
      const std::string &bytes = call.bytes[k];
      EXPECT_TRUE(bytes.empty() || memcmp(call.entries[k], bytes.data(), bytes.size()) == 0);
    }
    const bool isText = call.row->types[0] == 't';
    EXPECT_TRUE((done != 0 && isText) || (call.block == block && WRENMemSize(block) == call.size));
    if (isText) {
      EXPECT_TRUE(done == 1 || (done == 0 && MayRefuse(call, resultSize)));
      wholeTexts += done != 0 && CheckText(call) ? 1 : 0;
    } else {
      EXPECT_EQ(done, call.withResult && block != nullptr && resultSize >= 13 ? 1 : 0);
      if (done != 0) CheckValue(call);
    }
    WRENMemFree(call.block);
    ASSERT_EQ(blocks, TEST_LiveBlocks());
    ASSERT_FALSE(HasFailure());
  }
  EXPECT_GT(wholeTexts, 6000);
}

// Null values, null entries and a missing array are the same: null or the empty text, but for the
// functions that measure texts.
TEST(FunctionEdges, WithoutArguments) {
  const PlainSettings settings;
  const std::set<std::string> zeros = {"StrLength", "StrCompare", "StrScan", "StrToNumber"};
  for (const BuiltInFunction &row : FunctionRows()) {
    const auto null = [](char type) {
      return std::string(1, type) + (type == 't' ? ":" : ":null");
    };
    std::vector<std::string> nulls;
    for (const char type : row.types.substr(1)) nulls.push_back(null(type));
    const std::string expected = zeros.contains(row.name) ? Canonical("n:0") : null(row.types[0]);
    EXPECT_EQ(expected, Call(row.name, nulls)) << row.name;
    EXPECT_EQ(expected, Call(row.name, std::vector<std::string>(nulls.size(), "-"))) << row.name;
    EXPECT_EQ(expected, Call(row.name, {})) << row.name;
  }
}

TEST(FunctionEdges, Rows) {
  const PlainSettings settings;
  for (const Case &row : CasesOf("functions/edge_cases.txt", "edges")) {
    WRENSetCodePage(row.Int(0));
    EXPECT_EQ(Canonical(row[3]), Call(row[1], PartsOf(row[2], ';'))) << row.where;
  }
  WRENSetCodePage(932);
  EXPECT_EQ(Canonical("t:\x81 "), Call("StrRTrim", {"t:\x81 "}));
}

}  // namespace
