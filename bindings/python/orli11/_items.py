"""Input items: how columns and keys become names of formulas."""

from __future__ import annotations

from typing import Any, Callable, Dict, Iterator, List, Mapping, NamedTuple, Optional, Tuple

from . import _callbacks
from ._library import engine, ffi
from ._values import encode, is_missing
from .types import DATE, NUMBER, STRING, Kind, Type, type_of

_LONGEST_NAME = len(ffi.new("ExprItem *").name) - 1
_TYPE_OF_KIND = {"b": NUMBER, "i": NUMBER, "u": NUMBER, "f": NUMBER, "M": DATE, "U": STRING}


class Item(NamedTuple):
    """An input item: `name` as formulas write it, `key` where rows and columns have its value."""

    name: str
    key: Any
    type: Type


class Items(Dict[bytes, Item]):
    """The input items of a context by their names in formulas, as bytes."""

    def __init__(self, ec):
        super().__init__()
        self._ec = ec

    def name_of(self, key: str) -> str:
        """How a formula writes a key: as it is, or in quotes unless it is a plain name."""
        raw = encode(key)
        unused = ffi.new("char[]", _LONGEST_NAME + 2)
        if len(raw) <= _LONGEST_NAME and engine.ORLValidName(self._ec, raw, ffi.NULL) == 1 \
                and engine.ORLInputNameIsKeyword(unused, raw) == 0:
            return key
        quote = "`" if '"' in key else '"'
        return quote + key + quote

    def declare(self, items: List[Tuple[str, Type]]) -> None:
        """Adds items by key and type.

        Raises ValueError, adding none, for a name that is taken or that formulas cannot write.
        """
        rows = [Item(self.name_of(key), key, type) for key, type in items]
        names = [item.name for item in rows]
        for name in names:
            raw = encode(name)
            if len(raw) > _LONGEST_NAME:
                raise ValueError(f"names of items have at most {_LONGEST_NAME} bytes, quotes included: {name}")
            if engine.ORLValidName(self._ec, raw, ffi.NULL) == 0:
                raise ValueError(f"formulas cannot write the name {name}")
            if raw in self or names.count(name) > 1:
                raise ValueError(f"there is already an item {name}")
        for item in rows:
            row, routine_name = ffi.new("ExprItem *"), ffi.new("char[]", b"Column")
            row.kind, row.dataType, row.name = Kind.INPUT, item.type, encode(item.name)
            row.routineName, row.routine = routine_name, ffi.cast("void *", _callbacks.give_value)
            if engine.ORLAddExpressionItem(self._ec, row) == 0:
                raise MemoryError
            self[encode(item.name)] = item

    def read(self) -> None:
        """Takes the items that a load has added to the context."""
        names: List[str] = []
        handle, row = ffi.new_handle(names), ffi.new("ExprItem *")
        engine.ORLEnumExpItems(self._ec, Kind.INPUT, _callbacks.collect_name, handle)
        for name in names:
            engine.ORLGetExpressionItem(self._ec, Kind.INPUT, name.encode(), row, 0)
            if row.dataType in Type.__members__.values():
                self.setdefault(name.encode(), Item(name, key_of(name), Type(row.dataType)))

    def rename(self, old: str, new: str, apply: Callable[[str, str], Any]) -> None:
        """Gives the item of key `old` the key `new`; `apply` renames it in the context.

        Raises KeyError if there is no such item, ValueError for a name that is taken or that
        formulas cannot write.
        """
        item = self.get(encode(self.name_of(old)))
        if item is None:
            raise KeyError(old)
        name = self.name_of(new)
        raw = encode(name)
        if len(raw) > _LONGEST_NAME or engine.ORLValidName(self._ec, raw, ffi.NULL) == 0:
            raise ValueError(f"formulas cannot write the name {name}")
        if raw in self:
            raise ValueError(f"there is already an item {name}")
        apply(item.name, name)
        del self[encode(item.name)]
        self[raw] = Item(name, new, item.type)


def key_of(name: str) -> str:
    """The key of an item by its name in formulas: without the quotes."""
    return name[1:-1] if len(name) > 2 and name[0] in "\"`" and name[-1] == name[0] else name


def items_of(items: Any) -> List[Tuple[str, Type]]:
    """Keys and types of what a Context is given as its items."""
    return [(key, type) for key, type in _pairs(items) if type is not None]


def _pairs(items: Any) -> Iterator[Tuple[str, Optional[Type]]]:
    if hasattr(items, "iloc"):  # a pandas.DataFrame
        for key, column in items.items():
            if isinstance(key, str):
                yield key, _column_type(column)
    elif isinstance(items, Mapping):
        for key, given in items.items():
            named = isinstance(given, (str, type, Type))
            if not named and not hasattr(given, "__len__"):
                raise TypeError(f"{key!r}: {given!r} is neither a type nor a column")
            yield key, type_of(given) if named else _column_type(given)
    else:
        try:
            pairs = [(key, given) for key, given in items]
        except (TypeError, ValueError):
            raise TypeError("items is a mapping, pairs of names and types, or a pandas.DataFrame, "
                            f"not {items!r}") from None
        for key, given in pairs:
            yield key, type_of(given)


def _column_type(column: Any) -> Optional[Type]:
    """The type of a column's values, None for values that no formula can hold."""
    dtype: Any = getattr(column, "dtype", None)
    if hasattr(dtype, "categories"):
        return _column_type(dtype.categories)
    if dtype is not None and dtype.kind != "O":
        return _TYPE_OF_KIND.get(dtype.kind)
    for value in column:
        if not is_missing(value):
            try:
                return type_of(type(value))
            except TypeError:
                return None
    return STRING
