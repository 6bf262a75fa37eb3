"""Prints dates with their numbers, for comparison with the calendar: every first and last day of a
month, and random days. A line is: year month day ordinal weekday, with ordinal 1 for 1 January of
year 1 and weekday 0 for Monday."""

import datetime
import random
import sys

ONE_DAY = datetime.timedelta(days=1)


def days():
    for year in range(1, 10000):
        for month in range(1, 13):
            first = datetime.date(year, month, 1)
            yield first
            if first.toordinal() > 1:
                yield first - ONE_DAY
    yield datetime.date.max
    source = random.Random(20120131)
    for _ in range(50000):
        yield datetime.date.fromordinal(source.randint(1, datetime.date.max.toordinal()))


for day in days():
    sys.stdout.write(f"{day.year} {day.month} {day.day} {day.toordinal()} {day.weekday()}\n")
