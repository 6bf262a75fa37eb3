"""Prints calls of the built-in functions with the results of Python, tab separated:

    <code page> <function> <argument>... <result>

Numbers are n:1.5, dates d:2012-01-31 10:30:15.5, either may be null, and texts t: with their bytes
in hexadecimal. The country settings are those of the United States.
"""

import calendar
import datetime
import decimal
import math
import pathlib
import re
import sys

sys.dont_write_bytecode = True
ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path += [str(ROOT / "tests/wren"), str(ROOT / "scripts")]
from decimal_oracle import D, EXACT, FORM, R, number, shift, signed, truncated  # noqa: E402
from make_case_table import simple_lower, simple_title, simple_upper  # noqa: E402

CASES = 2000  # of each function on dates and texts
PAGES = {1252: "cp1252", 932: "cp932", 65001: "utf-8"}


def case(page, name, kinds, *values):
    fields = [str(page), name]
    for kind, value in zip(kinds, values, strict=True):
        if kind == "t":
            value = value.encode(PAGES[page]).hex()
        elif value is None or kind == "n" and not D(value).is_finite():
            value = "null"
        fields.append(f"{kind}:{value}")
    print("\t".join(fields))


def whole(value):
    """A count: cut toward zero, saturated to 32 bits, 0 for null."""
    return 0 if value is None else max(-2 ** 31, min(2 ** 31 - 1, int(value)))


def maybe(value):
    return None if R.randrange(20) == 0 else value


def chosen(selector, *values):
    return values[1 if selector is None else int(selector.compare(0)) + 1]


def within(text, page=1252):
    """The text of a number or date, which has at most 99 bytes."""
    return text if len(text.encode(PAGES[page])) < 100 else ""


# ---- Dates ----

# Elements of pictures as strftime writes them, whose names are English whatever the locale is.
FIELDS = {"yy": "%y", "MMMM": "%B", "MMM": "%b", "mmm": "%b", "MM": "%m", "dddd": "%A", "ddd": "%a",
          "DD": "%d", "HH:mm": "%H:%M", "hh.mm AM/PM": "%I.%M %p", "mm'm' ss": "%Mm %S",
          "s.ffffff": "{d.second}.%f", "yyyy": "{d.year:04}", "M": "{d.month}", "d": "{d.day}",
          "H": "{d.hour}"}
BETWEEN = {"7": "7", "'T'": "T", "\\T\\'": "T'", '"a/p;"': "a/p;", "'o''clock'": "o'clock"}
OWN = {1252: "é", 932: "年ソ", 65001: "年😀"}
OF_ONE_DATE = {
    "DateYear": lambda d: d.year, "DateMonth": lambda d: d.month, "DateDay": lambda d: d.day,
    "DateHour": lambda d: d.hour, "DateMinute": lambda d: d.minute,
    "DateSecond": lambda d: d.second, "DateQuarter": lambda d: (d.month + 2) // 3,
    "WeekDay": lambda d: (d.isoweekday() + 1) % 7,
    "DateMonthBegin": lambda d: datetime.datetime(d.year, d.month, 1),
    "DateMonthEnd": lambda d: datetime.datetime(d.year, d.month, days_in(d)),
}


def days_in(d):
    return calendar.monthrange(d.year, d.month)[1]


def moment():
    time = [R.randrange(24), R.randrange(60), R.randrange(60), R.choice([0, R.randrange(10 ** 6)])]
    first = datetime.datetime(R.choice([R.randint(1, 9999), R.randint(1900, 2100)]),
                              R.randint(1, 12), 1, *R.choice([time, time, [0, 0, 0, 0]]))
    return first.replace(day=R.choice([1, R.randint(1, 28), days_in(first)]))


def or_null(compute, *args):
    try:
        return compute(*args)
    except (ValueError, OverflowError):  # beyond the calendar, or no real number
        return None


def constructed(year, month, day, *time):
    first = datetime.datetime(year, month, 1, *time)
    return first.replace(day=min(day, days_in(first))) if day < 32 else None


def default_text(d):
    time = f"{d:%I:%M:%S}" + f".{d:%f}".rstrip("0").rstrip(".") + f"{d: %p}"
    return f"{d:%m/%d}/{d.year:04}" + (" " + time if d.time() != datetime.time() else "")


def date_picture(d, page):
    picture = text = ""
    for _ in range(R.randint(1, 6)):
        field, literal = R.choice(list(FIELDS)), R.choice([*BETWEEN, *" /-.,", OWN[page]])
        picture += field + literal
        text += d.strftime(FIELDS[field].format(d=d)) + BETWEEN.get(literal, literal)
    bad = R.choice(["x", "yyy", "'", "\\"]) if R.randrange(10) == 0 else ""
    return picture + bad, "" if bad else within(text, page)


def date_text():
    """A text as people write a date, with the date that it means; sometimes one that is not a date."""
    d = moment().replace(microsecond=0)
    name, year = R.choice([f"{d:%B}", f"{d:%b}".lower()]), f"{d.year:04}"
    date = R.choice([f"{d.month}/{d.day}/{year}", f"{year}-{d:%m-%d}", f"{d.day}-{name}-{year}",
                     f"{name} {d.day}, {year}", f"{d.day} {name} {year[-2:]}"])
    if date.endswith(" " + year[-2:]):
        d = d.replace(year=(d.year + 50) % 100 + 1950)
    time = R.choice([f"{d: %H:%M:%S}", f"{d:T%H:%M:%S.00}", f"{d:  %I:%M:%S%p}"])
    bad = R.choice([" x", "/", " 99:99", ", 1", "$"]) if R.randrange(10) == 0 else ""
    return date + time + bad, None if bad else d


def date_cases(page):
    d = moment()
    for name, compute in OF_ONE_DATE.items():
        value = maybe(d)
        case(page, name, "dd" if name.endswith(("Begin", "End")) else "dn",
             value, value and compute(value))
    days = maybe(D(signed(R.choice([f"{R.randrange(10 ** R.randint(1, 7))}.9", "1E100"]))))
    case(page, "DateAddDay", "dnd", d, days,
         or_null(lambda: d + datetime.timedelta(days=whole(days))))
    fields = [D(R.randint(*bounds)) for bounds in
              ((1, 9999), (1, 12), (1, 31), (0, 23), (0, 59), (0, 59))]
    if R.randrange(2):
        odd = "0 -1 0.9 12.9 13 31.5 32 24 60 10000 1E99 -1E99".split()
        fields[R.randrange(6)] = maybe(D(R.choice(odd)))
    case(page, "DateConstruct", "nnnnnnd", *fields, or_null(constructed, *map(whole, fields)))
    selection = maybe(D(signed(R.choice(["0", "1", "1E-128"])))), *(maybe(moment()) for _ in "abc")
    case(page, "DateIFF", "ndddd", *selection, chosen(*selection))
    case(page, "DateToStr", "dt", d, default_text(d))
    case(page, "DateToStrPicture", "dtt", d, *date_picture(d, page))
    case(page, "StrToDate", "td", *date_text())


# ---- Numbers ----

AFFIXES = {"": "", "$": "$", "'No. '": "No. ", '"0#"': "0#", "\\x": "x", "- ": "- ", "+": "+"}
INTEGERS = ["0", "#", "#,##0", "000", "#,###", "0##", "##0", "0,000"]
FRACTIONS = ["", ".0", ".00", ".##", ".0#", ".#0", ".######"]
BLANKS = {1252: " \xa0", 932: " ", 65001: " \xa0\u202f"}


def amount():
    return D(R.choice([number(), signed(f"{R.randrange(10 ** R.randint(1, 9))}E-{R.randrange(5)}")]))


def plain(value):
    return EXACT.normalize(value) or D(0)  # as few digits as there are, and no minus zero


def rounded(value, decimals):
    return FORM.plus(shift(value, decimals, decimal.ROUND_HALF_UP)) or D(0)


def fixed(value, decimals):
    if decimals > 99 or not (result := rounded(value, decimals)).is_finite():
        return ""
    return within(f"{result:.{max(decimals, 0)}f}")


def currency(value):
    text = fixed(value, 2) and f"${abs(rounded(value, 2)):,.2f}"
    return within(f"({text})" if text and rounded(value, 2) < 0 else text)


def section(page):
    """Prefix, integer places, fraction places and suffix of a picture's section."""
    prefix, suffix = (R.choice([*AFFIXES, OWN[page]]) for _ in "ab")
    return prefix, R.choice(INTEGERS), R.choice(FRACTIONS), suffix + R.choice(["", "", "%"])


def write_section(value, prefix, places, fraction, suffix):
    digits, _, decimals = f"{abs(value):.{max(len(fraction) - 1, 0)}f}".partition(".")
    digits = digits.lstrip("0").zfill(len(places.replace(",", "").lstrip("#"))) if places else ""
    if "," in places:
        digits = re.sub(r"(?<=\d)(?=(\d{3})+$)", ",", digits)
    decimals = decimals.rstrip("0").ljust(len(fraction.rstrip("#")) - 1, "0")
    end = suffix.rstrip("%")
    return (AFFIXES.get(prefix, prefix) + digits + ("." if decimals else "") + decimals +
            AFFIXES.get(end, end) + suffix[len(end):])


def number_picture(value, page):
    sections = [section(page)]
    for _ in range(R.randrange(3)):
        sections.append(R.choice([section(page), ("", "", "", ""), ("'No. '", "", "", "")]))
    picture = ";".join("".join(part) for part in sections)
    if R.randrange(10) == 0:
        return picture + R.choice(["x", "5", "'", "\\", ";;;", ";.", ";#,", ";0,.0", "%%"]), ""
    taken = 1 if value < 0 and len(sections) > 1 else 0
    _, places, fraction, suffix = sections[taken]
    scale = 2 * suffix.count("%")
    if places:
        value = rounded(value, max(len(fraction) - 1, 0) + scale)
    if not value.is_finite():
        return picture, ""
    if value == 0:
        taken = 2 if len(sections) == 3 else 0
    sign = "-" if value < 0 and taken == 0 else ""
    return picture, within(sign + write_section(EXACT.scaleb(value, scale), *sections[taken]), page)


def power(base, exponent):
    """In doubles. Python passes them to the system's pow, which the functions use too, so the
    doubles must agree to the last bit; the way there and back is what is compared."""
    result = math.pow(float(base) + 0.0, float(exponent) + 0.0)  # zero has no sign
    return FORM.create_decimal(repr(result))


def number_text(page):
    pieces = ["1", "23", "456", "1,234", ",", ".", "-", "+", "$", "(", ")", *BLANKS[page], "e", "%"]
    value = R.choice([plain(amount()), FORM.create_decimal(R.randrange(10 ** 6)).scaleb(-2)])
    text = R.choice([f"{value:,f}", f"{value:f}", currency(value), f"{value:.30f}", "".join(
        R.choice(pieces) for _ in range(R.randrange(8)))])
    at = R.choice([0, len(text), R.randint(0, len(text))])
    return text[:at] + R.choice(["", "", *pieces]) + text[at:]


def read_number(text, page):
    """Signs, currency sign and blanks around digits whose groups are all there or all absent."""
    around = rf"{BLANKS[page]}+$\-"
    found = re.fullmatch(rf"([{around}(]*)(\d{{1,3}}(?:,\d{{3}})+|\d*)(?:\.(\d*))?([{around})]*)",
                         text, re.ASCII)
    if not found or not found[2] + (found[3] or ""):
        return D(0)
    marks = found[1] + found[4]
    signs = [mark for mark in marks if mark in "+-("]
    if len(signs) > 1 or marks.count("$") > 1 or marks.count("(") != marks.count(")"):
        return D(0)
    value = FORM.create_decimal(f"{found[2].replace(',', '')}.{found[3] or ''}")
    return (-value if signs and signs[0] in "-(" else value) if value.is_finite() else D(0)


def number_cases(page):
    a, b, n = amount(), R.choice([D(R.randint(-9, 9)), amount()]), maybe(R.choice([
        D(R.randint(-4, 8)), D("1.9"), D("-0.5"), D(R.choice(["1E99", "-1E99", "97", "98"]))]))
    case(page, "NumberAbsolute", "nn", a, abs(a))
    left, right = whole(a), whole(b)
    case(page, "NumberMod", "nnn", a, b,
         int(math.copysign(abs(left) % abs(right), left)) if right else None)
    n = R.choice([n, D(R.randint(-20, 19) - a.as_tuple().exponent)])
    case(page, "NumberRound", "nnn", a, n, rounded(a, whole(n)))
    case(page, "NumberTruncate", "nnn", a, n, FORM.plus(truncated(a, 300, whole(n))))
    selection = maybe(D(signed(R.choice(["0", "0.5", "1E-128", "7E127"])))), a, b, maybe(amount())
    case(page, "NumberIFF", "nnnnn", *selection, chosen(*selection))
    base = R.choice([D(R.randint(-20, 20)), D(R.randint(-50, 50)).scaleb(-1), a])
    raised = R.choice([D(R.randint(-30, 30)), D(R.choice(["0.5", "-0.5", "1.5"])), b])
    case(page, "Power", "nnn", base, raised, or_null(power, base, raised))
    case(page, "NumberToStr", "nnt", a, n, fixed(a, whole(n)))
    case(page, "NumberToStrPicture", "ntt", a, *number_picture(a, page))
    case(page, "NumberToCurrency", "nt", a, currency(a))
    case(page, "NumberCountryFmt", "nt", a, within(f"{plain(a):,f}"))
    text = number_text(page)
    case(page, "StrToNumber", "tn", text, read_number(text, page))


# ---- Texts ----

# Letters that have case among others; in 932 also some whose second byte is \ or | or a letter.
LETTERS = {1252: [(0x80, 0x17F), (0x192, 0x193)],
           932: [(0x391, 0x3CA), (0x410, 0x452), (0x3041, 0x3097), (0x30A1, 0x30FC),
                 (0xFF21, 0xFF5B), (0xFF66, 0xFF9E), (0x8868, 0x8869), (0x82B8, 0x82B9)],
           65001: [(0xA1, 0x250), (0x370, 0x400), (0x400, 0x530), (0x10A0, 0x1100), (0x1E00, 0x1F00),
                   (0x3041, 0x3097), (0x10400, 0x10450)]}
SIGNS = {1252: "—€«×·²", 932: "　。「×", 65001: "—€×·⁹₂。😀"}
ALPHABET = {page: [char for first, end in ranges for char in map(chr, range(first, end))
                   if char.isalpha() and char.encode(PAGES[page], "ignore")] + [*SIGNS[page]] * 5
            for page, ranges in LETTERS.items()}


def text_of(page, most=24):
    everywhere = "abcXYZabcXYZ019  ,,'’-|_.\\\t"
    return "".join(R.choice(everywhere if R.randrange(2) else ALPHABET[page])
                   for _ in range(R.randint(0, R.choice([3, most]))))


def list_of(page):
    return ",".join(text_of(page, 5) for _ in range(R.randrange(5)))


def mapped(function, text, page):
    """The case of characters that keep their count of bytes."""
    def one(char):
        new = function(char).encode(PAGES[page], "replace")
        return function(char) if len(new) == len(char.encode(PAGES[page])) and new != b"?" else char
    return "".join(map(one, text))


def proper(text, page):
    return re.sub(r"[^\W_]+(?:['’·][^\W_]+)*", lambda word: mapped(
        simple_title, word[0][0], page) + mapped(simple_lower, word[0][1:], page), text)


def count(most):
    return maybe(R.choice([D(R.randint(0, most)), D(R.randint(0, most)) + D("0.9"),
                           D(R.choice(["1", "-1", "-0.5", "-1E30"]))]))


def cut_cases(page, text):
    n, p = (R.choice([count(12), count(12), D("1E99"), D("2147483648")]) for _ in "np")
    size = max(whole(n), 0)
    case(page, "StrLeft", "tnt", text, n, text[:size])
    case(page, "StrRight", "tnt", text, n, text[max(len(text) - size, 0):])
    case(page, "StrMid", "tnnt", text, p, n, text[whole(p):][:size] if whole(p) >= 0 else "")
    case(page, "StrTrim", "tt", text, text.strip(" "))
    case(page, "StrRTrim", "tt", text, text.rstrip(" "))
    case(page, "StrLTrim", "tt", text, text.lstrip(" "))
    # The limits are counted in bytes, and that of the replaced part follows from the replacement.
    other = text_of(page, 6)
    at = min(max(whole(p), 0), len(text.encode(PAGES[page])))
    replaced = min(size, len(other.encode(PAGES[page])))
    case(page, "StrReplace", "tnntt", text, p, n, other, text[:at] + other + text[at + replaced:])


def string_cases(page):
    text, short, values, n = text_of(page), text_of(page, 12), list_of(page), count(5)
    cut_cases(page, " " * R.randrange(4) + text + " " * R.randrange(4))
    case(page, "StrLength", "tn", text, len(text))
    case(page, "StrRepeat", "tnt", short, n, short * whole(n))
    fields = values.split(",")
    case(page, "StrCase", "ntt", n, values, dict(enumerate(fields)).get(whole(n), ""))
    keys = list_of(page)
    key = R.choice(keys.split(",") + [short])
    place = keys.split(",").index(key) if key in keys.split(",") else len(fields)
    case(page, "StrTranslate", "tttt", key, keys, values, (fields + [""] * 5)[place])
    n = count(110)
    case(page, "StrPad", "tnt", text, n, text[:max(whole(n), 0)].ljust(whole(n)))
    case(page, "StrSpaces", "nt", n, " " * whole(n))
    left, right = ("".join(R.choice("aAbB019") for _ in range(R.randrange(5))) for _ in "ab")
    order = [(t.lower(), t.swapcase()) for t in (left, right)]  # small letters before capitals
    case(page, "StrCompare", "ttn", left, right, (order[0] > order[1]) - (order[0] < order[1]))
    selection = maybe(D(signed(R.choice(["0", "0.5", "8"])))), text, short, values
    case(page, "StrIFF", "ntttt", *selection, chosen(*selection))
    case(page, "StrProper", "tt", text, proper(text, page))
    case(page, "StrUpper", "tt", text, mapped(simple_upper, text, page))
    case(page, "StrLower", "tt", text, mapped(simple_lower, text, page))
    start = R.randint(0, len(text))
    pattern = R.choice([text[start:start + R.randrange(4)], text_of(page, 2)])
    case(page, "StrScan", "ttn", text, pattern, text.find(pattern))


def main():
    for index in range(CASES * 3 // 2):
        page = R.choice(list(PAGES))
        number_cases(page)
        if index < CASES:
            date_cases(page)
            string_cases(page)


if __name__ == "__main__":
    main()
