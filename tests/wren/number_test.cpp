// What numbers promise apart from the values of their results, which decimal_oracle_test.cpp
// compares: one form per value, null, the limits, the text they are read from.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "wreni11.h"

namespace {

NumberValue Number(const std::string &text) {
  NumberValue value;
  WRENNumFromText(&value, text.c_str());
  return value;
}

bool SameBytes(const NumberValue &a, const NumberValue &b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

std::string Bytes(const NumberValue &value) {
  std::string text = std::to_string(value.length) + ":";
  for (const uint8_t byte : value.payload) text += " " + std::to_string(byte);
  return text;
}

// Expects both to be the same number, or both null, byte for byte.
void ExpectSame(const NumberValue &value, const std::string &expected) {
  const NumberValue wanted = expected == "null" ? NumberValue{} : Number(expected);
  EXPECT_EQ(wanted.length != 0, expected != "null");
  EXPECT_TRUE(SameBytes(value, wanted)) << Bytes(value) << " is not " << expected;
}

TEST(NumberText, OneFormForEachValue) {
  static const char *const kGroups[][5] = {
      {"0", "-0", "0.000", "0e99999999999999999999", "000000e-5"},
      {"1", "1.", "001", "+1", "  1.0e0  "},
      {"0.5", ".5", "50e-2", "5E-1", "0.50000000000000000000000000000000000000000000000"},
      {"-1234.5", "-12345e-1", "-0.12345E+4", "-1234.50", " -1234.5"},
      {"1e26", "100000000000000000000000000", "0.1e27", "10e25", "1E0026"},
      {"1e27", "10e26", "999999999999999999999999999.9", "999999999999999999999999999", "100e25"},
      {"99999999999999999999999999", "99999999999999999999999999.4",
       "9999999999999999999999999.9e1", "99999999999999999999999998.5",
       "+99999999999999999999999999"},
      {"1e-128", "0.5e-128", "1.49e-128", "10e-129", "0.1e-127"}};
  for (const auto &group : kGroups) {
    const NumberValue first = Number(group[0]);
    EXPECT_EQ(WRENNumIsNull(&first), 0) << group[0];
    for (const char *text : group) {
      const NumberValue value = Number(text);
      EXPECT_TRUE(SameBytes(first, value)) << group[0] << " and " << text;
      EXPECT_EQ(WRENNumCompare(&first, &value), 0) << group[0] << " and " << text;
    }
  }
}

TEST(NumberText, RefusesWhatIsNoNumber) {
  static const char *const kTexts[] = {"",     " ",     "-",   "+",   ".",   "-.",   "e5",   "1e",
                                       "1e+",  "1e-",   "--1", "+-1", "- 1", "1 2",  "1..2", "1.2.",
                                       "1,0",  "0x1",   "1a",  "nan", "inf", "1e5.", "1-",   "1 e5",
                                       "1e 5", "1e5e5", "(1)", "\t1", "1\n", "$1",   "1e153"};
  for (const char *text : kTexts) {
    SCOPED_TRACE(text);
    ExpectSame(Number(text), "null");
  }
  NumberValue value = Number("5");
  WRENNumFromText(&value, nullptr);
  ExpectSame(value, "null");
}

TEST(NumberText, TakesAnyCountOfDigits) {
  const std::string zeros(3000000, '0');
  const std::string nines(3000000, '9');
  ExpectSame(Number("." + zeros + "12e3000000"), "0.12");
  ExpectSame(Number("12" + zeros + "e-3000001"), "1.2");
  ExpectSame(Number("0." + nines), "1");
  ExpectSame(Number("1." + zeros + "1"), "1");
  ExpectSame(Number(nines), "null");
  ExpectSame(Number("1e" + nines), "null");
  ExpectSame(Number("1e-" + nines), "0");
}

TEST(Number, OperationsAtTheLimits) {
  using Operation = void (*)(NumberValue *, const NumberValue *, const NumberValue *);
  static const struct {
    const char *left;
    Operation compute;
    const char *right;
    const char *expected;
  } kRows[] = {{"0.1", WRENNumAdd, "0.2", "0.3"},
               {"1", WRENNumDiv, "3", "0.33333333333333333333333333"},
               {"1", WRENNumDiv, "0", "null"},
               {"0", WRENNumDiv, "0", "null"},
               {"0", WRENNumDiv, "-7", "0"},
               {"5", WRENNumSub, "5", "0"},
               {"99999999999999999999999999e127", WRENNumAdd, "5e126", "null"},
               {"99999999999999999999999999e127", WRENNumAdd, "4.9999e126",
                "99999999999999999999999999e127"},
               {"-1e152", WRENNumMul, "10", "null"},
               {"1e-128", WRENNumMul, "0.5", "1e-128"},
               {"1e-128", WRENNumMul, "0.49", "0"},
               {"1e152", WRENNumAdd, "1e-128", "1e152"},
               {"1e25", WRENNumSub, "1e-128", "1e25"}};
  for (const auto &row : kRows) {
    SCOPED_TRACE(std::string(row.left) + " and " + row.right);
    const NumberValue left = Number(row.left);
    const NumberValue right = Number(row.right);
    NumberValue result;
    row.compute(&result, &left, &right);
    ExpectSame(result, row.expected);
    NumberValue operand = left;
    row.compute(&operand, &operand, &right);
    EXPECT_TRUE(SameBytes(operand, result)) << "the result in the left operand";
    operand = right;
    row.compute(&operand, &left, &operand);
    EXPECT_TRUE(SameBytes(operand, result)) << "the result in the right operand";
  }
}

// Null, a null pointer, a date and payloads that no operation writes count as null.
TEST(Number, WhatIsNoNumberCountsAsNull) {
  NumberValue date = Number("5");
  date.length = 10;
  NumberValue tooLong = Number("5");
  tooLong.length = 255;
  NumberValue minusZero = Number("0");
  minusZero.payload[3] = 0x80;
  NumberValue notReduced = Number("50");
  notReduced.payload[0] = 0xFF;  // 50e-1
  NumberValue notFilled = Number("5");
  notFilled.payload[0] = 1;  // 5e1
  NumberValue tooMany = Number("5");
  tooMany.payload[3] = 0x7F;
  const NumberValue null = {};
  const NumberValue *const kNoNumbers[] = {nullptr,    &null,       &date,      &tooLong,
                                           &minusZero, &notReduced, &notFilled, &tooMany};
  const NumberValue one = Number("1");
  for (size_t i = 0; i < std::size(kNoNumbers); ++i) {
    SCOPED_TRACE(i);
    const NumberValue *none = kNoNumbers[i];
    EXPECT_EQ(WRENNumIsNull(none), i < 2 ? 1 : 0);
    EXPECT_EQ(WRENNumIsZero(none), 0);
    EXPECT_EQ(WRENNumToInt(none), 0);
    double asDouble = 5;
    WRENNumToDouble(none, &asDouble);
    EXPECT_EQ(asDouble, 0);
    EXPECT_EQ(WRENNumCompare(none, &null), 0);
    EXPECT_EQ(WRENNumCompare(none, &one), -1);
    EXPECT_EQ(WRENNumCompare(&one, none), 1);
    for (const auto compute : {WRENNumAdd, WRENNumSub, WRENNumMul, WRENNumDiv}) {
      NumberValue result = one;
      compute(&result, none, &one);
      ExpectSame(result, "null");
      result = one;
      compute(&result, &one, none);
      ExpectSame(result, "null");
    }
    NumberValue result = one;
    WRENNumRound(&result, none, 0);
    ExpectSame(result, "null");
    if (none == nullptr) continue;
    result = *none;
    WRENNumNegate(&result);
    ExpectSame(result, "null");
    result = *none;
    WRENNumTruncate(&result, 300, 0);
    ExpectSame(result, "null");
  }
}

TEST(Number, SmallRoutines) {
  NumberValue value = Number("-7.5");
  WRENNumNegate(&value);
  ExpectSame(value, "7.5");
  WRENNumSetZero(&value);
  ExpectSame(value, "0");
  EXPECT_EQ(WRENNumIsZero(&value), 1);
  WRENNumNegate(&value);
  ExpectSame(value, "0");
  WRENNumSetNull(&value);
  ExpectSame(value, "null");
  EXPECT_EQ(WRENNumIsNull(&value), 1);
}

TEST(Number, MachineIntegers) {
  static const struct {
    const char *text;
    int32_t expected;
  } kRows[] = {{"2147483647.9", INT32_MAX},
               {"2147483648", INT32_MAX},
               {"-2147483648.9", INT32_MIN},
               {"-2147483649", INT32_MIN},
               {"1e152", INT32_MAX},
               {"-1e152", INT32_MIN},
               {"1e-128", 0}};
  for (const auto &row : kRows) {
    const NumberValue value = Number(row.text);
    EXPECT_EQ(WRENNumToInt(&value), row.expected) << row.text;
  }
  for (const int64_t source :
       {INT64_MIN, INT64_MAX, INT64_C(0), INT64_C(-1), INT64_C(10), INT64_C(-4294967296)}) {
    SCOPED_TRACE(source);
    NumberValue value;
    WRENNumFromLong(&value, source);
    ExpectSame(value, std::to_string(source));
  }
  NumberValue value;
  WRENNumFromInt(&value, INT32_MIN);
  ExpectSame(value, "-2147483648");
}

TEST(Number, Doubles) {
  static const struct {
    double source;
    const char *expected;
  } kRows[] = {{-0.0, "0"},
               {std::pow(2.0, 10.0), "1024"},
               {5e-324, "0"},
               {1e300, "null"},
               {-1e300, "null"},
               {std::numeric_limits<double>::infinity(), "null"},
               {std::sqrt(-1.0), "null"}};
  for (const auto &row : kRows) {
    SCOPED_TRACE(row.expected);
    NumberValue value;
    WRENNumFromDouble(&value, row.source);
    ExpectSame(value, row.expected);
  }
}

// Thirteen bytes of any content are a number in its one form or count as null, and every result is
// in its form again. Bytes near to numbers are the interesting ones.
TEST(Number, RandomBytesNeverPassAsNumbers) {
  std::mt19937_64 random(7);
  const NumberValue zero = Number("0");
  int numbers = 0;
  for (int i = 0; i < 200000; ++i) {
    NumberValue bytes;
    bytes.length = 12;
    for (uint8_t &byte : bytes.payload) byte = static_cast<uint8_t>(random());
    // Payload: exponent, the upper bytes of the coefficient with the sign, its lower eight bytes.
    if (i % 4 != 0) bytes.payload[0] = static_cast<uint8_t>(random() % 5 - 2);
    if (i % 8 != 0) std::memset(bytes.payload + 1, 0, 2);
    if (i % 8 != 0) bytes.payload[3] &= 0x80;
    const uint64_t kept = random() % 9;
    if (i % 2 != 0) std::memset(bytes.payload + 4 + kept, 0, 8 - kept);
    SCOPED_TRACE(Bytes(bytes));
    NumberValue sum;
    WRENNumAdd(&sum, &bytes, &zero);
    if (sum.length != 0) {
      ++numbers;
      ASSERT_TRUE(SameBytes(sum, bytes));
    }
    NumberValue result;
    for (const auto compute : {WRENNumAdd, WRENNumSub, WRENNumMul, WRENNumDiv}) {
      compute(&result, &bytes, &bytes);
      NumberValue again;
      WRENNumAdd(&again, &result, &zero);
      ASSERT_TRUE(SameBytes(again, result)) << Bytes(result);
    }
  }
  EXPECT_GT(numbers, 50000);
  EXPECT_LT(numbers, 195000);
}

}  // namespace
