"""What the engine writes for many rows, as arrays of NumPy and columns of pandas."""

from __future__ import annotations

import decimal
from typing import Any, List, Optional

import numpy

from ._columns import (CELL, CELLS, DOUBLE, INT64, NANOSECONDS, NOT_A_TIME, TEXT, TIMESTAMP,
                       pointer)
from ._library import engine, ffi
from ._values import number_buffer, number_from
from .types import NUMBER, STRING, Type

# The microseconds that nanoseconds of 64 bits reach.
_FIRST, _LAST = -(2**63 // 1000), (2**63 - 1) // 1000


class _Result:
    """Buffers for the values of `rows` rows; the parts are filled one by one."""

    form: int
    dtype: Any
    scale = 0

    def __init__(self, rows: int):
        self.values = numpy.empty(rows, self.dtype)
        self.valid = numpy.zeros((rows + 7) // 8, "uint8")
        self.found = 0  # rows with a value

    def fill(self, record, part: range) -> None:
        """Fills the OrlRowResults `record` for the rows of a part."""
        record.form, record.scale = self.form, self.scale
        record.values = ffi.cast("void *", pointer(self.values, part.start))
        record.valid = ffi.cast("uint8_t *", pointer(self.valid, part.start // 8))

    def take(self, record, part: range, found: int) -> None:
        """Stores what the engine wrote for a part."""
        self.found += found

    def release(self, record) -> None:
        """Frees what the engine allocated for a part."""

    def missing(self) -> Optional[numpy.ndarray]:
        """True for each row without a value; None when all have one."""
        if self.found == len(self.values):
            return None
        return numpy.unpackbits(self.valid, count=len(self.values), bitorder="little") == 0

    def array(self) -> Any:
        """The values as an array."""
        raise NotImplementedError

    def series(self, index, name: Optional[str]) -> Any:
        """The values as a pandas.Series."""
        import pandas
        return pandas.Series(self.array(), index=index, name=name, copy=False)


class _Floats(_Result):
    form, dtype = DOUBLE, "float64"

    def array(self) -> numpy.ndarray:
        missing = self.missing()
        if missing is not None:
            self.values[missing] = numpy.nan
        return self.values


class _Integers(_Result):
    form, dtype = INT64, "int64"

    def __init__(self, rows: int, scale: int):
        super().__init__(rows)
        self.scale = scale

    def _mask(self) -> numpy.ndarray:
        missing = self.missing()
        return numpy.zeros(len(self.values), bool) if missing is None else missing

    def array(self) -> numpy.ma.MaskedArray:
        return numpy.ma.MaskedArray(self.values, self._mask())

    def series(self, index, name: Optional[str]) -> Any:
        import pandas
        column = pandas.arrays.IntegerArray(self.values, self._mask())
        return pandas.Series(column, index=index, name=name, copy=False)


class _Decimals(_Result):
    form, dtype = CELLS, CELL

    def array(self) -> numpy.ndarray:
        made = numpy.empty(len(self.values), object)
        first = ffi.cast("NumberValue *", pointer(self.values, 0))
        buffer = number_buffer()
        for i in range(len(made)):
            made[i] = number_from(first + i, buffer)
        return made


class _Dates(_Result):
    form, dtype = TIMESTAMP, "int64"

    def array(self) -> numpy.ndarray:
        missing = self.missing()
        if missing is not None:
            self.values[missing] = NOT_A_TIME
        return self.values.view("datetime64[us]")

    def series(self, index, name: Optional[str]) -> Any:
        """Its dates as datetime64[ns], or as objects where some lie outside 1677 to 2262."""
        import pandas
        missing = self.missing()
        # The elements of rows without a value are zero.
        if not len(self.values) or _FIRST <= self.values.min() <= self.values.max() <= _LAST:
            moments = self.values * 1000
            if missing is not None:
                moments[missing] = NOT_A_TIME
            return pandas.Series(moments.view(NANOSECONDS), index=index, name=name, copy=False)
        dates = self.array().astype(object)
        dates[slice(0) if missing is None else missing] = pandas.NaT
        return pandas.Series(dates, index=index, name=name, dtype=object)


class _Texts(_Result):
    form, dtype = TEXT, object

    def __init__(self, rows: int):
        super().__init__(rows)
        self._offsets: List[Any] = []  # of the parts, which the records only point to

    def fill(self, record, part: range) -> None:
        super().fill(record, part)
        record.values = ffi.NULL
        self._offsets.append(ffi.new("int32_t[]", len(part) + 1))
        record.offsets = self._offsets[-1]

    def take(self, record, part: range, found: int) -> None:
        super().take(record, part, found)
        self.values[part.start:part.stop] = self._strings(record, len(part))

    def release(self, record) -> None:
        engine.ORLMemFree(record.values)
        record.values = ffi.NULL

    @staticmethod
    def _strings(record, rows: int) -> List[str]:
        """The strings, split at zero bytes that are put between them: no string has one."""
        offsets = numpy.frombuffer(ffi.buffer(record.offsets, (rows + 1) * 4), "int32")
        size = int(offsets[rows])
        joined = numpy.zeros(size + max(rows - 1, 0), "uint8")
        if size:
            is_text = numpy.ones(len(joined), bool)
            is_text[offsets[1:-1].astype("int64") + numpy.arange(rows - 1)] = False
            joined[is_text] = numpy.frombuffer(ffi.buffer(record.values, size), "uint8")
        return str(joined.data, "utf-8", "replace").split("\0") if rows else []

    def array(self) -> numpy.ndarray:
        missing = self.missing()
        if missing is not None:
            self.values[missing] = None
        return self.values


def of_type(type: Type, rows: int, numbers: type, scale: int) -> _Result:
    """Buffers for results of a formula of that type."""
    if type == STRING:
        return _Texts(rows)
    if type != NUMBER:
        return _Dates(rows)
    if numbers is int:
        return _Integers(rows, scale)
    return _Decimals(rows) if numbers is decimal.Decimal else _Floats(rows)
