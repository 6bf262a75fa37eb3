"""The C routines through which the engine asks Python for values.

There is one routine of each kind for the whole process, created once and never freed. It finds the
context by its address. An exception is kept in the context, and raised when the engine's call has
returned; until then the routines return no value.
"""

from __future__ import annotations

import weakref
from typing import TYPE_CHECKING, Any

from ._library import ffi
from ._values import text_from
from .errors import FormulaError

if TYPE_CHECKING:
    from .context import Context

# By their handles, which cffi compares and hashes by address.
contexts: weakref.WeakValueDictionary[Any, Context] = weakref.WeakValueDictionary()


@ffi.callback("int32_t(EC, HEXP, int32_t, void **, const char *)")
def give_value(ec, exp, size, value, name):
    """The OrlValueProc of every input item."""
    context = contexts.get(ec)
    if context is None or context._raised is not None:
        return 0
    try:
        return context._give_value(ffi.string(name), size, value)
    except BaseException as error:  # even KeyboardInterrupt: the engine is above on the stack
        context._raised = error
        return 0


@ffi.callback("int32_t(EC, HEXP, int32_t, void **, const char *, void **)")
def call_function(ec, exp, size, result, name, arguments):
    """The OrlFunctionProc of every function written in Python."""
    context = contexts.get(ec)
    if context is None or context._raised is not None:
        return 0
    try:
        return context._functions[text_from(name)].run(size, result, arguments)
    except BaseException as error:
        context._raised = error
        return 0


@ffi.callback("void *(const char *)")
def look_up(routine_name):
    """The OrlLookupProc: all input items of a stored context have one routine.

    Nothing else is looked up: `load` rejects blocks with names of operators.
    """
    return ffi.cast("void *", give_value)


@ffi.callback("void(EC, const char *, const FormulaError *)")
def keep_error(ec, text, error):
    """The OrlErrorProc of a load."""
    context = contexts.get(ec)
    if context is not None:
        context._raised = FormulaError(text_from(text), error.id, error.offset, error.length)


@ffi.callback("void(EC, const char *, void *)")
def collect_name(ec, name, names):
    """The OrlEnumItemProc that appends to the list whose handle is `names`."""
    ffi.from_handle(names).append(text_from(name))
