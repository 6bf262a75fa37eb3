"""Many rows at once, compared with the same formulas row by row."""

import datetime
import decimal
import math
import random

import numpy
import pandas
import pytest

import orli11
import orli11.dask
from orli11 import Context
from orli11._columns import column_of

D = decimal.Decimal
ROWS = 203  # a mask that ends within a byte
DRAW = random.Random(17)


def some(values, none=None):
    """A value for each row, now and then none."""
    return [none if DRAW.random() < 0.2 else DRAW.choice(values) for _ in range(ROWS)]


MOMENTS = [datetime.datetime(2024, 2, 29, 21, 30, 15, 500), datetime.datetime(1969, 12, 31),
           datetime.datetime(2200, 1, 1, 0, 0, 1)]
NUMBERS = pandas.DataFrame({
    "float": some([0.1, -2.5, 1e20, math.inf], math.nan), "narrow": numpy.array(some([0.1, 3], 0), "float32"),
    "int": some([1, -7, 2**62], 0), "small": numpy.array(some([1, 7], 0), "uint8"),
    "unsigned": numpy.array(some([1, 2**63 + 1], 0), "uint64"), "bool": some([True, False], False),
    "nullable": pandas.array(some([1, 2**62]), "Int64"), "real": pandas.array(some([0.5, 3]), "Float64"),
    "decimal": some([D("0.10"), D("-12345678901234567890.5"), D("1e200"), D("NaN")]), "mixed": some([1, 2.5, D(3)]),
    "strided": numpy.arange(3.0 * ROWS).reshape(ROWS, 3)[:, 1]})
OTHERS = pandas.DataFrame({
    "moment": pandas.Series(some(MOMENTS, pandas.NaT)), "date": some([datetime.date(1, 1, 1), MOMENTS[0]]),
    "text": some(["", "a", "größer 𝄞", "x" * 300], math.nan), "ascii": some(["", "a", "bc"], "z"),
    "label": pandas.Categorical(some(["red", "blau"])), "string": pandas.array(some(["red", "ö"]), "string")})
TABLE = pandas.concat([NUMBERS, OTHERS], axis=1)
FORMULAS = [*(f"{name} * 3 - strided" for name in NUMBERS), "NumberToStr(nullable, 2)", "moment + 1 MONTH",
            "DateYear(date)", "text || label", "ascii || string",
            "StrLength(text)", "7", "StrToNumber(ascii)", "'constant'", "moment - MOMENT()"]


def expected(formula, rows=TABLE):
    return [formula.evaluate(rows.iloc[i]) for i in range(len(rows))]


@pytest.fixture(scope="module")
def context():
    with Context(TABLE) as made:
        made.parse("1969-12-31", "MOMENT")
        yield made


@pytest.mark.parametrize("text", FORMULAS)
def test_rows_equal_single_evaluations(context, text):
    formula = context.parse(text)
    alone = expected(formula)
    for threads in (1, 3):
        values = context.evaluate_rows(formula, TABLE, numbers=D, threads=threads)
        assert [None if value is pandas.NaT else value for value in values] == alone, text
    columns = context.evaluate_rows(formula, {name: TABLE[name] for name in TABLE}, numbers=D)
    if formula.type == orli11.DATE:
        columns = columns.astype(object)
    assert [*columns] == alone, text
    assert len(context.evaluate_rows(formula, TABLE.head(0))) == 0


def test_forms_of_numbers(context):
    formula = context.parse("strided * 5 / 8 + nullable")
    exact = [value for value in expected(formula)]
    assert None in exact
    floats = context.evaluate_rows(formula, TABLE)
    assert floats.dtype == "float64" and floats.index is TABLE.index
    assert [*floats.dropna()] == [float(value) for value in exact if value is not None]
    whole = context.evaluate_rows("strided * 5 / 8 + nullable - nullable", TABLE, numbers=int, scale=2)
    rounded = [None if value is None else int((D(row) * 5 / 8).quantize(D("0.01"), decimal.ROUND_HALF_UP) * 100)
               for value, row in zip(exact, TABLE["strided"])]
    assert whole.dtype == "Int64" and [*whole.astype(object).where(whole.notna(), None)] == rounded
    masked = context.evaluate_rows("strided - nullable", {"strided": TABLE["strided"].to_numpy(),
                                                          "nullable": numpy.ma.array([1] * ROWS, mask=[1] + [0] * (ROWS - 1))},
                                   numbers=int)
    assert masked.mask.tolist() == [True] + [False] * (ROWS - 1) and masked[1] == 3


def test_dates_outside_those_of_pandas():
    rows = pandas.DataFrame({"due": [MOMENTS[0], None]})
    with Context(rows) as context:
        late = context.evaluate_rows("due + 7000 YEARS", rows)
        assert late.tolist() == [MOMENTS[0].replace(year=9024), pandas.NaT]
        array = context.evaluate_rows("due + 7000 YEARS", {"due": rows["due"].to_numpy()})
        assert array.dtype == "M8[us]" and array.astype(object).tolist() == [MOMENTS[0].replace(year=9024), None]
        assert context.evaluate_rows("due", {"due": numpy.array(["20000-01-01"], "M8[D]")}).astype(object)[0] is None


def test_columns_are_read_where_they_are():
    arrays = [(orli11.NUMBER, numpy.arange(9.0)), (orli11.NUMBER, numpy.arange(9)),
              (orli11.DATE, numpy.arange(9).view("M8[us]"))]
    for type, array in arrays:
        assert column_of(b"x", type, array, 9).values.ctypes.data == array.ctypes.data
        series = pandas.Series(array, copy=False)
        if type == orli11.NUMBER:
            assert column_of(b"x", type, series, 9).values.ctypes.data == series.to_numpy().ctypes.data


@pytest.mark.parametrize("rows, options, error", [
    ({"x": [1, 2], "t": ["a"]}, {}, ValueError), ({"x": ["a"], "t": ["a"]}, {}, TypeError),
    ({"x": [1], "t": ["a\0b"]}, {}, ValueError), ({"x": [1], "t": [7]}, {}, TypeError),
    ({"x": [1], "t": ["\ud800"]}, {}, ValueError), ({"x": [1]}, {}, KeyError),
    (5, {}, TypeError), ({"x": [1], "t": ["a"]}, {"threads": 0}, ValueError),
    ({"x": [1], "t": ["a"]}, {"numbers": str}, TypeError), ({"x": [1], "t": ["a"]}, {"scale": 38}, ValueError),
])
def test_columns_that_cannot_be_computed_raise(rows, options, error):
    with Context({"x": "number", "t": "string"}) as context:
        formula = context.parse("x + StrLength(t)")
        with pytest.raises(error):
            context.evaluate_rows(formula, rows, **options)
        assert context.evaluate_rows(formula, {"x": [1], "t": ["abc"]}).tolist() == [4]


def test_functions_in_python_are_called_for_each_row():
    def half(a: float) -> float:
        return a / 2 if a != 13 else 1 / 0

    with Context({"x": "number"}, functions=[half]) as context:
        assert context.evaluate_rows("half(x) + 1", {"x": range(3)}).tolist() == [1, 1.5, 2]
        for threads in (1, 2):
            with pytest.raises(ZeroDivisionError):
                context.evaluate_rows("half(x)", {"x": range(30)}, threads=threads)


def test_evaluate_all_and_partitions():
    frame = TABLE[["float", "moment", "text"]].set_index(TABLE["strided"])
    formulas = {"late": "twice() + 1", "twice": "float * 2", "day": "moment + 1 DAY", "long": "text || '!'"}
    plain = orli11.evaluate(frame, formulas)
    assert [*plain] == [*formulas] and plain.index is frame.index
    with Context(frame) as context:
        context.add_formulas(formulas)
        context.parse("1 AND 2", "few")
        pandas.testing.assert_frame_equal(context.evaluate_all(frame)[[*formulas]], plain)
    parts = orli11.dask.dask.dataframe.from_pandas(frame, npartitions=4)
    spread = orli11.dask.evaluate(parts, formulas)
    assert [*spread.dtypes] == [*plain.dtypes]
    for scheduler in ("synchronous", "threads"):
        pandas.testing.assert_frame_equal(spread.compute(scheduler=scheduler), plain)
    exact = orli11.dask.evaluate(parts, {"half": "float / 2"}, numbers=int, scale=1, functions=[str_of])
    assert exact.dtypes["half"] == "Int64" and exact.npartitions == 4
    with pytest.raises(orli11.FormulaError):
        orli11.dask.evaluate(parts, {"wrong": "flaot"})


def str_of(number: D) -> str:
    return str(number)
