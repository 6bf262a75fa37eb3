// Numbers: every operation against another implementation of exact decimals, decimal_oracle.py;
// then what has no value to compare: null, foreign bytes, the text that numbers are read from.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <sstream>
#include <string>

#include "text_model.h"
#include "wreni11.h"

namespace {

using Operation = void (*)(NumberValue *, const NumberValue *, const NumberValue *);
const std::map<std::string, Operation> kOperations = {
    {"add", WRENNumAdd}, {"sub", WRENNumSub}, {"mul", WRENNumMul}, {"div", WRENNumDiv}};

constexpr size_t kLength = sizeof(NumberValue::payload);

NumberValue Number(const std::string &text) {
  NumberValue value;
  WRENNumFromText(&value, text.c_str());
  return value;
}

std::string Hex(const void *data, size_t size) {
  std::string text;
  for (size_t i = 0; i < size; ++i) {
    const auto byte = static_cast<const uint8_t *>(data)[i];
    text += {"0123456789abcdef"[byte / 16], "0123456789abcdef"[byte % 16]};
  }
  return text;
}

// "null", the payload of a number, or all bytes of what is neither.
std::string Stored(const NumberValue &value) {
  const std::string bytes = Hex(&value, sizeof value);
  return bytes == std::string(26, '0') ? "null" : value.length == 12 ? bytes.substr(2) : bytes;
}

// The library's result for a case of the oracle.
std::string Computed(const std::string &name, const std::string &left, const std::string &right) {
  const NumberValue a = Number(left);
  const NumberValue b = Number(right);
  NumberValue result = a;
  if (const auto found = kOperations.find(name); found != kOperations.end()) {
    NumberValue inLeft = a;
    NumberValue inRight = b;
    found->second(&result, &a, &b);
    found->second(&inLeft, &inLeft, &b);
    found->second(&inRight, &a, &inRight);
    EXPECT_EQ(Stored(result), Stored(inLeft)) << "the result in the left operand";
    EXPECT_EQ(Stored(result), Stored(inRight)) << "the result in the right operand";
  } else if (name == "cmp") {
    return std::to_string(WRENNumCompare(&a, &b));
  } else if (name == "toint") {
    return std::to_string(WRENNumToInt(&a));
  } else if (name == "todouble") {
    double value = 5;
    WRENNumToDouble(&a, &value);
    return Hex(&value, sizeof value);
  } else if (name == "totext") {
    char text[155] = "";
    WRENNumToText(&a, sizeof text, text);
    EXPECT_EQ(Stored(a), Stored(Number(text))) << "read back";
    return text;
  } else if (name == "fromdouble") {
    WRENNumFromDouble(&result, std::strtod(left.c_str(), nullptr));
  } else if (name == "fromlong") {
    WRENNumFromLong(&result, std::stoll(left));
  } else if (name == "round") {
    WRENNumRound(&result, &a, std::stoi(right));
  } else if (name == "truncate") {
    WRENNumTruncate(&result, std::stoi(right), std::stoi(right.substr(right.find(',') + 1)));
  } else {
    EXPECT_EQ("text", name);
  }
  return Stored(result);
}

TEST(DecimalOracle, EveryOperationAgrees) {
  std::map<std::string, int> counts;
  for (const std::string &line : LinesOf("python3 tests/wren/decimal_oracle.py")) {
    std::istringstream fields(line);
    std::string name, left, right, expected;
    fields >> name >> left >> right >> expected;
    ASSERT_EQ(expected, Computed(name, left, right)) << line;
    ASSERT_FALSE(HasFailure()) << line;
    ++counts[name];
  }
  EXPECT_EQ(13U, counts.size());
  for (const auto &[name, count] : counts) EXPECT_GE(count, 25000) << name;
}

void ExpectSame(const NumberValue &value, const std::string &expected) {
  EXPECT_EQ(Stored(Number(expected)), Stored(value)) << expected;
}

TEST(NumberText, RefusesOtherText) {
  static const char *const kTexts[] = {"",     " ",     "-",   "+",   ".",   "-.",   "e5",   "1e",
                                       "1e+",  "1e-",   "--1", "+-1", "- 1", "1 2",  "1..2", "1.2.",
                                       "1,0",  "0x1",   "1a",  "nan", "inf", "1e5.", "1-",   "1 e5",
                                       "1e 5", "1e5e5", "(1)", "\t1", "1\n", "$1"};
  for (const char *text : kTexts) EXPECT_EQ("null", Stored(Number(text))) << text;
  NumberValue value = Number("5");
  WRENNumFromText(&value, nullptr);
  EXPECT_EQ("null", Stored(value));
}

TEST(NumberText, TakesBlanksAndAnyCountOfDigits) {
  ExpectSame(Number("  1.0e0  "), "1");
  const std::string zeros(3000000, '0');
  const std::string nines(3000000, '9');
  ExpectSame(Number("." + zeros + "12e3000000"), "0.12");
  ExpectSame(Number("12" + zeros + "e-3000001"), "1.2");
  ExpectSame(Number("0." + nines), "1");
  ExpectSame(Number("1." + zeros + "1"), "1");
  ExpectSame(Number(nines), "null");
  ExpectSame(Number("0e" + nines), "0");
  ExpectSame(Number("1e" + nines), "null");
  ExpectSame(Number("1e-" + nines), "0");
}

TEST(NumberText, IsTruncatedAndCounted) {
  const NumberValue value = Number("-12.5");
  static const char *const kWritten[] = {"#", "", "-", "-1", "-12", "-12.", "-12.5", "-12.5"};
  for (int32_t size = 0; size < 8; ++size) {
    char text[16] = "#";
    std::memset(text + 1, '#', 8);
    EXPECT_EQ(5, WRENNumToText(&value, size, text)) << size;
    EXPECT_EQ(kWritten[size], size == 0 ? std::string(text, 1) : std::string(text)) << size;
    EXPECT_EQ('#', text[size]) << size;
  }
  EXPECT_EQ(5, WRENNumToText(&value, 0, nullptr));
  EXPECT_EQ(5, WRENNumToText(&value, -1, nullptr));
}

// Null, a null pointer, a date and bytes that no operation writes count as null.
TEST(Number, InvalidBytesCountAsNull) {
  static const struct {
    const char *text;
    size_t changed;  // byte of the payload, or kLength
    uint8_t byte;
  } kRows[] = {{"5", kLength, 10},  {"5", kLength, 255},  // a date; too long
               {"0", 3, 0x80},      {"50", 0, 0xFF},      // minus zero; not reduced
               {"5", 0, 1},         {"5", 3, 0x7F},       // not filled; too many digits
               {"null", kLength, 0}};
  const NumberValue null = {};
  const NumberValue one = Number("1");
  const auto check = [&](const NumberValue *none, NumberValue inPlace) {
    EXPECT_EQ(none == nullptr || none->length == 0 ? 1 : 0, WRENNumIsNull(none));
    EXPECT_EQ(0, WRENNumIsZero(none) + WRENNumToInt(none) + WRENNumCompare(none, &null));
    EXPECT_EQ(-1, WRENNumCompare(none, &one));
    EXPECT_EQ(1, WRENNumCompare(&one, none));
    double asDouble = 5;
    WRENNumToDouble(none, &asDouble);
    EXPECT_EQ(0, asDouble);
    char text[] = "7";
    EXPECT_EQ(0, WRENNumToText(none, sizeof text, text));
    EXPECT_STREQ("", text);
    for (const auto &[name, compute] : kOperations) {
      NumberValue result = one;
      compute(&result, none, &one);
      EXPECT_EQ("null", Stored(result)) << name;
      result = one;
      compute(&result, &one, none);
      EXPECT_EQ("null", Stored(result)) << name;
    }
    NumberValue result = one;
    WRENNumRound(&result, none, 0);
    EXPECT_EQ("null", Stored(result));
    result = inPlace;
    WRENNumNegate(&result);
    EXPECT_EQ("null", Stored(result));
    WRENNumTruncate(&inPlace, 300, 0);
    EXPECT_EQ("null", Stored(inPlace));
  };
  for (const auto &row : kRows) {
    NumberValue value = Number(row.text);
    (row.changed == kLength ? value.length : value.payload[row.changed]) = row.byte;
    SCOPED_TRACE(Stored(value));
    check(&value, value);
  }
  check(nullptr, null);
}

TEST(Number, SmallRoutines) {
  NumberValue value = Number("-7.5");
  WRENNumNegate(&value);
  ExpectSame(value, "7.5");
  WRENNumSetZero(&value);
  EXPECT_EQ(1, WRENNumIsZero(&value));
  WRENNumNegate(&value);
  ExpectSame(value, "0");
  WRENNumFromInt(&value, INT32_MIN);
  ExpectSame(value, "-2147483648");
  WRENNumSetNull(&value);
  EXPECT_EQ("null", Stored(value));
}

// Thirteen bytes of any content are a number in canonical form or count as null, and every result
// is in canonical form. Stored that are close to numbers are the interesting ones.
TEST(Number, RandomBytesNeverPassAsNumbers) {
  std::mt19937_64 random(7);
  const NumberValue zero = Number("0");
  int numbers = 0;
  for (int i = 0; i < 200000; ++i) {
    NumberValue bytes = zero;
    for (uint8_t &byte : bytes.payload) byte = static_cast<uint8_t>(random());
    // Payload: exponent, the upper bytes of the coefficient with the sign, its lower eight bytes.
    if (i % 4 != 0) bytes.payload[0] = static_cast<uint8_t>(random() % 5 - 2);
    if (i % 8 != 0) std::memset(bytes.payload + 1, 0, 2);
    if (i % 8 != 0) bytes.payload[3] &= 0x80;
    const uint64_t kept = random() % 9;
    if (i % 2 != 0) std::memset(bytes.payload + 4 + kept, 0, 8 - kept);
    NumberValue result;
    NumberValue again;
    WRENNumAdd(&result, &bytes, &zero);
    if (result.length != 0) {
      ++numbers;
      ASSERT_EQ(Stored(bytes), Stored(result));
    }
    for (const auto &[name, compute] : kOperations) {
      compute(&result, &bytes, &bytes);
      WRENNumAdd(&again, &result, &zero);
      ASSERT_EQ(Stored(result), Stored(again)) << name << " of " << Stored(bytes);
    }
  }
  EXPECT_GT(numbers, 50000);
  EXPECT_LT(numbers, 195000);
}

}  // namespace
