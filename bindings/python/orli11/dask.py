"""Formulas over the partitions of a Dask DataFrame.

The workers receive the stored form of a context, and the functions written in Python
where there are some. Each thread of a worker loads it once and computes partition by partition.
"""

from __future__ import annotations

import functools
import threading
from typing import Any, Mapping, Optional, Tuple

import dask.dataframe
import pandas

from .context import Context, Functions

_MOST_CONTEXTS = 16  # that a thread of a worker keeps
_thread = threading.local()


def evaluate(frame: dask.dataframe.DataFrame, formulas: Mapping[str, str], *, items: Optional[Any] = None,
             functions: Functions = (), **options: Any) -> dask.dataframe.DataFrame:
    """The values of formulas as a Dask DataFrame with the partitions and the index of `frame`.

    Nothing is computed here but the types: a wrong formula raises FormulaError at once. The
    formulas may call each other. `items` gives the types of columns where they do not follow from
    the dtypes: columns of objects are Strings without it. `functions` written in Python must be
    known to the workers, as any function that Dask sends. `options` are those of
    `Context.evaluate_rows`.
    """
    sample = frame._meta_nonempty
    with Context(sample if items is None else items, functions=functions) as context:
        context.add_formulas(formulas)
        block = context.save()
        meta = context.evaluate_all(frame._meta if items is None else frame._meta.astype(object),
                                    formulas, **options)
    compute = functools.partial(_compute, block=block, names=tuple(formulas), functions=functions,
                                options=options)
    return frame.map_partitions(compute, meta=meta)


def _compute(part: pandas.DataFrame, block: bytes, names: Tuple[str, ...], functions: Functions,
             options: Mapping[str, Any]) -> pandas.DataFrame:
    return _context(block, functions).evaluate_all(part, names, **options)


def _context(block: bytes, functions: Functions) -> Context:
    """The context of a block, one for each thread, so that threads run side by side."""
    known = _thread.__dict__.setdefault("contexts", {})
    calls: Tuple[Any, ...] = tuple(functions.items() if isinstance(functions, Mapping) else functions)
    context = known.get((block, calls))
    if context is None:
        if len(known) == _MOST_CONTEXTS:
            known.pop(next(iter(known)))
        context = known[block, calls] = Context.load(block, functions=functions)
    return context
