// The four arithmetic operations of formulas, on unpacked numbers.
#ifndef ORLI11_EVALUATION_ARITHMETIC_H
#define ORLI11_EVALUATION_ARITHMETIC_H

#include "closed/wren/decimal.h"
#include "evaluation/program.h"

// The number stored in the words of an instruction.
inline Decimal DecimalOfWords(const Word *code) {
  const Uint128 bits = static_cast<Uint128>(code[kNumberHigh].bits) << 64 | code[kNumberLow].bits;
  return {static_cast<Int128>(bits), static_cast<int32_t>(code[kNumberExponent].bits)};
}

// A division by zero is not an error; its result is zero.
inline bool ComputeQuotient(Decimal *result, const Decimal &left, const Decimal &right) {
  if (right.coefficient == 0) {
    *result = {};
    return true;
  }
  return DecimalDivide(result, left, right);
}

// False when the result is too large for a number; it is null then.
inline bool Compute(Operation operation, Decimal *result, const Decimal &left,
                    const Decimal &right) {
  switch (operation) {
    case Operation::Add:
      return DecimalAdd(result, left, right);
    case Operation::Subtract:
      return DecimalSubtract(result, left, right);
    case Operation::Multiply:
      return DecimalMultiply(result, left, right);
    default:
      return ComputeQuotient(result, left, right);
  }
}

#endif
