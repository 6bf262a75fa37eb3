"""Formulas over all rows of data/weather.csv beside the same sums done by Python."""

import csv
import datetime
import decimal
import io

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


# Name, formula, and what Python makes of a row: a Decimal, a date or a text.
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
)


def same(cell, expected):
    if isinstance(expected, decimal.Decimal):
        value = decimal.Decimal(cell)
        return abs(value - expected) <= abs(expected) * decimal.Decimal(2).scaleb(1 - DIGITS)
    return cell == str(expected)


class Weather(support.FolderCase):
    def test_every_row_is_what_python_computes(self):
        decimal.getcontext().prec = 40
        with open(support.WEATHER, encoding="utf-8", newline="") as file:
            rows = list(csv.DictReader(file))
        self.assertEqual(len(rows), 1461)
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
