"""Formulas, ranges and sets of a context."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, Optional

from ._library import engine, ffi
from ._values import encode
from .errors import ClosedError, Error
from .types import Kind, Type

if TYPE_CHECKING:
    from .context import Context

_KINDS = ("formula", "set", "range")  # by the `which` of ORLIsExpRange


class Expression:
    """A formula, range or set that a context has checked and stored; made by `Context.parse`.

    One without a name of its own is removed from its context with the last reference to it.
    """

    __slots__ = ("_context", "_handle", "_temporary", "_type", "__weakref__")

    def __init__(self, context: Context, handle, temporary: bool):
        self._context, self._handle, self._temporary = context, handle, temporary
        self._type: Optional[Type] = None  # not asked for yet

    def __del__(self):
        if self._temporary and self._handle is not None:
            self._context._dropped.append(self._handle)

    def __repr__(self) -> str:
        if self._handle is None or self._context._ec is None:
            return "<Expression, removed>"
        return f"<Expression {self.name}={self.text!r}, {self.kind} of {self.type.name}>"

    def _copied(self, length, copy) -> str:
        with self._context._entered() as ec:
            size = length(ec, self._live()) + 1
            buffer = ffi.new("char[]", size)
            copy(ec, self._live(), size, buffer)
            return ffi.string(buffer).decode()

    def _live(self):
        if self._handle is None:
            raise ClosedError("the expression was removed")
        return self._handle

    @property
    def name(self) -> str:
        """Its name, a generated one where none was given."""
        return self._copied(engine.ORLGetExpressionNameLength, engine.ORLGetExpressionName)

    @property
    def text(self) -> str:
        """The text, as it was given or as a rename has changed it."""
        return self._copied(engine.ORLGetExpressionTextLength, engine.ORLGetExpressionText)

    @property
    def type(self) -> Type:
        """The type of its value, or of the members of a range or set."""
        if self._type is None:
            with self._context._entered() as ec:
                self._type = Type(engine.ORLGetExpressionDataType(ec, self._live()))
        return self._type

    @property
    def kind(self) -> str:
        """"formula", "range" or "set"."""
        with self._context._entered() as ec:
            return _KINDS[next((i for i in (1, 2) if engine.ORLIsExpRange(ec, self._live(), i)), 0)]

    def change(self, text: str) -> None:
        """Gives it another text. A formula that others use keeps its type.

        Raises FormulaError, and stays as it was, where the text is wrong.
        """
        self._context._parse(text, self.name, self)
        self._type = None

    def remove(self) -> None:
        """Removes it from the context; Error while another formula refers to it."""
        with self._context._entered(change=True) as ec:
            if engine.ORLDestroyEXP(ec, self._live()) == 0:
                raise Error(f"{self.name} is used by another formula")
            self._handle = None

    def uses(self, name: str, kind: Optional[Kind] = None) -> bool:
        """Whether it refers to that item, function or formula, itself or through formulas.

        An item is meant by its name in formulas or by its column's.
        """
        with self._context._entered():
            names = {name, self._context._items.name_of(name)}
            kinds = list(Kind) if kind is None else [kind]
            return any(self._is_used(each, encode(one)) for each in kinds for one in names)

    def _is_used(self, kind: Kind, name: bytes) -> bool:
        with self._context._entered() as ec:
            return engine.ORLIsItemUsed(ec, self._live(), kind, name) == 1

    def extended_text(self, marks: bool = False) -> str:
        """The text with the formulas that it refers to in parentheses in their places.

        With `marks` dates and functions are in the escapes of ODBC. Error when the text would have
        more than 65,535 bytes.
        """
        with self._context._entered() as ec:
            size = engine.ORLGetExtendedTextLength(ec, self._live(), marks) + 1
            buffer = ffi.new("char[]", size)
            # An empty text means a failure: a formula has a text.
            engine.ORLGetExtendedText(ec, self._live(), size, buffer, marks)
            if buffer[0] == b"\0":
                raise Error(f"the extended text of {self.name} is too long")
            return ffi.string(buffer).decode()

    def evaluate(self, row: Any = None) -> Any:
        """Its value for a row: see `Context.evaluate`."""
        return self._context._evaluate(self, row)
