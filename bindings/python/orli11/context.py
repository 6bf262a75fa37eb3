"""Contexts: input items, functions and the formulas over them."""

from __future__ import annotations

import contextlib
import threading
import weakref
from typing import Any, Callable, Dict, Iterable, Iterator, List, Mapping, Optional, Tuple, Union

from . import _block, _callbacks
from ._library import engine, ffi
from ._functions import Function, function_of
from ._items import Items, items_of, key_of
from ._values import NUMBER_BYTES, encode, store, value_from
from .errors import NAME_TAKEN, WRONG_NAME, ClosedError, FormulaError, LoadError
from .expression import Expression
from .types import STRING, Flag, Kind, Type, TypeLike

_NULL, _CELL = ffi.NULL, ffi.typeof("NumberValue *")
_VERSIONS_WITHOUT_REPAIR = (0, 1)  # of blocks whose load opens no editor

# Callables by their own names, or by names given here; functions of another context too.
Functions = Union[Iterable[Union[Callable[..., Any], Function]], Mapping[str, Callable[..., Any]]]


class Context:
    """Input items, functions and the formulas over them.

    `items` declares what formulas can refer to: a mapping from names to types ("number", "date",
    "string", a Type or a Python class), pairs of both, or data: a pandas.DataFrame or a mapping
    from names to NumPy arrays or lists, whose values determine the types. A column whose name is not a
    plain name is written in double quotes in formulas: `"wind speed" * 2`. Columns of values that
    no formula can hold are left out.

    `functions` are callables in Python, `built_in` adds the functions of the library.

    Threads may share a context; they take turns. Different contexts run side by side. A context is
    closed by `close`, at the end of a `with` block, or with the last reference to it.
    """

    def __init__(self, items: Any = None, *, functions: Functions = (), built_in: bool = True,
                 flags: Flag = Flag.RANGES):
        self._begin(engine.ORLCreateEC(_NULL, _callbacks.look_up, _NULL, flags), flags, built_in)
        if built_in and engine.FUNDefineFunctions(self._ec) == 0:
            raise MemoryError
        if isinstance(functions, Mapping):
            for name, call in functions.items():
                self.add_function(call, name)
        else:
            for call in functions:
                self.add_function(call)
        if items is not None:
            self.add_items(items)

    def _begin(self, ec, flags: Flag, built_in: bool) -> None:
        if ec == _NULL:
            raise MemoryError
        self._ec = ec
        self._flags, self._built_in = flags, built_in
        self._items = Items(ec)
        self._functions: Dict[str, Function] = {}
        self._expressions: weakref.WeakValueDictionary[Any, Expression] = weakref.WeakValueDictionary()
        self._dropped: List[Any] = []  # temporary expressions without a reference
        self._lock = threading.RLock()
        self._running = 0  # evaluations that have begun and not ended
        self._row: Any = None
        self._raised: Optional[BaseException] = None
        _callbacks.contexts[ec] = self
        self._destroy = weakref.finalize(self, engine.ORLDestroyEC, ec)

    # ---- Life ------------------------------------------------------------------------------------

    def close(self) -> None:
        """Frees the context; afterwards it and its expressions raise ClosedError. May be called again."""
        with self._lock:
            if self._running:
                raise RuntimeError("a context cannot be closed while it computes")
            if self._ec is not None:
                _callbacks.contexts.pop(self._ec, None)
                self._ec = None
                self._destroy()

    def __enter__(self) -> Context:
        return self

    def __exit__(self, *_) -> None:
        self.close()

    @contextlib.contextmanager
    def _entered(self, change: bool = False) -> Iterator[Any]:
        """Yields the handle under the lock. With `change`, RuntimeError while an evaluation runs."""
        with self._lock:
            if self._ec is None:
                raise ClosedError("the context is closed")
            if change and self._running:
                raise RuntimeError("a function cannot change the context that is being computed")
            while self._dropped and not self._running:
                engine.ORLDestroyEXP(self._ec, self._dropped.pop())
            yield self._ec

    def copy(self) -> Context:
        """A second context with the same items, functions and formulas, for example for another thread."""
        with self._entered(change=True) as ec:
            made = object.__new__(Context)
            made._begin(engine.ORLCopyEC(ec), self._flags, self._built_in)
            made._items.update(self._items)
            made._functions.update(self._functions)
            for each in self._temporaries():
                engine.ORLDestroyEXP(made._ec, engine.ORLHEXPFromName(made._ec, encode(each.name)))
            return made

    def _temporaries(self) -> List[Expression]:
        return [each for each in list(self._expressions.values())
                if each._temporary and each._handle is not None]

    def __reduce__(self):
        return _restore, (self.save(), list(self._functions.values()), self._built_in, int(self._flags))

    # ---- Items and functions ---------------------------------------------------------------------

    @property
    def items(self) -> Dict[str, Type]:
        """The input items: names as formulas write them, and types."""
        return {item.name: item.type for item in self._items.values()}

    def add_items(self, items: Any) -> None:
        """Declares input items, as `Context(items)` does; ValueError for a name that is taken."""
        with self._entered(change=True):
            self._items.declare(items_of(items))

    def add_function(self, call: Union[Callable[..., Any], Function], name: Optional[str] = None, *,
                     parameters: Optional[List[TypeLike]] = None, result: Optional[TypeLike] = None):
        """Declares a function written in Python and returns it, so that it also works as a decorator.

        Annotations determine the types of parameters and result, unless they are given here. Numbers
        come as Decimal, or as int or float where a parameter is annotated so; dates as datetime or
        date; a missing value as None. Parameters with a default may be left out in formulas. One
        that is annotated with ItemName takes an item by its name. None as the result is no value.
        """
        function = function_of(call, name, parameters, result)
        with self._entered(change=True) as ec:
            if engine.ORLValidName(ec, encode(function.name), _NULL) == 0:
                raise ValueError(f"{function.name!r} cannot be the name of a function")
            row = function.row()
            row.item.routine = ffi.cast("void *", _callbacks.call_function)
            if engine.ORLAddExpressionItem(ec, ffi.addressof(row, "item")) == 0:
                raise MemoryError
            self._functions[function.name] = function
        return call

    def rename(self, old: str, new: str) -> None:
        """Gives an input item another name, also in the formulas.

        `old` and `new` are the keys of rows, such as the names of columns.
        """
        with self._entered(change=True) as ec:
            self._items.rename(old, new, lambda a, b: engine.ORLRenameExpressionItem(
                ec, Kind.INPUT, encode(a), encode(b)))

    # ---- Formulas --------------------------------------------------------------------------------

    def parse(self, text: str, name: Optional[str] = None) -> Expression:
        """Checks a formula, range or set and stores it.

        With a name it stays in the context, and other formulas call it as `name()`. Raises
        FormulaError where the text or the name is wrong.
        """
        return self._parse(text, name, None)

    def _parse(self, text: str, name: Optional[str], old: Optional[Expression]) -> Expression:
        error, type = ffi.new("FormulaError *"), ffi.new("uint16_t *")
        with self._entered(change=True) as ec:
            handle = engine.ORLParseFormula(ec, _NULL if old is None else old._live(), encode(text),
                                            _NULL if name is None else encode(name), error, type)
            if handle == _NULL and name is not None and error.id in (WRONG_NAME, NAME_TAKEN):
                raise FormulaError(name, error.id, 0, len(encode(name)))
            if handle == _NULL:
                raise FormulaError(text, error.id, error.offset, error.length)
            return old or self._expression(handle, name is None)

    def _expression(self, handle, temporary: bool = False) -> Expression:
        known = self._expressions.get(handle)
        if known is None or known._handle is None:
            if handle in self._dropped:  # its removal waits for the end of an evaluation
                self._dropped.remove(handle)
                temporary = True
            known = self._expressions[handle] = Expression(self, handle, temporary)
        return known

    def check(self, text: str) -> Type:
        """The type of a formula's value. Raises FormulaError, and stores nothing either way."""
        return self.parse(text).type

    def add_formulas(self, formulas: Mapping[str, str]) -> Dict[str, Expression]:
        """Stores formulas by their names; they may refer to each other in any order.

        Each is stored after those that it refers to. A name that is not a plain name is stored in
        quotes, and formulas cannot call it. Raises FormulaError for the first that is wrong, and
        then stores none.
        """
        with self._entered(change=True) as ec:
            rows = [(self._items.name_of(name), text) for name, text in formulas.items()]
            for name, _ in rows:
                if engine.ORLIsExpNameUnique(ec, _NULL, encode(name)) == 0:
                    raise FormulaError(name, NAME_TAKEN, 0, len(encode(name)))
            before = engine.ORLGetExpressionCount(ec)
            wrong = self._parse_all(rows)
            if wrong is not None:
                while engine.ORLGetExpressionCount(ec) > before:  # those that others call go after them
                    for ordinal in reversed(range(before, engine.ORLGetExpressionCount(ec))):
                        engine.ORLDestroyEXP(ec, engine.ORLHEXPFromOrdinal(ec, ordinal))
                raise wrong[1]
        return {name: self[name] for name in formulas}

    def _parse_all(self, rows: List[Tuple[str, str]]) -> Optional[Tuple[str, FormulaError]]:
        """Parses formulas, each a name and a text; returns the name and error of the first that is wrong.

        Those parsed before it remain stored.
        """
        kept = [(ffi.new("char[]", encode(name)), ffi.new("char[]", encode(text))) for name, text in rows]
        given = ffi.new("OrlFormulaText[]", [{"name": name, "text": text} for name, text in kept])
        wrong, error = ffi.new("int32_t *"), ffi.new("FormulaError *")
        if engine.ORLParseFormulas(self._ec, len(kept), given, wrong, error) == 1:
            return None
        name, text = rows[wrong[0]]
        return name, FormulaError(text, error.id, error.offset, error.length)

    def __getitem__(self, name: str) -> Expression:
        """The formula, range or set of that name, which may be without its quotes."""
        with self._entered() as ec:
            for each in (name, self._items.name_of(name)):
                handle = engine.ORLHEXPFromName(ec, encode(each))
                if handle != _NULL:
                    return self._expression(handle)
            raise KeyError(name)

    def __iter__(self) -> Iterator[Expression]:
        """The formulas, ranges and sets with names, in order."""
        with self._entered() as ec:
            count = engine.ORLGetExpressionCount(ec)
            stored = [self._expression(engine.ORLHEXPFromOrdinal(ec, i)) for i in range(count)]
            return iter([each for each in stored if not each._temporary])

    def users(self, name: str, kind: Optional[Kind] = None) -> List[Expression]:
        """What refers to an item, function or formula of that name."""
        return [each for each in self if each.uses(name, kind)]

    # ---- Evaluation ------------------------------------------------------------------------------

    def evaluate(self, formula: Union[str, Expression], row: Any = None) -> Any:
        """The value of a formula: a Decimal, a datetime or a str, None where there is none.

        `row` has the values of input items by their keys: a dict, a pandas.Series, anything with
        `row[key]`. Missing values are None, NaN or NaT; an operator with one has no value, and so has
        one with an infinity. Numbers are int, float, Decimal or Fraction, dates are date, datetime
        or numpy.datetime64 without a time zone. A key that the row lacks raises KeyError, a value of
        another type TypeError, when the formula asks for it. What functions written in Python raise
        arrives as it is.
        """
        return self._evaluate(self._of_text(formula), row)

    def _of_text(self, formula: Union[str, Expression]) -> Expression:
        expression = self.parse(formula) if isinstance(formula, str) else formula
        if expression._context is not self:
            raise ValueError("the expression belongs to another context")
        if expression.kind != "formula":
            raise TypeError(f"a {expression.kind} has no value")
        return expression

    def evaluate_rows(self, formula: Union[str, Expression], rows: Any, *, numbers: type = float,
                      scale: int = 0, threads: int = 1) -> Any:
        """The values of a formula for all rows of a table, one call of the engine.

        `rows` is a pandas.DataFrame, and the result a Series with its index; or a mapping from keys
        to columns (NumPy arrays or sequences of one length), and the result an array.

        Columns of float64 and int64 are read where they are. Missing values are those of
        `evaluate`, in masks of pandas and numpy.ma too.

        `numbers` chooses the form of Numbers: `float` gives float64 with NaN where there is no
        value, `decimal.Decimal` objects with None, and `int` whole numbers of 10^-scale, rounded
        half away from zero, as Int64 of pandas or a masked array: with `scale=2` an amount of 12.5
        is 1250. Dates are datetime64, strings are str, with NaT and None where there is no value.

        With `threads` the rows are shared out over threads with a copy of the context each.
        Functions written in Python then run in several threads.
        """
        from ._rows import Table, evaluate_rows  # NumPy is needed from here on
        return evaluate_rows(self, self._of_text(formula), Table(rows), numbers, scale, threads)

    def evaluate_all(self, rows: Any, names: Optional[Iterable[str]] = None, **options: Any) -> Any:
        """The values of stored formulas for all rows: a DataFrame if `rows` is one, else a dict of arrays.

        `names` chooses formulas and their order; without it all formulas are computed, not the
        ranges and sets. `options` are those of `evaluate_rows`.
        """
        chosen = {key_of(each.name): each for each in self if each.kind == "formula"} if names is None \
            else {name: self[name] for name in names}
        from ._rows import Table, evaluate_rows
        table = Table(rows)
        values = {name: evaluate_rows(self, self._of_text(each), table, **options) for name, each in chosen.items()}
        if not hasattr(rows, "iloc"):
            return values
        import pandas
        return pandas.DataFrame(values, index=rows.index)

    def _compute(self, row: Any, call: Callable[..., Any], expression: Expression, *arguments: Any) -> Any:
        """The result of a call of the engine during which routines in Python may run.

        Raises what they raised.
        """
        with self._lock:
            if self._ec is None:
                raise ClosedError("the context is closed")
            before = self._row
            self._row, self._running = row, self._running + 1
            try:
                found = call(self._ec, expression._live(), *arguments)
            finally:
                self._row, self._running = before, self._running - 1
                raised, self._raised = self._raised, None
            if raised is not None:
                raise raised
            return found

    def _evaluate(self, expression: Expression, row: Any) -> Any:
        type = expression.type
        if type != STRING:
            cell = ffi.new(_CELL)
            found = self._compute(row, engine.ORLEvaluateExpression, expression, NUMBER_BYTES, cell)
            return value_from(type, cell) if found else None
        length, block = ffi.new("int32_t *"), ffi.new("void **")
        try:
            found = self._compute(row, engine.ORLEvaluateExpressionExt, expression, length, block)
            return value_from(type, block[0]) if found else None
        finally:
            engine.ORLMemFree(block[0])

    def _give_value(self, name: bytes, size: int, value) -> bool:
        item = self._items[name]
        if self._row is None:
            raise KeyError(item.key)
        return store(item.type, self._row[item.key], size, value)

    # ---- Stored form -----------------------------------------------------------------------------

    def save(self) -> bytes:
        """The input items and the formulas with names as bytes, the stored form of the C interface.

        It does not contain functions written in Python and flags.
        """
        with self._entered(change=True) as ec:
            if self._temporaries():
                with self.copy() as kept:
                    return kept.save()
            size = engine.ORLGetECBlockSize(ec, 1)
            buffer = ffi.new("char[]", size)
            return ffi.buffer(buffer, engine.ORLGetECBlock(ec, size, buffer))[:]

    @classmethod
    def load(cls, block: bytes, *, functions: Functions = (), built_in: bool = True,
             flags: Flag = Flag.RANGES) -> Context:
        """A context with what `save`, `orli` or another host has stored.

        Raises LoadError if the bytes are damaged, if formulas do not parse with these functions and
        flags, or if the host that stored them has operators of its own; no window opens.
        """
        made, block = cls(functions=functions, built_in=built_in, flags=flags), bytes(block)
        operators = _block.operators_of(block)
        if operators:
            raise LoadError(f"The stored context needs routines for operators: {', '.join(operators)}")
        if block[0] not in _VERSIONS_WITHOUT_REPAIR:
            made._try(block)
        made._take(block, True)
        return made

    def _try(self, block: bytes) -> None:
        """Raises LoadError for a formula of the block that does not parse; changes nothing."""
        with self.copy() as scratch:
            scratch._take(block, False)
            wrong = scratch._parse_all(_block.formulas_of(block))
            if wrong is not None:
                raise LoadError("A formula of the stored context does not parse.", *wrong)

    def _take(self, block: bytes, formulas: bool) -> None:
        with self._entered(change=True) as ec:
            done = engine.ORLSetECContents(ec, len(block), block, formulas, _callbacks.keep_error)
            raised, self._raised = self._raised, None
            if not done:
                raise LoadError("The stored context is damaged, or a formula of it does not parse.", None,
                                raised if isinstance(raised, FormulaError) else None)
            self._items.read()


def _restore(block: bytes, functions, built_in: bool, flags: int) -> Context:
    return Context.load(block, functions=functions, built_in=built_in, flags=Flag(flags))
