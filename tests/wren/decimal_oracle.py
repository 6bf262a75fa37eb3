"""Prints cases of decimal arithmetic with what the exact decimals of Python make of them:

    <operation> <left> <right> <result>

A number as a result is the bytes of its payload, a double as its own, both in hexadecimal.
"""

import decimal
import itertools
import random
import struct

CASES = 25000  # of each operation
FORM = decimal.Context(prec=26, rounding=decimal.ROUND_HALF_UP, Emin=-103, Emax=152, traps=[])
EXACT = decimal.Context(prec=2000, rounding=decimal.ROUND_HALF_UP, traps=[])
SPECIAL = """0 1 0.5 0.25 2 3 -7 10 0.49 1E-128 5E-128 1E-100 1E25 1E26 1E152 5E126 4.9999E126 1E127
    99999999999999999999999999E127 -99999999999999999999999999E127 99999999999999999999999999
    10000000000000000000000001 99999999999999999999999999E-128 18446744073709551615
    18446744073709551616 2147483647.9 2147483648 -2147483648.9 -2147483649""".split()
TEXTS = """-0 0.000 000000e-5 1. 001 +1 .5 50e-2 5E-1 0.50000000000000000000000000000000000000000000
    -12345e-1 -0.12345E+4 -1234.50 0.1e27 10e25 1E0026 100000000000000000000000000 1e27 1E153
    999999999999999999999999999.9 99999999999999999999999999.4 99999999999999999999999998.5
    +9999999999999999999999999.9e1 0.5e-128 0.49e-128 1.49e-128 10e-129 0.1e-127""".split()
DOUBLES = [-0.0, 1024.0, 5e-324, 1e300, -1e300, float("inf"), float("nan")]
SHAPES = [(1, 18, 0, 0), (1, 9, -4, 0), (18, 21, -24, 0), (1, 26, -128, -100), (1, 26, 100, 127),
          (26, 26, -30, 29), (26, 26, -30, 29)]  # least and most digits, least and most exponent
R = random.Random(20240607)
D = EXACT.create_decimal


def payload(value):
    if not value.is_finite():
        return "null"
    sign, digits, exponent = value.as_tuple()
    c = int("".join(map(str, digits)))
    while exponent < 0 and c % 10 == 0:
        c, exponent = c // 10, exponent + 1
    while exponent > 0 and c < 10 ** 25:
        c, exponent = c * 10, exponent - 1
    head = exponent & 255 | c >> 64 << 8 | (c > 0 and sign) << 31
    return struct.pack("=IQ", head, c & 2 ** 64 - 1).hex()


def digits_of(count):
    return f"{R.randrange(10 ** count):0{count}}"


def signed(text):
    return R.choice(["-", ""]) + text.lstrip("-")


def number():
    kind = R.randrange(9)
    if kind == 0:
        return signed(R.choice(SPECIAL))
    if kind == 1:  # few digits among zeros
        return signed(f"{R.randint(1, 9) * 10 ** R.randint(1, 25) + R.randrange(10)}")
    least, most, low, high = SHAPES[kind - 2]
    return signed(f"{digits_of(R.randint(least, most))}E{R.randint(low, high)}")


def partner(left):
    """Often a number that puts the result at or next to a tie or to a power of ten."""
    kind = R.randrange(4)
    half = R.choice(["5", "49", "51", "4999999999", "5000000001"])
    place = D(left).as_tuple().exponent - len(half) + (R.randrange(8) == 0)
    if kind == 0 and place >= -128:
        return signed(f"{half}E{place}")
    return signed(str(2 ** R.randrange(40))) if kind == 1 else number()


def shift(value, decimals, rounding):
    if abs(decimals) > 1000:
        return value if decimals > 0 else D(0)
    return value.quantize(D((0, (1,), -decimals)), rounding, EXACT)


def truncated(value, precision, decimals):
    cut = decimal.Context(prec=min(max(precision, 1), 300), rounding=decimal.ROUND_DOWN, traps=[])
    return cut.plus(shift(value, decimals, decimal.ROUND_DOWN)) if precision > 0 else D(0)


def long_text():
    """Digits far beyond the form, at times with a tie or almost one after the 26th."""
    text = digits_of(R.randint(1, 45))
    if R.randrange(3) == 0:
        text = "1" + digits_of(25) + R.choice(["5", "4999999999999999999"])
        text += R.choice("09") * R.randrange(40)
    point = R.randint(0, len(text))
    return signed(f"{text[:point]}.{text[point:]}") + R.choice(["", f"e{R.randint(-200, 199)}"])


def random_double():
    bits = R.getrandbits(64)
    return R.choice([struct.unpack("=d", struct.pack("=Q", bits))[0],
                     (bits >> 11) * 2.0 ** R.randint(-90, 9)])


def main():
    pairs = list(itertools.product(SPECIAL, SPECIAL))
    for name, compute in {"add": FORM.add, "sub": FORM.subtract, "mul": FORM.multiply,
                          "div": FORM.divide}.items():
        for left, right in pairs + [(a, partner(a)) for a in (number() for _ in range(CASES))]:
            print(name, left, right, payload(compute(D(left), D(right))))
    for text in TEXTS:
        print("text", text, "-", payload(FORM.create_decimal(text)))
    for value in DOUBLES + [random_double() for _ in range(CASES)]:
        print("fromdouble", value.hex(), "-", payload(FORM.create_decimal(repr(value))))
    for text in SPECIAL + [number() for _ in range(CASES)]:
        value, near = D(text), FORM.add(D(text), D(partner(text)))
        near = near if near.is_finite() else value
        print("cmp", text, near, int(EXACT.compare(value, near)))
        decimals = R.randint(-20, 19) - value.as_tuple().exponent
        if R.randrange(20) == 0:
            decimals = R.choice([-2 ** 31, 1 - 2 ** 31, -400, 400, 2 ** 31 - 1])
        precision = R.choice([300, 300, 300, R.randint(-1, 28)])
        rounded = FORM.plus(shift(value, decimals, decimal.ROUND_HALF_UP))
        print("totext", text, "-", f"{FORM.plus(value).normalize(EXACT) + 0:f}")
        print("round", text, decimals, payload(rounded))
        print(f"truncate {text} {precision},{decimals}",
              payload(FORM.plus(truncated(value, precision, decimals))))
        print("todouble", text, "-", struct.pack("=d", float(value) + 0.0).hex())  # zero has no sign
        small = R.choice([text, signed(f"{digits_of(R.randint(1, 12))}E-{R.randrange(4)}")])
        print("toint", small, "-", max(-2 ** 31, min(2 ** 31 - 1, int(D(small)))))
        whole = R.choice([-2 ** 63, 2 ** 63 - 1, R.getrandbits(63) >> R.randrange(64)])
        print("fromlong", whole, "-", payload(D(whole)))
        print("text", long := long_text(), "-", payload(FORM.create_decimal(long)))


if __name__ == "__main__":
    main()
