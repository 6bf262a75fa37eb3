"""Stored contexts, read without the engine.

A load by the engine opens the formula editor for a formula that no longer parses. A program wants
an exception, so the formulas are tried first. And a load looks routines of operators up
by the same names as those of items, so blocks with such names are detected here.
"""

from __future__ import annotations

import struct
from typing import List, Tuple

from .errors import LoadError

_OPERATORS = 20
_INPUT_ROW = 85
_INPUTS, _FORMULAS = 250, 252


class _Reader:
    def __init__(self, block: bytes):
        # Version 0 has no byte of its own: the first operator has no name.
        self.block, self.position = block, 1 if block[:1] != b"\0" else 0

    def text(self) -> str:
        end = self.block.find(b"\0", self.position)
        if end < 0:
            raise LoadError(f"The stored context is cut or damaged at byte {self.position}.")
        begin, self.position = self.position, end + 1
        return self.block[begin:end].decode(errors="replace")

    def section(self, tag: int) -> int:
        """The rows of the section that begins here, 0 when it is another one."""
        header = self.block[self.position:self.position + 4]
        if len(header) < 4 or struct.unpack_from("<H", header)[0] != tag:
            return 0
        self.position += 4
        return struct.unpack_from("<h", header, 2)[0]


def operators_of(block: bytes) -> List[str]:
    """The names of the routines that a host has for operators."""
    reader = _Reader(block)
    return [name for name in (reader.text() for _ in range(_OPERATORS)) if name]


def formulas_of(block: bytes) -> List[Tuple[str, str]]:
    """Name and text of each formula of a block of version 2 or 3, in order."""
    reader = _Reader(block)
    for _ in range(_OPERATORS):
        reader.text()
    for _ in range(reader.section(_INPUTS)):
        reader.position += _INPUT_ROW
        reader.text()
    found = []
    for _ in range(reader.section(_FORMULAS)):
        text = reader.text()
        found.append((reader.text(), text))
    return found
