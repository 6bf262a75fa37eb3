"""Columns of a table in the forms that the engine reads, where possible without a copy."""

from __future__ import annotations

import datetime
from typing import Any, Callable, NamedTuple, Optional, Tuple

import numpy

from ._library import ffi
from ._values import encode, is_missing, set_date, set_number, wrong_type
from .types import DATE, NUMBER, STRING, Type

# Forms of ORL_COLUMN_...
CELLS, INT64, DOUBLE, TIMESTAMP, TEXT = 0, 1, 3, 5, 6
MOST_TEXT = 2**31 - 1  # bytes of a column of strings

# A NumberValue, as an element of an array.
CELL = numpy.dtype([("length", "u1"), ("payload", "u1", 12)])

NANOSECONDS = numpy.dtype("datetime64[ns]")  # the dates of pandas
NOT_A_TIME = numpy.iinfo("int64").min  # as datetime64 has NaT

_EPOCH = datetime.datetime(1970, 1, 1)
_MICROSECOND = datetime.timedelta(microseconds=1)
FIRST_MOMENT = (datetime.datetime.min - _EPOCH) // _MICROSECOND
LAST_MOMENT = (datetime.datetime.max - _EPOCH) // _MICROSECOND


class Column(NamedTuple):
    """A column as ORLEvaluateRows takes it; the arrays own what the engine reads."""

    name: Any  # bytes, kept by cffi
    form: int
    values: numpy.ndarray
    offsets: Optional[numpy.ndarray]
    valid: Optional[numpy.ndarray]  # a bit for each row, None where all have a value

    def fill(self, record, row: int) -> None:
        """Fills the OrlColumn `record` for the rows from `row` on, a multiple of 8."""
        record.name, record.form = self.name, self.form
        whole = self.offsets is not None
        record.values = ffi.cast("void *", pointer(self.values, 0 if whole else row))
        if self.offsets is not None:
            record.offsets = ffi.cast("int32_t *", pointer(self.offsets, row))
        if self.valid is not None:
            record.valid = ffi.cast("uint8_t *", pointer(self.valid, row // 8))


def pointer(array: numpy.ndarray, element: int) -> int:
    """The address of an element of a contiguous array."""
    return array.ctypes.data + element * array.itemsize


def column_of(name: bytes, type: Type, values: Any, count: int) -> Column:
    """The column of an item.

    Raises TypeError or ValueError for a value that the type does not hold.
    """
    form, data, offsets, present = _CONVERSIONS[type](values)
    if len(values) != count:
        raise ValueError(f"{len(values)} values for {count} rows")
    masked = numpy.ma.getmask(values)
    if masked is not numpy.ma.nomask:
        present = ~masked if present is None else present & ~masked
    valid = None if present is None or present.all() else numpy.packbits(present, bitorder="little")
    return Column(ffi.new("char[]", name), form, data, offsets, valid)


# Form, values, offsets, and which rows have a value: None for all.
_Converted = Tuple[int, numpy.ndarray, Optional[numpy.ndarray], Optional[numpy.ndarray]]


def _array(values: Any) -> numpy.ndarray:
    """The values as a NumPy array; those of other extension types as objects."""
    if isinstance(values, numpy.ndarray):
        return numpy.ma.getdata(values)
    if hasattr(values, "dtype"):
        return numpy.asarray(values)
    objects = numpy.empty(len(values), object)
    objects[:] = values
    return objects


def _nullable(values: Any) -> Optional[_Converted]:
    """The column of a nullable number type of pandas; None for anything else."""
    dtype: Any = getattr(values, "dtype", None)
    if isinstance(dtype, numpy.dtype) or getattr(dtype, "kind", "O") not in "biuf" \
            or not hasattr(dtype, "na_value"):
        return None
    wanted, form = ("float64", DOUBLE) if dtype.kind == "f" else ("int64", INT64)
    data = numpy.ascontiguousarray(values.to_numpy(dtype=wanted, na_value=0))
    present = ~values.isna().to_numpy()
    return form, data, None, present & numpy.isfinite(data) if form == DOUBLE else present


def _numbers(values: Any) -> _Converted:
    nullable = _nullable(values)
    if nullable is not None:
        return nullable
    array = _array(values)
    kind = array.dtype.kind
    if kind == "f":
        data = numpy.ascontiguousarray(array, "float64")
        with numpy.errstate(over="ignore", invalid="ignore"):
            finite = numpy.isfinite(data.sum())  # then all are
        return DOUBLE, data, None, None if finite else numpy.isfinite(data)
    if kind in "biu" and array.dtype != numpy.uint64:
        return INT64, numpy.ascontiguousarray(array, "int64"), None, None
    return _cells(array, set_number)


def _dates(values: Any) -> _Converted:
    array = _array(values)
    if array.dtype.kind == "M":
        if getattr(getattr(values, "dtype", None), "tz", None) is not None:
            raise ValueError("dates with a time zone; dates of formulas have none")
        if array.dtype == NANOSECONDS:  # all are in range
            data = numpy.ascontiguousarray(array).view("int64")
            return TIMESTAMP, data // 1000, None, data != NOT_A_TIME
        data = numpy.ascontiguousarray(array.astype("datetime64[us]", copy=False)).view("int64")
        return TIMESTAMP, data, None, (data >= FIRST_MOMENT) & (data <= LAST_MOMENT)
    return _cells(array, set_date)


def _cells(array: numpy.ndarray, store: Callable[[Any, Any], None]) -> _Converted:
    """NumberValues of single objects."""
    data = numpy.zeros(len(array), CELL)
    first = ffi.cast("NumberValue *", pointer(data, 0))
    for i, value in enumerate(array.tolist()):
        if not is_missing(value):
            store(first + i, value)
    return CELLS, data, None, data["length"] != 0


def _texts(values: Any) -> _Converted:
    strings = _array(values).tolist()
    present = None
    try:
        joined = "".join(strings)
    except TypeError:
        missing = [is_missing(value) for value in strings]
        wrong = next((value for value, none in zip(strings, missing)
                      if not none and not isinstance(value, str)), None)
        if wrong is not None:
            raise wrong_type(STRING, wrong) from None
        present = ~numpy.array(missing, bool)
        strings = ["" if none else value for value, none in zip(strings, missing)]
        joined = "".join(strings)
    raw = encode(joined)
    if len(raw) > MOST_TEXT:
        raise ValueError(f"{len(raw)} bytes of strings; a call takes at most {MOST_TEXT}")
    if joined.isascii():
        lengths = numpy.fromiter(map(len, strings), "int64", len(strings))
    else:
        ends = numpy.frombuffer("\0".join(strings).encode() + b"\0", "uint8") == 0  # no string has a zero
        lengths = numpy.diff(numpy.flatnonzero(ends), prepend=-1) - 1
    offsets = numpy.zeros(len(strings) + 1, "int32")
    numpy.cumsum(lengths, out=offsets[1:])
    return TEXT, numpy.frombuffer(raw, "uint8"), offsets, present


_CONVERSIONS = {NUMBER: _numbers, DATE: _dates, STRING: _texts}
