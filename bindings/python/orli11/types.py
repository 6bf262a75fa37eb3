"""Data types of formulas, and the kinds of rows in a context."""

from __future__ import annotations

import datetime
import decimal
import enum
import numbers
from typing import Union


class Type(enum.IntEnum):
    """The type of an item's values or of a formula's result.

    NUMBER is an exact decimal of up to 26 digits, DATE a date with a time of day, STRING a string.
    """

    NUMBER = 0
    DATE = 1
    STRING = 2


NUMBER = Type.NUMBER
DATE = Type.DATE
STRING = Type.STRING

# What names a type: the type, its name in any case, or a Python class with values of it.
TypeLike = Union[Type, str, type]

# The code of a parameter that takes any type.
ANY = 5


class Kind(enum.IntEnum):
    """What a name in a formula can be."""

    FUNCTION = 0
    INPUT = 1
    FORMULA = 2


class Flag(enum.IntFlag):
    """How a context reads formulas; the constants ORL_FLAG_... of orli11.h explain each."""

    LIST_ALL = 1
    NO_CONCAT = 2
    MODIFIERS = 4
    DATE_MINUS_STRING = 8
    STRING_PLUS = 16
    NO_DATE_UNITS = 32
    PERCENT = 64
    RANGES = 128


def type_of(given: TypeLike) -> Type:
    """The Type that `given` names; ValueError or TypeError when it names none."""
    if isinstance(given, Type):
        return given
    if isinstance(given, str):
        try:
            return Type[given.upper()]
        except KeyError:
            raise ValueError(f"{given!r} is not a type; types are 'number', 'date' and 'string'") from None
    if isinstance(given, type):
        if issubclass(given, str):
            return STRING
        if issubclass(given, datetime.date) or given.__name__ == "datetime64":
            return DATE
        if issubclass(given, (numbers.Real, decimal.Decimal)) or given.__name__ == "bool_":
            return NUMBER
    raise TypeError(f"{given!r} does not name a type")
