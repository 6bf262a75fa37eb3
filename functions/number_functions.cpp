// The built-in functions on numbers. Each is an OrlFunctionProc.
#include <cmath>

#include "functions/arguments.h"
#include "functions/number_text.h"
#include "functions/result_block.h"
#include "orli11.h"

int32_t FUNNumberAbsolute(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                          const char * /*name*/, void **args) {
  NumberValue *target = NumberResult(result, resultSize);
  if (target == nullptr) {
    return 0;
  }
  const NumberValue &value = NumberArgument(args, 0);
  *target = value;
  NumberValue zero;
  WRENNumFromLong(&zero, 0);
  if (WRENNumIsNull(&value) == 0 && WRENNumCompare(&value, &zero) < 0) {
    WRENNumNegate(target);
  }
  return 1;
}

// The remainder of the integer parts, with the sign of the dividend; null for a zero divisor.
int32_t FUNNumberMod(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                     const char * /*name*/, void **args) {
  NumberValue *target = NumberResult(result, resultSize);
  if (target == nullptr) {
    return 0;
  }
  const NumberValue &dividend = NumberArgument(args, 0);
  const NumberValue &divisor = NumberArgument(args, 1);
  if (WRENNumIsNull(&dividend) != 0 || WRENNumIsNull(&divisor) != 0) {
    WRENNumSetNull(target);
    return 1;
  }
  const int32_t left = WRENNumToInt(&dividend);
  const int32_t right = WRENNumToInt(&divisor);
  if (right == 0) {
    WRENNumSetNull(target);
  } else {
    // In 64 bits, where dividing the least 32-bit number by -1 does not overflow.
    WRENNumFromInt(target, static_cast<int32_t>(int64_t{left} % right));
  }
  return 1;
}

int32_t FUNNumberRound(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                       const char * /*name*/, void **args) {
  NumberValue *target = NumberResult(result, resultSize);
  if (target == nullptr) {
    return 0;
  }
  const NumberValue &value = NumberArgument(args, 0);
  if (WRENNumIsNull(&value) != 0) {
    *target = value;
  } else {
    WRENNumRound(target, &value, CountArgument(args, 1));
  }
  return 1;
}

int32_t FUNNumberTruncate(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                          const char * /*name*/, void **args) {
  NumberValue *target = NumberResult(result, resultSize);
  if (target == nullptr) {
    return 0;
  }
  const NumberValue &value = NumberArgument(args, 0);
  *target = value;
  if (WRENNumIsNull(&value) == 0) {
    WRENNumTruncate(target, kAllDigits, CountArgument(args, 1));
  }
  return 1;
}

// The first, second or third number for a selector below, equal to or above zero.
int32_t FUNNumberIFF(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                     const char * /*name*/, void **args) {
  return SelectNumber(resultSize, result, args) ? 1 : 0;
}

// In double precision; without an exponent the base itself, null where the power is not a real
// number.
int32_t FUNPower(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result, const char * /*name*/,
                 void **args) {
  NumberValue *target = NumberResult(result, resultSize);
  if (target == nullptr) {
    return 0;
  }
  const NumberValue &base = NumberArgument(args, 0);
  const NumberValue &exponent = NumberArgument(args, 1);
  if (WRENNumIsNull(&base) != 0 || WRENNumIsNull(&exponent) != 0) {
    *target = base;
    return 1;
  }
  double x = 0;
  double y = 0;
  WRENNumToDouble(&base, &x);
  WRENNumToDouble(&exponent, &y);
  WRENNumFromDouble(target, std::pow(x, y));
  return 1;
}

int32_t FUNNumberToStr(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                       const char * /*name*/, void **args) {
  char text[kNumberTextSize];
  NumberFormatFixed(&NumberArgument(args, 0), CountArgument(args, 1), text);
  return FUNStrVarResult(result, resultSize, text);
}

int32_t FUNNumberToStrPicture(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                              const char * /*name*/, void **args) {
  char text[kNumberTextSize];
  NumberFormatPicture(&NumberArgument(args, 0), TextArgument(args, 1), text);
  return FUNStrVarResult(result, resultSize, text);
}

int32_t FUNNumberToCurrency(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                            const char * /*name*/, void **args) {
  char text[kNumberTextSize];
  NumberFormatCurrency(&NumberArgument(args, 0), text);
  return FUNStrVarResult(result, resultSize, text);
}

int32_t FUNNumberCountryFmt(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                            const char * /*name*/, void **args) {
  char text[kNumberTextSize];
  NumberFormatCountry(&NumberArgument(args, 0), text);
  return FUNStrVarResult(result, resultSize, text);
}
