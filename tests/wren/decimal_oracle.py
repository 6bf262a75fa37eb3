"""Checks results of the decimal arithmetic against the exact decimals of Python.

The only argument names a file with one case a line:

    <operation> <operand> <operand> <result>

Numbers stand as <coefficient>E<exponent>, the null value as "null", doubles in hexadecimal. Prints
the first wrong lines and the count of cases of each operation, and exits with 1 if one is wrong.
"""

import collections
import decimal
import sys

DIGITS, LOWEST, HIGHEST = 26, -128, 127
FORM = decimal.Context(prec=DIGITS, rounding=decimal.ROUND_HALF_UP, Emin=LOWEST + DIGITS - 1,
                       Emax=HIGHEST + DIGITS - 1, traps=[])
EXACT = decimal.Context(prec=2000, rounding=decimal.ROUND_HALF_UP, traps=[])


def canonical(value):
    """The text of the one form that a value has."""
    if not value.is_finite():
        return "null"
    sign, digits, exponent = value.as_tuple()
    coefficient = int("".join(map(str, digits)))
    if coefficient == 0:
        return "0E0"
    while exponent < 0 and coefficient % 10 == 0:
        coefficient //= 10
        exponent += 1
    while exponent > 0 and coefficient * 10 < 10 ** DIGITS:
        coefficient *= 10
        exponent -= 1
    return f"{'-' if sign else ''}{coefficient}E{exponent}"


def number(text):
    return EXACT.create_decimal(text)


def shift(value, decimals, rounding):
    if decimals > 1000:
        return value
    if decimals < -1000:
        return decimal.Decimal(0)
    return value.quantize(decimal.Decimal((0, (1,), -decimals)), rounding, EXACT)


def rounded(value, decimals):
    return FORM.plus(shift(value, int(decimals), decimal.ROUND_HALF_UP))


def truncated(value, argument):
    precision, decimals = map(int, argument.split(","))
    if precision <= 0:
        return decimal.Decimal(0)
    cut = decimal.Context(prec=min(precision, 300), rounding=decimal.ROUND_DOWN, traps=[])
    return FORM.plus(cut.plus(shift(value, decimals, decimal.ROUND_DOWN)))


def integer(value):
    return str(max(-2 ** 31, min(2 ** 31 - 1, int(value))))


EXPECTED = {
    "add": lambda a, b: canonical(FORM.add(number(a), number(b))),
    "sub": lambda a, b: canonical(FORM.subtract(number(a), number(b))),
    "mul": lambda a, b: canonical(FORM.multiply(number(a), number(b))),
    "div": lambda a, b: canonical(FORM.divide(number(a), number(b))) if number(b) else "null",
    "cmp": lambda a, b: str(int(EXACT.compare(number(a), number(b)))),
    "round": lambda a, b: canonical(rounded(number(a), b)),
    "truncate": lambda a, b: canonical(truncated(number(a), b)),
    "text": lambda a, b: canonical(FORM.create_decimal(a)),
    "toint": lambda a, b: integer(number(a)),
    "todouble": lambda a, b: (float(number(a)) + 0.0).hex(),  # zero has no sign
    "fromdouble": lambda a, b: canonical(FORM.create_decimal(repr(float.fromhex(a)))),
}


def main():
    counts, wrong = collections.Counter(), 0
    with open(sys.argv[1], encoding="ascii") as cases:
        for line in cases:
            operation, left, right, result = line.split()
            expected = EXPECTED[operation](left, right)
            if operation == "todouble":
                result = float.fromhex(result).hex()
            counts[operation] += 1
            if result != expected:
                wrong += 1
                if wrong <= 20:
                    print(f"WRONG {operation} {left} {right}: {result}, expected {expected}")
    for operation in EXPECTED:
        print("count", operation, counts[operation])
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
