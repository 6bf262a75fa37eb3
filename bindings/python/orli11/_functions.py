"""Functions written in Python, as formulas call them."""

from __future__ import annotations

import dataclasses
import datetime
import inspect
import typing
from typing import Any, Callable, Optional, Sequence, Tuple, Union

from ._library import ffi
from ._values import encode, store, value_from
from .types import ANY, Kind, Type, type_of

MAX_PARAMETERS = len(ffi.new("FunctionRow *").parameters)
_NONE = inspect.Parameter.empty


class ItemName(str):
    """Annotates a parameter that takes an input item by its name and not its value.

    In `total(Amount)` such a parameter receives the string "Amount", so that the function can
    compute over all rows of the host.
    """


@dataclasses.dataclass(frozen=True)
class Parameter:
    annotation: Any  # the class that the function expects, or a Type
    type: Optional[Type]  # None: by name
    default: Any = _NONE

    def value(self, address) -> Any:
        """The Python value of an argument; the default or None where there is none."""
        if address == ffi.NULL:
            return None if self.default is _NONE else self.default
        if self.type is None:
            return ItemName(ffi.string(ffi.cast("const char *", address)).decode())
        value = value_from(self.type, address)
        if value is None:
            return None
        if self.annotation in (int, float):
            return self.annotation(value)
        return value.date() if self.annotation is datetime.date else value


@dataclasses.dataclass(frozen=True)
class Function:
    """A callable with its name in formulas, its parameters and the type of its result."""

    name: str
    call: Callable[..., Any]
    parameters: Tuple[Parameter, ...]
    result: Type

    def row(self):
        """The record that declares the function, without its routine."""
        row = ffi.new("FunctionRow *")
        item = row.item
        item.kind, item.dataType = Kind.FUNCTION, self.result
        item.name = encode(self.name)
        item.paramCount = len(self.parameters)
        required = sum(each.default is _NONE for each in self.parameters)
        if required < len(self.parameters):
            item.firstOptional, item.optionalCount = required, len(self.parameters) - required
        for i, each in enumerate(self.parameters):
            row.parameters[i].mode = each.type is None
            row.parameters[i].dataType = ANY if each.type is None else each.type
        return row

    def run(self, size: int, result, arguments) -> bool:
        """Calls the function and stores what it returns in the block at `result[0]`."""
        given = [each.value(arguments[i] if arguments != ffi.NULL else ffi.NULL)
                 for i, each in enumerate(self.parameters)]
        return store(self.result, self.call(*given), size, result)


def _without_none(annotation: Any) -> Any:
    """The class in Optional[class]."""
    classes = [each for each in typing.get_args(annotation) if each is not type(None)]
    return classes[0] if len(classes) == 1 else annotation


def _type(place: str, annotation: Any) -> Type:
    try:
        return type_of(annotation)
    except (TypeError, ValueError) as error:
        raise TypeError(f"{place}: {error}; annotate it as int, float, Decimal, date, datetime or "
                        "str") from None


def _parameter(name: str, annotation: Any, default: Any) -> Parameter:
    annotation = _without_none(annotation)
    if isinstance(annotation, type) and issubclass(annotation, ItemName):
        return Parameter(annotation, None, default)
    return Parameter(annotation, _type(f"parameter {name!r}", annotation), default)


def function_of(call: Union[Callable[..., Any], Function], name: Optional[str] = None,
                parameters: Optional[Sequence[Any]] = None, result: Any = None) -> Function:
    """Reads the signature of a callable; `parameters` and `result` replace its annotations."""
    if isinstance(call, Function):
        return call
    hints = typing.get_type_hints(call) if parameters is None or result is None else {}
    taken = [each for each in inspect.signature(call).parameters.values()
             if each.kind != each.KEYWORD_ONLY]
    if parameters is None:
        if any(each.kind in (each.VAR_POSITIONAL, each.VAR_KEYWORD) for each in taken):
            raise TypeError("name the types of the parameters: this function takes any number of them")
        named = [(each.name, hints.get(each.name), each.default) for each in taken]
    else:
        defaults = [each.default for each in taken] + [_NONE] * len(parameters)
        named = [(str(i), each, defaults[i]) for i, each in enumerate(parameters)]
    if len(named) > MAX_PARAMETERS:
        raise ValueError(f"a function has at most {MAX_PARAMETERS} parameters")
    returned = _type("result", _without_none(hints.get("return")) if result is None else result)
    return Function(name or call.__name__, call, tuple(_parameter(*each) for each in named), returned)
