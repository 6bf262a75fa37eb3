#!/usr/bin/env python3
"""Measures a formula over a million rows from Python, and what one would take instead.

    bench/rows.py [ROWS]

Each way runs several times, one after the other in turn; the least processor time counts, that
of all threads together. Exit status 1 when `evaluate_rows` over a DataFrame takes more than
MOST_RATIO of the C call with its buffers ready.
"""

import decimal
import pathlib
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "bindings/python"))

import numpy  # noqa: E402
import pandas  # noqa: E402

import orli11  # noqa: E402
from orli11 import _columns, _library, _results, _rows  # noqa: E402

MOST_RATIO = 1.5
REPETITIONS = 5
ONE_BY_ONE = 20_000  # rows of the ways that take long
FORMULA = "(price - discount) * quantity"


def table(rows):
    draw = numpy.random.default_rng(11)
    return pandas.DataFrame({
        "price": draw.integers(100, 100_000, rows) / 100, "discount": draw.integers(0, 500, rows) / 100,
        "quantity": draw.integers(1, 100, rows),
        "ordered": pandas.Timestamp("2020-01-01") + pandas.to_timedelta(draw.integers(0, 1500, rows), unit="D"),
        "region": draw.choice(["north", "south", "east", "west"], rows)})


def c_call(context, expression, frame):
    """A call of ORLEvaluateRows with its columns and its results' room ready."""
    columns = _rows.Table(frame).columns_of(context, expression)
    result = _results.of_type(expression.type, len(frame), float, 0)
    given, wanted = _library.ffi.new("OrlColumn[]", len(columns)), _library.ffi.new("OrlRowResults *")
    for each, column in zip(given, columns):
        column.fill(each, 0)
    result.fill(wanted, range(len(frame)))

    def call():
        found = _library.engine.ORLEvaluateRows(context._ec, expression._handle, len(frame), len(columns), given, wanted)
        assert found == len(frame)
        if wanted.form == _columns.TEXT:
            result.release(wanted)
    return call


def numbers(context, frame):
    """The ways to compute FORMULA by name: the call, and the rows that it computes."""
    expression = context.parse(FORMULA)
    few = frame.head(ONE_BY_ONE)
    prices, discounts = ([decimal.Decimal(str(value)) for value in few[name]] for name in ("price", "discount"))
    quantities = few["quantity"].tolist()
    rows = few[["price", "discount", "quantity"]].to_dict("records")
    everything = len(frame)
    return {
        "ORLEvaluateRows, buffers ready": (c_call(context, expression, frame), everything),
        "evaluate_rows": (lambda: context.evaluate_rows(expression, frame), everything),
        "evaluate_rows, int of cents": (
            lambda: context.evaluate_rows(expression, frame, numbers=int, scale=2), everything),
        "evaluate_rows, both of two threads": (lambda: context.evaluate_rows(expression, frame, threads=2), everything),
        "DataFrame.eval, binary floats": (lambda: frame.eval(FORMULA), everything),
        "evaluate_rows, Decimal results": (
            lambda: context.evaluate_rows(expression, few, numbers=decimal.Decimal), len(few)),
        "decimal.Decimal, columns of them": (
            lambda: [(p - d) * q for p, d, q in zip(prices, discounts, quantities)], len(few)),
        "evaluate, row by row": (lambda: [expression.evaluate(row) for row in rows], len(few)),
    }


def others(context, frame):
    """Formulas over dates and strings: the C call and the call from Python."""
    for text in ("ordered + 1 MONTH", "DateYear(ordered)", "region || '!'", "StrLength(region)"):
        expression = context.parse(text)
        yield text, c_call(context, expression, frame), lambda e=expression: context.evaluate_rows(e, frame)


def least(ways):
    """The least time of each way in ns a row."""
    best = dict.fromkeys(ways, float("inf"))
    for _ in range(REPETITIONS):
        for name, (call, rows) in ways.items():
            begin = time.process_time()
            call()
            best[name] = min(best[name], (time.process_time() - begin) * 1e9 / rows)
    return best


def main():
    frame = table(int(sys.argv[1]) if len(sys.argv) > 1 else 1_000_000)
    with orli11.Context(frame) as context:
        assert context.evaluate_rows(FORMULA, frame).round(2).equals(frame.eval(FORMULA).round(2))
        best = least(numbers(context, frame))
        base = best["ORLEvaluateRows, buffers ready"]
        print(f"{FORMULA}, {len(frame)} rows: ns a row, and by the C call")
        for name, time_of in best.items():
            print(f"  {name:34}{time_of:10.1f}{time_of / base:9.2f}")
        print("Other formulas: ns a row of the C call and of evaluate_rows")
        for text, call, python in others(context, frame):
            pair = least({"c": (call, len(frame)), "python": (python, len(frame))})
            print(f"  {text:34}{pair['c']:10.1f}{pair['python']:10.1f}")
    return best["evaluate_rows"] > MOST_RATIO * base


if __name__ == "__main__":
    sys.exit(main())
