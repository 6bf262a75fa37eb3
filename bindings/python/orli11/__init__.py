"""Formulas over rows: checked, stored and computed by the ORLI11 formula engine.

    >>> import orli11
    >>> context = orli11.Context({"Amount": "number", "Due": "date"})
    >>> context.evaluate("Amount * 1.19", {"Amount": 100})
    Decimal('119')

`Context` holds what formulas refer to and the formulas; `evaluate` computes formulas over a whole
table. The module `orli11.dask` does so over the partitions of a Dask DataFrame.
"""

from __future__ import annotations

from typing import Any, Mapping

from ._functions import ItemName
from ._library import engine as _engine
from ._version import __version__
from .context import Context
from .errors import ClosedError, Error, FormulaError, LoadError
from .expression import Expression
from .types import DATE, NUMBER, STRING, Flag, Kind, Type

__all__ = ["Context", "Expression", "Type", "NUMBER", "DATE", "STRING", "Kind", "Flag", "ItemName",
           "Error", "ClosedError", "FormulaError", "LoadError", "evaluate", "library_version", "__version__"]


def evaluate(rows: Any, formulas: Mapping[str, str], **options: Any) -> Any:
    """The values of formulas for all rows of a table: see `Context.evaluate_all`.

    The formulas may call each other by name, as in `{"net": "price - discount", "tax": "net() / 5"}`.
    """
    with Context(rows) as context:
        context.add_formulas(formulas)
        return context.evaluate_all(rows, formulas, **options)


def library_version() -> str:
    """The version of the library that is loaded."""
    version = _engine.ORLVersion()
    return f"{version >> 16}.{version >> 8 & 255}.{version & 255}"
