// Conversions between numbers, machine integers, doubles and plain decimal text.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

#include "closed/wren/cut_copy.h"
#include "closed/wren/decimal.h"
#include "closed/wren/digit_run.h"
#include "closed/wren/number_layout.h"
#include "wreni11.h"

namespace {

// Reads "E", an optional sign and digits; false when a digit is missing. Exponents beyond any
// number saturate.
bool ReadExponent(const char **cursor, int64_t *exponent) {
  constexpr int64_t kEnough = INT64_C(1) << 40;  // more than any text has digits
  const char *c = *cursor + 1;
  const bool negative = *c == '-';
  if (*c == '-' || *c == '+') {
    ++c;
  }
  if (!IsDigit(*c)) {
    return false;
  }
  int64_t value = 0;
  for (; IsDigit(*c); ++c) {
    if (value < kEnough) {
      value = value * 10 + (*c - '0');
    }
  }
  *exponent = negative ? -value : value;
  *cursor = c;
  return true;
}

// Reads digits with at most one point; false when there is no digit.
bool ReadDigits(const char **cursor, DigitRun *run) {
  const char *c = *cursor;
  const char *digits = c;
  for (; IsDigit(*c); ++c) {
    DigitRunAdd(run, *c, false);
  }
  int64_t count = c - digits;
  if (*c == '.') {
    digits = ++c;
    for (; IsDigit(*c); ++c) {
      DigitRunAdd(run, *c, true);
    }
    count += c - digits;
  }
  *cursor = c;
  return count > 0;
}

const char *SkipBlanks(const char *c) {
  while (*c == ' ') {
    ++c;
  }
  return c;
}

// Stores the number in the text, without the blanks around it; false when that is not a number.
bool ReadNumber(NumberValue *result, const char *text) {
  const char *c = SkipBlanks(text);
  DigitRun run = {};
  const bool negative = *c == '-';
  if (*c == '-' || *c == '+') {
    ++c;
  }
  if (!ReadDigits(&c, &run)) {
    return false;
  }
  int64_t exponent = 0;
  if ((*c == 'e' || *c == 'E') && !ReadExponent(&c, &exponent)) {
    return false;
  }
  if (*SkipBlanks(c) != 0) {
    return false;
  }
  DigitRunFinish(result, run, exponent, negative);
  return true;
}

}  // namespace

void WRENNumFromInt(NumberValue *result, int32_t source) {
  WRENNumFromLong(result, source);
}

void WRENNumFromLong(NumberValue *result, int64_t source) {
  DecimalStore(result, {source, 0});
}

void WRENNumFromText(NumberValue *result, const char *source) {
  NumberValue value = {};
  if (source != nullptr && !ReadNumber(&value, source)) {
    DecimalStoreNull(&value);
  }
  if (result != nullptr) {
    *result = value;
  }
}

int32_t WRENNumToText(const NumberValue *value, int32_t size, char *buffer) {
  char text[1 + kDigits + kMaxExponent];  // the longest: no fraction has more places
  static_assert(static_cast<int32_t>(sizeof text) >=
                static_cast<int32_t>(sizeof "-0.") - 1 - kMinExponent);
  size_t length = 0;
  NumberDigits digits;
  if (NumberDigitsOf(value, &digits)) {
    if (digits.negative) {
      text[length++] = '-';
    }
    const int32_t last = -NumberFractionPlaces(digits);
    for (int32_t place = std::max(NumberIntegerPlaces(digits), 1) - 1; place >= last; --place) {
      if (place == -1) {
        text[length++] = '.';
      }
      text[length++] = NumberDigitAt(digits, place);
    }
  }
  return CutCopy(text, length, size, buffer);
}

void WRENNumFromDouble(NumberValue *result, double source) {
  constexpr double kExactIntegers = 9007199254740992.0;  // 2^53
  if (!std::isfinite(source)) {
    DecimalStoreNull(result);
  } else if (std::fabs(source) <= kExactIntegers && std::trunc(source) == source) {
    // A shorter decimal would have to be a multiple of ten less than half a unit away.
    WRENNumFromLong(result, static_cast<int64_t>(source));
  } else {
    char text[32];  // the longest is "-2.2250738585072014e-308"
    const std::to_chars_result end =
        std::to_chars(text, text + sizeof text - 1, source, std::chars_format::scientific);
    *end.ptr = 0;
    WRENNumFromText(result, text);
  }
}

void WRENNumToDouble(const NumberValue *value, double *out) {
  // Powers of ten that a double holds exactly: one operation on exact operands rounds once.
  static constexpr double kExactPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                            1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                            1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  Decimal d = {};
  double magnitude = 0;
  if (out == nullptr) {
    return;
  }
  if (!DecimalLoad(value, &d)) {
    *out = 0;
    return;
  }
  const Uint128 c = DecimalMagnitude(d);
  if (c >> 53 == 0 && d.exponent <= 0 && d.exponent >= -22) {
    magnitude = static_cast<double>(static_cast<uint64_t>(c));
    magnitude /= kExactPowers[-d.exponent];
  } else {
    char text[64];
    char *end = text + DecimalWriteDigits(c, text);
    *end++ = 'e';
    end = std::to_chars(end, text + sizeof text, d.exponent).ptr;
    std::from_chars(text, end, magnitude);
  }
  *out = d.coefficient < 0 ? -magnitude : magnitude;
}
