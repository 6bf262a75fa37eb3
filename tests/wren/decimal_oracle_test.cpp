// Random numbers of many magnitudes through every operation, judged by another implementation of
// exact decimals: decimal_oracle.py.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

#include "closed/wren/decimal.h"
#include "wreni11.h"

namespace {

constexpr int kCases = 25000;  // of each operation

struct Source {
  std::mt19937_64 engine;
};

int Below(Source *s, int n) {
  return static_cast<int>(s->engine() % static_cast<uint64_t>(n));
}

std::string Digits(Source *s, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += static_cast<char>('0' + Below(s, 10));
  return text;
}

// The text of a random number, exactly within the form.
std::string RandomNumber(Source *s) {
  static const char *const kSpecial[] = {"0E0",
                                         "1E0",
                                         "5E-1",
                                         "2E0",
                                         "1E-128",
                                         "5E-128",
                                         "99999999999999999999999999E127",
                                         "1E26",
                                         "1E152",
                                         "1E-100",
                                         "25E-2",
                                         "10000000000000000000000001E0",
                                         "99999999999999999999999999E0",
                                         "99999999999999999999999999E-128",
                                         "18446744073709551615E0",
                                         "18446744073709551616E0"};
  std::string digits;
  int exponent = 0;
  switch (Below(s, 8)) {
    case 0:
      digits = kSpecial[Below(s, static_cast<int>(std::size(kSpecial)))];
      return (Below(s, 2) != 0 ? "-" : "") + digits;
    case 1:  // whole numbers
      digits = Digits(s, 1 + Below(s, 18));
      break;
    case 2:  // amounts
      digits = Digits(s, 1 + Below(s, 9));
      exponent = -Below(s, 5);
      break;
    case 3:  // around 64 bits
      digits = Digits(s, 18 + Below(s, 4));
      exponent = -Below(s, 25);
      break;
    case 4:  // far out
      digits = Digits(s, 1 + Below(s, 26));
      exponent = Below(s, 2) != 0 ? -100 - Below(s, 29) : 100 + Below(s, 28);
      break;
    case 5:  // few digits among zeros
      digits =
          std::to_string(1 + Below(s, 9)) + std::string(static_cast<size_t>(Below(s, 25)), '0');
      digits.back() = static_cast<char>('0' + Below(s, 10));
      exponent = Below(s, 60) - 30;
      break;
    default:
      digits = Digits(s, 26);
      exponent = Below(s, 60) - 30;
      break;
  }
  return (Below(s, 2) != 0 ? "-" : "") + digits + "E" + std::to_string(exponent);
}

// A second operand: often one that puts the result at or next to a tie or to a power of ten.
std::string Partner(Source *s, const std::string &left) {
  const size_t mark = left.find('E');
  const int exponent = std::stoi(left.substr(mark + 1));
  const std::string sign = Below(s, 2) != 0 ? "-" : "";
  switch (Below(s, 4)) {
    case 0: {  // half a unit of the last digit, or just beside it
      static const char *const kHalves[] = {"5", "49", "51", "4999999999", "5000000001"};
      const std::string half = kHalves[Below(s, 5)];
      const int place = exponent - static_cast<int>(half.size()) + (Below(s, 8) == 0 ? 1 : 0);
      if (place >= kMinExponent) return sign + half + "E" + std::to_string(place);
      return RandomNumber(s);
    }
    case 1:  // powers of two: quotients that end in a 5
      return sign + std::to_string(INT64_C(1) << Below(s, 40)) + "E0";
    default:
      return RandomNumber(s);
  }
}

NumberValue Number(const std::string &text) {
  NumberValue value;
  WRENNumFromText(&value, text.c_str());
  return value;
}

std::string Text(const NumberValue &value) {
  Decimal d = {};
  if (!DecimalLoad(&value, &d)) return value.length == 0 ? "null" : "garbage";
  std::array<char, 40> digits{};
  DecimalWriteDigits(d.coefficient, digits.data());
  return (d.negative ? "-" : "") + std::string(digits.data()) + "E" + std::to_string(d.exponent);
}

std::string Hex(double value) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%a", value);
  return text.data();
}

void WriteArithmetic(Source *s, std::ostream &out) {
  using Operation = void (*)(NumberValue *, const NumberValue *, const NumberValue *);
  static const struct {
    const char *name;
    Operation compute;
  } kOperations[] = {
      {"add", WRENNumAdd}, {"sub", WRENNumSub}, {"mul", WRENNumMul}, {"div", WRENNumDiv}};
  for (const auto &operation : kOperations) {
    for (int i = 0; i < kCases; ++i) {
      const std::string left = RandomNumber(s);
      const std::string right = Partner(s, left);
      const NumberValue a = Number(left);
      const NumberValue b = Number(right);
      NumberValue result;
      operation.compute(&result, &a, &b);
      out << operation.name << ' ' << left << ' ' << right << ' ' << Text(result) << '\n';
    }
  }
}

void WriteComparisons(Source *s, std::ostream &out) {
  for (int i = 0; i < kCases; ++i) {
    const std::string left = RandomNumber(s);
    NumberValue a = Number(left);
    NumberValue b = Number(Partner(s, left));
    if (Below(s, 4) != 0) WRENNumAdd(&b, &a, &b);  // close to each other, at times equal
    if (b.length == 0) b = a;
    out << "cmp " << left << ' ' << Text(b) << ' ' << WRENNumCompare(&a, &b) << '\n';
  }
}

void WriteRounding(Source *s, std::ostream &out) {
  static const int kExtremes[] = {INT32_MIN, INT32_MIN + 1, -400, 400, INT32_MAX};
  for (int i = 0; i < kCases; ++i) {
    const std::string text = RandomNumber(s);
    const NumberValue value = Number(text);
    int decimals = Below(s, 40) - 20 - std::stoi(text.substr(text.find('E') + 1));
    if (Below(s, 20) == 0) decimals = kExtremes[Below(s, 5)];
    const int precision = Below(s, 4) != 0 ? 300 : Below(s, 30) - 1;
    NumberValue rounded;
    WRENNumRound(&rounded, &value, decimals);
    NumberValue cut = value;
    WRENNumTruncate(&cut, precision, decimals);
    out << "round " << text << ' ' << decimals << ' ' << Text(rounded) << '\n'
        << "truncate " << text << ' ' << precision << ',' << decimals << ' ' << Text(cut) << '\n';
  }
}

// Digits far beyond the form, with a tie or almost one behind the 26th.
void WriteTexts(Source *s, std::ostream &out) {
  for (int i = 0; i < kCases; ++i) {
    std::string text = Digits(s, 1 + Below(s, 45));
    if (Below(s, 3) == 0) {
      text = "1" + Digits(s, 25) + (Below(s, 2) != 0 ? "5" : "4999999999999999999");
      text += std::string(static_cast<size_t>(Below(s, 40)), Below(s, 2) != 0 ? '0' : '9');
    }
    text.insert(static_cast<size_t>(Below(s, static_cast<int>(text.size()) + 1)), ".");
    if (Below(s, 2) != 0) text += "e" + std::to_string(Below(s, 400) - 200);
    if (Below(s, 2) != 0) text.insert(0, "-");
    out << "text " << text << " - " << Text(Number(text)) << '\n';
  }
}

void WriteConversions(Source *s, std::ostream &out) {
  for (int i = 0; i < kCases; ++i) {
    const std::string text = RandomNumber(s);
    const NumberValue value = Number(text);
    double asDouble = 0;
    WRENNumToDouble(&value, &asDouble);
    out << "todouble " << text << " - " << Hex(asDouble) << '\n';
    const std::string smaller = (Below(s, 2) != 0 ? "-" : "") + Digits(s, 1 + Below(s, 12)) + "E-" +
                                std::to_string(Below(s, 4));
    const NumberValue small = Number(smaller);
    out << "toint " << smaller << " - " << WRENNumToInt(&small) << '\n';
    const uint64_t bits = s->engine();
    double source = 0;
    std::memcpy(&source, &bits, sizeof source);
    if (Below(s, 2) != 0) source = std::ldexp(static_cast<double>(bits >> 11), Below(s, 100) - 90);
    if (!std::isfinite(source)) source = 0;
    NumberValue back;
    WRENNumFromDouble(&back, source);
    out << "fromdouble " << Hex(source) << " - " << Text(back) << '\n';
  }
}

// What the script prints about the file; the status of its process in *status.
std::string Judge(const std::string &file, int *status) {
  const std::string command = "python3 tests/wren/decimal_oracle.py " + file;
  std::string report;
  FILE *pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return "no process";
  std::array<char, 512> line{};
  while (std::fgets(line.data(), static_cast<int>(line.size()), pipe) != nullptr) {
    report += line.data();
  }
  *status = pclose(pipe);
  return report;
}

TEST(DecimalOracle, EveryOperationAgrees) {
  std::string file = ::testing::TempDir() + "/decimal_oracle_XXXXXX";
  const int descriptor = mkstemp(file.data());
  ASSERT_GE(descriptor, 0) << file;
  close(descriptor);
  Source source = {std::mt19937_64(20240607)};
  std::ofstream out(file);
  WriteArithmetic(&source, out);
  WriteComparisons(&source, out);
  WriteRounding(&source, out);
  WriteTexts(&source, out);
  WriteConversions(&source, out);
  out.close();
  ASSERT_TRUE(out) << "cannot write " << file;

  int status = -1;
  const std::string report = Judge(file, &status);
  EXPECT_EQ(status, 0) << report;
  static const char *const kOperations[] = {"add",   "sub",      "mul",       "div",
                                            "cmp",   "round",    "truncate",  "text",
                                            "toint", "todouble", "fromdouble"};
  for (const char *operation : kOperations) {
    const std::string line =
        std::string("count ") + operation + " " + std::to_string(kCases) + "\n";
    EXPECT_NE(report.find(line), std::string::npos)
        << "not all cases of " << operation << " judged:\n"
        << report;
  }
  unlink(file.c_str());
}

}  // namespace
