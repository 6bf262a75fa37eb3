"""Many rows at once: the columns of a table to the engine's, and results back."""

from __future__ import annotations

import concurrent.futures
import decimal
from typing import TYPE_CHECKING, Any, Dict, List, Mapping

from . import _columns, _results
from ._library import engine, ffi
from .errors import Error
from .types import Kind

if TYPE_CHECKING:
    from ._items import Item
    from .context import Context
    from .expression import Expression

_NUMBERS = (float, int, decimal.Decimal)
_MOST_SCALE = 37


class Table:
    """The rows of a table. A column is converted once, for all formulas that use it."""

    def __init__(self, rows: Any):
        self.rows, self.count = rows, _row_count(rows)
        self._columns: Dict[bytes, _columns.Column] = {}

    def columns_of(self, context: Context, expression: Expression) -> List[_columns.Column]:
        """The columns of the items that a formula of this context uses."""
        return [self._column(name, item) for name, item in list(context._items.items())
                if item.key in self.rows and expression._is_used(Kind.INPUT, name)]

    def _column(self, name: bytes, item: Item) -> _columns.Column:
        if name not in self._columns:
            try:
                self._columns[name] = _columns.column_of(name, item.type, self.rows[item.key], self.count)
            except (TypeError, ValueError) as error:
                kind = TypeError if isinstance(error, TypeError) else ValueError
                raise kind(f"column {item.key!r}: {error}") from None
        return self._columns[name]


def _row_count(rows: Any) -> int:
    if hasattr(rows, "iloc"):
        return len(rows)
    if not isinstance(rows, Mapping):
        raise TypeError("rows is a pandas.DataFrame or a mapping from keys to columns")
    counts = {len(column) for column in rows.values()}
    if len(counts) > 1:
        raise ValueError(f"the columns have different lengths: {sorted(counts)}")
    return counts.pop() if counts else 0


def evaluate_rows(context: Context, expression: Expression, table: Table, numbers: type = float, scale: int = 0,
                  threads: int = 1) -> Any:
    """`Context.evaluate_rows` for a formula of this context."""
    if numbers not in _NUMBERS:
        raise TypeError("numbers is float, int or decimal.Decimal")
    if not 0 <= scale <= _MOST_SCALE:
        raise ValueError(f"scale is 0 to {_MOST_SCALE}")
    columns = table.columns_of(context, expression)
    result = _results.of_type(expression.type, table.count, numbers, scale)
    parts = _parts(table.count, threads)
    if len(parts) == 1:
        _compute(context, expression, columns, result, parts[0])
    else:
        _share_out(context, expression, columns, result, parts)
    if not hasattr(table.rows, "iloc"):
        return result.array()
    name = None if expression._temporary else expression.name
    return result.series(table.rows.index, name)


def _parts(count: int, threads: int) -> List[range]:
    """Ranges of rows, one for each thread, that begin at whole bytes of masks."""
    if threads < 1:
        raise ValueError("threads is at least 1")
    step = max(8, -(-count // threads) + 7 & ~7)
    return [range(begin, min(begin + step, count)) for begin in range(0, count, step)] or [range(0)]


def _share_out(context, expression, columns, result, parts) -> None:
    text = expression.text
    copies = [context.copy() for _ in parts]
    try:
        with concurrent.futures.ThreadPoolExecutor(len(parts)) as pool:
            done = [pool.submit(_compute, copy, copy.parse(text), columns, result, part)
                    for copy, part in zip(copies, parts)]
            for each in done:
                each.result()
    finally:
        for copy in copies:
            copy.close()


def _compute(context, expression, columns, result, part: range) -> None:
    """Computes the rows of one part into the result."""
    given = ffi.new("OrlColumn[]", max(1, len(columns)))
    for each, column in zip(given, columns):
        column.fill(each, part.start)
    wanted = ffi.new("OrlRowResults *")
    result.fill(wanted, part)
    try:
        found = context._compute(None, engine.ORLEvaluateRows, expression, len(part), len(columns), given,
                                 wanted)
        if found < 0:
            raise Error("the rows cannot be computed: out of memory, or the strings are too long")
        result.take(wanted, part, found)
    finally:
        result.release(wanted)
