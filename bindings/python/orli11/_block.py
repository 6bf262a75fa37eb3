"""Stored contexts, read before the engine loads them.

A load by the engine opens the formula editor for a formula that no longer parses. A program needs
an exception instead, so the formulas are parsed in a copy first. And a load looks up the routines of
operators in the same way as those of items, so blocks that name such routines are detected here.
"""

from __future__ import annotations

import struct
from typing import List, Tuple

from ._library import engine, ffi
from .errors import LoadError

_INPUT_ROW = ffi.sizeof("OrlStoredInput")


class _Reader:
    def __init__(self, block: bytes):
        # Version 0 has no byte of its own: the first operator has no name.
        self.block, self.position = block, 1 if block[:1] != b"\0" else 0

    def text(self) -> str:
        end = self.block.find(b"\0", self.position)
        if end < 0:
            raise LoadError(f"The stored context is truncated or damaged at byte {self.position}.")
        begin, self.position = self.position, end + 1
        return self.block[begin:end].decode(errors="replace")

    def operators(self) -> List[str]:
        """The names of operator routines, which the block begins with; empty for operators without one."""
        return [self.text() for _ in range(engine.ORL_BLOCK_OPERATORS)]

    def section(self, tag: int) -> int:
        """The number of rows of the section that begins here, 0 if it is a different one."""
        header = self.block[self.position:self.position + engine.ORL_BLOCK_HEADER_SIZE]
        if len(header) < engine.ORL_BLOCK_HEADER_SIZE or struct.unpack_from("<H", header)[0] != tag:
            return 0
        self.position += engine.ORL_BLOCK_HEADER_SIZE
        return struct.unpack_from("<h", header, 2)[0]


def operators_of(block: bytes) -> List[str]:
    """The names of the routines that the host which stored the block has for operators."""
    return [name for name in _Reader(block).operators() if name]


def formulas_of(block: bytes) -> List[Tuple[str, str]]:
    """Name and text of each formula of a block of version 2 or 3, in order."""
    reader = _Reader(block)
    reader.operators()
    for _ in range(reader.section(engine.ORL_BLOCK_TAG_INPUTS)):
        reader.position += _INPUT_ROW
        reader.text()
    found = []
    for _ in range(reader.section(engine.ORL_BLOCK_TAG_FORMULAS)):
        text = reader.text()
        found.append((reader.text(), text))
    return found
