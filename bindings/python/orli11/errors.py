"""The exceptions of the package."""

from __future__ import annotations

from typing import Optional

from ._library import engine, ffi


# Ids of messages about the name of a formula.
WRONG_NAME, NAME_TAKEN = 107, 126


class Error(Exception):
    """The base of the package's exceptions."""


class ClosedError(Error):
    """A context was used after its close, or an expression after its removal."""


class FormulaError(Error, ValueError):
    """A formula text, or the name for a formula, is wrong.

    `text` is that text or name, `id` the id of the message and `message` its text. `offset` and `length`
    are the bytes at fault, in UTF-8; `start` and `end` the same place as indexes into the string `text`,
    so that `text[start:end]` is what is wrong; if something is missing at the end of the text, it is
    empty and `length` is 1. All four are 0 if no place is known.
    """

    def __init__(self, text: str, id: int, offset: int, length: int):
        self.text = text
        self.id = id
        self.message = message(id)
        self.offset = offset
        self.length = length
        raw = text.encode()
        self.start = len(raw[:offset].decode(errors="ignore"))
        self.end = self.start + len(raw[offset:offset + length].decode(errors="ignore"))
        super().__init__(text, id, offset, length)

    def __str__(self) -> str:
        if "\n" in self.text or (self.offset, self.length) == (0, 0):
            return f"{self.message} In {self.text!r}, {self.start} to {self.end}"
        marks = " " * self.start + "^" * max(1, self.end - self.start)
        return f"{self.message}\n  {self.text}\n  {marks}"


class LoadError(Error, ValueError):
    """A stored context could not be read.

    `name` and `error` are those of the formula that does not parse. Both are None if the bytes are
    damaged; `name` is also None for blocks of the versions 0 and 1.
    """

    def __init__(self, reason: str, name: Optional[str] = None, error: Optional[FormulaError] = None):
        super().__init__(reason, name, error)
        self.name, self.error = name, error

    def __str__(self) -> str:
        if self.error is None:
            return self.args[0]
        return f"{self.args[0]}\n{self.name + ': ' if self.name else ''}{self.error}"


def message(id: int) -> str:
    """The message with that id, as users read it."""
    size = engine.ORLErrorText(id, 0, ffi.NULL) + 1
    buffer = ffi.new("char[]", size)
    engine.ORLErrorText(id, size, buffer)
    return ffi.string(buffer).decode()
