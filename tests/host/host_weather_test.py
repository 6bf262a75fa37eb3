"""Formulas and the demo's report over data/weather.csv beside the same sums done by Python."""

import csv
import datetime
import decimal
import io
import itertools
import os
import re
import subprocess

import support

# Quotients are rounded at the last digit of a number; the comparison allows two units there.
DIGITS = 26


def date_of(row):
    return datetime.date.fromisoformat(row["date"])


def number(name):
    return lambda row: decimal.Decimal(row[name])


PRECIPITATION, HIGH, LOW, WIND = map(number, ("precipitation", "temp_max", "temp_min", "wind"))


def month_end(day):
    following = day.replace(day=28) + datetime.timedelta(days=4)
    return following - datetime.timedelta(days=following.day)


def add_months(day, count):
    months = day.year * 12 + day.month - 1 + count
    first = datetime.date(months // 12, months % 12 + 1, 1)
    return first.replace(day=min(day.day, month_end(first).day))


# Name, formula, and the value in Python for a row: a Decimal, a date or a string.
FORMULAS = (
    ("sum", "temp_max + temp_min - wind * precipitation",
     lambda row: HIGH(row) + LOW(row) - WIND(row) * PRECIPITATION(row)),
    ("mean", "(temp_max + temp_min) / 2", lambda row: (HIGH(row) + LOW(row)) / 2),
    ("fahrenheit", "mean() * 9 / 5 + 32", lambda row: (HIGH(row) + LOW(row)) / 2 * 9 / 5 + 32),
    ("third", "precipitation / 3 / 7", lambda row: PRECIPITATION(row) / 3 / 7),
    ("ratio", "temp_max / wind", lambda row: HIGH(row) / WIND(row)),
    ("through_zero", "temp_max / (wind - wind)", lambda row: decimal.Decimal(0)),
    ("year_of", "DateYear(date)", lambda row: decimal.Decimal(date_of(row).year)),
    ("month_of", "DateMonth(date)", lambda row: decimal.Decimal(date_of(row).month)),
    ("quarter", "DateQuarter(date)", lambda row: decimal.Decimal((date_of(row).month + 2) // 3)),
    # 0 is Saturday; Python's weeks begin on Monday with 0.
    ("weekday", "WeekDay(date)", lambda row: decimal.Decimal((date_of(row).weekday() + 2) % 7)),
    ("in_three_days", "date + 3 DAYS", lambda row: date_of(row) + datetime.timedelta(days=3)),
    ("added", "DateAddDay(date, 0 - 400)", lambda row: date_of(row) - datetime.timedelta(days=400)),
    ("in_a_month", "date + 1 MONTH", lambda row: add_months(date_of(row), 1)),
    ("month_end", "DateMonthEnd(date)", lambda row: month_end(date_of(row))),
    ("left_of_month", "DateMonthEnd(date) - date",
     lambda row: decimal.Decimal((month_end(date_of(row)) - date_of(row)).days)),
    ("noon", "date + 12 HOURS", lambda row: f"{row['date']} 12:00:00"),
    ("label", "weather || ', it''s ' || DateToStrPicture(date, 'yyyy/MM/dd')",
     lambda row: f"{row['weather']}, it's {row['date'].replace('-', '/')}"),
    ("title", "StrProper(weather) || StrRepeat('!', precipitation) || StrRight(weather, wind)",
     lambda row: row["weather"].title() + "!" * int(PRECIPITATION(row))
     + row["weather"][-int(WIND(row)) or len(row["weather"]):]),
    ("middle", "StrPad(StrUpper(StrMid(weather, 1, temp_max / 10)), 3) || '.'",
     lambda row: row["weather"].upper()[1:1 + max(0, int(HIGH(row) / 10))][:3].ljust(3) + "."),
    ("found", "StrScan(weather, 'n') * 100 + StrLength(StrTrim(' ' || weather || ' '))",
     lambda row: decimal.Decimal(row["weather"].find("n") * 100 + len(row["weather"]))),
    ("sky", "StrTranslate(weather, 'rain,snow,sun', 'wet,white,dry') || StrCase(DateQuarter(date), 'x,I,II')",
     lambda row: {"rain": "wet", "snow": "white", "sun": "dry"}.get(row["weather"], "")
     + ("x", "I", "II", "", "")[(date_of(row).month + 2) // 3]),
    ("rounded", "NumberRound(temp_max * wind, 1) + NumberTruncate(temp_min / 3, 0)",
     lambda row: rounded(HIGH(row) * WIND(row), "0.1")
     + (LOW(row) / 3).quantize(1, decimal.ROUND_DOWN)),
    ("money", "NumberToStrPicture(temp_min * 1000, '#,##0.00')",
     lambda row: f"{LOW(row) * 1000:,.2f}"),
    ("frost", "NumberIFF(temp_min, NumberAbsolute(temp_min), 0, NumberMod(temp_max, 7)) + StrToNumber('1,000')",
     lambda row: (-LOW(row) if LOW(row) < 0 else decimal.Decimal(int(HIGH(row)) % 7 if LOW(row) else 0))
     + 1000),
    ("later", "DateIFF(wind - 3, date, date, date + 1 YEAR)",
     lambda row: add_months(date_of(row), 12 if WIND(row) > 3 else 0)),
)


def rounded(value, unit):
    return value.quantize(decimal.Decimal(unit), decimal.ROUND_HALF_UP)


def figures_of_month(rows):
    """The report's results for the rows of one month, and their output."""
    rain, count = sum(map(PRECIPITATION, rows)) / 4, len(rows)
    dry = decimal.Decimal(sum(PRECIPITATION(row) == 0 for row in rows)) / count
    mean = sum((HIGH(row) + LOW(row)) / 2 for row in rows) / count
    low, high = min(map(LOW, rows)), max(map(HIGH, rows))
    frost = max((date_of(row) for row in rows if LOW(row) < 0), default="")
    day = date_of(rows[0])
    figures = (decimal.Decimal(day.month), rain, dry, mean, low, high, frost)
    feels = ("Cold", "Cool", "Mild", "Warm")[int(mean / 6)]
    feels += " and " + ("dry" if dry > decimal.Decimal("0.5") else "wet")
    cells = (f"{day:%B}", str(rounded(rain, "1")), "=" * int(rain / 10),
             str(rounded(dry * 100, "1")) + "%", str(rounded(mean, "0.1")),
             f"{rounded(low, '1')} to {rounded(high, '1')}",
             f"{frost.day} {frost:%b %Y}" if frost else "", feels)
    return figures, cells


def same(cell, expected):
    if isinstance(expected, decimal.Decimal):
        value = decimal.Decimal(cell)
        return abs(value - expected) <= abs(expected) * decimal.Decimal(2).scaleb(1 - DIGITS)
    return cell == str(expected)


class Weather(support.FolderCase):
    def setUp(self):
        super().setUp()
        decimal.getcontext().prec = 40
        with open(support.WEATHER, encoding="utf-8", newline="") as file:
            self.rows = list(csv.DictReader(file))
        self.assertEqual(len(self.rows), 1461)

    def test_report_of_the_demo_is_what_python_computes(self):
        self.rows.sort(key=lambda row: date_of(row).month)
        months = [figures_of_month(list(rows)) for _, rows in
                  itertools.groupby(self.rows, key=lambda row: date_of(row).month)]
        environment = dict(support.ENVIRONMENT, PATH=f"{support.ORLI.parent}:{os.environ['PATH']}")
        demo = subprocess.check_output([support.ROOT / "scripts/demo.sh", support.ORLI], text=True,
                                       env=environment)
        # The line as it was typed: what groups the rows, a pipe, what shows the groups.
        command, shown = re.search(r"\n\$ (orli report .*?) \|\n.*?\n(month .*)", demo, re.DOTALL).groups()
        output = subprocess.check_output(command, shell=True, text=True, env=environment,
                                         cwd=support.ROOT, stderr=subprocess.DEVNULL)
        _, *groups = csv.reader(io.StringIO(output, newline=""))
        _, rule, *lines = shown.splitlines()
        self.assertEqual((len(groups), len(lines[:-1])), (12, 12), shown)
        spans = [match.span() for match in re.finditer("-+", rule)]
        for (figures, cells), group, line in zip(months, groups, lines):
            self.assertTrue(len(figures) == len(group) and all(map(same, group, figures)),
                            f"{group}, not {figures}")
            self.assertEqual([line[start:end].strip() for start, end in spans], list(cells), line)

    def test_every_row_is_what_python_computes(self):
        rows = self.rows
        arguments = []
        for name, text, _ in FORMULAS:
            arguments += ["--formula", f"{name}={text}"]
        status, output, errors = support.run("eval", support.WEATHER, "--format", "csv", *arguments)
        self.assertEqual(status, 0, errors)
        computed = list(csv.DictReader(io.StringIO(output.decode(), newline="")))
        self.assertEqual(len(computed), len(rows))
        for index, (row, cells) in enumerate(zip(rows, computed)):
            for name, text, oracle in FORMULAS:
                expected = oracle(row)
                self.assertTrue(same(cells[name], expected),
                                f"row {index + 1}: {text}: {cells[name]}, not {expected}")


if __name__ == "__main__":
    support.main()
