"""Single values: from Python to the engine's 13 bytes, and back."""

from __future__ import annotations

import datetime
import decimal
import numbers
import operator
from typing import Any, Optional

from ._library import calendar, engine, ffi, tools
from .types import DATE, NUMBER, STRING, Type

NUMBER_BYTES = ffi.sizeof("NumberValue")
_LONG = 1 << 63
_TEXT_BYTES = 160  # more than the longest number needs

_CELL, _TEXT = ffi.typeof("NumberValue *"), ffi.typeof("const char *")
_TYPE_NAMES = {NUMBER: "a Number", DATE: "a Date", STRING: "a String"}


def encode(text: str) -> bytes:
    """The bytes of a string for the engine, whose strings end with a zero byte."""
    if not isinstance(text, str):
        raise TypeError(f"expected a string, not {type(text).__name__}")
    if "\0" in text:
        raise ValueError("a string for the engine cannot hold the character U+0000")
    return text.encode()


def is_missing(value: Any) -> bool:
    """True for None, NaN, NaT and the like, which are equal to nothing or have no truth value."""
    if value is None:
        return True
    try:
        return bool(value != value)
    except (TypeError, ValueError):
        return type(value).__name__ == "NAType"
    except decimal.InvalidOperation:
        return True  # a signaling NaN


def wrong_type(wanted: Type, value: Any) -> TypeError:
    return TypeError(f"expected {_TYPE_NAMES[wanted]}, not {value!r} of type {type(value).__name__}")


def set_number(cell, value: Any) -> None:
    """Stores a number in the zeroed NumberValue at `cell`.

    Infinities, and numbers from 10^153 on, leave it null.
    """
    if isinstance(value, float):
        tools.WRENNumFromDouble(cell, value)
    elif isinstance(value, decimal.Decimal):
        tools.WRENNumFromText(cell, str(value).encode())
    elif isinstance(value, numbers.Integral):
        whole = operator.index(value)
        if -_LONG <= whole < _LONG:
            tools.WRENNumFromLong(cell, whole)
        else:
            tools.WRENNumFromText(cell, b"%d" % whole)
    elif isinstance(value, numbers.Real):
        tools.WRENNumFromDouble(cell, float(value))
    elif type(value).__name__ == "bool_":  # of NumPy, which is not a number to Python
        tools.WRENNumFromLong(cell, int(value))
    else:
        raise wrong_type(NUMBER, value)


def set_date(cell, value: Any) -> None:
    """Stores a date in the zeroed NumberValue at `cell`."""
    if hasattr(value, "astype") and not isinstance(value, datetime.date):
        value = value.astype("datetime64[us]").item()  # numpy.datetime64
    if not isinstance(value, datetime.date):
        raise wrong_type(DATE, value)
    parts = ffi.new("DateTimeParts *", {"month": value.month, "day": value.day, "year": value.year})
    if isinstance(value, datetime.datetime):
        if value.tzinfo is not None:
            raise ValueError(f"{value!r} has a time zone; dates of formulas have none")
        parts.hour, parts.minute, parts.second = value.hour, value.minute, value.second
        parts.fraction = value.microsecond
    cell.length = calendar.PAVNDateToNumber(cell.payload, parts)


def store(type: Type, value: Any, size: int, result) -> bool:
    """Stores a value in the engine's zeroed block at `result[0]`, of `size` bytes.

    False when there is none: `value` is missing, or a number that the form cannot hold.
    """
    if is_missing(value):
        return False
    if type == STRING:
        if not isinstance(value, str):
            raise wrong_type(STRING, value)
        if engine.FUNStrVarResult(result, size, encode(value)) == 0:
            raise MemoryError
        return True
    cell = ffi.cast(_CELL, result[0])
    (set_number if type == NUMBER else set_date)(cell, value)
    return cell.length != 0


def number_buffer():
    """A buffer for the text of a number, which many calls of `number_from` may share."""
    return ffi.new("char[]", _TEXT_BYTES)


def number_from(cell, buffer=None) -> Optional[decimal.Decimal]:
    """The Decimal of a NumberValue, None for null."""
    if cell.length == 0:
        return None
    buffer = number_buffer() if buffer is None else buffer
    tools.WRENNumToText(cell, _TEXT_BYTES, buffer)
    return decimal.Decimal(ffi.string(buffer).decode())


def date_from(cell) -> Optional[datetime.datetime]:
    """The datetime of a NumberValue, None for null."""
    if cell.length == 0:
        return None
    parts = ffi.new("DateTimeParts *")
    calendar.PAVNNumberToDate(cell.payload, cell.length, parts)
    return datetime.datetime(parts.year, parts.month, parts.day, parts.hour, parts.minute,
                             parts.second, parts.fraction)


def text_from(address) -> str:
    """The string at a `const char *`; bytes that are not UTF-8 are replaced."""
    return ffi.string(ffi.cast(_TEXT, address)).decode(errors="replace")


def value_from(type: Type, address) -> Any:
    """The Python value of an argument or result at `address`."""
    if type == STRING:
        return text_from(address)
    cell = ffi.cast(_CELL, address)
    return number_from(cell) if type == NUMBER else date_from(cell)
