"""What orli suggests below the message for a wrong formula: a row for each rule of its table."""

import support

DATA = 'price,temp_max,"wind speed",day,name,sold,Total\n1,2,3,4,x,2024-01-31,5\n'
FORMULAS = "net=price * 2\nfew=1, 2\n"

COMPARE = ("there are no comparisons: NumberIFF, StrIFF and DateIFF choose by a sign, as in NumberIFF(a - b, 1, 2, 3), "
           "which is 1 if a is less than b, 2 if they are equal, else 3")
POWER = "write Power(a, b) for a to the power of b"
OUT = "write the number out: 1000 for 1e3 (an exponent has one digit before a point, and a sign: 1.0e+3)"
AND = "AND joins the two ends of a range, once and outside of parentheses; conditions are made of NumberIFF"
TEXTS = "NumberToStr(n, 2) and DateToStr(d) make texts of numbers and dates"
NOT_CLOSED = "the text that begins with ' is not closed; a quote in a text is written twice: 'it''s'"
QUOTED = 'names that are not plain stand in double quotes: "wind speed"'

ROWS = (
    ('day + 1', 'day is a unit word of dates: write `"day"` for a column of that name'),
    ('price + day', 'day is a unit word of dates: write `"day"` for a column of that name'),
    ('hour', 'hour is a unit word of dates: write `"hour"` for a column of that name'),
    ('temp_mx', 'did you mean `temp_max`?'),
    ('Price', 'did you mean `price`?'),
    ('tempmax + 1', 'did you mean `temp_max`?'),
    ('strleft(name, 2)', 'did you mean `StrLeft`?'),
    ('StrLef(name, 2)', 'did you mean `StrLeft`?'),
    ('ucase(name)', 'did you mean `UCASE`?'),
    ('nett()', 'did you mean `net`?'),
    ('net', 'a formula is called with parentheses: write `net()`'),
    ('StrLength', 'a function has its arguments in parentheses: `StrLength(...)`'),
    ('price(2)', 'a column has no parentheses: write `price`'),
    ('net(1)', 'a formula takes no arguments: write `name()`'),
    ('-price', 'only numbers take a sign: write `0 - price`'),
    ('2 * -price', 'only numbers take a sign: write `0 - price`'),
    ('-(price + 1)', 'only numbers take a sign: write `0 - (...)`'),
    ('+price', 'there is no plus sign before a value: leave it out'),
    ('+5', 'there is no plus sign before a value: leave it out'),
    ('price > 3', COMPARE),
    ('price = 3', COMPARE),
    ('price != 3', COMPARE),
    ('IF(price, 1, 2)', COMPARE),
    ('CASE WHEN price THEN 1', COMPARE),
    ("name & 'x'", 'texts are joined by ||'),
    ('price ^ 2', POWER),
    ('price ** 2', POWER),
    ('price % 2', 'write NumberMod(a, b) for the remainder of a division'),
    ("name IN ('a', 'b')",
     'IN is not in the language: a set is written \'a\', \'b\' alone, as in --where "name=\'a\', \'b\'"; StrTranslate looks a text up in a list'),
    ('price AND 2 AND 3', AND),
    ('price OR 2', 'OR is not in the language: conditions are made of NumberIFF, StrIFF and DateIFF'),
    ('NOT price', 'NOT is not in the language: conditions are made of NumberIFF, StrIFF and DateIFF'),
    ('(price AND 2)', AND),
    ("'abc", NOT_CLOSED),
    ("name || 'it's'", NOT_CLOSED),
    ('"name', 'the name that begins here is not closed: a second " is missing'),
    ('`name', 'the name that begins here is not closed: a second ` is missing'),
    ('1e3', OUT),
    ('1.5e3 + price', OUT),
    ('12E+3', OUT),
    ('wind speed * 2', 'write `"wind speed"`, with its quotes'),
    ('"wind sped"', 'did you mean `"wind speed"`?'),
    ('"rain"', "a text stands in single quotes: 'rain'"),
    ('‘rain’', '‘ is not a plain quote: texts stand in \', names in "'),
    ('name || “rain”', '“ is not a plain quote: texts stand in \', names in "'),
    ('NOW()', 'formulas have no clock: write the date, as in 2024-01-31'),
    ('@NOW', 'formulas have no clock: write the date, as in 2024-01-31'),
    ('NULL',
     "there is no word for an empty value: StrToDate('') is an empty Date, NumberMod(0, 0) an empty Number, '' the empty text"),
    ('TRUE', 'there is no type for true and false: use 1 and 0'),
    ('MAX(price, 2)', 'the larger of two is NumberIFF(a - b, b, a, a), the smaller NumberIFF(a - b, a, a, b)'),
    ('sum(price)', 'a formula sees one row; `orli report` computes figures of many'),
    ('[price]', QUOTED),
    ('price; 2', 'arguments are parted by commas'),
    ('$5', 'amounts are written without a currency sign'),
    ('price ? 1 : 2', 'there are no comparisons: NumberIFF, StrIFF and DateIFF choose by the sign of a number'),
    ("name | 'x'", 'texts are joined by ||'),
    ("'a' || 5", TEXTS),
    ("'a' + 'b'", 'texts are joined by ||; StrToNumber(s) makes a number of a text'),
    ('name + price', 'texts are joined by ||; StrToNumber(s) makes a number of a text'),
    ("5 || 'a'", 'only texts are joined by ||; NumberToStr(n, 2) makes a text of a number'),
    ('2 * sold',
     'what follows a number is a number too: StrToNumber(s) makes one of a text; a date to be moved comes first, date + 7 DAYS'),
    ('sold * 2', 'a Date takes + and - alone: date + 7 DAYS, or date - date for the days between two'),
    ('StrLength(price)', TEXTS),
    ('DateYear(name)', 'StrToDate(s) makes a date of a text'),
    ('NumberRound(name, 2)', 'StrToNumber(s) makes a number of a text'),
    ('StrLeft(name)', '`orli functions StrLeft` tells the arguments'),
    ('few()', "a range or set stands alone; --where takes it: --where 'column=name'"),
    ('price + 3 DAYS', 'a unit word moves a Date by a Number: date + 7 DAYS'),
    ('rain', "no column has this name; a text stands in single quotes: 'rain'"),
    ('price +', 'a value is missing at the end'),
    ('', 'a value is missing at the end'),
    ('StrLeft(name 2)', 'an operator or a comma is missing before `2`'),
    ('StrLeft(name, 2', 'a ) is missing'),
    ('price)', 'a ( is missing before this )'),
    ('nam', 'did you mean `name`?'),
    ('Net()', 'did you mean `net`?'),
    ('total', 'did you mean `Total`?'),
    ('price /* c */', 'there are no comments in formulas'),
    ("'a' 'b'", "an operator or a comma is missing before `'b'`"),
)


class Hints(support.FolderCase):
    def test_hints(self):
        data, formulas = self.file(DATA), self.file(FORMULAS, "formulas.txt")
        for text, hint in ROWS:
            with self.subTest(text=text):
                status, output, _ = support.run("check", data, "--formulas", formulas, "--", text)
                *message, last = output.decode().splitlines()
                self.assertEqual((status, last), (1, f"hint: {hint}"))
                # What the engine says stays above, with the place.
                self.assertRegex("\n".join(message), r"^ERR_[A-Z]+ ?: .*\n  .*\n *\^+$")

    def test_nothing_is_suggested_for_what_is_right(self):
        data = self.file(DATA)
        for text in ("2 - 1.5", '"day" + 1', "sold + 1 DAY", "price, 1", "name || 'a & b'"):
            self.assertEqual(support.run("check", data, text)[0], 0, text)


if __name__ == "__main__":
    support.main()
